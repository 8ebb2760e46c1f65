#include "opengl/passes/GpuTimer.h"

#include "opengl/passes/TimeStamps.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace opengl {

namespace {

std::uint64_t monotonicNanoseconds() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(time).count());
}

}  // namespace

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
        if (!mGl.features.softwareRaster) {
            mGl.queryCounter(queriesOf(mStamped)[0], GL_TIMESTAMP);
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
        mSwaps[mStamped % LONGEST_DELAY] = monotonicNanoseconds();
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
    GLuint64 start = std::max(mSwaps[mRead % LONGEST_DELAY], mLastEnd);
    GLuint64 end = 0;
    if (!mGl.features.softwareRaster) {
        mGl.getQueryObjectui64v(queries[0], GL_QUERY_RESULT, &start);
    }
    mGl.getQueryObjectui64v(queries[1], GL_QUERY_RESULT, &end);
    mLastEnd = mGl.features.softwareRaster ? end : 0;
    if (wasDisjoint(mGl)) {
        mDistrusted = mStamped - mRead;
    }
    if (mDistrusted == 0) {
        mTime = {mNames[mRead % LONGEST_DELAY], (end - start) & mMask};
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
