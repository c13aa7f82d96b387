#include "support/tempfolder.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>

#include "services/bytes.h"

namespace kestrel::test {

namespace {

std::filesystem::path nativePath(std::wstring_view path) {
    const std::string bytes = toUtf8(path);
    return std::filesystem::path(std::u8string(bytes.begin(), bytes.end()));
}

std::wstring widePath(const std::filesystem::path& path) {
    const std::u8string bytes = path.u8string();
    return fromUtf8(std::string(bytes.begin(), bytes.end()));
}

}  // namespace

TempFolder::TempFolder() {
    char name[32];
    std::random_device random;
    std::snprintf(name, sizeof name, "kestrel-%08x%08x", random(), random());
    folder_ = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(folder_);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::wstring TempFolder::path() const {
    return widePath(folder_);
}

std::wstring TempFolder::path(std::wstring_view name) const {
    return widePath(native(name));
}

std::filesystem::path TempFolder::native(std::wstring_view name) const {
    return name.empty() ? folder_ : folder_ / nativePath(name);
}

std::wstring TempFolder::put(std::wstring_view name, std::string_view bytes) const {
    std::ofstream file(native(name), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path(name);
}

std::string TempFolder::bytes(std::wstring_view name) const {
    std::ifstream file(native(name), std::ios::binary);
    if (!file) return "(missing)";
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> TempFolder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        names.push_back(toUtf8(widePath(entry.path().filename())));
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace kestrel::test
