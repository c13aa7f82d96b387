#include "gas/fields.h"

namespace kestrel::loading {
namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

std::string_view trimStart(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

std::string_view trimBlanks(std::string_view text) {
    text = trimStart(text);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view cleanedCopy(std::string_view text, std::string& buffer) {
    buffer.clear();
    for (const char c : text) {
        if (c == '\t') {
            buffer.append(4, ' ');
        } else if (junkOf(c) != kRemoved) {
            buffer += c;
        }
    }
    return buffer;
}

}  // namespace kestrel::loading
