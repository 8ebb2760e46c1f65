#include "cli/CommandLine.h"
#include "manual/CompletionTable.h"
#include "manual/ManPage.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr const char* TABLE = "@TABLE@";

/// Returns the text with the table in the place that is kept for it; nothing when there is none.
std::string withTable(std::istream& script, const std::string& table) {
    std::ostringstream text;
    text << script.rdbuf();
    std::string whole = text.str();
    const std::size_t place = whole.find(TABLE);
    return place == std::string::npos ? std::string()
                                      : whole.replace(place, std::string(TABLE).size(), table);
}

}  // namespace

/// Usage: kordanix-manual OUT            the manual page of kordanixctl
///        kordanix-manual OUT SCRIPT     a shell's script, with the table of its completions
int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::cerr << "usage: kordanix-manual OUT [SCRIPT]\n";
        return 2;
    }
    control::Invocation invocation;
    const std::vector<std::string> words;
    const manual::Description program = manual::describe(*control::makeCommandLine(invocation, words));
    std::ofstream out(argv[1]);
    if (argc == 2) {
        manual::writeManPage(program, out);
    } else {
        std::ifstream script(argv[2]);
        const std::string text = withTable(script, manual::completionTable(program));
        if (text.empty()) {
            std::cerr << argv[2] << ": cannot be read, or has no " << TABLE << '\n';
            return 1;
        }
        out << text;
    }
    out.close();
    if (!out) {
        std::cerr << argv[1] << ": cannot be written\n";
        return 1;
    }
    return 0;
}
