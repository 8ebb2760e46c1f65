#include "Diagnostic.h"
#include "cli/Verbs.h"
#include "run/RunCommand.h"

#include <iostream>
#include <memory>

namespace control {

void addRunVerb(CLI::App& app, Invocation& invocation, const std::vector<std::string>& program) {
    const auto options = std::make_shared<RunOptions>();
    CLI::App* const verb = addVerb(app, "run", "Start a program with the overlay and properties of its own");
    setUsage(*verb, "run [OPTIONS] [--] PROGRAM [ARGUMENTS]...");
    verb->footer(
        "Everything from PROGRAM on is the program's own. Exit status: the program's; 127 when there is "
        "no such program, 126 when it cannot be run. Says at the end why the overlay was not shown, if it "
        "was not.");
    verb->add_option(
            "--set", options->assignments,
            "Set a property for the program, as 'set' does; may be given more than once. The overlay is "
            "switched on, in the first process that presents a frame, whether that is PROGRAM or one that "
            "it starts; proc=NAME, with the first word of a command line, and api=NUMBER choose another")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
    verb->add_flag_callback(
        "--no-keys", [=] { options->assignments.emplace_back("keys=off"); },
        "Leave the program's keys alone: the same as --set keys=off. Otherwise right Shift+F12 hides and "
        "shows the overlay, right Shift+F10 switches to the next preset, and right Shift+F9 saves a "
        "picture, in the program's windows on X11");
    verb->add_option(
            "--preset", options->preset,
            "Begin with an arrangement: small (one line), default or full. It goes over the profiles "
            "('help profile'), and --set over both")
        ->type_name("NAME");
    verb->callback([=, &invocation, &program] {
        invocation.address = Invocation::Address::NONE;
        if (program.empty()) {
            throw CLI::ParseError("run: no program is given", USAGE_ERROR);
        }
        if (invocation.process) {
            throw CLI::ParseError("run: a program that has not started yet has no --process", USAGE_ERROR);
        }
        invocation.action = [=, &program] { return runProgram(*options, program, std::cerr); };
    });
}

}  // namespace control
