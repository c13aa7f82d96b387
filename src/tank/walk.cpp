#include "tank/walk.h"

#include "base/error.h"
#include "base/text.h"
#include "services/program.h"
#include "services/progress.h"
#include "tank/wrappers.h"

namespace kestrel {
namespace {

// Far more than an archive holds, and the end for one that lies.
constexpr std::int32_t kMostEntries = 4'000'000;
constexpr std::size_t kMostLevels = 100'000;

constexpr std::wstring_view kMessage = L"Child: ";

[[noreturn]] void refuse() {
    throw RunTimeError(kOverflow, L"The archive lists more entries than it can hold");
}

bool isLostArchive(TankHandle tank) {
    const TankLibrary* library = gProgram().host.tank;
    return library != nullptr && library->isLost(tank);
}

}  // namespace

OpenArchive::OpenArchive(std::wstring_view path) : handle_(gOpenTank(path)) {}

OpenArchive::~OpenArchive() {
    glngCloseTank(handle_);
}

ChildHandle OpenArchive::root() const {
    return handle_ == 0 ? 0 : gProgram().host.tank->GetRootDir(handle_);
}

bool OpenArchive::isLost() const {
    return isLostArchive(handle_);
}

WalkedEntry Walk::fetch() {
    if (++told_ > kMostEntries) refuse();
    const Level& level = levels_.back();
    WalkedEntry entry;
    entry.index = level.index;
    entry.level = levels_.size() - 1;
    glngGetChild(tank_, level.directory, level.index, entry.handle);
    entry.name = gstrGetChildName(tank_, entry.handle);
    entry.isDirectory = gblnIsDirectory(tank_, entry.handle);
    return entry;
}

bool Walk::isLost() const {
    return isLostArchive(tank_);
}

// False for a directory that is not there or that stands inside itself.
bool Walk::enter(ChildHandle directory) {
    if (directory == 0 || !open_.insert(directory).second) return false;
    if (levels_.size() == kMostLevels) refuse();
    levels_.push_back({directory, glngGetChildCount(tank_, directory), 0, {}});
    return true;
}

bool Walk::descend(ChildHandle directory) {
    if (progress_ != nullptr) progress_->Process(L"Parent: " + levels_.back().name);
    return enter(directory);
}

void Walk::leave() {
    open_.erase(levels_.back().directory);
    levels_.pop_back();
    if (!levels_.empty()) finishEntry();
}

// After an entry, and all that it holds. A cancel skips the rest of its level,
// and so of each level above.
void Walk::finishEntry() {
    Level& level = levels_.back();
    if (progress_ != nullptr) {
        message_.assign(kMessage).append(level.name);
        // Kept: the last entry never reaches 100.
        const std::size_t steps = static_cast<std::size_t>(level.count) + 1;
        progress_->ShowProgress(percentage(static_cast<std::size_t>(level.index), steps), message_);
        // The percentage of a folder with many entries stays the same for long.
        progress_->breathe();
    }
    const bool cancelled = progress_ != nullptr && progress_->DidCancel();
    level.index = cancelled ? level.count : level.index + 1;
}

}  // namespace kestrel
