#include "system/filestamp.h"

#include "system/file_win32.h"

// By the system's own calls: the standard library's times are whole seconds here, in
// which one program can write a file after another.
namespace kestrel {

namespace {

// The coarsest clock of a file system, in units of 100 ns.
constexpr std::int64_t kClockTick = 2 * 10'000'000;

std::int64_t joined(DWORD high, DWORD low) noexcept {
    return static_cast<std::int64_t>(high) << 32 | low;
}

std::int64_t ticks(const FILETIME& time) noexcept {
    return joined(time.dwHighDateTime, time.dwLowDateTime);
}

}  // namespace

std::optional<FileStamp> fileStamp(std::wstring_view path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    const std::wstring name = win32::nameOf(path);
    if (::GetFileAttributesExW(name.c_str(), GetFileExInfoStandard, &data) == 0 ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    const std::int64_t size = joined(data.nFileSizeHigh, data.nFileSizeLow);
    return FileStamp{static_cast<std::uintmax_t>(size), ticks(data.ftLastWriteTime)};
}

bool isSettled(const FileStamp& stamp) {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    return stamp.written <= ticks(now) - kClockTick;
}

}  // namespace kestrel
