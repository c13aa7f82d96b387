#include "measure.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

namespace kestrel::bench {
namespace {

// A line of the process's status file, in bytes; negative without one.
double statusBytes(std::string_view key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key)) return std::strtod(line.c_str() + key.size(), nullptr) * 1024;
    }
    return -1;
}

// Lets the peak begin anew at what is in use now.
void resetPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

std::string readAll(int descriptor) {
    std::string text;
    char buffer[256];
    for (ssize_t got; (got = read(descriptor, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(got));
    }
    return text;
}

}  // namespace

double cpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

double timeOnce(const Contender& contender, Input& input) {
    if (contender.prepare != nullptr) contender.prepare(input);
    // Every run finds the heap in the same state, whoever ran before.
    malloc_trim(0);
    const double start = cpuSeconds();
    const Result result = contender.run(input);
    return cpuSeconds() - start;
}

std::optional<double> peakInChild(const Contender& contender, const std::filesystem::path& folder) {
    int ends[2];
    if (pipe(ends) != 0) return {};
    const std::string name(contender.name);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        execl("/proc/self/exe", "kestrel_bench", "--child", name.c_str(), "--data", folder.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    const std::string printed = readAll(ends[0]);
    close(ends[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) return {};
    return std::strtod(printed.c_str(), nullptr);
}

int runAsChild(const Contender& contender, const std::filesystem::path& folder) {
    Input input(folder);
    if (contender.prepare != nullptr) contender.prepare(input);
    resetPeak();
    const double before = statusBytes("VmRSS:");
    const Result result = contender.run(input);
    const double peak = statusBytes("VmHWM:");
    if (before < 0 || peak < before) return 1;
    std::printf("%.0f\n", peak - before);
    return 0;
}

}  // namespace kestrel::bench
