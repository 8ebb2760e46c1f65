#include "gui/RenderPassData.h"

#include <algorithm>

namespace gui {

RenderPassData::RenderPassData(float auxValue, const std::vector<unsigned int>& values)
    : mAuxValue(auxValue), mValues(values) {}

void RenderPassData::setIndex(unsigned int index) {
    mIndex = index;
}

void RenderPassData::addValue(unsigned int value) {
    mValues.push_back(value);
}

void RenderPassData::addTimestampInfo(long double start, long double end) {
    mStartTime = start;
    mEndTime = std::max(start, end);
}

}  // namespace gui
