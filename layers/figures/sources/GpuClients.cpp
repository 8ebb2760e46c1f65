#include "figures/sources/GpuClients.h"

#include "figures/sources/ClientMemory.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string_view>
#include <utility>

namespace sources {

namespace {

constexpr unsigned int DRM_MAJOR = 226;
constexpr unsigned int NVIDIA_MAJOR = 195;
/// NVIDIA's nodes from this number on are not devices.
constexpr unsigned int NVIDIA_MINORS = 250;

/// How long a device stays chosen while another one works more, because copying from one to the other makes
/// both work.
constexpr double SECONDS_TO_STAY = 4.0;
/// How long it stays chosen without any work, because a long job counts only when it has ended.
constexpr double SECONDS_OF_REST = 2.0;

constexpr double HZ_PER_MHZ = 1e6;

/// Returns the number at the end of a node's name: 128 for "renderD128" and "renderD".
std::optional<int> numberAfter(std::string_view text, std::string_view beginning) {
    if (text.substr(0, beginning.size()) != beginning) {
        return std::nullopt;
    }
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data() + beginning.size(), end, number);
    return result.ec == std::errc() && result.ptr == end && number >= 0 ? std::optional(number)
                                                                        : std::nullopt;
}

std::uint64_t advance(std::uint64_t& largest, std::optional<std::uint64_t> now) {
    const std::uint64_t before = largest;
    largest = std::max(largest, now.value_or(0));
    return largest - before;
}

bool needsProfiling(const std::string& driver) {
    return driver == "panfrost" || driver == "panthor";
}

}  // namespace

GpuClients::GpuClients(const FileTree& tree, std::string process)
    : mTree(tree), mProcess(std::move(process)) {}

/// Gets the device's number from the open file itself or, in a folder of another machine, from the file's
/// name there.
void GpuClients::lookAtNode(const std::string& number, int& minor) {
    const std::string path = mProcess + "/fd/" + number;
    if (mTree.isLive()) {
        struct stat status = {};
        if (stat(path.c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) {
            return;
        }
        if (major(status.st_rdev) == DRM_MAJOR) {
            mTree.link(path);  // for whoever records the machine
            minor = static_cast<int>(gnu_dev_minor(status.st_rdev));
        } else if (major(status.st_rdev) == NVIDIA_MAJOR && gnu_dev_minor(status.st_rdev) < NVIDIA_MINORS) {
            mNvidia = static_cast<int>(gnu_dev_minor(status.st_rdev));
        }
        return;
    }
    const std::string target = mTree.link(path);
    for (const char* const beginning : {"/dev/dri/renderD", "/dev/dri/card"}) {
        minor = numberAfter(target, beginning).value_or(minor);
    }
    if (const auto device = numberAfter(target, "/dev/nvidia")) {
        mNvidia = device;
    }
}

GpuClients::Clients GpuClients::collect() {
    Clients clients;
    mNvidia.reset();
    std::vector<std::string> numbers = mTree.list(mProcess + "/fdinfo");
    mError = numbers.empty() ? mTree.read(mProcess + "/stat").error : 0;
    for (const std::string& number : numbers) {
        int minor = -1;
        lookAtNode(number, minor);
        if (mTree.isLive() && minor < 0) {
            continue;
        }
        const std::string path = mProcess + "/fdinfo/" + number;
        const FileText file = mTree.read(path);
        const auto info = file.error == 0 ? parseFdInfo(file.text) : std::nullopt;
        if (!info) {
            // Even if the driver says nothing here, the process works with this device.
            if (minor >= 0) {
                clients.emplace("node " + std::to_string(minor),
                                Client{{std::string(), std::string(), minor}, {}, path, {}, {}});
            }
            continue;
        }
        const GpuName device{info->driver, info->pciDevice, minor};
        // A duplicated descriptor repeats its client's numbers; opening the node again makes another client.
        const std::string client = info->client.empty() ? "file " + number : info->client;
        // Only PCI devices have distinct names here; nodes distinguish the others.
        const std::string which = device.pciDevice.empty() ? std::to_string(minor) : device.pciDevice;
        clients.emplace(device.driver + ' ' + which + ' ' + client, Client{device, *info, path, {}, {}});
    }
    return clients;
}

void GpuClients::compare(Client& now, const Client& before, double seconds) {
    now.counters = before.counters;
    for (const auto& [name, engine] : now.info.engines) {
        // amdgpu prints an engine only once it has worked. With other drivers a new engine may have worked
        // before.
        const bool isKnown = now.counters.count(name) != 0 || now.info.driver == "amdgpu";
        Counters& counters = now.counters[name];
        const std::uint64_t busy = advance(counters.busyNs, engine.busyNs);
        const std::uint64_t cycles = advance(counters.cycles, engine.cycles);
        const std::uint64_t total = advance(counters.totalCycles, engine.totalCycles);
        const auto capacity = static_cast<double>(engine.capacity);
        if (!isKnown) {
            continue;
        }
        if (engine.totalCycles) {
            now.loads[name] =
                total == 0 ? 0.0
                           : PERCENT * static_cast<double>(cycles) / static_cast<double>(total) / capacity;
        } else if (engine.busyNs && seconds > 0.0) {
            now.loads[name] = PERCENT * static_cast<double>(busy) / NS_PER_SECOND / seconds / capacity;
        }
    }
}

void GpuClients::read(double now) {
    Clients clients = collect();
    for (auto& [key, client] : clients) {
        const auto before = mClients.find(key);
        if (mHasRead && before != mClients.end()) {
            compare(client, before->second, now - mLastTime);
        } else {
            compare(client, client, 0.0);
            client.loads.clear();
        }
    }
    mClients = std::move(clients);
    choose(now);
    updateLoad();
    mLastTime = now;
    mHasRead = true;
}

void GpuClients::choose(double now) {
    struct Candidate {
        GpuName name;
        double load = 0.0;
        std::uint64_t memory = 0;
    };
    std::vector<Candidate> candidates;
    for (const auto& entry : mClients) {
        const Client& client = entry.second;
        auto found = std::find_if(candidates.begin(), candidates.end(), [&](const Candidate& each) {
            return each.name.isSameDevice(client.device) &&
                   (!client.device.driver.empty() || each.name.minor == client.device.minor);
        });
        if (found == candidates.end()) {
            found = candidates.insert(candidates.end(), {client.device, 0.0, 0});
        }
        for (const auto& [engine, load] : client.loads) {
            found->load += load;
        }
        found->memory += allMemory(client.info);
        found->name.minor = std::max(found->name.minor, client.device.minor);
    }
    mHasWorked = std::any_of(candidates.begin(), candidates.end(),
                             [](const Candidate& each) { return each.load > 0.0; });
    const auto best =
        std::max_element(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
            return std::pair(a.load, a.memory) < std::pair(b.load, b.memory);
        });
    if (best == candidates.end()) {
        mDevice.reset();
        return;
    }
    const auto current = std::find_if(candidates.begin(), candidates.end(), [&](const Candidate& each) {
        return mDevice && each.name.isSameDevice(*mDevice);
    });
    if (current == candidates.end()) {
        mWorkTime.reset();
    } else if (current->load > 0.0) {
        mWorkTime = now;
    }
    if (current == best) {
        mBestTime = now;
    }
    const bool isResting = !mWorkTime || now - *mWorkTime >= SECONDS_OF_REST;
    const bool isOutdone = best->load > 0.0 && (isResting || now - mBestTime >= SECONDS_TO_STAY);
    if (current == candidates.end() || isOutdone) {
        mDevice = best->name;
        mBestTime = now;
        mWorkTime = best->load > 0.0 ? std::optional(now) : std::nullopt;
    }
}

std::vector<const GpuClients::Client*> GpuClients::ofDevice() const {
    std::vector<const Client*> clients;
    for (const auto& [key, client] : mClients) {
        if (mDevice && client.device.isSameDevice(*mDevice)) {
            clients.push_back(&client);
        }
    }
    return clients;
}

void GpuClients::updateLoad() {
    std::map<std::string, double> loads;
    std::string file;
    bool hasEngines = false;
    for (const Client* const client : ofDevice()) {
        for (const auto& [engine, load] : client->loads) {
            loads[engine] += load;
        }
        file = client->file;
        hasEngines = hasEngines || std::any_of(client->info.engines.begin(), client->info.engines.end(),
                                               [](const auto& each) {
                                                   return each.second.busyNs || each.second.totalCycles;
                                               });
    }
    if (!mDevice) {
        mLoad = Value::none(Reason::NO_DEVICE);
    } else if (!hasEngines) {
        mLoad =
            Value::none(needsProfiling(mDevice->driver) ? Reason::SWITCHED_OFF : Reason::NOT_SUPPORTED, file);
    } else if (loads.empty()) {
        mLoad = Value::none(Reason::FIRST_READING, file);
    } else {
        // Classes work in parallel, so their sum could exceed 100 %.
        const auto busiest = std::max_element(
            loads.begin(), loads.end(), [](const auto& a, const auto& b) { return a.second < b.second; });
        mLoad = Value::of(std::clamp(busiest->second, 0.0, PERCENT), file);
    }
}

Value GpuClients::memory(bool isApu) const {
    std::optional<std::uint64_t> sum;
    std::string file;
    for (const Client* const client : ofDevice()) {
        const auto bytes = ownMemory(client->info, isApu);
        sum = bytes ? std::optional(sum.value_or(0) + *bytes) : sum;
        file = client->file;
    }
    if (!mDevice) {
        return Value::none(Reason::NO_DEVICE);
    }
    return sum ? Value::of(static_cast<double>(*sum), file) : Value::none(Reason::NOT_SUPPORTED, file);
}

Value GpuClients::highest(std::optional<std::uint64_t> FdInfo::Engine::*hertz) const {
    std::uint64_t highest = 0;
    std::string file;
    for (const Client* const client : ofDevice()) {
        for (const auto& [name, engine] : client->info.engines) {
            highest = std::max(highest, (engine.*hertz).value_or(0));
        }
        file = client->file;
    }
    return highest > 0 ? Value::of(static_cast<double>(highest) / HZ_PER_MHZ, file)
                       : Value::none(Reason::NOT_SUPPORTED, file);
}

}  // namespace sources
