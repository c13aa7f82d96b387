#include "tank/wrappers.h"

#include <array>
#include <cstring>
#include <utility>

#include "base/error.h"
#include "base/text.h"
#include "services/guard.h"
#include "services/pagetext.h"
#include "services/program.h"

namespace kestrel {
namespace {

// Runs `call` with the library under the guard of `routine`; nothing is called
// without a handle or a library.
template <class Handle, class Call>
auto withLibrary(Handle handle, std::wstring_view routine, Call call) {
    using Result = std::invoke_result_t<Call, TankLibrary&>;
    TankLibrary* library = gProgram().host.tank;
    if (handle == Handle{} || library == nullptr) return Result{};
    return guarded(routine, [&] { return call(*library); });
}

std::wstring textOf(std::string_view bytes) {
    std::wstring text = dynamic::nameText(bytes);
    return trim(text).empty() ? std::wstring() : text;
}

std::wstring dataText(const char* data, std::int32_t count) {
    if (count <= 0) return {};
    const auto size = static_cast<std::size_t>(count);
    if (count > kMostData) throw RunTimeError(kOutOfMemory, L"Out of memory");
    const void* zero = std::memchr(data, 0, size);
    if (zero == nullptr) return widen({data, size});
    const std::string_view bytes(data, static_cast<const char*>(zero));
    if (bytes.find_first_not_of(' ') == bytes.npos) return {};
    std::wstring text;
    text.reserve(size);
    text += widen(bytes);
    text += L'\0';
    text.resize(size, L' ');
    return text;
}

// The data of an entry, given back to the library at the end of its life.
class OpenedData {
  public:
    explicit OpenedData(const char* data) : data_(data) {}
    ~OpenedData() { glngCloseChild(data_); }
    OpenedData(const OpenedData&) = delete;
    OpenedData& operator=(const OpenedData&) = delete;

  private:
    const char* data_;
};

}  // namespace

TankHandle gOpenTank(std::wstring_view path) {
    // A NUL would cut the name: another file would be opened.
    if (path.find(L'\0') != path.npos) return 0;
    return withLibrary(!path.empty(), L"gOpenTank",
                       [&](TankLibrary& library) { return library.OpenTank(path); });
}

std::int32_t glngCloseTank(TankHandle& tank) {
    return withLibrary(tank, L"glngCloseTank", [&](TankLibrary& library) {
        return library.CloseTank(std::exchange(tank, 0));
    });
}

std::int32_t glngGetChildCount(TankHandle tank, ChildHandle directory) {
    return withLibrary(tank, L"glngGetChildCount", [&](TankLibrary& library) {
        return library.GetChildCount(tank, directory);
    });
}

std::int32_t glngGetChild(TankHandle tank, ChildHandle directory, std::int32_t index,
                          ChildHandle& child) {
    child = 0;
    return withLibrary(tank, L"glngGetChild", [&](TankLibrary& library) {
        const TankEntry& entry = library.GetChild(tank, directory, index);
        child = entry.handle;
        return entry.status;
    });
}

std::wstring gstrGetChildName(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"gstrGetChildName", [&](TankLibrary& library) {
        return textOf(library.entry(tank, child).name);
    });
}

std::wstring gstrGetChildPath(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"gstrGetChildPath", [&](TankLibrary& library) {
        return textOf(library.entry(tank, child).path);
    });
}

bool gblnIsDirectory(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"gblnIsDirectory", [&](TankLibrary& library) {
        return library.entry(tank, child).isDirectory != 0;
    });
}

std::int32_t glngGetChildSize(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"glngGetChildSize",
                       [&](TankLibrary& library) { return library.entry(tank, child).size; });
}

std::int32_t glngGetChildCompSize(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"glngGetChildCompSize",
                       [&](TankLibrary& library) { return library.entry(tank, child).compSize; });
}

std::int32_t glngGetChildCRC(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"glngGetChildCRC",
                       [&](TankLibrary& library) { return library.entry(tank, child).crc; });
}

std::int16_t gintGetChildFlags(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"gintGetChildFlags",
                       [&](TankLibrary& library) { return library.entry(tank, child).flags; });
}

std::int16_t gintGetChildFormat(TankHandle tank, ChildHandle child) {
    return withLibrary(tank, L"gintGetChildFormat",
                       [&](TankLibrary& library) { return library.entry(tank, child).format; });
}

std::int32_t glngOpenChild(TankHandle tank, ChildHandle child, const char*& data) {
    data = nullptr;
    return withLibrary(tank, L"glngOpenChild",
                       [&](TankLibrary& library) { return library.OpenChild(tank, child, data); });
}

std::int32_t glngCloseChild(const char* data) {
    return withLibrary(data, L"glngCloseChild",
                       [&](TankLibrary& library) { return library.CloseChild(data); });
}

std::wstring gstrGetChildDataRAW(TankHandle tank, ChildHandle child, std::int32_t& count) {
    count = 0;
    return withLibrary(tank, L"gstrGetChildDataRAW", [&](TankLibrary&) {
        const char* data = nullptr;
        count = glngOpenChild(tank, child, data);
        if (data == nullptr) return std::wstring();
        const OpenedData opened(data);
        return dataText(data, count);
    });
}

std::wstring gstrFormatName(std::int32_t format) {
    return guarded(L"gstrFormatName", [&]() -> std::wstring {
        switch (format) {
            case 0:
                return L"RAW";
            case 1:
                return L"ZLib";
            case 2:
                return L"LZO";
            default:  // misspelt since ever: users' own programs read it
                return L"Unkown(Type: " + std::to_wstring(format) + L")";
        }
    });
}

}  // namespace kestrel
