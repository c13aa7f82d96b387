#include "gas/sharedtext.h"

namespace kestrel {

const std::wstring SharedText::kEmpty;

SharedText::SharedText(std::wstring text) {
    if (!text.empty()) shared_ = new Shared{std::move(text)};
}

}  // namespace kestrel
