#include "simulator/Script.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace simulator {

namespace {

constexpr std::size_t MAX_VALUES = 6;
constexpr double MAX_REPETITIONS = 1000.0;
constexpr double MAX_VALUE = std::numeric_limits<std::uint32_t>::max();

// No device comes near these bounds, and within them all sums and products are finite.
constexpr double LARGEST = 1e15;
constexpr double SHORTEST = 1e-6;

using Json = nlohmann::json;

/// A value of the script and its position.
struct Node {
    const Json& root;
    Json::json_pointer pointer;

    const Json& value() const { return root[pointer]; }
    std::size_t size() const { return value().size(); }
    bool has(const char* name) const { return value().contains(name); }
    Node at(const std::string& name) const { return {root, pointer / name}; }
    Node at(std::size_t index) const { return {root, pointer / index}; }
};

/// Thrown when something is wrong with the script. Does not leave this file.
struct ScriptError {
    std::string where;  ///< ":LINE" or ": /POINTER"
    std::string expected;
};

[[noreturn]] void fail(const Node& node, const std::string& expected) {
    const std::string pointer = node.pointer.to_string();
    throw ScriptError{pointer.empty() ? "" : ": " + pointer, expected};
}

Node member(const Node& object, const char* name) {
    if (!object.has(name)) {
        fail(object, std::string("a member \"") + name + '"');
    }
    return object.at(name);
}

/// Refuses names that are not in the list, so that a misspelt optional member is reported.
void requireObject(const Node& node, std::initializer_list<std::string_view> names) {
    if (!node.value().is_object()) {
        fail(node, "an object");
    }
    for (const auto& item : node.value().items()) {
        if (names.size() != 0 && std::find(names.begin(), names.end(), item.key()) == names.end()) {
            std::string known;
            for (const std::string_view name : names) {
                known += (known.empty() ? "" : ", ") + std::string(name);
            }
            fail(node.at(item.key()), "one of " + known);
        }
    }
}

constexpr std::initializer_list<std::string_view> ANY_NAMES = {};

double number(const Node& node) {
    if (!node.value().is_number()) {
        fail(node, "a number");
    }
    const auto number = node.value().get<double>();
    if (!(std::abs(number) <= LARGEST)) {
        fail(node, "a number of at most 1e15");
    }
    return number;
}

double positive(const Node& node) {
    if (number(node) < SHORTEST) {
        fail(node, "a number of at least 0.000001");
    }
    return number(node);
}

double notNegative(const Node& node) {
    if (number(node) < 0.0) {
        fail(node, "0 or more");
    }
    return number(node);
}

double wholeNumber(const Node& node, double least, double most) {
    const double whole = number(node);
    if (whole != std::floor(whole) || whole < least || whole > most) {
        fail(node, "a whole number from " + std::to_string(static_cast<std::int64_t>(least)) + " to " +
                       std::to_string(static_cast<std::int64_t>(most)));
    }
    return whole;
}

/// Returns the number of elements.
std::size_t requireList(const Node& node) {
    if (!node.value().is_array() || node.value().empty()) {
        fail(node, "a list with at least one element");
    }
    return node.size();
}

std::vector<Curve::Point> readPoints(const Node& node, double period) {
    std::vector<Curve::Point> points;
    const std::size_t count = requireList(node);
    for (std::size_t i = 0; i < count; ++i) {
        const Node item = node.at(i);
        if (!item.value().is_array() || item.size() != 2) {
            fail(item, "a pair [seconds, value]");
        }
        const Curve::Point point = {number(item.at(0)), number(item.at(1))};
        if (point.time < 0.0 || point.time >= period ||
            (!points.empty() && point.time <= points.back().time)) {
            fail(item, "ascending times from 0 to below the period");
        }
        points.push_back(point);
    }
    return points;
}

Curve readCurve(const Node& node, double commonPeriod) {
    if (node.value().is_number()) {
        return Curve({{0.0, number(node)}}, commonPeriod, true);
    }
    if (node.value().is_array()) {
        return Curve(readPoints(node, commonPeriod), commonPeriod, false);
    }
    if (!node.value().is_object()) {
        fail(node, "a number, a list of points or an object");
    }
    requireObject(node, {"period", "points", "steps"});
    const double period = node.has("period") ? positive(node.at("period")) : commonPeriod;
    if (node.has("points") == node.has("steps")) {
        fail(node, "either \"points\" or \"steps\"");
    }
    const bool isStepped = node.has("steps");
    return Curve(readPoints(node.at(isStepped ? "steps" : "points"), period), period, isStepped);
}

std::string curveName(const Node& node, const Script& script) {
    if (!node.value().is_string() || script.curves.count(node.value().get<std::string>()) == 0) {
        fail(node, "the name of a curve");
    }
    return node.value().get<std::string>();
}

void readTotals(const Node& node, Script& script) {
    requireObject(node, ANY_NAMES);
    for (const auto& item : node.value().items()) {
        const Node total = node.at(item.key());
        requireObject(total, {"curve", "per_second", "start"});
        if (script.curves.count(item.key()) != 0) {
            fail(total, "another name for the total: this one is a curve's");
        }
        script.totals[item.key()] = {curveName(member(total, "curve"), script),
                                     notNegative(member(total, "per_second")),
                                     total.has("start") ? notNegative(total.at("start")) : 0.0};
    }
}

std::vector<double> readValues(const Node& node, double least, std::size_t count) {
    std::vector<double> values;
    const std::size_t size = requireList(node);
    for (std::size_t i = 0; i < size; ++i) {
        values.push_back(wholeNumber(node.at(i), least, MAX_VALUE));
    }
    if (size > MAX_VALUES || (count != 0 && size != count)) {
        fail(node, count != 0 ? "as many numbers in \"add\" as in \"values\"" : "1 to 6 numbers");
    }
    return values;
}

/// Reads a pass, or several alike when it repeats.
void readPass(const Node& node, std::vector<ScriptedPass>& passes) {
    requireObject(node, {"start", "duration", "values", "repeat"});
    const double start = notNegative(member(node, "start"));
    const double duration = notNegative(member(node, "duration"));
    std::vector<double> values = readValues(member(node, "values"), 0.0, 0);
    std::vector<double> growth(values.size(), 0.0);
    int count = 1;
    double every = 0.0;
    if (node.has("repeat")) {
        const Node repeat = node.at("repeat");
        requireObject(repeat, {"count", "every", "add"});
        count = static_cast<int>(wholeNumber(member(repeat, "count"), 1.0, MAX_REPETITIONS));
        every = notNegative(member(repeat, "every"));
        if (repeat.has("add")) {
            growth = readValues(repeat.at("add"), -MAX_VALUE, values.size());
        }
    }
    for (int i = 0; i < count; ++i) {
        ScriptedPass pass = {start + i * every, start + i * every + duration, {}};
        for (std::size_t j = 0; j < values.size(); ++j) {
            pass.values.push_back(
                static_cast<std::uint32_t>(std::clamp(values[j] + i * growth[j], 0.0, MAX_VALUE)));
        }
        passes.push_back(std::move(pass));
    }
}

/// When the last frame ends, in milliseconds.
double endOf(const std::vector<ScriptedFrame>& frames) {
    return frames.empty() ? 0.0 : frames.back().startMs + frames.back().durationMs;
}

void readScript(const Node& root, Script& script) {
    requireObject(root, {"period", "curves", "totals", "counters", "frames"});
    const double period = positive(member(root, "period"));
    const Node curves = member(root, "curves");
    requireObject(curves, ANY_NAMES);
    for (const auto& item : curves.value().items()) {
        script.curves.emplace(item.key(), readCurve(curves.at(item.key()), period));
    }
    if (root.has("totals")) {
        readTotals(root.at("totals"), script);
    }
    if (root.has("counters")) {
        const Node counters = root.at("counters");
        requireObject(counters, {"usage", "vertex_activity", "fragment_activity"});
        script.counters = {curveName(member(counters, "usage"), script),
                           curveName(member(counters, "vertex_activity"), script),
                           curveName(member(counters, "fragment_activity"), script)};
    }
    const std::size_t frames = root.has("frames") ? requireList(root.at("frames")) : 0;
    for (std::size_t i = 0; i < frames; ++i) {
        const Node item = root.at("frames").at(i);
        requireObject(item, {"duration", "passes"});
        ScriptedFrame frame = {endOf(script.frames), positive(member(item, "duration")), {}};
        const Node passes = member(item, "passes");
        const std::size_t count = requireList(passes);
        for (std::size_t j = 0; j < count; ++j) {
            readPass(passes.at(j), frame.passes);
        }
        script.frames.push_back(std::move(frame));
    }
}

/// Refuses an object that has a name twice; the parser would silently take the last one.
Json parse(std::string_view text) {
    std::vector<std::set<std::string>> names;
    const auto check = [&names](int /*depth*/, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) {
            names.emplace_back();
        } else if (event == Json::parse_event_t::object_end) {
            names.pop_back();
        } else if (event == Json::parse_event_t::key &&
                   !names.back().insert(parsed.get<std::string>()).second) {
            throw ScriptError{"", "each name once, found a second " + parsed.dump()};
        }
        return true;
    };
    try {
        return Json::parse(text, check);
    } catch (const Json::exception& error) {
        // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error while ..."
        const std::string message = error.what();
        constexpr std::string_view LINE = "at line ";
        const std::size_t line = message.find(LINE);
        if (line == std::string::npos) {
            throw ScriptError{"", "JSON: " + message.substr(message.find("] ") + 2)};
        }
        const std::size_t digits = line + LINE.size();
        throw ScriptError{':' + message.substr(digits, message.find(',', digits) - digits),
                          "JSON" + message.substr(message.find(": "))};
    }
}

}  // namespace

std::string Script::read(const std::string& path, std::string_view text) {
    try {
        const Json root = parse(text);
        readScript({root, Json::json_pointer()}, *this);
        return {};
    } catch (const ScriptError& error) {
        return path + error.where + ": expected " + error.expected;
    }
}

std::optional<ScriptedFrame> Script::frameAt(double seconds) const {
    if (frames.empty()) {
        return std::nullopt;
    }
    const double timeMs = seconds * 1000.0;
    const double inRoundMs = std::fmod(timeMs, endOf(frames));
    const auto next =
        std::upper_bound(frames.begin(), frames.end(), inRoundMs,
                         [](double moment, const ScriptedFrame& frame) { return moment < frame.startMs; });
    ScriptedFrame frame = *(next - 1);
    frame.startMs += timeMs - inRoundMs;
    return frame;
}

bool Script::hasFigure(const std::string& name) const {
    return curves.count(name) != 0 || totals.count(name) != 0;
}

double Script::figureAt(const std::string& name, double seconds) const {
    const auto total = totals.find(name);
    const auto curve = curves.find(total != totals.end() ? total->second.curve : name);
    if (curve == curves.end()) {
        return 0.0;
    }
    if (total == totals.end()) {
        return curve->second.valueAt(seconds);
    }
    return total->second.start + total->second.perSecond * curve->second.integralTo(seconds);
}

}  // namespace simulator
