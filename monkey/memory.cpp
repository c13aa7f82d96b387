#include "monkey/memory.h"

#include <malloc.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#ifdef __SANITIZE_ADDRESS__
// GCC comes without the header of it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace kestrel::test {

namespace fs = std::filesystem;

std::size_t heapBytes() {
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

std::size_t residentBytes() {
    std::ifstream statistics("/proc/self/statm");
    std::size_t pages = 0;
    statistics >> pages >> pages;
    return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

std::size_t openFiles() {
    const fs::directory_iterator folder("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

std::size_t zombies() {
    const std::string own = std::to_string(::getpid());
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "stat");
        std::string line;
        if (!std::getline(file, line)) continue;
        const std::size_t name = line.rfind(')');
        if (name == line.npos) continue;
        count += line.compare(name, 4, ") Z ") == 0 &&
                 line.compare(name + 4, own.size() + 1, own + " ") == 0;
    }
    return count;
}

}  // namespace kestrel::test
