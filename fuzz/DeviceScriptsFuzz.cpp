// Folders of simulated devices: any script, any properties, any kernel file.

#include "ByteReader.h"
#include "Check.h"
#include "simulator/Device.h"
#include "simulator/Script.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr double TIMES[] = {0.0, 0.0005, 1.0 / 3.0, 1.0, 12.5, 3600.0, 1e9};

/// Requires "PATH:LINE: expected ..." with a line that the text has, or "PATH: expected ...".
void checkMessage(const std::string& message, const std::string& path, const std::string& text) {
    FUZZ_CHECK(message.compare(0, path.size() + 1, path + ':') == 0);
    if (message.compare(path.size() + 1, 1, " ") != 0) {
        const long line = std::strtol(message.c_str() + path.size() + 1, nullptr, 10);
        FUZZ_CHECK(line >= 1 && line <= 1 + std::count(text.begin(), text.end(), '\n'));
    }
    FUZZ_CHECK(message.find(": expected ") != std::string::npos);
}

void checkFrame(const simulator::ScriptedFrame& frame, double seconds) {
    constexpr double ROUNDING = 1e-3;
    FUZZ_CHECK(std::isfinite(frame.startMs) && frame.startMs <= seconds * 1000.0 + ROUNDING);
    FUZZ_CHECK(std::isfinite(frame.durationMs) && frame.durationMs > 0.0);
    FUZZ_CHECK(!frame.passes.empty());
    for (const simulator::ScriptedPass& pass : frame.passes) {
        FUZZ_CHECK(std::isfinite(pass.startMs) && pass.startMs >= 0.0);
        FUZZ_CHECK(std::isfinite(pass.endMs) && pass.endMs >= pass.startMs);
        FUZZ_CHECK(!pass.values.empty() && pass.values.size() <= 6);
    }
}

void checkScript(const simulator::Script& script, double anyTime) {
    for (const double seconds : {TIMES[0], TIMES[1], TIMES[2], TIMES[3], TIMES[4], TIMES[5], TIMES[6],
                                 anyTime >= 0.0 && anyTime <= 1e9 ? anyTime : 0.0}) {
        for (const auto& curve : script.curves) {
            FUZZ_CHECK(script.hasFigure(curve.first));
            FUZZ_CHECK(std::isfinite(script.figureAt(curve.first, seconds)));
        }
        for (const auto& total : script.totals) {
            FUZZ_CHECK(std::isfinite(script.figureAt(total.first, seconds)));
        }
        const auto frame = script.frameAt(seconds);
        FUZZ_CHECK(frame.has_value() == !script.frames.empty());
        if (frame) {
            checkFrame(*frame, seconds);
        }
    }
}

void put(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    FUZZ_CHECK(file.flush().good());
}

void loadDevice(const std::string& script, const std::string& properties, const std::string& kernelFile) {
    static const support::TemporaryDirectory folder;
    static const bool isMade = std::filesystem::create_directories(folder.path("sys/kernel"));
    FUZZ_CHECK(isMade);
    put(folder.path("script.json"), script);
    put(folder.path("properties"), properties);
    put(folder.path("sys/kernel/file"), kernelFile);
    simulator::Device device;
    const std::string error = device.load(folder.path());
    FUZZ_CHECK(error.empty() || error.compare(0, folder.path().size(), folder.path()) == 0);
    if (error.empty()) {
        FUZZ_CHECK(!device.fileAt("/sys/kernel/other", 0.0));
        for (const double seconds : TIMES) {
            FUZZ_CHECK(device.fileAt("/sys/kernel/file", seconds).has_value());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The input begins with up to two lines of text that start with #, so that scripts can be written by
    // hand.
    fuzz::ByteReader reader(data, size);
    std::string text = reader.rest();
    std::string lines[2];
    for (std::string& line : lines) {
        if (!text.empty() && text.front() == '#') {
            const std::size_t end = text.find('\n');
            line = text.substr(1, end - 1);
            std::replace(line.begin(), line.end(), '|', '\n');
            text.erase(0, end == std::string::npos ? end : end + 1);
        }
    }

    simulator::Script script;
    const std::string error = script.read("script", text);
    if (error.empty()) {
        checkScript(script, std::strtod(lines[0].c_str(), nullptr));
        loadDevice(text, lines[0], lines[1]);
    } else {
        checkMessage(error, "script", text);
    }
    return 0;
}
