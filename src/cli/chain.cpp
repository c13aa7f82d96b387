#include <algorithm>
#include <ostream>
#include <set>
#include <utility>

#include "base/paths.h"
#include "cli/commands.h"
#include "cli/run.h"
#include "gas/gasnames.h"
#include "services/archives.h"
#include "system/filesystem.h"
#include "view/chain.h"

namespace kestrel::cli {
namespace {

// True when a chain can begin there; else it is told.
bool isStart(const Call& call, const std::wstring& file) {
    call.terminal.about(file);
    if (!archiveOf(file).empty()) return true;
    if (!isArchive(file)) return isThere(call.terminal, file);
    call.terminal.error(L"this is an archive; name a .gas file in it");
    return false;
}

// What to search: the file that the chain begins in, then the archive, or the files of the
// folder by their names. Nothing when there is no such folder.
std::optional<std::vector<std::wstring>> filesToSearch(const Call& call) {
    std::vector<std::wstring> files{sourcePath(call.operands[0])};
    const std::optional<std::wstring> folder = call.arguments.value(L"--in");
    if (!folder) return files;
    if (isArchive(*folder)) {
        files.push_back(*folder);
        return files;
    }
    if (!filesystem::isFolder(*folder)) {
        call.terminal.about(*folder);
        call.terminal.error(L"there is no such folder or archive");
        return std::nullopt;
    }
    std::vector<std::wstring> names = gasNames(*folder);
    std::ranges::sort(names);
    for (const std::wstring& name : names) files.push_back(joinPath(*folder, name));
    return files;
}

class ChainWalk {
  public:
    ChainWalk(const Call& call, std::vector<std::wstring> files)
        : call_(call), files_(std::move(files)) {}

    int walk() {
        if (!document_.load(files_[0])) {
            call_.terminal.error(document_.problem());
            return kFailed;
        }
        const GasTemplate* record = find(call_.terminal, document_.templates(), call_.operands[1]);
        if (record == nullptr) return kFailed;
        for (std::wstring name = chainName(*record);; record = lookUp(name)) {
            tell(name, record == nullptr ? std::wstring() : document_.file());
            if (record == nullptr) return missing(name);
            if (!isNew(*record)) return comesBack(name);
            name = gstrFindPropertyVal(*record, L"specializes");
            if (name.empty()) return kFine;
        }
    }

  private:
    // In the current file, else in the first file that has it.
    const GasTemplate* lookUp(const std::wstring& name) {
        const GasTemplate* record = document_.find(name);
        for (std::size_t i = 0; record == nullptr && i < files_.size();) {
            const std::wstring& file = files_[i];
            bool loads = true;
            if (file != document_.file()) {
                record = isArchive(file) ? document_.searchIn(file, name)
                                         : document_.loadAndFind(file, name);
                loads = tellProblem(file);
            }
            // One that does not load is told of once.
            if (loads) {
                ++i;
            } else {
                files_.erase(files_.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        return record;
    }

    // False when it is `file` that does not load, not some in it.
    bool tellProblem(const std::wstring& file) {
        if (document_.problem().empty()) return true;
        call_.terminal.about(document_.problemFile());
        call_.terminal.error(document_.problem());
        return archiveOf(document_.problemFile()) == file;
    }

    bool isNew(const GasTemplate& record) {
        const auto index = &record - document_.templates().data();
        return seen_.emplace(document_.file(), index).second;
    }

    void tell(const std::wstring& name, const std::wstring& file) {
        call_.terminal.showProgress({});
        call_.out << oneLine(name) << '\t' << oneLine(file) << '\n';
    }

    int missing(const std::wstring& name) {
        call_.terminal.about({});
        call_.terminal.error(L"no file has the template \"" + name +
                             L"\"; name the folder or the archive of its file with --in");
        return kFailed;
    }

    int comesBack(const std::wstring& name) {
        call_.terminal.about({});
        call_.terminal.error(L"the chain comes back to \"" + name + L"\", so it has no end");
        return kFailed;
    }

    const Call& call_;
    std::vector<std::wstring> files_;
    ChainDocument document_;
    std::set<std::pair<std::wstring, std::ptrdiff_t>> seen_;
};

}  // namespace

int chain(const Call& call) {
    auto files = filesToSearch(call);
    if (!files || !isStart(call, call.operands[0])) return kFailed;
    return ChainWalk(call, std::move(*files)).walk();
}

}  // namespace kestrel::cli
