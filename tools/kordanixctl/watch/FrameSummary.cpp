#include "watch/FrameSummary.h"

#include "figures/TextFormat.h"

#include <algorithm>
#include <cmath>

namespace control {

FrameSummary::FrameSummary(const platform::FigureReport& report, std::size_t count) {
    using Frame = platform::FigureReport::Frame;
    std::vector<double> sorted;
    const auto known = static_cast<std::size_t>(
        std::count_if(report.lastFrames.begin(), report.lastFrames.end(),
                      [](const Frame& frame) { return std::isfinite(frame.total) && frame.total >= 0.0F; }));
    count = std::min(count, known);
    for (auto frame = report.lastFrames.end() - static_cast<std::ptrdiff_t>(count);
         frame != report.lastFrames.end(); ++frame) {
        const double total = frame->total;
        const double gpu = std::clamp<double>(frame->gpu, 0.0, total);
        const double swap = std::clamp<double>(frame->swap, 0.0, total - gpu);
        mFrames.push_back({total - gpu - swap, gpu, swap});
        sorted.push_back(total);
    }
    if (sorted.empty()) {
        return;
    }
    const double last = sorted.back();
    std::sort(sorted.begin(), sorted.end());
    const double median = sorted[sorted.size() / 2];
    const double slow = sorted[(sorted.size() * 99 + 99) / 100 - 1];
    // One frame of a second must not make all others invisible.
    mTop = std::max({std::min(sorted.back(), 4.0 * median), slow, 1e-3}) * 1.05;
    const auto text = [](double ms) { return figures::formatNumber(ms, ms < 9.995 ? 2 : 1, ""); };
    mText = text(last) + "ms  median " + text(median) + "  99% " + text(slow) + "  longest " +
            text(sorted.back());
}

}  // namespace control
