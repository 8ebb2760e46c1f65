#include "faults/HostProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

namespace faults {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds PATIENCE(10);
constexpr int COMMANDS = 0;
constexpr int ANSWERS = 1;
constexpr int LOG = 2;

/// In the new process: everything it finds there, then the program.
[[noreturn]] void become(const HostOptions& options, int commands, int answers) {
    const std::string log = options.folder + "/log";
    const int logFile = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    setenv("KORDANIX_RUNTIME_DIR", options.runtime.c_str(), 1);
    setenv("FAULT_DUMPS", options.folder.c_str(), 1);
    setenv("FAULT_HOST", FAULT_HOST, 1);
    unsetenv("KORDANIX_DUMP_DIR");
    setenv("KORDANIX_DEVICE", options.device.c_str(), 1);  // empty: none
    if (options.prepare && !options.prepare()) {
        _exit(HostProcess::CANNOT_BE_PREPARED);
    }
    signal(SIGPIPE, SIG_DFL);
    dup2(commands, COMMANDS);
    dup2(answers, ANSWERS);
    dup2(logFile, LOG);
    closefrom(LOG + 1);
    std::string pace = std::to_string(options.pace.count());
    std::string apis = options.apis;
    std::string name = HostProcess::NAME;
    char* const arguments[] = {name.data(), apis.data(), pace.data(), nullptr};
    execv(FAULT_HOST, arguments);
    _exit(127);
}

}  // namespace

HostProcess::HostProcess(const HostOptions& options) : mFolder(options.folder) {
    signal(SIGPIPE, SIG_IGN);
    int commands[2] = {};
    int answers[2] = {};
    if (pipe2(commands, O_CLOEXEC) != 0 || pipe2(answers, O_CLOEXEC) != 0) {
        std::abort();
    }
    mProcess = fork();
    if (mProcess == 0) {
        become(options, commands[0], answers[1]);
    }
    close(commands[0]);
    close(answers[1]);
    mCommands = commands[1];
    mAnswers = answers[0];
}

HostProcess::~HostProcess() {
    if (mProcess > 0) {
        kill(SIGKILL);
        waitpid(mProcess, nullptr, 0);
    }
    close(mCommands);
    close(mAnswers);
}

void HostProcess::tell(const std::string& command) {
    const std::string line = command + '\n';
    static_cast<void>(!write(mCommands, line.data(), line.size()));
}

void HostProcess::stall(int milliseconds) {
    tell("stall " + std::to_string(milliseconds));
    readLine();
}

std::string HostProcess::readLine() {
    const auto deadline = steady_clock::now() + PATIENCE;
    while (mText.find('\n') == std::string::npos) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - steady_clock::now());
        pollfd answers = {mAnswers, POLLIN, 0};
        char bytes[4096];
        ssize_t size = 0;
        if (left.count() > 0 && poll(&answers, 1, static_cast<int>(left.count())) > 0) {
            size = read(mAnswers, bytes, sizeof(bytes));
        }
        if (size <= 0) {
            return {};
        }
        mText.append(bytes, static_cast<std::size_t>(size));
    }
    const std::size_t newline = mText.find('\n');
    std::string line = mText.substr(0, newline);
    mText.erase(0, newline + 1);
    return line;
}

std::map<std::string, std::string> HostProcess::parse(const std::string& line) {
    std::map<std::string, std::string> values;
    mDumps.clear();
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        const std::size_t equals = std::min(word.find('='), word.size());
        const std::string name = word.substr(0, equals);
        const std::string value = word.substr(std::min(equals + 1, word.size()));
        if (name == "dump") {
            mDumps.emplace_back(std::stoull(value), std::stoull(value.substr(value.find('-') + 1)));
        } else {
            values[name] = value;
        }
    }
    return values;
}

std::map<std::string, std::string> HostProcess::report() {
    tell("report");
    return parse(readLine());
}

bool HostProcess::waitForFrames(long count) {
    const long frames = std::strtol(report()["frames"].c_str(), nullptr, 10);
    return waitFor("frames", [=](long now) { return now > frames + count; });
}

bool HostProcess::waitFor(const std::string& name, const std::function<bool(long)>& is) {
    const auto deadline = steady_clock::now() + PATIENCE;
    while (steady_clock::now() < deadline) {
        auto values = report();
        if (values.empty()) {
            return false;
        }
        if (is(std::strtol(values[name].c_str(), nullptr, 10))) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return false;
}

int HostProcess::end(const std::string& kind) {
    tell("end " + kind);
    parse(readLine());
    return wait();
}

int HostProcess::wait() {
    const auto deadline = steady_clock::now() + PATIENCE;
    int status = 0;
    while (waitpid(mProcess, &status, WNOHANG) == 0) {
        if (steady_clock::now() > deadline) {
            return HANGS;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    mProcess = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void HostProcess::kill(int signal) const {
    if (mProcess > 0) {
        ::kill(mProcess, signal);
    }
}

std::vector<std::string> HostProcess::logged(const std::string& text) const {
    std::vector<std::string> lines;
    std::ifstream log(mFolder + "/log");
    for (std::string line; std::getline(log, line);) {
        if (line.find(text) != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::string HostProcess::dumpFile(std::size_t dump) const {
    std::error_code ignored;
    const std::filesystem::directory_iterator folder(mFolder + '/' + std::to_string(dump), ignored);
    return folder == std::filesystem::directory_iterator() ? std::string()
                                                           : folder->path().string() + "/frames.csv";
}

std::string HostProcess::dumpError(std::size_t from) const {
    for (std::size_t i = from; i <= mDumps.size(); ++i) {
        const auto [first, last] = mDumps[i - 1];
        const std::string name = "dump " + std::to_string(i) + " of frames " + std::to_string(first) +
                                 " to " + std::to_string(last) + ": ";
        std::ifstream frames(dumpFile(i), std::ios::binary);
        std::string row;
        std::getline(frames, row);
        const auto columns = std::count(row.begin(), row.end(), ',');
        unsigned long long previous = 0;
        bool isFirst = true;
        while (std::getline(frames, row)) {
            if (row.empty() || row.back() != '\r' || std::count(row.begin(), row.end(), ',') != columns) {
                return name + "the row after frame " + std::to_string(previous) + " is not whole";
            }
            const unsigned long long number = std::stoull(row);
            if (isFirst ? last != 0 && number > first : number != previous + 1) {
                return name + "frame " + std::to_string(number) + " follows on " + std::to_string(previous);
            }
            isFirst = false;
            previous = number;
        }
        if (previous < last) {
            return name + "ends with frame " + std::to_string(previous);
        }
    }
    return {};
}

std::size_t HostProcess::countFrames(std::size_t dump) const {
    std::ifstream frames(dumpFile(dump));
    const auto rows = std::count(std::istreambuf_iterator<char>(frames), {}, '\n');
    return rows == 0 ? 0 : static_cast<std::size_t>(rows) - 1;
}

}  // namespace faults
