#include "cli/CommandLine.h"

#include "Diagnostic.h"
#include "cli/Verbs.h"
#include "cli/Words.h"
#include "processes/Addressing.h"

#include <algorithm>
#include <csignal>
#include <iostream>

namespace control {

namespace {

bool hasVerb(const CLI::App& app, const std::string& name) {
    return !app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == name; }).empty();
}

/// The words carry marks, see markValues(). Options must remove them, and a flag must not take a value.
void finishOptions(CLI::App& app) {
    for (CLI::Option* const option : app.get_options()) {
        option->disable_flag_override();
        option->transform(CLI::Validator(
            [](std::string& text) {
                text = unmarked(text);
                return std::string();
            },
            ""));
    }
}

void setUp(CLI::App& app, Invocation& invocation, const std::vector<std::string>& program) {
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("-V,--version", "kordanixctl " KORDANIX_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    app.footer(
        "'kordanixctl help VERB' says more about one. Exit status: 0 done, 1 failed, 2 not understood.");
    app.add_option(PROCESS_OPTION, invocation.process,
                   "The process whose properties and overlay are meant. By default the only program that "
                   "'run' started, otherwise all that it did not start. May also follow the verb")
        ->type_name("PID")
        ->take_last()
        ->check(isProcessNumber());
    addRunVerb(app, invocation, program);
    addPropertyVerbs(app, invocation);
    addProfileVerbs(app, invocation);
    addWatchVerbs(app, invocation);
    addOverlayVerbs(app, invocation);
    addDumpVerbs(app, invocation);
    addAndroidVerb(app, invocation);
    addLogVerbs(app, invocation);
    setUsage(app, "[OPTIONS] VERB ...");  // set last, because a new verb copies the formatter
    finishOptions(app);
    for (CLI::App* const verb : app.get_subcommands([](const CLI::App* /*verb*/) { return true; })) {
        finishOptions(*verb);
    }
}

/// Replaces the parser's words before and after the name in a message.
void reword(std::string& text, std::string_view before, std::string_view after, std::string_view words) {
    const std::size_t begin = text.find(before);
    const std::size_t end = text.size() - std::min(after.size(), text.size());
    if (begin != std::string::npos && begin + before.size() <= end && text.substr(end) == after) {
        text.resize(end);
        text.replace(begin, before.size(), words);
    }
}

/// Says what the parser did not understand, in a sentence that also points to the help.
std::string describe(const CLI::ParseError& error, const CLI::App& app) {
    const std::vector<const CLI::App*> verbs =
        app.get_subcommands([](const CLI::App* verb) { return verb->parsed(); });
    std::string text = unmarked(error.what());
    reword(text, "The following argument was not expected: ", "", "this was not expected: ");
    reword(text, "The following arguments were not expected: ", "", "these were not expected: ");
    reword(text, ": 1 required ", " missing", " needs a value: ");
    if (verbs.empty()) {
        return (error.get_name() == "RequiredError" ? "no verb is given" : text) +
               "; see 'kordanixctl --help'";
    }
    return text + "; see 'kordanixctl " + verbs.front()->get_name() + " --help'";
}

/// Chooses the process whose properties and overlay the verb works on.
ExitCode address(const Invocation& invocation) {
    switch (invocation.address) {
        case Invocation::Address::NONE:
            return SUCCESS;
        case Invocation::Address::HELPFUL:
            if (!invocation.process) {
                std::ostream ignored(nullptr);
                chooseRuntimeDirectory(std::nullopt, ignored);
                return SUCCESS;
            }
            break;
        case Invocation::Address::REQUIRED:
            break;
    }
    return chooseRuntimeDirectory(invocation.process, std::cerr);
}

}  // namespace

std::unique_ptr<CLI::App> makeCommandLine(Invocation& invocation, const std::vector<std::string>& program) {
    auto app = std::make_unique<CLI::App>(
        "Starts programs with the overlay, shows and changes its properties, reaches running overlays, and "
        "turns their frame dumps into reports and traces.",
        "kordanixctl");
    setUp(*app, invocation, program);
    return app;
}

ExitCode runCommandLine(std::vector<std::string> words) {
    Invocation invocation;
    std::vector<std::string> program;
    const std::unique_ptr<CLI::App> parser = makeCommandLine(invocation, program);
    CLI::App& app = *parser;
    const std::string wrong = replaceHelpVerbs(words, findVerb(words));
    if (!wrong.empty()) {
        return fail(wrong, std::cerr, USAGE_ERROR);
    }
    const std::size_t verb = findVerb(words);
    if (verb < words.size() && !hasVerb(app, words[verb])) {
        return fail("there is no verb '" + words[verb] + "'; see 'kordanixctl --help'", std::cerr,
                    USAGE_ERROR);
    }
    if (verb < words.size() && words[verb] == "run") {
        program = cutProgram(words, verb);
    } else {
        // Then a write fails with an error that we report. Not for 'run', whose program would inherit it.
        std::signal(SIGPIPE, SIG_IGN);
        std::signal(SIGXFSZ, SIG_IGN);
    }
    markValues(words);
    // The parser takes words from the back.
    std::reverse(words.begin(), words.end());
    try {
        app.parse(words);
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        return SUCCESS;
    } catch (const CLI::ParseError& error) {
        return fail(describe(error, app), std::cerr, USAGE_ERROR);
    }
    const ExitCode addressed = address(invocation);
    return addressed == SUCCESS ? invocation.action() : addressed;
}

}  // namespace control
