// The counter source for simulated devices, built in place of core/HWcounterAdreno.cpp.

#include "core/HWcounterAdreno.h"
#include "core/StateInfo.h"
#include "simulator/SimulatedGpu.h"

#include <time.h>

#include <cmath>

/// Null in an executable that simulates no devices; the source is then unavailable.
extern "C" __attribute__((weak)) bool kordanixSimulatedGpu(KordanixSimulatedMoment moment,
                                                           KordanixSimulatedGpu* sample);

namespace core {

namespace {

constexpr int NOT_INITIALISED = 0;
constexpr int READY = 1;
constexpr int UNAVAILABLE = 3;
constexpr double US_PER_SECOND = 1000000.0;

bool readSample(KordanixSimulatedMoment moment, KordanixSimulatedGpu& sample) {
    return kordanixSimulatedGpu != nullptr && kordanixSimulatedGpu(moment, &sample);
}

unsigned long long clockUs(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<unsigned long long>(time.tv_sec) * 1000000ULL +
           static_cast<unsigned long long>(time.tv_nsec) / 1000ULL;
}

}  // namespace

HWcounter::HWcounter() : mState(NOT_INITIALISED) {}

HWcounter::~HWcounter() {
    deInit();
}

int HWcounter::init() {
    if (mState != READY && mState != UNAVAILABLE) {
        KordanixSimulatedGpu sample = {};
        const bool isReady = StateInfo::getGPUClock() >= 0.0F && readSample(KORDANIX_SIMULATED_NOW, sample);
        mState = isReady ? READY : UNAVAILABLE;
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
    KordanixSimulatedGpu sample = {};
    if (mState != READY || !readSample(KORDANIX_SIMULATED_NOW, sample)) {
        return false;
    }
    *usage = sample.usage;
    return true;
}

bool HWcounter::readGpuActivity(unsigned long long* timestamp, double* usage, double* vertexActivity,
                                double* fragmentActivity) {
    KordanixSimulatedGpu sample = {};
    if (mState != READY || !readSample(KORDANIX_SIMULATED_SAMPLE, sample)) {
        return false;
    }
    *timestamp = static_cast<unsigned long long>(std::llround(sample.seconds * US_PER_SECOND));
    *usage = sample.usage;
    *vertexActivity = sample.vertexActivity;
    *fragmentActivity = sample.fragmentActivity;
    return true;
}

// The library asks for one of these two offsets before a capture's first sample, so they begin the capture.

bool HWcounter::getCpuGpuTimeDiff(unsigned long long* diff) {
    *diff = 0;
    KordanixSimulatedGpu sample = {};
    if (mState != READY || !readSample(KORDANIX_SIMULATED_CAPTURE, sample)) {
        return false;
    }
    *diff = clockUs(CLOCK_REALTIME) - static_cast<unsigned long long>(sample.seconds * US_PER_SECOND);
    return true;
}

bool HWcounter::getRealtimeMonotonictimeDiff(unsigned long long* diff) {
    *diff = 0;
    KordanixSimulatedGpu sample = {};
    if (mState != READY || !readSample(KORDANIX_SIMULATED_CAPTURE, sample)) {
        return false;
    }
    *diff = clockUs(CLOCK_REALTIME) - clockUs(CLOCK_MONOTONIC);
    return true;
}

}  // namespace core
