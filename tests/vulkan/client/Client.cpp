#include "Client.h"

#include "Check.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <thread>
#include <utility>

namespace client {

namespace {

constexpr VkImageSubresourceRange EVERYTHING = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0,
                                                VK_REMAINING_ARRAY_LAYERS};

/// Any structure that no driver and no layer knows.
struct Unknown {
    VkStructureType sType = static_cast<VkStructureType>(0x7FFFFF00);
    const void* pNext = nullptr;
    std::array<char, 100> rest = {};
};

}  // namespace

Client::Client(const Setup& setup) : mSetup(setup), mFlight(setup.flight) {
    if (!mSetup.isHeadless) {
        mDisplay = XOpenDisplay(nullptr);
        if (mDisplay == nullptr) {
            std::cerr << "there is no display\n";
            std::exit(1);  // NOLINT(concurrency-mt-unsafe): nothing else runs
        }
    }
    createInstance();
    mTargets.resize(mSetup.swapchains);
    for (Target& target : mTargets) {
        createSurface(target);
    }
    createDevice();
    for (Target& target : mTargets) {
        createSwapchain(target, VK_NULL_HANDLE);
    }
}

Client::~Client() {
    vkDeviceWaitIdle(mDevice);
    finishAll();
    for (Target& target : mTargets) {
        destroySwapchain(target);
    }
    for (VkSemaphore semaphore : mOldSemaphores) {
        vkDestroySemaphore(mDevice, semaphore, nullptr);
    }
    if (mPasses) {
        mPasses->destroy();
    }
    vkDestroyCommandPool(mDevice, mPool, nullptr);
    vkDestroyDevice(mDevice, nullptr);
    for (const Target& target : mTargets) {
        vkDestroySurfaceKHR(mInstance, target.surface, nullptr);
    }
    vkDestroyInstance(mInstance, nullptr);
    if (mDisplay != nullptr) {
        XCloseDisplay(mDisplay);
    }
}

const void* Client::carried() const {
    static const Unknown UNKNOWN;
    return mSetup.chain == "unknown" ? &UNKNOWN : nullptr;
}

void Client::createInstance() {
    std::vector<const char*> names = {VK_KHR_SURFACE_EXTENSION_NAME};
    names.push_back(mSetup.isHeadless ? VK_EXT_HEADLESS_SURFACE_EXTENSION_NAME
                                      : VK_KHR_XLIB_SURFACE_EXTENSION_NAME);
    if (mSetup.format.colorSpace != VK_COLOR_SPACE_SRGB_NONLINEAR_KHR) {
        names.push_back(VK_EXT_SWAPCHAIN_COLOR_SPACE_EXTENSION_NAME);
    }
    auto application = infoOf<VkApplicationInfo>(VK_STRUCTURE_TYPE_APPLICATION_INFO);
    application.apiVersion = VK_MAKE_API_VERSION(0, 1, mSetup.minor, 0);
    auto info = infoOf<VkInstanceCreateInfo>(VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO);
    info.pApplicationInfo = mSetup.minor == 0 ? nullptr : &application;
    info.pNext = carried();
    info.enabledExtensionCount = static_cast<std::uint32_t>(names.size());
    info.ppEnabledExtensionNames = names.data();
    check(vkCreateInstance(&info, nullptr, &mInstance), "vkCreateInstance");
    std::uint32_t count = 1;
    vkEnumeratePhysicalDevices(mInstance, &count, &mPhysicalDevice);
    vkGetPhysicalDeviceQueueFamilyProperties(mPhysicalDevice, &count, nullptr);
}

void Client::createSurface(Target& target) {
    if (mSetup.isHeadless) {
        const auto create = reinterpret_cast<PFN_vkCreateHeadlessSurfaceEXT>(
            vkGetInstanceProcAddr(mInstance, "vkCreateHeadlessSurfaceEXT"));
        const auto info =
            infoOf<VkHeadlessSurfaceCreateInfoEXT>(VK_STRUCTURE_TYPE_HEADLESS_SURFACE_CREATE_INFO_EXT);
        check(create(mInstance, &info, nullptr, &target.surface), "vkCreateHeadlessSurfaceEXT");
        return;
    }
    if (target.window == 0) {
        target.window = XCreateSimpleWindow(mDisplay, DefaultRootWindow(mDisplay), 0, 0, mSize.width,
                                            mSize.height, 0, 0, 0);
        XMapWindow(mDisplay, target.window);
        XSync(mDisplay, False);
    }
    auto info = infoOf<VkXlibSurfaceCreateInfoKHR>(VK_STRUCTURE_TYPE_XLIB_SURFACE_CREATE_INFO_KHR);
    info.dpy = mDisplay;
    info.window = target.window;
    check(vkCreateXlibSurfaceKHR(mInstance, &info, nullptr, &target.surface), "vkCreateXlibSurfaceKHR");
}

void Client::createDevice() {
    VkBool32 isSupported = VK_FALSE;
    vkGetPhysicalDeviceSurfaceSupportKHR(mPhysicalDevice, mSetup.family, mTargets[0].surface, &isSupported);
    check(isSupported == VK_TRUE ? VK_SUCCESS : VK_ERROR_UNKNOWN, "presenting on the queue's family");
    constexpr std::array<float, 2> PRIORITIES = {1.0F, 1.0F};
    std::array<VkDeviceQueueCreateInfo, 2> queues = {};
    for (std::uint32_t i = 0; i < queues.size(); ++i) {
        queues[i].sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
        queues[i].queueFamilyIndex = i == 0 ? 0 : mSetup.family;
        queues[i].queueCount = mSetup.queues;
        queues[i].pQueuePriorities = PRIORITIES.data();
    }
    std::vector<const char*> names = {VK_KHR_SWAPCHAIN_EXTENSION_NAME};
    if (!mSetup.chain.empty()) {
        names.push_back(VK_KHR_INCREMENTAL_PRESENT_EXTENSION_NAME);
    }
    if (mSetup.isShared) {
        names.push_back(VK_KHR_DISPLAY_SWAPCHAIN_EXTENSION_NAME);
    }
    if (mSetup.mode == VK_PRESENT_MODE_SHARED_DEMAND_REFRESH_KHR) {
        names.push_back(VK_KHR_SHARED_PRESENTABLE_IMAGE_EXTENSION_NAME);
    }
    auto features =
        infoOf<VkPhysicalDeviceVulkan13Features>(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES);
    features.dynamicRendering = features.synchronization2 = VK_TRUE;
    auto info = infoOf<VkDeviceCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO);
    features.pNext = const_cast<void*>(carried());
    info.pNext = mSetup.minor == 3 ? &features : carried();
    info.queueCreateInfoCount = mSetup.family == 0 ? 1 : 2;
    info.pQueueCreateInfos = queues.data();
    info.enabledExtensionCount = static_cast<std::uint32_t>(names.size());
    info.ppEnabledExtensionNames = names.data();
    check(vkCreateDevice(mPhysicalDevice, &info, nullptr, &mDevice), "vkCreateDevice");
    vkGetDeviceQueue(mDevice, 0, 0, &mQueue);
    mPresenting.resize(mSetup.queues);
    for (std::uint32_t i = 0; i < mSetup.queues; ++i) {
        vkGetDeviceQueue(mDevice, mSetup.family, i, &mPresenting[i]);
    }
    auto pool = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
    pool.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
    check(vkCreateCommandPool(mDevice, &pool, nullptr, &mPool), "vkCreateCommandPool");
}

VkSemaphore Client::createSemaphore() {
    const auto info = infoOf<VkSemaphoreCreateInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO);
    VkSemaphore semaphore = VK_NULL_HANDLE;
    check(vkCreateSemaphore(mDevice, &info, nullptr, &semaphore), "vkCreateSemaphore");
    return semaphore;
}

void Client::createSwapchain(Target& target, VkSwapchainKHR last) {
    VkSurfaceCapabilitiesKHR surface = {};
    check(vkGetPhysicalDeviceSurfaceCapabilitiesKHR(mPhysicalDevice, target.surface, &surface),
          "vkGetPhysicalDeviceSurfaceCapabilitiesKHR");
    auto info = infoOf<VkSwapchainCreateInfoKHR>(VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR);
    info.pNext = carried();
    info.flags = mSetup.isProtected ? VK_SWAPCHAIN_CREATE_PROTECTED_BIT_KHR : 0;
    info.surface = target.surface;
    info.minImageCount = surface.minImageCount;
    info.imageFormat = mSetup.format.format;
    info.imageColorSpace = mSetup.format.colorSpace;
    info.imageExtent = mSetup.isHeadless ? mSize : surface.currentExtent;
    info.imageArrayLayers = mSetup.layers;
    info.imageUsage = VK_IMAGE_USAGE_TRANSFER_DST_BIT;  // the overlay has to ask for more itself
    const std::array<std::uint32_t, 2> families = {0, mSetup.family};
    if (mSetup.family != 0) {
        info.imageSharingMode = VK_SHARING_MODE_CONCURRENT;
        info.queueFamilyIndexCount = families.size();
        info.pQueueFamilyIndices = families.data();
    }
    info.preTransform = static_cast<VkSurfaceTransformFlagBitsKHR>(mSetup.turn);
    info.compositeAlpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
    info.presentMode = mSetup.mode;
    info.clipped = VK_TRUE;
    info.oldSwapchain = last;
    const auto createShared = reinterpret_cast<PFN_vkCreateSharedSwapchainsKHR>(
        vkGetDeviceProcAddr(mDevice, "vkCreateSharedSwapchainsKHR"));
    check(mSetup.isShared ? createShared(mDevice, 1, &info, nullptr, &target.swapchain)
                          : vkCreateSwapchainKHR(mDevice, &info, nullptr, &target.swapchain),
          "vkCreateSwapchainKHR");
    std::uint32_t count = 0;
    vkGetSwapchainImagesKHR(mDevice, target.swapchain, &count, nullptr);
    std::vector<VkImage> images(count);
    vkGetSwapchainImagesKHR(mDevice, target.swapchain, &count, images.data());
    target.isAcquired = false;
    target.commands.resize(count);
    target.drawn.resize(count);
    std::generate(target.drawn.begin(), target.drawn.end(), [this] { return createSemaphore(); });
    auto commands = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
    commands.commandPool = mPool;
    commands.commandBufferCount = count;
    check(vkAllocateCommandBuffers(mDevice, &commands, target.commands.data()), "vkAllocateCommandBuffers");
    for (std::uint32_t i = 0; i < count; ++i) {
        record(target.commands[i], images[i]);
    }
}

void Client::record(VkCommandBuffer commands, VkImage image) const {
    auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
    begin.pNext = carried();
    begin.flags = VK_COMMAND_BUFFER_USAGE_SIMULTANEOUS_USE_BIT;
    check(vkBeginCommandBuffer(commands, &begin), "vkBeginCommandBuffer");
    // Black is black however colours are written.
    const bool isPlain = mSetup.format.format == VK_FORMAT_B8G8R8A8_UNORM;
    const VkClearColorValue color = isPlain && !mSetup.isHeadless
                                        ? VkClearColorValue{{0.2F, 0.6F, 0.4F, 1.0F}}
                                        : VkClearColorValue{{0.0F, 0.0F, 0.0F, 1.0F}};
    auto barrier = infoOf<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
    barrier.dstAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.newLayout = VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL;
    barrier.srcQueueFamilyIndex = barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.image = image;
    barrier.subresourceRange = EVERYTHING;
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_TRANSFER_BIT, 0, 0,
                         nullptr, 0, nullptr, 1, &barrier);
    vkCmdClearColorImage(commands, image, barrier.newLayout, &color, 1, &EVERYTHING);
    barrier.oldLayout = barrier.newLayout;
    barrier.newLayout = mSetup.mode == VK_PRESENT_MODE_SHARED_DEMAND_REFRESH_KHR
                            ? VK_IMAGE_LAYOUT_SHARED_PRESENT_KHR
                            : VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
    barrier.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.dstAccessMask = 0;
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, 0, 0,
                         nullptr, 0, nullptr, 1, &barrier);
    check(vkEndCommandBuffer(commands), "vkEndCommandBuffer");
}

/// The next image of each swapchain; one that is shared with the screen is acquired once for all.
VkResult Client::acquire(Frame& frame) {
    for (Target& target : mTargets) {
        if (target.isAcquired && mSetup.mode == VK_PRESENT_MODE_SHARED_DEMAND_REFRESH_KHR) {
            continue;
        }
        VkSemaphore semaphore = createSemaphore();
        const VkResult result = vkAcquireNextImageKHR(mDevice, target.swapchain, UINT64_MAX, semaphore,
                                                      VK_NULL_HANDLE, &target.index);
        if (result < 0) {
            vkDestroySemaphore(mDevice, semaphore, nullptr);
            return result;
        }
        frame.acquired.push_back(semaphore);
        target.isAcquired = true;
    }
    return VK_SUCCESS;
}

VkResult Client::tryPresent(Frame& frame) {
    const std::vector<VkSemaphore>& acquired = frame.acquired;
    const VkSemaphore drawn = mTargets[0].drawn[mTargets[0].index];
    const std::vector<VkPipelineStageFlags> stages(acquired.size(), VK_PIPELINE_STAGE_TRANSFER_BIT);
    std::vector<VkCommandBuffer> commands;
    std::vector<VkSwapchainKHR> swapchains;
    std::vector<std::uint32_t> indices;
    for (const Target& target : mTargets) {
        commands.push_back(target.commands[target.index]);
        swapchains.push_back(target.swapchain);
        indices.push_back(target.index);
    }
    auto submission = infoOf<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
    submission.pNext = carried();
    submission.waitSemaphoreCount = static_cast<std::uint32_t>(acquired.size());
    submission.pWaitSemaphores = acquired.data();
    submission.pWaitDstStageMask = stages.data();
    submission.commandBufferCount = static_cast<std::uint32_t>(commands.size());
    submission.pCommandBuffers = commands.data();
    submission.signalSemaphoreCount = mSetup.isWaiting ? 1 : 0;
    submission.pSignalSemaphores = &drawn;
    if (mFlight.size() > 1) {
        const auto fence = infoOf<VkFenceCreateInfo>(VK_STRUCTURE_TYPE_FENCE_CREATE_INFO);
        check(vkCreateFence(mDevice, &fence, nullptr, &frame.fence), "vkCreateFence");
    }
    if (const VkResult result = vkQueueSubmit(mQueue, 1, &submission, frame.fence)) {
        vkDestroyFence(mDevice, std::exchange(frame.fence, VK_NULL_HANDLE), nullptr);
        return result;
    }
    if (!mSetup.isWaiting) {
        check(vkQueueWaitIdle(mQueue), "vkQueueWaitIdle");
    }
    const VkRectLayerKHR corner = {{0, 0}, {10, 10}, 0};
    const std::vector<VkPresentRegionKHR> region(mTargets.size(), {1, &corner});
    auto regions = infoOf<VkPresentRegionsKHR>(VK_STRUCTURE_TYPE_PRESENT_REGIONS_KHR);
    regions.swapchainCount = static_cast<std::uint32_t>(region.size());
    regions.pRegions = region.data();
    Unknown unknown;
    unknown.pNext = &regions;
    std::vector<VkResult> results(mTargets.size(), VK_ERROR_UNKNOWN);
    auto info = infoOf<VkPresentInfoKHR>(VK_STRUCTURE_TYPE_PRESENT_INFO_KHR);
    if (!mSetup.chain.empty()) {
        info.pNext = mSetup.chain == "unknown" ? static_cast<const void*>(&unknown) : &regions;
    }
    info.waitSemaphoreCount = submission.signalSemaphoreCount;
    info.pWaitSemaphores = &drawn;
    info.swapchainCount = static_cast<std::uint32_t>(swapchains.size());
    info.pSwapchains = swapchains.data();
    info.pImageIndices = indices.data();
    info.pResults = results.data();
    const VkResult result = vkQueuePresentKHR(mPresenting[mFrames++ % mPresenting.size()], &info);
    if (std::count(results.begin(), results.end(), result) == 0) {
        check(VK_ERROR_UNKNOWN, "the results of a present");
    }
    return result;
}

void Client::present() {
    if (mIsLost) {
        return;
    }
    std::rotate(mFlight.begin(), mFlight.begin() + 1, mFlight.end());
    Frame& frame = mFlight.back();
    finish(frame);
    VkResult result = acquire(frame);
    result = result < 0 ? result : tryPresent(frame);
    if (mFlight.size() == 1 || result < 0) {
        vkDeviceWaitIdle(mDevice);
        finish(frame);
    }
    switch (result) {
        case VK_ERROR_DEVICE_LOST:
        case VK_ERROR_OUT_OF_HOST_MEMORY:
            std::cout << "ends with " << result << '\n';
            mIsLost = true;
            break;
        case VK_ERROR_SURFACE_LOST_KHR:
            renew(true);
            break;
        case VK_ERROR_OUT_OF_DATE_KHR:
            resize(mSize.width, mSize.height);
            break;
        default:
            check(result, "a frame");
    }
}

void Client::finish(Frame& frame) {
    if (frame.fence != VK_NULL_HANDLE) {
        vkWaitForFences(mDevice, 1, &frame.fence, VK_TRUE, UINT64_MAX);
        vkDestroyFence(mDevice, std::exchange(frame.fence, VK_NULL_HANDLE), nullptr);
    }
    for (VkSemaphore semaphore : std::exchange(frame.acquired, {})) {
        vkDestroySemaphore(mDevice, semaphore, nullptr);
    }
}

void Client::finishAll() {
    for (Frame& frame : mFlight) {
        finish(frame);
    }
}

void Client::presentPasses() {
    if (mIsLost) {
        return;
    }
    if (!mPasses) {
        mPasses.emplace(mPhysicalDevice, mDevice, mPool);
    }
    vkDeviceWaitIdle(mDevice);  // its command buffers are recorded again
    mPasses->submit(mQueue);
    present();
}

void Client::resize(std::uint32_t width, std::uint32_t height) {
    mSize = {width, height};
    finishAll();  // the presents may go on
    for (Target& target : mTargets) {
        if (target.window != 0) {
            XResizeWindow(mDisplay, target.window, width, height);
            XSync(mDisplay, False);
        }
        Target last = target;
        createSwapchain(target, last.swapchain);
        destroySwapchain(last);
    }
}

void Client::renew(bool hasNewSurfaces) {
    vkDeviceWaitIdle(mDevice);
    finishAll();
    for (Target& target : mTargets) {
        destroySwapchain(target);
        if (hasNewSurfaces) {
            vkDestroySurfaceKHR(mInstance, target.surface, nullptr);
            createSurface(target);
            VkBool32 isSupported = VK_FALSE;
            vkGetPhysicalDeviceSurfaceSupportKHR(mPhysicalDevice, mSetup.family, target.surface,
                                                 &isSupported);
        }
        createSwapchain(target, VK_NULL_HANDLE);
    }
}

void Client::destroySwapchain(Target& target) {
    mOldSemaphores.insert(mOldSemaphores.end(), target.drawn.begin(), target.drawn.end());
    vkFreeCommandBuffers(mDevice, mPool, static_cast<std::uint32_t>(target.commands.size()),
                         target.commands.data());
    vkDestroySwapchainKHR(mDevice, target.swapchain, nullptr);
}

void Client::presentAlone(Target& target, VkQueue queue) {
    VkSemaphore acquired = createSemaphore();
    check(
        vkAcquireNextImageKHR(mDevice, target.swapchain, UINT64_MAX, acquired, VK_NULL_HANDLE, &target.index),
        "vkAcquireNextImageKHR");
    constexpr VkPipelineStageFlags STAGE = VK_PIPELINE_STAGE_TRANSFER_BIT;
    auto submission = infoOf<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
    submission.waitSemaphoreCount = submission.commandBufferCount = submission.signalSemaphoreCount = 1;
    submission.pWaitSemaphores = &acquired;
    submission.pWaitDstStageMask = &STAGE;
    submission.pCommandBuffers = &target.commands[target.index];
    submission.pSignalSemaphores = &target.drawn[target.index];
    check(vkQueueSubmit(queue, 1, &submission, VK_NULL_HANDLE), "vkQueueSubmit");
    auto info = infoOf<VkPresentInfoKHR>(VK_STRUCTURE_TYPE_PRESENT_INFO_KHR);
    info.waitSemaphoreCount = info.swapchainCount = 1;
    info.pWaitSemaphores = submission.pSignalSemaphores;
    info.pSwapchains = &target.swapchain;
    info.pImageIndices = &target.index;
    check(vkQueuePresentKHR(queue, &info), "vkQueuePresentKHR");
    check(vkQueueWaitIdle(queue), "vkQueueWaitIdle");
    vkDestroySemaphore(mDevice, acquired, nullptr);
}

void Client::presentApart(int frames) {
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < mTargets.size(); ++i) {
        threads.emplace_back([this, i, frames] {
            for (int frame = 0; frame < frames; ++frame) {
                presentAlone(mTargets[i], mPresenting.at(i));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void Client::callWithNulls() const {
    const auto find = [this](const char* name) { return vkGetDeviceProcAddr(mDevice, name); };
    for (const char* const name :
         {"vkDestroySwapchainKHR", "vkDestroyCommandPool", "vkDestroyRenderPass", "vkDestroyFramebuffer",
          "vkDestroyImage", "vkDestroyImageView", "vkDestroySemaphore"}) {
        reinterpret_cast<void (*)(VkDevice, std::uint64_t, const void*)>(find(name))(mDevice, 0, nullptr);
    }
    reinterpret_cast<PFN_vkDestroyDevice>(find("vkDestroyDevice"))(VK_NULL_HANDLE, nullptr);
    reinterpret_cast<PFN_vkQueueSubmit>(find("vkQueueSubmit"))(mQueue, 0, nullptr, VK_NULL_HANDLE);
    if (mSetup.minor == 3) {
        reinterpret_cast<PFN_vkQueueSubmit2>(find("vkQueueSubmit2"))(mQueue, 0, nullptr, VK_NULL_HANDLE);
    }
    const std::array<VkCommandBuffer, 2> none = {};
    reinterpret_cast<PFN_vkFreeCommandBuffers>(find("vkFreeCommandBuffers"))(
        mDevice, mPool, static_cast<std::uint32_t>(none.size()), none.data());
    reinterpret_cast<PFN_vkDestroyInstance>(vkGetInstanceProcAddr(mInstance, "vkDestroyInstance"))(
        VK_NULL_HANDLE, nullptr);
    for (const char* const absent : {"vkNoSuchFunction", "vkGetCalibratedTimestampsEXT",
                                     "vkGetPhysicalDeviceCalibrateableTimeDomainsEXT"}) {
        check(find(absent) == nullptr ? VK_SUCCESS : VK_ERROR_UNKNOWN, absent);
        check(vkGetInstanceProcAddr(VK_NULL_HANDLE, absent) == nullptr ? VK_SUCCESS : VK_ERROR_UNKNOWN,
              absent);
    }
}

}  // namespace client
