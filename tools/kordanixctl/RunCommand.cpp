#include "RunCommand.h"

#include "Complaint.h"
#include "RunDirectories.h"
#include "SetCommand.h"
#include "properties/SystemProperties.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr const char* SHELL = "/bin/sh";
constexpr const char* LOG_FILE = "KORDANIX_LOG_FILE";

// NOLINTBEGIN(concurrency-mt-unsafe): this process has one thread
std::string environment(const char* name) {
    const char* const text = std::getenv(name);
    return text == nullptr ? std::string() : text;
}

void setEnvironment(const char* name, const std::string& text) {
    setenv(name, text.c_str(), 1);
}
// NOLINTEND(concurrency-mt-unsafe)

/// The program file that execvp() would start, or what is wrong.
struct Program {
    std::string path;
    ExitCode result = NOT_FOUND;
};

Program findProgram(const std::string& name) {
    Program program;
    const auto look = [&](const std::string& path) {
        struct stat status = {};
        if (stat(path.c_str(), &status) != 0) {
            program.result = errno == EACCES ? NOT_EXECUTABLE : program.result;
            return false;
        }
        const bool isProgram = S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
        program = {path, isProgram ? SUCCESS : NOT_EXECUTABLE};
        return isProgram;
    };
    if (name.find('/') != std::string::npos || name.empty()) {
        look(name);
        return program;
    }
    std::istringstream folders(environment("PATH"));
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (look(fs::path(folder) / name)) {
            break;
        }
    }
    return program;
}

/// The file to preload, next to this program as it was built or installed; empty when it is nowhere.
std::string findPreload() {
    std::error_code ignored;
    const fs::path prefix = fs::read_symlink("/proc/self/exe", ignored).parent_path().parent_path();
    for (const char* const folder : {"lib", "lib/kordanix", KORDANIX_LIBDIR "/kordanix"}) {
        const fs::path path = prefix / folder / "libkordanix-preload.so";
        if (fs::exists(path, ignored)) {
            return path;
        }
    }
    return {};
}

ExitCode readAssignments(const std::vector<std::string>& texts, std::vector<Assignment>& assignments,
                         std::ostream& err) {
    ExitCode result = SUCCESS;
    for (const std::string& text : texts) {
        const std::size_t sign = text.find('=');
        Assignment assignment;
        const std::string error =
            sign == std::string::npos
                ? "'" + text + "' has no value; expected NAME=VALUE"
                : readAssignment(text.substr(0, sign), text.substr(sign + 1), false, assignment);
        result = error.empty() ? result : fail(error, err, USAGE_ERROR);
        assignments.push_back(std::move(assignment));
    }
    return result;
}

/// Turns the overlay on for the program; what was set by hand comes later and so wins.
ExitCode addDefaults(const std::string& name, std::vector<Assignment>& assignments, std::ostream& err) {
    std::vector<Assignment> all(3);
    readAssignment("status", "true", false, all[0]);
    readAssignment("api", "0", false, all[1]);
    const std::string error = readAssignment("proc", name, false, all[2]);
    const auto isProcess = [&](const Assignment& assignment) {
        return assignment.name == "debug.kordanix.proc";
    };
    if (!error.empty()) {
        if (std::none_of(assignments.begin(), assignments.end(), isProcess)) {
            return fail("the overlay cannot be turned on for a program of this name: " + error, err);
        }
        all.pop_back();
    }
    all.insert(all.end(), assignments.begin(), assignments.end());
    assignments = std::move(all);
    return SUCCESS;
}

/// Only returns when it fails, with an error number.
int execute(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));  // the interface is older than const
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    return errno;
}

}  // namespace

std::string commandName(const std::string& path, const std::string& name) {
    std::array<char, 2> magic{};
    std::ifstream file(path, std::ios::binary);
    if (!file.read(magic.data(), magic.size()) || magic[0] == '\x7F') {
        return name;
    }
    if (magic[0] != '#' || magic[1] != '!') {
        return SHELL;  // so says execvp()
    }
    std::string line;
    std::getline(file, line);
    std::istringstream parts(line);
    std::string interpreter;
    parts >> interpreter;
    // env starts another program by its bare name in turn.
    if (fs::path(interpreter).filename() == "env") {
        while (parts >> interpreter &&
               (interpreter[0] == '-' || interpreter.find('=') != std::string::npos)) {
        }
    }
    return interpreter;
}

ExitCode runProgram(const std::vector<std::string>& assignments, const std::vector<std::string>& words,
                    std::ostream& err) {
    std::vector<Assignment> all;
    const ExitCode understood = readAssignments(assignments, all, err);
    if (understood != SUCCESS) {
        return understood;
    }
    const std::string& name = words.front();
    const Program program = findProgram(name);
    if (program.result != SUCCESS) {
        return fail(name + (program.result == NOT_FOUND ? ": there is no such program"
                                                        : ": this is no program that you may run"),
                    err, program.result);
    }
    const std::string preload = findPreload();
    if (preload.empty()) {
        return fail(
            "libkordanix-preload.so, which brings the overlay into a program, is not installed with "
            "kordanixctl",
            err);
    }
    if (preload.find_first_of(" :\t\n") != std::string::npos) {
        return fail(preload + ": blanks and colons in the path keep it from being preloaded", err);
    }
    const ExitCode turnedOn = addDefaults(commandName(program.path, name), all, err);
    if (turnedOn != SUCCESS) {
        return turnedOn;
    }
    std::string error;
    const std::string user = userDirectory(error);
    if (user.empty()) {
        return fail(error, err);
    }
    findRuns(user);  // which removes what earlier ones left
    const std::string directory = makeRunDirectory(user, error);
    if (directory.empty()) {
        return fail(error, err);
    }
    platform::changeRuntimeDirectory(directory);
    ExitCode result = writeAssignments(all, true, err);
    if (result == SUCCESS) {
        const std::string others = environment("LD_PRELOAD");
        setEnvironment("LD_PRELOAD", others.empty() ? preload : preload + ':' + others);
        // What the program writes to standard error stays its own.
        if (environment(LOG_FILE).empty()) {
            setEnvironment(LOG_FILE, directory + "/log");
        }
        const int reason = execute(words);
        result = fail(name + ": " + std::generic_category().message(reason), err,
                      reason == ENOENT ? NOT_FOUND : NOT_EXECUTABLE);
    }
    removeRunDirectory(directory);
    return result;
}

}  // namespace control
