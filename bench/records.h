#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "gas/template.h"

namespace kestrel::bench {

// Makes the loader's records from what another parser has read. Text and
// Comments stay empty: those formats do not give them.
class RecordBuilder {
  public:
    // The texts have at most `bytes` together.
    explicit RecordBuilder(std::size_t bytes);

    void beginTemplate();
    void property(std::string_view name, std::string_view value);
    void openBlock(std::string_view name);
    void closeBlock();
    void endTemplate();
    std::vector<GasTemplate> take() { return std::move(templates_); }

  private:
    void add(std::string_view name, std::string_view value, bool isBlock);

    std::shared_ptr<GasFile> file_;
    std::vector<GasTemplate> templates_;
    std::vector<const GasGroup*> groups_;  // of the blocks that are open
    std::uint32_t first_ = 0;              // entry of the template
    std::int16_t level_ = 0;
};

}  // namespace kestrel::bench
