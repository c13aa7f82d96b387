#include "gas/gasnames.h"

#include "system/filesystem.h"
#include "system/letters.h"

namespace kestrel {

bool isGasName(std::wstring_view name) {
    return endsWithoutCase(name, L".gas");
}

std::vector<std::wstring> gasNames(std::wstring_view folder) {
    std::vector<std::wstring> names = filesystem::fileNames(folder);
    std::erase_if(names, [](const std::wstring& name) { return !isGasName(name); });
    return names;
}

}  // namespace kestrel
