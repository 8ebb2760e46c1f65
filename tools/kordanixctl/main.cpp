#include "Addressing.h"
#include "Complaint.h"
#include "Doctor.h"
#include "DumpCommands.h"
#include "PictureCommand.h"
#include "ProcessCommands.h"
#include "ProcessInfo.h"
#include "Properties.h"
#include "RunCommand.h"
#include "SetCommand.h"
#include "ShowCommands.h"
#include "WatchCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using control::ExitCode;

/// Whether the verb is about the properties or overlay of some process.
enum class Address {
    REQUIRED,
    HELPFUL,  ///< it does its best when several could be meant
    NONE,
};

/// What the command line says.
struct Arguments {
    std::function<ExitCode()> action;  ///< what the chosen verb does
    Address address = Address::REQUIRED;
    std::vector<std::string> words;
    std::vector<std::string> program;  ///< with its arguments, for 'run'
    double seconds = 5.0;
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

/// Shows a usage line that the parser could not make itself.
class UsageFormatter : public CLI::Formatter {
public:
    explicit UsageFormatter(std::string usage) : mUsage(std::move(usage)) {}

    std::string make_usage(const CLI::App* /*app*/, std::string /*name*/) const override {
        return "Usage: kordanixctl " + mUsage + '\n';
    }

private:
    std::string mUsage;
};

CLI::App* addVerb(CLI::App& app, const char* name, const char* description) {
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->set_help_flag("-h,--help", "Print this help and exit");
    verb->footer("");
    verb->fallthrough();  // so that --process may stand after the verb too
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

void addKey(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb =
        addVerb(app, "key", "Press a key of running overlays: start or stop a dump, or capture a frame");
    verb->add_option("key", arguments.key, "dump or capture")
        ->type_name("KEY")
        ->required()
        ->check(CLI::IsMember({"dump", "capture"}));
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
    verb->callback([&arguments] {
        arguments.action = [&] { return control::sendToBackground(arguments.process, std::cout, std::cerr); };
    });
}

void addDoctor(CLI::App& app, Arguments& arguments) {
    addVerb(app, "doctor",
            "Say what can be measured here, who shows the overlay, and what to do about the rest")
        ->callback([&arguments] {
            arguments.address = Address::HELPFUL;
            arguments.action = [&] { return control::runDoctor(std::cout, std::cerr); };
        });
}

void addRun(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb = addVerb(app, "run", "Start a program with the overlay and properties of its own");
    verb->formatter(std::make_shared<UsageFormatter>("run [OPTIONS] [--] PROGRAM [ARGUMENTS]..."));
    verb->footer(
        "Everything from PROGRAM on is the program's own. Exit status: the program's; 127 when there is "
        "no such program, 126 when it cannot be run.");
    verb->add_option(
            "--set", arguments.words,
            "Set a property for the program, as 'set' does; may be given more than once. status, proc "
            "and api are set so that the program shows the overlay; when PROGRAM starts another one that "
            "shall show it, proc=NAME with the first word of that one's command line")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
    verb->callback([&arguments] {
        arguments.address = Address::NONE;
        arguments.action = [&] {
            const char* const error =
                arguments.program.empty() ? "run: which program? See 'kordanixctl run --help'"
                : arguments.process       ? "run: a program that is yet to start has no --process"
                                          : nullptr;
            return error != nullptr ? control::fail(error, std::cerr, control::USAGE_ERROR)
                                    : control::runProgram(arguments.words, arguments.program, std::cerr);
        };
    });
}

void addPicture(CLI::App& app, Arguments& arguments) {
    CLI::App* const verb = addVerb(app, "picture", "Save the next frame of a program with the overlay in it");
    verb->formatter(std::make_shared<UsageFormatter>("picture [OPTIONS] [PID] OUT.png"));
    verb->add_option("out", arguments.words,
                     "File to write, which is replaced; before it the process, which may be left out when "
                     "only one shows an overlay")
        ->type_name("")
        ->required()
        ->expected(1, 2);
    verb->add_option("--seconds", arguments.seconds, "How long to wait for a frame")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber);
    verb->callback([&arguments] {
        if (arguments.words.size() > 1) {
            const auto process = control::toProcess(arguments.words.front());
            if (!process || (arguments.process && arguments.process != process)) {
                throw CLI::ValidationError("picture",
                                           "'" + arguments.words.front() + "' is not the process to ask");
            }
            arguments.process = process;
        }
        arguments.path = arguments.words.back();
        arguments.action = [&] {
            return control::savePicture(arguments.process, arguments.path, arguments.seconds, std::cerr);
        };
    });
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
        arguments.address = Address::NONE;
        arguments.action = [&, convert] { return convert(arguments.folder, arguments.path, std::cerr); };
    });
}

constexpr const char* PROCESS_OPTION = "--process";

/// Where the verb stands, or the end. Options before it may have a value of their own.
std::size_t findVerb(const std::vector<std::string>& words) {
    std::size_t i = 0;
    while (i < words.size() && !words[i].empty() && words[i][0] == '-') {
        i += words[i] == PROCESS_OPTION ? 2 : 1;
    }
    return std::min(i, words.size());
}

bool hasVerb(const CLI::App& app, const std::string& name) {
    return !app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == name; }).empty();
}

/// Cuts the program and its arguments off the words of 'run', which the parser is not to look at.
std::vector<std::string> cutProgram(std::vector<std::string>& words, std::size_t verb) {
    std::size_t i = verb + 1;
    while (i < words.size() && words[i] != "--" && !words[i].empty() && words[i][0] == '-') {
        i += words[i] == "--set" || words[i] == PROCESS_OPTION ? 2 : 1;
    }
    i = std::min(i, words.size());
    const std::size_t first = i + (i < words.size() && words[i] == "--" ? 1 : 0);
    std::vector<std::string> program(words.begin() + static_cast<std::ptrdiff_t>(first), words.end());
    words.resize(i);
    return program;
}

/// Settles whose properties and overlays the verb is about.
ExitCode address(const Arguments& arguments) {
    if (arguments.address == Address::NONE) {
        return control::SUCCESS;
    }
    if (arguments.address == Address::HELPFUL && !arguments.process) {
        std::ostream ignored(nullptr);
        control::chooseRuntimeDirectory(std::nullopt, ignored);
        return control::SUCCESS;
    }
    return control::chooseRuntimeDirectory(arguments.process, std::cerr);
}

ExitCode run(int argc, char** argv) {
    CLI::App app{
        "Starts programs with the overlay, sets and shows its properties, reaches running overlays, and "
        "turns their frame dumps into traces and reports.",
        "kordanixctl"};
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "kordanixctl " KORDANIX_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    app.footer("'kordanixctl VERB --help' says more. Exit status: 0 done, 1 failed, 2 not understood.");
    Arguments arguments;
    app.add_option(PROCESS_OPTION, arguments.process,
                   "The process whose properties and overlay are meant (default: the only program that was "
                   "started with 'run', else all that were not); may also follow the verb")
        ->type_name("PID")
        ->check(CLI::PositiveNumber);
    addRun(app, arguments);
    addPicture(app, arguments);
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

    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const std::size_t verb = findVerb(words);
    if (verb < words.size() && !hasVerb(app, words[verb])) {
        return control::fail("there is no verb '" + words[verb] + "'; see 'kordanixctl --help'", std::cerr,
                             control::USAGE_ERROR);
    }
    if (verb < words.size() && words[verb] == "run") {
        arguments.program = cutProgram(words, verb);
    }
    std::transform(words.begin(), words.end(), words.begin(), protect);
    // The parser takes words from the back.
    std::reverse(words.begin(), words.end());
    try {
        app.parse(words);
        const ExitCode addressed = address(arguments);
        const ExitCode result = addressed == control::SUCCESS ? arguments.action() : addressed;
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
        return control::fail(error.what(), std::cerr);
    }
}
