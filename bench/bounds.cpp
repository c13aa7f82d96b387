// The parts of the work that nothing can do without.
#include "base/bytes.h"
#include "contenders.h"
#include "services/files.h"
#include "services/pagetext.h"

namespace kestrel::bench {

Result readBytes(Input& input) {
    return std::make_shared<std::string>(readFileBytes(fromUtf8(input.path(Format::gas))));
}

Result widenBytes(Input& input) {
    return std::make_shared<std::wstring>(widen(input.bytes()));
}

Result makeFields(Input& input) {
    auto fields = std::make_shared<std::vector<std::wstring>>();
    fields->reserve(input.fieldBytes().size());
    for (const std::string_view bytes : input.fieldBytes()) fields->push_back(widen(bytes));
    return fields;
}

Result copyText(Input& input) {
    return std::make_shared<std::wstring>(input.rendered());
}

}  // namespace kestrel::bench
