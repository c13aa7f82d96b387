#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "gas/query.h"
#include "gas/template.h"
#include "services/host.h"
#include "services/progress.h"
#include "system/filestamp.h"
#include "view/viewtext.h"

// The chain of templates that a template specializes, followed over several
// files: what the Specializes browser does, without its window.
namespace kestrel {

// The name to ask the chain of `record` by: its `name`, or else what it is shown as.
std::wstring chainName(const GasTemplate& record);

// The one loaded file of a chain. It remembers of the files before it what can be
// found in them, so that looking through many files again costs no loading. A file may
// stand in an archive: services/archives.h tells of its path.
class ChainDocument {
  public:
    ChainDocument() = default;
    ~ChainDocument() = default;
    // Its index points into its templates.
    ChainDocument(ChainDocument&&) = default;
    ChainDocument& operator=(ChainDocument&&) = default;
    ChainDocument(const ChainDocument&) = delete;
    ChainDocument& operator=(const ChainDocument&) = delete;

    // The file loaded last; empty at first.
    const std::wstring& file() const noexcept { return file_; }
    const std::vector<GasTemplate>& templates() const noexcept { return templates_; }

    // Loads `file`. After a failure, whose reason problem() tells, file and templates are as
    // they were.
    bool load(const std::wstring& file);

    // Why the last call could not load a file; empty when it could, or had none to load, or its
    // user has cancelled it.
    const std::wstring& problem() const noexcept { return problem_; }
    // That file, or the archive that it is in where nothing can be had from that. With
    // searchIn() it may be the first one of several.
    const std::wstring& problemFile() const noexcept { return problemFile_; }

    // The template whose "doc", or else whose "name", is `name`; null when there is
    // none. It lives until the next call. A file that has changed is loaded again.
    const GasTemplate* find(std::wstring_view name);

    // As load(), then find().
    const GasTemplate* loadAndFind(const std::wstring& file, std::wstring_view name);

    // As loadAndFind(), for one after the other of the `.gas` files in an archive. One that does
    // not load is not tried again until the archive changes.
    const GasTemplate* searchIn(const std::wstring& archive, std::wstring_view name);

    // As find(), in the templates as they are.
    const GasTemplate* source(std::wstring_view name);

    // While archives are read a progress dialog is up, in front of that window (null for none).
    void attend(Owner* owner) noexcept { owner_ = owner; }
    // False once that was cancelled, until rest().
    bool goesOn() const { return !reading_ || !reading_->didCancel(); }
    // Takes the dialog down and closes the archives, which nothing else does.
    void rest();

  private:
    struct Known {
        FileStamp stamp;
        std::vector<std::size_t> values;  // hashes of its docs and names, sorted
    };
    struct Loaded {
        std::wstring file;
        FileStamp stamp;
        std::vector<GasTemplate> templates;
    };

    bool lacks(const std::wstring& file, std::wstring_view name,
               const std::optional<FileStamp>& stamp) const;
    std::vector<GasTemplate> recordsOf(const std::wstring& file,
                                       const std::optional<FileStamp>& stamp);
    const GasTemplate* kept(const GasTemplate* found);
    bool fails(const std::wstring& file, std::wstring_view reason);
    const GasTemplate* searchAll(const std::wstring& archive, const Archives::Files& files,
                                 std::wstring_view name);
    void begin();
    void take(const std::wstring& file);
    void remember(const std::wstring& file, const FileStamp& stamp,
                  std::vector<std::size_t> values);

    std::wstring file_;
    std::vector<GasTemplate> templates_;
    std::optional<TemplateIndex> index_;  // of templates_, once they are searched again
    std::wstring problem_;
    std::wstring problemFile_;
    Owner* owner_ = nullptr;
    std::unique_ptr<ProgressScope> reading_;
    std::optional<FileStamp> stamp_;  // none: nobody needed the templates of file_ yet
    std::unordered_map<std::wstring, Known> known_;
    std::size_t knownValues_ = 0;
    // Those in archives that something was found in last: a walk up and down a chain starts no
    // library for them.
    std::deque<Loaded> kept_;
};

struct ChainNode {
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);
    std::wstring text;               // the template's doc or name
    std::wstring key;                // "root", or "K" and a number
    std::wstring tag;                // its file, maybe in an archive; empty: there is none
    std::size_t parent = kNoParent;  // index of the node above
};

class SpecializesChain {
  public:
    // Reads the files to search from the current folder's "spec.his", adds
    // `startFile`, loads it and builds the chain of the template `name`. The root is
    // then clicked. The chain stays empty when the file cannot be loaded. In the place of a
    // file from an archive, or of a copy of one, the archive is added.
    void open(std::wstring_view name, std::wstring_view startFile);

    // Looks for the source of the node at `index` and asks the user for its file
    // when no file of the list has it; an archive is searched file by file, with a progress
    // dialog in front of `owner` (may be null), whose Cancel ends the look. A file that cannot
    // be loaded is told once, and not tried again until it changes. A node without a child gets one
    // when its template specializes something that is not, as far as the current file tells, the
    // template of the node or of one above; it is then the last node.
    void click(std::size_t index, Owner* owner = nullptr);

    // The source of the node that was clicked last.
    const std::wstring& text() const noexcept { return text_; }

    // Its file; empty without a source.
    const std::wstring& source() const noexcept { return source_; }

    // The block that it is; none for what is no template's own source, or in an archive, where
    // nothing can be saved.
    const std::optional<FileBlock>& block() const noexcept { return block_; }

    // The nodes, each behind its parent.
    const std::vector<ChainNode>& nodes() const noexcept { return nodes_; }

    // The files and archives that are searched, in their order.
    const std::vector<std::wstring>& files() const noexcept { return files_; }
    // The file loaded last.
    const std::wstring& currentFile() const noexcept { return document_.file(); }

    // Asks, and then replaces the files by one entry.
    void resetFiles();

    // Writes the files into the program's folder.
    void saveFiles() const;

  private:
    void mLoadTree(std::wstring_view chain, const std::wstring& file);
    void addFile(const std::wstring& file);
    const GasTemplate* lookUp(std::size_t index);
    const GasTemplate* lookInto(const std::wstring& file, std::size_t index);
    std::wstring askForSource();
    bool isDead(const std::wstring& file) const;
    void tellProblem();
    void grow(std::size_t index, const GasTemplate& record);
    bool isAt(std::size_t index, const GasTemplate& record);

    std::wstring baseName_;
    std::wstring startPlace_;  // the start file, or the archive that it is from
    std::vector<std::wstring> files_;
    ChainDocument document_;
    std::vector<ChainNode> nodes_;
    std::wstring text_;
    std::wstring source_;
    std::optional<FileBlock> block_;
    // The files that could not be loaded, as they were then.
    std::map<std::wstring, std::optional<FileStamp>> dead_;
};

}  // namespace kestrel
