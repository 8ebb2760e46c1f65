#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

/// Prints the medians of all benchmarks in a table, beside their targets. A target is a time, or a multiple
/// of another benchmark of the same run; it may also limit the number of allocations.
class TableReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    /// Whether the run met every target.
    bool areTargetsMet() const { return mAreTargetsMet; }

private:
    struct Median {
        double nanoseconds = 0.0;
        double allocations = 0.0;
    };
    std::map<std::string, Median> mMedians;
    bool mAreTargetsMet = true;
};

}  // namespace bench
