#include "privilege/Tracer.h"

#include "privilege/Phases.h"

#include <sched.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace privilege {

namespace {

constexpr int SYSCALL_STOP = SIGTRAP | 0x80;

/// The calls that budgets and failures name.
const std::map<unsigned long long, std::string> NAMES = {
    {SYS_openat, "openat"},
    {SYS_read, "read"},
    {SYS_close, "close"},
    {SYS_futex, "futex"},
    {SYS_fcntl, "fcntl"},
    {SYS_socket, "socket"},
    {SYS_rt_sigaction, "rt_sigaction"},
#ifdef SYS_newfstatat
    {SYS_newfstatat, "fstat"},
#endif
#ifdef SYS_fstat
    {SYS_fstat, "fstat"},
#endif
#ifdef SYS_open
    {SYS_open, "open"},
#endif
};

std::string nameOf(unsigned long long number) {
    const auto found = NAMES.find(number);
    return found == NAMES.end() ? '#' + std::to_string(number) : found->second;
}

/// Text of the traced process.
std::string readText(pid_t process, unsigned long long address) {
    char bytes[512] = {};
    iovec here = {bytes, sizeof(bytes) - 1};
    iovec there = {reinterpret_cast<void*>(address), sizeof(bytes) - 1};
    if (process_vm_readv(process, &here, 1, &there, 1, 0) < 0) {
        // The text may lie at the end of a mapping: up to the next page, then.
        constexpr unsigned long long PAGE = 4096;
        there.iov_len = std::min<std::size_t>(sizeof(bytes) - 1, PAGE - address % PAGE);
        process_vm_readv(process, &here, 1, &there, 1, 0);
    }
    return bytes;
}

class Tracing {
public:
    Tracing(pid_t process, Trace& trace) : mProcess(process), mTrace(trace) {}

    void run() {
        int status = 0;
        for (pid_t thread = waitpid(-1, &status, __WALL); thread > 0; thread = waitpid(-1, &status, __WALL)) {
            if (WIFEXITED(status) || WIFSIGNALED(status)) {
                if (thread == mProcess) {
                    mTrace.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
                }
                continue;
            }
            const int event = status >> 16;
            int signal = WSTOPSIG(status);
            if (signal == SYSCALL_STOP) {
                onCall(thread);
            }
            mTrace.programs += event == PTRACE_EVENT_EXEC ? 1 : 0;
            mTrace.processes += event == PTRACE_EVENT_FORK || event == PTRACE_EVENT_VFORK ? 1 : 0;
            if (signal == SYSCALL_STOP || event != 0 || signal == SIGSTOP) {
                signal = 0;  // not a signal of its own, or a new thread's first stop
            }
            ptrace(PTRACE_SYSCALL, thread, nullptr, signal);
        }
    }

private:
    void onCall(pid_t thread) {
        __ptrace_syscall_info call = {};
        if (ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof(call), &call) <= 0 ||
            call.op != PTRACE_SYSCALL_INFO_ENTRY) {
            return;
        }
        const std::string name = nameOf(call.entry.nr);
        if (name == "fcntl" && static_cast<int>(call.entry.args[0]) == MARKER) {
            mPhase = static_cast<int>(call.entry.args[2]);
            return;
        }
        ++(thread == mProcess ? mTrace.main : mTrace.others)[mPhase][name];
        if (name == "openat" || name == "open") {
            ++mTrace.opened[mPhase][readText(thread, call.entry.args[name == "openat" ? 1 : 0])];
        } else if (name == "socket") {
            mTrace.socketFamilies.insert(static_cast<int>(call.entry.args[0]));
        } else if (name == "rt_sigaction" && call.entry.args[1] != 0) {
            mTrace.handledSignals.insert(static_cast<int>(call.entry.args[0]));
        }
    }

    pid_t mProcess;
    Trace& mTrace;
    int mPhase = 0;
};

}  // namespace

bool traceProgram(const std::vector<std::string>& command, Trace& trace, std::string& reason) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            _exit(126);
        }
        raise(SIGSTOP);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    int status = 0;
    waitpid(process, &status, 0);
    constexpr long OPTIONS = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK |
                             PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
    __ptrace_syscall_info info = {};
    if (!WIFSTOPPED(status) || ptrace(PTRACE_SETOPTIONS, process, nullptr, OPTIONS) != 0 ||
        ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof(info), &info) <= 0) {
        reason = std::string("processes cannot be traced here: ") + std::strerror(errno);
        kill(process, SIGKILL);
        waitpid(process, &status, 0);
        return false;
    }
    ptrace(PTRACE_SYSCALL, process, nullptr, 0);
    Tracing(process, trace).run();
    return true;
}

}  // namespace privilege
