#include "simulator/Script.h"

#include "simulator/JsonTree.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace simulator {

namespace {

constexpr std::size_t MAX_VALUES = 6;
constexpr double MAX_REPETITIONS = 1000.0;
constexpr double MS_PER_SECOND = 1000.0;
constexpr double MAX_VALUE = std::numeric_limits<std::uint32_t>::max();

// Bounds of what a script says, far beyond any device, within which all sums and products are finite.
constexpr double LARGEST = 1e15;
constexpr double SHORTEST = 1e-6;

[[noreturn]] void fail(const JsonNode& node, const std::string& expected) {
    throw ScriptError{node.line, "expected " + expected};
}

/// The node's name for messages.
std::string nameOf(const JsonNode& node) {
    return node.name.empty() ? "an element" : '"' + node.name + '"';
}

void requireKind(const JsonNode& node, JsonNode::Kind kind, const char* what) {
    if (node.kind != kind) {
        fail(node, std::string(what) + " for " + nameOf(node));
    }
}

const JsonNode& member(const JsonNode& object, const char* name) {
    const JsonNode* const found = object.find(name);
    if (found == nullptr) {
        fail(object, std::string("a member \"") + name + '"');
    }
    return *found;
}

/// Catches misspelt names of members that may be missing.
void requireObject(const JsonNode& node, std::initializer_list<std::string_view> names) {
    requireKind(node, JsonNode::Kind::OBJECT, "an object");
    for (const JsonNode& item : node.items) {
        if (std::find(names.begin(), names.end(), item.name) == names.end()) {
            std::string known;
            for (const std::string_view name : names) {
                known += (known.empty() ? "" : ", ") + std::string(name);
            }
            fail(item, "one of " + known + ", found \"" + item.name + '"');
        }
    }
}

double number(const JsonNode& node) {
    requireKind(node, JsonNode::Kind::NUMBER, "a number");
    if (!(std::abs(node.number) <= LARGEST)) {
        fail(node, "a number of at most 1e15 for " + nameOf(node));
    }
    return node.number;
}

double positive(const JsonNode& node) {
    if (number(node) <= 0.0) {
        fail(node, "a number above 0 for " + nameOf(node));
    }
    if (node.number < SHORTEST) {
        fail(node, "a number of at least 0.000001 for " + nameOf(node));
    }
    return node.number;
}

double notNegative(const JsonNode& node) {
    if (number(node) < 0.0) {
        fail(node, "0 or more for " + nameOf(node));
    }
    return node.number;
}

double wholeNumber(const JsonNode& node, double least, double most) {
    if (number(node) != std::floor(node.number) || node.number < least || node.number > most) {
        fail(node, "a whole number from " + std::to_string(static_cast<std::int64_t>(least)) + " to " +
                       std::to_string(static_cast<std::int64_t>(most)) + " for " + nameOf(node));
    }
    return node.number;
}

const std::vector<JsonNode>& list(const JsonNode& node) {
    requireKind(node, JsonNode::Kind::LIST, "a list");
    if (node.items.empty()) {
        fail(node, "at least one element in " + nameOf(node));
    }
    return node.items;
}

std::vector<Curve::Point> readPoints(const JsonNode& node, double period) {
    std::vector<Curve::Point> points;
    for (const JsonNode& item : list(node)) {
        if (item.kind != JsonNode::Kind::LIST || item.items.size() != 2) {
            fail(item, "a pair [seconds, value] in " + nameOf(node));
        }
        const Curve::Point point = {number(item.items[0]), number(item.items[1])};
        if (point.time < 0.0 || point.time >= period ||
            (!points.empty() && point.time <= points.back().time)) {
            fail(item, "ascending times from 0 to below the period");
        }
        points.push_back(point);
    }
    return points;
}

Curve readCurve(const JsonNode& node, double commonPeriod) {
    if (node.kind == JsonNode::Kind::NUMBER) {
        return Curve({{0.0, number(node)}}, commonPeriod, true);
    }
    if (node.kind == JsonNode::Kind::LIST) {
        return Curve(readPoints(node, commonPeriod), commonPeriod, false);
    }
    if (node.kind != JsonNode::Kind::OBJECT) {
        fail(node, "a number, a list of points or an object for " + nameOf(node));
    }
    requireObject(node, {"period", "points", "steps"});
    const JsonNode* const ownPeriod = node.find("period");
    const double period = ownPeriod != nullptr ? positive(*ownPeriod) : commonPeriod;
    const JsonNode* const points = node.find("points");
    const JsonNode* const steps = node.find("steps");
    if ((points == nullptr) == (steps == nullptr)) {
        fail(node, "either \"points\" or \"steps\" in " + nameOf(node));
    }
    return Curve(readPoints(steps != nullptr ? *steps : *points, period), period, steps != nullptr);
}

std::string curveName(const JsonNode& node, const Script& script) {
    requireKind(node, JsonNode::Kind::TEXT, "the name of a curve");
    if (script.curves.count(node.text) == 0) {
        fail(node, "the name of a curve for " + nameOf(node) + ", found \"" + node.text + '"');
    }
    return node.text;
}

void readTotals(const JsonNode& node, Script& script) {
    requireKind(node, JsonNode::Kind::OBJECT, "an object");
    for (const JsonNode& item : node.items) {
        requireObject(item, {"curve", "per_second", "start"});
        if (script.curves.count(item.name) != 0) {
            fail(item, "another name for the total: \"" + item.name + "\" is a curve");
        }
        const JsonNode* const start = item.find("start");
        script.totals[item.name] = {curveName(member(item, "curve"), script),
                                    notNegative(member(item, "per_second")),
                                    start != nullptr ? notNegative(*start) : 0.0};
    }
}

std::vector<double> readValues(const JsonNode& node, double least, std::size_t count) {
    std::vector<double> values;
    for (const JsonNode& item : list(node)) {
        values.push_back(wholeNumber(item, least, MAX_VALUE));
    }
    if (values.size() > MAX_VALUES || (count != 0 && values.size() != count)) {
        fail(node, count != 0 ? "as many numbers in \"add\" as in \"values\""
                              : "1 to 6 numbers in " + nameOf(node));
    }
    return values;
}

/// A pass, or several ones alike when it repeats.
void readPass(const JsonNode& node, std::vector<ScriptedPass>& passes) {
    requireObject(node, {"start", "duration", "values", "repeat"});
    const double start = notNegative(member(node, "start"));
    const double duration = notNegative(member(node, "duration"));
    std::vector<double> values = readValues(member(node, "values"), 0.0, 0);
    std::vector<double> growth(values.size(), 0.0);
    int count = 1;
    double every = 0.0;
    if (const JsonNode* const repeat = node.find("repeat")) {
        requireObject(*repeat, {"count", "every", "add"});
        count = static_cast<int>(wholeNumber(member(*repeat, "count"), 1.0, MAX_REPETITIONS));
        every = notNegative(member(*repeat, "every"));
        if (const JsonNode* const add = repeat->find("add")) {
            growth = readValues(*add, -MAX_VALUE, values.size());
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

/// Where the last frame ends, in milliseconds.
double endOf(const std::vector<ScriptedFrame>& frames) {
    return frames.empty() ? 0.0 : frames.back().startMs + frames.back().durationMs;
}

void readScript(const JsonNode& root, Script& script) {
    requireObject(root, {"period", "curves", "totals", "counters", "frames"});
    const double period = positive(member(root, "period"));
    const JsonNode& curves = member(root, "curves");
    requireKind(curves, JsonNode::Kind::OBJECT, "an object");
    for (const JsonNode& item : curves.items) {
        script.curves.emplace(item.name, readCurve(item, period));
    }
    if (const JsonNode* const totals = root.find("totals")) {
        readTotals(*totals, script);
    }
    if (const JsonNode* const counters = root.find("counters")) {
        requireObject(*counters, {"usage", "vertex_activity", "fragment_activity"});
        script.counters = {curveName(member(*counters, "usage"), script),
                           curveName(member(*counters, "vertex_activity"), script),
                           curveName(member(*counters, "fragment_activity"), script)};
    }
    if (const JsonNode* const frames = root.find("frames")) {
        for (const JsonNode& item : list(*frames)) {
            requireObject(item, {"duration", "passes"});
            const double start = endOf(script.frames);
            ScriptedFrame frame = {start, positive(member(item, "duration")), {}};
            for (const JsonNode& pass : list(member(item, "passes"))) {
                readPass(pass, frame.passes);
            }
            script.frames.push_back(std::move(frame));
        }
    }
}

}  // namespace

std::string Script::read(const std::string& path, std::string_view text) {
    try {
        readScript(parseJson(text), *this);
        return {};
    } catch (const ScriptError& error) {
        return path + ':' + std::to_string(error.line) + ": " + error.message;
    }
}

std::optional<ScriptedFrame> Script::frameAt(double seconds) const {
    if (frames.empty()) {
        return std::nullopt;
    }
    const double timeMs = seconds * MS_PER_SECOND;
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
