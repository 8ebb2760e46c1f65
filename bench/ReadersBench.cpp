#include "CountedLoop.h"
#include "Redirect.h"
#include "core/StateInfo.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>

namespace {

using core::StateInfo;

/// The kernel's cost of reading the file: no reader can be cheaper.
void bareRead(benchmark::State& state, const std::string& path) {
    const std::string real = bench::redirected(path);
    std::array<char, 4096> buffer{};
    for (auto _ : state) {
        const int file = open(real.c_str(), O_RDONLY);
        if (file < 0 || read(file, buffer.data(), buffer.size()) <= 0) {
            state.SkipWithError("the file cannot be read");
        }
        close(file);
        benchmark::DoNotOptimize(buffer);
    }
}

void reader(benchmark::State& state, float (*read)()) {
    if (read() < 0.0F) {
        state.SkipWithError("the reader has no figure");
        return;
    }
    bench::countedLoop(state, [read] { benchmark::DoNotOptimize(read()); });
}

float cpuLoad() {
    static StateInfo info;
    info.getCurrentCPUUsage(1.0);
    return info.getCurrentCPUUsage(1.0);
}

void cpuLoadReader(benchmark::State& state) {
    StateInfo info;
    info.getCurrentCPUUsage(1.0);
    if (cpuLoad() < 0.0F) {
        state.SkipWithError("the reader has no figure");
        return;
    }
    bench::countedLoop(state, [&info] { benchmark::DoNotOptimize(info.getCurrentCPUUsage(120000.0)); });
}

void memoryReader(benchmark::State& state) {
    bench::countedLoop(state, [] { benchmark::DoNotOptimize(StateInfo::getMemoryUsage()); });
}

BENCHMARK_CAPTURE(bareRead, cmdline, "/proc/self/cmdline")->Name("BareRead/cmdline");
BENCHMARK_CAPTURE(bareRead, stat, "/proc/self/stat")->Name("BareRead/stat");
BENCHMARK_CAPTURE(bareRead, meminfo, "/proc/meminfo")->Name("BareRead/meminfo");
BENCHMARK_CAPTURE(bareRead, temp, "/sys/class/thermal/thermal_zone0/temp")->Name("BareRead/temp");
BENCHMARK_CAPTURE(bareRead, gpu_busy, "/sys/kernel/gpu/gpu_busy")->Name("BareRead/gpu_busy");
BENCHMARK_CAPTURE(bareRead, gpu_clock, "/sys/kernel/gpu/gpu_clock")->Name("BareRead/gpu_clock");
BENCHMARK_CAPTURE(bareRead, gpu_tmu, "/sys/kernel/gpu/gpu_tmu")->Name("BareRead/gpu_tmu");

BENCHMARK(cpuLoadReader)->Name("Reader/cpu_load");
BENCHMARK(memoryReader)->Name("Reader/memory");
BENCHMARK_CAPTURE(reader, temp, &StateInfo::getCPUTemperature)->Name("Reader/cpu_temperature");
BENCHMARK_CAPTURE(reader, gpu_busy, &StateInfo::getGPUUsage)->Name("Reader/gpu_load");
BENCHMARK_CAPTURE(reader, gpu_clock, &StateInfo::getGPUClock)->Name("Reader/gpu_clock");
BENCHMARK_CAPTURE(reader, gpu_tmu, &StateInfo::getGPUTemperature)->Name("Reader/gpu_temperature");

}  // namespace
