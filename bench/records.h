#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gas/template.h"

namespace kestrel::bench {

// Makes the loader's records from what another parser has read. Text and
// Comments stay empty: those formats do not give them.
class RecordBuilder {
  public:
    void beginTemplate();
    void property(std::string_view name, std::string_view value);
    void openBlock(std::string_view name);
    void closeBlock();
    void endTemplate();
    std::vector<GasTemplate> take() { return std::move(templates_); }

  private:
    std::vector<GasTemplate> templates_;
    TextPool pool_;  // as the loader's
    GroupPool groupPool_;
    std::vector<GasProperty> properties_;  // of the template, until its count is known
    std::vector<SharedGroup> groups_;      // of the blocks that are open
    std::int16_t level_ = 0;
};

}  // namespace kestrel::bench
