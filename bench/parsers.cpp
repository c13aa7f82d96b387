// Parsers of other formats, on the same information.
#include <rapidjson/document.h>
#include <simdjson.h>
#include <pugixml.hpp>

#include <libconfig.h++>

#include "base/bytes.h"
#include "contenders.h"
#include "records.h"
#include "services/files.h"

namespace kestrel::bench {
namespace {

void fillBlock(simdjson::ondemand::object block, RecordBuilder& builder) {
    for (auto field : block) {
        const std::string_view name = field.unescaped_key();
        simdjson::ondemand::value value = field.value();
        if (value.type() == simdjson::ondemand::json_type::object) {
            builder.openBlock(name);
            fillBlock(value.get_object(), builder);
            builder.closeBlock();
        } else {
            builder.property(name, value.get_string());
        }
    }
}

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

// A tree that points into its bytes.
struct Json {
    explicit Json(const std::string& path) : bytes(readFileBytes(fromUtf8(path))) {
        document.ParseInsitu(bytes.data());
        if (document.HasParseError()) std::abort();
    }

    std::string bytes;
    rapidjson::Document document;
};

std::string_view viewOf(const rapidjson::Value& text) {
    return {text.GetString(), text.GetStringLength()};
}

void fillBlock(const rapidjson::Value& block, RecordBuilder& builder) {
    for (const auto& member : block.GetObject()) {
        if (member.value.IsObject()) {
            builder.openBlock(viewOf(member.name));
            fillBlock(member.value, builder);
            builder.closeBlock();
        } else {
            builder.property(viewOf(member.name), viewOf(member.value));
        }
    }
}

void fillBlock(const libconfig::Setting& block, RecordBuilder& builder) {
    const int count = block.getLength();
    for (int i = 0; i < count; ++i) {
        const libconfig::Setting& setting = block[i];
        if (setting.isGroup()) {
            builder.openBlock(setting.getName());
            fillBlock(setting, builder);
            builder.closeBlock();
        } else {
            builder.property(setting.getName(), setting.c_str());
        }
    }
}

}  // namespace

Result simdjsonTree(Input& input) {
    auto parser = std::make_shared<simdjson::dom::parser>();
    if (parser->load(input.path(Format::json)).error() != simdjson::SUCCESS) std::abort();
    return parser;
}

// The on-demand interface: no tree is made in between.
Records simdjsonRecords(Input& input) {
    const simdjson::padded_string bytes =
        simdjson::padded_string::load(input.path(Format::json)).take_value();
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document = parser.iterate(bytes);
    RecordBuilder builder(input.sizeOf(Format::json));
    for (simdjson::ondemand::object block : document.get_array()) {
        builder.beginTemplate();
        fillBlock(block, builder);
        builder.endTemplate();
    }
    return builder.take();
}

Result pugixmlTree(Input& input) {
    auto document = std::make_shared<pugi::xml_document>();
    parse(*document, input.path(Format::xml));
    return document;
}

Records pugixmlRecords(Input& input) {
    pugi::xml_document document;
    parse(document, input.path(Format::xml));
    RecordBuilder builder(input.sizeOf(Format::xml));
    for (const pugi::xml_node& block : document.child("templates").children()) {
        builder.beginTemplate();
        fillBlock(block, builder);
        builder.endTemplate();
    }
    return builder.take();
}

Result rapidjsonTree(Input& input) {
    return std::make_shared<Json>(input.path(Format::json));
}

Records rapidjsonRecords(Input& input) {
    const Json tree(input.path(Format::json));
    RecordBuilder builder(input.sizeOf(Format::json));
    for (const rapidjson::Value& block : tree.document.GetArray()) {
        builder.beginTemplate();
        fillBlock(block, builder);
        builder.endTemplate();
    }
    return builder.take();
}

Result libconfigTree(Input& input) {
    auto config = std::make_shared<libconfig::Config>();
    config->readFile(input.path(Format::libconfig).c_str());
    return config;
}

Records libconfigRecords(Input& input) {
    libconfig::Config config;
    config.readFile(input.path(Format::libconfig).c_str());
    const libconfig::Setting& templates = config.lookup("templates");
    RecordBuilder builder(input.sizeOf(Format::libconfig));
    const int count = templates.getLength();
    for (int i = 0; i < count; ++i) {
        builder.beginTemplate();
        fillBlock(templates[i], builder);
        builder.endTemplate();
    }
    return builder.take();
}

}  // namespace kestrel::bench
