#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrel {

// Equal as long as a file was not written. Not told apart: two writings of the same
// number of bytes within one tick of the file system's clock.
struct FileStamp {
    std::uintmax_t size = 0;
    std::int64_t written = 0;  // by the file system's clock

    bool operator==(const FileStamp&) const = default;
};

// Nothing when `path` names no file, or the system does not tell.
std::optional<FileStamp> fileStamp(std::wstring_view path);

// False for a file that was written so lately that it may change once more under the
// same stamp.
bool isSettled(const FileStamp& stamp);

}  // namespace kestrel
