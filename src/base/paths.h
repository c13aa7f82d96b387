#pragma once

#include <string>
#include <string_view>

// The parts of paths, as the system writes them.
namespace kestrel {

// True where paths are Windows's: there wide characters have 16 bits.
inline constexpr bool kWindowsPaths = sizeof(wchar_t) == 2;
inline constexpr wchar_t kSeparator = kWindowsPaths ? L'\\' : L'/';

// True for a character that separates the components of a path here.
constexpr bool isSeparator(wchar_t c) noexcept {
    return c == L'/' || c == kSeparator;
}

// `folder` and `name` joined by one separator. A folder that already ends in
// one gets no second.
std::wstring joinPath(std::wstring_view folder, std::wstring_view name);

// The last component of `path`, and `path` without it (no trailing separator
// but a root's own).
std::wstring_view fileName(std::wstring_view path);
std::wstring_view folderOf(std::wstring_view path);

}  // namespace kestrel
