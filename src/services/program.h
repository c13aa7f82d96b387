#pragma once

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/error.h"
#include "services/host.h"
#include "system/codepage.h"

namespace kestrel {

class RunTimeError;

// Paths of the programs that Kestrel starts; an empty one is not configured. A
// user tool is its caption, "|" and its program's path.
struct Settings {
    std::wstring orvane;
    std::wstring zeltor;
    std::wstring skritpad;
    std::array<std::wstring, 5> tools;

    bool operator==(const Settings&) const = default;
};

// What this run found in the files of its folder, or wrote there last: what it changed
// since is what it writes.
struct FoundFiles {
    Settings settings;
    bool settingsUnread = false;  // they could not be read
    // The entries of histories and lists of files, by the path of their file.
    std::map<std::wstring, std::vector<std::wstring>> histories;
};

// The version record.
struct Version {
    std::wstring fileDescription;  // titles of questions and notices
    std::wstring title;            // title of the error report
    int major = 0;
    int minor = 0;
    int revision = 0;
};

// The state of the whole program.
struct Program {
    std::wstring routine;  // current routine name, for the error report
    Settings settings;
    FoundFiles found;
    Progress* progress = nullptr;                      // the dialog that is up; null without one
    const CodePage* codePage = &CodePage::ofSystem();  // of the program's own files
    const CodePage* sourcePage = codePage;             // of `.gas` files
    std::wstring folder;                               // where settings and histories are kept
    std::wstring lastFolder;                           // of the file that was chosen last
    bool draftsFail = false;                           // has been told
    std::set<std::wstring> kept;  // files whose ".bak" holds what this run found
    // The archive that a file was opened from, by the absolute path of its temporary copy: a
    // chain that begins there looks into the archive, and remembers that in place of the copy.
    std::map<std::wstring, std::wstring> origins;
    Version version = defaultVersion();
    Host host;
    // Where the first failure is kept instead of being reported; null where they are reported.
    std::optional<RunTimeError>* silenced = nullptr;

    static Version defaultVersion();
};

// The one program record.
Program& gProgram();

// Puts a fresh program record in the place of the current one, for its own
// lifetime. For tests.
class ProgramScope {
  public:
    ProgramScope();
    ~ProgramScope();
    ProgramScope(const ProgramScope&) = delete;
    ProgramScope& operator=(const ProgramScope&) = delete;

  private:
    Program fresh_;
    Program* before_;
};

// Takes the page of this number for all files. Empty, or why there is no such page.
std::wstring useCodePage(std::wstring_view number);

// As useCodePage(), for the number in the environment variable KESTREL_CODEPAGE; does
// nothing where that is not set.
std::wstring settleCodePage();

// Shows a notice titled with the program's file description.
void tellUser(std::wstring_view text, Icon icon);

// Asks for one line of text; empty when cancelled, or when the host cannot ask.
std::wstring promptUser(std::wstring_view text, std::wstring_view title, std::wstring_view initial);

// Asks a question titled with the program's file description; cancel (or no)
// when the host cannot ask.
Answer askUser(std::wstring_view text, Icon icon, Buttons buttons);

}  // namespace kestrel
