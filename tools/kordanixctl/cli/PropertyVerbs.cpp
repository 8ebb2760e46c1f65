#include "cli/Verbs.h"
#include "properties/SetCommand.h"
#include "properties/ShowCommands.h"
#include "settings/Properties.h"

#include <iostream>
#include <memory>

namespace control {

namespace {

/// Runs a verb that reads properties, unless they cannot be read.
ExitCode withProperties(const std::function<ExitCode()>& verb) {
    const ExitCode usable = checkProperties(std::cerr);
    return usable == SUCCESS ? verb() : usable;
}

void addSet(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::vector<std::string> words;
        bool isUnpublished = false;
        bool isForced = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const verb = addVerb(app, "set", "Set properties and publish them together");
    setUsage(*verb, "set [OPTIONS] NAME VALUE [NAME VALUE]...");
    verb->add_option("NAME", options->words,
                     "Names, each with its VALUE. A name may go without its beginning debug.kordanix.; a "
                     "position is a name such as TOP_LEFT or a number, a colour is #RRGGBB or a number")
        ->type_name("VALUE")
        ->required();
    verb->add_flag("--no-publish", options->isUnpublished, "Do not publish yet; 'publish' does so later");
    verb->add_flag("--force", options->isForced, "Also set properties that the library does not know");
    verb->callback([=, &invocation] {
        invocation.action = [=] {
            return setProperties(options->words, {options->isForced, !options->isUnpublished}, std::cerr);
        };
    });
}

void addGet(CLI::App& app, Invocation& invocation) {
    const auto name = std::make_shared<std::string>();
    CLI::App* const verb =
        addVerb(app, "get", "Print one property, or all of the library's properties that are set");
    verb->add_option("NAME", *name, "Its name, with or without debug.kordanix.")->type_name("");
    verb->callback([=, &invocation] {
        invocation.action = [=] {
            return withProperties([&] {
                return name->empty() ? printSetProperties(std::cout)
                                     : printProperty(*name, std::cout, std::cerr);
            });
        };
    });
}

void addList(CLI::App& app, Invocation& invocation) {
    const auto isJson = std::make_shared<bool>(false);
    CLI::App* const verb =
        addVerb(app, "list", "Print every property of the library, its value and what it means");
    verb->add_flag("--json", *isJson, "As a JSON array");
    verb->callback([=, &invocation] {
        invocation.action = [=] {
            return withProperties(
                [&] { return *isJson ? listPropertiesAsJson(std::cout) : listProperties(std::cout); });
        };
    });
}

void addPublish(CLI::App& app, Invocation& invocation) {
    addVerb(app, "publish", "Publish what was set with --no-publish")->callback([&] {
        invocation.action = [] { return publishProperties(std::cerr); };
    });
}

void addReset(CLI::App& app, Invocation& invocation) {
    const auto keepsControl = std::make_shared<bool>(false);
    CLI::App* const verb = addVerb(app, "reset", "Set all properties back to their defaults and publish");
    verb->add_flag("--settings-only", *keepsControl,
                   "Leave alone where the overlay is shown: status, devmode, fixclock, api and proc");
    verb->callback(
        [=, &invocation] { invocation.action = [=] { return resetProperties(*keepsControl, std::cerr); }; });
}

}  // namespace

void addPropertyVerbs(CLI::App& app, Invocation& invocation) {
    addSet(app, invocation);
    addGet(app, invocation);
    addList(app, invocation);
    addPublish(app, invocation);
    addReset(app, invocation);
}

}  // namespace control
