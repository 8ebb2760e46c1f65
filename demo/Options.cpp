#include "Options.h"

#include "simulator/DeviceSimulator.h"
#include "utils/StringFormat.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

namespace demo {

namespace {

constexpr std::uint32_t LARGEST_SIDE = 8192;

constexpr double DEFAULT_RATE = 60.0;
constexpr double LOWEST_RATE = 0.1;
constexpr double HIGHEST_RATE = 1000.0;

constexpr double LONGEST_SECONDS = 1e6;
constexpr double MOST_FRAMES = 1e9;

/// Accepts a number within limits. (CLI::Range accepts "nan", and checks a whole number only after it has
/// wrapped.)
CLI::Validator between(double least, double most, const char* what) {
    return CLI::Validator(
        [=](const std::string& text) {
            double number = 0.0;
            const bool isNumber = CLI::detail::lexical_cast(text, number);
            return isNumber && number >= least && number <= most
                       ? std::string()
                       : "'" + text + "': expected " + what +
                             utils::strFormat(" from %.10g to %.10g", least, most);
        },
        "");
}

/// Reads "740x360". Returns an empty text, or what it expected.
std::string parseSize(const std::string& text, Options& options) {
    unsigned int width = 0;
    unsigned int height = 0;
    int end = 0;
    const int count = std::sscanf(text.c_str(), "%5ux%5u%n", &width, &height, &end);
    if (count != 2 || static_cast<std::size_t>(end) != text.size() || std::min(width, height) == 0 ||
        std::max(width, height) > LARGEST_SIDE) {
        return "'" + text + "': expected WIDTHxHEIGHT in pixels, such as 740x360, up to 8192 a side";
    }
    options.width = width;
    options.height = height;
    return {};
}

/// Reads "NAME=VALUE". Returns an empty text, or what it expected.
std::string parseSetting(const std::string& text, Options& options) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        return "'" + text + "': expected NAME=VALUE, such as widget_memory=true";
    }
    options.settings.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    return {};
}

}  // namespace

double frameRate(const Options& options, double seconds) {
    if (options.rate > 0.0) {
        return options.rate;
    }
    const double rate = simulator::figureAt("frame_rate", seconds).value_or(DEFAULT_RATE);
    return std::clamp(rate, LOWEST_RATE, HIGHEST_RATE);
}

bool parseOptions(int argc, char** argv, Options& options, int& exitCode) {
    CLI::App app{"Runs the overlay in front of a moving picture and writes what it looks like as a PNG file.",
                 "kordanix-demo"};
    app.set_help_flag("-h,--help", "Print this help and exit");
    std::vector<std::string> settings;
    std::string size;
    bool isPortrait = false;
    app.add_option("--size", size, "Size of the picture in pixels (default 740x360)")->type_name("WxH");
    app.add_flag("--portrait", isPortrait, "Turn the picture upright: 740x360 becomes 360x740");
    app.add_option("--seconds", options.seconds, "How long to run (default 10)")
        ->check(between(0.0, LONGEST_SECONDS, "seconds"));
    app.add_option("--rate", options.rate,
                   "Frames per second (default: what the device's script says, or 60)")
        ->check(between(LOWEST_RATE, HIGHEST_RATE, "frames per second"));
    app.add_option("--device", options.device, "Simulated device; without one, this machine's own figures")
        ->type_name("NAME");
    app.add_option("--set", settings, "Set a property before the start; may be repeated")
        ->type_name("NAME=VALUE");
    app.add_option("--png", options.png, "Picture written at the end (default kordanix-demo.png)")
        ->type_name("FILE");
    app.add_option("--every", options.every, "Also write a picture each N frames, numbered")
        ->type_name("N")
        ->check(between(1.0, MOST_FRAMES, "a number of frames"));
    app.add_option("--capture-at", options.captureAt, "Press the capture key after this many seconds")
        ->type_name("SECONDS")
        ->check(between(0.0, LONGEST_SECONDS, "seconds"));
    app.add_flag("--fixed-step", options.isFixedStep,
                 "Advance time by one frame's length a frame, for pictures that come out the same each time "
                 "(with a simulated device)");
    app.add_flag("--private", options.isPrivate,
                 "Start from the default settings in a place of its own: neither read nor change the "
                 "settings that kordanixctl works on");
    try {
        app.parse(argc, argv);
        std::string error = size.empty() ? std::string() : parseSize(size, options);
        for (const std::string& setting : settings) {
            error = error.empty() ? parseSetting(setting, options) : error;
        }
        if (error.empty() && options.isFixedStep && options.device.empty()) {
            error = "--fixed-step needs a simulated device: the machine's own figures cannot be slowed down";
        }
        if (!error.empty()) {
            throw CLI::ValidationError(error);
        }
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error);
        return false;
    }
    if (isPortrait && options.width > options.height) {
        std::swap(options.width, options.height);
    }
    return true;
}

}  // namespace demo
