#pragma once

#include "figures/sources/Value.h"

#include <sys/types.h>

#include <atomic>
#include <optional>
#include <string>

/// The functions of NVIDIA's management library that we use, with its own records. A function that the
/// library lacks is null.
namespace sources::nvidia {

constexpr const char* FILE_NAME = "libnvidia-ml.so.1";

// Results of the functions.
constexpr int SUCCESS = 0;
constexpr int NOT_SUPPORTED = 3;
constexpr int NO_PERMISSION = 4;
constexpr int NOT_FOUND = 6;
constexpr int TOO_SMALL = 7;

/// The longest list that we accept.
constexpr unsigned int MOST_ROWS = 1024;

using Handle = void*;

struct Utilization {
    unsigned int gpu;
    unsigned int memory;
};
struct Memory {
    unsigned long long total;
    unsigned long long free;
    unsigned long long used;
};
struct ProcessSample {
    unsigned int process;
    unsigned long long time;
    unsigned int sm;
    unsigned int memory;
    unsigned int encoder;
    unsigned int decoder;
};
static_assert(sizeof(void*) != 8 || sizeof(ProcessSample) == 32, "the library's layout");

Reason reasonOfResult(int result);

struct Library {
    enum class State { LOADING, READY, FAILED };

    std::atomic<State> state{State::LOADING};  ///< release when READY, so that what follows is seen
    Reason failure = Reason::NO_FILE;
    Handle device = nullptr;

    int (*shutDown)() = nullptr;
    int (*getUtilization)(Handle, Utilization*) = nullptr;
    int (*getProcessUtilization)(Handle, ProcessSample*, unsigned int*, unsigned long long) = nullptr;
    int (*getMemory)(Handle, Memory*) = nullptr;
    int (*getTemperature)(Handle, int, unsigned int*) = nullptr;
    int (*getClock)(Handle, int, unsigned int*) = nullptr;
    int (*getMaxClock)(Handle, int, unsigned int*) = nullptr;
    int (*getPower)(Handle, unsigned int*) = nullptr;
    int (*getFan)(Handle, unsigned int*) = nullptr;

    struct ProcessList {
        int (*get)(Handle, unsigned int*, void*) = nullptr;
        bool isOld = false;
    };
    ProcessList graphics;
    ProcessList compute;

    /// Loads the library, which may take seconds or never end, and finds the device by its bus address, or
    /// else by its number. Sets the state.
    void load(const std::string& pciDevice, int number);
    /// The bytes that one of the lists gives for a process.
    std::optional<unsigned long long> bytesOf(const ProcessList& list, pid_t process) const;

private:
    Reason open(void* file, const std::string& pciDevice, int number);
};

}  // namespace sources::nvidia
