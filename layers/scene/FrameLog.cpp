#include "scene/FrameLog.h"

#include "figures/Metrics.h"

#include <ostra/FrameLog.h>

#include <algorithm>
#include <limits>

namespace scene {

FrameLog::FrameLog() {
    if (Ostra::setLogColumns == nullptr) {
        return;
    }
    std::vector<const char*> names;
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.column.name != nullptr) {
            mFigures.push_back(&figure);
            names.push_back(figure.column.name);
        }
    }
    mValues.resize(names.size());
    Ostra::setLogColumns(names);
}

void FrameLog::tell(const figures::Metrics& metrics) {
    constexpr double NO_FIGURE = std::numeric_limits<double>::quiet_NaN();
    if (Ostra::setLogValues != nullptr) {
        std::transform(mFigures.begin(), mFigures.end(), mValues.begin(), [&](const figures::Figure* figure) {
            return metrics.reading(*figure).value_or(NO_FIGURE);
        });
        Ostra::setLogValues(mValues.data(), mValues.size());
    }
}

void FrameLog::tellNothing() {
    if (Ostra::setLogValues != nullptr) {
        Ostra::setLogValues(nullptr, 0);
    }
}

void FrameLog::tellFrame(FrameTimes& times) {
    if (Ostra::logFrame != nullptr) {
        const FrameTime& frame = times.ago(0);
        times.setLogged(Ostra::logFrame({times.swappedAt(), frame.total, frame.swap, frame.overlay}));
    }
}

void FrameLog::tellGpu(const FrameTime& frame) {
    if (Ostra::setLoggedGpuTime != nullptr) {
        Ostra::setLoggedGpuTime(frame.logged, static_cast<std::uint64_t>(frame.gpu));
    }
}

bool FrameLog::isWritten() const {
    return Ostra::isLogging != nullptr && Ostra::isLogging();
}

}  // namespace scene
