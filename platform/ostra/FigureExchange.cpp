#include "ostra/FigureExchange.h"

#include <time.h>

namespace platform {

namespace {

/// Of a clock that needs no system call.
std::int64_t nowMs() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1000000;
}

}  // namespace

void FigureExchange::ask() {
    mAskedUntil.store(nowMs() + ASKED_FOR_MS, std::memory_order_relaxed);
}

bool FigureExchange::isAsked() const {
    return nowMs() < mAskedUntil.load(std::memory_order_relaxed);
}

void FigureExchange::handOut() {
    mBack = mMiddle.exchange(mBack | FRESH, std::memory_order_acq_rel) & INDEX;
}

const FigureReport& FigureExchange::newest() {
    if ((mMiddle.load(std::memory_order_relaxed) & FRESH) != 0) {
        mFront = mMiddle.exchange(mFront, std::memory_order_acq_rel) & INDEX;
    }
    return mReports[mFront];
}

}  // namespace platform
