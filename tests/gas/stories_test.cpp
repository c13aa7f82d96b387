// Plays stories.txt, which tells what its commands mean.

#include <array>
#include <chrono>
#include <sstream>
#include <unordered_map>

#include "base/text.h"
#include "gas/losses.h"
#include "gastest.h"
#include "services/archives.h"
#include "services/pagetext.h"
#include "support/recordinghost.h"
#include "support/stories.h"
#include "view/chain.h"
#include "view/saving.h"
#include "view/tree.h"

namespace kestrel::test {
namespace {

using Clock = fs::file_time_type::clock;

// UTF-8 behind its mark, else the code page.
std::string bytesOf(const std::string& text) {
    return text.starts_with(kUtf8Mark) ? text : narrow(fromUtf8(text));
}

// The block of a template that is written as NAME>PARENT(DOC).
std::string blockOf(const std::string& written) {
    const std::string start = written.substr(0, written.find('('));
    const std::string name = start.substr(0, start.find('>'));
    std::string block = "[t:template,n:" + name + "]\r\n{\r\n";
    if (start != written) block += "doc = \"" + written.substr(start.size() + 1) + "\";\r\n";
    if (start != name) block += "specializes = \"" + start.substr(name.size() + 1) + "\";\r\n";
    return replaced(block + "}\r\n", ")\"", "\"");
}

// Archives whose file is "NAME", a line end and the bytes, each behind a zero byte. Of one
// that holds no more than "lost" nothing can be had from then on.
class PackedFiles final : public Archives {
  public:
    explicit PackedFiles(Lines& log) : log_(log) {}

    bool knows(const std::wstring& archive) const override {
        return known_ == archive && (isOpen_ || stamp_ == fileStamp(archive));
    }
    std::shared_ptr<const Files> files(const std::wstring& archive) override {
        if (knows(archive)) return files_;
        open("list ", archive);
        known_ = archive;
        stamp_ = fileStamp(archive);
        Files files;
        std::istringstream parts(*filesystem::read(archive));
        for (std::string part; std::getline(parts, part, '\0');) {
            files.push_back(pathInArchive(archive, fromUtf8(part.substr(0, part.find('\n')))));
            bytes_[files.back()] = part.substr(part.find('\n') + 1);
        }
        if (files.empty()) throw ArchiveFailure(kPathError, L"no archive");
        return files_ = std::make_shared<const Files>(std::move(files));
    }
    std::string read(const std::wstring& path) override {
        files(archiveOf(path));
        open("read ", path);
        if (bytes_.at(path) == "lost") throw ArchiveFailure(kDeviceError, L"lost");
        if (bytes_.at(path) == "short") throw RunTimeError(kDeviceError, L"short");
        return bytes_.at(path);
    }
    void close() override {
        if (std::exchange(isOpen_, false)) log_.emplace_back("close");
    }

  private:
    void open(const std::string& call, const std::wstring& path) {
        isOpen_ = true;
        log_.push_back(call + shown(path));
    }

    Lines& log_;
    bool isOpen_ = false;
    std::wstring known_;
    std::optional<FileStamp> stamp_;
    std::shared_ptr<const Files> files_;
    std::unordered_map<std::wstring, std::string> bytes_;
};

// A story. What its commands give is gathered behind what the user is asked and told.
class Story final : public TemplateList {
  public:
    Story() {
        gProgram().folder = programs_.path();
        gProgram().version.fileDescription = L"Kestrel";
        programs_.put(L"spec.his", "kept");
        fs::current_path(folder_.native());
    }

    std::string answer(const std::string& line) {
        const std::size_t end = std::min(line.find(' '), line.size());
        host_.log.clear();
        run(line.substr(0, end), line.substr(std::min(end + 1, line.size())));
        tellChanges();
        std::string told;
        for (const std::string& one : host_.log) {
            told += "\n    " + replaced(flat(one), shown(folder_.path()), "~");
        }
        return told + "\n";
    }

    void add(std::wstring_view key, std::wstring_view text) override {
        tell("add " + toUtf8(key) + " " + toUtf8(text));
    }
    void setText(std::wstring_view key, std::wstring_view text) override {
        tell("set " + toUtf8(key) + " " + toUtf8(text));
    }
    void clear() override { tell("clear"); }

  private:
    using States = std::array<std::string, 4>;

    void tell(const std::string& what) { host_.log.push_back(what); }

    void run(const std::string& verb, const std::string& what) {
        std::istringstream words(what);
        if (verb == "blocks") tellBlocks(what);
        if (verb == "info") {
            tellEntries(loaded("[info]|" + what).at(0));
            check(std::string(kUtf8Mark) + lines("[info]|" + what));
        }
        if (verb == "tree") tellTree(loaded("[I]|" + what).at(0));
        if (verb == "read") read(bytesOf(lines(what)));
        if (verb == "check") check(bytesOf(lines(what)));
        if (verb == "text") text_ = lines(what);
        if (verb == "view") view(words);
        if (verb == "edit") edit(fromUtf8(lines(what)));
        if (verb == "open" || verb == "old" || verb == "soon" || verb == "write") {
            for (std::string file; std::getline(words >> std::ws, file, ',');) write(verb, file);
        }
        if (verb == "open") open(what.substr(2, what.find_first_of(">(, ", 2) - 2), "./f");
        if (verb == "chain") open(what.substr(0, what.find(' ')), what.substr(what.find(' ') + 1));
        if (verb == "remove") fs::remove(folder_.native(fromUtf8(what)));
        if (verb == "list") folder_.put(L"spec.his", lines(what));
        for (std::size_t node; verb == "click" && words >> node;) chain_.click(node, &host_);
        if (verb == "pack") pack(words);
        if (verb == "origin") gProgram().origins[L"./f"] = fromUtf8(what);
        if (verb == "cancel") host_.cancelAtBreath = host_.breaths + std::stoul(what);
        if (verb == "pick") host_.files.emplace_back(fromUtf8(what));
        if (verb == "no") host_.answers.push_back(Answer::no);
        if (verb == "reset") chain_.resetFiles();
        if (verb == "keep") {
            chain_.saveFiles();
            tell(programs_.bytes(L"spec.his") + " replaces " + programs_.bytes(L"spec.his.bak"));
        }
    }

    void tellBlocks(const std::string& file) {
        for (const GasTemplate& record : loaded(file, this)) {
            const bool isBlock = record.Place != GasTemplate::kNowhere;
            tell(toUtf8(record.Kind.wide()) + " " + (isBlock ? std::to_string(record.Place) : "-") +
                 " " + toUtf8(record.Name.wide()) + ": " + toUtf8(record.Text.wide()));
            tellEntries(record);
        }
    }

    void tellEntries(const GasTemplate& record) {
        tell("  " + dump(record));
        if (!record.Comments.empty()) tell("  " + toUtf8(record.Comments.wide()));
    }

    void tellTree(const GasTemplate& record) {
        const std::vector<BlockNode> nodes = blockTree(record);
        for (const BlockNode& node : nodes) {
            const bool isBelow = node.parent < nodes.size();
            tell(toUtf8(node.label + L" " + branchPath(record, node) + (isBelow ? L" < " : L"") +
                        (isBelow ? nodes[node.parent].label : L"")));
        }
        const auto last = nodeOf(record, nodes, record.Properties.back());
        tell("last: " + toUtf8(last->label + L" " + fullPath(record, *last)));
    }

    void read(const std::string& bytes) {
        std::vector<GasTemplate> templates(3);
        templates[0].Kind = "kept";
        std::wstring path = fromUtf8(bytes);
        if (!path.starts_with(L'/')) path = folder_.put(L"x.gas", bytes);
        const bool read = gblnLoadGas(path, templates, this);
        tell((read ? "loaded" : "failed") + std::string(path.empty() ? ", no path, " : ", ") +
             std::to_string(templates.size()) + " of " + toUtf8(templates[0].Kind.wide()));
    }

    void check(const std::string& bytes) {
        for (const Loss& loss : findLosses(bytes)) {
            tell(std::to_string(loss.line) + (loss.ignored ? " ignored: " : " cut: ") +
                 toUtf8(loss.why) + ": " + toUtf8(loss.text));
        }
    }

    void view(std::istringstream& words) {
        std::string target, state, answers;
        words >> target >> state >> answers;
        const std::wstring openPath = folder_.put(L"open.gas", "open");
        const fs::path file = folder_.native(fromUtf8(target));
        if (state == "gone") fs::remove(file);
        if (state != "gone") folder_.put(fromUtf8(target), state);
        std::optional<FileStamp> stamp = fileStamp(openPath);
        if (state == "later") --stamp->written;
        if (state == "longer") --stamp->size;
        if (state == "unknown") stamp.reset();
        if (state == "locked") fs::permissions(file, fs::perms::owner_read);
        ViewedText viewed{[this] { return fromUtf8(text_); }, target == "open.gas", true};
        save(viewed, target, answers,
             {[&] { return openPath; }, [this] { tell("reload"); }, [&] { return stamp; }});
    }

    void edit(const std::wstring& what) {
        const auto parts = split(what, L" \u2192 ");
        const std::string start = toUtf8(parts.at(0));
        const auto records = loaded(replaced(text_, kUtf8Mark, ""));
        const GasTemplate& block = records.at(static_cast<std::size_t>(start.at(0) - '0'));
        std::wstring text = block.Text.wide();
        text.replace(text.find(parts.at(1)), parts[1].size(), parts.at(2));
        const std::string now = parts.size() < 4 ? text_ : toUtf8(parts[3]);
        const FileBlock place{folder_.put(L"open.gas", bytesOf(now)), block.Place};
        ViewedText viewed{[&] { return text; }, true, true, block.Text.wide(), place};
        save(viewed, "open.gas", start.substr(1), {});
        EXPECT_EQ(viewed.loaded == text, host_.log.back() == "saved");
    }

    // Leaves the folder empty.
    void save(ViewedText& viewed, const std::string& target, std::string_view answers,
              const OpenFile& openFile) {
        host_.answers.clear();
        for (const char one : answers) {
            if (one == 'y') host_.answers.push_back(Answer::yes);
            if (one == 'n') host_.answers.push_back(Answer::no);
            if (one == 'c') host_.answers.push_back(Answer::cancel);
        }
        if (target != "-") host_.files.emplace_back(folder_.path(fromUtf8(target)));
        gProgram().kept.clear();
        const bool saved = saveViewedText(viewed, openFile);
        for (const std::string& name : folder_.names()) {
            tell(name + ": " + folder_.bytes(fromUtf8(name)));
            fs::permissions(folder_.native(fromUtf8(name)), fs::perms::owner_all);
            fs::remove(folder_.native(fromUtf8(name)));
        }
        tell(saved ? "saved" : "not saved");
    }

    void open(const std::string& name, const std::string& file) {
        chain_ = {};
        known_ = kNothing;
        chain_.open(fromUtf8(name), fromUtf8(file));
    }

    // The blocks that stand behind a name.
    std::string blocks(std::istringstream& words) {
        std::string text;
        for (std::string word; words >> word;) {
            if (word == "lost" || word == "short") return word;
            text += blockOf(word);
            written_[blockOf(word)] = word;
        }
        return text;
    }

    void pack(std::istringstream& words) {
        gProgram().host.archives = &archives_;
        std::string name, all;
        words >> name;
        for (std::string file; std::getline(words >> std::ws, file, ',');) {
            std::istringstream rest(file);
            std::string inside;
            rest >> inside;
            all += inside + "\n" + blocks(rest) + '\0';
        }
        folder_.put(fromUtf8(name), all);
        fs::last_write_time(folder_.native(fromUtf8(name)), start_ - std::chrono::hours(1));
    }

    void write(const std::string& verb, const std::string& file) {
        std::istringstream words(file);
        std::string name;
        words >> name;
        const std::string text = blocks(words);
        folder_.put(fromUtf8(name), text);
        const fs::path path = folder_.native(fromUtf8(name));
        if (verb == "old") fs::last_write_time(path, start_ - std::chrono::hours(1));
        if (verb == "soon") fs::last_write_time(path, start_ + std::chrono::milliseconds(1900));
    }

    void tellChanges() {
        States now = kNothing;
        for (std::size_t i = 0; i < chain_.nodes().size(); ++i) {
            const ChainNode& node = chain_.nodes()[i];
            const std::wstring tag = node.tag.empty() ? L"none" : node.tag;
            now[0] += (i == 0 ? "" : ", ") + toUtf8(node.key + L" " + node.text + L" " + tag);
            if (node.parent + 1 != i) now[0] += " below " + std::to_string(node.parent);
        }
        now[1] += toUtf8(chain_.currentFile());
        if (chain_.block()) now[1] += "#" + std::to_string(chain_.block()->index);
        const std::string text = toUtf8(chain_.text());
        now[2] += written_.contains(text) ? written_.at(text) : text;
        for (const std::wstring& file : chain_.files()) now[3] += " " + toUtf8(file) + ",";
        for (std::size_t i = 0; i < now.size(); ++i) {
            if (now[i] != known_[i]) tell(now[i]);
        }
        known_ = now;
    }

    static inline const States kNothing{"", "in ", "shows ", "files"};
    const Clock::time_point start_ = Clock::now();
    RecordingHost host_;
    PackedFiles archives_{host_.log};
    const TempFolder folder_;
    const TempFolder programs_;
    std::string text_;
    SpecializesChain chain_;
    States known_ = kNothing;
    std::unordered_map<std::string, std::string> written_;
};

TEST(Gas, TellsItsStories) {
    const fs::path stories = fs::absolute(KESTREL_SOURCES "/tests/gas/stories.txt");
    std::optional<Story> story(std::in_place);
    playStories(stories, [&](const std::string& line) {
        if (line.empty()) story.emplace();
        return story->answer(line);
    });
}

// One failure, one report. Only Linux has this file.
TEST(Gas, NothingStaysOfAFileThatCannotBeRead) {
    const std::string told = Story().answer("read /proc/self/mem");
    EXPECT_EQ(std::ranges::count(told, '\n'), 4);
    EXPECT_TRUE(told.ends_with("clear\n    failed, 1 of \n") || !fs::exists("/proc/self/mem"))
        << told;
}

}  // namespace
}  // namespace kestrel::test
