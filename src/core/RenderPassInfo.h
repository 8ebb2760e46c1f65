#pragma once

#include "utils/Export.h"

#include <vector>

namespace core {

/// Draw calls and payload of each render pass, for a layer to fill and read. Belongs to one thread at a time.
class KORDANIX_EXPORT RenderPassInfo {
public:
    /// Forgets all passes and keeps the storage.
    void reset();

    int getRenderPassCount() const;

    /// Sets the count alone; the recorded passes stay as they are.
    void setRenderPassCount(int count);

    /// Records one more pass.
    void addRenderPassInfo(unsigned int drawCalls, unsigned int payload);

    /// Figures of a recorded pass; the index must be below the number of passes recorded.
    int getDrawCallCount(int index) const;
    int getPayloadCount(int index) const;

    int mRenderPassCount = 0;
    std::vector<unsigned int> mDrawCallCounts;  ///< in recording order
    std::vector<unsigned int> mPayloadCounts;   ///< in recording order
};

}  // namespace core
