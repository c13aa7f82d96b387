#pragma once

#include <string_view>

// The parts of a statement. Private to the loader.
namespace kestrel::loading {

// The part of `text` before the first `mark`, and the piece between it and the
// next one.
struct Pair {
    std::string_view first;
    std::string_view second;
    bool whole = false;  // there is a mark
};

inline Pair splitPair(std::string_view text, char mark) {
    const std::size_t at = text.find(mark);
    if (at == std::string_view::npos) return {text, {}, false};
    const std::string_view rest = text.substr(at + 1);
    return {text.substr(0, at), rest.substr(0, rest.find(mark)), true};
}

// The parts of a header that is named inside its brackets: all of `text` when it
// has no ",".
template <class Visit>
void forEachPart(std::string_view text, Visit&& visit) {
    for (;;) {
        const std::size_t comma = text.find(',');
        visit(text.substr(0, comma));
        if (comma == std::string_view::npos) return;
        text.remove_prefix(comma + 1);
    }
}

inline bool hasParts(std::string_view text) {
    return text.find(',') != std::string_view::npos;
}

}  // namespace kestrel::loading
