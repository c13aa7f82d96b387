#include <rapidjson/document.h>

#include "base/bytes.h"
#include "contenders.h"
#include "records.h"
#include "services/files.h"

namespace kestrel::bench {
namespace {

// A tree that points into its bytes.
struct Tree {
    explicit Tree(const std::string& path) : bytes(readFileBytes(fromUtf8(path))) {
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

}  // namespace

Result rapidjsonBare(Input& input) {
    return std::make_shared<Tree>(input.path(Format::json));
}

Records rapidjsonRecords(Input& input) {
    const Tree tree(input.path(Format::json));
    RecordBuilder builder;
    for (const rapidjson::Value& block : tree.document.GetArray()) {
        builder.beginTemplate();
        fillBlock(block, builder);
        builder.endTemplate();
    }
    return builder.take();
}

}  // namespace kestrel::bench
