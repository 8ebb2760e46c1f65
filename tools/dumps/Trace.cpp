#include "dumps/Trace.h"

#include "dumps/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace dumps {

namespace {

using nlohmann::json;

constexpr int PROCESS = 1;
constexpr int FRAME_TRACK = 1;
constexpr int PASS_TRACK = 2;
constexpr double US_PER_MS = 1000.0;

/// Writes events one by one: a long dump has millions of them.
class EventWriter {
public:
    explicit EventWriter(std::ostream& out) : mOut(out) {}

    void write(const json& event) {
        mOut << (mIsFirst ? "\n" : ",\n") << event.dump(-1, ' ', false, json::error_handler_t::replace);
        mIsFirst = false;
    }

    void name(const char* what, int track, const std::string& text) {
        write({{"ph", "M"}, {"name", what}, {"pid", PROCESS}, {"tid", track}, {"args", {{"name", text}}}});
    }

    void slice(int track, const std::string& name, double startUs, double durationUs, const json& details) {
        write({{"ph", "X"},
               {"name", name},
               {"pid", PROCESS},
               {"tid", track},
               {"ts", startUs},
               {"dur", durationUs},
               {"args", details}});
    }

    void counter(const std::string& name, double timeUs, double figure) {
        write({{"ph", "C"}, {"name", name}, {"pid", PROCESS}, {"ts", timeUs}, {"args", {{"value", figure}}}});
    }

private:
    std::ostream& mOut;
    bool mIsFirst = true;
};

void writeNames(const Dump& dump, EventWriter& events) {
    events.name("process_name", 0, "Frame dump " + dump.folder);
    events.name("thread_name", FRAME_TRACK, "Frames");
    events.name("thread_name", PASS_TRACK, "Render passes");
}

/// A counter keeps its figure until the next event, so only changes and the last frame need one.
void writeValue(const DumpedValue& value, const std::vector<double>& elapsedMs, EventWriter& events) {
    const std::string name = value.unit.empty() ? value.name : value.name + " (" + value.unit + ')';
    double last = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t i = 0; i < value.figures.size(); ++i) {
        const double figure = value.figures[i];
        const bool isLastFrame = i + 1 == value.figures.size();
        if (std::isfinite(figure) && (figure != last || isLastFrame)) {
            events.counter(name, elapsedMs[i] * US_PER_MS, figure);
            last = figure;
        }
    }
}

void writeFrames(const Dump& dump, const std::vector<double>& elapsedMs, EventWriter& events) {
    for (const FrameTime& time : frameTimes(dump).times) {
        const DumpedFrame& frame = dump.frames[time.frame];
        const double endUs = elapsedMs[time.frame] * US_PER_MS;
        const double durationUs = time.milliseconds * US_PER_MS;
        events.slice(FRAME_TRACK, "Frame", endUs - durationUs, durationUs,
                     {{"frame", frame.number}, {"timestampMs", frame.timestampMs}});
        events.counter("Frame time (ms)", endUs - durationUs, time.milliseconds);
    }
}

void writePassesOfFrame(const Dump& dump, const PassGroup& group, double startUs, EventWriter& events) {
    const DumpedFrame& frame = dump.frames[dump.passes[group.first].frame];
    events.slice(PASS_TRACK, "Passes of frame " + std::to_string(frame.passFrameId), startUs,
                 group.lengthMs * US_PER_MS,
                 {{"frameId", frame.passFrameId},
                  {"recordedWithFrame", frame.number},
                  {"frameDurationMs", frame.passFrameMs},
                  {"passes", group.count}});
    double passUs = startUs;
    for (std::size_t i = 0; i < group.count; ++i) {
        const DumpedPass& pass = dump.passes[group.first + i];
        const double durationUs = pass.durationMs * US_PER_MS;
        events.slice(PASS_TRACK, "Pass " + std::to_string(i), passUs, durationUs,
                     {{"firstValue", pass.firstValue}, {"secondValue", pass.secondValue}});
        passUs += durationUs;
    }
}

void writePasses(const Dump& dump, const std::vector<double>& elapsedMs, EventWriter& events) {
    double freeUs = 0.0;
    for (const PassGroup& group : groupPasses(dump)) {
        // Slices of one track must not overlap, and time stamps are only right to a millisecond.
        const double startUs = std::max(freeUs, elapsedMs[dump.passes[group.first].frame] * US_PER_MS);
        writePassesOfFrame(dump, group, startUs, events);
        freeUs = startUs + group.lengthMs * US_PER_MS;
    }
}

}  // namespace

void writeTrace(const Dump& dump, std::ostream& out) {
    out << "{\"displayTimeUnit\":\"ms\",\"traceEvents\":[";
    const std::vector<double> elapsedMs = elapsedTimes(dump);
    EventWriter events(out);
    writeNames(dump, events);
    for (const DumpedValue& value : dump.values) {
        if (value.hasFigures()) {
            writeValue(value, elapsedMs, events);
        }
    }
    writeFrames(dump, elapsedMs, events);
    writePasses(dump, elapsedMs, events);
    out << "\n]}\n";
}

}  // namespace dumps
