// Whole jobs of the program, beside the least that they could take: wall-clock times.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <thread>

#include "common.h"
#include "services/program.h"
#include "tank/launcher.h"
#include "tank/reports.h"
#include "text/convert.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 2'000;
constexpr std::string_view kTemplate =
    "[t:template,n:thing_#]\r\n{\r\n\tdoc = \"Thing #\";\r\n\tspecializes = \"base\";\r\n"
    "\t[look]\r\n\t{\r\n\t\tmodel = \"m_thing_#\";\r\n\t\tscale = 1.25;\r\n\t}\r\n}\r\n";

constexpr const char* kPlain = "reading the files and writing their texts, plain";

std::string readPlain(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void writePlain(const fs::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

// A folder with the sources, each time a new one: file systems are slow to make files where
// some were just removed.
fs::path freshFolder(const fs::path& parent) {
    static int count = 0;
    fs::path made = parent / std::to_string(++count);
    fs::create_directories(made);
    for (long i = 0; i < kFiles; ++i) {
        writePlain(made / ("file" + std::to_string(i) + ".gas"), numbered(kTemplate, 40, i * 40));
    }
    ::sync();
    return made;
}

void convert(const fs::path& folder, std::int16_t options) {
    std::wstring name = folder.wstring();
    std::wstring summary;
    Progress* progress = nullptr;
    if (!gblnConvertFolder(name, summary, L"", options, L"", nullptr, progress)) std::abort();
}

void addConversions(const fs::path& parent) {
    const auto add = [parent](const char* name, const std::function<void(const fs::path&)>& job) {
        const auto run = [parent, job](benchmark::State& state) {
            const fs::path folder = freshFolder(parent);
            for (auto _ : state) job(folder);
        };
        addSingle(name, 5, run)->UseRealTime();
    };
    const fs::path first = freshFolder(parent);
    convert(first, 0);
    const auto texts = std::make_shared<std::map<fs::path, std::string>>();
    for (const auto& file : fs::directory_iterator(first)) {
        const fs::path name = file.path().filename();
        if (name.extension() == ".tab") texts->emplace(name, readPlain(file));
    }
    const auto plain = [texts](const fs::path& folder) {
        for (const auto& [name, text] : *texts) {
            readPlain((folder / name).replace_extension(".gas"));
            writePlain(folder / name, text);
        }
    };
    add(kPlain, plain);
    add("the same, until it is on the disk", [plain](const fs::path& folder) {
        plain(folder);
        ::sync();
    });
    add("conversion, a file each", [](const fs::path& folder) { convert(folder, 0); });
    add("conversion, a single file", [](const fs::path& folder) { convert(folder, kSingleFile); });
}

void listArchive(benchmark::State& state, const fs::path& folder) {
    const fs::path archive = folder / "archive.dsres";
    writePlain(archive, "tank\nfile|name=thing.gas|path=\\art|size=10|comp=8|crc=-5|repeat=" +
                            std::to_string(state.range(0)) + "\n");
    for (auto _ : state) {
        std::wstring report;
        gblnListTank(archive.wstring(), report, nullptr, kFullList);
    }
    state.SetComplexityN(state.range(0));
}

void readBuilder(benchmark::State& state, const fs::path& folder) {
    const std::wstring program = L"" KESTREL_STUB_BUILDER;
    const std::vector<std::wstring> words{L"-title", L"flood", L"-out",
                                          (folder / "out.dsres").wstring()};
    std::size_t characters = 0;
    for (auto _ : state) {
        const std::unique_ptr<Launcher> launcher = makeLauncher();
        if (launcher->start(program, program, words) != Launcher::kStarted) std::abort();
        LogReader reader(launcher->log());
        for (std::size_t size = 1; size > 0 || !launcher->log()->end; characters += size) {
            const bool more = launcher->poll();
            size = reader.next().text.size();
            if (!more && size == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(characters));
}

}  // namespace
}  // namespace kestrel::bench

// NOLINTNEXTLINE(bugprone-exception-escape): what goes wrong ends the run.
int main(int count, char** words) {
    using namespace kestrel::bench;
    benchmark::Initialize(&count, words);
    const Folder folder;
    addConversions(folder.path);
    const fs::path library = KESTREL_STUB_TANK;
    fs::copy_file(library, folder.path / library.filename());
    const auto tank = kestrel::makeTankLibrary({folder.path.wstring()}, L"" KESTREL_TANK_HOST);
    kestrel::gProgram().host.tank = tank.get();
    benchmark::RegisterBenchmark("full list of an archive", listArchive, folder.path)
        ->RangeMultiplier(2)
        ->Range(125'000, 1'000'000)
        ->Complexity(benchmark::oN)
        ->UseRealTime();
    addSingle("a builder's output", 5, readBuilder, folder.path)->UseRealTime();
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    std::printf("\n%-44s %10s %10s %10s\n", "goal", "limit", "file each", "single");
    const double plain = report.of(kPlain);
    Report::printGoal("conversion : reading and writing, plain", "<= 1.5",
                      {report.of("conversion, a file each") / plain,
                       report.of("conversion, a single file") / plain});
    return 0;
}
