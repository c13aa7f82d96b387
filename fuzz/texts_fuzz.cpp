// Texts of many uses: the input's first byte tells which of them the others are.
#include <array>

#include "base/commandfile.h"
#include "base/keys.h"
#include "base/packed.h"
#include "base/text.h"
#include "cli/json.h"
#include "cli/terminal.h"
#include "fuzz/fuzz.h"
#include "services/pagetext.h"
#include "system/letters.h"
#include "system/plainpath.h"
#include "tank/build.h"
#include "tank/launcher.h"
#include "view/browse.h"
#include "view/viewtext.h"

namespace kestrel::fuzz {
namespace {

using Strings = std::vector<std::string>;

void checkCommandLine(Input input) {
    const std::wstring line = input.text();
    if (const auto file = gvarCommandFile(line)) {
        require(!trim(*file).empty() && line.find(*file) != line.npos);
        require(file->find(L'"') == file->npos);
    }
    plainPath(line);
}

void checkLetters(const std::wstring& text) {
    require(compareWithoutCase(text, lowerCase(text)) == 0);
    require(makeKey(static_cast<std::size_t>(gintKeyIndex(text))).starts_with(L"K"));
    chainText(text);
}

// The search of a pane against the plain one over characters.
void checkSearch(const std::wstring& text, const std::wstring& what, std::size_t caret) {
    const auto bytesTo = [&](std::size_t at) { return toUtf8(text.substr(0, at)).size(); };
    caret = std::min(caret, text.size());
    const auto found = findText(toUtf8(text), what, bytesTo(caret));
    const std::wstring folded = lowerCase(text);
    const std::wstring wanted = lowerCase(what);
    std::size_t at = folded.find(wanted, caret > 0 ? caret - 1 : 0);
    if (at == folded.npos) at = folded.find(wanted);
    if (what.empty() || at == folded.npos) return require(!found);
    require(found == TextRange{bytesTo(at), bytesTo(at + what.size())});
}

void checkPane(const std::wstring& raw, const std::wstring& what, std::size_t caret) {
    const auto stand = standIn(raw);
    const std::wstring text = stand ? stand->text : raw;
    require(!stand || stand->toWhole(text.size()) == raw.size());
    require(fromUtf8(toUtf8(text)) == text && characterCount(toUtf8(text)) == text.size());
    checkSearch(text, standIn(what).value_or(StandIn{what, {}}).text, caret);
}

void checkShown(const std::wstring& text) {
    const std::string json = cli::jsonText(text);
    for (const std::string& line : {toUtf8(lineText(text)), cli::visibleLine(text), json}) {
        require(std::ranges::none_of(line,
                                     [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; }));
    }
    require(cli::oneLine(text).find_first_of("\r\n") == std::string::npos);
    require(lineText(text).size() <= 1001 && !standIn(fromUtf8(json)));
    bool escaped = false;
    for (std::size_t i = 1; i + 1 < json.size(); ++i) {
        require(escaped || json[i] != '"');
        escaped = !escaped && json[i] == '\\';
    }
    require(!escaped && json.size() >= 2 && json.front() == '"' && json.back() == '"');
}

void checkText(Input input) {
    const std::size_t caret = input.byte();
    const std::wstring what = input.text();
    const std::string_view bytes = input.rest();
    const std::wstring text = fromUtf8(bytes);
    require(toUtf8(text) == bytes && fileText(fileBytes(text)) == text);
    checkLetters(text);
    checkPane(text, what, caret);
    checkShown(text);
}

// The builder gets each value as it was typed.
void checkBuilder(Input input) {
    BuildRequest request;
    request.priority = static_cast<std::int16_t>(input.byte() * 257 - 32768);
    request.devFlag = kFlagDev;
    Words typed;
    for (std::wstring* text : {&request.source, &request.target, &request.author,
                               &request.copyright, &request.build, &request.title}) {
        const std::wstring& one = typed.emplace_back(input.text());
        *text = typed.size() <= 2 ? one : kestrel::quoted(one);
    }
    const Words words = zeltorWords(request);
    require(words.size() == 15 && words[10] == kFlagDev);
    require(words[12] == std::to_wstring(request.priority) && words[14] == trim(typed[5]));
    for (std::size_t i = 0; i < 5; ++i) {
        require(words[2 * i + 1] == (i < 2 ? typed[i] : std::wstring(trim(typed[i]))));
    }
}

// A builder's output in pieces of `step` bytes.
std::wstring decoded(std::string_view bytes, std::size_t step) {
    OutputDecoder decoder;
    std::wstring text;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(step, bytes.size()))) {
        text += decoder.decode(bytes.substr(0, step));
    }
    return text += decoder.rest();
}

// It gives the same text wherever it is cut, and as a log loses nothing of it.
void checkOutput(Input input) {
    constexpr std::size_t kMostCuts = 64;
    const std::string_view bytes = input.rest();
    const std::wstring text = decoded(bytes, bytes.npos);
    for (std::size_t step = bytes.size() / kMostCuts + 1; step < bytes.size();
         step += bytes.size() / kMostCuts + 1) {
        require(decoded(bytes, step) == text);
    }
    LogLines lines;
    std::size_t length = 0;
    std::size_t at = 0;
    for (const wchar_t c : lines.add(text)) {
        const bool ends = c == L'\r' || c == L'\n';
        length = ends ? 0 : length + 1;
        require(length <= LogLines::kLongest + 1);  // no pair is cut
        // What is more are the breaks.
        const bool more = at == text.size() || c != text[at];
        require(!more || ends);
        at += more ? 0 : 1;
    }
    require(at == text.size());
}

// The texts of a stream, and of each the texts in it; "wrong" behind what is none.
Strings unpacked(std::string_view bytes, std::size_t step) {
    constexpr std::size_t kMost = 1000;
    PackedStream stream(kMost);
    Strings texts;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(step, bytes.size()))) {
        stream.add(bytes.substr(0, step));
        while (const auto text = stream.next()) {
            require(text->size() <= kMost);
            texts.push_back(*text);
            PackedReader reader(*text);
            while (!reader.atEnd()) texts.emplace_back(reader.nextBytes());
            if (!reader.isWhole()) texts.emplace_back("wrong");
        }
    }
    if (stream.isWrong()) texts.emplace_back("wrong");
    return texts;
}

// It reads the same wherever it is cut, and what was packed as it was.
void checkPacked(Input input) {
    const std::string_view bytes = input.rest();
    const Strings texts = unpacked(bytes, bytes.size());
    require(unpacked(bytes, 1) == texts && unpacked(bytes, 7) == texts);
    PackedWriter writer;
    for (const std::string& text : texts) writer.add(std::string_view(text));
    PackedReader reader(writer.bytes());
    for (const std::string& text : texts) require(reader.nextBytes() == text);
    require(reader.isWhole());
}

constexpr std::array kFormats{checkCommandLine, checkText, checkBuilder, checkOutput, checkPacked};

}  // namespace

// Of digits the first one is "0".
void run(Input input, test::RecordingHost& host) {
    kFormats[input.byte() % kFormats.size()](input);
    require(host.log.empty());
}

}  // namespace kestrel::fuzz
