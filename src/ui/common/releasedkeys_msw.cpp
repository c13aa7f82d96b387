#include "ui/common/releasedkeys.h"

namespace kestrel {

bool isRepeated(const wxKeyEvent& event) {
    return event.IsAutoRepeat();
}

}  // namespace kestrel
