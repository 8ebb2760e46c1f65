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
    if (argc != 2) {
        return 1;
    }
    const double time = std::strtod(argv[1], nullptr);
    simulator::setTime(time);
    std::printf("error=%s\n", simulator::deviceError().c_str());

    core::StateInfo state;
    std::printf("deviceModel=%d\n", utils::deviceModel);
    std::printf("vendor=%d\n", core::StateInfo::mVendor);
    std::printf("gpuMaxClock=%f\n", core::StateInfo::getGPUMaxClock());
    std::printf("gpuClock=%f\n", core::StateInfo::getGPUClock());
    std::printf("gpuUsage=%f\n", core::StateInfo::getGPUUsage());
    std::printf("gpuTemperature=%f\n", core::StateInfo::getGPUTemperature());
    std::printf("cpuTemperature=%f\n", core::StateInfo::getCPUTemperature());
    std::printf("memoryUsage=%u\n", static_cast<unsigned int>(core::StateInfo::getMemoryUsage()));
    std::printf("process=%s\n", utils::getProcessName().c_str());
    unsigned long long gpuMemory = 0;
    if (std::FILE* const file = core::StateInfo::file_open("/sys/kernel/gpu/gpu_mem_total", "r")) {
        if (std::fscanf(file, "%llu", &gpuMemory) != 1) {
            gpuMemory = 0;
        }
        core::StateInfo::file_close(file);
    }
    std::printf("gpuMemory=%llu\n", gpuMemory);
    state.getCurrentCPUUsage(1.0);
    simulator::setTime(time + 1.0);
    std::printf("cpuTicks=%f\n", state.getCurrentCPUUsage(100000.0));

    simulator::setTime(time);
    core::HWcounterThread counters(static_cast<core::RenderingApiType>(0));
    counters.startCapturing(10);
    while (counters.mIsCapturing) {
        std::this_thread::yield();
    }
    counters.finishCapturing();
    double usage = -1.0;
    counters.getGpuUsage(usage);
    std::printf("counterState=%d\ncounterUsage=%f\n", counters.mState, usage);
    std::printf("samples=%zu\n", counters.mVertexActivity.size());
    if (!counters.mVertexActivity.empty()) {
        std::printf("firstTime=%.7f\n", counters.mVertexActivity.front().time);
        std::printf("lastTime=%.7f\n", counters.mVertexActivity.back().time);
        std::printf("lastVertex=%f\n", static_cast<double>(counters.mVertexActivity.back().activity));
        std::printf("lastFragment=%f\n", static_cast<double>(counters.mFragmentActivity.back().activity));
    }
    return 0;
}
