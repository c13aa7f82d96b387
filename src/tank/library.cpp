#include "tank/library.h"

#include <utility>

#include "base/error.h"
#include "base/paths.h"
#include "services/files.h"
#include "services/program.h"
#include "system/filesystem.h"

namespace kestrel {
namespace {

constexpr int kNoSuchOperation = 453;

// The address of the operation `name`, whose arguments take `bytes` on the
// stack of a 32-bit Windows program: compilers there export such a function bare
// or decorated.
void* addressOf(const dynamic::Library& library, const std::string& name, std::size_t bytes) {
    const std::string decorated = name + "@" + std::to_string(bytes);
    for (const std::string& candidate : {name, decorated, "_" + decorated}) {
        if (void* address = library.find(candidate)) return address;
    }
    return nullptr;
}

// One operation of the loaded library.
template <class Signature>
class Operation;

template <class Result, class... Arguments>
class Operation<Result(Arguments...)> {
  public:
    Operation(const dynamic::Library& library, const std::wstring& path, const std::string& name)
        : call_(reinterpret_cast<Call>(
              addressOf(library, name, sizeof...(Arguments) * sizeof(std::int32_t)))) {
        if (call_ != nullptr) return;
        throw RunTimeError(kNoSuchOperation, L"Cannot load '" + path + L"': it has no operation '" +
                                                 std::wstring(name.begin(), name.end()) + L"'");
    }
    Result operator()(Arguments... arguments) const { return call_(arguments...); }

  private:
    // KESTREL_TANK_CALL is the library's calling convention.
    using Call = Result(KESTREL_TANK_CALL*)(Arguments...);

    Call call_;
};

// The library with its operations; it throws unless all are there.
struct Operations {
    explicit Operations(std::wstring file) : path(std::move(file)) {}

    template <class Result>
    using OfChild = Operation<Result(TankHandle, ChildHandle)>;

    std::wstring path;
    dynamic::Library library{path};
    Operation<TankHandle(const char*)> OpenTank{library, path, "OpenTank"};
    Operation<std::int32_t(TankHandle)> CloseTank{library, path, "CloseTank"};
    Operation<ChildHandle(TankHandle)> GetRootDir{library, path, "GetRootDir"};
    OfChild<std::int32_t> GetChildCount{library, path, "GetChildCount"};
    Operation<std::int32_t(TankHandle, ChildHandle, std::int32_t, ChildHandle*)> GetChild{
        library, path, "GetChild"};
    OfChild<const char*> GetChildName{library, path, "GetChildName"};
    OfChild<const char*> GetChildPath{library, path, "GetChildPath"};
    OfChild<std::int32_t> IsDirectory{library, path, "IsDirectory"};
    OfChild<std::int32_t> GetChildSize{library, path, "GetChildSize"};
    OfChild<std::int32_t> GetChildCompSize{library, path, "GetChildCompSize"};
    OfChild<std::int32_t> GetChildCRC{library, path, "GetChildCRC"};
    OfChild<std::int16_t> GetChildFlags{library, path, "GetChildFlags"};
    OfChild<std::int16_t> GetChildFormat{library, path, "GetChildFormat"};
    Operation<std::int32_t(TankHandle, ChildHandle, const char**)> OpenChild{library, path,
                                                                             "OpenChild"};
    Operation<std::int32_t(const char*)> CloseChild{library, path, "CloseChild"};
};

// Where the library is looked for unless the caller tells.
std::vector<std::wstring> usualFolders() {
    std::vector<std::wstring> folders{filesystem::executableFolder()};
    if (gProgram().folder != folders.front()) folders.push_back(gProgram().folder);
    return folders;
}

// The path of the library's file in the first of `folders` that has it.
std::wstring findLibrary(const std::vector<std::wstring>& folders) {
    std::wstring places;
    for (const std::wstring& folder : folders) {
        if (!dynamic::isFullPath(folder)) continue;
        std::wstring path = joinPath(folder, dynamic::tankFileName());
        if (fileExists(path)) return path;
        places.append(places.empty() ? L" in '" : L" or '").append(folder).append(L"'");
    }
    throw RunTimeError(kFileNotFound, L"Cannot find the library '" +
                                          std::wstring(dynamic::tankFileName()) + L"'" + places);
}

class LibraryFile final : public TankLibrary {
  public:
    explicit LibraryFile(std::vector<std::wstring> folders) : folders_(std::move(folders)) {}

    TankHandle OpenTank(const char* path) override { return loaded().OpenTank(path); }
    std::int32_t CloseTank(TankHandle tank) override { return loaded().CloseTank(tank); }
    ChildHandle GetRootDir(TankHandle tank) override { return loaded().GetRootDir(tank); }
    std::int32_t GetChildCount(TankHandle tank, ChildHandle directory) override {
        return loaded().GetChildCount(tank, directory);
    }
    std::int32_t GetChild(TankHandle tank, ChildHandle directory, std::int32_t index,
                          ChildHandle* child) override {
        return loaded().GetChild(tank, directory, index, child);
    }
    const char* GetChildName(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildName(tank, child);
    }
    const char* GetChildPath(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildPath(tank, child);
    }
    std::int32_t IsDirectory(TankHandle tank, ChildHandle child) override {
        return loaded().IsDirectory(tank, child);
    }
    std::int32_t GetChildSize(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildSize(tank, child);
    }
    std::int32_t GetChildCompSize(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildCompSize(tank, child);
    }
    std::int32_t GetChildCRC(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildCRC(tank, child);
    }
    std::int16_t GetChildFlags(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildFlags(tank, child);
    }
    std::int16_t GetChildFormat(TankHandle tank, ChildHandle child) override {
        return loaded().GetChildFormat(tank, child);
    }
    std::int32_t OpenChild(TankHandle tank, ChildHandle child, const char** data) override {
        return loaded().OpenChild(tank, child, data);
    }
    std::int32_t CloseChild(const char* data) override { return loaded().CloseChild(data); }

  private:
    const Operations& loaded() {
        if (operations_ == nullptr) {
            operations_ = std::make_unique<const Operations>(
                findLibrary(folders_.empty() ? usualFolders() : folders_));
        }
        return *operations_;
    }

    std::vector<std::wstring> folders_;
    std::unique_ptr<const Operations> operations_;
};

}  // namespace

std::unique_ptr<TankLibrary> makeTankLibrary(std::vector<std::wstring> folders) {
    return std::make_unique<LibraryFile>(std::move(folders));
}

}  // namespace kestrel
