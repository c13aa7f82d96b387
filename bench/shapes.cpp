#include <fstream>
#include <span>
#include <string_view>
#include <vector>

#include <malloc.h>

#include "base/bytes.h"
#include "gas/load.h"
#include "measure.h"
#include "shapes.h"
#include "table.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kHeader = "[t:template,n:x]\r\n{\r\n";

// A text: `head`, then `unit` again and again, then `tail`.
struct Shape {
    std::string_view name;
    std::string_view head;
    std::string_view unit;
    std::string_view tail;
};

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
};

std::string makeText(const Shape& shape, std::size_t units) {
    std::string text(shape.head);
    text.reserve(text.size() + units * shape.unit.size() + shape.tail.size());
    for (std::size_t i = 0; i < units; ++i) text += shape.unit;
    return text += shape.tail;
}

// The CPU seconds to load the shape from its file.
double timeLoad(const fs::path& file, const Shape& shape, std::size_t units, std::size_t runs) {
    {
        std::ofstream out(file, std::ios::binary);
        out << makeText(shape, units);
    }
    std::vector<double> times;
    for (std::size_t i = 0; i < runs; ++i) {
        std::wstring path = fromUtf8(file.string());
        std::vector<GasTemplate> templates;
        malloc_trim(0);
        const double start = cpuSeconds();
        gblnLoadGas(path, templates, nullptr);
        times.push_back(cpuSeconds() - start);
    }
    fs::remove(file);
    return median(times);
}

std::string doublings(const fs::path& file) {
    std::vector<std::vector<std::string>> rows = {
        {"Text", "1 MB, ms", "2 MB, ms", "4 MB, ms", "8 MB, ms", "2 : 1", "4 : 2", "8 : 4"}};
    for (const Shape& shape : kShapes) {
        std::vector<double> times;
        for (const std::size_t size : {1, 2, 4, 8}) {
            times.push_back(timeLoad(file, shape, size * 1'000'000 / shape.unit.size(), 7));
        }
        std::vector<std::string>& row = rows.emplace_back();
        row.emplace_back(shape.name);
        for (const double time : times) row.push_back(fixed(time * 1e3, 2));
        for (std::size_t i = 1; i < times.size(); ++i)
            row.push_back(fixed(times[i] / times[i - 1], 2));
    }
    return markdown(rows);
}

struct Big {
    std::string_view name;
    Shape shape;
    std::size_t units;
};

constexpr Big kBig[] = {
    {"a line of 50 MB of properties", {"", kHeader, "x = 1; ", ""}, 7'142'857},
    {"a line of 50 MB of one value", {"", "[info]\r\n{\r\nx = ", "lantern ", ";"}, 6'250'000},
    {"1,000,000 comments", {"", kHeader, "// lantern\r\n", ""}, 1'000'000},
    {"100,000 empty blocks", {"", "", "[t:template,n:x]\r\n{\r\n}\r\n", ""}, 100'000},
    {"a 100 MB file without line end", {"", kHeader, "lantern ", ""}, 12'500'000},
    {"1,000,000 sub-blocks, each in the one before", {"", kHeader, "[a]\r\n{\r\n", ""}, 1'000'000},
};

std::string halves(const fs::path& file) {
    std::vector<std::vector<std::string>> rows = {
        {"Text", "MB", "CPU s", "MB/s", "time : half of it"}};
    for (const Big& big : kBig) {
        const double half = timeLoad(file, big.shape, big.units / 2, 3);
        const double whole = timeLoad(file, big.shape, big.units, 3);
        const double size = static_cast<double>(big.units * big.shape.unit.size()) * 1e-6;
        rows.push_back({std::string(big.name), fixed(size, 2), fixed(whole, 4),
                        fixed(size / whole, 0), fixed(whole / half, 2)});
    }
    return markdown(rows);
}

}  // namespace

std::string measureShapes(const fs::path& folder) {
    const fs::path file = folder / "shape.gas";
    return halves(file) + "\n" + doublings(file);
}

}  // namespace kestrel::bench
