#include "figures/sources/GpuDevice.h"

#include "figures/sources/KernelText.h"
#include "figures/sources/Sensors.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace sources {

namespace {

constexpr const char* PCI = "/sys/bus/pci/devices";
constexpr const char* DRM_CLASS = "/sys/class/drm";
constexpr const char* DEVFREQ_CLASS = "/sys/class/devfreq";
constexpr const char* NVIDIA_VENDOR = "0x10de";

std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// Returns the cards without their connectors, which have names like card0-HDMI-A-1.
std::vector<std::string> cards(const FileTree& tree) {
    std::vector<std::string> found = tree.find(DRM_CLASS, "card");
    found.erase(std::remove_if(found.begin(), found.end(),
                               [](const std::string& path) { return path.find('-') != std::string::npos; }),
                found.end());
    return found;
}

/// Display controllers have class 03. A recorded folder may lack the file, but has only devices that matter.
bool isPciGpu(const FileTree& tree, const std::string& folder) {
    const std::string kind = readWord(tree, folder + "/class");
    return kind.empty() ? !tree.isLive() : kind.compare(0, 4, "0x03") == 0;
}

std::vector<std::string> pciGpus(const FileTree& tree) {
    std::vector<std::string> found;
    for (const std::string& name : tree.list(PCI)) {
        const std::string folder = std::string(PCI) + '/' + name;
        if (isPciGpu(tree, folder)) {
            found.push_back(folder);
        }
    }
    return found;
}

/// Finds a board's device by the end of its name, in the folders where boards keep them.
std::string findBoardDevice(const FileTree& tree, const std::string& end) {
    for (const char* const folder : {"/sys/devices/platform/axi", "/sys/devices/platform/v3dbus",
                                     "/sys/devices/platform/soc", "/sys/devices/platform"}) {
        for (const std::string& name : tree.list(folder)) {
            if (name.size() > end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0) {
                return std::string(folder) + '/' + name;
            }
        }
    }
    return {};
}

std::string findDevfreq(const FileTree& tree, const std::string& device) {
    const std::vector<std::string> own =
        device.empty() ? std::vector<std::string>() : tree.find(device + "/devfreq", "");
    if (!own.empty()) {
        return own.front();
    }
    std::vector<std::string> named;
    for (const std::string& path : tree.find(DEVFREQ_CLASS, "")) {
        const std::string name = baseName(path);
        if (name.find("gpu") != std::string::npos || name.find("mali") != std::string::npos) {
            named.push_back(path);
        }
    }
    return named.size() == 1 ? named.front() : std::string();
}

std::string driverOf(const FileTree& tree, const GpuDevice& device) {
    const std::string link = baseName(tree.link(device.folder + "/driver"));
    if (!link.empty()) {
        return link;
    }
    if (!device.hwmon.empty()) {
        const std::string chip = readWord(tree, device.hwmon + "/name");
        for (const char* const driver : {"amdgpu", "nouveau", "i915", "xe"}) {
            if (chip == driver) {
                return chip;
            }
        }
    }
    if (readWord(tree, device.folder + "/vendor") == NVIDIA_VENDOR) {
        return "nvidia";
    }
    if (tree.exists(device.card + "/gt_act_freq_mhz") ||
        tree.exists(device.card + "/gt/gt0/rps_act_freq_mhz")) {
        return "i915";
    }
    if (tree.exists(device.folder + "/tile0/gt0/freq0")) {
        return "xe";
    }
    return tree.exists(device.folder + "/gpu_busy_percent") ? "amdgpu" : std::string();
}

/// Finds the other folders from the device's own folder or its card.
void complete(const FileTree& tree, GpuDevice& device) {
    if (device.card.empty() && !device.folder.empty()) {
        const std::vector<std::string> own = tree.find(device.folder + "/drm", "card");
        device.card = own.empty() ? std::string() : own.front();
    }
    if (device.card.empty() && (device.folder.empty() || !tree.isLive())) {
        const std::vector<std::string> all = cards(tree);
        device.card = all.size() == 1 ? all.front() : std::string();
    }
    if (device.folder.empty() && !device.card.empty() && tree.exists(device.card + "/device")) {
        device.folder = device.card + "/device";
    }
    if (device.folder.empty() && device.driver == "v3d") {
        device.folder = findBoardDevice(tree, ".v3d");
    }
    const std::vector<std::string> sensors =
        device.folder.empty() ? std::vector<std::string>() : findHwmons(tree, device.folder + "/hwmon", "");
    device.hwmon = sensors.empty() ? std::string() : sensors.front();
    device.devfreq = findDevfreq(tree, device.folder);
    if (device.driver.empty()) {
        device.driver = driverOf(tree, device);
    }
    if (device.pciDevice.empty()) {
        const std::string name = baseName(tree.link(device.folder));
        const std::string own = name.empty() ? baseName(device.folder) : name;
        device.pciDevice = std::count(own.begin(), own.end(), ':') == 2 ? own : std::string();
    }
}

}  // namespace

std::string GpuDevice::name() const {
    const std::string kind = driver.empty() ? "GPU" : driver;
    const std::string place = !pciDevice.empty() ? pciDevice : baseName(folder);
    return place.empty() || place == "device" ? kind : kind + ' ' + place;
}

GpuDevice locateGpu(const FileTree& tree, const GpuName& name) {
    GpuDevice device;
    device.driver = name.driver;
    device.pciDevice = name.pciDevice;
    std::vector<std::string> candidates;
    if (name.minor >= 0) {
        candidates.push_back("/sys/dev/char/226:" + std::to_string(name.minor) + "/device");
    }
    if (!name.pciDevice.empty()) {
        candidates.push_back(std::string(PCI) + '/' + name.pciDevice);
    }
    if (name.minor >= 0) {
        candidates.push_back(DRM_CLASS + std::string("/renderD") + std::to_string(name.minor) + "/device");
        candidates.push_back(DRM_CLASS + std::string("/card") + std::to_string(name.minor) + "/device");
    }
    for (const std::string& folder : candidates) {
        if (device.folder.empty() && tree.exists(folder)) {
            device.folder = folder;
        }
    }
    if (device.folder.empty() && name.pciDevice.empty()) {
        const std::vector<std::string> all = pciGpus(tree);
        device.folder = all.size() == 1 ? all.front() : std::string();
    }
    complete(tree, device);
    return device;
}

GpuDevice locateMainGpu(const FileTree& tree) {
    std::vector<std::string> all = cards(tree);
    const auto isBoot = [&](const std::string& card) {
        return readWord(tree, card + "/device/boot_vga") == "1";
    };
    std::stable_partition(all.begin(), all.end(), isBoot);
    GpuDevice device;
    if (!all.empty()) {
        device.card = all.front();
    } else {
        const std::vector<std::string> gpus = pciGpus(tree);
        device.folder = gpus.empty() ? std::string() : gpus.front();
    }
    complete(tree, device);
    if (device.folder.empty() && device.card.empty()) {
        const std::string board = findBoardDevice(tree, ".v3d");
        if (!board.empty()) {
            device.driver = "v3d";
            device.folder = board;
        }
    }
    return device;
}

GpuDevice locateNvidia(const FileTree& tree, int number) {
    GpuDevice device;
    device.driver = "nvidia";
    // The driver numbers its devices in the order of the bus.
    int index = 0;
    for (const std::string& folder : pciGpus(tree)) {
        if (readWord(tree, folder + "/vendor") == NVIDIA_VENDOR && index++ == number) {
            device.folder = folder;
        }
    }
    complete(tree, device);
    return device;
}

bool hasSeveralGpus(const FileTree& tree) {
    return std::max(cards(tree).size(), pciGpus(tree).size()) > 1;
}

bool isAsleep(const FileTree& tree, const GpuDevice& device) {
    const std::string status =
        device.folder.empty() ? std::string() : readWord(tree, device.folder + "/power/runtime_status");
    return !status.empty() && status != "active" && status != "unsupported";
}

bool isApu(const FileTree& tree, const GpuDevice& device) {
    if (device.driver != "amdgpu" || device.hwmon.empty()) {
        return false;
    }
    return !tree.exists(device.hwmon + "/fan1_input") &&
           readWord(tree, device.hwmon + "/in1_label") == "vddnb";
}

}  // namespace sources
