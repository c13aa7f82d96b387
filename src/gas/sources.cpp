#include "gas/sources.h"

#include "services/filesystem.h"
#include "services/text.h"

namespace kestrel {

bool isGasName(std::wstring_view name) {
    constexpr std::wstring_view kEnd = L".gas";
    return name.size() >= kEnd.size() &&
           compareWithoutCase(name.substr(name.size() - kEnd.size()), kEnd) == 0;
}

std::vector<std::wstring> gasNames(std::wstring_view folder) {
    std::vector<std::wstring> names = filesystem::fileNames(folder);
    std::erase_if(names, [](const std::wstring& name) { return !isGasName(name); });
    return names;
}

}  // namespace kestrel
