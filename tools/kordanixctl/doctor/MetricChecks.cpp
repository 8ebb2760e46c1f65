#include "doctor/MetricChecks.h"

#include "core/StateInfo.h"
#include "figures/Catalogue.h"
#include "figures/Metrics.h"
#include "figures/TextFormat.h"
#include "utils/SystemInfoHelper.h"

#include <algorithm>
#include <array>
#include <cerrno>
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

std::string valueText(const figures::Figure& figure, const figures::Reading& reading) {
    if (!reading) {
        return {};
    }
    const std::string unit = figure.format.unit;
    const bool isShownWithUnit = figure.format.kind == figures::Kind::MEMORY || *figure.format.suffix != '\0';
    return figures::format(figure, reading) + (isShownWithUnit ? "" : ' ' + unit);
}

bool isGpuFile(const figures::Figure& figure) {
    constexpr std::string_view FOLDER = "/sys/kernel/gpu/";
    return figure.origin.file != nullptr &&
           std::string_view(figure.origin.file).substr(0, FOLDER.size()) == FOLDER;
}

std::string adviceFor(int error) {
    if (error == EACCES || error == EPERM) {
        return "This user may not read the file: run the application as one who may, or let root permit it "
               "(chmod a+r).";
    }
    if (error != ENOENT && error != ENOTDIR) {
        return "The file is there but cannot be opened; the kernel's log may say more.";
    }
    return "This kernel has some of such files, but not this one; a simulated device has them all "
           "('kordanix-demo --device NAME').";
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
    MetricCheck result = {name, path, {}, {}, {}, false};
    const File file(StateInfo::file_open(path, "r"));
    if (!file) {
        const int error = errno;
        result.isMissing = error == ENOENT || error == ENOTDIR;
        result.error = std::generic_category().message(error);
        result.advice = adviceFor(error);
    } else if (!value.empty()) {
        result.value = std::move(value);
    } else if (std::string_view(path) == GPU_CLOCK && !StateInfo::checkGPUClockUnit()) {
        result.error = "its unit is unknown";
        result.advice =
            std::string("Without ") + GPU_TABLE + " the clock's unit is not known; mend that first.";
    } else {
        result.error = "begins with \"" + beginningOf(file.get()) + "\"";
        result.advice =
            "Expected " + std::string(expected) + "; this kernel or driver writes something else.";
    }
    return result;
}

std::string gpuMaker() {
    static constexpr std::array<const char*, 3> MAKERS = {"Mali", "Adreno", ""};
    return MAKERS.at(static_cast<std::size_t>(utils::checkVendor()));
}

}  // namespace

std::vector<MetricCheck> checkMetrics() {
    figures::FigureSet wanted;
    for (const figures::Figure& figure : figures::catalogue()) {
        wanted[indexOf(figure)] = isGpuFile(figure);
    }
    figures::Metrics metrics(figures::Metrics::Sources::LIBRARY);
    metrics.want(wanted);
    metrics.refresh(0, 1000.0);
    std::vector<MetricCheck> checks = {
        check("GPU model", "/sys/kernel/gpu/gpu_model", gpuMaker(), "a text with Mali or Adreno in it")};
    for (const figures::Figure& figure : figures::catalogue()) {
        if (isGpuFile(figure)) {
            checks.push_back(check(figure.name, figure.origin.file,
                                   valueText(figure, metrics.reading(figure)), figure.origin.expected));
        }
    }
    const bool hasSome =
        std::any_of(checks.begin(), checks.end(), [](const MetricCheck& each) { return !each.isMissing; });
    return hasSome ? checks : std::vector<MetricCheck>();
}

}  // namespace control
