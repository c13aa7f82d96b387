#include <windows.h>

#include <array>
#include <atomic>
#include <string>

#include "system/filesystem.h"
#include "system/pipedchild.h"
#include "system/process_win32.h"
#include "system/systemerror.h"

namespace kestrel {
namespace {

constexpr std::wstring_view kStart = L"Cannot start";
constexpr DWORD kPipeSize = 1 << 20;
constexpr DWORD kEndWait = 100;  // milliseconds
constexpr SIZE_T kMostMemory = SIZE_T{1} << 30;

void check(bool done, std::wstring_view program) {
    if (!done) throwSystemError(static_cast<int>(GetLastError()), kStart, program);
}

// What this program reads from is the only kind of pipe that can be waited for.
void makePipe(std::wstring_view program, win32::Handle& ours, DWORD direction,
              win32::Handle& theirs, DWORD access) {
    static std::atomic<unsigned> number = 0;
    const std::wstring name = L"\\\\.\\pipe\\kestrel-" + std::to_wstring(GetCurrentProcessId()) +
                              L"-" + std::to_wstring(GetTickCount64()) + L"-" +
                              std::to_wstring(++number);
    ours = win32::Handle(CreateNamedPipeW(
        name.c_str(), direction | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeSize, kPipeSize, 0, nullptr));
    check(ours.isOpen(), program);
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    theirs =
        win32::Handle(CreateFileW(name.c_str(), access, 0, &inherited, OPEN_EXISTING, 0, nullptr));
    check(theirs.isOpen(), program);
}

// One without windows and children, of at most that much memory, which ends with this program.
win32::Handle makeJob(std::wstring_view program) {
    win32::Handle job(CreateJobObjectW(nullptr, nullptr));
    check(job.get() != nullptr, program);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_PROCESS_MEMORY |
        JOB_OBJECT_LIMIT_ACTIVE_PROCESS | JOB_OBJECT_LIMIT_DIE_ON_UNHANDLED_EXCEPTION;
    limits.BasicLimitInformation.ActiveProcessLimit = 1;
    limits.ProcessMemoryLimit = kMostMemory;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

}  // namespace

struct PipedChild::System {
    win32::Handle questions;
    win32::Handle answers;
    win32::Handle job;
    win32::Handle process;
    win32::Handle came;  // something can be read
    win32::Handle sent;
    OVERLAPPED reading{};
    bool pending = false;
    std::array<char, 1 << 17> bytes{};
};

PipedChild::PipedChild(const std::wstring& program, const std::vector<std::wstring>& words)
    : system_(std::make_unique<System>()) {
    win32::Handle input;
    win32::Handle output;
    makePipe(program, system_->questions, PIPE_ACCESS_OUTBOUND, input, GENERIC_READ);
    makePipe(program, system_->answers, PIPE_ACCESS_INBOUND, output, GENERIC_WRITE);
    system_->job = makeJob(program);
    system_->came = win32::Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    system_->sent = win32::Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::wstring line = L'"' + program + L'"';
    for (const std::wstring& word : words) line.append(L" \"").append(word).append(L"\"");
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = output.get();
    system_->process =
        win32::Handle(win32::createProcess(program, line, startup, true, CREATE_NO_WINDOW));
    AssignProcessToJobObject(system_->job.get(), system_->process.get());
}

PipedChild::~PipedChild() {
    end();
}

bool PipedChild::send(std::string_view bytes) {
    OVERLAPPED writing{};
    writing.hEvent = system_->sent.get();
    DWORD count = 0;
    if (!WriteFile(system_->questions.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                   nullptr, &writing) &&
        GetLastError() != ERROR_IO_PENDING) {
        return false;
    }
    if (WaitForSingleObject(writing.hEvent, 1000) != WAIT_OBJECT_0) {
        CancelIo(system_->questions.get());
    }
    return GetOverlappedResult(system_->questions.get(), &writing, &count, TRUE) &&
           count == bytes.size();
}

std::optional<std::string> PipedChild::receive(std::chrono::milliseconds wait) {
    System& own = *system_;
    if (!own.pending) {
        own.reading = {};
        own.reading.hEvent = own.came.get();
        const bool begun = ReadFile(own.answers.get(), own.bytes.data(),
                                    static_cast<DWORD>(own.bytes.size()), nullptr, &own.reading);
        if (!begun && GetLastError() != ERROR_IO_PENDING) return std::nullopt;
        own.pending = true;
    }
    if (WaitForSingleObject(own.came.get(), static_cast<DWORD>(wait.count())) != WAIT_OBJECT_0) {
        return std::string();
    }
    DWORD count = 0;
    own.pending = false;
    if (!GetOverlappedResult(own.answers.get(), &own.reading, &count, TRUE)) return std::nullopt;
    return std::string(own.bytes.data(), count);
}

std::wstring PipedChild::end() {
    System& own = *system_;
    if (!own.process.isOpen()) return {};
    if (own.pending) {
        DWORD count = 0;
        CancelIo(own.answers.get());
        GetOverlappedResult(own.answers.get(), &own.reading, &count, TRUE);
        own.pending = false;
    }
    // What has closed its output by itself is about to end: how it does is told.
    DWORD waiting = 0;
    const bool closed = !PeekNamedPipe(own.answers.get(), nullptr, 0, nullptr, &waiting, nullptr);
    if (closed) WaitForSingleObject(own.process.get(), kEndWait);
    TerminateJobObject(own.job.get(), 1);
    TerminateProcess(own.process.get(), 1);
    WaitForSingleObject(own.process.get(), kEndWait);
    DWORD code = 0;
    GetExitCodeProcess(own.process.get(), &code);
    own.process = win32::Handle();
    return L"exit code " + std::to_wstring(code);
}

}  // namespace kestrel
