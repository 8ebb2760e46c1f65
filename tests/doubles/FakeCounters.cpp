#include "doubles/FakeCounters.h"

#include "core/HWcounterAdreno.h"

#include <new>

namespace core {

HWcounter::HWcounter() : mState(0) {}
HWcounter::~HWcounter() = default;
int HWcounter::init() {
    return mState = doubles::counters().isReady ? 1 : 3;
}
void HWcounter::deInit() {
    mState = 0;
}
bool HWcounter::readGpuUsage(double* usage) {
    *usage = 12.5;
    return true;
}
bool HWcounter::readGpuActivity(unsigned long long* timestamp, double* usage, double* vertexActivity,
                                double* fragmentActivity) {
    const unsigned read = ++doubles::counters().reads;
    if (read == doubles::counters().failingRead) {
        throw std::bad_alloc();
    }
    *timestamp = 1000000ULL * read;
    *usage = read;
    *vertexActivity = 0.25;
    *fragmentActivity = 0.5 / read;
    return true;
}
bool HWcounter::getCpuGpuTimeDiff(unsigned long long* diff) {
    *diff = 111;
    return true;
}
bool HWcounter::getRealtimeMonotonictimeDiff(unsigned long long* diff) {
    *diff = 222;
    return true;
}

}  // namespace core
