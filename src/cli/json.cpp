#include "cli/json.h"

#include <cstdio>

#include "services/bytes.h"

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

void appendProperty(std::string& json, const GasProperty& property) {
    json += '[';
    for (const std::wstring_view text :
         {std::wstring_view(property.Name.text()), std::wstring_view(property.Value),
          std::wstring_view(property.Group.text())}) {
        appendText(json, text);
        json += ',';
    }
    json.append(property.IsBlock ? "true," : "false,").append(std::to_string(property.Level));
    json += ']';
}

}  // namespace

std::string jsonText(std::wstring_view text) {
    std::string json;
    appendText(json, text);
    return json;
}

std::string jsonObject(const GasTemplate& record) {
    std::string json = R"({"Name":)";
    appendText(json, record.Name);
    appendText(json.append(R"(,"Kind":)"), record.Kind);
    appendText(json.append(R"(,"Text":)"), record.Text.wide());
    appendText(json.append(R"(,"Comments":)"), record.Comments);
    json.append(R"(,"Properties":[)");
    for (const GasProperty& property : record.Properties) {
        if (&property != record.Properties.data()) json += ',';
        appendProperty(json, property);
    }
    return json.append("]}");
}

}  // namespace kestrel::cli
