// Whole jobs of the program, beside the least that they could take: wall-clock times.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "services/program.h"
#include "tank/launcher.h"
#include "tank/reports.h"
#include "text/convert.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 2'000;

std::string gasText(int number) {
    std::string text;
    for (int i = 0; i < 40; ++i) {
        const std::string id = std::to_string(number) + "_" + std::to_string(i);
        text += "[t:template,n:thing_" + id + "]\r\n{\r\n\tdoc = \"Thing " + id +
                "\";\r\n\tspecializes = \"base\";\r\n\t[look]\r\n\t{\r\n\t\tmodel = \"m_thing_" +
                id + "\";\r\n\t\tscale = 1.25;\r\n\t}\r\n}\r\n";
    }
    return text;
}

std::string readPlain(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void writePlain(const fs::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

void convert(const fs::path& folder, std::int16_t options) {
    std::wstring name = folder.wstring();
    std::wstring summary;
    Progress* progress = nullptr;
    if (!gblnConvertFolder(name, summary, L"", options, L"", nullptr, progress)) std::abort();
}

class Jobs {
  public:
    explicit Jobs(fs::path folder) : folder_(std::move(folder)) {
        fs::remove_all(folder_);
        for (int i = 0; i < kFiles; ++i) {
            sources_.emplace_back("file" + std::to_string(i), gasText(i));
        }
        const fs::path first = freshFolder();
        convert(first, 0);
        for (const auto& [name, source] : sources_) {
            outputs_.push_back(readPlain(first / (name + ".tab")));
        }
    }
    ~Jobs() {
        gProgram().host.tank = nullptr;
        fs::remove_all(folder_);
    }

    void conversions() {
        const auto add = [this](const char* name, std::function<void(const fs::path&)> job) {
            addJob(name, [this, job](benchmark::State& state) {
                for (auto _ : state) {
                    state.PauseTiming();
                    const fs::path at = freshFolder();
                    state.ResumeTiming();
                    job(at);
                }
            });
        };
        const auto plain = [this](const fs::path& at) {
            for (std::size_t i = 0; i < sources_.size(); ++i) {
                readPlain(at / (sources_[i].first + ".gas"));
                writePlain(at / (sources_[i].first + ".tab"), outputs_[i]);
            }
        };
        add("reading the files and writing their texts, plain", plain);
        add("the same, until it is on the disk", [plain](const fs::path& at) {
            plain(at);
            ::sync();
        });
        add("conversion, a file each", [](const fs::path& at) { convert(at, 0); });
        add("conversion, a single file", [](const fs::path& at) { convert(at, kSingleFile); });
    }

    void listings(const fs::path& library) {
        fs::copy_file(library, folder_ / library.filename());
        tank_ = makeTankLibrary({folder_.wstring()});
        gProgram().host.tank = tank_.get();
        benchmark::RegisterBenchmark(
            "full list of an archive",
            [this](benchmark::State& state) {
                const fs::path archive = folder_ / "archive.dsres";
                writePlain(archive,
                           "tank\nfile|name=thing.gas|path=\\art|size=10|comp=8|crc=-5|repeat=" +
                               std::to_string(state.range(0)) + "\n");
                for (auto _ : state) {
                    std::wstring report;
                    gblnListTank(archive.wstring(), report, nullptr, kFullList);
                }
                state.SetComplexityN(state.range(0));
            })
            ->RangeMultiplier(2)
            ->Range(125'000, 1'000'000)
            ->Complexity(benchmark::oN)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }

    static void builder(const fs::path& program) {
        addJob("a builder's output", [program](benchmark::State& state) {
            std::size_t characters = 0;
            for (auto _ : state) {
                const std::unique_ptr<Launcher> launcher = makeLauncher();
                if (launcher->start(program.wstring() + L" -title flood", program.wstring()) !=
                    Launcher::kStarted) {
                    return state.SkipWithError("the builder does not start");
                }
                for (ProgramOutput output; !output.ended; characters += output.text.size()) {
                    output = launcher->poll();
                    if (output.text.empty()) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(1));
                    }
                }
            }
            state.SetItemsProcessed(static_cast<std::int64_t>(characters));
        });
    }

  private:
    static void addJob(const char* name, std::function<void(benchmark::State&)> job) {
        benchmark::RegisterBenchmark(name, std::move(job))
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->UseRealTime();
    }

    // With the sources, each time a new one: file systems are slow to make files where some
    // were just removed.
    fs::path freshFolder() {
        const fs::path made = folder_ / std::to_string(++count_);
        fs::create_directories(made);
        for (const auto& [name, bytes] : sources_) writePlain(made / (name + ".gas"), bytes);
        ::sync();
        return made;
    }

    fs::path folder_;
    int count_ = 0;
    std::vector<std::pair<std::string, std::string>> sources_;
    std::vector<std::string> outputs_;
    std::unique_ptr<TankLibrary> tank_;
};

}  // namespace
}  // namespace kestrel::bench

// kestrel_bench_jobs LIBRARY BUILDER [OPTION...]: the stand-ins for the archive library and
// the builder.
int main(int count, char** words) {
    benchmark::Initialize(&count, words);
    if (count != 3) return 2;
    kestrel::bench::Jobs jobs(std::filesystem::temp_directory_path() / "kestrel-bench-jobs");
    jobs.conversions();
    jobs.listings(words[1]);
    kestrel::bench::Jobs::builder(words[2]);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
