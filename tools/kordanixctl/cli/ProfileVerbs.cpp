#include "cli/Verbs.h"
#include "profiles/ProfileCommands.h"
#include "properties/PresetCommand.h"
#include "settings/ProfileFiles.h"

#include <iostream>
#include <memory>

namespace control {

namespace {

constexpr const char* FILES =
    "Profiles are files NAME.conf in ~/.config/kordanix (XDG_CONFIG_HOME): lines as 'set' takes them, such "
    "as "
    "'scale 1.2', and comments that begin with #. default.conf is for all programs; a program's own profile, "
    "which "
    "counts more, has the name of its executable, or of its script, or under Wine of its .exe. Every 'run' "
    "uses "
    "them, and follows their changes; a program started with KORDANIX=1 reads them at its beginning.";

void addSave(CLI::App& app, Invocation& invocation) {
    const auto name = std::make_shared<std::string>();
    CLI::App* const verb =
        addVerb(app, "save", "Save what a program shows now as its profile, for its next starts");
    verb->add_option("NAME", *name,
                     "The profile's name; by default the program's, 'default' for all programs")
        ->type_name("");
    verb->footer(FILES);
    verb->callback([=, &invocation] {
        invocation.action = [=, &invocation] {
            return saveProfile(*name, invocation.process, std::cout, std::cerr);
        };
    });
}

void addProfile(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string action;
        std::string name;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* const verb = addVerb(app, "profile", "List, edit or check the profiles: settings that stay");
    setUsage(*verb, "profile list|edit|check [NAME]");
    verb->add_option("ACTION", options->action,
                     "list: what there is; edit: open one in EDITOR; check: name the lines that are wrong")
        ->type_name("")
        ->required()
        ->check(CLI::Validator(
            [](const std::string& text) {
                return text == "list" || text == "edit" || text == "check"
                           ? std::string()
                           : "'" + text + "' is no action; expected list, edit or check";
            },
            ""));
    verb->add_option("NAME", options->name,
                     "A program's name, or a path; by default the one for all programs, and all to check")
        ->type_name("");
    verb->footer(FILES);
    verb->callback([=, &invocation] {
        if (options->action == "list" && !options->name.empty()) {
            throw CLI::ParseError("'profile list' lists all; it takes no name", USAGE_ERROR);
        }
        invocation.address = Invocation::Address::NONE;
        invocation.action = [=] {
            return options->action == "list"   ? listProfiles(std::cout, std::cerr)
                   : options->action == "edit" ? editProfile(options->name, std::cout, std::cerr)
                                               : checkProfiles(options->name, std::cout, std::cerr);
        };
    });
}

void addPreset(CLI::App& app, Invocation& invocation) {
    const auto name = std::make_shared<std::string>();
    CLI::App* const verb = addVerb(app, "preset", "Switch a running program to another arrangement");
    verb->add_option(
            "NAME", *name,
            "small (one line: rate, GPU and CPU), default or full; without it, the one after the present one")
        ->type_name("");
    verb->callback(
        [=, &invocation] { invocation.action = [=] { return switchPreset(*name, std::cout, std::cerr); }; });
}

}  // namespace

void addProfileVerbs(CLI::App& app, Invocation& invocation) {
    addSave(app, invocation);
    addProfile(app, invocation);
    addPreset(app, invocation);
}

}  // namespace control
