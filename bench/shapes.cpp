#include "shapes.h"

namespace kestrel::bench {
namespace {

constexpr std::string_view kHeader = "[t:template,n:x]\r\n{\r\n";

constexpr Shape kShapes[] = {
    {"only `[`", "", "[", ""},
    {"only `]`", "", "]", ""},
    {"only `;`", "", ";", ""},
    {"only CR LF", "", "\r\n", ""},
    {"only LF", "", "\n", ""},
    {"only tabs", "", "\t", ""},
    {"no line end, no bracket", "", "lantern ", ""},
    {"empty brackets", "", "[]", ""},
    {"an unknown header without end", "[", "a", ""},
    {"an unknown header, half met again and again", "[", "[[[a", "]"},
    {"a block of `;`", kHeader, ";", ""},
    {"a block of `[`", kHeader, "[", ""},
    {"a block of `=`", kHeader, "=", ""},
    {"a block of `//`", kHeader, "//", ""},
    {"a block of closing braces", kHeader, "}\r\n", ""},
    {"a block of text without line end", kHeader, "lantern ", ""},
    {"a block of CR", kHeader, "\r", ""},
    {"one header with a name a part", "[x]\r\n[", "n:a,", "]"},
    {"one line of properties", kHeader, "x = 1; ", ""},
    {"one value", "[t:template,n:x]\r\n{\r\nx = ", "lantern ", ";"},
    {"comments", kHeader, "// lantern\r\n", ""},
    {"empty blocks", "", "[t:template,n:x]\r\n{\r\n}\r\n", ""},
    {"parties", "", "[party]\r\n{\r\n\tx = 1;\r\n}\r\n", ""},
    {"sub-blocks in sub-blocks, 8 deep", "",
     "[t:template,n:x]\r\n{\r\n[a]\r\n{\r\n[b]\r\n{\r\n[c]\r\n{\r\n[d]\r\n{\r\n[e]\r\n{\r\n"
     "[f]\r\n{\r\n[g]\r\n{\r\n[h]\r\n{\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n",
     ""},
    {"sub-blocks, each in the one before", kHeader, "[a]\r\n{\r\n", ""},
};

}  // namespace

std::span<const Shape> shapes() {
    return kShapes;
}

std::string textOf(const Shape& shape, std::size_t bytes) {
    std::string text(shape.head);
    text.reserve(bytes + shape.head.size() + shape.unit.size() + shape.tail.size());
    for (; text.size() < bytes; text += shape.unit) {
    }
    return text += shape.tail;
}

}  // namespace kestrel::bench
