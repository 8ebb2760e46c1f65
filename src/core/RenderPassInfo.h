#pragma once

#include "utils/Export.h"

#include <vector>

namespace core {

/// The draw calls and the payload of each render pass; a layer fills and reads it. One thread at a time.
class KORDANIX_EXPORT RenderPassInfo {
public:
    /// Removes all passes but keeps the memory.
    void reset();

    int getRenderPassCount() const;

    /// Sets only the count; the recorded passes stay.
    void setRenderPassCount(int count);

    /// Adds a pass.
    void addRenderPassInfo(unsigned int drawCalls, unsigned int payload);

    /// The figures of a recorded pass; the index must be below the number of recorded passes.
    int getDrawCallCount(int index) const;
    int getPayloadCount(int index) const;

    int mRenderPassCount = 0;
    std::vector<unsigned int> mDrawCallCounts;  ///< in recording order
    std::vector<unsigned int> mPayloadCounts;   ///< in recording order
};

}  // namespace core
