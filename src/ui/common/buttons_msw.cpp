#include "ui/common/buttons.h"

namespace kestrel {

// The label of a control is its name already, shown or not.
void setAccessibleName(wxWindow&, const wxString&) {}

}  // namespace kestrel
