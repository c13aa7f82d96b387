#include "services/settingslock.h"

#include "services/files.h"

namespace kestrel {

SettingsLock::SettingsLock() : FileLock(programFile(L"settings.lock"), std::chrono::seconds(5)) {}

}  // namespace kestrel
