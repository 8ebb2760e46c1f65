#pragma once

#include "utils/Export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace gui {

/// A layer's measurements of one render pass. A value type. Time stamps are milliseconds and have the same
/// base as the frame's.
class KORDANIX_EXPORT RenderPassData {
public:
    RenderPassData(float auxValue, const std::vector<unsigned int>& values);

    void setIndex(unsigned int index);
    void addValue(unsigned int value);

    /// Raises an end before the start to the start, so that no pass has a negative duration.
    void addTimestampInfo(long double start, long double end);

    std::uint32_t mIndex = 0;            ///< the pass's number, as the layer counts
    float mAuxValue;                     ///< for the layer; the library does not use it
    std::vector<std::uint32_t> mValues;  ///< shown as numbers; dumps get the first two
    long double mStartTime = 0;
    long double mEndTime = 0;
    std::vector<std::string> mTexts;  ///< set by the drawer that shows the pass, in its own copy
};

}  // namespace gui
