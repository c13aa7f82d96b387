// Whole jobs of the program, beside the least that they could take.

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "gas/load.h"
#include "measure.h"
#include "services/files.h"
#include "services/program.h"
#include "table.h"
#include "tank/launcher.h"
#include "tank/reports.h"
#include "text/convert.h"
#include "text/render.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kRuns = 5;
constexpr int kFiles = 2'000;

using Rows = std::vector<std::vector<std::string>>;

// The median of the wall-clock seconds of `job`; `before` is not timed.
double seconds(const std::function<void()>& job, const std::function<void()>& before = {}) {
    std::vector<double> times;
    for (int run = 0; run < kRuns; ++run) {
        if (before) before();
        const auto start = std::chrono::steady_clock::now();
        job();
        times.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return median(times);
}

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

// The names of the folder's files that end in `extension`.
std::vector<fs::path> filesOf(const fs::path& folder, const char* extension) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == extension) files.push_back(entry.path());
    }
    return files;
}

// A new folder beside `folder` with its sources, each time: file systems are slow
// to make files where some were just removed.
class FreshFolders {
  public:
    explicit FreshFolders(fs::path folder) : folder_(std::move(folder)) {}

    void next() {
        current_ = folder_.string() + std::to_string(++count_);
        fs::create_directory(current_);
        for (const fs::path& file : filesOf(folder_, ".gas")) {
            fs::copy_file(file, current_ / file.filename());
        }
        ::sync();
    }
    const fs::path& current() const { return current_; }

  private:
    fs::path folder_;
    fs::path current_;
    int count_ = 0;
};

bool convert(const fs::path& folder, std::int16_t options) {
    std::wstring name = folder.wstring();
    std::wstring summary;
    Progress* progress = nullptr;
    return gblnConvertFolder(name, summary, L"", options, L"", nullptr, progress);
}

// Load, render and write each file, one after the other, as the conversion must.
void stepByStep(const fs::path& folder) {
    for (const fs::path& file : filesOf(folder, ".gas")) {
        std::wstring path = file.wstring();
        std::vector<GasTemplate> templates;
        gblnLoadGas(path, templates, nullptr);
        const std::wstring text = gstrMakeFileText(path, templates, nullptr, 0, nullptr);
        writeFile(fs::path(file).replace_extension(".tab").wstring(), text);
    }
}

void measureConversion(const fs::path& folder, Rows& rows) {
    for (int i = 0; i < kFiles; ++i) {
        writePlain(folder / ("file" + std::to_string(i) + ".gas"), gasText(i));
    }
    FreshFolders folders(folder);
    folders.next();
    convert(folders.current(), 0);
    std::vector<std::pair<fs::path, std::string>> outputs;
    for (const fs::path& file : filesOf(folders.current(), ".tab")) {
        outputs.emplace_back(file.filename(), readPlain(file));
    }
    double plain = 0;
    const auto add = [&](const char* name, const std::function<void(const fs::path&)>& job) {
        const double time = seconds([&] { job(folders.current()); }, [&] { folders.next(); });
        if (plain == 0) plain = time;
        rows.push_back({name, fixed(time, 2), fixed(time / plain, 2)});
    };
    add("reading the files and writing their texts, plain", [&](const fs::path& at) {
        for (const fs::path& file : filesOf(at, ".gas")) readPlain(file);
        for (const auto& [name, bytes] : outputs) writePlain(at / name, bytes);
    });
    add("the same, until it is on the disk", [&](const fs::path& at) {
        for (const fs::path& file : filesOf(at, ".gas")) readPlain(file);
        for (const auto& [name, bytes] : outputs) writePlain(at / name, bytes);
        ::sync();
    });
    add("load, render, write, each file by itself", stepByStep);
    add("conversion, a file each", [](const fs::path& at) { convert(at, 0); });
    add("conversion, a single file", [](const fs::path& at) { convert(at, kSingleFile); });
}

void measureListing(const fs::path& folder, const fs::path& library, Rows& rows) {
    fs::copy_file(library, folder / library.filename());
    const std::unique_ptr<TankLibrary> tank = makeTankLibrary({folder.wstring()});
    gProgram().host.tank = tank.get();
    double first = 0;
    for (const int entries : {125'000, 250'000, 500'000, 1'000'000}) {
        const fs::path archive = folder / "archive.dsres";
        writePlain(archive, "tank\nfile|name=thing.gas|path=\\art|size=10|comp=8|crc=-5|repeat=" +
                                std::to_string(entries) + "\n");
        std::wstring report;
        const double time =
            seconds([&] { gblnListTank(archive.wstring(), report, nullptr, kFullList); });
        if (first == 0) first = time;
        rows.push_back({"full list of " + std::to_string(entries) + " entries", fixed(time, 2),
                        fixed(time / first, 2)});
    }
    gProgram().host.tank = nullptr;
}

void measureBuilder(const fs::path& builder, Rows& rows) {
    std::size_t characters = 0;
    const double time = seconds([&] {
        characters = 0;
        const std::unique_ptr<Launcher> launcher = makeLauncher();
        if (launcher->start(builder.wstring() + L" -title flood", builder.wstring()) !=
            Launcher::kStarted) {
            std::fprintf(stderr, "the builder does not start\n");
            std::exit(1);
        }
        for (ProgramOutput output; !output.ended; characters += output.text.size()) {
            output = launcher->poll();
            if (output.text.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    rows.push_back({"builder's output, " + fixed(static_cast<double>(characters) / 1e6, 1) +
                        " million characters",
                    fixed(time, 2), ""});
}

}  // namespace
}  // namespace kestrel::bench

// kestrel_bench_jobs LIBRARY BUILDER: the stand-ins for the archive library and
// the builder.
int main(int count, char** words) {
    using namespace kestrel::bench;
    if (count != 3) return 2;
    const fs::path folder = fs::temp_directory_path() / "kestrel-bench-jobs";
    fs::remove_all(folder);
    fs::create_directories(folder / "files");
    fs::create_directories(folder / "tank");
    Rows rows{{"Job", "seconds", ": first of its kind"}};
    measureConversion(folder / "files", rows);
    measureListing(folder / "tank", words[1], rows);
    measureBuilder(words[2], rows);
    fs::remove_all(folder);
    std::fputs(markdown(rows).c_str(), stdout);
    return 0;
}
