#include "faults/FaultHost.h"

#include "doubles/Emulator.h"
#include "dumps/DumpReader.h"
#include "ostra/ProcessSocket.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace faults {

namespace {

namespace fs = std::filesystem;

using support::ChildProcess;
using support::waitUntil;

std::string send(pid_t process, const platform::ProcessMessage& message) {
    return platform::sendMessage(std::getenv("KORDANIX_RUNTIME_DIR"), process, message);
}

}  // namespace

FaultHost::FaultHost(const std::string& device, const std::string& prepare) {
    const std::string memory = mFolder.path("shared");
    const int file = open(memory.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    void* address = MAP_FAILED;
    if (ftruncate(file, sizeof(HostShared)) == 0) {
        address = mmap(nullptr, sizeof(HostShared), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    }
    close(file);
    if (address == MAP_FAILED) {
        std::abort();
    }
    mShared.reset(static_cast<HostShared*>(address), [](HostShared* own) { munmap(own, sizeof(*own)); });
    fs::create_symlink(FAULT_HOST, mFolder.path(HOST_NAME));
    const std::string name = HOST_NAME;
    const std::string start =
        "exec " + (doubles::isEmulated() ? doubles::emulator() + "-0 " + name + ' ' + FAULT_HOST : name);
    std::vector<std::string> command = {"sh", "-c", start};
    if (!prepare.empty()) {
        command = {"unshare", geteuid() == 0 ? "-m" : "-rm", "sh", "-c", "set -e; " + prepare + "; " + start};
    }
    mProcess = std::make_unique<ChildProcess>(
        command, ChildProcess::Environment{{"PATH", mFolder.path() + ":" + std::getenv("PATH")},
                                           {"FAULT_SHARED", memory},
                                           {"KORDANIX_DUMP_DIR", mFolder.path("dumps")},
                                           {"KORDANIX_DEVICE", device}});
}

bool FaultHost::waitForFrames(long count) {
    const long before = mShared->frames;
    return waitUntil([=] { return mShared->frames > before + count; });
}

std::string FaultHost::press(int code) const {
    platform::ProcessMessage message;
    message.key = {code, 1};
    return send(id(), message);
}

std::string FaultHost::sendToBackground() const {
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::BACKGROUND;
    return send(id(), message);
}

bool FaultHost::setDumping(bool isDumping) {
    return press(DUMP_KEY).empty() && waitUntil([=] { return mShared->isDumping == isDumping; });
}

bool FaultHost::follows() {
    return showOverlay(78).empty() &&
           waitUntil([this] { return mShared->opacity == 78 && mShared->isShown; }) &&
           mShared->tornTexts == 0;
}

bool FaultHost::startChild(Order order) {
    mShared->order = order;
    return waitUntil([this] { return mShared->order == Order::NONE; });
}

int FaultHost::end(End end) {
    mShared->end = end;
    return wait();
}

std::size_t FaultHost::entries(const char* folder) const {
    std::error_code error;
    const fs::directory_iterator found("/proc/" + std::to_string(id()) + '/' + folder, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(found, fs::directory_iterator()));
}

std::size_t FaultHost::residentPages() const {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/" + std::to_string(id()) + "/statm") >> total >> resident;
    return resident;
}

std::vector<std::string> FaultHost::logged(const std::string& text) const {
    std::vector<std::string> lines;
    std::istringstream log(mProcess->errors());
    for (std::string line; std::getline(log, line);) {
        if (line.find(text) != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::string FaultHost::dumpError() const {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> found;
    std::error_code none;
    for (const auto& folder : fs::directory_iterator(mFolder.path("dumps"), none)) {
        dumps::Dump dump;
        if (!dumps::readDump(folder.path(), dump).empty()) {
            continue;  // it ended in the frame in which it began
        }
        found.emplace_back(dump.frames.front().number, dump.frames.back().number);
        const auto [first, last] = found.back();
        const std::string losses = dumps::describeLosses(dump);
        if (!losses.empty() || last - first + 1 != dump.frames.size()) {
            return folder.path().string() + " lacks frames. " + losses;
        }
    }
    const std::size_t count = std::min<std::size_t>(mShared->dumpCount, HostShared::MAX_DUMPS);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t first = mShared->dumps[i].first;
        const std::uint64_t last = mShared->dumps[i].last;
        const bool isThere = last == 0 || std::any_of(found.begin(), found.end(), [=](const auto& frames) {
                                 return frames.first <= first && last <= frames.second;
                             });
        if (!isThere) {
            return "frames " + std::to_string(first) + " to " + std::to_string(last) + " are in no dump";
        }
    }
    return {};
}

}  // namespace faults
