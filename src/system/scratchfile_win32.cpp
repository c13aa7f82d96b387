#include "system/scratchfile.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "system/file_win32.h"
#include "system/filesystem.h"
#include "system/process_win32.h"

namespace kestrel {
namespace {

OVERLAPPED placeOf(std::uint64_t at) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(at);
    place.OffsetHigh = static_cast<DWORD>(at >> 32U);
    return place;
}

}  // namespace

struct ScratchFile::System {
    [[noreturn]] void raise() const { win32::raise(GetLastError(), win32::kWrite, name); }

    const std::wstring name = filesystem::makeTemporary(L"kst");
    win32::File file{name, GENERIC_READ | GENERIC_WRITE | DELETE, OPEN_EXISTING,
                     FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE};
};

ScratchFile::ScratchFile() : system_(std::make_unique<System>()) {
    if (!system_->file.isOpen()) system_->raise();
}

ScratchFile::~ScratchFile() = default;

void ScratchFile::append(std::string_view bytes) {
    OVERLAPPED place = placeOf(size_);
    DWORD count = 0;
    if (!WriteFile(system_->file.handle(), bytes.data(), static_cast<DWORD>(bytes.size()), &count,
                   &place)) {
        system_->raise();
    }
    size_ += count;
}

std::string ScratchFile::read(std::uint64_t at, std::size_t most) const {
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(size_ - at, most)), '\0');
    OVERLAPPED place = placeOf(at);
    DWORD count = 0;
    if (!bytes.empty() && !ReadFile(system_->file.handle(), bytes.data(),
                                    static_cast<DWORD>(bytes.size()), &count, &place)) {
        system_->raise();
    }
    bytes.resize(count);
    return bytes;
}

void ScratchFile::whole(const std::function<void(std::string_view)>& use) const {
    if (size_ == 0) return use({});
    const HANDLE mapping =
        CreateFileMappingW(system_->file.handle(), nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (mapping == nullptr) system_->raise();
    const win32::Handle closed(mapping);
    const void* bytes = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
    if (bytes == nullptr) system_->raise();
    const std::unique_ptr<const void, BOOL(WINAPI*)(const void*)> mapped(bytes, UnmapViewOfFile);
    use({static_cast<const char*>(bytes), static_cast<std::size_t>(size_)});
}

}  // namespace kestrel
