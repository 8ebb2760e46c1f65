#include "scene/ExtraDump.h"

#include "figures/Metrics.h"
#include "utils/SystemInfoHelper.h"

#include <ostra/ExtraColumns.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <string>

namespace scene {

namespace {

constexpr const char* FRAME_COLUMNS[] = {"FrameTime(us)", "SwapTime(us)", "GpuTime(us)", "OverlayTime(us)"};
constexpr std::size_t FRAME_VALUES = std::size(FRAME_COLUMNS);
constexpr double NOTHING = std::numeric_limits<double>::quiet_NaN();

double toMicroseconds(std::int64_t nanoseconds) {
    constexpr double NS_PER_US = 1000.0;
    return nanoseconds == FrameTime::NOT_MEASURED ? NOTHING : static_cast<double>(nanoseconds) / NS_PER_US;
}

}  // namespace

ExtraDump::ExtraDump() {
    std::vector<const char*> names(std::begin(FRAME_COLUMNS), std::end(FRAME_COLUMNS));
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.column.name != nullptr && figure.column.slot == gui::WidgetValueType::NONE) {
            mFigures.push_back(&figure);
            names.push_back(figure.column.name);
        }
    }
    mValues.resize(names.size(), NOTHING);
    if (Ostra::setExtraColumns != nullptr) {
        Ostra::setExtraColumns(names);
    }
    if (Ostra::setDumpSubject != nullptr) {
        Ostra::setDumpSubject("Program", utils::getProcessName());
    }
}

void ExtraDump::tellSurface(const glm::uvec2& size) {
    if (Ostra::setDumpSubject != nullptr) {
        Ostra::setDumpSubject("Size", std::to_string(size.x) + " x " + std::to_string(size.y));
    }
}

void ExtraDump::tell(const figures::Metrics& metrics) {
    for (std::size_t i = 0; i < mFigures.size(); ++i) {
        mValues[FRAME_VALUES + i] = metrics.reading(*mFigures[i]).value_or(NOTHING);
    }
}

void ExtraDump::tellFrame(const FrameTime& frame, std::int64_t gpuNanoseconds) {
    if (Ostra::setExtraValues == nullptr) {
        return;
    }
    const std::int64_t times[] = {static_cast<std::int64_t>(frame.total),
                                  static_cast<std::int64_t>(frame.swap), gpuNanoseconds, frame.overlay};
    std::transform(std::begin(times), std::end(times), mValues.begin(), toMicroseconds);
    Ostra::setExtraValues(mValues.data(), mValues.size());
}

}  // namespace scene
