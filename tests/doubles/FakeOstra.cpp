#include "doubles/FakeOstra.h"

namespace doubles {

CompanionLibrary& companion() {
    static CompanionLibrary* const instance = new CompanionLibrary;
    return *instance;
}

void resetCompanion() {
    companion() = CompanionLibrary{};
}

}  // namespace doubles

using doubles::companion;

namespace Ostra {

void registerAppBecomeBackgroundListener(std::function<void()> listener) {
    companion().calls.emplace_back("registerAppBecomeBackgroundListener");
    companion().listeners.push_back(std::move(listener));
}

bool fixClock(unsigned long long cpuClock, unsigned long long gpuClock) {
    companion().calls.emplace_back("fixClock");
    companion().clockRequests.emplace_back(cpuClock, gpuClock);
    return companion().fixClockResult;
}

void unfixClock() {
    companion().calls.emplace_back("unfixClock");
}

std::vector<KeyEvent> receiveKeyEvents() {
    ++companion().polls;
    std::vector<KeyEvent> events;
    events.swap(companion().keyEvents);
    return events;
}

void startDumping(const std::vector<DumpWidgetMeta>& metas) {
    companion().calls.emplace_back("startDumping");
    companion().metas = metas;
}

void addDump(const FrameDump& dump) {
    companion().calls.emplace_back("addDump");
    companion().dumps.push_back(dump);
}

void finishDumping() {
    companion().calls.emplace_back("finishDumping");
}

}  // namespace Ostra
