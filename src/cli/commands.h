#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/terminal.h"
#include "gas/template.h"

// The commands. Each returns the program's exit code and tells of failures
// itself.
namespace kestrel::cli {

// What a command works with. The operands leave out the command's own name.
struct Call {
    const std::vector<std::wstring>& operands;
    const Arguments& arguments;
    std::ostream& out;
    Terminal& terminal;
};

int list(const Call& call);
int show(const Call& call);
int chain(const Call& call);
int convert(const Call& call);
int check(const Call& call);
int dump(const Call& call);
int tankList(const Call& call);
int tankFind(const Call& call);
int tankTest(const Call& call);
int tankExtract(const Call& call);

// True when there is a file at `path`; else it is told. Messages are then about
// that file.
bool isThere(Terminal& terminal, const std::wstring& path);

// The file's templates; nothing when it cannot be loaded, which is told.
std::optional<std::vector<GasTemplate>> load(Terminal& terminal, const std::wstring& path);

// The template that `name` means: as the windows find it, or else by the name
// that lists show. Null when there is none, which is told.
const GasTemplate* find(Terminal& terminal, const std::vector<GasTemplate>& templates,
                        std::wstring_view name);

}  // namespace kestrel::cli
