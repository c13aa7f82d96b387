#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::test {

// A new folder, removed with all that is in it at the end of its life. It does
// not read or write through the code under test.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    // The folder's path, and that of `name` in it.
    std::wstring path() const;
    std::wstring path(std::wstring_view name) const;
    std::filesystem::path native(std::wstring_view name = {}) const;

    // Writes the file `name` and returns its path.
    std::wstring put(std::wstring_view name, std::string_view bytes) const;
    // The bytes of the file `name`; "(missing)" when it is not there.
    std::string bytes(std::wstring_view name) const;
    // The names in the folder, sorted.
    std::vector<std::string> names() const;

  private:
    std::filesystem::path folder_;
};

}  // namespace kestrel::test
