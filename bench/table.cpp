#include "table.h"

#include <algorithm>
#include <cstdio>

namespace kestrel::bench {

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string markdown(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths(rows.front().size(), 3);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    std::string text;
    const auto add = [&](const std::vector<std::string>& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            text.append("| ").append(row[i]).append(widths[i] - row[i].size() + 1, ' ');
        }
        text += "|\n";
    };
    add(rows.front());
    for (std::size_t i = 0; i < widths.size(); ++i) {
        text.append("|").append(widths[i] + (i == 0 ? 2 : 1), '-').append(i == 0 ? "" : ":");
    }
    text += "|\n";
    std::for_each(rows.begin() + 1, rows.end(), add);
    return text;
}

}  // namespace kestrel::bench
