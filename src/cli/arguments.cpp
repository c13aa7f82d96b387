#include "cli/arguments.h"

#include <algorithm>

namespace kestrel::cli {
namespace {

struct Option {
    std::wstring_view name;
    bool takesValue;
};

constexpr Option kOptions[] = {
    {L"--author", true},   {L"--build", true},    {L"--codepage", true}, {L"--copyright", true},
    {L"--existing", true}, {L"--flat", false},    {L"--help", false},    {L"--in", true},
    {L"--json", false},    {L"--listed", false},  {L"--single", true},   {L"--title", true},
    {L"--to", true},       {L"--version", false},
};

std::wstring quoted(std::wstring_view text) {
    return std::wstring(L"\"").append(text).append(L"\"");
}

const Option& findOption(std::wstring_view name) {
    const auto* option = std::ranges::find(kOptions, name, &Option::name);
    if (option != std::end(kOptions)) return *option;
    throw WrongUsage(L"there is no option " + quoted(name) +
                     L"; put \"--\" before names that begin with \"-\"");
}

bool isOption(std::wstring_view word) {
    return word.size() > 1 && word.starts_with(L'-');
}

}  // namespace

Arguments::Arguments(const std::vector<std::wstring>& words) {
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (*word == L"--") {
            operands_.insert(operands_.end(), word + 1, words.end());
            return;
        }
        if (!isOption(*word)) {
            operands_.push_back(*word);
            continue;
        }
        const std::size_t equals = word->find(L'=');
        const bool joined = equals != std::wstring::npos;
        const std::wstring name = word->substr(0, equals);
        const Option& option = findOption(name);
        if (joined && !option.takesValue) throw WrongUsage(quoted(name) + L" takes no value");
        std::wstring& value = options_[name];
        if (joined) value = word->substr(equals + 1);
        if (joined || !option.takesValue) continue;
        if (++word == words.end()) throw WrongUsage(quoted(name) + L" needs a value behind it");
        value = *word;
    }
}

std::optional<std::wstring> Arguments::value(const std::wstring& option) const {
    const auto found = options_.find(option);
    return found == options_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace kestrel::cli
