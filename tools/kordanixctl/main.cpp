#include "Doctor.h"
#include "DumpCommands.h"
#include "ProcessCommands.h"
#include "Properties.h"
#include "SetCommand.h"
#include "ShowCommands.h"
#include "WatchCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

using control::ExitCode;

/// What the command line says.
struct Arguments {
    std::function<ExitCode()> action;  ///< what the chosen verb does
    std::vector<std::string> words;
    std::string name;
    control::SetOptions set;
    control::WatchOptions watch;
    std::optional<pid_t> process;
    bool isUnpublished = false;
    bool isJson = false;
    bool keepsControl = false;
    std::string key;
    std::string folder;
    std::string path;
};

CLI::App* addVerb(CLI::App& app, const char* name, const char* description) {
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->set_help_flag("-h,--help", "Print this help and exit");
    verb->footer("");
    return verb;
}

/// Runs a verb that reads properties, if they can be read.
ExitCode withProperties(const std::function<ExitCode()>& verb) {
    const ExitCode usable = control::checkProperties(std::cerr);
    return usable == control::SUCCESS ? verb() : usable;
}

/// Marks negative numbers as values, since the parser would take -1 for an option, and takes the mark off.
std::string protect(const std::string& word) {
    const bool isNegativeNumber =
        word.size() > 1 && word[0] == '-' && word.find_first_not_of("0123456789", 1) == std::string::npos;
    return isNegativeNumber ? ' ' + word : word;
}
std::string unprotect(const std::string& word) {
    return !word.empty() && word[0] == ' ' && protect(word.substr(1)) != word.substr(1) ? word.substr(1)
                                                                                        : word;
}

void addSet(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb = addVerb(app, "set", "Set properties, then publish them together");
    verb->add_option("pairs", arguments.words,
                     "Names and values in turns. A name may do without its beginning debug.kordanix.; a "
                     "position is a name such as TOP_LEFT or a number, a colour #RRGGBB or a number")
        ->type_name("NAME VALUE")
        ->required();
    verb->add_flag("--no-publish", arguments.isUnpublished,
                   "Leave it to a later 'publish' to make them known");
    verb->add_flag("--force", arguments.set.isForced, "Also set names that the library does not know");
    verb->callback([&arguments] {
        std::vector<std::string>& words = arguments.words;
        std::transform(words.begin(), words.end(), words.begin(), unprotect);
        arguments.set.isPublished = !arguments.isUnpublished;
        arguments.action = [&] { return control::setProperties(arguments.words, arguments.set, std::cerr); };
    });
}

void addGet(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb = addVerb(app, "get", "Print a property, or all of the library's that are set");
    verb->add_option("name", arguments.name, "Its name, with or without debug.kordanix.")->type_name("NAME");
    verb->callback([&arguments] {
        arguments.action = [&] {
            return withProperties([&] {
                return arguments.name.empty() ? control::printSetProperties(std::cout)
                                              : control::printProperty(arguments.name, std::cout, std::cerr);
            });
        };
    });
}

void addList(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb =
        addVerb(app, "list", "Print every property of the library, its value and what it means");
    verb->add_flag("--json", arguments.isJson, "As a JSON array");
    verb->callback([&arguments] {
        arguments.action = [&] {
            return withProperties([&] {
                return arguments.isJson ? control::listPropertiesAsJson(std::cout)
                                        : control::listProperties(std::cout);
            });
        };
    });
}

void addPublish(CLI::App& app, Arguments& arguments) {
    addVerb(app, "publish", "Make known what was set with --no-publish")->callback([&arguments] {
        arguments.action = [&] { return control::publishProperties(std::cerr); };
    });
}

void addWatch(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb = addVerb(app, "watch", "Print changes of properties as they happen, until Ctrl-C");
    verb->add_option("--count", arguments.watch.count, "End after that many changes")->type_name("N");
    verb->add_option("--seconds", arguments.watch.seconds, "End after that time")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber);
    verb->callback([&arguments] {
        arguments.action = [&] {
            return withProperties([&] { return control::watchProperties(arguments.watch, std::cout); });
        };
    });
}

void addReset(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb = addVerb(app, "reset", "Take all properties back to their defaults, and publish");
    verb->add_flag("--settings-only", arguments.keepsControl,
                   "Keep where the overlay is shown: status, devmode, fixclock, api and proc");
    verb->callback([&arguments] {
        arguments.action = [&] { return control::resetProperties(arguments.keepsControl, std::cerr); };
    });
}

/// The option of the verbs that reach running overlays.
void addProcessOption(CLI::App& verb, Arguments& arguments) {
    verb.add_option("--process", arguments.process,
                    "Only to this process (default: to all that show an overlay)")
        ->type_name("PID")
        ->check(CLI::PositiveNumber);
}

void addKey(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb =
        addVerb(app, "key", "Press a key of running overlays: start or stop a dump, or capture a frame");
    verb->add_option("key", arguments.key, "dump or capture")
        ->type_name("KEY")
        ->required()
        ->check(CLI::IsMember({"dump", "capture"}));
    addProcessOption(*verb, arguments);
    verb->callback([&arguments] {
        arguments.action = [&] {
            return control::pressKey(arguments.key == "dump" ? control::Key::DUMP : control::Key::CAPTURE,
                                     arguments.process, std::cout, std::cerr);
        };
    });
}

void addBackground(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb =
        addVerb(app, "background", "Tell running overlays that their application goes to the background");
    addProcessOption(*verb, arguments);
    verb->callback([&arguments] {
        arguments.action = [&] { return control::sendToBackground(arguments.process, std::cout, std::cerr); };
    });
}

void addDoctor(CLI::App& app, Arguments& arguments) {
    addVerb(app, "doctor",
            "Say what can be measured here, who shows the overlay, and what to do about the rest")
        ->callback(
            [&arguments] { arguments.action = [&] { return control::runDoctor(std::cout, std::cerr); }; });
}

/// A verb that turns a dump into a file.
void addConversion(CLI::App& app, const char* name, const char* description, const char* fileType,
                   ExitCode (*convert)(const std::string&, const std::string&, std::ostream&),
                   Arguments& arguments) {
    CLI::App* const verb = addVerb(app, name, description);
    verb->add_option("folder", arguments.folder, "Folder with frames.csv and passes.csv")
        ->type_name("FOLDER")
        ->required();
    verb->add_option("out", arguments.path, "File to write; one that is there is replaced")
        ->type_name(fileType)
        ->required();
    verb->callback([&arguments, convert] {
        arguments.action = [&, convert] { return convert(arguments.folder, arguments.path, std::cerr); };
    });
}

/// The first word that should be a verb and is none; empty when all is well. (The parser would only say that
/// a verb is missing.)
std::string unknownVerb(const CLI::App& app, const std::vector<std::string>& words) {
    const auto word = std::find_if(words.begin(), words.end(),
                                   [](const std::string& text) { return text.empty() || text[0] != '-'; });
    const std::vector<const CLI::App*> verbs = app.get_subcommands([](const CLI::App*) { return true; });
    const auto isNamedSo = [&](const CLI::App* verb) { return verb->get_name() == *word; };
    return word == words.end() || std::any_of(verbs.begin(), verbs.end(), isNamedSo) ? std::string() : *word;
}

ExitCode run(int argc, char** argv) {
    CLI::App app{
        "Sets and shows the overlay's properties, reaches running overlays, and turns their frame "
        "dumps into traces and reports.",
        "kordanixctl"};
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "kordanixctl " KORDANIX_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    app.footer("'kordanixctl VERB --help' says more. Exit status: 0 done, 1 failed, 2 not understood.");
    Arguments arguments;
    addSet(app, arguments);
    addGet(app, arguments);
    addList(app, arguments);
    addPublish(app, arguments);
    addWatch(app, arguments);
    addReset(app, arguments);
    addKey(app, arguments);
    addBackground(app, arguments);
    addDoctor(app, arguments);
    addConversion(app, "trace", "Turn a frame dump into a file for Chrome's and other trace viewers",
                  "OUT.json", control::makeTrace, arguments);
    addConversion(app, "report", "Turn a frame dump into a page with its frame times and values", "OUT.html",
                  control::makeReport, arguments);

    std::vector<std::string> words;
    std::transform(argv + std::min(argc, 1), argv + argc, std::back_inserter(words), protect);
    const std::string unknown = unknownVerb(app, words);
    if (!unknown.empty()) {
        std::cerr << "kordanixctl: there is no verb '" << unknown << "'; see 'kordanixctl --help'\n";
        return control::USAGE_ERROR;
    }
    // The parser takes words from the back.
    std::reverse(words.begin(), words.end());
    try {
        app.parse(words);
        const ExitCode result = arguments.action();
        std::cout.flush();
        return result == control::SUCCESS && !std::cout ? control::FAILURE : result;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? control::SUCCESS : control::USAGE_ERROR;
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kordanixctl: %s\n", error.what());
        return control::FAILURE;
    }
}
