#include "view/saving.h"

#include <string>
#include <utility>

#include "base/bytes.h"
#include "base/error.h"
#include "base/paths.h"
#include "gas/edit.h"
#include "gas/gasnames.h"
#include "services/files.h"
#include "services/guard.h"
#include "services/pagetext.h"
#include "services/pickers.h"
#include "services/program.h"
#include "system/codepage.h"
#include "system/filesystem.h"
#include "system/letters.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kTextFiles = L"Text File (*.txt)|*.txt";
constexpr std::wstring_view kGasFiles = L"GAS File (*.gas)|*.gas";

bool isSameFile(std::wstring_view a, std::wstring_view b) {
    if (a.empty() || b.empty()) return false;
    return a == b || compareWithoutCase(gstrLongPath(a), gstrLongPath(b)) == 0;
}

// An open file that cannot be looked at by now counts as unchanged: there is nothing
// to lose, or the writing fails.
bool isChangedByAnother(const OpenFile& openFile) {
    const auto loaded = openFile.stamp ? openFile.stamp() : std::nullopt;
    const auto now = fileStamp(openFile.path());
    return loaded && now && *loaded != *now;
}

bool agrees(std::wstring_view question) {
    return askUser(question, Icon::question, Buttons::noYes) == Answer::yes;
}

constexpr std::wstring_view kSaveAs = L"Select Save As Filename and Location";

bool mayReplace() {
    return agrees(L"File already exists. Replace existing file?");
}

// Asked at last.
bool mayReplaceProtected(const std::wstring& path) {
    return !filesystem::isProtected(path) ||
           agrees(L'"' + path + L"\" is write-protected. Replace it anyway?");
}

// One saving of a text: what is asked, in its order, and what is then written.
class Saving {
  public:
    Saving(ViewedText& viewed, const OpenFile& openFile)
        : viewed_(viewed),
          openFile_(openFile),
          openPath_(openFile.path ? openFile.path() : std::wstring()),
          text_(viewed.text()),
          page_(viewed.block ? *viewed.block->page : *gProgram().sourcePage) {}

    bool save() {
        target_ = chooseTarget();
        if (target_.empty()) return false;
        if (!fileExists(target_)) {
            filesystem::replace(target_, bytesFor({}), {});
            return true;
        }
        isOwnFile_ = viewed_.block && isSameFile(target_, viewed_.block->path);
        const auto bytes = replacement();
        if (!bytes || !writeOver(*bytes)) return false;
        if (isOwnFile_) viewed_.loaded = text_;
        if (openFile_.reload && isSameFile(target_, openPath_)) openFile_.reload();
        return true;
    }

  private:
    // What to do with a text that is one of the blocks of the file that it is saved to.
    enum class Place { file, block, nowhere };

    std::wstring chooseTarget() const {
        const std::wstring_view first = viewed_.canEdit ? kGasFiles : kTextFiles;
        const std::wstring_view second = viewed_.canEdit ? kTextFiles : kGasFiles;
        const std::wstring filter = std::wstring(first).append(L"|").append(second);
        const std::wstring_view start = viewed_.block     ? viewed_.block->path
                                        : viewed_.canEdit ? openPath_
                                                          : folderOf(openPath_);
        return askForFile(kSaveAs, filter, true, start);
    }

    // The whole text for a target that holds `old`. The game reads bytes of its code page, and
    // would show others for what that does not have.
    std::string bytesFor(std::string_view old) const {
        if (!isGasName(target_)) return fileBytes(text_);
        const CodePage& page = pageOf(old, page_);
        try {
            return std::string(page.isUtf8() ? kUtf8Mark : "").append(page.bytes(text_));
        } catch (const RunTimeError& error) {
            throw RunTimeError(error.number(),
                               L"Cannot write '" + target_ + L"': " + error.description() +
                                   L". Replace it, or save the text as a text file");
        }
    }

    // What the target shall hold, once the user agrees; nothing when it stays.
    std::optional<std::string> replacement() const {
        if (!mayReplace()) return std::nullopt;
        // What cannot be read cannot be kept either: that ends the saving.
        std::optional<std::string> read;
        if (isOwnFile_ || isGasName(target_)) read = filesystem::read(target_);
        const std::string old = std::move(read).value_or(std::string());
        std::string whole = bytesFor(old);
        const Place place = isOwnFile_ ? choosePlace(old) : Place::file;
        // In place nothing of the other program's is lost.
        const bool refused =
            place == Place::file && isSameFile(target_, openPath_) &&
            isChangedByAnother(openFile_) &&
            !agrees(
                L"The file has been changed by another program since it was loaded. "
                L"Overwrite it?");
        if (refused || place == Place::nowhere) return std::nullopt;
        auto bytes = place == Place::block ? inPlace() : std::optional(std::move(whole));
        return !bytes || mayReplaceProtected(target_) ? std::move(bytes) : std::nullopt;
    }

    Place choosePlace(std::string_view old) const {
        const std::size_t blocks = countBlocks(old);
        // A file that holds this one alone may have comments above it.
        if (blocks > 1) {
            const Answer inPlace =
                askUser(L"This text is one of the " + std::to_wstring(blocks) +
                            L" blocks of this file. Put it in its place and keep the others?",
                        Icon::question, Buttons::yesNoCancel);
            if (inPlace != Answer::yes) return inPlace == Answer::no ? Place::file : Place::nowhere;
        }
        const std::wstring why = whyNotOneBlock(viewed_.loaded, text_);
        if (blocks <= 1) return why.empty() && put(old) ? Place::block : Place::file;
        if (why.empty()) return Place::block;
        return agrees(L"This text is no longer one block of the file. " + why +
                      L" Put it in its place all the same?")
                   ? Place::block
                   : Place::nowhere;
    }

    // The file with the text in its place.
    std::optional<std::string> put(std::string_view file) const {
        return replaceBlock(file, viewed_.block->index, viewed_.loaded, text_, page_);
    }

    // Of the file as it is by now; nothing, which is told, where it has no such place.
    std::optional<std::string> inPlace() const {
        auto bytes = put(readFileBytes(target_));
        if (bytes) return bytes;
        tellUser(L"Nothing was written: \"" + target_ +
                     L"\" does not hold this block any more as it was loaded. Save the text to "
                     L"another file, or open this one again.",
                 Icon::exclamation);
        return std::nullopt;
    }

    bool writeOver(std::string_view bytes) const {
        const filesystem::Unprotected open(target_);
        if (isGasName(target_)) return writeBytesKeeping(target_, bytes);
        filesystem::replace(target_, bytes, {});
        return true;
    }

    ViewedText& viewed_;
    const OpenFile& openFile_;
    std::wstring openPath_;
    std::wstring text_;
    const CodePage& page_;  // of the block's file, else of the program
    std::wstring target_;
    bool isOwnFile_ = false;  // the target is what the text was loaded from
};

}  // namespace

bool saveViewedText(ViewedText& viewed, const OpenFile& openFile) {
    return guarded(L"saveViewedText", [&] { return Saving(viewed, openFile).save(); });
}

void saveBytes(std::string_view bytes) {
    guarded(L"saveBytes", [&] {
        const std::wstring target = askForFile(kSaveAs, kTextFiles, true);
        if (target.empty()) return;
        if (fileExists(target) && !(mayReplace() && mayReplaceProtected(target))) return;
        const filesystem::Unprotected open(target);
        filesystem::replace(target, bytes, {});
    });
}

}  // namespace kestrel
