// Prints what the library measures on the device that KORDANIX_DEVICE names, at the time in seconds that is
// the argument: which device it is, is settled while the library is loaded, so a test needs a new process.

#include "core/HWcounterThread.h"
#include "core/StateInfo.h"
#include "simulator/DeviceSimulator.h"
#include "utils/SystemInfoHelper.h"

#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int argc, char** argv) {
    const double time = argc == 2 ? std::strtod(argv[1], nullptr) : 0.0;
    const auto print = [](const char* name, double value) { std::printf("%s=%.7f\n", name, value); };
    simulator::setTime(time);
    std::printf("error=%s\n", simulator::deviceError().c_str());
    std::printf("process=%s\n", utils::getProcessName().c_str());

    core::StateInfo state;
    print("deviceModel", utils::deviceModel);
    print("vendor", core::StateInfo::mVendor);
    print("gpuMaxClock", core::StateInfo::getGPUMaxClock());
    print("gpuClock", core::StateInfo::getGPUClock());
    print("gpuUsage", core::StateInfo::getGPUUsage());
    print("gpuTemperature", core::StateInfo::getGPUTemperature());
    print("cpuTemperature", core::StateInfo::getCPUTemperature());
    print("memoryUsage", static_cast<double>(core::StateInfo::getMemoryUsage()));
    state.getCurrentCPUUsage(1.0);
    simulator::setTime(time + 1.0);
    print("cpuTicks", state.getCurrentCPUUsage(100000.0));

    simulator::setTime(time);
    core::HWcounterThread counters(static_cast<core::RenderingApiType>(0));
    counters.startCapturing(100);
    while (counters.mIsCapturing) {
        std::this_thread::yield();
    }
    counters.finishCapturing();
    double usage = -1.0;
    counters.getGpuUsage(usage);
    print("counterState", counters.mState);
    print("counterUsage", usage);
    print("samples", static_cast<double>(counters.mVertexActivity.size()));
    if (!counters.mVertexActivity.empty()) {
        print("firstTime", static_cast<double>(counters.mVertexActivity.front().time));
        print("lastTime", static_cast<double>(counters.mVertexActivity.back().time));
        print("lastVertex", static_cast<double>(counters.mVertexActivity.back().activity));
        print("lastFragment", static_cast<double>(counters.mFragmentActivity.back().activity));
    }
    return 0;
}
