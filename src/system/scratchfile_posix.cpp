#include "system/scratchfile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "system/file_posix.h"
#include "system/filesystem.h"

namespace kestrel {

struct ScratchFile::System {
    System() { unlink(posix::nameOf(name).c_str()); }

    const std::wstring name = filesystem::makeTemporary(L"kst");
    posix::File file{posix::nameOf(name), O_RDWR | O_CLOEXEC, mode_t{0}, {L"Cannot write", name}};
};

ScratchFile::ScratchFile() : system_(std::make_unique<System>()) {}

ScratchFile::~ScratchFile() = default;

void ScratchFile::append(std::string_view bytes) {
    system_->file.write(bytes);
    size_ += bytes.size();
}

std::string ScratchFile::read(std::uint64_t at, std::size_t most) const {
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(size_ - at, most)), '\0');
    const ssize_t count =
        ::pread(system_->file.descriptor(), bytes.data(), bytes.size(), static_cast<off_t>(at));
    if (count < 0) system_->file.raise();
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

void ScratchFile::whole(const std::function<void(std::string_view)>& use) const {
    if (size_ == 0) return use({});
    const auto size = static_cast<std::size_t>(size_);
    void* bytes = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, system_->file.descriptor(), 0);
    if (bytes == MAP_FAILED) system_->file.raise();
    const std::unique_ptr<void, std::function<void(void*)>> mapped(
        bytes, [size](void* at) { ::munmap(at, size); });
    use({static_cast<const char*>(bytes), size});
}

}  // namespace kestrel
