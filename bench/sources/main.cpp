// What each figure of a machine costs its helper thread, as a Markdown table: CPU and memory from this
// machine's own kernel, GPUs from recorded folders, whose files answer as fast as a disk's cache and not as a
// driver.
//   kordanix-sources-bench MACHINES

#include "figures/sources/FileTree.h"
#include "figures/sources/MachineFigures.h"

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string>

namespace {

using sources::Id;

constexpr int READINGS = 300;
constexpr double SECONDS_BETWEEN = 0.5;

struct Cost {
    double microseconds = 0.0;  ///< of the thread's processor time
    double files = 0.0;
    bool hasValue = false;
};

double threadMicroseconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// Of a reading of these figures, as the overlay takes it twice a second.
Cost costOf(const std::string& root, const sources::Wanted& wanted) {
    std::size_t files = 0;
    sources::FileTree tree(root);
    sources::MachineFigures figures(tree, getpid());
    double now = 0.0;
    figures.read(now, wanted);
    tree.watch({[&files](const std::string&, const std::string&) { ++files; }, {}, {}});
    figures.read(now += SECONDS_BETWEEN, wanted);
    const std::size_t filesOfAReading = files;
    tree.watch({});
    const double start = threadMicroseconds();
    for (int i = 0; i < READINGS; ++i) {
        figures.read(now += SECONDS_BETWEEN, wanted);
    }
    Cost cost;
    cost.microseconds = (threadMicroseconds() - start) / READINGS;
    cost.files = static_cast<double>(filesOfAReading);
    for (std::size_t i = 0; i < sources::FIGURES; ++i) {
        cost.hasValue = cost.hasValue || (wanted.test(i) && figures.value(static_cast<Id>(i)));
    }
    return cost;
}

void printRow(const std::string& name, const Cost& cost) {
    std::printf("| %s | %.0f | %.0f |\n", name.c_str(), cost.microseconds, cost.files);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: kordanix-sources-bench MACHINES\n");
        return 2;
    }
    std::printf("| figure | processor time, us | files |\n|---|---|---|\n");
    const std::string recorded[] = {"", "amdgpu-6.18", "i915-6.12", "xe-6.12", "panfrost-profiling-on"};
    for (const std::string& machine : recorded) {
        const std::string root = machine.empty() ? machine : std::string(argv[1]) + '/' + machine;
        for (std::size_t i = 0; i < sources::FIGURES; ++i) {
            const auto id = static_cast<Id>(i);
            const bool isOfGpu = id >= Id::GPU_LOAD_PROCESS && id <= Id::GPU_FAN;
            const Cost cost = isOfGpu != machine.empty() ? costOf(root, sources::Wanted().set(i)) : Cost();
            if (cost.hasValue) {
                printRow((machine.empty() ? "" : machine + ": ") + sources::nameOf(id), cost);
            }
        }
    }
    return 0;
}
