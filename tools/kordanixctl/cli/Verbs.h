#pragma once

#include "cli/Invocation.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// The verbs of the command line: their options, their help, and what they call. Each sets the invocation's
/// action when it was chosen. What the options are read into lives as long as `app`.
namespace control {

/// Adds a verb. Its positionals are named as people shall read them: "FOLDER is required".
CLI::App* addVerb(CLI::App& app, const char* name, const char* description);

/// Replaces the usage line of a help text, "kordanixctl USAGE".
void setUsage(CLI::App& app, const std::string& usage);

// Checks of what an option is given, each with a sentence of its own.
CLI::Validator isProcessNumber();
CLI::Validator isSeconds();
CLI::Validator isCount();

void addPropertyVerbs(CLI::App& app, Invocation& invocation);  ///< set, get, list, publish, watch, reset
void addOverlayVerbs(CLI::App& app, Invocation& invocation);   ///< picture, key, background, doctor
void addDumpVerbs(CLI::App& app, Invocation& invocation);      ///< report, trace

/// `program`: the program and its arguments, which the parser does not see.
void addRunVerb(CLI::App& app, Invocation& invocation, const std::vector<std::string>& program);

}  // namespace control
