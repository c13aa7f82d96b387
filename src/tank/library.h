#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// The closed library that reads archives.
namespace kestrel {

using TankHandle = std::int32_t;   // an open archive; 0 is none
using ChildHandle = std::int32_t;  // a file or directory of an open archive; 0 is none

// The operations of the library, under its own names; gProgram().host.tank has
// the one in use. Texts are 8-bit, end in a NUL, are the library's and last until
// the next call; null is no text. What a call answers is not to be trusted. A
// member throws RunTimeError when the library cannot be loaded.
class TankLibrary {
  public:
    virtual ~TankLibrary() = default;
    // 0 on failure.
    virtual TankHandle OpenTank(const char* path) = 0;
    virtual std::int32_t CloseTank(TankHandle tank) = 0;
    // 0 for an archive without one.
    virtual ChildHandle GetRootDir(TankHandle tank) = 0;
    virtual std::int32_t GetChildCount(TankHandle tank, ChildHandle directory) = 0;
    // Puts the entry at the 0-based `index` into `child`; returns a status.
    virtual std::int32_t GetChild(TankHandle tank, ChildHandle directory, std::int32_t index,
                                  ChildHandle* child) = 0;
    virtual const char* GetChildName(TankHandle tank, ChildHandle child) = 0;
    // The path of the folder that the entry stands in.
    virtual const char* GetChildPath(TankHandle tank, ChildHandle child) = 0;
    // Not 0 for a directory.
    virtual std::int32_t IsDirectory(TankHandle tank, ChildHandle child) = 0;
    // Bytes of the data, and bytes that it takes in the archive.
    virtual std::int32_t GetChildSize(TankHandle tank, ChildHandle child) = 0;
    virtual std::int32_t GetChildCompSize(TankHandle tank, ChildHandle child) = 0;
    virtual std::int32_t GetChildCRC(TankHandle tank, ChildHandle child) = 0;
    virtual std::int16_t GetChildFlags(TankHandle tank, ChildHandle child) = 0;
    virtual std::int16_t GetChildFormat(TankHandle tank, ChildHandle child) = 0;
    // Puts the address of the data into `data`, null when there is none; returns
    // its number of bytes. It lasts until CloseChild.
    virtual std::int32_t OpenChild(TankHandle tank, ChildHandle child, const char** data) = 0;
    virtual std::int32_t CloseChild(const char* data) = 0;
};

// The library as a file, loaded when an operation is called first and unloaded
// at the end of the object's life. It is looked for in `folders`, in this order;
// without any in the executable's folder, then in the program's. The first folder
// that has the file decides. A relative folder is passed over: nothing is ever
// loaded from the current folder or the search path. As long as it cannot be
// loaded each call throws a RunTimeError that names the file, the folders and the
// reason, and the next one tries again.
std::unique_ptr<TankLibrary> makeTankLibrary(std::vector<std::wstring> folders = {});

// The seam to the operating system's libraries, implemented by
// library_posix.cpp and library_win32.cpp.
namespace dynamic {

// The name of the library's file here.
std::wstring_view tankFileName() noexcept;

// True for a path that does not depend on a current folder.
bool isFullPath(std::wstring_view path) noexcept;

// `path` as the 8-bit text that libraries take. Throws RunTimeError when there
// is none.
std::string libraryText(std::wstring_view path);

// The text of a name that the library tells.
std::wstring nameText(std::string_view name);

// A loaded library. Throws RunTimeError, with the system's reason, when `path`
// (a full one) cannot be loaded.
class Library {
  public:
    explicit Library(const std::wstring& path);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // The operation that is exported as `name`; null when there is none.
    void* find(const std::string& name) const noexcept;

  private:
    void* handle_;
};

}  // namespace dynamic

}  // namespace kestrel
