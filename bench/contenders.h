#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "gas/template.h"
#include "input.h"

namespace kestrel::bench {

// What a run leaves behind; it is freed after the time has been taken.
using Result = std::shared_ptr<void>;
using Records = std::vector<GasTemplate>;

struct Contender {
    std::string_view name;
    std::string_view what;
    Result (*run)(Input& input);
    // Makes what the run needs and is not part of it; may be null.
    void (*prepare)(Input& input);
    // For those that give records: the records of a run; else null.
    Records (*records)(Input& input);
};

// All of them, in the order of the table.
std::span<const Contender> contenders();

// The contender called `name`; null when there is none.
const Contender* findContender(std::string_view name);

template <Records (*Fill)(Input&)>
Result keepRecords(Input& input) {
    return std::make_shared<Records>(Fill(input));
}

Records loadFile(Input& input);
Records loadText(Input& input);
Result renderText(Input& input);

Result readBytes(Input& input);
Result widenBytes(Input& input);
Result makeFields(Input& input);
Result copyText(Input& input);

Result simdjsonBare(Input& input);
Records simdjsonRecords(Input& input);
Result rapidjsonBare(Input& input);
Records rapidjsonRecords(Input& input);
Result pugixmlBare(Input& input);
Records pugixmlRecords(Input& input);
Result libconfigBare(Input& input);
Records libconfigRecords(Input& input);

}  // namespace kestrel::bench
