// What a browser may ask the page's server: any path, host and origin, and any body that is to set
// properties.

#include "Check.h"
#include "properties/RuntimeDirectory.h"
#include "serve/RequestGuard.h"
#include "serve/ServedProgram.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"
#include "support/TemporaryDirectory.h"

#include <sys/system_properties.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace {

const std::string TOKEN = "0123456789abcdef0123456789abcdef";

void checkGuard(const std::string& path, const std::string& host, const std::string& origin) {
    static const control::RequestGuard guard(TOKEN, 8000);
    const auto header = [](const std::string& text) {
        return text.empty() ? std::nullopt : std::optional(text);
    };
    if (guard.refusal({path, header(host), header(origin)}).empty()) {
        const std::string begin = '/' + TOKEN + '/';
        FUZZ_CHECK(path.compare(0, begin.size(), begin) == 0);
        FUZZ_CHECK(guard.resource(path) == path.substr(begin.size()));
        FUZZ_CHECK(host == "127.0.0.1:8000" || host == "localhost:8000");
        FUZZ_CHECK(origin.empty() || origin == "http://" + host);
    }
}

/// A body sets all that it names, to texts that can be read, or nothing.
void checkBody(control::ServedProgram& program, const std::string& body) {
    const std::uint32_t before = __system_property_area_serial();
    const std::string error = program.set(body);
    FUZZ_CHECK(error.empty() != (__system_property_area_serial() == before));
    if (error.empty()) {
        for (const control::Property& property : control::properties()) {
            const auto text = control::readProperty(control::fullName(property));
            FUZZ_CHECK(!text || control::isReadable(property, *text));
        }
        FUZZ_CHECK(nlohmann::json::accept(program.properties()));
        FUZZ_CHECK(program.reset().empty());
    }
    FUZZ_CHECK(nlohmann::json::accept(program.figures(0)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryDirectory directory;
    static const bool isSet = (platform::changeRuntimeDirectory(directory.path()), true);
    FUZZ_CHECK(isSet);
    static control::ServedProgram program({directory.path(), getpid(), "fuzz"});
    // A line for the path, the host and the origin each; the rest is the body.
    std::string rest(reinterpret_cast<const char*>(data), size);
    std::array<std::string, 3> lines;
    for (std::string& line : lines) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        line = rest.substr(0, end);
        rest.erase(0, std::min(end + 1, rest.size()));
    }
    checkGuard(lines[0], lines[1], lines[2]);
    checkBody(program, rest);
    return 0;
}
