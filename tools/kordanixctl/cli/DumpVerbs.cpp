#include "cli/Verbs.h"
#include "conversions/DumpCommands.h"

#include <iostream>
#include <memory>

namespace control {

namespace {

using Convert = ExitCode (*)(const std::string& folder, const std::string& path, std::ostream& out,
                             std::ostream& err);

/// Adds a verb that converts a dump to a file.
void addConversion(CLI::App& app, const char* name, const char* description, const char* file,
                   Convert convert, Invocation& invocation) {
    struct Options {
        std::string folder;
        std::string path;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const verb = addVerb(app, name, description);
    verb->add_option(
            "FOLDER", options->folder,
            "A dump's folder, or one with dumps in it: then the newest of them. Or the file of a log")
        ->type_name("")
        ->required();
    verb->add_option(file, options->path, "File to write or replace")->type_name("")->required();
    verb->callback([=, &invocation] {
        invocation.address = Invocation::Address::NONE;
        invocation.action = [=] { return convert(options->folder, options->path, std::cout, std::cerr); };
    });
}

}  // namespace

void addDumpVerbs(CLI::App& app, Invocation& invocation) {
    addConversion(app, "report", "Turn a frame dump into a page with its frame times and values", "OUT.html",
                  makeReport, invocation);
    addConversion(app, "trace", "Turn a frame dump into a file for trace viewers such as Chrome's",
                  "OUT.json", makeTrace, invocation);
}

}  // namespace control
