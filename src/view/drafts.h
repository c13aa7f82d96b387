#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "system/filelock.h"
#include "system/filestamp.h"
#include "view/viewtext.h"

// Texts that were changed and not saved yet, kept in files beside those of the program, so
// that whatever ends it takes the last seconds of typing at most.
namespace kestrel {

struct Draft {
    std::wstring caption;  // of the window that the text was changed in
    FileBlock block;
    std::optional<FileStamp> stamp;  // of the block's file, when the text was loaded
    std::wstring loaded;             // as the file had it
    std::wstring text;

    bool operator==(const Draft&) const = default;
};

// The file of one text's draft. It is this run's alone as long as the object lives, and
// stays behind for the next one unless it was dropped.
class DraftFile {
  public:
    // Writes the draft, for the user alone, in the place of the one before. A failure is
    // reported, once a run.
    void keep(const Draft& draft);
    void drop();

  private:
    friend std::vector<struct LeftDraft> leftDrafts();

    std::wstring path_;
    std::unique_ptr<FileLock> lock_;
    std::optional<Draft> kept_;
};

// A draft of a run that has ended.
struct LeftDraft {
    Draft draft;
    DraftFile file;
};

// Those that no running program has, oldest first. A file that is no draft is passed over.
std::vector<LeftDraft> leftDrafts();

// What to do with a draft, as its user says.
enum class DraftChoice { open, discard, later };
DraftChoice askAboutDraft(const Draft& draft);

// The folder of drafts: the program's own where a copy keeps everything beside itself, else
// the user's folder for what programs remember.
std::wstring draftFolder();

}  // namespace kestrel
