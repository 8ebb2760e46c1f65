#pragma once

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace support {

/// All signals that can be blocked: the kernel keeps two for itself, and the C library two.
constexpr std::uint64_t ALL_SIGNALS = 0xFFFFFFFE7FFBFEFF;

/// The signals that each thread of this process but its first has blocked, by the thread's name.
inline std::map<std::string, std::uint64_t> blockedSignals() {
    std::map<std::string, std::uint64_t> threads;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(entry.path() / "status");
        std::string name;
        for (std::string key, value; status >> key && std::getline(status >> std::ws, value);) {
            if (key == "Name:") {
                name = value;
            } else if (key == "SigBlk:" && entry.path().filename() != std::to_string(getpid())) {
                threads[name] = std::stoull(value, nullptr, 16);
            }
        }
    }
    return threads;
}

}  // namespace support
