#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

/// A program that runs; ended with the object.
class Program {
public:
    /// Starts it with variables added to this process's environment. `isOutputKept` collects what it prints.
    Program(const std::vector<std::string>& command, const std::map<std::string, std::string>& environment,
            bool isOutputKept = false);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t id() const { return mProcess; }

    /// Waits for its end: the exit status, or 128 and the signal that killed it.
    int wait();

    // After wait().
    std::string output() const { return mOutputFile.empty() ? std::string() : contents(mOutputFile); }
    std::string errors() const { return mErrorFile.empty() ? std::string() : contents(mErrorFile); }

private:
    static std::string contents(const std::string& path);

    pid_t mProcess = -1;
    std::string mOutputFile;
    std::string mErrorFile;
};
