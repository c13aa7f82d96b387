#include "system/codepage.h"

#include <algorithm>

#include "base/bytes.h"
#include "base/error.h"
#include "system/codepage_system.h"

namespace kestrel {
namespace {

constexpr unsigned kUsual = 1252;

std::uint8_t numberOf(char byte) noexcept {
    return static_cast<std::uint8_t>(byte);
}

bool isAscii(wchar_t c) noexcept {
    return static_cast<std::uint32_t>(c) < 0x80;
}

bool isAscii(std::wstring_view text) noexcept {
    std::uint32_t all = 0;
    for (const wchar_t c : text) all |= static_cast<std::uint32_t>(c);
    return all < 0x80;
}

// The 1-based line of the character at `index`; CR LF, CR and LF each end one.
std::size_t lineOf(std::wstring_view text, std::size_t index) noexcept {
    std::size_t line = 1;
    for (std::size_t i = 0; i < index; ++i) {
        if (text[i] == L'\n' || (text[i] == L'\r' && text[i + 1] != L'\n')) ++line;
    }
    return line;
}

[[noreturn]] void refuse(std::wstring_view text, std::size_t index, unsigned page) {
    throw RunTimeError(kInvalidCall, L"The character " + characterName(text.substr(index)) +
                                         L" in line " + std::to_wstring(lineOf(text, index)) +
                                         L" cannot be stored in code page " +
                                         std::to_wstring(page));
}

}  // namespace

CodePage::CodePage(unsigned number, std::size_t index)
    : number_(number), index_(static_cast<std::uint8_t>(index)) {
    for (std::size_t byte = 0; byte < wide_.size(); ++byte) {
        wide_[byte] = static_cast<wchar_t>(byte);
    }
    if (isUtf8()) return;
    readCodePage(number, std::span(wide_).last<kHigh>());
    for (std::size_t i = 0; i < kHigh; ++i) {
        high_[i] = {wide_[kHigh + i], static_cast<unsigned char>(kHigh + i)};
    }
    std::ranges::sort(high_);
}

std::array<std::unique_ptr<const CodePage>, CodePage::kNumbers.size()>& CodePage::made() {
    static std::array<std::unique_ptr<const CodePage>, kNumbers.size()> pages;
    return pages;
}

const CodePage& CodePage::at(std::uint8_t index) noexcept {
    return index == kUtf8Index ? utf8() : *made()[index];
}

const CodePage* CodePage::find(unsigned number) {
    const auto* at = std::ranges::find(kNumbers, number);
    if (at == kNumbers.end()) return nullptr;
    const auto index = static_cast<std::size_t>(at - kNumbers.begin());
    auto& page = made()[index];
    if (page == nullptr) page.reset(new CodePage(number, index));
    return page.get();
}

const CodePage& CodePage::utf8() {
    static const CodePage page(kUtf8, kUtf8Index);
    return page;
}

const CodePage& CodePage::ofSystem() {
    const CodePage* page = find(systemCodePage());
    return page == nullptr ? *find(kUsual) : *page;
}

std::wstring CodePage::wide(std::string_view bytes) const {
    std::wstring text;
    appendWide(text, bytes);
    return text;
}

void CodePage::appendWide(std::wstring& text, std::string_view bytes) const {
    if (isUtf8()) {
        text += fromUtf8(bytes);
        return;
    }
    const std::size_t before = text.size();
    text.append(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                reinterpret_cast<const std::uint8_t*>(bytes.data()) + bytes.size());
    constexpr std::size_t kBlock = 4096;
    for (std::size_t start = 0; start < bytes.size(); start += kBlock) {
        const std::size_t end = std::min(start + kBlock, bytes.size());
        if (kestrel::isAscii(bytes.substr(start, kBlock))) continue;
        for (std::size_t i = start; i < end; ++i) text[before + i] = wide_[numberOf(bytes[i])];
    }
}

int CodePage::byteOf(wchar_t c) const noexcept {
    const auto* at =
        std::ranges::lower_bound(high_, c, {}, &std::pair<wchar_t, unsigned char>::first);
    return at == high_.end() || at->first != c ? -1 : at->second;
}

std::string CodePage::bytes(std::wstring_view text) const {
    if (isUtf8()) return toUtf8(text);
    std::string bytes(text.begin(), text.end());  // the low byte of each character
    if (isAscii(text)) return bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isAscii(text[i])) continue;
        const int byte = byteOf(text[i]);
        if (byte < 0) refuse(text, i, number_);
        bytes[i] = static_cast<char>(byte);
    }
    return bytes;
}

bool CodePage::has(std::wstring_view text) const noexcept {
    return isUtf8() ||
           std::ranges::all_of(text, [this](wchar_t c) { return isAscii(c) || byteOf(c) >= 0; });
}

const CodePage& pageOf(std::string_view bytes, const CodePage& page) noexcept {
    return bytes.starts_with(kUtf8Mark) ? CodePage::utf8() : page;
}

}  // namespace kestrel
