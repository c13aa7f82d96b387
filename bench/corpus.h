#pragma once

#include <array>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "common.h"
#include "services/pagetext.h"

// The generated information: templates of a size as modders write them, as
// `.gas` and as three formats that other parsers read. The same size always
// gives the same bytes.
namespace kestrel::bench {

// The pieces that a format is written in. In a piece "%" stands for the tabs of its depth,
// "@" for a name, "$" for a value and "&" for one that has quotes unless it is a number; ","
// is left out behind an opening bracket.
struct Format {
    const char* file;
    std::string_view start;
    std::string_view top;  // opens a template, whose name is the value
    std::string_view block;
    std::string_view property;
    std::string_view inside;  // behind the properties of a block with blocks in it
    std::string_view leaf;    // closes a block without any
    std::string_view end;
    std::string_view finish;
};

inline constexpr std::array<Format, 4> kFormats{{
    {"corpus.gas", "", "\r\n[t:template,n:$]\r\n{", "\r\n%[@]\r\n%{", "\r\n%@ = &;", "", "\r\n%}",
     "\r\n%}", "\r\n"},
    {"corpus.json", "[", ",\n{\n\t\"name\": \"$\"", ",\n%\"@\": {", ",\n%\"@\": \"$\"", "", "\n%}",
     "\n%}", "\n]\n"},
    {"corpus.xml", "<templates>", "\n<template name=\"$\"", "\n%<@", " @=\"$\"", ">", "/>",
     "\n%</@>", "\n</templates>\n"},
    {"corpus.cfg", "templates = (", ",\n{\n\tname = \"$\"", ",\n%@ = {", ",\n%@ = \"$\"", "",
     "\n%}", "\n%}", "\n);\n"},
}};

inline constexpr std::array<std::string_view, 16> kBlockNames = {
    "look",    "body", "collide", "break", "cargo", "contents", "use",    "trade",
    "mooring", "work", "hours",   "door",  "crew",  "patrol",   "senses", "sounds"};
inline constexpr std::array<std::string_view, 24> kPropertyNames = {
    "model",     "texture",  "scale",    "weight",  "shape",        "radius",
    "friction",  "strength", "pieces",   "locked",  "key",          "rolls",
    "verb",      "price",    "fuel",     "color",   "range",        "speed",
    "lit_until", "least",    "greeting", "courage", "casts_shadow", "description"};
inline constexpr std::array<std::string_view, 16> kWords = {
    "oak",   "iron",        "quay",   "lantern", "rope", "herring", "salt",  "harbour",
    "crate", "caf\xC3\xA9", "anchor", "tide",    "gull", "watch",   "plank", "copper"};
// With a number in place of each "#" and a word in place of each "*".
inline constexpr std::array<std::string_view, 12> kValues = {
    "#",     "#",     "#.#",         "#.#",         "true",  "false",
    "m_*_#", "m_*_#", "#.#,#.#,#.#", "#.#,#.#,#.#", "* * *", "* * * * * *"};
inline constexpr std::array<std::string_view, 2> kComments = {"\t// * * *", "\r\n\t// * * * * * *"};

class Corpus {
  public:
    // Writes the information into `folder`, which it makes, as corpus.gas, .json, .xml and
    // .cfg, until the first one has `gasBytes` of UTF-8; it is then written in the code page.
    // Comments stand there alone: JSON has none.
    void write(const std::filesystem::path& folder, std::size_t gasBytes) {
        add(&Format::start);
        for (std::size_t index = 0; texts_[0].size() < gasBytes; ++index) addTemplate(index);
        add(&Format::finish);
        // The code page has its own byte for what UTF-8 writes as two.
        texts_[0] = narrow(fromUtf8(texts_[0]));
        std::filesystem::create_directories(folder);
        for (std::size_t i = 0; i < kFormats.size(); ++i) {
            std::ofstream(folder / kFormats[i].file, std::ios::binary) << texts_[i];
        }
    }

  private:
    std::size_t below(std::size_t limit) { return random_() % limit; }
    bool chance(std::size_t percent) { return below(100) < percent; }
    std::string_view oneOf(std::span<const std::string_view> all) { return all[below(all.size())]; }

    std::string filled(std::string_view pattern) {
        std::string text;
        for (const char& c : pattern) {
            const std::string number = std::to_string(below(200));
            appendFilled(text, {&c, 1}, {{'#', number}, {'*', oneOf(kWords)}});
        }
        return text;
    }

    // Names do not repeat within a block: most formats forbid it. Its properties precede its
    // sub-blocks, so that formats that keep the two apart hold them in the same order.
    void addTemplate(std::size_t index) {
        add(&Format::top, {}, filled("*_") + std::to_string(index));
        depth_ = 1;
        if (chance(90)) addProperty("doc", "* *");
        if (chance(60)) addProperty("screen_name", "* *");
        if (chance(80)) addProperty("specializes", "base_*");
        addProperties(1 + below(5));
        add(&Format::inside);
        addBlocks(2 + below(5));
        depth_ = 0;
        add(&Format::end, "template");
    }

    void addProperties(std::size_t count) {
        std::size_t at = below(kPropertyNames.size());
        for (; count > 0; --count, at = (at + 7) % kPropertyNames.size()) {
            addProperty(kPropertyNames[at], oneOf(kValues));
        }
    }

    void addProperty(std::string_view name, std::string_view pattern) {
        add(&Format::property, name, filled(pattern));
        if (chance(10)) texts_[0] += filled(oneOf(kComments));
    }

    void addBlocks(std::size_t count) {
        std::size_t at = below(kBlockNames.size());
        for (; count > 0; --count, at = (at + 5) % kBlockNames.size()) {
            const bool isLeaf = depth_ == 4 || !chance(35);
            add(&Format::block, kBlockNames[at]);
            ++depth_;
            addProperties(2 + below(7));
            if (!isLeaf) {
                add(&Format::inside);
                addBlocks(1 + below(2));
            }
            --depth_;
            add(isLeaf ? &Format::leaf : &Format::end, kBlockNames[at]);
        }
    }

    // Appends a piece to the texts of all formats.
    void add(std::string_view Format::*piece, std::string_view name = {},
             const std::string& value = {}) {
        const std::string tabs(depth_, '\t');
        const bool isNumber = value.find_first_not_of("0123456789.") == std::string::npos;
        const std::string inGas = isNumber ? value : '"' + value + '"';
        for (std::size_t i = 0; i < kFormats.size(); ++i) {
            std::string& text = texts_[i];
            const bool isFirst = text.ends_with('[') || text.ends_with('{') || text.ends_with('(');
            const std::string_view comma = isFirst ? "" : ",";
            appendFilled(text, kFormats[i].*piece,
                         {{'%', tabs}, {'@', name}, {'$', value}, {'&', inGas}, {',', comma}});
        }
    }

    std::array<std::string, kFormats.size()> texts_;
    std::size_t depth_ = 0;
    std::mt19937_64 random_;  // gives the same numbers everywhere
};

}  // namespace kestrel::bench
