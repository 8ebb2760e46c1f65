#include "figures/sources/GpuFiles.h"

#include "figures/sources/KernelText.h"
#include "figures/sources/Sensors.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace sources {

namespace {

constexpr double MHZ_PER_HZ = 1e-6;
constexpr double MICRO = 1e-6;

Value asPercent(Value value) {
    if (value) {
        value.number = std::clamp(*value.number, 0.0, PERCENT);
    }
    return value;
}

/// The largest number of a list such as "180000000 267000000 ".
std::optional<double> largestOf(std::string_view text) {
    std::optional<double> largest;
    while (const auto number = takeNumber(text)) {
        largest = std::max(largest.value_or(0.0), static_cast<double>(*number));
    }
    return largest;
}

}  // namespace

void GpuFiles::begin(const GpuDevice& device, double now) {
    if (device.folder != mDevice.folder || device.card != mDevice.card) {
        mLast.clear();
        mCurrent.clear();
    }
    mDevice = device;
    mNow = now;
    mIsAsleep = isAsleep(mTree, device);
    // What is not asked for in every reading keeps its last one.
    mCurrent.merge(mLast);
    mLast = std::move(mCurrent);
    mCurrent.clear();
}

Value GpuFiles::readQuietly(const std::string& folder, const std::string& file, double scale) {
    return folder.empty() ? Value::none(Reason::NO_FILE) : readScaled(mTree, folder + '/' + file, scale);
}

Value GpuFiles::readAwake(const std::string& folder, const std::string& file, double scale) {
    return mIsAsleep ? Value::none(Reason::ASLEEP, mDevice.folder + "/power/runtime_status")
                     : readQuietly(folder, file, scale);
}

Value GpuFiles::rate(const std::string& path, double value, double time) {
    mCurrent[path] = {value, time};
    const auto last = mLast.find(path);
    if (last == mLast.end()) {
        return Value::none(Reason::FIRST_READING, path);
    }
    const double seconds = time - last->second.time;
    const double growth = value - last->second.value;
    // A counter that was set back says nothing this time.
    if (seconds <= 0.0 || growth < 0.0) {
        return Value::none(Reason::FIRST_READING, path);
    }
    return Value::of(growth / seconds, path);
}

Value GpuFiles::rateOfFile(const std::string& folder, const std::string& file, double scale) {
    const Value value = readAwake(folder, file, scale);
    return value ? rate(value.source, *value.number, mNow) : value;
}

Value GpuFiles::awakeShare(const std::string& folder, const std::string& file) {
    Value idle = rateOfFile(folder, file, 1e-3);
    if (idle) {
        idle.number = std::clamp(PERCENT - PERCENT * *idle.number, 0.0, PERCENT);
        idle.source += " (time awake)";
    }
    return idle;
}

Value GpuFiles::v3dLoad() {
    const std::string path = mDevice.folder + "/gpu_stats";
    const FileText file = mTree.read(path);
    if (file.error != 0) {
        return Value::none(reasonOf(file.error), path);
    }
    std::string_view text = file.text;
    takeLine(text);
    Value busiest = Value::none(Reason::MALFORMED, path);
    while (auto row = takeLine(text)) {
        const std::string queue(row->substr(0, row->find_first_of(" \t")));
        row->remove_prefix(queue.size());
        const auto time = takeNumber(*row);
        const auto jobs = takeNumber(*row);
        const auto runtime = takeNumber(*row);
        if (!time || !jobs || !runtime) {
            continue;
        }
        Value share = rate(path + ' ' + queue, static_cast<double>(*runtime) / NS_PER_SECOND,
                           static_cast<double>(*time) / NS_PER_SECOND);
        if (share && (!busiest || *share.number * PERCENT > *busiest.number)) {
            busiest = Value::of(*share.number * PERCENT, path);
        } else if (!busiest) {
            busiest = Value::none(share.reason, path);
        }
    }
    return asPercent(busiest);
}

/// What the kernels of board makers tell; each has its own file.
Value GpuFiles::boardLoad() {
    Value value = readAwake(mDevice.devfreq, "load", 1.0);  // "42@800000000Hz"
    value = firstOf(std::move(value), readAwake("/sys/class/misc/mali0/device", "utilisation", 1.0));
    for (const char* const folder : {"/sys/devices/gpu.0", "/sys/devices/platform/gpu.0"}) {
        value = firstOf(std::move(value), readAwake(folder, "load", 0.1));
    }
    return asPercent(value);
}

/// The part of the device that draws; another one is for video.
std::string GpuFiles::xeTile() const {
    for (const std::string& tile : mTree.find(mDevice.folder, "tile")) {
        for (const std::string& gt : mTree.find(tile, "gt")) {
            if (mTree.exists(gt + "/engines/rcs")) {
                return gt;
            }
        }
    }
    return mDevice.folder.empty() ? std::string() : mDevice.folder + "/tile0/gt0";
}

Value GpuFiles::load() {
    const std::string& driver = mDevice.driver;
    if (driver == "amdgpu") {
        return asPercent(readAwake(mDevice.folder, "gpu_busy_percent", 1.0));
    }
    if (driver == "i915") {
        return firstOf(awakeShare(mDevice.card, "gt/gt0/rc6_residency_ms"),
                       awakeShare(mDevice.card, "power/rc6_residency_ms"));
    }
    if (driver == "xe") {
        return awakeShare(xeTile(), "gtidle/idle_residency_ms");
    }
    if (driver == "v3d") {
        return v3dLoad();
    }
    return boardLoad();
}

/// Lines such as "1: 1842Mhz *": the star marks the one in force, the largest is the chip's highest.
Value GpuFiles::dpmClock(bool isCurrent) {
    const std::string path = mDevice.folder + "/pp_dpm_sclk";
    const Value first = readAwake(mDevice.folder, "pp_dpm_sclk", 1.0);
    if (!first && first.reason != Reason::MALFORMED) {
        return first;
    }
    const FileText file = mTree.read(path);
    if (file.error != 0) {
        return Value::none(reasonOf(file.error), path);
    }
    Value clock = Value::none(Reason::NOT_SUPPORTED, path);
    std::string_view text = file.text;
    while (const auto line = takeLine(text)) {
        const std::size_t colon = line->find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        std::string_view rest = line->substr(colon + 1);
        const auto mhz = takeNumber(rest);
        const bool isMeant = !isCurrent || rest.find('*') != std::string_view::npos;
        if (mhz && isMeant && (!clock || static_cast<double>(*mhz) > *clock.number)) {
            clock = Value::of(static_cast<double>(*mhz), path);
        }
    }
    return clock;
}

Value GpuFiles::clock() {
    const std::string& driver = mDevice.driver;
    if (driver == "amdgpu") {
        const Value sensor = readAwake(mDevice.hwmon, "freq1_input", MHZ_PER_HZ);
        return sensor ? sensor : firstOf(dpmClock(true), sensor);
    }
    if (driver == "i915") {
        // Neither wakes the device.
        return firstOf(readQuietly(mDevice.card, "gt_act_freq_mhz", 1.0),
                       readQuietly(mDevice.card, "gt/gt0/rps_act_freq_mhz", 1.0));
    }
    if (driver == "xe") {
        return readAwake(xeTile(), "freq0/act_freq", 1.0);
    }
    return readQuietly(mDevice.devfreq, "cur_freq", MHZ_PER_HZ);
}

Value GpuFiles::maxClock() {
    const std::string& driver = mDevice.driver;
    if (driver == "amdgpu") {
        return dpmClock(false);
    }
    if (driver == "i915") {
        return firstOf(readQuietly(mDevice.card, "gt_RP0_freq_mhz", 1.0),
                       readQuietly(mDevice.card, "gt/gt0/rps_RP0_freq_mhz", 1.0));
    }
    if (driver == "xe") {
        return readAwake(xeTile(), "freq0/rp0_freq", 1.0);
    }
    if (mDevice.devfreq.empty()) {
        return Value::none(Reason::NO_FILE);
    }
    const std::string path = mDevice.devfreq + "/available_frequencies";
    const FileText file = mTree.read(path);
    const auto largest = file.error == 0 ? largestOf(file.text) : std::nullopt;
    // What its user may have set lower comes second.
    return largest ? Value::of(*largest * MHZ_PER_HZ, path)
                   : readQuietly(mDevice.devfreq, "max_freq", MHZ_PER_HZ);
}

Value GpuFiles::temperature() {
    const std::string& driver = mDevice.driver;
    if (mIsAsleep) {
        return Value::none(Reason::ASLEEP, mDevice.folder + "/power/runtime_status");
    }
    if (!mDevice.hwmon.empty()) {
        const char* const label = driver == "amdgpu" ? "edge" : "pkg";
        const auto labelled = findLabelled(mTree, mDevice.hwmon, "temp", label);
        const std::string number = std::to_string(labelled.value_or(1));
        const Value value = readTemperature(mTree, mDevice.hwmon + "/temp" + number + "_input");
        if (value || value.reason != Reason::NO_FILE || driver == "i915" || driver == "xe") {
            return value;  // a card of its own, whose die is not the processor's
        }
    }
    if (driver == "i915" || driver == "v3d") {
        return cpuTemperature(mTree);  // one die
    }
    return gpuZoneTemperature(mTree);
}

Value GpuFiles::memory(const char* kind) {
    // Neither touches the device.
    Value own = readQuietly(mDevice.folder, std::string("mem_info_vram_") + kind, 1.0);
    if (own && isApu(mTree, mDevice)) {
        const Value shared = readQuietly(mDevice.folder, std::string("mem_info_gtt_") + kind, 1.0);
        own.number = *own.number + shared.number.value_or(0.0);
    }
    return own;
}

Value GpuFiles::memoryUsed() {
    return mDevice.driver == "amdgpu" ? memory("used") : Value::none(Reason::NOT_SUPPORTED);
}

Value GpuFiles::memoryTotal() {
    return mDevice.driver == "amdgpu" ? memory("total") : Value::none(Reason::NOT_SUPPORTED);
}

Value GpuFiles::power() {
    if (mDevice.driver == "i915" || mDevice.driver == "xe") {
        return mDevice.hwmon.empty() ? Value::none(Reason::NOT_SUPPORTED)
                                     : firstOf(rateOfFile(mDevice.hwmon, "energy1_input", MICRO),
                                               rateOfFile(mDevice.hwmon, "energy2_input", MICRO));
    }
    return firstOf(readAwake(mDevice.hwmon, "power1_average", MICRO),
                   readAwake(mDevice.hwmon, "power1_input", MICRO));
}

Value GpuFiles::fan() {
    if (mDevice.driver == "v3d") {
        const auto fans = findHwmons(mTree, "/sys/class/hwmon", "pwmfan");
        return fans.empty() ? Value::none(Reason::NO_FILE) : readQuietly(fans.front(), "fan1_input", 1.0);
    }
    return readAwake(mDevice.hwmon, "fan1_input", 1.0);
}

}  // namespace sources
