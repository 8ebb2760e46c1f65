#include "utils/UpdateHelper.h"

#include "utils/Time.h"

namespace {

constexpr std::uint32_t UPDATE_INTERVAL_US = 120000;

}  // namespace

UpdateHelper::UpdateHelper() {
    initUpdateHelper();
}

void UpdateHelper::initUpdateHelper() {
    mFrameCount = 0;
    mLastUpdateTime = 0;
    mUpdateDuration = 0.0;
}

void UpdateHelper::incFrameCount() {
    ++mFrameCount;
}

bool UpdateHelper::isUpdateDuration() {
    const std::uint32_t now = utils::getUtcTime_usec();
    if (mLastUpdateTime == 0) {
        mLastUpdateTime = now;
    }
    const std::uint32_t passed = now - mLastUpdateTime;
    if (passed < UPDATE_INTERVAL_US) {
        return false;
    }
    mUpdateDuration = passed;
    mLastUpdateTime = now;
    return true;
}

void UpdateHelper::resetUpdateDuration() {
    mUpdateDuration = 0.0;
    mFrameCount = 0;
}
