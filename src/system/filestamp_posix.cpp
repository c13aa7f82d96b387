#include "system/filestamp.h"

#include <chrono>
#include <filesystem>
#include <string>

#include "base/bytes.h"
#include "system/filesystem.h"

namespace kestrel {

namespace {

using FileClock = std::filesystem::file_time_type::clock;

// The coarsest clock of a file system.
constexpr std::chrono::seconds kClockTick{2};

std::int64_t ticks(FileClock::time_point time) {
    return static_cast<std::int64_t>(time.time_since_epoch().count());
}

}  // namespace

std::optional<FileStamp> fileStamp(std::wstring_view path) {
    const std::string bytes = toUtf8(path);
    const std::filesystem::path native(std::u8string(bytes.begin(), bytes.end()));
    std::error_code error;
    FileStamp stamp;
    stamp.size = std::filesystem::file_size(native, error);
    if (!error) stamp.written = ticks(std::filesystem::last_write_time(native, error));
    return error ? std::nullopt : std::optional(stamp);
}

bool isSettled(const FileStamp& stamp) {
    return stamp.written <= ticks(FileClock::now() - kClockTick);
}

}  // namespace kestrel
