#include <algorithm>
#include <ostream>
#include <set>
#include <utility>

#include "base/paths.h"
#include "cli/commands.h"
#include "cli/run.h"
#include "gas/gasnames.h"
#include "system/filesystem.h"
#include "view/chain.h"

namespace kestrel::cli {
namespace {

// The files to search: the one that the chain begins in, then those of the folder
// by their names. Nothing when there is no such folder.
std::optional<std::vector<std::wstring>> filesToSearch(const Call& call) {
    std::vector<std::wstring> files{call.operands[0]};
    const std::optional<std::wstring> folder = call.arguments.value(L"--in");
    if (!folder) return files;
    if (!filesystem::isFolder(*folder)) {
        call.terminal.about(*folder);
        call.terminal.error(L"there is no such folder");
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
            call_.terminal.about(file);
            if (file != document_.file()) {
                record = document_.loadAndFind(file, name);
                if (!document_.problem().empty()) call_.terminal.error(document_.problem());
            }
            // One that does not load is told of once.
            if (file == document_.file()) {
                ++i;
            } else {
                files_.erase(files_.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        return record;
    }

    bool isNew(const GasTemplate& record) {
        const auto index = &record - document_.templates().data();
        return seen_.emplace(document_.file(), index).second;
    }

    void tell(const std::wstring& name, const std::wstring& file) {
        call_.out << oneLine(name) << '\t' << oneLine(file) << '\n';
    }

    int missing(const std::wstring& name) {
        call_.terminal.about({});
        call_.terminal.error(L"no file has the template \"" + name +
                             L"\"; name the folder of its file with --in");
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
    if (!files || !isThere(call.terminal, call.operands[0])) return kFailed;
    return ChainWalk(call, std::move(*files)).walk();
}

}  // namespace kestrel::cli
