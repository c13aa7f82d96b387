// Runs the loader and the renderer beside other parsers on the same generated information.
// See README.md.
#include <malloc.h>
#include <sys/resource.h>

#include <cstdlib>
#include <fstream>
#include <functional>

#include "common.h"
#include "corpus.h"
#include "gas/load.h"
#include "parsers.h"
#include "text/render.h"

namespace kestrel::bench {
namespace {

constexpr std::size_t kSizes[] = {1, 10, 100};  // MB of `.gas`

// What the contenders of one size work on.
struct Input {
    std::filesystem::path folder;
    std::wstring gasFile;
    std::size_t gasBytes = 0;
    Records records;
    std::wstring rendered;  // their text
};

// What a run leaves behind; it is freed when the time has been taken.
using Result = std::shared_ptr<void>;

Result kept(auto value) {
    return std::make_shared<decltype(value)>(std::move(value));
}

struct Contender {
    std::string name;
    std::function<Result(const Input&)> run;
    bool givesRecords = false;  // a run leaves Records
};

Records load(const Input& input) {
    std::wstring file = input.gasFile;
    Records records;
    if (!gblnLoadGas(file, records, nullptr)) std::abort();
    return records;
}

template <class Parser>
Result tree(const Input& input) {
    return std::make_shared<Parser>(input.folder);
}

template <class Parser>
Result records(const Input& input) {
    Parser parser(input.folder);
    RecordBuilder builder(input.gasBytes);
    for (auto&& block : parser.blocks()) builder.addTemplate(std::forward<decltype(block)>(block));
    return kept(builder.take());
}

// "load" and "render" are the program's own.
std::vector<Contender> contenders() {
    return {
        {"load", [](const Input& input) { return kept(load(input)); }, true},
        {"simdjson into records", records<Simdjson>, true},
        {"pugixml into records", records<Pugixml>, true},
        {"RapidJSON into records", records<RapidJson>, true},
        {"libconfig++ into records", records<Libconfig>, true},
        {"simdjson's own tree", tree<SimdjsonTree>},
        {"pugixml's own tree", tree<Pugixml>},
        {"RapidJSON's own tree", tree<RapidJson>},
        {"libconfig++'s own tree", tree<Libconfig>},
        {"reading the file", [](const Input& input) { return kept(readFileBytes(input.gasFile)); }},
        {"render",
         [](const Input& input) {
             ProgressScope none(nullptr, nullptr, {});
             return kept(templateTexts(input.records, none));
         }},
        {"copying the wide text", [](const Input& input) { return kept(input.rendered); }},
    };
}

const Input& inputOf(std::size_t megabytes) {
    static const Folder folder;
    static std::map<std::size_t, Input> inputs;
    Input& input = inputs[megabytes];
    if (input.folder.empty()) {
        input.folder = folder.path / std::to_string(megabytes);
        Corpus().write(input.folder, megabytes * 1'000'000);
        input.gasFile = (input.folder / "corpus.gas").wstring();
        input.gasBytes = std::filesystem::file_size(input.gasFile);
        input.records = load(input);
        input.rendered = gstrMakeFileText(L"a.gas", input.records, nullptr, 0, nullptr);
    }
    return input;
}

std::string nameOf(const std::string& what, std::size_t megabytes) {
    return what + ", " + std::to_string(megabytes) + " MB";
}

void measure(benchmark::State& state, const Contender& contender, std::size_t megabytes) {
    const Input& input = inputOf(megabytes);
    Result result;
    for (auto _ : state) {
        state.PauseTiming();
        result.reset();
        malloc_trim(0);
        state.ResumeTiming();
        result = contender.run(input);
    }
    state.counters["MB/s"] = benchmark::Counter(static_cast<double>(input.gasBytes) * 1e-6,
                                                benchmark::Counter::kIsIterationInvariantRate);
}

// The most bytes that the process has had since it was made to forget.
double peakMemory(bool forget) {
    if (forget) std::ofstream("/proc/self/clear_refs") << "5";
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-union-access): the system's own.
    return 1024.0 * static_cast<double>(used.ru_maxrss);
}

// How long records take to be freed, with the memory that their load took at its peak.
void measureFree(benchmark::State& state, std::size_t megabytes) {
    const Input& input = inputOf(megabytes);
    malloc_trim(0);
    const double before = peakMemory(true);
    Records records = load(input);
    state.counters["peak"] = (peakMemory(false) - before) / static_cast<double>(input.gasBytes);
    for (auto _ : state) records = {};
}

// A text that a careless parser takes quadratic time for: `head`, then `unit` again and
// again, then `tail`.
void addShape(const std::string& name, std::string_view head, std::string_view unit,
              std::string_view tail = "") {
    const auto run = [=](benchmark::State& state) {
        std::string text(head);
        while (text.size() < static_cast<std::size_t>(state.range(0)) * 1'000'000) text += unit;
        text += tail;
        for (auto _ : state) benchmark::DoNotOptimize(readRecords(text, CodePage::utf8()));
        state.SetComplexityN(state.range(0));
    };
    benchmark::RegisterBenchmark(name.c_str(), run)
        ->RangeMultiplier(2)
        ->Range(1, 8)
        ->Complexity(benchmark::oN);
}

void addShapes() {
    addShape("an unknown header without end", "[", "a");
    addShape("an unknown header, half met again and again", "[", "[[[a", "]");
    addShape("one header with a name a part", "[x]\r\n[", "n:a,", "]");
    addShape("one value", "[t:template,n:x]\r\n{\r\nx = ", "lantern ", ";");
    addShape("sub-blocks in sub-blocks, 8 deep", "",
             "[t:template,n:x]\r\n{\r\n[a]\r\n{\r\n[b]\r\n{\r\n[c]\r\n{\r\n[d]\r\n{\r\n[e]\r\n{\r\n"
             "[f]\r\n{\r\n[g]\r\n{\r\n[h]\r\n{\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n}\r\n");
    for (const std::string_view unit :
         {"[", "]", ";", "=", "//", "\r\n", "\n", "\r", "\t", "[]", "lantern ", "x = 1; ",
          "// lantern\r\n", "}\r\n", "[a]\r\n{\r\n", "[party]\r\n{\r\n\tx = 1;\r\n}\r\n",
          "[t:template,n:x]\r\n{\r\n}\r\n"}) {
        std::string name;
        appendFilled(name, unit, {{'\r', "\\r"}, {'\n', "\\n"}, {'\t', "\\t"}});
        addShape("only `" + name + "`", "", unit);
        addShape("a block of `" + name + "`", "[t:template,n:x]\r\n{\r\n", unit);
    }
}

// Ends the program when one of them gives other records than the loader.
void checkRecords(const std::vector<Contender>& all) {
    const auto areSame = [](const GasTemplate& a, const GasTemplate& b) {
        return a.Name == b.Name && a.Kind == b.Kind && a.Properties == b.Properties;
    };
    const Input& input = inputOf(1);
    for (const Contender& contender : all) {
        if (!contender.givesRecords) continue;
        const auto given = std::static_pointer_cast<Records>(contender.run(input));
        if (std::ranges::equal(input.records, *given, areSame)) continue;
        std::fprintf(stderr, "%s: other records\n", contender.name.c_str());
        std::exit(1);
    }
}

void addContenders(const std::vector<Contender>& all) {
    for (const std::size_t size : kSizes) {
        for (const Contender& contender : all) {
            const std::string name = nameOf(contender.name, size);
            benchmark::RegisterBenchmark(name.c_str(), measure, contender, size);
        }
        addSingle(nameOf("free", size), 7, measureFree, size);
    }
}

void printGoals(const Report& report) {
    // Of each size.
    const auto values = [&](const std::string& name, const char* counter = "") {
        std::vector<double> all;
        for (const auto size : kSizes) all.push_back(report.of(nameOf(name, size) + counter));
        return all;
    };
    const auto printRatio = [&](const char* limit, const char* ours, const char* others) {
        std::vector<double> ratios = values(others);
        std::ranges::transform(ratios, values(ours), ratios.begin(), std::divides());
        Report::printGoal(std::string(ours) + " : " + others, limit, ratios);
    };
    std::printf("\n%-44s %10s %10s %10s %10s\n", "goal", "limit", "1 MB", "10 MB", "100 MB");
    printRatio(">= 1.0", "load", "simdjson into records");
    printRatio(">= 0.6", "load", "pugixml's own tree");
    printRatio(">= 6.0", "load", "libconfig++ into records");
    printRatio(">= 1.5", "render", "copying the wide text");
    for (const char* name : {"load", "render"}) {
        const std::vector<double> times = values(name);
        Report::printGoal(std::string(name) + ", exponent", "<= 1.05",
                          {std::log(times[2] / times[0]) / std::log(100)});
    }
    Report::printGoal("load, peak bytes a source byte", "<= 3.5", values("free", "peak"));
    Report::printGoal("freeing 100 MB, ms", "<= 10", {values("free")[2]});
}

}  // namespace
}  // namespace kestrel::bench

int main(int count, char** words) {
    using namespace kestrel::bench;
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words)) return 2;
    const std::vector<Contender> who = contenders();
    checkRecords(who);
    addContenders(who);
    addShapes();
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    printGoals(report);
    return 0;
}
