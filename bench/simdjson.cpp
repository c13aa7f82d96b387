#include <simdjson.h>

#include "contenders.h"
#include "records.h"

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

}  // namespace

Result simdjsonBare(Input& input) {
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
    RecordBuilder builder;
    for (simdjson::ondemand::object block : document.get_array()) {
        builder.beginTemplate();
        fillBlock(block, builder);
        builder.endTemplate();
    }
    return builder.take();
}

}  // namespace kestrel::bench
