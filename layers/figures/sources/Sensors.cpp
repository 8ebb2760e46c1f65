#include "figures/sources/Sensors.h"

#include "figures/sources/KernelText.h"

#include <algorithm>
#include <string_view>

namespace sources {

namespace {

constexpr const char* HWMON_CLASS = "/sys/class/hwmon";
constexpr const char* THERMAL_CLASS = "/sys/class/thermal";
constexpr double CELSIUS_PER_UNIT = 1e-3;
constexpr double HIGHEST_CELSIUS = 150.0;

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

Value hotter(Value first, Value second) {
    if (first && second) {
        return *second.number > *first.number ? second : first;
    }
    return firstOf(std::move(first), std::move(second));
}

struct Zone {
    std::string type;
    std::string path;
};

std::vector<Zone> zones(const FileTree& tree) {
    std::vector<Zone> all;
    for (const std::string& folder : tree.find(THERMAL_CLASS, "thermal_zone")) {
        all.push_back({readWord(tree, folder + "/type"), folder + "/temp"});
    }
    return all;
}

template <typename Predicate>
Value hottestZone(const FileTree& tree, const std::vector<Zone>& all, Predicate isMeant) {
    Value hottest = Value::none(Reason::NO_FILE);
    for (const Zone& zone : all) {
        if (isMeant(zone.type)) {
            hottest = hotter(std::move(hottest), readTemperature(tree, zone.path));
        }
    }
    return hottest;
}

Value hottestLabelled(const FileTree& tree, const std::string& hwmon, std::string_view label) {
    Value hottest = Value::none(Reason::NO_FILE);
    for (const std::string& path : tree.find(hwmon, "temp")) {
        if (endsWith(path, "_label") && beginsWith(readWord(tree, path), label)) {
            const std::string input = path.substr(0, path.size() - 5) + "input";
            hottest = hotter(std::move(hottest), readTemperature(tree, input));
        }
    }
    return hottest;
}

/// "Tdie" is the die's temperature; "Tctl" may have an offset for the fans; chips before Zen have one input
/// without a label.
Value amdTemperature(const FileTree& tree) {
    for (const char* const chip : {"zenpower", "k10temp"}) {
        for (const std::string& hwmon : findHwmons(tree, HWMON_CLASS, chip)) {
            for (const char* const label : {"Tdie", "Tctl"}) {
                if (const auto number = findLabelled(tree, hwmon, "temp", label)) {
                    const Value value =
                        readTemperature(tree, hwmon + "/temp" + std::to_string(*number) + "_input");
                    if (value) {
                        return value;
                    }
                }
            }
            if (!tree.exists(hwmon + "/temp1_label")) {
                return readTemperature(tree, hwmon + "/temp1_input");
            }
        }
    }
    return Value::none(Reason::NO_FILE);
}

Value intelTemperature(const FileTree& tree) {
    Value packages = Value::none(Reason::NO_FILE);
    Value cores = Value::none(Reason::NO_FILE);
    for (const std::string& hwmon : findHwmons(tree, HWMON_CLASS, "coretemp")) {
        packages = hotter(std::move(packages), hottestLabelled(tree, hwmon, "Package id"));
        cores = hotter(std::move(cores), hottestLabelled(tree, hwmon, "Core"));
    }
    return packages ? packages : cores;
}

bool isCpuZone(const std::string& type) {
    return type == "cpu-thermal" || type == "cpu_thermal";
}

/// Whether the zone is a core's or a cluster's, on boards with such sensors. The kernel cuts names after 19
/// letters.
bool isCoreZone(const std::string& type) {
    return (beginsWith(type, "cpu") && type != "cpufreq") || beginsWith(type, "bigcore") ||
           beginsWith(type, "littlecore");
}

bool isPackageZone(const std::string& type) {
    return type == "package-thermal" || type == "soc-thermal";
}

}  // namespace

std::vector<std::string> findHwmons(const FileTree& tree, const std::string& folder,
                                    const std::string& chip) {
    std::vector<std::string> found;
    for (const std::string& hwmon : tree.find(folder, "hwmon")) {
        if (chip.empty() || readWord(tree, hwmon + "/name") == chip) {
            found.push_back(hwmon);
        }
    }
    return found;
}

std::optional<int> findLabelled(const FileTree& tree, const std::string& hwmon, const std::string& prefix,
                                const std::string& label) {
    for (const std::string& path : tree.find(hwmon, prefix)) {
        if (endsWith(path, "_label") && readWord(tree, path) == label) {
            std::string_view number = path;
            number.remove_prefix(hwmon.size() + 1 + prefix.size());
            if (const auto index = takeNumber(number)) {
                return static_cast<int>(*index);
            }
        }
    }
    return std::nullopt;
}

Value readTemperature(const FileTree& tree, const std::string& path) {
    Value value = readScaled(tree, path, CELSIUS_PER_UNIT);
    if (value && (*value.number <= 0.0 || *value.number > HIGHEST_CELSIUS)) {
        return Value::none(Reason::MALFORMED, path);
    }
    return value;
}

Value cpuTemperature(const FileTree& tree) {
    Value value = firstOf(amdTemperature(tree), intelTemperature(tree));
    if (value) {
        return value;
    }
    const std::vector<Zone> all = zones(tree);
    const auto isNamed = [](const char* name) {
        return [name](const std::string& type) { return type == name; };
    };
    value = firstOf(std::move(value), hottestZone(tree, all, isNamed("x86_pkg_temp")));
    value = firstOf(std::move(value), hottestZone(tree, all, isCpuZone));
    value = firstOf(std::move(value), hottestZone(tree, all, isCoreZone));
    value = firstOf(std::move(value), hottestZone(tree, all, isPackageZone));
    for (const char* const name : {"TCPU", "B0D4", "acpitz"}) {
        value = firstOf(std::move(value), hottestZone(tree, all, isNamed(name)));
    }
    return value;
}

Value gpuZoneTemperature(const FileTree& tree) {
    return hottestZone(tree, zones(tree), [](const std::string& type) { return beginsWith(type, "gpu"); });
}

}  // namespace sources
