#include "vulkan/timing/Calibration.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace vulkan {

namespace {

constexpr const char* EXTENSION = VK_EXT_CALIBRATED_TIMESTAMPS_EXTENSION_NAME;

bool isNamed(const char* const* names, std::uint32_t count, const char* name) {
    return std::any_of(names, names + count,
                       [name](const char* each) { return std::strcmp(each, name) == 0; });
}

/// Whether the device relates its own clock to CLOCK_MONOTONIC.
bool canCalibrate(const InstanceFunctions& instance, VkPhysicalDevice device) {
    std::uint32_t count = 0;
    if (instance.EnumerateDeviceExtensionProperties == nullptr ||
        instance.GetPhysicalDeviceCalibrateableTimeDomainsEXT == nullptr ||
        instance.EnumerateDeviceExtensionProperties(device, nullptr, &count, nullptr) != VK_SUCCESS) {
        return false;
    }
    std::vector<VkExtensionProperties> extensions(count);
    instance.EnumerateDeviceExtensionProperties(device, nullptr, &count, extensions.data());
    if (std::none_of(extensions.begin(), extensions.end(), [](const VkExtensionProperties& each) {
            return std::strcmp(each.extensionName, EXTENSION) == 0;
        })) {
        return false;
    }
    std::array<VkTimeDomainEXT, 8> domains = {};
    count = domains.size();
    if (instance.GetPhysicalDeviceCalibrateableTimeDomainsEXT(device, &count, domains.data()) < 0) {
        return false;
    }
    const auto has = [&](VkTimeDomainEXT domain) {
        return std::find(domains.begin(), domains.begin() + count, domain) != domains.begin() + count;
    };
    return has(VK_TIME_DOMAIN_DEVICE_EXT) && has(VK_TIME_DOMAIN_CLOCK_MONOTONIC_EXT);
}

}  // namespace

bool hasProperties2(const VkInstanceCreateInfo& info) {
    return (info.pApplicationInfo != nullptr && info.pApplicationInfo->apiVersion >= VK_API_VERSION_1_1) ||
           isNamed(info.ppEnabledExtensionNames, info.enabledExtensionCount,
                   VK_KHR_GET_PHYSICAL_DEVICE_PROPERTIES_2_EXTENSION_NAME);
}

CalibratedDeviceInfo::CalibratedDeviceInfo(const InstanceFunctions& instance, VkPhysicalDevice device,
                                           bool hasProperties2, const VkDeviceCreateInfo& info)
    : mInfo(info), mChanged(info) {
    try {
        mIsCalibrated = hasProperties2 && canCalibrate(instance, device);
        if (!mIsCalibrated || isNamed(info.ppEnabledExtensionNames, info.enabledExtensionCount, EXTENSION)) {
            return;
        }
        mNames.assign(info.ppEnabledExtensionNames,
                      info.ppEnabledExtensionNames + info.enabledExtensionCount);
        mNames.push_back(EXTENSION);
    } catch (const std::bad_alloc&) {
        mIsCalibrated = false;
        return;
    }
    mChanged.enabledExtensionCount = static_cast<std::uint32_t>(mNames.size());
    mChanged.ppEnabledExtensionNames = mNames.data();
    mIsOurs = true;
}

std::optional<std::int64_t> monotonicTime(const Gpu& gpu, const TimeStampClock& clock, std::uint64_t stamp) {
    auto device = infoOf<VkCalibratedTimestampInfoEXT>(VK_STRUCTURE_TYPE_CALIBRATED_TIMESTAMP_INFO_EXT);
    device.timeDomain = VK_TIME_DOMAIN_DEVICE_EXT;
    VkCalibratedTimestampInfoEXT host = device;
    host.timeDomain = VK_TIME_DOMAIN_CLOCK_MONOTONIC_EXT;
    const std::array<VkCalibratedTimestampInfoEXT, 2> infos = {device, host};
    std::array<std::uint64_t, 2> now = {};
    std::uint64_t deviation = 0;
    if (!gpu.isCalibrated || gpu.vk.GetCalibratedTimestampsEXT == nullptr ||
        gpu.vk.GetCalibratedTimestampsEXT(gpu.device, infos.size(), infos.data(), now.data(), &deviation) !=
            VK_SUCCESS) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(now[1] - clock.nanoseconds(stamp, now[0]));
}

}  // namespace vulkan
