#include "services/archives.h"

#include <algorithm>

#include "base/paths.h"
#include "services/program.h"
#include "system/filesystem.h"
#include "system/letters.h"

namespace kestrel {

bool isArchive(std::wstring_view path) {
    constexpr std::wstring_view kStart = L".ds";
    const std::wstring_view name = fileName(path);
    const std::size_t dot = name.rfind(L'.');
    return gProgram().host.archives != nullptr && dot != name.npos && dot != 0 &&
           compareWithoutCase(name.substr(dot, kStart.size()), kStart) == 0 &&
           filesystem::isFile(path);
}

std::wstring archiveOf(std::wstring_view path) {
    constexpr std::wstring_view kSlashes = L"/\\";
    for (std::size_t end = 0; (end = path.find_first_of(kSlashes, end)) != path.npos; ++end) {
        if (isArchive(path.substr(0, end))) return std::wstring(path.substr(0, end));
    }
    return {};
}

std::wstring pathInArchive(std::wstring_view archive, std::wstring_view name) {
    std::wstring inside(name);
    std::ranges::replace(inside, L'\\', kSeparator);
    std::ranges::replace(inside, L'/', kSeparator);
    return joinPath(archive, inside);
}

std::wstring sourcePath(std::wstring_view path) {
    const std::wstring archive = archiveOf(path);
    return archive.empty() ? std::wstring(path)
                           : pathInArchive(archive, path.substr(archive.size() + 1));
}

std::optional<FileStamp> sourceStamp(std::wstring_view path) {
    const std::wstring archive = archiveOf(path);
    return fileStamp(archive.empty() ? path : std::wstring_view(archive));
}

}  // namespace kestrel
