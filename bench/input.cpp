#include <cstdio>
#include <cstdlib>

#include "base/bytes.h"
#include "gas/load.h"
#include "input.h"
#include "services/files.h"
#include "services/pagetext.h"
#include "system/filesystem.h"
#include "text/render.h"

namespace kestrel::bench {

std::vector<GasTemplate> loadOrExit(const std::string& path) {
    std::wstring widePath = fromUtf8(path);
    std::vector<GasTemplate> templates;
    if (!gblnLoadGas(widePath, templates, nullptr)) {
        std::fprintf(stderr, "%s does not load\n", path.c_str());
        std::exit(1);
    }
    return templates;
}

std::size_t Input::gasBytes() const {
    return static_cast<std::size_t>(std::filesystem::file_size(corpusFile(folder_, Format::gas)));
}

const std::string& Input::bytes() {
    if (!bytes_) bytes_ = readFileBytes(fromUtf8(path(Format::gas)));
    return *bytes_;
}

const std::wstring& Input::text() {
    if (!text_) text_ = widen(bytes());
    return *text_;
}

const std::vector<GasTemplate>& Input::records() {
    if (!records_) records_ = loadOrExit(path(Format::gas));
    return *records_;
}

const std::wstring& Input::rendered() {
    if (!rendered_) rendered_ = gstrMakeFileText(L"corpus.gas", records(), nullptr, 0, nullptr);
    return *rendered_;
}

const std::vector<std::string_view>& Input::fieldBytes() {
    if (fieldBytes_) return *fieldBytes_;
    std::vector<std::size_t> ends;
    const auto add = [&](const std::wstring& field) {
        fields_ += narrow(field);
        ends.push_back(fields_.size());
    };
    for (const GasTemplate& record : records()) {
        add(record.Name);
        for (const GasProperty& property : record.Properties) {
            add(property.Name);
            if (!property.IsBlock) add(property.Value);
        }
    }
    fieldBytes_.emplace();
    fieldBytes_->reserve(ends.size());
    std::size_t start = 0;
    for (const std::size_t end : ends) {
        fieldBytes_->push_back(std::string_view(fields_).substr(start, end - start));
        start = end;
    }
    return *fieldBytes_;
}

}  // namespace kestrel::bench
