#include <libconfig.h++>

#include "contenders.h"
#include "records.h"

namespace kestrel::bench {
namespace {

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

Result libconfigBare(Input& input) {
    auto config = std::make_shared<libconfig::Config>();
    config->readFile(input.path(Format::libconfig).c_str());
    return config;
}

Records libconfigRecords(Input& input) {
    libconfig::Config config;
    config.readFile(input.path(Format::libconfig).c_str());
    const libconfig::Setting& templates = config.lookup("templates");
    RecordBuilder builder;
    const int count = templates.getLength();
    for (int i = 0; i < count; ++i) {
        builder.beginTemplate();
        fillBlock(templates[i], builder);
        builder.endTemplate();
    }
    return builder.take();
}

}  // namespace kestrel::bench
