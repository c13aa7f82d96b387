#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "services/program.h"
#include "system/codepage.h"

// One block of a `.gas` file, edited on its own and put back. Files are bytes here,
// texts the wide ones of records and of whoever edits them.
namespace kestrel {

// How many blocks, each with its header, a file holds.
std::size_t countBlocks(std::string_view file);

// The file with `edited` in place of the block whose text is `loaded`: that at `index`
// among the file's headers, else the only one. Lines that are the same in both texts
// keep their bytes, tabs and empty lines around them included, and so does everything
// else in the file. Nothing when the file does not hold the block as it was loaded.
// A file without the mark of UTF-8 is of `page`: throws RunTimeError for what
// that does not have.
std::optional<std::string> replaceBlock(std::string_view file, std::size_t index,
                                        std::wstring_view loaded, std::wstring_view edited,
                                        const CodePage& page = *gProgram().sourcePage);

// What keeps `edited` from being one block of the kind that `loaded` is, in words for
// the user; empty when nothing does.
std::wstring whyNotOneBlock(std::wstring_view loaded, std::wstring_view edited);

}  // namespace kestrel
