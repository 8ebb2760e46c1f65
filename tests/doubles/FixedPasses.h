#pragma once

#include "scene/RenderPassSource.h"

#include <utility>
#include <vector>

namespace doubles {

/// The same passes in every captured frame: of a millisecond each, one after the other, all with these
/// values.
class FixedPasses : public scene::RenderPassSource {
public:
    FixedPasses(unsigned count, std::vector<unsigned> values) : mCount(count), mValues(std::move(values)) {}

    bool readFrame(gui::FrameData& frame, scene::Reading /*captureStart*/) override {
        for (unsigned i = 0; i < mCount; ++i) {
            gui::RenderPassData pass(0.0F, mValues);
            pass.setIndex(i);
            pass.addTimestampInfo(i, i + 1);
            frame.addRenderPassInfo(pass);
        }
        frame.addFrameTimeInfo(0, mCount);
        ++reads;
        return true;
    }

    unsigned reads = 0;  ///< frames that were read

private:
    unsigned mCount;
    std::vector<unsigned> mValues;
};

}  // namespace doubles
