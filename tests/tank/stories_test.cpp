#include <set>
#include <sstream>

#include "services/archives.h"
#include "services/pagetext.h"
#include "support/stories.h"
#include "tank/archivefiles.h"
#include "tank/archives.h"
#include "tank/build.h"
#include "tank/extract.h"

namespace kestrel::test {
namespace {

// What headings tell after the name.
const char* const kWhen = "Time: 10:20:30|Date: Friday, 1 March 2002||";

// The stories of stories.txt, which tells what their words mean.
class Stories : public Archives {
  protected:
    Stories() { fs::current_path(files.native()); }

    std::string play(const std::string& line) {
        if (line.starts_with("tank")) begin();
        if (!line.starts_with("> ")) {
            archive_ += line + "\n";
            return "\n";
        }
        const std::size_t end = std::min(line.find(' ', 2), line.size());
        return answer(line.substr(2, end - 2),
                      replaced(line.substr(std::min(end + 1, line.size())),
                               {{"FOLDER", toUtf8(files.path())},
                                {"LIBRARY", toUtf8(dynamic::tankFileName())},
                                {"PROGRAM", toUtf8(filesystem::executableFolder())}}));
    }

    void begin() {
        archive_.clear();
        path_ = files.path(name_ = L"a.dsres");
        use({usual_});
        gProgram().host.progress = &host;
        host.cancelAt = std::string::npos;
        host.logsProgressSteps = false;
    }

    std::string answer(const std::string& verb, const std::string& object) {
        if (verb == "at") path_ = files.path(name_ = fromUtf8(object));
        if (verb == "cancel") host.cancelAt = std::stoul(object);
        if (verb == "close") path_.clear();
        if (verb == "look") use(parts(object));
        if (verb == "own") gProgram().folder = fromUtf8(object);
        if (verb == "place") place(parts(object).back(), narrow(parts(object).front()));
        if (verb == "strip") gProgram().host.progress = nullptr;
        if (verb == "unplug") gProgram().host.tank = nullptr;
        if (verb == "watch") host.logsProgressSteps = true;
        files.put(name_, narrow(fromUtf8(archive_)));
        if (verb == "put") {
            files.put(parts(object)[0], narrow(parts(object)[1]));
            return "\n";
        }
        if (verb == "data") return "\n" + data();
        if (verb == "extract") return "\n" + extracted(parts(object));
        if (verb == "names") return "\n" + lines(each(parts(object), safe));
        if (verb == "rows") return "\n" + rows(parts(object));
        if (verb == "gas") return "\n" + gasFiles(pathInArchive(path_, fromUtf8(object)));
        if (verb == "facts")
            return "\n" + facts(object.empty() ? gOpenTank(path_) : std::stoi(object));
        if (verb == "priorities") return "\n" + lines(each(parts(object), priority));
        if (verb == "options") return " = " + text(joinOptions(parts(object))) + "\n";
        host.log.clear();
        host.progressSteps = 0;
        report_ = L"before";
        const auto type = static_cast<std::int16_t>(std::atoi(object.c_str()));
        const bool done = verb == "find" ? gblnFindChild(path_, fromUtf8(object), 5, report_, &host)
                          : verb == "list" ? gblnListTank(path_, report_, &host, type)
                                           : gblnTestTank(path_);
        EXPECT_EQ(host.liveDialogs, 0U);
        return (done ? " = true\n" : " = false\n") + body() +
               lines(host.logsProgressSteps ? host.log : errors());
    }

    std::string body() const {
        if (report_ == L"before") return {};
        const std::size_t names = report_.find(L"Name: ");
        if (report_.size() > 10'000)
            return std::to_string(report_.size() - names) + " characters\n";
        const std::string text = replaced(
            told(report_), {{"\\r\\n", "|"}, {kWhen, "@"}, {"||", "||\n"}, {"|Size", "|\nSize"}});
        return text.ends_with('\n') ? text : text + "\n";
    }

    static std::vector<std::wstring> parts(const std::string& object) {
        std::vector<std::wstring> parts;
        std::istringstream rest(object);
        for (std::string part; std::getline(rest, part, '|');) parts.push_back(fromUtf8(part));
        return parts;
    }

    static Lines each(const std::vector<std::wstring>& texts,
                      std::string (*tell)(const std::wstring&)) {
        Lines told;
        for (const std::wstring& text : texts) told.push_back(tell(text));
        return told;
    }

    // The text and the priority that it means, behind "none" where it is no number.
    static std::string priority(const std::wstring& text) {
        const std::string start = shown(text) + (isNumber(text) ? ": " : ": none ");
        try {
            return start + std::to_string(priorityOf(text));
        } catch (const RunTimeError& error) {
            return start + std::to_string(error.number()) + " " + shown(error.description());
        }
    }

    static std::string text(const std::wstring& text) { return "'" + shown(text) + "'"; }
    static std::string text(const char* bytes) { return bytes == nullptr ? "none" : bytes; }
    static std::string text(std::int32_t number) { return std::to_string(number); }

    static std::string safe(const std::wstring& name) {
        return text(name) + " " + text(safeName(name));
    }

    // What an extraction says and leaves in the folder.
    std::string extracted(const std::vector<std::wstring>& words) {
        const auto has = [&](std::wstring_view word) {
            return std::ranges::find(words, word) != words.end();
        };
        host.progressSteps = 0;
        fs::create_directory(files.native(L"out"));
        const Lines before = files.names();
        TankContents contents(path_, nullptr);
        Extraction wanted{files.path(L"out"), {}, !has(L"flat")};
        for (const std::wstring& word : words) {
            const TankContents::Numbers found = contents.at(word == L"all" ? L"" : word);
            wanted.numbers.insert(wanted.numbers.end(), found.begin(), found.end());
        }
        const ExtractOutcome outcome = extract(
            contents, wanted,
            [&](std::size_t) {
                return has(L"replace") ? Existing::replace
                       : has(L"skip")  ? Existing::skip
                                       : Existing::stop;
            },
            &host);
        std::string summary =
            replaced(this->told(summaryOf(outcome, wanted.folder)), {{"\\r\\n", "\n"}});
        Lines changed;
        for (const auto& entry : fs::recursive_directory_iterator(files.native(L"out"))) {
            const std::u8string name = fs::relative(entry, files.native()).u8string();
            std::string line(name.begin(), name.end());
            if (!entry.is_directory()) line += " = " + files.bytes(fromUtf8(line));
            if (left_.insert(line).second) changed.push_back(line);
        }
        std::ranges::sort(changed);
        EXPECT_EQ(files.names(), before) << "written outside the folder";
        return summary + "\n" + lines(changed);
    }

    // COLUMN|DESCENDING|FOLDER|FILTER
    std::string rows(std::vector<std::wstring> words) const {
        words.resize(4);
        const TankContents contents(path_, nullptr);
        const auto order = contents.sorted(static_cast<TankColumn>(std::stoi(words[0])),
                                           words[1] == L"1", nullptr);
        const auto found = contents.inFolder(contents.at(words[2]).at(0), words[3], order);
        std::string told;
        for (const std::uint32_t number : found) {
            for (std::size_t i = 0; i < 7; ++i) {
                told += shown(contents.text(number, static_cast<TankColumn>(i))) + "|";
            }
            told += "\n";
        }
        const TankTotals totals = contents.totals(found);
        const TankTotals all = contents.totals(0);
        for (const TankTotals& sum : {totals, all}) {
            told += shown(textOf(sum)) + "\n";
        }
        return told;
    }

    // What each wrapper gives for the first entry; 77 is where none gave anything.
    std::string facts(TankHandle tank) {
        constexpr ChildHandle kChild = 4097;
        ChildHandle second = 77;
        ChildHandle third = 77;
        const char* none = "stale";
        const char* opened = "stale";
        std::int32_t count = 77;
        Lines facts;
        const auto tell = [&](const auto&... values) { (facts.push_back(text(values)), ...); };
        // With the name cut, it would be that of another file.
        tell(gOpenTank(path_ + std::wstring(L"\0x", 2)));
        tell(glngGetChildCount(tank, kChild));
        tell(glngGetChild(tank, kChild, 1, second), second);
        tell(glngGetChild(tank, kChild, 2, third), third);
        tell(gstrGetChildName(tank, kChild));
        tell(gstrGetChildPath(tank, kChild));
        tell(gblnIsDirectory(tank, kChild));
        tell(glngGetChildSize(tank, kChild));
        tell(glngGetChildCompSize(tank, kChild));
        tell(glngGetChildCRC(tank, kChild));
        tell(gintGetChildFlags(tank, kChild));
        tell(gintGetChildFormat(tank, kChild));
        tell(gstrGetChildDataRAW(tank, kChild, count), count);
        tell(glngOpenChild(tank, 0, none), none);
        tell(glngOpenChild(tank, kChild, opened));
        tell(opened == nullptr ? 0 : opened[1]);
        tell(glngCloseChild(tank == -5 ? "data" : opened));
        tell(glngCloseTank(tank), tank);
        return lines(facts) + lines(errors());
    }

    // The data of each entry of the root.
    std::string data() {
        TankHandle tank = gOpenTank(path_);
        const ChildHandle root = library->GetRootDir(tank);
        std::string told;
        for (std::int32_t i = 0; i < glngGetChildCount(tank, root); ++i) {
            ChildHandle child = 0;
            std::int32_t count = 77;
            glngGetChild(tank, root, i, child);
            told += text(gstrGetChildDataRAW(tank, child, count));
            told += " " + text(count) + "\n" + lines(errors());
        }
        glngCloseTank(tank);
        return told;
    }

    // The `.gas` files with their data, and then that of one path, asked for twice.
    std::string gasFiles(const std::wstring& path) {
        Lines told;
        const auto tell = [&](const std::string& what, const auto& get) {
            try {
                told.push_back(what + get());
            } catch (const ArchiveFailure& failure) {
                told.push_back(what + "the archive fails: " + this->told(failure.description()));
            } catch (const RunTimeError& error) {
                told.push_back(what + "this fails: " + this->told(error.description()));
            }
        };
        const auto archives = makeArchives();
        gProgram().host.archives = archives.get();
        const auto read = [&](const std::wstring& one) {
            tell(this->told(one) + ": ", [&] { return archives->read(one); });
        };
        tell("", [&] {
            for (const std::wstring& one : *archives->files(path_)) read(one);
            return archives->knows(path_) ? "known" : "not known";
        });
        for (int i = 0; i < 2; ++i, archives->close()) read(path);
        gProgram().host.archives = nullptr;
        return lines(told) + lines(errors());
    }

    static std::string lines(const Lines& words) {
        std::string text;
        for (const std::string& word : words) text.append(word).append("\n");
        return text;
    }

    const std::wstring usual_ =
        filesystem::absolutePath(fromUtf8(KESTREL_TANK_STUBS "kestrel_stub_tank"));
    std::string archive_;
    std::set<std::string> left_;  // by extractions
    std::wstring name_;
    std::wstring path_;
    std::wstring report_;
};

TEST_F(Stories, EndAsTheyDid) {
    playStories(fs::absolute(KESTREL_SOURCES "/tests/tank/stories.txt"),
                [this](const std::string& line) { return play(line); });
}

}  // namespace
}  // namespace kestrel::test
