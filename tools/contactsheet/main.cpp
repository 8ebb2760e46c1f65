#include "Sheet.h"
#include "software/Png.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// NOLINTNEXTLINE(bugprone-exception-escape): out of memory may end the program
int main(int argc, char** argv) {
    CLI::App app{"Puts pictures side by side on one, each with its caption below.", "contactsheet"};
    std::uint32_t columns = 2;
    std::string output;
    std::vector<std::string> entries;
    app.add_option("--columns", columns, "Pictures in a row (default 2)")->check(CLI::Range(1, 100));
    app.add_option("--output", output, "The PNG file to write")->required()->type_name("FILE");
    app.add_option("PICTURE", entries, "A PNG file and its caption")->required()->type_name("FILE=CAPTION");
    CLI11_PARSE(app, argc, argv);

    std::string error;
    std::vector<CaptionedPicture> pictures(entries.size());
    for (std::size_t i = 0; i < entries.size() && error.empty(); ++i) {
        const std::size_t equals = entries[i].find('=');
        pictures[i].caption = equals == std::string::npos ? "" : entries[i].substr(equals + 1);
        software::readPng(entries[i].substr(0, equals), pictures[i].image, error);
    }
    if (error.empty()) {
        software::writePng(makeSheet(pictures, columns), output, error);
    }
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    return 0;
}
