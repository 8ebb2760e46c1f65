// The process that the tests of faults are hard on: an application that draws frames with the overlay and
// meanwhile does what it is told, a line a command on standard input. Its answers are lines on standard
// output.
//   fault_host APIS PACE    APIS: numbers of the layers' APIs, such as 0,1; PACE: microseconds between frames

#include "core/SysPropWatcher.h"
#include "faults/Application.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

// The process forks with threads running, and ends without waiting for them.
extern "C" const char* __tsan_default_options() {
    return "die_after_fork=0:report_thread_leaks=0:atexit_sleep_ms=200";
}

namespace {

using faults::Application;

/// Outlives main(), so that its end can be that of the statics.
std::unique_ptr<Application>& application() {
    static std::unique_ptr<Application> instance;
    return instance;
}

std::set<pid_t> children;
int failedChildren = 0;

void say(std::string line) {
    line += '\n';
    if (write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        _exit(3);
    }
}

/// What a program finds that a process with the overlay executes: only the three standard files.
int countForeignFiles() {
    int count = 0;
    for (int i = 3; i < 256; ++i) {
        count += fcntl(i, F_GETFD) >= 0 ? 1 : 0;
    }
    return count;
}

void startChild(const std::string& kind) {
    static char option[] = "--count-files";
    char* const program = std::getenv("FAULT_HOST");
    char* const arguments[] = {program, option, nullptr};
    pid_t child = 0;
    if (kind == "spawn") {  // without fork(), and so without anything that is done for a forked child
        child = posix_spawn(&child, program, nullptr, nullptr, arguments, environ) == 0 ? child : -1;
    } else {
        child = fork();
    }
    if (child != 0) {
        if (child < 0) {
            ++failedChildren;
        } else {
            children.insert(child);
        }
        return;
    }
    alarm(60);
    if (kind == "exec") {
        execv(program, arguments);
        _exit(4);
    }
    if (kind == "exit") {
        std::exit(0);
    }
    for (int i = 0; i < 50; ++i) {
        application()->frame();
    }
    _exit(application()->isWhole() ? 0 : 5);
}

void lookAfterChildren() {
    for (auto child = children.begin(); child != children.end();) {
        int status = 0;
        if (waitpid(*child, &status, WNOHANG) == *child) {
            failedChildren += status == 0 ? 0 : 1;
            child = children.erase(child);
        } else {
            ++child;
        }
    }
}

/// Ends the process. The frames that a dump was promised by now are told before.
int endAs(const std::string& kind) {
    if (kind == "thread") {
        // The thread that draws does not stop for it, and its layers stay.
        Application* const drawing = application().release();
        std::thread([drawing] {
            say("end" + drawing->dumps());
            std::exit(0);
        }).detach();
        for (;;) {
            drawing->frame();
            // Faster than any screen, but not so fast that frames of the dump have to be left out.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    say("end" + application()->dumps());
    if (kind == "exit") {
        std::exit(0);
    }
    if (kind == "quick_exit") {
        std::quick_exit(0);
    }
    if (kind == "_exit") {
        _exit(0);
    }
    application().reset();
    return 0;
}

/// The command lines that have arrived; false when there will be no more.
bool readCommands(std::vector<std::string>& lines) {
    static std::string text;
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    while (poll(&input, 1, 0) > 0) {
        char bytes[512];
        const ssize_t size = read(STDIN_FILENO, bytes, sizeof(bytes));
        if (size <= 0) {
            return false;
        }
        text.append(bytes, static_cast<std::size_t>(size));
    }
    for (std::size_t newline = text.find('\n'); newline != std::string::npos; newline = text.find('\n')) {
        lines.push_back(text.substr(0, newline));
        text.erase(0, newline + 1);
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string(argv[1]) == "--count-files") {
        return countForeignFiles();
    }
    if (argc != 3) {
        return 2;
    }
    std::vector<int> apis;
    std::istringstream numbers(argv[1]);
    for (std::string number; std::getline(numbers, number, ',');) {
        apis.push_back(std::atoi(number.c_str()));
    }
    std::chrono::microseconds pace(std::atoi(argv[2]));

    // The library would wait a second before it looks for its first publication; tests are in a hurry.
    SysPropWatcher::init("debug.kordanix.settingsgeneration", std::chrono::milliseconds(1));
    application() = std::make_unique<Application>(apis);
    while (true) {
        application()->frame();
        lookAfterChildren();
        std::vector<std::string> lines;
        if (!readCommands(lines)) {
            return endAs("return");
        }
        for (const std::string& line : lines) {
            std::istringstream words(line);
            std::string command;
            std::string kind;
            words >> command >> kind;
            if (command == "report") {
                say(application()->report() + " children=" + std::to_string(children.size()) +
                    " failed_children=" + std::to_string(failedChildren));
            } else if (command == "stall") {
                say("stalled");
                std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(kind.c_str())));
            } else if (command == "reattach" || command == "renew") {
                application()->reattach(std::atoi(kind.c_str()), 3, command == "renew");
            } else if (command == "fork") {
                startChild(kind);
            } else if (command == "end") {
                return endAs(kind);
            } else {
                return 2;
            }
        }
        if (pace.count() > 0) {
            std::this_thread::sleep_for(pace);
        }
    }
}
