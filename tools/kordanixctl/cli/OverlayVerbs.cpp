#include "Diagnostic.h"
#include "cli/Verbs.h"
#include "doctor/Doctor.h"
#include "doctor/MachineDoctor.h"
#include "overlays/PictureCommand.h"
#include "overlays/ProcessCommands.h"
#include "overlays/ToggleCommand.h"
#include "processes/ProcessInfo.h"

#include <iostream>
#include <memory>

namespace control {

namespace {

struct PictureOptions {
    std::vector<std::string> words;  ///< the process, if given, and the file
    double seconds = 5.0;
};

/// Removes the process from the words. Returns an empty text, or what is wrong with them.
std::string takeProcess(std::vector<std::string>& words, std::optional<pid_t>& process) {
    if (words.size() > 2) {
        return "picture takes a process and a file; '" + words[2] + "' is one word too many";
    }
    const std::optional<pid_t> first = words.empty() ? std::nullopt : toProcess(words.front());
    if (words.size() == 2 || first) {
        if (!first) {
            return "'" + words.front() + "' is not the number of a process";
        }
        if (process && process != first) {
            return "two processes are given, " + std::to_string(*process) + " and " + words.front();
        }
        process = first;
        words.erase(words.begin());
    }
    return {};
}

void addPicture(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<PictureOptions>();
    CLI::App* const verb = addVerb(app, "picture", "Save a program's next frame with the overlay in it");
    setUsage(*verb, "picture [OPTIONS] [PID] [OUT.png]");
    verb->add_option(
            "OUT.png", options->words,
            "File to write or replace; without one a new file in ~/.local/share/kordanix/logs, which "
            "is told here and on the screen. PID may be left out when only one process shows an "
            "overlay")
        ->type_name("");
    verb->add_option("--seconds", options->seconds, "How long to wait for the frame")
        ->capture_default_str()
        ->type_name("SECONDS")
        ->check(isSeconds());
    verb->callback([=, &invocation] {
        const std::string error = takeProcess(options->words, invocation.process);
        if (!error.empty()) {
            throw CLI::ParseError(error, USAGE_ERROR);
        }
        invocation.action = [=, &invocation] {
            const std::string path = options->words.empty() ? std::string() : options->words.front();
            return savePicture(invocation.process, path, options->seconds, std::cout, std::cerr);
        };
    });
}

void addToggle(CLI::App& app, Invocation& invocation) {
    addVerb(app, "toggle", "Hide the overlay, or show it again: for a desktop's keyboard shortcuts")
        ->callback([&] {
            invocation.action = [&] { return toggleOverlay(invocation.process, std::cout, std::cerr); };
        });
}

void addKey(CLI::App& app, Invocation& invocation) {
    const auto key = std::make_shared<std::string>();
    CLI::App* const verb =
        addVerb(app, "key", "Press a key of running overlays: start or end a dump, or capture a frame");
    verb->add_option("KEY", *key, "dump or capture")
        ->type_name("")
        ->required()
        ->check(CLI::Validator(
            [](const std::string& text) {
                return text == "dump" || text == "capture"
                           ? std::string()
                           : "'" + text + "' is not a key; expected dump or capture";
            },
            ""));
    verb->callback([=, &invocation] {
        invocation.action = [=, &invocation] {
            return pressKey(*key == "dump" ? Key::DUMP : Key::CAPTURE, invocation.process, std::cout,
                            std::cerr);
        };
    });
}

void addBackground(CLI::App& app, Invocation& invocation) {
    addVerb(app, "background", "Tell running overlays that their application goes to the background")
        ->callback([&] {
            invocation.action = [&] { return sendToBackground(invocation.process, std::cout, std::cerr); };
        });
}

void addDoctor(CLI::App& app, Invocation& invocation) {
    struct Options {
        MachineOptions machine;
        bool isJson = false;
    };
    const auto options = std::make_shared<Options>();
    MachineOptions& machine = options->machine;
    CLI::App* const verb =
        addVerb(app, "doctor", "Say who shows the overlay or why not, what can be measured, and what to do");
    verb->add_flag(
        "--json", options->isJson,
        "The machine's figures as a JSON array, each with its source or the reason why there is none");
    CLI::Option* const root =
        verb->add_option("--root", machine.root, "Read a recorded machine instead of this one")
            ->type_name("DIR");
    CLI::Option* const next = verb->add_option("--next", machine.next,
                                               "The same machine a moment later, for figures that are rates")
                                  ->type_name("DIR")
                                  ->needs(root);
    verb->add_option("--interval", machine.interval, "Seconds between the two")
        ->type_name("SECONDS")
        ->check(isSeconds())
        ->needs(next);
    verb->add_option(
            "--record", machine.record,
            "Write the files behind the figures into a new folder, to go with a report of a wrong one")
        ->type_name("DIR")
        ->excludes(root);
    verb->callback([&invocation, options] {
        invocation.address = Invocation::Address::HELPFUL;
        if (options->isJson || !options->machine.root.empty() || !options->machine.record.empty()) {
            invocation.address = Invocation::Address::NONE;
        }
        invocation.action = [&invocation, options] {
            MachineOptions& chosen = options->machine;
            chosen.process = invocation.process;
            if (!chosen.record.empty()) {
                return recordMachine(chosen, std::cout, std::cerr);
            }
            if (options->isJson) {
                return printFiguresAsJson(chosen, std::cout, std::cerr);
            }
            if (!chosen.root.empty()) {
                return printFigures(chosen, std::cout, std::cerr);
            }
            const ExitCode result = runDoctor(std::cout, std::cerr);
            std::cout << '\n';
            printFigures(chosen, std::cout, std::cerr);
            return result;
        };
    });
}

}  // namespace

void addOverlayVerbs(CLI::App& app, Invocation& invocation) {
    addPicture(app, invocation);
    addToggle(app, invocation);
    addKey(app, invocation);
    addBackground(app, invocation);
    addDoctor(app, invocation);
}

}  // namespace control
