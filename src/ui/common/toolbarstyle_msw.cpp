#include "ui/common/toolbarstyle.h"

namespace kestrel {

// The system's own tools are as close as they can be.
void makeCompact(wxToolBar&) {}

}  // namespace kestrel
