#include "overlays/MetricChecks.h"

#include "core/StateInfo.h"
#include "figures/Catalogue.h"
#include "figures/Metrics.h"
#include "figures/TextFormat.h"
#include "utils/SystemInfoHelper.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

namespace control {

namespace {

using core::StateInfo;

struct FileCloser {
    void operator()(std::FILE* file) const { StateInfo::file_close(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

constexpr std::string_view GPU_CLOCK = "/sys/kernel/gpu/gpu_clock";
constexpr const char* GPU_TABLE = "/sys/kernel/gpu/gpu_freq_table";

/// The figures of this process, read until there is a load.
class Samples {
public:
    Samples() {
        using Clock = std::chrono::steady_clock;
        constexpr std::chrono::milliseconds PATIENCE(200);
        mMetrics.want(figures::FigureSet().set());
        mMetrics.settle();
        // A load lies between two readings, and the times of a process as young as this one begin with no
        // whole tick, which the library takes for a first reading.
        const Clock::time_point end = Clock::now() + PATIENCE;
        do {
            mMetrics.refresh(0, 1000.0);
        } while (!hasLoad() && Clock::now() < end);
    }

    const figures::Reading& reading(const figures::Figure& figure) const { return mMetrics.reading(figure); }

private:
    bool hasLoad() const {
        const figures::FigureRows rows = figures::catalogue();
        return std::all_of(rows.begin(), rows.end(), [this](const figures::Figure& figure) {
            return figure.origin.file == nullptr || figure.format.kind != figures::Kind::RATE ||
                   mMetrics.reading(figure);
        });
    }

    figures::Metrics mMetrics;
};

std::string valueText(const figures::Figure& figure, const figures::Reading& reading) {
    if (!reading) {
        return {};
    }
    if (figure.format.kind == figures::Kind::RATE) {
        return "readable";  // the rate is this program's own
    }
    const std::string unit = figure.format.unit;
    const bool isShownWithUnit = figure.format.kind == figures::Kind::MEMORY || *figure.format.suffix != '\0';
    return figures::format(figure, reading) + (isShownWithUnit ? "" : ' ' + unit);
}

bool isBelow(std::string_view path, std::string_view folder) {
    return path.substr(0, folder.size()) == folder;
}

std::string adviceFor(std::string_view path, int error) {
    if (error == EACCES || error == EPERM) {
        return "This user may not read the file: run the application as one who may, or let root permit it "
               "(chmod a+r).";
    }
    if (error != ENOENT && error != ENOTDIR) {
        return "The file is there but cannot be opened; the kernel's log may say more.";
    }
    if (isBelow(path, "/sys/kernel/gpu/")) {
        return "This machine's kernel has no such GPU files. The overlay shows N/A; a simulated device has "
               "them all ('kordanix-demo --device NAME').";
    }
    if (isBelow(path, "/sys/class/thermal/")) {
        return "The kernel knows no thermal zone, which is usual in virtual machines. The overlay shows N/A.";
    }
    return "The kernel does not offer the file, or the file system it is in is not mounted. The overlay "
           "shows N/A.";
}

/// The beginning of a file in printable characters.
std::string beginningOf(std::FILE* file) {
    std::array<char, 24> bytes{};
    const std::size_t size = std::fread(bytes.data(), 1, bytes.size(), file);
    std::string text;
    for (std::size_t i = 0; i < size && bytes[i] != '\n'; ++i) {
        text += bytes[i] >= ' ' && bytes[i] <= '~' ? bytes[i] : '?';
    }
    return text;
}

/// `value` is empty when there is none; `expected` says what the file must hold.
MetricCheck check(std::string_view name, const char* path, std::string value, std::string_view expected) {
    MetricCheck result = {name, path, {}, {}, {}};
    const File file(StateInfo::file_open(path, "r"));
    if (!file) {
        const int error = errno;
        result.error = std::generic_category().message(error);
        result.advice = adviceFor(path, error);
    } else if (!value.empty()) {
        result.value = std::move(value);
    } else if (std::string_view(path) == GPU_CLOCK && !StateInfo::checkGPUClockUnit()) {
        result.error = "its unit is unknown";
        result.advice =
            std::string("Without ") + GPU_TABLE + " the clock's unit is not known; mend that first.";
    } else {
        result.error = "begins with \"" + beginningOf(file.get()) + "\"";
        result.advice = "Expected " + std::string(expected) +
                        "; this kernel or driver writes something else. The overlay shows N/A.";
    }
    return result;
}

std::string gpuMaker() {
    static constexpr std::array<const char*, 3> MAKERS = {"Mali", "Adreno", ""};
    return MAKERS.at(static_cast<std::size_t>(utils::checkVendor()));
}

}  // namespace

std::vector<MetricCheck> checkMetrics() {
    std::vector<MetricCheck> checks;
    const Samples samples;
    checks.push_back(
        check("GPU model", "/sys/kernel/gpu/gpu_model", gpuMaker(), "a text with Mali or Adreno in it"));
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.origin.file != nullptr) {
            checks.push_back(check(figure.name, figure.origin.file,
                                   valueText(figure, samples.reading(figure)), figure.origin.expected));
        }
    }
    return checks;
}

}  // namespace control
