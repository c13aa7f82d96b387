#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "gas/gasfile.h"

// The document model: a loaded `.gas` file is an array of GasTemplate, one for
// each top-level block. An empty text is the absent value throughout. Records
// are plain values; they keep alive what they are slices of.
namespace kestrel {

// The properties of a record, made from its file as they are asked for.
class GasProperties {
  public:
    class Iterator {
      public:
        using value_type = GasProperty;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;

        Iterator() = default;
        Iterator(const GasProperties* all, std::size_t index) : all_(all), index_(index) {}
        GasProperty operator*() const { return (*all_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        Iterator operator++(int) { return {all_, index_++}; }
        bool operator==(const Iterator& other) const { return index_ == other.index_; }

      private:
        const GasProperties* all_ = nullptr;
        std::size_t index_ = 0;
    };

    GasProperties() = default;
    // `count` entries of `file` from `first` on.
    GasProperties(std::shared_ptr<const GasFile> file, std::uint32_t first, std::uint32_t count)
        : file_(std::move(file)), first_(first), count_(count) {}
    // `count` empty ones.
    static GasProperties none(std::shared_ptr<const GasFile> file, std::uint32_t count) {
        return {std::move(file), kNone, count};
    }

    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }
    // True when they are nobody's: the array of a block without any.
    bool areNone() const noexcept { return first_ == kNone; }
    GasProperty operator[](std::size_t index) const {
        return areNone() ? GasProperty() : file_->property(first_ + index);
    }
    GasProperty back() const { return (*this)[count_ - 1]; }
    Iterator begin() const { return {this, 0}; }
    Iterator end() const { return {this, count_}; }

    bool operator==(const GasProperties& other) const;

  private:
    static constexpr auto kNone = static_cast<std::uint32_t>(-1);

    std::shared_ptr<const GasFile> file_;
    std::uint32_t first_ = kNone;
    std::uint32_t count_ = 0;
};

// One top-level block. Without a Name it is no record.
struct GasTemplate {
    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

    kestrel::Text Name;  // shown name: the kind and the index, or its `doc` value
    kestrel::Text Kind;  // display name of the block's kind
    GasProperties Properties;
    kestrel::Text Text;      // the block's source text after normalisation
    kestrel::Text Comments;  // "Line n:" TAB text CR LF for each comment
    // The block's place among the headers of its file; kNowhere for what is no block there
    // as it stands.
    std::size_t Place = kNowhere;

    bool operator==(const GasTemplate&) const = default;
};

// The properties of `record` that its block has: a block without any keeps an array of empty
// ones, which are nobody's.
GasProperties ownProperties(const GasTemplate& record);

struct BlockKind {
    std::string_view prefix;  // of the header, compared with case
    const char* name;         // display name
};

// The known kinds. The order matters: the first row whose prefix stands at a
// file's first header decides the kind of the whole file.
inline constexpr std::array<BlockKind, 11> kBlockKinds{{
    {"[t:template,", "Template"},
    {"[party]", "Party"},
    {"[info]", "Info"},
    {"[t:tsd,", "TSD"},
    {"[t:siege_nodes,", "Seige Nodes"},
    {"[t:sed,", "SED"},
    {"[credits_movie", "Credits Movie"},
    {"[outro]", "Outro"},
    {"[intro_movie]", "Intro Movie"},
    {"[t:component,", "Component"},
    {"[XXXXX", "Unknown"},
}};

// Appends the path by which the tree, the property list and the renderer agree on where a
// property sits: `root`, "\" and, inside a sub-block, group, "_", level, "\". In the page of
// the texts.
void appendGroupPath(std::string& bytes, const Text& root, const Text& group, int level);

// The same as wide text.
std::wstring groupPath(const Text& root, const Text& group, int level);
std::wstring groupPath(const GasTemplate& record, const GasProperty& property);

// Tells the properties of a record whose group path is the one that is looked for.
class GroupFilter {
  public:
    GroupFilter(const GasTemplate& record, std::wstring_view path);
    bool has(const GasProperty& property);

  private:
    const Text& root_;
    std::string path_;
    bool mayHave_;  // the page has its characters
    std::string buffer_;
};

}  // namespace kestrel
