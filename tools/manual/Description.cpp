#include "manual/Description.h"

#include <CLI/CLI.hpp>

namespace manual {

namespace {

Word describe(const CLI::Option& option) {
    Word word;
    for (const std::string& name : option.get_snames()) {
        word.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        word.names.push_back("--" + name);
    }
    if (option.get_positional()) {
        word.names = {option.get_name(true)};
    } else if (option.get_items_expected_max() != 0) {
        word.value = option.get_type_name();
    }
    word.meaning = option.get_description();
    word.standard = option.get_default_str();
    return word;
}

/// The usage's line in the help text, which may follow a description.
std::string usageOf(const CLI::App& app, const std::string& command) {
    const std::string start = "Usage: ";
    const std::string help = app.get_formatter()->make_help(&app, command, CLI::AppFormatMode::Normal);
    const std::size_t found = help.find(start);
    if (found == std::string::npos) {
        return command;
    }
    const std::size_t begin = found + start.size();
    return help.substr(begin, help.find('\n', begin) - begin);
}

Description describe(const CLI::App& app, const std::string& name, const std::string& command) {
    Description all;
    all.name = name;
    all.usage = usageOf(app, command);
    all.meaning = app.get_description();
    all.footer = CLI::detail::trim_copy(app.get_footer());
    for (const CLI::Option* const option : app.get_options()) {
        if (!option->get_group().empty()) {  // hidden ones have no group
            (option->get_positional() ? all.places : all.options).push_back(describe(*option));
        }
    }
    for (const CLI::App* const verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        if (!verb->get_group().empty()) {
            const std::string within = command.find(' ') == std::string::npos ? "" : name + " ";
            all.verbs.push_back(describe(*verb, within + verb->get_name(), command + " " + verb->get_name()));
        }
    }
    return all;
}

}  // namespace

Description describe(const CLI::App& app) {
    return describe(app, app.get_name(), app.get_name());
}

std::string firstSentence(const std::string& text) {
    return text.substr(0, std::min(text.find(". "), text.find_last_not_of('.') + 1));
}

}  // namespace manual
