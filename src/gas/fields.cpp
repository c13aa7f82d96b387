#include "gas/fields.h"

namespace kestrel::loading {

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
