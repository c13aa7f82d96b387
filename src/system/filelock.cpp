#include "system/filelock.h"

#include <thread>

namespace kestrel {

FileLock::FileLock(std::wstring_view path, std::chrono::milliseconds patience) : path_(path) {
    constexpr std::chrono::milliseconds kPause{10};
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const Try result = tryOnce();
        held_ = result == Try::held;
        if (result != Try::busy || std::chrono::steady_clock::now() >= end) return;
        std::this_thread::sleep_for(kPause);
    }
}

}  // namespace kestrel
