#include "services/pickers.h"

#include <algorithm>

#include "base/paths.h"
#include "services/guard.h"
#include "services/program.h"

namespace kestrel {

std::wstring fileFilter(std::wstring_view own) {
    std::wstring filter(own);
    if (own.starts_with(kAllFiles)) return filter;
    if (!filter.empty()) filter += L'|';
    return filter.append(kAllFiles);
}

void gSelectFile(std::wstring& file, std::wstring_view title, std::wstring_view filter, bool save,
                 std::wstring& fileTitle, FileDialog*& dialog, std::wstring& initialFolder) {
    guarded(L"gSelectFile", [&] {
        if (!file.empty()) return;
        if (dialog == nullptr) dialog = gProgram().host.fileDialog;
        if (initialFolder.empty()) initialFolder = gProgram().folder;
        if (dialog == nullptr) return;
        // Whether the user cancelled, or the dialog failed, does not matter: the
        // choice that it holds counts.
        guarded(L"gSelectFile", [&] {
            dialog->show({std::wstring(title), fileFilter(filter), initialFolder, save});
        });
        file = dialog->path();
        fileTitle = fileName(file);
    });
}

std::wstring askForFile(std::wstring_view title, std::wstring_view filter, bool save,
                        std::wstring_view start) {
    const FileDialog* shared = gProgram().host.fileDialog;
    const std::unique_ptr<FileDialog> own = shared == nullptr ? nullptr : shared->another();
    FileDialog* dialog = own.get();
    std::wstring file;
    std::wstring fileTitle;
    std::wstring folder(start.empty() ? gProgram().lastFolder : start);
    gSelectFile(file, title, filter, save, fileTitle, dialog, folder);
    if (!file.empty()) gProgram().lastFolder = folderOf(file);
    return file;
}

std::optional<std::wstring> gBrowseFolder(std::wstring_view title, Owner* owner,
                                          std::wstring_view startFolder) {
    return guarded(L"gBrowseFolder", [&]() -> std::optional<std::wstring> {
        FolderPicker* picker = gProgram().host.folderPicker;
        if (picker == nullptr) return std::nullopt;
        auto folder = picker->chooseFolder(title, owner, startFolder);
        if (folder) folder->erase(std::min(folder->find(L'\0'), folder->size()));
        return folder;
    });
}

}  // namespace kestrel
