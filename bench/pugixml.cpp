#include <pugixml.hpp>

#include "contenders.h"
#include "records.h"

namespace kestrel::bench {
namespace {

void parse(pugi::xml_document& document, const std::string& path) {
    if (!document.load_file(path.c_str())) std::abort();
}

void fillBlock(const pugi::xml_node& block, RecordBuilder& builder) {
    for (const pugi::xml_attribute& attribute : block.attributes()) {
        builder.property(attribute.name(), attribute.value());
    }
    for (const pugi::xml_node& child : block.children()) {
        builder.openBlock(child.name());
        fillBlock(child, builder);
        builder.closeBlock();
    }
}

}  // namespace

Result pugixmlBare(Input& input) {
    auto document = std::make_shared<pugi::xml_document>();
    parse(*document, input.path(Format::xml));
    return document;
}

Records pugixmlRecords(Input& input) {
    pugi::xml_document document;
    parse(document, input.path(Format::xml));
    RecordBuilder builder;
    for (const pugi::xml_node& block : document.child("templates").children()) {
        builder.beginTemplate();
        fillBlock(block, builder);
        builder.endTemplate();
    }
    return builder.take();
}

}  // namespace kestrel::bench
