#include "cli/Verbs.h"
#include "properties/ShowCommands.h"
#include "properties/WatchCommand.h"
#include "watch/BrowserView.h"
#include "watch/FigureLines.h"
#include "watch/TerminalView.h"

#include <iostream>
#include <memory>

namespace control {

namespace {

void addWatch(CLI::App& app, Invocation& invocation) {
    struct Options {
        WatchOptions limits;
        bool isJson = false;
        bool isProperties = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const verb = addVerb(
        app, "watch", "Show a running program's figures on the whole terminal, with keys for the switches");
    verb->add_flag("--json", options->isJson,
                   "Print all figures and the new frames' times instead, a JSON object a line");
    verb->add_flag("--properties", options->isProperties,
                   "Print properties as they change instead, until Ctrl-C");
    verb->add_option("--count", options->limits.count, "Stop after so many lines")
        ->type_name("N")
        ->check(isCount());
    verb->add_option("--seconds", options->limits.seconds, "Stop after that time")
        ->type_name("SECONDS")
        ->check(isSeconds());
    verb->callback([=, &invocation] {
        if (options->isJson && options->isProperties) {
            throw CLI::ParseError("--json prints figures, and --properties properties: one of them at a time",
                                  USAGE_ERROR);
        }
        const bool isLimited = verb->count("--count") + verb->count("--seconds") != 0;
        if (isLimited && !options->isJson && !options->isProperties) {
            throw CLI::ParseError("--count and --seconds are for --json and --properties", USAGE_ERROR);
        }
        invocation.action = [=, &invocation] {
            if (options->isJson) {
                return printFigureLines(invocation.process, options->limits, std::cout, std::cerr);
            }
            if (!options->isProperties) {
                return showTerminalView(invocation.process, std::cerr);
            }
            const ExitCode usable = checkProperties(std::cerr);
            return usable == SUCCESS ? watchProperties(options->limits, std::cout) : usable;
        };
    });
}

void addServe(CLI::App& app, Invocation& invocation) {
    const auto port = std::make_shared<int>(0);
    CLI::App* const verb =
        addVerb(app, "serve",
                "Show a running program's figures and settings in a browser, at the address that is printed");
    verb->add_option("--port", *port, "Port of the loopback address; by default any that is free")
        ->type_name("PORT")
        ->check(CLI::Range(1, 65535).description(""));
    verb->callback([=, &invocation] {
        invocation.action = [=, &invocation] {
            return showBrowserView(invocation.process, *port, std::cerr);
        };
    });
}

}  // namespace

void addWatchVerbs(CLI::App& app, Invocation& invocation) {
    addWatch(app, invocation);
    addServe(app, invocation);
}

}  // namespace control
