#include "TableReporter.h"

#include <cstdio>

namespace bench {

namespace {

struct Row {
    const char* what;
    const char* benchmark;
    double limit;           ///< nanoseconds, or a ratio if there is a reference
    const char* reference;  ///< another benchmark of the same run, or null
    double allocations;     ///< the most allocations an iteration; negative: no target
};

constexpr Row ROWS[] = {
    {"both hooks, overlay off", "HooksOff", 20.0, nullptr, 0},
    {"both hooks, overlay on, nothing changed", "HooksOn", 1.3, "BareRead/cmdline", -1},
    {"CPU load", "Reader/cpu_load", 2.0, "BareRead/stat", 0},
    {"CPU temperature", "Reader/cpu_temperature", 2.0, "BareRead/temp", 0},
    {"memory in use", "Reader/memory", 2.0, "BareRead/meminfo", 0},
    {"GPU load", "Reader/gpu_load", 2.0, "BareRead/gpu_busy", 0},
    {"GPU clock", "Reader/gpu_clock", 2.0, "BareRead/gpu_clock", 0},
    {"GPU temperature", "Reader/gpu_temperature", 2.0, "BareRead/gpu_tmu", 0},
    {"a full frame's drawing logic", "FullFrame", 10000.0, nullptr, 20},
    {"  of it the graphs", "FullFrameGraphs", 10000.0, nullptr, 0},
    {"getFPS, a sample", "GetFPS", 1000.0, nullptr, 0},
    {"both render-pass rows, 20 passes", "RenderPassRows", 40000.0, nullptr, -1},
    {"setData, 2,000 samples", "SetData", 20000.0, nullptr, 0},
    {"one dump record, 20 passes", "DumpRecord", 10000.0, nullptr, -1},
    {"a step of the marquee", "MarqueeStep", 100.0, nullptr, 0},
};

std::string inUnits(double nanoseconds) {
    char text[32];
    if (nanoseconds < 1000.0) {
        std::snprintf(text, sizeof text, "%.1f ns", nanoseconds);
    } else {
        std::snprintf(text, sizeof text, "%.2f us", nanoseconds / 1000.0);
    }
    return text;
}

std::string asRatio(double ratio) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f x", ratio);
    return text;
}

}  // namespace

bool TableReporter::ReportContext(const Context& /*context*/) {
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") {
            continue;
        }
        Median& median =
            mMedians[run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args)];
        median.nanoseconds = run.GetAdjustedCPUTime();
        const auto counter = run.counters.find("allocations");
        median.allocations = counter == run.counters.end() ? 0.0 : counter->second.value;
        std::fprintf(stderr, ".");
    }
}

void TableReporter::Finalize() {
    std::fprintf(stderr, "\n");
    std::printf(
        "| what | median | target | measured against it | allocations | met |\n|---|---|---|---|---|---|\n");
    for (const Row& row : ROWS) {
        const auto found = mMedians.find(row.benchmark);
        if (found == mMedians.end()) {
            continue;  // filtered out
        }
        const Median& median = found->second;
        std::string target = "at most " + inUnits(row.limit);
        std::string measured = inUnits(median.nanoseconds);
        bool isMet = median.nanoseconds <= row.limit;
        if (row.reference != nullptr) {
            const double reference = mMedians[row.reference].nanoseconds;
            const double ratio = reference > 0.0 ? median.nanoseconds / reference : 1e9;
            target = "at most " + asRatio(row.limit) + " open + read + close (" + inUnits(reference) + ")";
            measured = asRatio(ratio);
            isMet = ratio <= row.limit;
        }
        char allocations[48];
        if (row.allocations >= 0.0) {
            isMet = isMet && median.allocations <= row.allocations;
            std::snprintf(allocations, sizeof allocations, "%.1f (at most %.0f)", median.allocations,
                          row.allocations);
        } else {
            std::snprintf(allocations, sizeof allocations, "%.1f", median.allocations);
        }
        std::printf("| %s | %s | %s | %s | %s | %s |\n", row.what, inUnits(median.nanoseconds).c_str(),
                    target.c_str(), measured.c_str(), allocations, isMet ? "yes" : "NO");
        mAreTargetsMet = mAreTargetsMet && isMet;
    }
}

}  // namespace bench
