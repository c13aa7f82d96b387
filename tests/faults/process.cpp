#include "faults/process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace kestrel::test {

namespace {

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& changes) {
    std::vector<std::string> all = changes;
    for (char** entry = environ; *entry != nullptr; ++entry) all.emplace_back(*entry);
    return all;
}

}  // namespace

Process::Process(std::vector<std::string> words, const std::vector<std::string>& changes) {
    int input[2];
    int output[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::vector<std::string> environment = environmentWith(changes);
    const int error = posix_spawn(&process_, words.at(0).c_str(), &actions, nullptr,
                                  pointersTo(words).data(), pointersTo(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    input_ = input[1];
    output_ = output[0];
    if (error != 0) throw std::runtime_error("cannot start " + words[0]);
}

Process::~Process() {
    ::close(input_);
    ::close(output_);
    if (process_ < 0) return;
    kill();
    wait();
}

std::string Process::line() {
    std::string line;
    char c = 0;
    while (::read(output_, &c, 1) == 1 && c != '\n') line += c;
    return line;
}

void Process::goOn() {
    (void)!::write(input_, "\n", 1);
}

void Process::kill() const {
    ::kill(process_, SIGKILL);
}

int Process::wait() {
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace kestrel::test
