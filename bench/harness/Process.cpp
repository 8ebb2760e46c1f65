#include "Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace bench {
namespace {

constexpr int NOT_STARTED = 127;
constexpr int BY_SIGNAL = 128;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return NOT_STARTED;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : BY_SIGNAL + WTERMSIG(status);
}

}  // namespace

Environment environmentWith(const Environment& changes) {
    Environment result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::size_t equals = text.find('=');
        result[text.substr(0, equals)] = equals == std::string::npos ? "" : text.substr(equals + 1);
    }
    for (const auto& [name, value] : changes) {
        if (value.empty()) {
            result.erase(name);
        } else {
            result[name] = value;
        }
    }
    return result;
}

int run(const Command& command, const Environment& environment, const std::string& logPath) {
    Command words = command;
    std::vector<std::string> assignments;
    for (const auto& [name, value] : environment) {
        assignments.push_back(name + '=' + value);
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t child = 0;
    const int error = posix_spawnp(&child, words[0].c_str(), &actions, nullptr, pointersTo(words).data(),
                                   pointersTo(assignments).data());
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? waitFor(child) : NOT_STARTED;
}

}  // namespace bench
