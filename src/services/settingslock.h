#pragma once

#include "system/filelock.h"

namespace kestrel {

// The lock under which settings and histories are read once more and written, so that
// of two programs none takes away what the other wrote. Whoever waits in vain for it, or
// may make no file in the program's folder, goes on without.
class SettingsLock : public FileLock {
  public:
    SettingsLock();
};

}  // namespace kestrel
