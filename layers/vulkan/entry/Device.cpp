#include "vulkan/entry/Device.h"

#include "entry/SurfaceSize.h"
#include "ostra/PerProcess.h"
#include "utils/Log.h"
#include "vulkan/entry/Layer.h"

#include <ostra/ExtraColumns.h>

#include <algorithm>
#include <exception>

namespace vulkan {

namespace {

constexpr VkImageUsageFlags NEEDED = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
constexpr VkImageUsageFlags WANTED = VK_IMAGE_USAGE_TRANSFER_SRC_BIT;

constexpr char NOT_DRAWN_INTO[] = "its surface does not let its images be drawn into";

/// Whether it may be for what the layer has added that a swapchain could not be made.
bool isPerhapsOurFault(VkResult result) {
    return result < 0 && result != VK_ERROR_DEVICE_LOST && result != VK_ERROR_SURFACE_LOST_KHR &&
           result != VK_ERROR_NATIVE_WINDOW_IN_USE_KHR;
}

}  // namespace

Device::Device(const Instance& instance, const Gpu& gpu, bool isComplete)
    : mInstance(instance),
      mGpu(gpu),
      mIsComplete(isComplete && instance.isComplete),
      mRetired(mGpu),
      mPassQueries(mGpu) {
    if (mIsComplete) {
        std::uint32_t count = 0;
        instance.functions.GetPhysicalDeviceQueueFamilyProperties(gpu.physicalDevice, &count, nullptr);
        mFamilies.resize(count);
        instance.functions.GetPhysicalDeviceQueueFamilyProperties(gpu.physicalDevice, &count,
                                                                  mFamilies.data());
        mCanStampPasses =
            std::none_of(mFamilies.begin(), mFamilies.end(), [](const VkQueueFamilyProperties& family) {
                return (family.queueFlags & VK_QUEUE_GRAPHICS_BIT) != 0 && family.timestampValidBits == 0;
            });
        mPipelines.emplace(mGpu);
    }
}

Device::~Device() {
    while (const std::unique_ptr<Swapchain> swapchain = mSwapchains.removeAny()) {
        release(*swapchain);
    }
}

void Device::addQueue(VkQueue queue, std::uint32_t family) {
    if (queue != VK_NULL_HANDLE && mQueues.find(queue) == nullptr) {
        mQueues.add(queue, std::make_unique<Queue>(Queue{family, nullptr, false}));
    }
}

std::uint32_t Device::familyOf(VkQueue queue) const {
    const Queue* const found = mQueues.find(queue);
    return found == nullptr ? NO_FAMILY : found->family;
}

TimeStampClock Device::clockOf(const Queue& queue) const {
    const std::uint32_t bits =
        queue.family < mFamilies.size() ? mFamilies[queue.family].timestampValidBits : 0;
    return bits == 0 ? TimeStampClock() : TimeStampClock(bits, mGpu.timeStampPeriod);
}

void Device::expectFrame(VkQueue queue, std::uint32_t frame) {
    Queue* const found = mQueues.find(queue);
    const TimeStampClock clock = found == nullptr ? TimeStampClock() : clockOf(*found);
    if (clock.mask == 0) {
        return;
    }
    if (found->stamps == nullptr && !found->isUntimed) {
        try {
            found->stamps = std::make_unique<FrameStamps>(mGpu, found->family, clock);
        } catch (const std::exception& error) {
            found->isUntimed = true;
            KORDANIX_LOG_ERROR("frames are shown without the GPU's time: %s", KORDANIX_LOG_HERE,
                               error.what());
        }
    }
    if (found->isUntimed) {
        return;
    }
    found->stamps->expect(frame);
    mExpecting.store(queue, std::memory_order_relaxed);
}

FrameStamps* Device::expectingStamps(VkQueue queue) const {
    if (mExpecting.load(std::memory_order_relaxed) != queue) {
        return nullptr;
    }
    const Queue* const found = mQueues.find(queue);
    return found == nullptr ? nullptr : found->stamps.get();
}

bool Device::canDraw(std::uint32_t family) const {
    return family < mFamilies.size() && (mFamilies[family].queueFlags & VK_QUEUE_GRAPHICS_BIT) != 0;
}

VkResult Device::createSwapchain(const VkSwapchainCreateInfoKHR& info, const VkAllocationCallbacks* allocator,
                                 VkSwapchainKHR* handle, Swapchain*& made) {
    made = nullptr;
    std::unique_ptr<Swapchain> swapchain;
    VkSwapchainCreateInfoKHR changed = info;
    try {
        swapchain = std::make_unique<Swapchain>();
        swapchain->obstacle = findObstacle(info);
        if (swapchain->obstacle == nullptr) {
            changed.imageUsage |= possibleUses(info);
            if ((changed.imageUsage & NEEDED) != NEEDED) {
                swapchain->obstacle = NOT_DRAWN_INTO;
                changed.imageUsage = info.imageUsage;
            }
        }
    } catch (const std::exception&) {
        swapchain.reset();
        changed = info;
    }
    VkResult result = mGpu.vk.CreateSwapchainKHR(mGpu.device, &changed, allocator, handle);
    if (isPerhapsOurFault(result) && changed.imageUsage != info.imageUsage) {
        changed.imageUsage = info.imageUsage;
        changed.oldSwapchain = VK_NULL_HANDLE;  // the first try has retired it
        swapchain->obstacle = NOT_DRAWN_INTO;
        result = mGpu.vk.CreateSwapchainKHR(mGpu.device, &changed, allocator, handle);
    }
    if (result != VK_SUCCESS || swapchain == nullptr) {
        return result;
    }
    try {
        swapchain->handle = *handle;
        swapchain->images.format = info.imageFormat;
        swapchain->images.colorSpace = info.imageColorSpace;
        swapchain->images.size = info.imageExtent;
        swapchain->images.layers = info.imageArrayLayers;
        swapchain->images.transform = info.preTransform;
        swapchain->images.isReadable = (changed.imageUsage & WANTED) == WANTED;
        if (swapchain->obstacle == nullptr) {
            readImages(*swapchain);
        }
        Swapchain* const kept = swapchain.get();
        mSwapchains.insert(*handle, std::move(swapchain));
        made = kept;
    } catch (const std::exception& error) {
        KORDANIX_LOG_ERROR("a swapchain is passed through: %s", KORDANIX_LOG_HERE, error.what());
    }
    return result;
}

void Device::addSharedSwapchains(std::uint32_t count, const VkSwapchainKHR* handles) {
    for (std::uint32_t i = 0; i < count; ++i) {
        try {
            auto swapchain = std::make_unique<Swapchain>();
            swapchain->handle = handles[i];
            swapchain->obstacle = "it was made together with other swapchains, for a display";
            mSwapchains.insert(handles[i], std::move(swapchain));
        } catch (const std::bad_alloc&) {
            // It is passed through, and nobody is told.
        }
    }
}

void Device::destroySwapchain(VkSwapchainKHR handle, const VkAllocationCallbacks* allocator) {
    if (const std::unique_ptr<Swapchain> swapchain = mSwapchains.remove(handle)) {
        release(*swapchain);
    }
    mGpu.vk.DestroySwapchainKHR(mGpu.device, handle, allocator);
}

Renderer& Device::renderer(Swapchain& swapchain, std::uint32_t family, drawlist::DrawList& list) {
    if (swapchain.renderer == nullptr) {
        if (list.glyphs.side() == 0) {
            list.begin();
        }
        list.forget();
        swapchain.renderer =
            std::make_unique<Renderer>(mGpu, *mPipelines, swapchain.images, family, list.glyphs.side());
        swapchain.family = family;
        if (Ostra::setDumpSubject != nullptr) {
            VkPhysicalDeviceProperties properties = {};
            mInstance.functions.GetPhysicalDeviceProperties(mGpu.physicalDevice, &properties);
            Ostra::setDumpSubject("GPU", properties.deviceName);
        }
    }
    return *swapchain.renderer;
}

/// What the layer made goes before the swapchain. The application may know that its own frames are done, and
/// ours come right after them.
void Device::release(Swapchain& swapchain) {
    if (Layer* const layer = platform::PerProcess<Layer>::find()) {
        layer->forget(swapchain);
    }
    for (VkImage image : swapchain.images.images) {
        mAttachments.removeImage(image);
    }
    if (swapchain.renderer == nullptr) {
        return;
    }
    Renderer& renderer = *swapchain.renderer;
    mRetired.forget(renderer.ring());
    if (!renderer.finish()) {
        // Somebody still waits for a semaphore that nobody signals: destroying it is worse than keeping it.
        KORDANIX_LOG_ERROR("what was drawn over a swapchain is not done after seconds; it stays",
                           KORDANIX_LOG_HERE);
        static_cast<void>(swapchain.renderer.release());
        return;
    }
    try {
        mRetired.add(renderer.queue(), renderer.takeSemaphores());
    } catch (const std::bad_alloc&) {
        // They stay with the device.
    }
    swapchain.renderer.reset();
}

entry::Obstacle Device::findObstacle(const VkSwapchainCreateInfoKHR& info) const {
    if (!mIsComplete || mGpu.setLoaderData == nullptr || mGpu.vk.GetSwapchainImagesKHR == nullptr ||
        mGpu.vk.QueuePresentKHR == nullptr ||
        mInstance.functions.GetPhysicalDeviceSurfaceCapabilitiesKHR == nullptr) {
        return "its Vulkan lacks functions";
    }
    if ((info.flags & VK_SWAPCHAIN_CREATE_PROTECTED_BIT_KHR) != 0) {
        return "its pictures are protected";
    }
    if ((info.flags & VK_SWAPCHAIN_CREATE_SPLIT_INSTANCE_BIND_REGIONS_BIT_KHR) != 0) {
        return "its pictures are drawn by several devices";
    }
    if ((info.flags & VK_SWAPCHAIN_CREATE_DEFERRED_MEMORY_ALLOCATION_BIT_EXT) != 0) {
        return "its images have no memory until they are acquired";
    }
    if (info.presentMode == VK_PRESENT_MODE_SHARED_DEMAND_REFRESH_KHR ||
        info.presentMode == VK_PRESENT_MODE_SHARED_CONTINUOUS_REFRESH_KHR) {
        return "it shares its picture with the screen while it draws";
    }
    if (info.imageExtent.width < 2 || info.imageExtent.height < 2) {
        return entry::TOO_SMALL;
    }
    if (!mGpu.has(info.imageFormat, VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BLEND_BIT)) {
        return "nothing can be blended in its format";
    }
    return nullptr;
}

/// Those that drawing needs or wants, as far as the surface and the format allow them.
VkImageUsageFlags Device::possibleUses(const VkSwapchainCreateInfoKHR& info) const {
    VkSurfaceCapabilitiesKHR surface = {};
    if (mInstance.functions.GetPhysicalDeviceSurfaceCapabilitiesKHR(mGpu.physicalDevice, info.surface,
                                                                    &surface) != VK_SUCCESS) {
        return 0;
    }
    VkImageUsageFlags uses = 0;
    for (const VkImageUsageFlags use : {NEEDED, WANTED}) {
        VkImageFormatProperties properties = {};
        const VkImageCreateFlags flags =
            (info.flags & VK_SWAPCHAIN_CREATE_MUTABLE_FORMAT_BIT_KHR) != 0
                ? VK_IMAGE_CREATE_MUTABLE_FORMAT_BIT | VK_IMAGE_CREATE_EXTENDED_USAGE_BIT
                : 0;
        const bool isPossible =
            (surface.supportedUsageFlags & use) != 0 &&
            mInstance.functions.GetPhysicalDeviceImageFormatProperties(
                mGpu.physicalDevice, info.imageFormat, VK_IMAGE_TYPE_2D, VK_IMAGE_TILING_OPTIMAL,
                info.imageUsage | uses | use, flags, &properties) == VK_SUCCESS;
        uses |= isPossible ? use : 0;
    }
    return uses;
}

void Device::readImages(Swapchain& swapchain) {
    std::uint32_t count = 0;
    std::vector<VkImage>& images = swapchain.images.images;
    check(mGpu.vk.GetSwapchainImagesKHR(mGpu.device, swapchain.handle, &count, nullptr),
          "vkGetSwapchainImagesKHR");
    images.resize(count);
    check(mGpu.vk.GetSwapchainImagesKHR(mGpu.device, swapchain.handle, &count, images.data()),
          "vkGetSwapchainImagesKHR");
    for (VkImage image : images) {
        mAttachments.addImage(image, swapchain.images.size);
    }
}

}  // namespace vulkan
