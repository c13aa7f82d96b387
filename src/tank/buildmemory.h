#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "services/host.h"

namespace kestrel {

// What a user tells of an archive beside its paths, as it was typed.
struct BuildFields {
    std::wstring title;
    std::wstring author;
    std::wstring build;
    std::wstring copyright;
    std::wstring priority;
    bool dev = false;
    bool multiPlayer = false;
    bool isProtected = false;

    bool operator==(const BuildFields&) const = default;
};

// The fields of the archives that were built last, as many as a history has entries, in a
// file of the program's folder that is kept like one. Lines that are none are passed over.
class BuildMemory final : private TextList {
  public:
    // Reads the file.
    BuildMemory();

    // Those of `target`; nothing when it is not remembered.
    std::optional<BuildFields> find(std::wstring_view target) const;
    // What is too long for a line of the file is not remembered.
    void keep(std::wstring_view target, const BuildFields& fields);
    // Writes the file, if anything has changed.
    void save() const;

  private:
    std::size_t count() const override { return lines_.size(); }
    std::wstring at(std::size_t index) const override { return lines_.at(index); }
    void insert(std::size_t index, std::wstring_view text) override;
    void append(std::wstring_view text) override { insert(lines_.size(), text); }
    void removeAt(std::size_t index) override;

    std::vector<std::wstring> lines_;
};

}  // namespace kestrel
