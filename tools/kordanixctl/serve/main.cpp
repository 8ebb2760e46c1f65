#include "Diagnostic.h"
#include "processes/ProcessInfo.h"
#include "properties/RuntimeDirectory.h"
#include "serve/ServeCommand.h"

#include <charconv>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

/// Usage: kordanix-serve DIRECTORY PORT [PID]. Started by 'kordanixctl serve', which finds out the runtime
/// directory.
int main(int argc, char** argv) {
    try {
        const std::string_view text = argc > 2 ? argv[2] : "";
        int port = 0;
        const auto read = std::from_chars(text.data(), text.data() + text.size(), port);
        const bool isPort = read.ec == std::errc() && read.ptr == text.data() + text.size() && port >= 0;
        const auto process = argc > 3 ? control::toProcess(argv[3]) : std::nullopt;
        if (!isPort || argc > 4 || (argc > 3 && !process)) {
            return control::fail("usage: kordanix-serve DIRECTORY PORT [PID]", std::cerr,
                                 control::USAGE_ERROR);
        }
        platform::changeRuntimeDirectory(argv[1]);
        return control::servePage(process, port, std::cout, std::cerr);
    } catch (const std::exception& error) {
        return control::fail(error.what(), std::cerr);
    }
}
