#include "opengl/context/Program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

Program::Program(const std::vector<std::string>& command,
                 const std::map<std::string, std::string>& environment, bool isOutputKept) {
    if (isOutputKept) {
        static int count = 0;
        const std::string stem =
            "/tmp/kordanix-program-" + std::to_string(getpid()) + '-' + std::to_string(count++);
        mOutputFile = stem + ".out";
        mErrorFile = stem + ".err";
    }
    mProcess = fork();
    if (mProcess != 0) {
        return;
    }
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    const auto redirect = [](const std::string& path, int target) {
        const int file = open(path.empty() ? "/dev/null" : path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, target);
    };
    redirect(mOutputFile, STDOUT_FILENO);
    redirect(mErrorFile, STDERR_FILENO);
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

Program::~Program() {
    if (mProcess > 0) {
        kill(mProcess, SIGTERM);
        wait();
    }
    for (const std::string& file : {mOutputFile, mErrorFile}) {
        if (!file.empty()) {
            unlink(file.c_str());
        }
    }
}

int Program::wait() {
    int status = 0;
    waitpid(mProcess, &status, 0);
    mProcess = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string Program::contents(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}
