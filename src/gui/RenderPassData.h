#pragma once

#include "utils/Export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace gui {

/// What a layer measured of one render pass. A value type. Time stamps share one base with their frame and
/// are milliseconds.
class KORDANIX_EXPORT RenderPassData {
public:
    RenderPassData(float auxValue, const std::vector<unsigned int>& values);

    void setIndex(unsigned int index);
    void addValue(unsigned int value);

    /// An end before the start is raised to the start, so that no pass has a negative duration.
    void addTimestampInfo(long double start, long double end);

    std::uint32_t mIndex = 0;            ///< the pass's number as the layer counts
    float mAuxValue;                     ///< the layer's; only carried along
    std::vector<std::uint32_t> mValues;  ///< shown as numbers, the first two also written into dumps
    long double mStartTime = 0;
    long double mEndTime = 0;
    std::vector<std::string> mTexts;  ///< laid out by the drawer that shows the pass, in its own copy
};

}  // namespace gui
