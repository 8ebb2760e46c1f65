#include "core/HWcounterAdreno.h"

namespace core {

HWcounter::HWcounter() : mState(NOT_INITIALISED) {}

HWcounter::~HWcounter() {
    deInit();
}

int HWcounter::init() {
    if (mState != READY) {
        mState = UNAVAILABLE;
    }
    return mState;
}

void HWcounter::deInit() {
    if (mState == READY) {
        mState = NOT_INITIALISED;
    }
}

bool HWcounter::readGpuUsage(double* usage) {
    *usage = 0.0;
    return false;
}

bool HWcounter::readGpuActivity(unsigned long long* /*timestamp*/, double* /*usage*/,
                                double* /*vertexActivity*/, double* /*fragmentActivity*/) {
    return false;
}

bool HWcounter::getCpuGpuTimeDiff(unsigned long long* diff) {
    *diff = 0;
    return false;
}

bool HWcounter::getRealtimeMonotonictimeDiff(unsigned long long* diff) {
    *diff = 0;
    return mState == READY;
}

}  // namespace core
