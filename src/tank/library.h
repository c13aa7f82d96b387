#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tankhost/protocol.h"

// The closed library that reads archives. It runs in a process of its own, kestrel-tank: what
// it does wrong ends that process and no other.
namespace kestrel {

using TankEntry = tankhost::Entry;

// The library's operations; gProgram().host.tank has the one in use. What a call answers is
// not to be trusted. A member throws RunTimeError when the library cannot be loaded, and when
// it stops working. From then on, and from when its user has cancelled a call, what was open
// is lost: each call about it answers nothing.
class TankLibrary {
  public:
    virtual ~TankLibrary() = default;
    // 0 on failure.
    virtual TankHandle OpenTank(std::wstring_view path) = 0;
    virtual std::int32_t CloseTank(TankHandle tank) = 0;
    // 0 for an archive without one.
    virtual ChildHandle GetRootDir(TankHandle tank) = 0;
    virtual std::int32_t GetChildCount(TankHandle tank, ChildHandle directory) = 0;
    // The entry at the 0-based `index`, with the call's status; it lasts until the next call.
    virtual const TankEntry& GetChild(TankHandle tank, ChildHandle directory,
                                      std::int32_t index) = 0;
    // What is known of an entry; it lasts until the next call.
    virtual const TankEntry& entry(TankHandle tank, ChildHandle child) = 0;
    // Puts the address of the data into `data`, null when there is none; returns the number of
    // bytes that the library tells. More than kMostData are not there to be read. They last
    // until CloseChild.
    virtual std::int32_t OpenChild(TankHandle tank, ChildHandle child, const char*& data) = 0;
    virtual std::int32_t CloseChild(const char* data) = 0;
    // How many of the told bytes are really there; the others are zero.
    virtual std::size_t bytesThere(const char* data) const = 0;
    // True once the archive is open no more, whatever ended that.
    virtual bool isLost(TankHandle tank) const = 0;
};

// More than a report of it could show: a count beyond it is no count.
inline constexpr std::int32_t kMostData = 1 << 27;

// The library as a file. It is looked for in `folders`, in this order; without any in the
// executable's folder, then in the program's. The first folder that has the file decides. A
// relative folder is passed over: nothing is ever loaded from the current folder or the search
// path. As long as it cannot be loaded each call throws a RunTimeError that names the file, the
// folders and the reason, and the next one tries again. Its process runs from the first archive
// that is opened until the last one is closed; `host` is the program, kestrel-tank, that
// came with this one unless told. A call that is not answered for so long asks the user whether
// to wait.
std::unique_ptr<TankLibrary> makeTankLibrary(
    std::vector<std::wstring> folders = {}, std::wstring host = {},
    std::chrono::milliseconds patience = std::chrono::seconds(30));

// What the systems do differently.
namespace dynamic {

// The name of the library's file here.
std::wstring_view tankFileName() noexcept;

// True for a path that does not depend on a current folder.
bool isFullPath(std::wstring_view path) noexcept;

// The text of a name that the library tells.
std::wstring nameText(std::string_view name);

// How the library's process is started.
struct HostCommand {
    std::wstring program;
    std::vector<std::wstring> words;
    std::wstring library;  // its full path
    std::wstring notice;   // what the user is told once; empty for nothing
};

// For the library that is found in `folders`; `host` is kestrel-tank. Throws RunTimeError
// where there is none.
HostCommand hostCommand(const std::vector<std::wstring>& folders, const std::wstring& host);

}  // namespace dynamic

// The path of `name` in the first of `folders` that has it; empty where none does.
std::wstring findInFolders(const std::vector<std::wstring>& folders, std::wstring_view name);

// Throws the RunTimeError of a library that none of `folders` has.
[[noreturn]] void throwNoLibrary(const std::vector<std::wstring>& folders);

}  // namespace kestrel
