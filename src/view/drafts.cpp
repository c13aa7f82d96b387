#include "view/drafts.h"

#include <algorithm>
#include <random>
#include <utility>

#include "base/bytes.h"
#include "base/packed.h"
#include "base/paths.h"
#include "services/guard.h"
#include "services/program.h"
#include "system/codepage.h"
#include "system/filesystem.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kEnd = L".draft";
constexpr std::wstring_view kLockEnd = L".lock";
constexpr std::wstring_view kMark = L"Kestrel draft 2";

std::string bytesOf(const Draft& draft) {
    PackedWriter writer;
    writer.add(kMark);
    writer.add(draft.caption);
    writer.add(draft.block.path);
    writer.addNumber(draft.block.index);
    writer.addNumber(draft.block.page->number());
    writer.addNumber(draft.stamp ? draft.stamp->size : 0);
    writer.addNumber(draft.stamp ? draft.stamp->written : 0);
    writer.add(draft.loaded);
    writer.add(draft.text);
    return writer.bytes();
}

std::optional<Draft> draftOf(std::string_view bytes) {
    PackedReader reader(bytes);
    if (reader.next() != kMark) return std::nullopt;
    Draft draft;
    draft.caption = reader.next();
    draft.block.path = reader.next();
    draft.block.index = reader.nextNumber<std::size_t>();
    const CodePage* page = CodePage::find(reader.nextNumber<unsigned>());
    if (page == nullptr) return std::nullopt;
    draft.block.page = page;
    FileStamp stamp;
    stamp.size = reader.nextNumber<std::uintmax_t>();
    stamp.written = reader.nextNumber<std::int64_t>();
    if (stamp != FileStamp()) draft.stamp = stamp;
    draft.loaded = reader.next();
    draft.text = reader.next();
    return reader.isWhole() ? std::optional(std::move(draft)) : std::nullopt;
}

std::wstring newName() {
    constexpr std::wstring_view kDigits = L"0123456789abcdef";
    std::random_device random;
    std::wstring name;
    while (name.size() < 16) name += kDigits[random() % kDigits.size()];
    return name.append(kEnd);
}

std::unique_ptr<FileLock> lockOf(const std::wstring& path) {
    return std::make_unique<FileLock>(std::wstring(path).append(kLockEnd));
}

void reportOnce() {
    if (std::exchange(gProgram().draftsFail, true)) return;
    reportCurrentException(L"keep");
}

}  // namespace

void DraftFile::keep(const Draft& draft) {
    if (kept_ == draft) return;
    try {
        if (path_.empty()) {
            const std::wstring folder = draftFolder();
            filesystem::makeFolder(folder);
            path_ = joinPath(folder, newName());
            lock_ = lockOf(path_);
            filesystem::makePrivate(path_);
        }
        filesystem::replace(path_, bytesOf(draft), {});
        kept_ = draft;
    } catch (...) {
        reportOnce();
    }
}

void DraftFile::drop() {
    if (!path_.empty()) filesystem::remove(path_);
    *this = {};
}

std::vector<LeftDraft> leftDrafts() {
    return guarded(L"leftDrafts", [] {
        std::vector<LeftDraft> found;
        const std::wstring folder = draftFolder();
        filesystem::removeLeftBehind(folder);
        for (const std::wstring& name : filesystem::fileNames(folder)) {
            if (!name.ends_with(kEnd)) continue;
            const std::wstring path = joinPath(folder, name);
            LeftDraft left;
            left.file.lock_ = lockOf(path);
            if (!left.file.lock_->isHeld()) continue;
            const auto bytes = filesystem::read(path);
            auto draft = draftOf(bytes.value_or(std::string()));
            left.file.path_ = path;
            // The run ended before it had written anything.
            if (bytes && bytes->empty()) left.file.drop();
            if (!draft) continue;
            left.draft = std::move(*draft);
            left.file.kept_ = left.draft;
            found.push_back(std::move(left));
        }
        std::ranges::sort(found, {}, [](const LeftDraft& left) {
            const auto stamp = fileStamp(left.file.path_);
            return stamp ? stamp->written : 0;
        });
        return found;
    });
}

DraftChoice askAboutDraft(const Draft& draft) {
    std::wstring text = L"Changes that were not saved are kept from an earlier run:\r\n\r\n" +
                        draft.caption + L"\r\n" + draft.block.path + L"\r\n\r\n";
    const auto now = fileStamp(draft.block.path);
    if (!now) {
        text += L"The file is not there any more. ";
    } else if (draft.stamp && *draft.stamp != *now) {
        text += L"The file has been changed since. ";
    }
    text += L"Open the changed text, discard it, or be asked again at the next start?";
    const Answer answer = askUser(text, Icon::question, Buttons::openDiscardLater);
    if (answer == Answer::yes) return DraftChoice::open;
    return answer == Answer::no ? DraftChoice::discard : DraftChoice::later;
}

std::wstring draftFolder() {
    const std::wstring& own = gProgram().folder;
    return own == filesystem::executableFolder() ? own : filesystem::stateFolder();
}

}  // namespace kestrel
