#include "cli/json.h"

#include <cstdio>
#include <ostream>
#include <utility>

#include "base/bytes.h"

namespace kestrel::cli {
namespace {

// What stands for `c` in a string; empty for a character that stands for itself.
std::string escapeOf(wchar_t c) {
    if (c == L'"' || c == L'\\') return {'\\', static_cast<char>(c)};
    const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
    if (c >= 0x20 && c != 0x7F && !surrogate) return {};
    if (c == L'\n') return "\\n";
    if (c == L'\r') return "\\r";
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c) & 0xFFFFU);
    return escape;
}

void appendText(std::string& json, std::wstring_view text) {
    json += '"';
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string escape = escapeOf(text[i]);
        if (escape.empty()) continue;
        json.append(toUtf8(text.substr(start, i - start))).append(escape);
        start = i + 1;
    }
    json.append(toUtf8(text.substr(start))) += '"';
}

std::string propertyArray(const GasProperty& property) {
    std::string json = "[";
    appendText(json, property.Name.wide());
    appendText(json += ',', property.Value.wide());
    appendText(json += ',', property.Group.wide());
    return json.append(property.IsBlock ? ",true," : ",false,")
        .append(std::to_string(property.Level))
        .append("]");
}

}  // namespace

std::string jsonText(std::wstring_view text) {
    std::string json;
    appendText(json, text);
    return json;
}

void writeJson(std::ostream& out, const GasTemplate& record) {
    std::string json = R"({"Name":)";
    appendText(json, record.Name.wide());
    appendText(json.append(R"(,"Kind":)"), record.Kind.wide());
    appendText(json.append(R"(,"Text":)"), record.Text.wide());
    appendText(json.append(R"(,"Comments":)"), record.Comments.wide());
    out << json << R"(,"Properties":[)";
    const char* separator = "";
    // One by one: together their groups may be many times the file.
    for (const GasProperty property : record.Properties) {
        out << std::exchange(separator, ",") << propertyArray(property);
    }
    out << "]}";
}

}  // namespace kestrel::cli
