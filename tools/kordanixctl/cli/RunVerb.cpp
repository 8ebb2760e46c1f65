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
        "shows the overlay, right Shift+F10 switches to the next preset, left Shift+F2 starts and ends a log "
        "and right Shift+F9 saves a picture, in the program's windows on X11; the properties key_toggle, "
        "key_preset, key_log and key_picture choose other keys");
    verb->add_option(
            "--preset", options->preset,
            "Begin with an arrangement: small (one line), default or full. It goes over the profiles "
            "('help profile'), and --set over both")
        ->type_name("NAME");
    LogOptions& logs = options->logs;
    const auto length = std::make_shared<double>(0.0);
    const CLI::Option* const log =
        verb->add_option(
                "--log", logs.folder,
                "Log every frame's times, and say at the end what they were. FOLDER gets the log, by "
                "default ~/.local/share/kordanix/logs; it is written --log=FOLDER, or before another "
                "option or '--', or is there already")
            ->type_name("[FOLDER]")
            ->expected(0, 1)
            ->take_last();
    const CLI::Option* const after =
        verb->add_option("--log-after", logs.after, "Begin the log so long after the first frame")
            ->type_name("SECONDS")
            ->check(isSeconds());
    const CLI::Option* const duration = verb->add_option("--log-for", *length, "End the log after so long")
                                            ->type_name("SECONDS")
                                            ->check(isSeconds());
    const CLI::Option* const failIf =
        verb->add_option(
                "--fail-if", logs.failIf,
                "Exit with status 1 when that is so of the log, such as low1<55; may be given more than "
                "once. Figures: mean, median, low1 and low01 in frames per second, longest and overlay "
                "in milliseconds, and frames. With --log-for, the program is ended after its log")
            ->type_name("CONDITION")
            ->expected(1)
            ->take_all();
    verb->callback([=, &invocation, &program] {
        invocation.address = Invocation::Address::NONE;
        if (program.empty()) {
            throw CLI::ParseError("run: no program is given", USAGE_ERROR);
        }
        if (invocation.process) {
            throw CLI::ParseError("run: a program that has not started yet has no --process", USAGE_ERROR);
        }
        options->logs.isWanted = log->count() + after->count() + duration->count() + failIf->count() > 0;
        if (duration->count() > 0) {
            options->logs.length = *length;
        }
        invocation.action = [=, &program] { return runProgram(*options, program, std::cerr); };
    });
}

}  // namespace control
