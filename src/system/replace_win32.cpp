#include <algorithm>
#include <memory>
#include <random>
#include <set>

#include "base/paths.h"
#include "system/file_win32.h"
#include "system/filelock.h"
#include "system/filesystem.h"
#include "system/siblings.h"

namespace kestrel::filesystem {

namespace {

using namespace win32;

// The file behind a link; the path itself when it is none.
std::wstring fileBehind(std::wstring_view path) {
    std::wstring name = nameOf(path);
    if (name.empty()) raise(ERROR_INVALID_NAME, kWrite, path);
    const DWORD attributes = attributesOf(name);
    if (attributes == INVALID_FILE_ATTRIBUTES) return name;
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0) {
        raise(ERROR_ACCESS_DENIED, kWrite, path);
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return name;
    const File file(name, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    if (!file.isOpen()) raise(::GetLastError(), kWrite, path);
    return textOf([&](wchar_t* text, DWORD size) {
        return ::GetFinalPathNameByHandleW(file.handle(), text, size, FILE_NAME_NORMALIZED);
    });
}

// A temporary sibling of a file. Its owner holds a lock beside it, which the system ends
// with the owner: one whose lock can be had was left behind. The lock has a file of its
// own, since the file itself cannot be replaced while somebody has it open.
class Sibling {
  public:
    explicit Sibling(const std::wstring& of) : name_(newName(of)), lock_(lockPath(name_)) {}
    ~Sibling() {
        if (!kept_) ::DeleteFileW(name_.c_str());
    }
    Sibling(const Sibling&) = delete;
    Sibling& operator=(const Sibling&) = delete;

    const std::wstring& name() const noexcept { return name_; }
    // Leaves the file where it is.
    void keep() noexcept { kept_ = true; }

    static std::wstring lockPath(const std::wstring& name) { return name + L".lock"; }

  private:
    static std::wstring newName(const std::wstring& of) {
        std::random_device random;
        std::wstring name = of + L"." + std::to_wstring(random()) + L"-";
        for (std::size_t i = 0; i < siblings::kHexDigits; ++i) {
            name += static_cast<wchar_t>(siblings::kDigits[random() % 16]);
        }
        return name.append(siblings::kEnd.begin(), siblings::kEnd.end());
    }

    std::wstring name_;
    FileLock lock_;
    bool kept_ = false;
};

void writeNew(const std::wstring& name, std::string_view bytes, std::wstring_view path) {
    constexpr std::size_t kMost = std::size_t{1} << 30;
    File file(name, GENERIC_WRITE, CREATE_NEW, FILE_ATTRIBUTE_NORMAL);
    if (!file.isOpen()) raise(::GetLastError(), kWrite, path);
    while (!bytes.empty()) {
        const DWORD size = static_cast<DWORD>(std::min(bytes.size(), kMost));
        DWORD count = 0;
        if (::WriteFile(file.handle(), bytes.data(), size, &count, nullptr) == 0) {
            raise(::GetLastError(), kWrite, path);
        }
        if (count == 0) raise(ERROR_DISK_FULL, kWrite, path);
        bytes.remove_prefix(count);
    }
    if (::FlushFileBuffers(file.handle()) == 0 || !file.close()) {
        raise(::GetLastError(), kWrite, path);
    }
}

// True for what another program causes that has the file open for a moment.
bool mayPass(DWORD code) noexcept {
    return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION ||
           code == ERROR_ACCESS_DENIED || code == ERROR_USER_MAPPED_FILE ||
           code == ERROR_UNABLE_TO_REMOVE_REPLACED || code == ERROR_UNABLE_TO_MOVE_REPLACEMENT;
}

// Calls until it succeeds, at most five times within a second; the last error,
// or 0.
template <class Call>
DWORD retried(Call call) {
    constexpr int kTries = 5;
    constexpr DWORD kPause = 250;
    for (int attempt = 1;; ++attempt) {
        if (call() != 0) return ERROR_SUCCESS;
        const DWORD code = ::GetLastError();
        if (attempt == kTries || !mayPass(code)) return code;
        ::Sleep(kPause);
    }
}

DWORD moveFile(const std::wstring& from, const std::wstring& to, DWORD flags) {
    return retried(
        [&] { return ::MoveFileExW(from.c_str(), to.c_str(), flags | MOVEFILE_WRITE_THROUGH); });
}

// Puts `fresh` in the place of `name`, whose attributes and access list stay, and the old
// file at `spare`. It always gets a place: without one a failure half-way could lose it.
void exchange(const std::wstring& name, const Sibling& fresh, Sibling& spare,
              std::wstring_view path) {
    const DWORD code = retried([&] {
        return ::ReplaceFileW(name.c_str(), fresh.name().c_str(), spare.name().c_str(),
                              REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr);
    });
    if (code == ERROR_SUCCESS) return;
    // Half-way: the old file has moved away, the new one has not moved in.
    if (code == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2 && moveFile(spare.name(), name, 0) != 0) {
        spare.keep();
    }
    raise(code, kWrite, path);
}

// Keeps the old file, now at `spare`, at `backup`. Where that cannot be, it comes back to
// `name`, and the backup of before is still there.
void keepAt(std::wstring_view backup, Sibling& spare, const std::wstring& name) {
    const std::wstring kept = nameOf(backup);
    const DWORD code = moveFile(spare.name(), kept, MOVEFILE_REPLACE_EXISTING);
    if (code == ERROR_SUCCESS) return;
    if (moveFile(spare.name(), name, MOVEFILE_REPLACE_EXISTING) != 0) spare.keep();
    raise(code, kWrite, backup);
}

// Removes what killed runs left behind in `folder` (with its separator) of the file called
// `of`; with an empty one, of all files.
void removeSiblings(const std::wstring& folder, std::wstring_view of) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW(nameOf(folder + L"*.tmp").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring_view entry = found.cFileName;
        const std::size_t dot = entry.rfind(L'.', entry.size() - siblings::kEnd.size() - 1);
        if (dot == 0 || dot == entry.npos || !siblings::isEnd(entry.substr(dot + 1))) continue;
        if (!of.empty() && entry.substr(0, dot) != of) continue;
        const std::wstring name = nameOf(folder + found.cFileName);
        if (FileLock(Sibling::lockPath(name)).isHeld()) ::DeleteFileW(name.c_str());
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
}

std::wstring folderBefore(const std::wstring& name) {
    return name.substr(0, name.size() - fileName(name).size());
}

void write(std::wstring_view path, const std::wstring& name, std::string_view bytes,
           std::wstring_view backup) {
    const DWORD attributes = attributesOf(name);
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        raise(ERROR_ACCESS_DENIED, kWrite, path);
    }
    const Sibling fresh(name);
    writeNew(fresh.name(), bytes, path);
    if (exists) {
        ::SetFileAttributesW(fresh.name().c_str(), attributes);
        Sibling spare(name);
        exchange(name, fresh, spare, path);
        if (!backup.empty()) keepAt(backup, spare, name);
    } else if (const DWORD code = moveFile(fresh.name(), name, MOVEFILE_REPLACE_EXISTING)) {
        raise(code, kWrite, path);
    }
}

}  // namespace

void replace(std::wstring_view path, std::string_view bytes, std::wstring_view backup) {
    const std::wstring name = fileBehind(path);
    removeSiblings(folderBefore(name), fileName(name));
    write(path, name, bytes, backup);
}

void removeLeftBehind(std::wstring_view folder) {
    removeSiblings(joinPath(folder, L""), {});
}

// The system has no wait for several files, so each is put in its place at once.
struct Batch::Work {
    std::set<std::wstring> cleaned;  // folders
};

Batch::Batch() : work_(std::make_unique<Work>()) {}
Batch::~Batch() = default;

void Batch::add(std::wstring_view path, std::string_view bytes) {
    const std::wstring name = fileBehind(path);
    const std::wstring folder = folderBefore(name);
    if (work_->cleaned.insert(folder).second) removeSiblings(folder, {});
    write(path, name, bytes, {});
}

bool Batch::isDue() const noexcept {
    return false;
}

std::vector<Failure> Batch::commit() {
    return {};
}

}  // namespace kestrel::filesystem
