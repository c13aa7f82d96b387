#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include "services/errors.h"
#include "tank/archives.h"
#include "tank/build.h"

namespace kestrel {
namespace {

using test::Lines;

// What headings tell after the name.
const char* const kWhen = "Time: 10:20:30|Date: Friday, 1 March 2002||";

// The stories of stories.txt, which tells what their words mean.
class Stories : public test::Archives {
  protected:
    std::string answer(const std::string& verb, const std::string& object) {
        if (verb == "calls") return "\n" + calls();
        if (verb == "data") return "\n" + data();
        if (verb == "facts")
            return "\n" + facts(object.empty() ? gOpenTank(path) : std::stoi(object));
        if (verb == "priorities") return "\n" + lines(each(parts(object), priority));
        if (verb == "options") return " = " + text(joinOptions(parts(object))) + "\n";
        if (verb == "words") return "\n" + lines(each(optionWords(fromUtf8(object)), text));
        if (set(verb, object)) return "\n";
        host.log.clear();
        host.progressSteps = 0;
        report = L"before";
        const auto type = static_cast<std::int16_t>(std::atoi(object.c_str()));
        const bool done = verb == "find"   ? gblnFindChild(path, fromUtf8(object), 5, report, &host)
                          : verb == "test" ? gblnTestTank(path)
                                           : gblnListTank(path, report, &host, type);
        EXPECT_EQ(host.liveDialogs, 0U);
        return (done ? " = true\n" : " = false\n") + body() +
               lines(host.logsProgressSteps ? host.log : errors());
    }

    bool set(const std::string& verb, const std::string& object) {
        const std::map<std::string, std::function<void()>> settings{
            {"cancel", [&] { host.cancelAt = std::stoul(object); }},
            {"close", [&] { path.clear(); }},
            {"lose", [&] { use({files.path()}); }},
            {"strip", [] { gProgram().host.progress = nullptr; }},
            {"unplug", [] { gProgram().host.tank = nullptr; }},
            {"watch", [&] { host.logsProgressSteps = true; }},
        };
        const auto found = settings.find(verb);
        if (found != settings.end()) found->second();
        return found != settings.end();
    }

    void begin(std::string& archive) {
        archive.clear();
        host.cancelAt = std::string::npos;
        host.logsProgressSteps = false;
    }

    std::string body() const {
        if (report == L"before") return {};
        const std::size_t names = report.find(L"Name: ");
        if (report.size() > 10'000) return std::to_string(report.size() - names) + " characters\n";
        const std::string text = replaced(
            told(report), {{"\\r\\n", "|"}, {kWhen, "@"}, {"||", "||\n"}, {"|Size", "|\nSize"}});
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

    // The priority that the text means, behind "none" where it is no number.
    static std::string priority(const std::wstring& text) {
        const std::string start = isNumber(text) ? "" : "none ";
        try {
            return start + std::to_string(priorityOf(text));
        } catch (const RunTimeError& error) {
            return start + std::to_string(error.number()) + " " + test::shown(error.description());
        }
    }

    static std::string text(const std::wstring& text) { return "'" + test::shown(text) + "'"; }
    static std::string text(const char* bytes) { return bytes == nullptr ? "none" : bytes; }
    static std::string text(std::int32_t number) { return std::to_string(number); }

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
        TankHandle tank = gOpenTank(path);
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

    std::string calls() const {
        Lines calls;
        std::ifstream log(files.native(L"a.dsres.log"));
        for (std::string line; std::getline(log, line);) calls.push_back(line);
        files.put(L"a.dsres.log", "");
        return lines(calls);
    }

    // `words` in lines that are not too long.
    static std::string lines(const Lines& words) {
        std::string text;
        std::size_t begin = 0;
        for (const std::string& word : words) {
            if (text.size() + word.size() > begin + 90) begin = (text += '\n').size();
            text += word + "; ";
        }
        return text.empty() ? text : replaced(text + "\n", {{"; \n", ";\n"}});
    }

    std::wstring path = files.path(L"a.dsres");
    std::wstring report;
};

TEST_F(Stories, EndAsTheyDid) {
    const std::string folder = KESTREL_STORIES;
    std::ifstream stories(folder + "stories.txt", std::ios::binary);
    std::string told;
    std::string archive;
    for (std::string line; std::getline(stories, line);) {
        if (line.starts_with("tank")) begin(archive);
        if (line.starts_with("> ")) {
            put(narrow(fromUtf8(archive)));
            std::istringstream words(line.substr(2));
            std::string verb;
            std::string object;
            std::getline(words, verb, ' ');
            std::getline(words, object);
            told += line + answer(verb, object);
        } else if (!line.starts_with('#')) {
            archive += line + "\n";
            told += line + "\n";
        }
    }
    const std::string name = folder + "golden/stories.txt";
    if (std::getenv("KESTREL_WRITE") != nullptr) std::ofstream(name, std::ios::binary) << told;
    std::ifstream golden(name, std::ios::binary);
    EXPECT_EQ(told, std::string(std::istreambuf_iterator<char>(golden), {}));
}

}  // namespace
}  // namespace kestrel
