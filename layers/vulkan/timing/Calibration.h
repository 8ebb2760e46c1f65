#pragma once

#include "vulkan/draw/Gpu.h"
#include "vulkan/timing/TimeStampClock.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vulkan {

/// The extension that relates the GPU's time stamps to this machine's clock. The layer enables it where the
/// device has it and the application does not, which does not get to see it.
class CalibratedDeviceInfo {
public:
    /// `info` and the instance outlive it. `hasProperties2`: the instance has what the extension needs.
    CalibratedDeviceInfo(const InstanceFunctions& instance, VkPhysicalDevice device, bool hasProperties2,
                         const VkDeviceCreateInfo& info);

    /// The application's info itself where nothing was added.
    const VkDeviceCreateInfo* info() const { return mIsOurs ? &mChanged : &mInfo; }
    /// We have added it, so that the application must not see it.
    bool isOurs() const { return mIsOurs; }
    /// The device can relate its time stamps, by our wish or the application's.
    bool isCalibrated() const { return mIsCalibrated; }

private:
    const VkDeviceCreateInfo& mInfo;
    VkDeviceCreateInfo mChanged;
    std::vector<const char*> mNames;
    bool mIsOurs = false;
    bool mIsCalibrated = false;
};

/// Whether an instance has what the extension needs.
bool hasProperties2(const VkInstanceCreateInfo& info);

/// Nanoseconds of CLOCK_MONOTONIC at which the GPU took a time stamp, within some hours from now. Nothing
/// when the device does not tell. Makes a system call; any thread.
std::optional<std::int64_t> monotonicTime(const Gpu& gpu, const TimeStampClock& clock, std::uint64_t stamp);

}  // namespace vulkan
