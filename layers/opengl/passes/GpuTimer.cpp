#include "opengl/passes/GpuTimer.h"

#include <utility>

#include "opengl/passes/TimeStamps.h"

namespace opengl {

void GpuTimer::beginFrame(std::uint32_t frame, bool isTimed) {
    mNextFrame = frame;
    mIsWanted = isTimed;
}

bool GpuTimer::take(Time& time) {
    time = mTime;
    return std::exchange(mHasTime, false);
}

void GpuTimer::onFrameBegin(bool isProgramMeasuring) {
    if (!mIsWanted || mIsFailed || (mGl.version.isEs && isProgramMeasuring)) {
        return;
    }
    if (mMask == 0 && !prepare()) {
        mIsFailed = true;
        return;
    }
    if (mStamped - mRead < LONGEST_DELAY && canPutTimeStamp(mGl)) {
        mGl.queryCounter(queriesOf(mStamped)[0], GL_TIMESTAMP);
        // A software renderer draws a whole frame tile by tile, and takes both stamps at the end of the last
        // tile.
        if (mGl.features.softwareRaster) {
            mGl.flush();
        }
        mNames[mStamped % LONGEST_DELAY] = mNextFrame;
        mIsOpen = true;
    }
}

/// False when the context has no time stamps.
bool GpuTimer::prepare() {
    mMask = mGl.features.timerQueries ? timeStampMask(mGl) : 0;
    if (mMask != 0) {
        mGl.genQueries(static_cast<GLsizei>(mQueries.size()), mQueries.data());
        static_cast<void>(wasDisjoint(mGl));
    }
    return mMask != 0;
}

void GpuTimer::onFrameEnd() {
    if (!mIsWanted) {
        deleteQueries();
        return;
    }
    if (std::exchange(mIsOpen, false) && canPutTimeStamp(mGl)) {
        mGl.queryCounter(queriesOf(mStamped)[1], GL_TIMESTAMP);
        ++mStamped;
    }
    if (mRead != mStamped) {
        read();
    }
}

void GpuTimer::read() {
    if (!canReadTimeStamp(mGl)) {
        return;
    }
    const GLuint* const queries = queriesOf(mRead);
    GLuint isAvailable = GL_FALSE;
    mGl.getQueryObjectuiv(queries[1], GL_QUERY_RESULT_AVAILABLE, &isAvailable);
    if (isAvailable == GL_FALSE) {
        return;
    }
    GLuint64 times[2] = {};
    for (int i = 0; i < 2; ++i) {
        mGl.getQueryObjectui64v(queries[i], GL_QUERY_RESULT, &times[i]);
    }
    if (wasDisjoint(mGl)) {
        mDistrusted = mStamped - mRead;
    }
    if (mDistrusted == 0) {
        mTime = {mNames[mRead % LONGEST_DELAY], (times[1] - times[0]) & mMask};
        mHasTime = true;
    } else {
        --mDistrusted;
    }
    ++mRead;
}

void GpuTimer::release() {
    deleteQueries();
    mIsFailed = true;
}

void GpuTimer::deleteQueries() {
    if (mMask != 0) {
        mGl.deleteQueries(static_cast<GLsizei>(mQueries.size()), mQueries.data());
        mMask = 0;
        mIsOpen = false;
        mRead = mStamped;
        mDistrusted = 0;
    }
}

}  // namespace opengl
