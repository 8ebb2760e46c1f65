#include "doubles/FakeOstra.h"

#include <utility>

namespace {

doubles::CompanionLibrary& called(const char* name) {
    doubles::companion().calls.emplace_back(name);
    return doubles::companion();
}

}  // namespace

namespace Ostra {

void registerAppBecomeBackgroundListener(std::function<void()> listener) {
    called(__func__).listeners.push_back(std::move(listener));
}
bool fixClock(unsigned long long cpuClock, unsigned long long gpuClock) {
    called(__func__).clockRequests.emplace_back(cpuClock, gpuClock);
    return doubles::companion().fixClockResult;
}
void unfixClock() {
    called(__func__);
}
std::vector<KeyEvent> receiveKeyEvents() {
    return std::exchange(doubles::companion().keyEvents, {});
}
void startDumping(const std::vector<DumpWidgetMeta>& metas) {
    called(__func__).metas = metas;
}
void addDump(const FrameDump& dump) {
    called(__func__).dumps.push_back(dump);
}
void finishDumping() {
    called(__func__);
}

}  // namespace Ostra
