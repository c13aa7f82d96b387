#include "faults/folder.h"

#include "services/bytes.h"

namespace kestrel::test {

namespace {

bool holds(const FileBytes& files, const std::string& name, const std::string& bytes) {
    const auto at = files.find(name);
    return at != files.end() && at->second == bytes;
}

// True when `name` is in one of the two as in the other, or in none of them.
bool isSame(const FileBytes& one, const FileBytes& other, const std::string& name) {
    const auto at = one.find(name);
    return at == one.end() ? !other.contains(name) : holds(other, name, at->second);
}

std::string targetFault(const FileBytes& before, const FileBytes& good, const FileBytes& now,
                        const std::string& name) {
    // The system makes it before there is anything to write.
    if (name == kTemporary && holds(now, name, "")) return {};
    if (isSame(now, before, name) || isSame(now, good, name)) return {};
    return name + (now.contains(name) ? " is torn" : " is gone");
}

// The backup is the older one until the file is in it, which is before that is
// replaced.
std::string backupFault(const Operation& operation, const FileBytes& good, const FileBytes& now) {
    const std::string& target = operation.targets.front();
    const std::string backup = backupOf(target);
    const FileBytes& before = operation.before;
    const auto old = before.find(target);
    if (old != before.end() && holds(now, backup, old->second)) return {};
    if (!isSame(now, before, backup)) return backup + " is torn or gone";
    if (old == before.end() || !isSame(now, good, target)) return {};
    return target + " was replaced and is not in " + backup;
}

}  // namespace

void fill(const TempFolder& folder, const FileBytes& files) {
    for (const std::string& name : folder.names()) {
        std::filesystem::remove_all(folder.native(fromUtf8(name)));
    }
    for (const auto& [name, bytes] : files) folder.put(fromUtf8(name), bytes);
}

Shot shotOf(const TempFolder& folder) {
    namespace fs = std::filesystem;
    Shot shot;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.native())) {
        const std::string name = entry.path().filename();
        if (name.starts_with('.') && name.ends_with(".tmp")) {
            ++shot.strays;
        } else if (!name.ends_with(".lock") && !entry.is_directory()) {
            const std::string path = fs::relative(entry.path(), folder.native());
            shot.files[name.starts_with(kTemporary) ? kTemporary : name] =
                folder.bytes(fromUtf8(path));
        }
    }
    return shot;
}

std::string backupOf(const std::string& target) {
    return target + ".bak";
}

std::string fault(const Operation& operation, const FileBytes& good, const Shot& found, bool told) {
    for (const std::string& target : operation.targets) {
        std::string text = targetFault(operation.before, good, found.files, target);
        if (!text.empty()) return text;
    }
    std::string text =
        operation.keepsBackup ? backupFault(operation, good, found.files) : std::string();
    if (told && operation.targets.front().ends_with(".his") && isDone(operation, good, found)) {
        text.clear();
    }
    for (const auto& [name, bytes] : operation.before) {
        if (!good.contains(name) || good.at(name) != bytes) continue;
        if (!holds(found.files, name, bytes)) text = name + " has changed";
    }
    for (const auto& [name, bytes] : found.files) {
        if (!operation.before.contains(name) && !good.contains(name)) text = name + " was left";
    }
    return text;
}

bool isDone(const Operation& operation, const FileBytes& good, const Shot& found) {
    for (const std::string& target : operation.targets) {
        if (!found.files.contains(target) || found.files.at(target) != good.at(target)) {
            return false;
        }
    }
    return true;
}

}  // namespace kestrel::test
