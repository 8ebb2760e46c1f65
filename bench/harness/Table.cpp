#include "Table.h"

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>

namespace bench {
namespace {

struct Extra {
    double swap = 0.0;
    double instructions = 0.0;
};

Extra extraOver(const Samples& bare, const Samples& row) {
    std::vector<double> differences;
    for (std::size_t round = 0; round < std::min(bare.swap.size(), row.swap.size()); ++round) {
        differences.push_back(row.swap[round] - bare.swap[round]);
    }
    return {median(differences), row.instructions - bare.instructions};
}

const Samples* find(const std::vector<Samples>& rows, const std::string& candidate) {
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const Samples& samples) { return samples.candidate == candidate; });
    return row == rows.end() ? nullptr : &*row;
}

void printTarget(std::ostream& out, const std::string& what, const Extra& ours, const Extra& most) {
    const auto verdict = [](double value, double limit) { return value <= limit ? "met" : "missed"; };
    out << "| " << what << " | " << std::setprecision(2) << ours.swap << " us of " << most.swap
        << " us: " << verdict(ours.swap, most.swap) << " | " << std::setprecision(1)
        << ours.instructions / 1000.0 << " k of " << most.instructions / 1000.0
        << " k: " << verdict(ours.instructions, most.instructions) << " |\n";
}

}  // namespace

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2.0;
}

double percentile(std::vector<double> values, double share) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}

void printPacing(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows) {
    out << "\n| " << mode.title << " | p50, ms | p95, ms | p99, ms |\n|---|---|---|---|\n"
        << std::fixed << std::setprecision(1);
    for (const Samples& row : rows) {
        out << "| " << row.candidate << " | " << median(row.p50) << " | " << median(row.p95) << " | "
            << median(row.p99) << " |\n";
    }
    const Samples* ours = find(rows, OURS);
    const Samples* theirs = find(rows, MANGOHUD);
    if (ours != nullptr && theirs != nullptr) {
        const bool isMet =
            median(ours->p95) <= median(theirs->p95) && median(ours->p99) <= median(theirs->p99);
        out << "\np95 and p99 no worse than mangohud's: " << (isMet ? "met" : "missed") << '\n';
    }
}

void printTable(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows) {
    out << "\n| " << mode.title << " | swap, us | over bare, us | instructions a frame, k | over bare, k |";
    out << (mode.hasPixels ? " picture changed |" : "") << "\n|---|---|---|---|---|"
        << (mode.hasPixels ? "---|" : "") << '\n'
        << std::fixed;
    for (const Samples& row : rows) {
        const Extra extra = extraOver(rows.front(), row);
        out << "| " << row.candidate << " | " << std::setprecision(2) << median(row.swap) << " | "
            << std::showpos << extra.swap << std::noshowpos << " | " << std::setprecision(1)
            << row.instructions / 1000.0 << " | " << std::showpos << extra.instructions / 1000.0
            << std::noshowpos << " |";
        if (mode.hasPixels) {
            out << ' ' << row.changed / 10.0 << " % |";
        }
        out << '\n';
    }
}

void printTargets(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows) {
    const Samples* ours = find(rows, OURS);
    const Samples* theirs = find(rows, MANGOHUD);
    const Samples* rate = find(rows, MANGOHUD_RATE);
    const Samples* bare = find(rows, BARE);
    if (ours == nullptr || theirs == nullptr || rate == nullptr || bare == nullptr) {
        return;
    }
    const Extra cost = extraOver(*bare, *ours);
    const Extra whole = extraOver(*bare, *theirs);
    out << "\n| target, " << mode.title << " | time | instructions |\n|---|---|---|\n" << std::fixed;
    printTarget(out, "at most a third of mangohud", cost, {whole.swap / 3.0, whole.instructions / 3.0});
    printTarget(out, "below mangohud, frame rate only", cost, extraOver(*bare, *rate));
}

void writeRounds(const std::string& path,
                 const std::vector<std::pair<std::string, std::vector<Samples>>>& modes) {
    nlohmann::json all;
    for (const auto& [mode, rows] : modes) {
        for (const Samples& row : rows) {
            all[mode][row.candidate] = {{"swap_us", row.swap},
                                        {"frame_us", row.frame},
                                        {"p50_ms", row.p50},
                                        {"p95_ms", row.p95},
                                        {"p99_ms", row.p99},
                                        {"instructions", row.instructions},
                                        {"changed_per_mille", row.changed}};
        }
    }
    std::ofstream(path) << all.dump(2) << '\n';
}

}  // namespace bench
