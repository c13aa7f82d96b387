#include "gas/edit.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "base/bytes.h"
#include "gas/blocks.h"
#include "gas/recordtext.h"

namespace kestrel {
namespace {

using loading::Block;

// Where more lines than these were changed in between, the lines there are new.
constexpr std::size_t kMostLines = 4000;

std::vector<Block> headedBlocks(std::string_view file) {
    if (file.starts_with(kUtf8Mark)) file.remove_prefix(kUtf8Mark.size());
    const loading::Cut cut(file, CodePage::utf8());
    std::vector<Block> blocks;
    for (std::size_t i = 0; i < cut.size(); ++i) {
        if (const Block block = cut[i]; !block.whole.empty()) blocks.push_back(block);
    }
    return blocks;
}

// A line with the empty lines behind it, as they stand.
struct Line {
    std::string_view text;
    std::string_view end;
    std::string_view empty;
};

// How lines end in a text; a lone LF is a part of its line where some end in CR LF.
std::string_view lineEndOf(std::string_view text) {
    return text.find("\r\n") == text.npos && text.find('\n') != text.npos ? "\n" : "\r\n";
}

std::string_view takeEmptyLines(std::string_view& text, std::string_view lineEnd) {
    const std::string_view all = text;
    while (text.starts_with(lineEnd)) text.remove_prefix(lineEnd.size());
    return all.substr(0, all.size() - text.size());
}

std::vector<Line> linesOf(std::string_view text, std::string_view lineEnd) {
    std::vector<Line> lines;
    takeEmptyLines(text, lineEnd);
    while (!text.empty()) {
        Line line;
        line.text = text.substr(0, text.find(lineEnd));
        text.remove_prefix(line.text.size());
        if (!text.empty()) line.end = text.substr(0, lineEnd.size());
        text.remove_prefix(line.end.size());
        line.empty = takeEmptyLines(text, lineEnd);
        lines.push_back(line);
    }
    return lines;
}

bool isSame(std::string_view a, std::string_view b) {
    return a == b || normalised(a) == normalised(b);
}

// The lines of `old` that those of `now` are, in order; npos for new ones.
std::vector<std::size_t> matchLines(const std::vector<Line>& old, const std::vector<Line>& now) {
    std::vector<std::size_t> match(now.size(), std::string_view::npos);
    std::size_t first = 0;
    const std::size_t least = std::min(old.size(), now.size());
    while (first < least && isSame(old[first].text, now[first].text)) {
        match[first] = first;
        ++first;
    }
    std::size_t last = 0;
    while (first + last < least &&
           isSame(old[old.size() - 1 - last].text, now[now.size() - 1 - last].text)) {
        ++last;
        match[now.size() - last] = old.size() - last;
    }
    const std::size_t rows = old.size() - first - last;
    const std::size_t columns = now.size() - first - last;
    if (rows == 0 || columns == 0 || rows > kMostLines || columns > kMostLines) return match;
    // The longest common sequence of what is left: lengths of it behind each place.
    std::vector<std::vector<std::uint16_t>> length(rows + 1,
                                                   std::vector<std::uint16_t>(columns + 1));
    for (std::size_t i = rows; i-- > 0;) {
        for (std::size_t j = columns; j-- > 0;) {
            length[i][j] = old[first + i].text == now[first + j].text
                               ? static_cast<std::uint16_t>(length[i + 1][j + 1] + 1)
                               : std::max(length[i + 1][j], length[i][j + 1]);
        }
    }
    for (std::size_t i = 0, j = 0; i < rows && j < columns;) {
        if (old[first + i].text == now[first + j].text) {
            match[first + j++] = first + i++;
        } else if (length[i + 1][j] >= length[i][j + 1]) {
            ++i;
        } else {
            ++j;
        }
    }
    return match;
}

std::ptrdiff_t countOf(std::string_view emptyLines) {
    return std::ranges::count(emptyLines, '\n');
}

// The lines of a text as records have them.
std::string shownText(std::string_view text) {
    std::string shown;
    for (const Line& line : linesOf(text, lineEndOf(text))) {
        shown.append(shown.empty() ? "" : "\r\n").append(normalised(line.text));
    }
    return shown;
}

std::string_view withoutBrace(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last != text.npos && text[last] == '}' ? text.substr(0, last) : text;
}

// What stands in the file for `edited`; nothing when `block` is not what was loaded.
std::optional<std::string> editBlock(std::string_view block, std::string_view lineEnd,
                                     std::string_view loaded, std::string_view edited) {
    const std::string shown = shownText(block);
    const std::string before = shownText(loaded);
    if (before == shown + '}') {  // closed by the loader, in the midst of a line
        loaded = withoutBrace(loaded);
        edited = withoutBrace(edited);
    } else if (before != shown && before != shown + "\r\n}") {
        return std::nullopt;
    }
    const std::vector<Line> stored = linesOf(block, lineEnd);
    const std::vector<Line> old = linesOf(loaded, lineEndOf(loaded));
    const std::vector<Line> now = linesOf(edited, lineEndOf(edited));
    const std::vector<std::size_t> match = matchLines(old, now);
    std::string out;
    for (std::size_t i = 0; i < now.size(); ++i) {
        const bool kept = match[i] < stored.size();
        out.append(kept ? stored[match[i]].text : now[i].text).append(lineEnd);
        // Those between blocks stay there, whatever the last line is now.
        const bool last = i + 1 == now.size();
        const Line* own = last ? &stored.back() : kept ? &stored[match[i]] : nullptr;
        const auto wanted = countOf(now[i].empty);
        if (own != nullptr && (last || own != &stored.back()) &&
            wanted == countOf(last ? old.back().empty : old[match[i]].empty)) {
            out += own->empty;
        } else {
            for (auto more = wanted; more > 0; --more) out += lineEnd;
        }
    }
    if (stored.back().end.empty() && out.ends_with(lineEnd)) {
        out.resize(out.size() - lineEnd.size());
    }
    return out;
}

// Braces of `text` that are open at its end, but for those in quotes and comments.
std::ptrdiff_t openBraces(std::string_view text) {
    std::ptrdiff_t open = 0;
    for (const Line& line : linesOf(text, lineEndOf(text))) {
        const std::string_view code = line.text.substr(0, line.text.find("//"));
        bool quoted = false;
        for (const char c : code) {
            if (c == '"') quoted = !quoted;
            if (!quoted) open += c == '{' ? 1 : c == '}' ? -1 : 0;
        }
    }
    return open;
}

}  // namespace

std::size_t countBlocks(std::string_view file) {
    return headedBlocks(file).size();
}

std::optional<std::string> replaceBlock(std::string_view file, std::size_t index,
                                        std::wstring_view loaded, std::wstring_view edited,
                                        const CodePage& page) {
    const std::vector<Block> blocks = headedBlocks(file);
    const CodePage& ownPage = pageOf(file, page);
    const std::string before = ownPage.bytes(loaded);
    const std::string after = ownPage.bytes(edited);
    const auto put = [&](const Block& block) -> std::optional<std::string> {
        const auto bytes = editBlock(block.whole, lineEndOf(file), before, after);
        if (!bytes) return std::nullopt;
        const auto begin = static_cast<std::size_t>(block.whole.data() - file.data());
        std::string whole(file.substr(0, begin));
        return whole.append(*bytes).append(file.substr(begin + block.whole.size()));
    };
    if (index < blocks.size()) {
        if (auto whole = put(blocks[index])) return whole;
    }
    std::optional<std::string> found;
    for (const Block& block : blocks) {
        auto whole = put(block);
        if (whole && found) return std::nullopt;
        if (whole) found = std::move(whole);
    }
    return found;
}

std::wstring whyNotOneBlock(std::wstring_view loaded, std::wstring_view edited) {
    const std::string before = toUtf8(loaded);
    const std::string after = toUtf8(edited);
    const loading::Cut cut(before, CodePage::utf8());
    const std::wstring header = L'"' + fromUtf8(cut.prefix()) + L'"';
    const std::size_t first = after.find(cut.prefix());
    if (first == after.npos) return L"It has no header that begins with " + header + L".";
    if (after.find(cut.prefix(), first + 1) != after.npos) {
        return L"It has more than one header that begins with " + header + L".";
    }
    if (first != after.find_first_not_of("\r\n")) return L"Its header is not its begin.";
    const std::ptrdiff_t open = openBraces(after);
    if (open > 0) return L"A brace is open at its end.";
    return open < 0 ? L"It has a closing brace too many." : L"";
}

}  // namespace kestrel
