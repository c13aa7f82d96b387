#include "base/paths.h"

namespace kestrel {
namespace {

// The length of the part of `path` before its last component, the separators
// between the two not counted unless they are the root.
std::size_t folderLength(std::wstring_view path) {
    std::size_t length = path.size() - fileName(path).size();
    while (length > 1 && isSeparator(path[length - 1]) && path[length - 2] != L':') {
        --length;
    }
    return length;
}

}  // namespace

std::wstring joinPath(std::wstring_view folder, std::wstring_view name) {
    std::wstring path(folder);
    if (path.empty() || !isSeparator(path.back())) path += kSeparator;
    return path.append(name);
}

std::wstring_view fileName(std::wstring_view path) {
    std::size_t start = path.size();
    while (start > 0 && !isSeparator(path[start - 1])) --start;
    return path.substr(start);
}

std::wstring_view folderOf(std::wstring_view path) {
    return path.substr(0, folderLength(path));
}

}  // namespace kestrel
