#pragma once

#include <wx/string.h>
#include <wx/weakref.h>
#include <wx/window.h>

#include "services/host.h"
#include "system/process.h"
#include "tank/archivefiles.h"
#include "tank/library.h"

// The host's interfaces over wxWidgets.
namespace kestrel {

// The window that a box stands in front of: not the control in it that has the
// keyboard, which the toolkit calls active too. Null where there is none.
wxWindow* frontWindow();

class MessagesWx final : public Messages {
  public:
    Answer ask(std::wstring_view text, std::wstring_view title, Icon icon,
               Buttons buttons) override;
    std::optional<std::wstring> prompt(std::wstring_view text, std::wstring_view title,
                                       std::wstring_view initial) override;
};

class ProgressMakerWx final : public ProgressMaker {
  public:
    std::unique_ptr<Progress> makeProgress() override;
};

class FileDialogWx final : public FileDialog {
  public:
    bool show(const FileQuestion& question) override;
    std::wstring path() const override { return path_; }
    std::unique_ptr<FileDialog> another() const override {
        return std::make_unique<FileDialogWx>();
    }

  private:
    std::wstring path_;
};

class FolderPickerWx final : public FolderPicker {
  public:
    std::optional<std::wstring> chooseFolder(std::wstring_view title, Owner* owner,
                                             std::wstring_view start) override;
};

class ShellWx final : public Shell {
  public:
    void perform(std::wstring_view file, std::wstring_view verb) override;
    void properties(std::wstring_view path, Owner* owner) override;
    void run(std::wstring_view commandLine, std::wstring_view configured) override {
        startProgram(commandLine, configured);
    }
    bool finds(std::wstring_view name) const override { return isProgram(name); }
};

class ClipboardWx final : public Clipboard {
  public:
    void setText(std::wstring_view text) override;
    // Hands what was copied to the system, which keeps it when this program has ended.
    void keep() const;

  private:
    bool copied_ = false;
};

class ClockWx final : public Clock {
  public:
    std::wstring longTime() const override;
    std::wstring longDate() const override;
};

// A window as the owner of a progress dialog.
class OwnerWx final : public Owner {
  public:
    // Remembers what has the keyboard now, before any dialog takes it; `otherwise` gets
    // it where nothing has it.
    explicit OwnerWx(wxWindow& window, wxWindow* otherwise = nullptr);
    void enable(bool enabled) override;
    void focus() override;

  private:
    wxWindow& window_;
    wxWeakRef<wxWindow> focused_;
};

// Everything above, with the lifetime of the program.
struct HostWx {
    MessagesWx messages;
    ProgressMakerWx progress;
    FileDialogWx fileDialog;
    FolderPickerWx folderPicker;
    ShellWx shell;
    ClipboardWx clipboard;
    ClockWx clock;
    std::unique_ptr<TankLibrary> tank = makeTankLibrary();
    std::unique_ptr<Archives> archives = makeArchives();

    Host interfaces();
};

// The pattern of a file filter as this toolkit understands it: every letter in
// both cases, "*.*" as every file, no blank at its start.
std::wstring toolkitPattern(std::wstring_view pattern);

// A whole filter text with its patterns made so; the shown descriptions stay.
std::wstring toolkitFilter(std::wstring_view filter);

// What a saved file's name gets when it has no extension: that of `pattern`
// ("*.tab"); empty when the pattern names none.
std::wstring extensionOf(std::wstring_view pattern);

}  // namespace kestrel
