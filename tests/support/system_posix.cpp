#include "support/system.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "services/bytes.h"

namespace kestrel::test {

namespace {

void setVariable(const char* name, const std::filesystem::path& value) {
    if (value.empty()) {
        ::unsetenv(name);
    } else {
        ::setenv(name, value.c_str(), 1);
    }
}

}  // namespace

void setSettingsFolder(const std::filesystem::path& folder) {
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) setVariable(name, folder);
}

void setTemporaryFolder(const std::filesystem::path& folder) {
    setVariable("TMPDIR", folder);
    setVariable("XDG_CACHE_HOME", folder);
}

int runProgram(const std::filesystem::path& program, const std::vector<std::wstring>& words,
               const std::filesystem::path& out, const std::filesystem::path& err) {
    std::vector<std::string> texts{program.string()};
    for (const std::wstring& word : words) texts.push_back(toUtf8(word));
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out.c_str(), kFlags, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, err.c_str(), kFlags, 0600);
    pid_t process = 0;
    int status = 0;
    const bool started =
        posix_spawn(&process, pointers[0], &files, nullptr, pointers.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&files);
    const bool ended = started && ::waitpid(process, &status, 0) == process;
    return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace kestrel::test
