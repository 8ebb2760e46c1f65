#include "serve/ServedProgram.h"

#include "figures/Catalogue.h"
#include "overlays/OverlayState.h"
#include "overlays/PictureCommand.h"
#include "properties/SetCommand.h"
#include "settings/Assignment.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"
#include "software/Image.h"
#include "software/Png.h"
#include "watch/ReportJson.h"

#include <sys/system_properties.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

namespace control {

namespace {

using Json = nlohmann::ordered_json;

constexpr double PICTURE_SECONDS = 5.0;

/// Several pages share one question.
constexpr std::chrono::milliseconds BETWEEN_QUESTIONS{30};

const char* typeName(PropertyType type) {
    switch (type) {
        case PropertyType::BOOLEAN:
            return "switch";
        case PropertyType::POSITION:
            return "position";
        case PropertyType::COLOR:
            return "color";
        case PropertyType::OPACITY:
            return "opacity";
        case PropertyType::SCALE:
            return "scale";
        default:
            return "text";
    }
}

/// Names and values may hold any bytes.
std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Without the lines' beginnings, which are for a terminal.
std::string plain(const std::ostringstream& diagnostics) {
    constexpr std::string_view BEGIN = "kordanixctl: ";
    std::string text = diagnostics.str();
    for (std::size_t at = text.find(BEGIN); at != std::string::npos; at = text.find(BEGIN, at)) {
        text.erase(at, BEGIN.size());
    }
    return text;
}

}  // namespace

ServedProgram::ServedProgram(const WatchTarget& target)
    : mTarget(target), mFeed(target.directory, target.process) {}

std::string ServedProgram::open() {
    return mFeed.open();
}

std::string ServedProgram::figures(std::uint32_t seenRefresh) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto now = std::chrono::steady_clock::now();
    if (now - mAsked >= BETWEEN_QUESTIONS) {
        mAsked = now;
        if (auto report = mFeed.ask()) {
            mReport = report;
        }
    }
    Json answer = {{"name", baseName(mTarget.name)},
                   {"process", mTarget.process},
                   {"settings", __system_property_area_serial()},
                   {"standstill", mFeed.error().empty() ? describeStandstill(mFeed) : mFeed.error()},
                   {"report", nullptr}};
    if (mReport && mReport->refreshes != seenRefresh) {
        answer["report"] = toJson(*mReport, 0);
    }
    return dump(answer);
}

std::string ServedProgram::properties() {
    const std::lock_guard<std::mutex> lock(mMutex);
    Json answer = {{"properties", Json::array()}, {"figures", Json::array()}};
    for (const Property& property : control::properties()) {
        if (property.type != PropertyType::GENERATION) {
            answer["properties"].push_back(
                {{"name", property.shortName},
                 {"type", typeName(property.type)},
                 {"value", toDisplayText(property, readProperty(fullName(property)))},
                 {"default", toDisplayText(property, std::nullopt)},
                 {"meaning", property.meaning}});
        }
    }
    for (const figures::Figure& figure : figures::catalogue()) {
        answer["figures"].push_back({{"id", figure.id},
                                     {"name", figure.name},
                                     {"unit", figure.format.unit},
                                     {"property", figure.isNote() ? "" : figure.settings.property}});
    }
    return dump(answer);
}

std::string ServedProgram::set(const std::string& json) {
    const Json wanted = Json::parse(json, nullptr, false);
    if (!wanted.is_object() || wanted.empty()) {
        return "expected a JSON object of names and texts";
    }
    std::vector<Assignment> assignments;
    for (const auto& [name, value] : wanted.items()) {
        Assignment& assignment = assignments.emplace_back();
        const std::string error = value.is_string()
                                      ? readAssignment(name, value.get<std::string>(), false, assignment)
                                      : "the value of '" + name + "' is no text";
        if (!error.empty()) {
            return error;
        }
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    std::ostringstream diagnostics;
    writeAssignments(assignments, true, diagnostics);
    return plain(diagnostics);
}

std::string ServedProgram::reset() {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::ostringstream diagnostics;
    resetProperties(true, diagnostics);
    return plain(diagnostics);
}

std::string ServedProgram::picture(std::string& png) const {
    software::Image image;
    std::string error = findObstacle(mTarget.directory, mTarget.process);
    if (error.empty()) {
        error = fetchPicture(mTarget.directory, mTarget.process, PICTURE_SECONDS, image);
    } else {
        error = describeProcess(mTarget.process, baseName(mTarget.name)) + ' ' + error;
    }
    if (error.empty()) {
        software::encodePng(image, png, error);
    }
    return error;
}

bool ServedProgram::hasEnded() const {
    return OverlayState(mTarget.directory).hasEnded(mTarget.process);
}

}  // namespace control
