#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"

// The seam to the operating system's files, implemented by
// filesystem_posix.cpp and filesystem_win32.cpp. Failures throw RunTimeError.
namespace kestrel::filesystem {

// An ordinary file that can be opened by its name.
bool isFile(std::wstring_view path) noexcept;

bool isFolder(std::wstring_view path) noexcept;

// What stands at `path` itself: a link is `other`, as devices are, whatever it leads to.
enum class Standing { nothing, file, folder, other };
Standing whatStands(std::wstring_view path) noexcept;

// The names of the files in `folder` that isFile() knows, in the order in which
// the file system has them; none when there is no such folder.
std::vector<std::wstring> fileNames(std::wstring_view folder);

// True when a new file can be made in `folder`.
bool isWritableFolder(std::wstring_view folder) noexcept;

// Makes `folder` and the folders above it.
void makeFolder(std::wstring_view folder);

// The whole content; nothing when `path` names no ordinary file. Throws when
// the file cannot be read. It never waits, whatever `path` names.
std::optional<std::string> read(std::wstring_view path);

// Makes an empty file at `path`, which must not be there, for the user alone.
void makePrivate(std::wstring_view path);

// Deletes the file, if it is there.
void remove(std::wstring_view path) noexcept;

// True when nobody has the right to write the file, or it has the attribute against it.
bool isProtected(std::wstring_view path) noexcept;

// Takes all rights to write the file away, as far as that can be done.
void protect(std::wstring_view path) noexcept;

// Lets a protected file be replaced, for this object's lifetime; it is protected again
// behind it.
class Unprotected {
  public:
    explicit Unprotected(std::wstring_view path);
    ~Unprotected();
    Unprotected(const Unprotected&) = delete;
    Unprotected& operator=(const Unprotected&) = delete;

  private:
    std::wstring path_;  // empty when there is nothing to do
};

// Replaces the file whole or not at all: a temporary sibling is written,
// flushed to the disk and renamed over it. Permissions are kept, and behind a
// link it is the link's target that is replaced. When `backup` is not empty the
// replaced file is kept there; at every moment one of the two is complete.
// Throws when anything fails; the file is then as it was.
void replace(std::wstring_view path, std::string_view bytes, std::wstring_view backup);

// A file that could not be written, as it was named, and why.
struct Failure {
    std::wstring path;
    RunTimeError error;
};

// Removes the temporary siblings of files in `folder` whose programs have ended. What cannot
// be removed stays.
void removeLeftBehind(std::wstring_view folder);

// Many files, each replaced whole or not at all as by replace() without a backup, with one
// wait for the disk for hundreds of them: a file is in its place after the next commit(),
// at the latest at the end of the object's life. What ended programs left behind in a
// folder goes before the first file is written there.
class Batch {
  public:
    Batch();
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    // Writes the new file beside the old one. Throws when that fails; the others stay.
    void add(std::wstring_view path, std::string_view bytes);
    // True once there are as many files or bytes as should wait for one commit().
    bool isDue() const noexcept;
    // Puts what was added in its place; returns those that could not be put there.
    std::vector<Failure> commit();

  private:
    struct Work;
    std::unique_ptr<Work> work_;
};

// A new empty file, readable by the user alone, whose name begins with
// `prefix`, in the folder for temporary files.
std::wstring makeTemporary(std::wstring_view prefix);

// As makeTemporary(), in `folder`, which is made when it is missing, and closed to others.
std::wstring makeTemporary(std::wstring_view prefix, std::wstring_view folder);

// Removes the files of `folder` whose names begin with `prefix` and that nobody has written
// for `age`.
void removeOld(std::wstring_view prefix, std::wstring_view folder, std::chrono::seconds age);

// The long, absolute form of `path`; empty when there is no such path.
std::wstring longPath(std::wstring_view path);

// What tells a file from all others, however it is named.
struct Identity {
    std::uint64_t disk = 0;
    std::uint64_t file = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): there is no pointer.
    auto operator<=>(const Identity&) const = default;
};

// Of the file behind all links of `path`; nothing when there is none.
std::optional<Identity> identityOf(std::wstring_view path);

// The path of that file itself; empty when there is none.
std::wstring pathBehindLinks(std::wstring_view path);

// `path` made absolute against the current folder, without "." and "..".
std::wstring absolutePath(std::wstring_view path);

// How much of the 255 that the name of a file may have `name` takes: bytes, or 16-bit units.
std::size_t sizeOfName(std::wstring_view name);

// The path that a "file:" address on the computer `host` (empty for this one) names.
std::wstring pathOfAddress(std::wstring_view host, std::wstring path);

// The folder of the running program's file; empty when the system does not
// tell it.
std::wstring executableFolder();

// The folder for the user's own settings of this program, and that for what may be lost.
// Neither need exist.
std::wstring userFolder();
std::wstring cacheFolder();

// The folder for what the program remembers of the user's work. It need not exist.
std::wstring stateFolder();

}  // namespace kestrel::filesystem
