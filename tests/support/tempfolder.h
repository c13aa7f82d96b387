#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "base/bytes.h"
#include "system/filesystem.h"

namespace kestrel::test {

namespace fs = std::filesystem;

// A new folder, removed with all that is in it at the end of its life; who has gone into it
// stands where he was before. It does not read or write through the code under test.
class TempFolder {
  public:
    TempFolder() { fs::create_directory(folder_); }
    ~TempFolder() {
        std::error_code ignored;
        fs::current_path(before_, ignored);
        fs::remove_all(folder_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The folder's path, or that of `name` in it.
    fs::path native(std::wstring_view name = {}) const {
        const std::string bytes = toUtf8(name);
        return bytes.empty() ? folder_ : folder_ / std::u8string(bytes.begin(), bytes.end());
    }
    std::wstring path(std::wstring_view name = {}) const { return fromUtf8(utf8(native(name))); }

    // Writes the file `name` and returns its path.
    std::wstring put(std::wstring_view name, std::string_view bytes) const {
        std::ofstream(native(name), std::ios::binary) << bytes;
        return path(name);
    }
    // The bytes of the file `name`; "(missing)" when it is not there.
    std::string bytes(std::wstring_view name) const {
        std::ifstream file(native(name), std::ios::binary);
        return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(missing)";
    }
    // The names in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            names.push_back(utf8(entry.path().filename()));
        }
        std::ranges::sort(names);
        return names;
    }

  private:
    static std::string utf8(const fs::path& path) {
        const std::u8string bytes = path.u8string();
        return {bytes.begin(), bytes.end()};
    }

    const fs::path before_ = fs::current_path();
    const fs::path folder_ =
        fs::temp_directory_path() / ("kestrel-" + std::to_string(std::random_device()()) +
                                     std::to_string(std::random_device()()));
};

}  // namespace kestrel::test
