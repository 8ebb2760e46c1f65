#include "figures/sources/CpuFiles.h"

#include "figures/sources/KernelText.h"
#include "figures/sources/Sensors.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace sources {

namespace {

constexpr const char* STAT = "/proc/stat";
constexpr const char* MEMINFO = "/proc/meminfo";
constexpr const char* CPU_FOLDER = "/sys/devices/system/cpu";
constexpr double MHZ_PER_KHZ = 1e-3;
/// The fields of a process's stat after the name in brackets; the times are the 14th and 15th of the whole.
constexpr int FIELDS_BEFORE_TIMES = 11;

/// Of what counters that may step back have gained.
double gain(std::uint64_t now, std::uint64_t before) {
    return now > before ? static_cast<double>(now - before) : 0.0;
}

}  // namespace

CpuFiles::CpuFiles(const FileTree& tree, std::string process) : mTree(tree), mProcess(std::move(process)) {}

void CpuFiles::readMachine() {
    const FileText file = mTree.read(STAT);
    if (file.error != 0) {
        mSystemLoad = mCoreLoad = Value::none(reasonOf(file.error), STAT);
        return;
    }
    mSystemLoad = mCoreLoad = Value::none(mTicks.empty() ? Reason::FIRST_READING : Reason::MALFORMED, STAT);
    std::map<std::string, Ticks> all;
    std::string_view text = file.text;
    for (auto line = takeLine(text); line && line->substr(0, 3) == "cpu"; line = takeLine(text)) {
        const std::string name(line->substr(0, line->find(' ')));
        line->remove_prefix(std::min(name.size(), line->size()));
        // user nice system idle iowait irq softirq steal; what follows is in user already.
        std::array<std::uint64_t, 8> fields{};
        for (std::uint64_t& field : fields) {
            field = takeNumber(*line).value_or(0);
        }
        const Ticks ticks{fields[0] + fields[1] + fields[2] + fields[5] + fields[6] + fields[7],
                          fields[3] + fields[4]};
        const auto before = mTicks.find(name);
        if (before != mTicks.end()) {
            const double busy = gain(ticks.busy, before->second.busy);
            const double whole = busy + gain(ticks.idle, before->second.idle);
            const double load = whole > 0.0 ? PERCENT * busy / whole : 0.0;
            Value& value = name == "cpu" ? mSystemLoad : mCoreLoad;
            if (!value || load > *value.number) {
                value = Value::of(load, STAT);
            }
        }
        all[name] = ticks;
    }
    mTicks = std::move(all);
}

std::uint64_t CpuFiles::onlineProcessors() const {
    const std::uint64_t online = countRanges(readWord(mTree, std::string(CPU_FOLDER) + "/online"));
    if (online > 0) {
        return online;
    }
    if (mTree.isLive()) {
        return static_cast<std::uint64_t>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
    }
    const FileText file = mTree.read(STAT);
    std::string_view text = file.text;
    std::uint64_t count = 0;
    while (const auto line = takeLine(text)) {
        count += line->substr(0, 3) == "cpu" && line->substr(0, 4) != "cpu " ? 1 : 0;
    }
    return std::max<std::uint64_t>(count, 1);
}

void CpuFiles::readProcess(double now) {
    if (mProcess.empty()) {
        return;
    }
    const std::string path = mProcess + "/stat";
    const FileText file = mTree.read(path);
    if (file.error != 0) {
        mProcessLoad = Value::none(reasonOf(file.error), path);
        mProcessTicks.reset();
        return;
    }
    // The name in brackets may have blanks and brackets of its own.
    std::string_view text = file.text;
    text.remove_prefix(std::min(text.rfind(')') + 1, text.size()));
    for (int i = 0; i < FIELDS_BEFORE_TIMES && !text.empty(); ++i) {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        text.remove_prefix(std::min(text.find(' '), text.size()));
    }
    const auto user = takeNumber(text);
    const auto system = takeNumber(text);
    if (!user || !system) {
        mProcessLoad = Value::none(Reason::MALFORMED, path);
        mProcessTicks.reset();
        return;
    }
    const std::uint64_t ticks = *user + *system;
    const double seconds = now - mProcessTime;
    if (!mProcessTicks || seconds <= 0.0) {
        mProcessLoad = Value::none(Reason::FIRST_READING, path);
    } else {
        const double perSecond = mTree.isLive() ? static_cast<double>(sysconf(_SC_CLK_TCK)) : 100.0;
        const double busySeconds = gain(ticks, *mProcessTicks) / perSecond;
        const double load = PERCENT * busySeconds / seconds / static_cast<double>(onlineProcessors());
        mProcessLoad = Value::of(std::clamp(load, 0.0, PERCENT), path);
    }
    mProcessTicks = ticks;
    mProcessTime = now;
}

Value CpuFiles::clock() const {
    Value fastest = Value::none(Reason::NO_FILE, std::string(CPU_FOLDER) + "/cpufreq");
    const auto look = [&](const std::string& path) {
        Value value = readScaled(mTree, path, MHZ_PER_KHZ);
        if ((value && (!fastest || *value.number > *fastest.number)) ||
            (!fastest && value.reason != Reason::NO_FILE)) {
            fastest = std::move(value);
        }
    };
    for (const std::string& policy : mTree.find(std::string(CPU_FOLDER) + "/cpufreq", "policy")) {
        look(policy + "/scaling_cur_freq");
    }
    if (fastest) {
        return fastest;
    }
    for (const std::string& processor : mTree.find(CPU_FOLDER, "cpu")) {
        look(processor + "/cpufreq/scaling_cur_freq");
    }
    return fastest;
}

Value CpuFiles::temperature() const {
    return cpuTemperature(mTree);
}

Value CpuFiles::processMemory() const {
    if (mProcess.empty()) {
        return Value::none(Reason::NO_PROCESS);
    }
    for (const auto& [name, key] : {std::pair("/smaps_rollup", "Pss"), std::pair("/status", "VmRSS")}) {
        const std::string path = mProcess + name;
        const FileText file = mTree.read(path);
        const auto bytes = file.error == 0 ? kilobytes(file.text, key) : std::nullopt;
        if (bytes) {
            return Value::of(*bytes, path);
        }
    }
    const std::string path = mProcess + "/status";
    const FileText file = mTree.read(path);
    return Value::none(file.error == 0 ? Reason::MALFORMED : reasonOf(file.error), path);
}

Value CpuFiles::meminfo(const char* first, const char* subtracted) const {
    const FileText file = mTree.read(MEMINFO);
    if (file.error != 0) {
        return Value::none(reasonOf(file.error), MEMINFO);
    }
    const auto bytes = kilobytes(file.text, first);
    const auto less = subtracted == nullptr ? std::optional(0.0) : kilobytes(file.text, subtracted);
    return bytes && less ? Value::of(std::max(*bytes - *less, 0.0), MEMINFO)
                         : Value::none(Reason::MALFORMED, MEMINFO);
}

Value CpuFiles::usedMemory() const {
    return meminfo("MemTotal", "MemAvailable");
}

Value CpuFiles::availableMemory() const {
    return meminfo("MemAvailable", nullptr);
}

}  // namespace sources
