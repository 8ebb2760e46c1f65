#include "core/HWcounterAdreno.h"

namespace core {

HWcounter::HWcounter() : mState(CounterState::NOT_INITIALISED) {}

HWcounter::~HWcounter() {
    deInit();
}

int HWcounter::init() {
    if (mState != CounterState::READY) {
        mState = CounterState::UNAVAILABLE;
    }
    return mState;
}

void HWcounter::deInit() {
    if (mState == CounterState::READY) {
        mState = CounterState::NOT_INITIALISED;
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
    return mState == CounterState::READY;
}

}  // namespace core
