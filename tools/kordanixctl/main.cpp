#include "Diagnostic.h"
#include "cli/CommandLine.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

using control::ExitCode;

/// Whether the reader has closed the pipe: in 'kordanixctl list | head -1' it has what it wanted.
bool isReaderGone() {
    pollfd output = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

/// Returns the verb's result, or a failure when its output could not be written.
ExitCode checkOutput(ExitCode result) {
    std::cout.flush();
    return std::cout || result != control::SUCCESS || isReaderGone()
               ? result
               : control::fail("standard output could not be written", std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return checkOutput(control::runCommandLine({argv + std::min(argc, 1), argv + argc}));
    } catch (const std::exception& error) {
        return control::fail(error.what(), std::cerr);
    }
}
