#include "tank/library.h"

#include <dlfcn.h>

#include "base/bytes.h"
#include "base/error.h"
#include "services/pagetext.h"

namespace kestrel::dynamic {
namespace {

constexpr int kCannotLoad = 48;

// What the system says about the last failure, without the path before it.
std::wstring lastReason(const std::wstring& path) {
    const char* words = ::dlerror();
    std::wstring reason = fromUtf8(words == nullptr ? "unknown reason" : words);
    const std::wstring start = path + L": ";
    if (reason.starts_with(start)) reason.erase(0, start.size());
    return reason;
}

}  // namespace

std::wstring_view tankFileName() noexcept {
    return L"libtank.so";
}

bool isFullPath(std::wstring_view path) noexcept {
    return path.starts_with(L'/');
}

std::string libraryText(std::wstring_view path) {
    return toUtf8(path);
}

std::wstring nameText(std::string_view name) {
    return widen(name);
}

Library::Library(const std::wstring& path)
    : handle_(::dlopen(toUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ != nullptr) return;
    throw RunTimeError(kCannotLoad, L"Cannot load '" + path + L"': " + lastReason(path));
}

Library::~Library() {
    ::dlclose(handle_);
}

void* Library::find(const std::string& name) const noexcept {
    return ::dlsym(handle_, name.c_str());
}

}  // namespace kestrel::dynamic
