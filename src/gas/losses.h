#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// What the loader leaves out of a `.gas` file. The loader itself says nothing of
// it: no syntax is an error.
namespace kestrel {

// A statement that the loader ignores, or cuts something off.
struct Loss {
    std::size_t line = 0;  // of the file, 1-based; CR LF, LF and CR each end one
    bool ignored = false;  // else the statement is cut
    std::wstring why;
    std::wstring text;  // the statement, trimmed

    bool operator==(const Loss&) const = default;
};

// The losses of the file that holds `bytes`, in the order of their lines; one for
// each reason where a statement has several. Empty when the text has no block.
// A run-time error is reported and gives none.
std::vector<Loss> findLosses(std::string_view bytes);

}  // namespace kestrel
