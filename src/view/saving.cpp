#include "view/saving.h"

#include <string>

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

std::wstring chooseTarget(const ViewedText& viewed, std::wstring_view openPath) {
    const std::wstring_view first = viewed.canEdit ? kGasFiles : kTextFiles;
    const std::wstring_view second = viewed.canEdit ? kTextFiles : kGasFiles;
    const std::wstring filter = std::wstring(first).append(L"|").append(second);
    const std::wstring_view start = viewed.block     ? viewed.block->path
                                    : viewed.canEdit ? openPath
                                                     : folderOf(openPath);
    return askForFile(L"Select Save As Filename and Location", filter, true, start);
}

const CodePage& pageOf(const ViewedText& viewed) {
    return viewed.block ? *viewed.block->page : *gProgram().sourcePage;
}

// The game reads bytes of its code page, and would show others for what that does not have.
std::string bytesFor(const std::wstring& target, const ViewedText& viewed) {
    if (!isGasName(target)) return fileBytes(viewed.text());
    const CodePage& page = pageOf(readFileBytes(target), pageOf(viewed));
    try {
        return std::string(page.isUtf8() ? kUtf8Mark : "").append(page.bytes(viewed.text()));
    } catch (const RunTimeError& error) {
        throw RunTimeError(error.number(), L"Cannot write '" + target + L"': " +
                                               error.description() +
                                               L". Replace it, or save the text as a text file");
    }
}

// What to do with a text that is one of the blocks of the file that it is saved to.
enum class Place { file, block, nowhere };

Place choosePlace(const ViewedText& viewed, std::wstring_view file) {
    const std::size_t blocks = countBlocks(readFileBytes(file));
    // A file that holds this one alone may have comments above it.
    if (blocks > 1) {
        const Answer inPlace =
            askUser(L"This text is one of the " + std::to_wstring(blocks) +
                        L" blocks of this file. Put it in its place and keep the others?",
                    Icon::question, Buttons::yesNoCancel);
        if (inPlace != Answer::yes) return inPlace == Answer::no ? Place::file : Place::nowhere;
    }
    const std::wstring why = whyNotOneBlock(viewed.loaded, viewed.text());
    if (blocks <= 1) {
        const bool fits = why.empty() && replaceBlock(readFileBytes(file), viewed.block->index,
                                                      viewed.loaded, viewed.text(), pageOf(viewed));
        return fits ? Place::block : Place::file;
    }
    if (why.empty()) return Place::block;
    return agrees(L"This text is no longer one block of the file. " + why +
                  L" Put it in its place all the same?")
               ? Place::block
               : Place::nowhere;
}

// The file with the text in its place; nothing, which is told, where it has none now.
std::optional<std::string> inPlace(const ViewedText& viewed, std::wstring_view file) {
    auto bytes = replaceBlock(readFileBytes(file), viewed.block->index, viewed.loaded,
                              viewed.text(), pageOf(viewed));
    if (bytes) return bytes;
    tellUser(L"Nothing was written: \"" + std::wstring(file) +
                 L"\" does not hold this block any more as it was loaded. Save the text to "
                 L"another file, or open this one again.",
             Icon::exclamation);
    return std::nullopt;
}

// What the file at `target` shall hold, once the user agrees; nothing when it stays.
std::optional<std::string> replacement(const ViewedText& viewed, const std::wstring& target,
                                       bool isOwnFile, const OpenFile& openFile) {
    if (!agrees(L"File already exists. Replace existing file?")) return std::nullopt;
    std::string whole = bytesFor(target, viewed);
    const Place place = isOwnFile ? choosePlace(viewed, target) : Place::file;
    // In place nothing of the other program's is lost.
    const bool refused = place == Place::file && openFile.path &&
                         isSameFile(target, openFile.path()) && isChangedByAnother(openFile) &&
                         !agrees(
                             L"The file has been changed by another program since it was loaded. "
                             L"Overwrite it?");
    if (refused || place == Place::nowhere) return std::nullopt;
    auto bytes = place == Place::block ? inPlace(viewed, target) : std::optional(std::move(whole));
    const bool may = !bytes || !filesystem::isProtected(target) ||
                     agrees(L'"' + target + L"\" is write-protected. Replace it anyway?");
    return may ? std::move(bytes) : std::nullopt;
}

bool writeOver(const std::wstring& target, std::string_view bytes) {
    const filesystem::Unprotected open(target);
    if (isGasName(target)) return writeBytesKeeping(target, bytes);
    filesystem::replace(target, bytes, {});
    return true;
}

bool save(ViewedText& viewed, const OpenFile& openFile) {
    const std::wstring openPath = openFile.path ? openFile.path() : std::wstring();
    const std::wstring target = chooseTarget(viewed, openPath);
    if (target.empty()) return false;
    if (!fileExists(target)) {
        filesystem::replace(target, bytesFor(target, viewed), {});
        return true;
    }
    const bool isOwnFile = viewed.block && isSameFile(target, viewed.block->path);
    const auto bytes = replacement(viewed, target, isOwnFile, openFile);
    if (!bytes || !writeOver(target, *bytes)) return false;
    if (isOwnFile) viewed.loaded = viewed.text();
    if (openFile.reload && isSameFile(target, openPath)) openFile.reload();
    return true;
}

}  // namespace

bool saveViewedText(ViewedText& viewed, const OpenFile& openFile) {
    return guarded(L"saveViewedText", [&] { return save(viewed, openFile); });
}

}  // namespace kestrel
