#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// What Kestrel and kestrel-tank, the process that the archive library runs in, tell each
// other over the standard streams of the latter. A question and its answer are packed texts
// (base/packed.h), each one text in the stream. A question is an Ask and what stands behind it;
// an answer 0 and what stands behind the "->", or the number of an error and its description.
namespace kestrel {

using TankHandle = std::int32_t;   // an open archive; 0 is none
using ChildHandle = std::int32_t;  // a file or directory of an open archive; 0 is none

namespace tankhost {

enum class Ask {
    load,        // kVersion, the library's full path -> kVersion
    open,        // the archive's path -> its handle
    close,       // archive -> status
    root,        // archive -> entry
    children,    // archive, directory, first, most -> the directory, the number of its entries,
                 // some from `first` on as one packed text; then such three of directories inside
    entry,       // archive, entry -> it
    openChild,   // archive, entry -> number of bytes, number of the data (0: none)
    readChild,   // number of the data, place, most -> bytes
    closeChild,  // number of the data -> status
};

inline constexpr std::string_view kVersion = "kestrel-tank 1";
inline constexpr std::size_t kMostFrame = std::size_t{1} << 23;  // bytes of an answer
inline constexpr std::size_t kMostBatch = std::size_t{1} << 20;  // as many, and the last entry
inline constexpr std::size_t kMostText = std::size_t{1} << 20;   // of a name, which ends there
inline constexpr std::size_t kMostPiece = std::size_t{1} << 20;  // of data

// What the library tells of an entry. Its texts are bytes of the library's code page, empty
// where it has none.
struct Entry {
    std::int32_t status = 0;  // of GetChild
    ChildHandle handle = 0;   // 0: there is none
    std::string name;
    std::string path;
    std::int32_t isDirectory = 0;
    std::int32_t size = 0;
    std::int32_t compSize = 0;
    std::int32_t crc = 0;
    std::int16_t flags = 0;
    std::int16_t format = 0;
};

// Calls `text` or `number` with each field of the entry, in the order of an answer; an entry that
// is not there has the first two alone.
template <class OfEntry, class Text, class Number>
void eachField(OfEntry& entry, Text text, Number number) {
    number(entry.status);
    number(entry.handle);
    if (entry.handle == 0) return;
    text(entry.name);
    text(entry.path);
    number(entry.isDirectory);
    number(entry.size);
    number(entry.compSize);
    number(entry.crc);
    number(entry.flags);
    number(entry.format);
}

}  // namespace tankhost
}  // namespace kestrel
