#pragma once

#include "gui/RenderPassData.h"
#include "utils/Export.h"

#include <cstdint>
#include <vector>

namespace gui {

/// A layer's measurements of one frame's render passes. The layer fills it and hands it to a render-pass
/// drawer, which keeps a copy. A value type.
class KORDANIX_EXPORT FrameData {
public:
    FrameData(unsigned int frameId, const std::vector<RenderPassData>& renderPasses);

    void addRenderPassInfo(const RenderPassData& renderPass);

    /// Milliseconds. Stored unchanged, even an end before the start.
    void addFrameTimeInfo(long double start, long double end);

    /// Whether the frame ends after its start and has render passes.
    bool isValid() const;

    std::uint32_t mFrameId;
    std::vector<RenderPassData> mRenderPasses;  ///< in the order of adding
    long double mStartTime = 0;
    long double mEndTime = 0;
};

}  // namespace gui
