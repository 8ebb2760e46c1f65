#include "cli/Verbs.h"

#include "processes/ProcessInfo.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <system_error>

namespace control {

namespace {

/// The parser's own usage line cannot show words that repeat or come in pairs.
class UsageFormatter : public CLI::Formatter {
public:
    explicit UsageFormatter(std::string usage) : mUsage(std::move(usage)) {}

    std::string make_usage(const CLI::App* /*app*/, std::string /*name*/) const override {
        return "Usage: kordanixctl " + mUsage + '\n';
    }

private:
    std::string mUsage;
};

/// Converts the whole text to a number of the type.
template <typename Number>
bool parse(const std::string& text, Number& number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

CLI::Validator check(const char* expected, bool (*isRight)(const std::string&)) {
    return {[=](std::string& text) {
                return isRight(text) ? std::string() : "'" + text + "' is not " + expected;
            },
            ""};
}

}  // namespace

CLI::App* addVerb(CLI::App& app, const char* name, const char* description) {
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->group("Verbs");
    verb->set_help_flag("-h,--help", "Print this help and exit");
    verb->footer("");
    verb->fallthrough();  // so that --process may also follow the verb
    return verb;
}

void setUsage(CLI::App& app, const std::string& usage) {
    app.formatter(std::make_shared<UsageFormatter>(usage));
}

CLI::Validator isProcessNumber() {
    return check("the number of a process",
                 [](const std::string& text) { return toProcess(text).has_value(); });
}

CLI::Validator isSeconds() {
    return check("a number of seconds, 0 or more", [](const std::string& text) {
        double seconds = 0.0;
        return parse(text, seconds) && std::isfinite(seconds) && seconds >= 0.0;
    });
}

CLI::Validator isCount() {
    return check("a whole number, 0 or more", [](const std::string& text) {
        std::uint64_t count = 0;
        return parse(text, count);
    });
}

}  // namespace control
