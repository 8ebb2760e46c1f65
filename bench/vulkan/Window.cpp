#include "Window.h"

#include "WindowPicture.h"

#define VK_USE_PLATFORM_XLIB_KHR
#include <vulkan/vulkan.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <vector>

namespace client {
namespace {

[[noreturn]] void fail(const std::string& reason) {
    std::cerr << "kordanix-vulkan-client: " << reason << '\n';
    std::exit(EXIT_FAILURE);
}

void check(VkResult result, const char* what) {
    if (result != VK_SUCCESS && result != VK_SUBOPTIMAL_KHR) {
        fail(std::string(what) + " failed: " + std::to_string(result));
    }
}

template <typename Info>
Info infoOf(VkStructureType type) {
    Info info = {};
    info.sType = type;
    return info;
}

/// As many frames may be under way.
constexpr std::size_t FRAMES = 2;

}  // namespace

struct Window::Handles {
    Handles(int width, int height);
    ~Handles();

    void createWindow(int width, int height);
    void createDevice();
    void createSwapchain();
    void record(VkCommandBuffer commands, VkImage image) const;
    VkSemaphore createSemaphore() const;

    /// A frame under way.
    struct Frame {
        VkSemaphore acquired = VK_NULL_HANDLE;
        VkFence fence = VK_NULL_HANDLE;
    };

    Display* display = nullptr;
    ::Window window = 0;
    VkInstance instance = VK_NULL_HANDLE;
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    VkPhysicalDevice physicalDevice = VK_NULL_HANDLE;
    VkDevice device = VK_NULL_HANDLE;
    VkQueue queue = VK_NULL_HANDLE;
    VkCommandPool pool = VK_NULL_HANDLE;
    VkSwapchainKHR swapchain = VK_NULL_HANDLE;
    std::vector<VkCommandBuffer> commands;  ///< by picture
    std::vector<VkSemaphore> drawn;         ///< by picture
    std::array<Frame, FRAMES> frames;
    std::size_t count = 0;
};

Window::Handles::Handles(int width, int height) {
    createWindow(width, height);
    createDevice();
    createSwapchain();
    for (Frame& frame : frames) {
        frame.acquired = createSemaphore();
        auto info = infoOf<VkFenceCreateInfo>(VK_STRUCTURE_TYPE_FENCE_CREATE_INFO);
        info.flags = VK_FENCE_CREATE_SIGNALED_BIT;
        check(vkCreateFence(device, &info, nullptr, &frame.fence), "vkCreateFence");
    }
}

Window::Handles::~Handles() {
    vkDeviceWaitIdle(device);
    for (const Frame& frame : frames) {
        vkDestroySemaphore(device, frame.acquired, nullptr);
        vkDestroyFence(device, frame.fence, nullptr);
    }
    for (VkSemaphore semaphore : drawn) {
        vkDestroySemaphore(device, semaphore, nullptr);
    }
    vkDestroyCommandPool(device, pool, nullptr);
    vkDestroySwapchainKHR(device, swapchain, nullptr);
    vkDestroyDevice(device, nullptr);
    vkDestroySurfaceKHR(instance, surface, nullptr);
    vkDestroyInstance(instance, nullptr);
    XDestroyWindow(display, window);
    XCloseDisplay(display);
}

void Window::Handles::createWindow(int width, int height) {
    display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        fail("no display");
    }
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;  // there is no window manager to place it
    window = XCreateWindow(display, DefaultRootWindow(display), 0, 0, static_cast<unsigned>(width),
                           static_cast<unsigned>(height), 0, CopyFromParent, InputOutput, nullptr,
                           CWOverrideRedirect, &attributes);
    XMapRaised(display, window);
    XSync(display, False);
}

void Window::Handles::createDevice() {
    constexpr std::array<const char*, 2> NAMES = {VK_KHR_SURFACE_EXTENSION_NAME,
                                                  VK_KHR_XLIB_SURFACE_EXTENSION_NAME};
    auto instanceInfo = infoOf<VkInstanceCreateInfo>(VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO);
    instanceInfo.enabledExtensionCount = NAMES.size();
    instanceInfo.ppEnabledExtensionNames = NAMES.data();
    check(vkCreateInstance(&instanceInfo, nullptr, &instance), "vkCreateInstance");
    auto surfaceInfo = infoOf<VkXlibSurfaceCreateInfoKHR>(VK_STRUCTURE_TYPE_XLIB_SURFACE_CREATE_INFO_KHR);
    surfaceInfo.dpy = display;
    surfaceInfo.window = window;
    check(vkCreateXlibSurfaceKHR(instance, &surfaceInfo, nullptr, &surface), "vkCreateXlibSurfaceKHR");
    std::uint32_t devices = 1;
    vkEnumeratePhysicalDevices(instance, &devices, &physicalDevice);
    VkBool32 isSupported = VK_FALSE;
    if (devices != 0) {
        vkGetPhysicalDeviceSurfaceSupportKHR(physicalDevice, 0, surface, &isSupported);
    }
    if (isSupported == VK_FALSE) {
        fail("no device whose first queues present");
    }
    constexpr float PRIORITY = 1.0F;
    auto queueInfo = infoOf<VkDeviceQueueCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO);
    queueInfo.queueCount = 1;
    queueInfo.pQueuePriorities = &PRIORITY;
    const char* const extension = VK_KHR_SWAPCHAIN_EXTENSION_NAME;
    auto deviceInfo = infoOf<VkDeviceCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO);
    deviceInfo.queueCreateInfoCount = 1;
    deviceInfo.pQueueCreateInfos = &queueInfo;
    deviceInfo.enabledExtensionCount = 1;
    deviceInfo.ppEnabledExtensionNames = &extension;
    check(vkCreateDevice(physicalDevice, &deviceInfo, nullptr, &device), "vkCreateDevice");
    vkGetDeviceQueue(device, 0, 0, &queue);
    const auto poolInfo = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
    check(vkCreateCommandPool(device, &poolInfo, nullptr, &pool), "vkCreateCommandPool");
}

void Window::Handles::createSwapchain() {
    VkSurfaceCapabilitiesKHR limits = {};
    check(vkGetPhysicalDeviceSurfaceCapabilitiesKHR(physicalDevice, surface, &limits),
          "vkGetPhysicalDeviceSurfaceCapabilitiesKHR");
    auto info = infoOf<VkSwapchainCreateInfoKHR>(VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR);
    info.surface = surface;
    info.minImageCount = limits.minImageCount;
    info.imageFormat = VK_FORMAT_B8G8R8A8_UNORM;
    info.imageExtent = limits.currentExtent;
    info.imageArrayLayers = 1;
    info.imageUsage = VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
    info.preTransform = limits.currentTransform;
    info.compositeAlpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
    info.presentMode = VK_PRESENT_MODE_IMMEDIATE_KHR;
    info.clipped = VK_TRUE;
    check(vkCreateSwapchainKHR(device, &info, nullptr, &swapchain), "vkCreateSwapchainKHR");
    std::uint32_t images = 0;
    vkGetSwapchainImagesKHR(device, swapchain, &images, nullptr);
    std::vector<VkImage> all(images);
    vkGetSwapchainImagesKHR(device, swapchain, &images, all.data());
    commands.resize(images);
    auto allocation = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
    allocation.commandPool = pool;
    allocation.commandBufferCount = images;
    check(vkAllocateCommandBuffers(device, &allocation, commands.data()), "vkAllocateCommandBuffers");
    for (std::uint32_t i = 0; i < images; ++i) {
        record(commands[i], all[i]);
        drawn.push_back(createSemaphore());
    }
}

void Window::Handles::record(VkCommandBuffer buffer, VkImage image) const {
    auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
    begin.flags = VK_COMMAND_BUFFER_USAGE_SIMULTANEOUS_USE_BIT;
    check(vkBeginCommandBuffer(buffer, &begin), "vkBeginCommandBuffer");
    constexpr VkImageSubresourceRange ALL = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    constexpr VkClearColorValue COLOR = {{0.2F, 0.6F, 0.4F, 1.0F}};
    constexpr VkPipelineStageFlags COPY = VK_PIPELINE_STAGE_TRANSFER_BIT;
    auto barrier = infoOf<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
    barrier.dstAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.newLayout = VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL;
    barrier.srcQueueFamilyIndex = barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.image = image;
    barrier.subresourceRange = ALL;
    vkCmdPipelineBarrier(buffer, COPY, COPY, 0, 0, nullptr, 0, nullptr, 1, &barrier);
    vkCmdClearColorImage(buffer, image, barrier.newLayout, &COLOR, 1, &ALL);
    barrier.oldLayout = barrier.newLayout;
    barrier.newLayout = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
    barrier.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.dstAccessMask = 0;
    vkCmdPipelineBarrier(buffer, COPY, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, 0, 0, nullptr, 0, nullptr, 1,
                         &barrier);
    check(vkEndCommandBuffer(buffer), "vkEndCommandBuffer");
}

VkSemaphore Window::Handles::createSemaphore() const {
    const auto info = infoOf<VkSemaphoreCreateInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO);
    VkSemaphore semaphore = VK_NULL_HANDLE;
    check(vkCreateSemaphore(device, &info, nullptr, &semaphore), "vkCreateSemaphore");
    return semaphore;
}

Window::Window(int width, int height)
    : mHandles(std::make_unique<Handles>(width, height)), mWidth(width), mHeight(height) {}

Window::~Window() = default;

void Window::swap() {
    Handles& it = *mHandles;
    const Handles::Frame& frame = it.frames[it.count++ % FRAMES];
    check(vkWaitForFences(it.device, 1, &frame.fence, VK_TRUE, UINT64_MAX), "vkWaitForFences");
    check(vkResetFences(it.device, 1, &frame.fence), "vkResetFences");
    std::uint32_t index = 0;
    check(vkAcquireNextImageKHR(it.device, it.swapchain, UINT64_MAX, frame.acquired, VK_NULL_HANDLE, &index),
          "vkAcquireNextImageKHR");
    constexpr VkPipelineStageFlags STAGE = VK_PIPELINE_STAGE_TRANSFER_BIT;
    auto submission = infoOf<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
    submission.waitSemaphoreCount = 1;
    submission.pWaitSemaphores = &frame.acquired;
    submission.pWaitDstStageMask = &STAGE;
    submission.commandBufferCount = 1;
    submission.pCommandBuffers = &it.commands[index];
    submission.signalSemaphoreCount = 1;
    submission.pSignalSemaphores = &it.drawn[index];
    check(vkQueueSubmit(it.queue, 1, &submission, frame.fence), "vkQueueSubmit");
    auto info = infoOf<VkPresentInfoKHR>(VK_STRUCTURE_TYPE_PRESENT_INFO_KHR);
    info.waitSemaphoreCount = 1;
    info.pWaitSemaphores = &it.drawn[index];
    info.swapchainCount = 1;
    info.pSwapchains = &it.swapchain;
    info.pImageIndices = &index;
    check(vkQueuePresentKHR(it.queue, &info), "vkQueuePresentKHR");
}

bool Window::writePicture(const std::string& path) const {
    check(vkDeviceWaitIdle(mHandles->device), "vkDeviceWaitIdle");
    XSync(mHandles->display, False);
    return writeWindowPicture(mHandles->display, mHandles->window, mWidth, mHeight, path);
}

}  // namespace client
