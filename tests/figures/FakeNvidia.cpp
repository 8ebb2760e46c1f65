// A management library with few functions and rows of every bad kind. FAKE_NVIDIA=hang never ends its start.

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace {

struct Sample {
    unsigned int process;
    unsigned long long time;
    unsigned int sm, memory, encoder, decoder;
};

struct Row {
    unsigned int process;
    unsigned long long bytes;
    unsigned int instances[2];
};

}  // namespace

extern "C" {

int nvmlInit_v2() {
    const char* const mode = std::getenv("FAKE_NVIDIA");
    while (mode != nullptr && std::strcmp(mode, "hang") == 0) {
        pause();
    }
    return 0;
}

int nvmlShutdown() {
    setenv("FAKE_NVIDIA", "shut down", 1);
    return 0;
}

int nvmlDeviceGetHandleByIndex_v2(unsigned int /*index*/, void** device) {
    *device = device;
    return 0;
}

int nvmlDeviceGetTemperature(void* /*device*/, int /*sensor*/, unsigned int* celsius) {
    *celsius = 71;
    return 0;
}

int nvmlDeviceGetFanSpeed(void* /*device*/, unsigned int* /*percent*/) {
    return 3;
}

int nvmlDeviceGetMemoryInfo(void* /*device*/, unsigned long long* memory) {
    memory[0] = 0;
    memory[1] = 0;
    memory[2] = 500;
    return 0;
}

int nvmlDeviceGetProcessUtilization(void* /*device*/, Sample* samples, unsigned int* count,
                                    unsigned long long /*since*/) {
    const auto own = static_cast<unsigned int>(getpid());
    const Sample rows[] = {
        {own, 100, 30, 0, 0, 0}, {own, 90, 99, 0, 0, 0}, {own, 200, 4000000, 0, 0, 0}, {1, 300, 77, 0, 0, 0}};
    if (samples == nullptr || *count < 4) {
        *count = 4;
        return 7;
    }
    std::memcpy(samples, rows, sizeof(rows));
    *count = 4;
    return 0;
}

int nvmlDeviceGetGraphicsRunningProcesses_v2(void* /*device*/, unsigned int* count, Row* rows) {
    if (rows == nullptr || *count < 2) {
        *count = 2;
        return 7;
    }
    rows[0] = {1, 1, {0, 0}};
    rows[1] = {static_cast<unsigned int>(getpid()), 4096, {0, 0}};
    *count = 2;
    return 0;
}
}
