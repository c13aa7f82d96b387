#include "services/files.h"

#include "base/error.h"
#include "base/paths.h"
#include "services/guard.h"
#include "services/pagetext.h"
#include "services/program.h"
#include "system/filesystem.h"

namespace kestrel {

namespace {

constexpr std::wstring_view kTemporary = L"gsv";

std::wstring textsFolder() {
    return joinPath(filesystem::cacheFolder(), L"texts");
}

// True for an executable's folder that the program may take as its own. Programs
// are installed into a "bin" together: root can write there, but must not.
bool isPortable(std::wstring_view executables) {
    return !executables.empty() && fileName(executables) != L"bin" &&
           filesystem::isWritableFolder(executables);
}

}  // namespace

std::string readFileBytes(std::wstring_view path) {
    return guarded(L"gstrReadFile", [&] { return filesystem::read(path).value_or(std::string()); });
}

std::wstring gstrReadFile(std::wstring_view path) {
    return guarded(L"gstrReadFile", [&] { return fileText(readFileBytes(path)); });
}

bool writeFile(std::wstring_view path, std::wstring_view text, std::wstring_view backup) {
    return guarded(L"gWriteFile", [&] {
        if (path.empty()) return false;
        filesystem::replace(path, fileBytes(text), backup);
        return true;
    });
}

void gWriteFile(std::wstring_view path, std::wstring_view text) {
    writeFile(path, text);
}

bool writeBytesKeeping(std::wstring_view path, std::string_view bytes) {
    return guarded(L"gWriteFile", [&] {
        const std::wstring name = gstrLongPath(path);
        const bool keeps = !name.empty() && !gProgram().kept.contains(name);
        filesystem::replace(path, bytes, keeps ? backupPath(path) : std::wstring());
        if (keeps) gProgram().kept.insert(name);
        return true;
    });
}

std::wstring backupPath(std::wstring_view path) {
    constexpr std::wstring_view kEnd = L".bak";
    std::wstring backup(path);
    // The longest name that file systems take has no place for more.
    while (filesystem::sizeOfName(fileName(backup)) + kEnd.size() > 255) backup.pop_back();
    return backup.append(kEnd);
}

std::wstring gstrTempFile() {
    return guarded(L"gstrTempFile",
                   [] { return filesystem::makeTemporary(kTemporary, textsFolder()); });
}

void removeOldTempFiles() {
    try {
        filesystem::removeOld(kTemporary, textsFolder(), std::chrono::hours(24));
    } catch (const RunTimeError&) {  // NOLINT(bugprone-empty-catch): the next start tries again
    }
}

std::wstring gstrLongPath(std::wstring_view path) {
    return guarded(L"gstrLongPath", [&] { return filesystem::longPath(path); });
}

bool fileExists(std::wstring_view path) {
    return filesystem::isFile(path);
}

std::wstring programFile(std::wstring_view name) {
    return joinPath(gProgram().folder, name);
}

std::wstring sharedFile(std::wstring_view name) {
    const std::wstring beside = filesystem::executableFolder();
    const auto installed = [&](std::wstring_view kind) {
        return joinPath(joinPath(joinPath(folderOf(beside), kind), L"kestrel"), name);
    };
    for (const std::wstring& path :
         {joinPath(beside, name), installed(L"share"), installed(L"libexec")}) {
        if (filesystem::isFile(path) || filesystem::isFolder(path)) return path;
    }
    return {};
}

std::wstring chooseProgramFolder() {
    return chooseProgramFolder(filesystem::executableFolder());
}

std::wstring chooseProgramFolder(std::wstring_view executables) {
    if (isPortable(executables)) return std::wstring(executables);
    std::wstring folder = filesystem::userFolder();
    try {
        filesystem::makeFolder(folder);
    } catch (const RunTimeError&) {
        // The first write into the folder reports it; starting goes on.
    }
    return folder;
}

}  // namespace kestrel
