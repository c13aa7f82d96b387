#include "ui/common/statuspanels.h"

namespace kestrel {

std::vector<wxStaticText*> makePanelLabels(wxStatusBar&, std::size_t) {
    return {};
}

}  // namespace kestrel
