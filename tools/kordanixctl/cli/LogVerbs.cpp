#include "cli/Verbs.h"
#include "logs/CompareCommand.h"
#include "logs/LogCommand.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

namespace control {

namespace {

constexpr double MAX_SECONDS = 3600.0;

void addLog(CLI::App& app, Invocation& invocation) {
    using Kind = platform::LogRequest::Kind;
    struct Options {
        std::string word;
        double last = 0.0;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const verb = addVerb(app, "log", "Start or stop a log of a program's frame times");
    setUsage(*verb, "log [OPTIONS] [start|stop]");
    CLI::Option* const word =
        verb->add_option("start|stop", options->word,
                         "Without a word, stops the log that is being written, or starts one")
            ->type_name("")
            ->check(CLI::Validator(
                [](const std::string& text) {
                    return text == "start" || text == "stop" ? std::string()
                                                             : "'" + text + "' is neither start nor stop";
                },
                ""));
    CLI::Option* const last =
        verb->add_option("--last", options->last,
                         "Save the frames of the last SECONDS instead, of which there are always some 60")
            ->type_name("SECONDS")
            ->check(isSeconds());
    verb->footer(
        "A log is a table with a row for each frame, in ~/.local/share/kordanix/logs or where 'run --log' "
        "said. "
        "When it ends, its figures are printed.");
    verb->callback([=, &invocation] {
        if (word->count() > 0 && last->count() > 0) {
            throw CLI::ParseError("--last neither starts nor stops a log", USAGE_ERROR);
        }
        platform::LogRequest request;
        request.kind = options->word == "start"  ? Kind::START
                       : options->word == "stop" ? Kind::STOP
                                                 : Kind::TOGGLE;
        if (last->count() > 0) {
            request.kind = Kind::LAST;
            request.seconds = static_cast<std::uint32_t>(std::ceil(std::min(options->last, MAX_SECONDS)));
        }
        invocation.action = [=, &invocation] {
            return controlLog(request, invocation.process, std::cout, std::cerr);
        };
    });
}

void addCompare(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<CompareOptions>();
    const auto limit = std::make_shared<std::string>();
    CLI::App* const verb =
        addVerb(app, "compare", "Set two logs side by side, and say whether they differ by more than noise");
    setUsage(*verb, "compare [OPTIONS] A B [OUT.html]");
    const char* const what = "A log, or a folder with logs: then its newest";
    verb->add_option("A", options->first, what)->type_name("")->required();
    verb->add_option("B", options->second, what)->type_name("")->required();
    verb->add_option("OUT.html", options->page, "Page to write or replace")
        ->type_name("")
        ->check(CLI::Validator(
            [](const std::string& text) {
                const std::size_t dot = text.rfind('.');
                const std::string ending = dot == std::string::npos ? std::string() : text.substr(dot);
                return ending == ".html" || ending == ".htm" || text.rfind("/dev/", 0) == 0
                           ? std::string()
                           : "'" + text +
                                 "' does not end in .html, as a page does; two logs are compared at a time";
            },
            ""));
    CLI::Option* const slower =
        verb->add_option(
                "--fail-if-slower", *limit,
                "Exit with status 1 when B is slower than A by more than that and by more than noise, "
                "on average or in its slowest 1 %")
            ->type_name("PERCENT%")
            ->check(CLI::Validator(
                [](const std::string& text) {
                    return parsePercent(text) ? std::string() : "'" + text + "' is no percentage such as 3%";
                },
                ""));
    verb->callback([=, &invocation] {
        invocation.address = Invocation::Address::NONE;
        if (slower->count() > 0) {
            options->failIfSlower = parsePercent(*limit);
        }
        invocation.action = [=] { return compareFiles(*options, std::cout, std::cerr); };
    });
}

}  // namespace

void addLogVerbs(CLI::App& app, Invocation& invocation) {
    addLog(app, invocation);
    addCompare(app, invocation);
}

}  // namespace control
