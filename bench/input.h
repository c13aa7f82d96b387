#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "corpus.h"
#include "gas/template.h"

namespace kestrel::bench {

// What the contenders of one size work on. Everything beside the files is made
// on first use, which a contender has happen before its time runs.
class Input {
  public:
    explicit Input(std::filesystem::path folder) : folder_(std::move(folder)) {}

    std::string path(Format format) const { return corpusFile(folder_, format).string(); }
    std::size_t gasBytes() const;

    const std::string& bytes();                         // of the `.gas` file
    const std::wstring& text();                         // of the `.gas` file
    const std::vector<GasTemplate>& records();          // of the `.gas` file
    const std::wstring& rendered();                     // the records' text
    const std::vector<std::string_view>& fieldBytes();  // the records' names and values

  private:
    std::filesystem::path folder_;
    std::optional<std::string> bytes_;
    std::optional<std::wstring> text_;
    std::optional<std::vector<GasTemplate>> records_;
    std::optional<std::wstring> rendered_;
    std::string fields_;
    std::optional<std::vector<std::string_view>> fieldBytes_;
};

// The records of the `.gas` file at `path`. Ends the program when it does not
// load.
std::vector<GasTemplate> loadOrExit(const std::string& path);

}  // namespace kestrel::bench
