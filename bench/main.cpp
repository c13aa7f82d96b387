// Runs the loader and the renderer beside other parsers on the same generated
// information. See README.md.
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <string>

#include "check.h"
#include "contenders.h"
#include "corpus.h"
#include "measure.h"
#include "report.h"
#include "shapes.h"

namespace kestrel::bench {
namespace {

namespace fs = std::filesystem;

struct Options {
    std::vector<std::size_t> sizes = {1, 10, 100};  // MB of `.gas`
    std::vector<std::string> only;                  // names of contenders; empty: all
    std::size_t runs = 0;                           // 0: by the size
    bool shapes = true;
    bool memory = true;
    std::string out;
    std::string data;
    std::string child;
};

std::vector<std::string> splitCommas(std::string_view text) {
    std::vector<std::string> pieces;
    while (true) {
        const std::size_t comma = text.find(',');
        pieces.emplace_back(text.substr(0, comma));
        if (comma == text.npos) return pieces;
        text.remove_prefix(comma + 1);
    }
}

std::size_t numberOf(std::string_view text) {
    std::size_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// False when the option is not known or makes no sense.
bool takeOption(Options& options, std::string_view name, std::string_view value) {
    if (name == "--size" || name == "--sizes") {
        options.sizes.clear();
        for (const std::string& size : splitCommas(value)) options.sizes.push_back(numberOf(size));
        return std::ranges::count(options.sizes, 0U) == 0;
    }
    if (name == "--only") {
        options.only = splitCommas(value);
        options.shapes = options.memory = false;
        return std::ranges::all_of(options.only, findContender);
    }
    if (name == "--runs") return (options.runs = numberOf(value)) > 0;
    if (name == "--shapes") return (options.shapes = value == "yes") || value == "no";
    if (name == "--memory") return (options.memory = value == "yes") || value == "no";
    if (name == "--out") options.out = value;
    if (name == "--data") options.data = value;
    if (name == "--child") options.child = value;
    return name == "--out" || name == "--data" || name == "--child";
}

bool takeOptions(Options& options, int count, char** arguments) {
    for (int i = 1; i < count; i += 2) {
        if (i + 1 == count || !takeOption(options, arguments[i], arguments[i + 1])) return false;
    }
    return true;
}

int usage() {
    std::fputs(
        "kestrel_bench [--sizes 1,10,100] [--only NAME,...] [--runs N] [--memory yes|no]\n"
        "              [--shapes yes|no] [--out TABLE.md] [--data FOLDER]\n"
        "With --only, memory and shapes are left out unless they are asked for. Names:",
        stderr);
    for (const Contender& contender : contenders()) {
        std::fprintf(stderr, " %s", std::string(contender.name).c_str());
    }
    std::fputs("\n", stderr);
    return 2;
}

std::vector<const Contender*> chosen(const Options& options) {
    std::vector<const Contender*> result;
    for (const Contender& contender : contenders()) {
        if (options.only.empty() || std::ranges::count(options.only, contender.name) > 0) {
            result.push_back(&contender);
        }
    }
    return result;
}

std::size_t runsFor(std::size_t size) {
    if (size <= 1) return 25;
    return size <= 10 ? 15 : 7;
}

// All contenders take turns, so that a slow moment of the machine meets all; each
// round begins with another one, since what follows a large one pays for it.
SizeResult measureSize(const Options& options, std::size_t size, const fs::path& folder) {
    writeCorpus(folder, size * 1'000'000);
    SizeResult result;
    result.size = size;
    {
        Input input(folder);
        result.megabytes = static_cast<double>(input.gasBytes()) * 1e-6;
        const std::size_t runs = options.runs > 0 ? options.runs : runsFor(size);
        std::vector<const Contender*> turns = chosen(options);
        for (std::size_t run = 0; run < runs; ++run) {
            for (const Contender* contender : turns) {
                result.seconds[contender->name].push_back(timeOnce(*contender, input));
            }
            std::ranges::rotate(turns, turns.begin() + 1);
        }
    }
    if (!options.memory) return result;
    for (const Contender* contender : chosen(options)) {
        if (const auto peak = peakInChild(*contender, folder)) {
            result.peaks[contender->name] = *peak;
        }
    }
    return result;
}

bool checkRecords(const fs::path& folder) {
    writeCorpus(folder, 1'000'000);
    Input input(folder);
    return recordsAgree(input);
}

int runAll(const Options& options, const fs::path& folder) {
    if (!checkRecords(folder)) return 1;
    std::vector<SizeResult> results;
    for (const std::size_t size : options.sizes) {
        std::fprintf(stderr, "%zu MB ...\n", size);
        results.push_back(measureSize(options, size, folder));
    }
    std::string text = report(results);
    if (options.shapes) {
        std::fputs("texts to choke on ...\n", stderr);
        text += "\n" + measureShapes(folder);
    }
    std::fputs(text.c_str(), stdout);
    if (!options.out.empty()) std::ofstream(options.out, std::ios::binary) << text;
    return 0;
}

int run(const Options& options) {
    if (!options.child.empty()) {
        const Contender* contender = findContender(options.child);
        return contender == nullptr ? usage() : runAsChild(*contender, options.data);
    }
    const fs::path parent =
        options.data.empty() ? fs::temp_directory_path() : fs::path(options.data);
    const fs::path folder = parent / ("kestrel-bench-" + std::to_string(getpid()));
    fs::create_directories(folder);
    const int status = runAll(options, folder);
    fs::remove_all(folder);
    return status;
}

}  // namespace
}  // namespace kestrel::bench

int main(int count, char** arguments) {
    kestrel::bench::Options options;
    if (!kestrel::bench::takeOptions(options, count, arguments)) return kestrel::bench::usage();
    return kestrel::bench::run(options);
}
