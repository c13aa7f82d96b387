#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How the core talks to the windows. Each interface is implemented once over
// the toolkit and once by the recording host of the tests. Unless told
// otherwise an object handed to the core stays its caller's.
namespace kestrel {

enum class Icon { none, information, question, exclamation };
// noYes is for a Yes that loses something: No is the default. Of openDiscardLater and
// leaveStopCancel the answers are yes, no and cancel.
enum class Buttons { ok, okCancel, yesNo, yesNoCancel, noYes, openDiscardLater, leaveStopCancel };
enum class Answer { ok, cancel, yes, no };

class Messages {
  public:
    virtual ~Messages() = default;
    // Shows a box and waits for its answer; closing it is cancel (or no, where
    // there is no Cancel button).
    virtual Answer ask(std::wstring_view text, std::wstring_view title, Icon icon,
                       Buttons buttons) = 0;
    // Asks for one line of text; nothing when cancelled.
    virtual std::optional<std::wstring> prompt(std::wstring_view text, std::wstring_view title,
                                               std::wstring_view initial) = 0;
    void tell(std::wstring_view text, std::wstring_view title, Icon icon) {
        ask(text, title, icon, Buttons::ok);
    }
};

// A window that a long operation disables meanwhile.
class Owner {
  public:
    virtual ~Owner() = default;
    virtual void enable(bool enabled) = 0;
    // Raises the window and gives it the keyboard.
    virtual void focus() = 0;
};

// The progress dialog. Destroying it unloads it.
class Progress {
  public:
    virtual ~Progress() = default;
    // Shows and paints the dialog, in front of `owner` when there is one.
    virtual void show(Owner* owner) = 0;
    virtual void Process(std::wstring_view text) = 0;
    virtual void SubProcess(std::wstring_view text) = 0;
    // Sets the bar to `percentage` (0 to 100). Only on odd percentages the
    // message is shown and pending window events run.
    virtual void ShowProgress(int percentage, std::wstring_view message) = 0;
    // Lets pending window events run by the clock, whatever the percentage: between the
    // items of a long job, so that a Cancel is always seen.
    virtual void breathe() {}
    // The line about the whole job, like "File 3 of 40".
    virtual void Overall(std::wstring_view /*text*/) {}
    virtual void CanCancel(bool can) = 0;
    // True once the user has pressed Cancel, for the rest of the dialog's life.
    virtual bool DidCancel() const = 0;
};

class ProgressMaker {
  public:
    virtual ~ProgressMaker() = default;
    virtual std::unique_ptr<Progress> makeProgress() = 0;
};

// The list that the loader fills, one row a template. Keys are "K0", "K1", ...
class TemplateList {
  public:
    virtual ~TemplateList() = default;
    virtual void add(std::wstring_view key, std::wstring_view text) = 0;
    virtual void setText(std::wstring_view key, std::wstring_view text) = 0;
    virtual void clear() = 0;
};

// The item list of a combo box.
class TextList {
  public:
    virtual ~TextList() = default;
    virtual std::size_t count() const = 0;
    virtual std::wstring at(std::size_t index) const = 0;
    virtual void insert(std::size_t index, std::wstring_view text) = 0;
    virtual void append(std::wstring_view text) = 0;
    virtual void removeAt(std::size_t index) = 0;
};

// What a report list shows at one moment.
struct ListShot {
    std::wstring tag;
    bool sorted = false;
    std::size_t sortKey = 0;  // the index of the sort column
    int sortOrder = 0;        // 0 ascending, anything else descending
    std::vector<std::wstring> headers;
    std::vector<std::vector<std::wstring>> rows;  // each row's columns, in shown order
};

struct FileQuestion {
    std::wstring title;
    std::wstring filter;  // "description|pattern" pairs joined by "|"
    std::wstring start;   // where the dialog starts: a folder, or a file of one
    bool save = false;    // save: the path must exist; open: the file too
};

// A file dialog that keeps its last chosen file for its whole life.
class FileDialog {
  public:
    virtual ~FileDialog() = default;
    // Shows the dialog; false when it was cancelled.
    virtual bool show(const FileQuestion& question) = 0;
    // The full path of the file chosen last; empty before the first choice.
    virtual std::wstring path() const = 0;
    // A new dialog of the same kind, in which nothing was chosen yet.
    virtual std::unique_ptr<FileDialog> another() const = 0;
};

class FolderPicker {
  public:
    virtual ~FolderPicker() = default;
    // The chosen folder, asked for from `start` on where that is one; nothing when
    // cancelled.
    virtual std::optional<std::wstring> chooseFolder(std::wstring_view title, Owner* owner,
                                                     std::wstring_view start) = 0;
};

class Shell {
  public:
    virtual ~Shell() = default;
    // Performs `verb` on a document, a web page or a mail address: "open", or
    // "edit" for the desktop's text editor. Throws RunTimeError where it is known
    // that it cannot be done.
    virtual void perform(std::wstring_view file, std::wstring_view verb) = 0;
    // Starts the program that `commandLine` (not quoted) names and does not wait
    // for it; `configured` is its path where the user chose one. Throws
    // RunTimeError with the system's reason when it cannot be started.
    virtual void run(std::wstring_view commandLine, std::wstring_view configured) = 0;
    // True when `name` is a program that run() would find.
    virtual bool finds(std::wstring_view name) const = 0;
    // Shows the desktop's properties sheet of a file.
    virtual void properties(std::wstring_view path, Owner* owner) = 0;
};

class Clipboard {
  public:
    virtual ~Clipboard() = default;
    virtual void setText(std::wstring_view text) = 0;
};

// The current time and date in the user's long formats.
class Clock {
  public:
    virtual ~Clock() = default;
    virtual std::wstring longTime() const = 0;
    virtual std::wstring longDate() const = 0;
};

// The closed library that reads archives, declared in tank/library.h.
class TankLibrary;

// Archives as places of `.gas` files, whose paths services/archives.h tells of. A member
// throws ArchiveFailure when nothing can be had from the archive. Meanwhile the progress
// dialog that is up lives, and its Cancel ends the call so.
class Archives {
  public:
    using Files = std::vector<std::wstring>;
    virtual ~Archives() = default;
    // True where files() takes no time.
    virtual bool knows(const std::wstring& archive) const = 0;
    // The paths of the `.gas` files in it, as they stand there.
    virtual std::shared_ptr<const Files> files(const std::wstring& archive) = 0;
    // The bytes of a file in an archive. Throws another RunTimeError where this one alone
    // cannot be had.
    virtual std::string read(const std::wstring& path) = 0;
    // Closes what the calls before have opened; it is opened again when it is needed.
    virtual void close() = 0;
};

// The host's interfaces. A null one is a host without that ability: the core
// then does nothing where it would have called it.
struct Host {
    Messages* messages = nullptr;
    ProgressMaker* progress = nullptr;
    FileDialog* fileDialog = nullptr;  // the shared dialog of the main window
    FolderPicker* folderPicker = nullptr;
    Shell* shell = nullptr;
    Clipboard* clipboard = nullptr;
    Clock* clock = nullptr;
    TankLibrary* tank = nullptr;
    Archives* archives = nullptr;
};

}  // namespace kestrel
