#pragma once

#include <cstdint>
#include <string>

#include "base/error.h"
#include "tankhost/platform.h"
#include "tankhost/protocol.h"

// The operations of the archive library, under its own names. Texts are 8-bit, end in a NUL,
// are the library's and last until the next call; null is no text.
namespace kestrel::tankhost {

// One operation of the loaded library. KESTREL_TANK_CALL is its calling convention.
template <class Signature>
class Operation;

template <class Result, class... Arguments>
class Operation<Result(Arguments...)> {
  public:
    Operation(const Library& library, const std::wstring& path, const std::string& name)
        : call_(reinterpret_cast<Call>(
              addressOf(library, name, sizeof...(Arguments) * sizeof(std::int32_t)))) {
        constexpr int kNoSuchOperation = 453;
        if (call_ != nullptr) return;
        throw RunTimeError(kNoSuchOperation, L"Cannot load '" + path + L"': it has no operation '" +
                                                 std::wstring(name.begin(), name.end()) + L"'");
    }
    Result operator()(Arguments... arguments) const { return call_(arguments...); }

  private:
    using Call = Result(KESTREL_TANK_CALL*)(Arguments...);

    // The arguments take `bytes` on the stack of a 32-bit Windows program: compilers there
    // export such a function bare or decorated.
    static void* addressOf(const Library& library, const std::string& name, std::size_t bytes) {
        const std::string decorated = name + "@" + std::to_string(bytes);
        for (const std::string& candidate : {name, decorated, "_" + decorated}) {
            if (void* address = library.find(candidate)) return address;
        }
        return nullptr;
    }

    Call call_;
};

// The library with its operations; it throws unless all are there.
struct Operations {
    explicit Operations(std::wstring file) : path(std::move(file)) {}

    template <class Result>
    using OfChild = Operation<Result(TankHandle, ChildHandle)>;

    std::wstring path;
    Library library{path};
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

}  // namespace kestrel::tankhost
