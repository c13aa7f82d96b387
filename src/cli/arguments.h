#pragma once

#include <exception>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::cli {

// A command line that cannot be run as it stands; `text` says what to change.
class WrongUsage : public std::exception {
  public:
    explicit WrongUsage(std::wstring text) : text_(std::move(text)) {}
    const std::wstring& text() const noexcept { return text_; }
    const char* what() const noexcept override { return "wrong usage"; }

  private:
    std::wstring text_;
};

// The words of a command line. Options may stand anywhere: `--name`, and
// `--name VALUE` or `--name=VALUE` for those that take one; given twice, the last
// one counts. Behind "--" every word is an operand.
class Arguments {
  public:
    // Throws WrongUsage for an option that there is not, or that lacks its value.
    explicit Arguments(const std::vector<std::wstring>& words);

    const std::vector<std::wstring>& operands() const noexcept { return operands_; }

    // The options that were given, by their names with "--", and their values.
    const std::map<std::wstring, std::wstring>& options() const noexcept { return options_; }
    bool has(const std::wstring& option) const { return options_.contains(option); }
    std::optional<std::wstring> value(const std::wstring& option) const;

  private:
    std::vector<std::wstring> operands_;
    std::map<std::wstring, std::wstring> options_;
};

}  // namespace kestrel::cli
