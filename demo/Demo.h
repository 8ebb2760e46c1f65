#pragma once

namespace demo {

struct Options;

/// Runs the demo and returns the program's exit code.
int run(const Options& options);

}  // namespace demo
