// Folders of frame dumps with any text in their files, converted to a report and a trace.

#include "ByteReader.h"
#include "Check.h"
#include "conversions/DumpCommands.h"
#include "support/TemporaryDirectory.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

namespace {

void put(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    FUZZ_CHECK(file.flush().good());
}

std::string take(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    FUZZ_CHECK(file.good());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Requires coordinates in attributes to be neither "nan" nor "inf".
void checkNumbers(const std::string& html) {
    for (const std::string_view attribute :
         {" x=\"", " y=\"", " x1=\"", " x2=\"", " y1=\"", " y2=\"", " width=\"", " height=\"", " d=\""}) {
        for (std::size_t at = html.find(attribute); at != std::string::npos; at = html.find(attribute, at)) {
            at += attribute.size();
            const std::size_t end = html.find('"', at);
            FUZZ_CHECK(end != std::string::npos);
            FUZZ_CHECK(html.find_first_of("nia", at) >= end);
        }
    }
}

void checkReport(const std::string& html) {
    constexpr std::string_view BEGIN = "<!DOCTYPE html>";
    constexpr std::string_view END = "</html>\n";
    FUZZ_CHECK(html.compare(0, BEGIN.size(), BEGIN) == 0);
    FUZZ_CHECK(html.size() > END.size() && html.compare(html.size() - END.size(), END.size(), END) == 0);
    // No text of a dump may act as markup.
    FUZZ_CHECK(html.find("<script") == std::string::npos);
    checkNumbers(html);
}

void checkTrace(const std::string& text) {
    const nlohmann::json trace = nlohmann::json::parse(text, nullptr, false);
    FUZZ_CHECK(trace.is_object() && trace.contains("traceEvents"));
    for (const nlohmann::json& event : trace["traceEvents"]) {
        const std::string phase = event.at("ph");
        if (phase != "M") {
            FUZZ_CHECK(event.at("ts").is_number() && event.at("ts").get<double>() >= 0.0);
        }
        if (phase == "X") {
            FUZZ_CHECK(event.at("dur").is_number() && event.at("dur").get<double>() >= 0.0);
        }
        if (phase == "C") {
            FUZZ_CHECK(event.at("args").at("value").is_number());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryDirectory directory;
    static const std::string folder = directory.path("dump");
    // The input is the two files with a zero byte between them; without one there is no passes.csv.
    fuzz::ByteReader reader(data, size);
    const std::string text = reader.rest();
    const std::size_t end = text.find('\0');
    std::filesystem::create_directories(folder);
    std::filesystem::remove(folder + "/passes.csv");
    put(folder + "/frames.csv", text.substr(0, end));
    if (end != std::string::npos) {
        put(folder + "/passes.csv", text.substr(end + 1));
    }

    std::ostringstream complaints;
    const std::string reportPath = directory.path("report.html");
    const std::string tracePath = directory.path("trace.json");
    const bool isReported =
        control::makeReport(folder, reportPath, complaints, complaints) == control::SUCCESS;
    const bool isTraced = control::makeTrace(folder, tracePath, complaints, complaints) == control::SUCCESS;
    FUZZ_CHECK(isReported || !complaints.str().empty());
    // A single frame is enough for a trace, but not for a report.
    FUZZ_CHECK(isTraced || !isReported);
    if (isReported) {
        checkReport(take(reportPath));
    }
    if (isTraced) {
        checkTrace(take(tracePath));
    }
    return 0;
}
