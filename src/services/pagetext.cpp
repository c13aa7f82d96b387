#include "services/pagetext.h"

#include "base/bytes.h"

namespace kestrel {

std::wstring widen(std::string_view bytes) {
    return gProgram().codePage->wide(bytes);
}

std::string narrow(std::wstring_view text) {
    return gProgram().codePage->bytes(text);
}

void FileBytes::add(std::wstring_view text) {
    if (!page_->has(text)) {
        bytes_ = toUtf8(page_->wide(bytes_));
        page_ = &CodePage::utf8();
    }
    bytes_ += page_->bytes(text);
}

void FileBytes::add(std::string bytes, const CodePage& page) {
    if (&page != page_ && !isAscii(bytes)) return add(page.wide(bytes));
    // A large text is not copied.
    if (bytes.size() <= bytes_.size()) {
        bytes_ += bytes;
    } else {
        bytes_.swap(bytes.insert(0, bytes_));
    }
}

std::string FileBytes::take() {
    if (!page_->isUtf8()) {
        if (!bytes_.starts_with(kUtf8Mark)) return std::move(bytes_);
        // They would be taken for the mark.
        bytes_ = toUtf8(page_->wide(bytes_));
    }
    return bytes_.insert(0, kUtf8Mark);
}

std::string fileBytes(std::wstring_view text) {
    FileBytes bytes;
    bytes.add(text);
    return bytes.take();
}

std::wstring fileText(std::string_view bytes) {
    if (!bytes.starts_with(kUtf8Mark)) return widen(bytes);
    return fromUtf8(bytes.substr(kUtf8Mark.size()));
}

}  // namespace kestrel
