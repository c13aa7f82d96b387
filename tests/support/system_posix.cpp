#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "base/bytes.h"
#include "support/system.h"

namespace kestrel::test {

namespace {

void setVariable(const char* name, const std::filesystem::path& value) {
    value.empty() ? ::unsetenv(name) : ::setenv(name, value.c_str(), 1);
}

}  // namespace

void setSettingsFolder(const std::filesystem::path& folder) {
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) setVariable(name, folder);
}

void setTemporaryFolder(const std::filesystem::path& folder) {
    for (const char* name : {"TMPDIR", "XDG_CACHE_HOME"}) setVariable(name, folder);
}

int runProgram(const std::filesystem::path& program, const std::vector<std::wstring>& words,
               const std::filesystem::path& out, const std::filesystem::path& err) {
    std::vector<std::string> texts{program.string()};
    for (const std::wstring& word : words) texts.push_back(toUtf8(word));
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    const pid_t process = ::fork();
    if (process == 0) {
        ::dup2(::creat(out.c_str(), 0600), STDOUT_FILENO);
        ::dup2(::creat(err.c_str(), 0600), STDERR_FILENO);
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    int status = 0;
    const bool ended = ::waitpid(process, &status, 0) == process;
    return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace kestrel::test
