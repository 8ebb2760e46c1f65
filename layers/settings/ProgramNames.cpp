#include "settings/ProgramNames.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

namespace control {

namespace {

/// A script of these may begin without "#!".
constexpr std::string_view INTERPRETERS[] = {"sh",   "bash", "dash", "zsh",  "ksh", "python",
                                             "perl", "ruby", "lua",  "node", "php"};

/// What a system call has read; nothing when it failed.
std::size_t sizeOf(ssize_t result) {
    return result > 0 ? static_cast<std::size_t>(result) : 0;
}

std::string_view baseName(std::string_view path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

/// "python3.11" is "python".
std::string_view withoutVersion(std::string_view name) {
    return name.substr(0, name.find_last_not_of("0123456789.-") + 1);
}

bool endsInExe(std::string_view word) {
    constexpr std::string_view END = ".exe";
    return word.size() > END.size() &&
           std::equal(END.begin(), END.end(), word.end() - END.size(),
                      [](char end, char c) { return c == end || c == end - 'a' + 'A'; });
}

/// The first line of the file; empty when it is none that can be read.
std::string firstLine(const std::string& path) {
    const int file = platform::openPlainFile(path, O_RDONLY, 0, true);
    if (file < 0) {
        return {};
    }
    std::array<char, 256> bytes{};
    const ssize_t size = read(file, bytes.data(), bytes.size());
    close(file);
    const std::string_view text(bytes.data(), sizeOf(size));
    return std::string(text.substr(0, text.find('\n')));
}

/// Whether the program runs the file as a script.
bool isScriptOf(std::string_view program, const std::string& path) {
    const std::string line = firstLine(path);
    if (line.compare(0, 2, "#!") == 0) {
        return line.find(withoutVersion(program)) != std::string::npos;
    }
    return !line.empty() && std::find(std::begin(INTERPRETERS), std::end(INTERPRETERS),
                                      withoutVersion(program)) != std::end(INTERPRETERS);
}

/// The script among the words of an interpreter; empty when there is none.
std::string_view scriptOf(const ProgramCall& call) {
    const auto word = std::find_if(call.words.begin() + 1, call.words.end(), [](const std::string& text) {
        return !text.empty() && text.front() != '-';
    });
    if (word == call.words.end()) {
        return {};
    }
    const std::string path = word->front() == '/' ? *word : call.folder + '/' + *word;
    return isScriptOf(baseName(call.executable), path) || isScriptOf(baseName(call.words.front()), path)
               ? baseName(*word)
               : std::string_view();
}

std::string linkTarget(const std::string& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t size = readlink(path.c_str(), target.data(), target.size());
    target.resize(sizeOf(size));
    return target;
}

std::vector<std::string> readWords(const std::string& path) {
    constexpr std::size_t MAX_BYTES = 4096;
    std::string text(MAX_BYTES, '\0');
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = file < 0 ? 0 : read(file, text.data(), text.size());
    if (file >= 0) {
        close(file);
    }
    text.resize(sizeOf(size));
    std::vector<std::string> words;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\0', begin), text.size());
        words.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

}  // namespace

std::vector<std::string> programNames(const ProgramCall& call) {
    std::vector<std::string> names;
    const auto add = [&names](std::string_view name) {
        if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
            names.emplace_back(name);
        }
    };
    const std::string_view executable = baseName(call.executable);
    if (executable.substr(0, 4) == "wine") {
        const auto exe = std::find_if(call.words.begin(), call.words.end(), endsInExe);
        add(exe == call.words.end() ? std::string_view() : baseName(*exe));
    }
    if (!call.words.empty()) {
        add(scriptOf(call));
    }
    if (!names.empty()) {
        return names;  // what runs it is not the program
    }
    // A program that has written over its command line has left one word with all kinds of things in it.
    if (!call.words.empty() && call.words.front().find(' ') == std::string::npos) {
        add(baseName(call.words.front()));
    }
    add(executable);
    return names;
}

std::vector<std::string> processNames(const std::string& procFolder) {
    return programNames(
        {linkTarget(procFolder + "/exe"), readWords(procFolder + "/cmdline"), procFolder + "/cwd"});
}

}  // namespace control
