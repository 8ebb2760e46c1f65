#pragma once

#include "cli/Invocation.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// The verbs of the command line: their options, their help, and what they call. The chosen verb sets the
/// invocation's action. The variables that hold option values live as long as `app`.
namespace control {

/// Adds a verb. Messages show the names of its positionals: "FOLDER is required".
CLI::App* addVerb(CLI::App& app, const char* name, const char* description);

/// Replaces the usage line of a help text by "kordanixctl USAGE".
void setUsage(CLI::App& app, const std::string& usage);

// Checks of option values; each has its own message.
CLI::Validator isProcessNumber();
CLI::Validator isSeconds();
CLI::Validator isCount();

void addPropertyVerbs(CLI::App& app, Invocation& invocation);  ///< set, get, list, publish, reset
void addOverlayVerbs(CLI::App& app, Invocation& invocation);   ///< picture, toggle, key, background, doctor
void addProfileVerbs(CLI::App& app, Invocation& invocation);   ///< save, profile, preset
void addWatchVerbs(CLI::App& app, Invocation& invocation);     ///< watch, serve
void addDumpVerbs(CLI::App& app, Invocation& invocation);      ///< report, trace
void addLogVerbs(CLI::App& app, Invocation& invocation);       ///< log, compare

void addAndroidVerb(CLI::App& app, Invocation& invocation);  ///< android

/// `program` is the program and its arguments, which the parser does not see.
void addRunVerb(CLI::App& app, Invocation& invocation, const std::vector<std::string>& program);

}  // namespace control
