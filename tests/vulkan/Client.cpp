// A Vulkan program that does what its arguments say, one after another, in a window of 500 by 400:
//   present N    N frames of one colour
//   resize W H   the window gets that size, and the swapchain is made anew from the old one
//   passes N     N frames with render passes of every kind
//   renew        the swapchain is destroyed and made anew
//   random SEED  30 of these, and others like them, as the seed decides
// Exits with 1, and says why, when a call fails.

#include <X11/Xlib.h>

#define VK_USE_PLATFORM_XLIB_KHR
#include <vulkan/vulkan.h>

#include "Check.h"
#include "Passes.h"

#include <array>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using client::check;
using client::infoOf;

class Client {
public:
    Client() {
        openWindow();
        createDevice();
        createSwapchain(VK_NULL_HANDLE);
    }

    ~Client() {
        destroySwapchain();
        if (mPasses) {
            mPasses->destroy();
        }
        vkDestroyCommandPool(mDevice, mPool, nullptr);
        vkDestroyDevice(mDevice, nullptr);
        vkDestroySurfaceKHR(mInstance, mSurface, nullptr);
        vkDestroyInstance(mInstance, nullptr);
        XCloseDisplay(mDisplay);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void present() {
        std::uint32_t index = 0;
        VkSemaphore acquired = createSemaphore();
        const VkResult result =
            vkAcquireNextImageKHR(mDevice, mSwapchain, UINT64_MAX, acquired, VK_NULL_HANDLE, &index);
        check(result, "vkAcquireNextImageKHR");
        constexpr VkPipelineStageFlags STAGE = VK_PIPELINE_STAGE_TRANSFER_BIT;
        auto submission = infoOf<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
        submission.waitSemaphoreCount = 1;
        submission.pWaitSemaphores = &acquired;
        submission.pWaitDstStageMask = &STAGE;
        submission.commandBufferCount = 1;
        submission.pCommandBuffers = &mCommands[index];
        submission.signalSemaphoreCount = 1;
        submission.pSignalSemaphores = &mDrawn[index];
        check(vkQueueSubmit(mQueue, 1, &submission, VK_NULL_HANDLE), "vkQueueSubmit");
        auto info = infoOf<VkPresentInfoKHR>(VK_STRUCTURE_TYPE_PRESENT_INFO_KHR);
        info.waitSemaphoreCount = 1;
        info.pWaitSemaphores = &mDrawn[index];
        info.swapchainCount = 1;
        info.pSwapchains = &mSwapchain;
        info.pImageIndices = &index;
        check(vkQueuePresentKHR(mQueue, &info), "vkQueuePresentKHR");
        check(vkQueueWaitIdle(mQueue), "vkQueueWaitIdle");
        vkDestroySemaphore(mDevice, acquired, nullptr);
    }

    /// As present(), after render passes.
    void presentPasses() {
        if (!mPasses) {
            mPasses.emplace(mPhysicalDevice, mDevice, mPool);
        }
        mPasses->submit(mQueue);
        present();
    }

    void resize(unsigned int width, unsigned int height) {
        XResizeWindow(mDisplay, mWindow, width, height);
        XSync(mDisplay, False);
        VkSwapchainKHR last = mSwapchain;
        freeCommands();
        createSwapchain(last);
        vkDestroySwapchainKHR(mDevice, last, nullptr);
    }

    void renew() {
        destroySwapchain();
        createSwapchain(VK_NULL_HANDLE);
    }

private:
    void openWindow() {
        mDisplay = XOpenDisplay(nullptr);
        if (mDisplay == nullptr) {
            std::cerr << "there is no display\n";
            std::exit(1);  // NOLINT(concurrency-mt-unsafe): one thread
        }
        mWindow = XCreateSimpleWindow(mDisplay, DefaultRootWindow(mDisplay), 0, 0, 500, 400, 0, 0, 0);
        XMapWindow(mDisplay, mWindow);
        XSync(mDisplay, False);
    }

    void createDevice() {
        const std::array<const char*, 2> instanceNames = {VK_KHR_SURFACE_EXTENSION_NAME,
                                                          VK_KHR_XLIB_SURFACE_EXTENSION_NAME};
        auto instance = infoOf<VkInstanceCreateInfo>(VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO);
        auto application = infoOf<VkApplicationInfo>(VK_STRUCTURE_TYPE_APPLICATION_INFO);
        application.apiVersion = VK_API_VERSION_1_3;
        instance.pApplicationInfo = &application;
        instance.enabledExtensionCount = instanceNames.size();
        instance.ppEnabledExtensionNames = instanceNames.data();
        check(vkCreateInstance(&instance, nullptr, &mInstance), "vkCreateInstance");
        auto surface = infoOf<VkXlibSurfaceCreateInfoKHR>(VK_STRUCTURE_TYPE_XLIB_SURFACE_CREATE_INFO_KHR);
        surface.dpy = mDisplay;
        surface.window = mWindow;
        check(vkCreateXlibSurfaceKHR(mInstance, &surface, nullptr, &mSurface), "vkCreateXlibSurfaceKHR");
        std::uint32_t count = 1;
        vkEnumeratePhysicalDevices(mInstance, &count, &mPhysicalDevice);
        VkBool32 isSupported = VK_FALSE;
        vkGetPhysicalDeviceSurfaceSupportKHR(mPhysicalDevice, 0, mSurface, &isSupported);
        check(isSupported == VK_TRUE ? VK_SUCCESS : VK_ERROR_UNKNOWN, "presenting on the first queue family");
        constexpr float PRIORITY = 1.0F;
        auto queue = infoOf<VkDeviceQueueCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO);
        queue.queueCount = 1;
        queue.pQueuePriorities = &PRIORITY;
        const char* const name = VK_KHR_SWAPCHAIN_EXTENSION_NAME;
        auto device = infoOf<VkDeviceCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO);
        auto features =
            infoOf<VkPhysicalDeviceVulkan13Features>(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES);
        features.dynamicRendering = features.synchronization2 = VK_TRUE;
        device.pNext = &features;
        device.queueCreateInfoCount = 1;
        device.pQueueCreateInfos = &queue;
        device.enabledExtensionCount = 1;
        device.ppEnabledExtensionNames = &name;
        check(vkCreateDevice(mPhysicalDevice, &device, nullptr, &mDevice), "vkCreateDevice");
        vkGetDeviceQueue(mDevice, 0, 0, &mQueue);
        auto pool = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
        pool.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
        check(vkCreateCommandPool(mDevice, &pool, nullptr, &mPool), "vkCreateCommandPool");
    }

    VkSemaphore createSemaphore() {
        const auto info = infoOf<VkSemaphoreCreateInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO);
        VkSemaphore semaphore = VK_NULL_HANDLE;
        check(vkCreateSemaphore(mDevice, &info, nullptr, &semaphore), "vkCreateSemaphore");
        return semaphore;
    }

    void createSwapchain(VkSwapchainKHR last) {
        VkSurfaceCapabilitiesKHR surface = {};
        check(vkGetPhysicalDeviceSurfaceCapabilitiesKHR(mPhysicalDevice, mSurface, &surface),
              "vkGetPhysicalDeviceSurfaceCapabilitiesKHR");
        auto info = infoOf<VkSwapchainCreateInfoKHR>(VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR);
        info.surface = mSurface;
        info.minImageCount = surface.minImageCount;
        info.imageFormat = VK_FORMAT_B8G8R8A8_UNORM;
        info.imageExtent = surface.currentExtent;
        info.imageArrayLayers = 1;
        info.imageUsage = VK_IMAGE_USAGE_TRANSFER_DST_BIT;  // the overlay has to ask for more itself
        info.preTransform = surface.currentTransform;
        info.compositeAlpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
        info.presentMode = VK_PRESENT_MODE_FIFO_KHR;
        info.clipped = VK_TRUE;
        info.oldSwapchain = last;
        check(vkCreateSwapchainKHR(mDevice, &info, nullptr, &mSwapchain), "vkCreateSwapchainKHR");
        std::uint32_t count = 0;
        vkGetSwapchainImagesKHR(mDevice, mSwapchain, &count, nullptr);
        std::vector<VkImage> images(count);
        vkGetSwapchainImagesKHR(mDevice, mSwapchain, &count, images.data());
        mCommands.resize(count);
        auto commands = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
        commands.commandPool = mPool;
        commands.commandBufferCount = count;
        check(vkAllocateCommandBuffers(mDevice, &commands, mCommands.data()), "vkAllocateCommandBuffers");
        for (std::uint32_t i = 0; i < count; ++i) {
            record(mCommands[i], images[i]);
            mDrawn.push_back(createSemaphore());
        }
    }

    static void record(VkCommandBuffer commands, VkImage image) {
        const auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
        check(vkBeginCommandBuffer(commands, &begin), "vkBeginCommandBuffer");
        constexpr VkImageSubresourceRange ALL = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
        constexpr VkClearColorValue COLOR = {{0.2F, 0.6F, 0.4F, 1.0F}};
        auto barrier = infoOf<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
        barrier.dstAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
        barrier.newLayout = VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL;
        barrier.srcQueueFamilyIndex = barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
        barrier.image = image;
        barrier.subresourceRange = ALL;
        vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_TRANSFER_BIT, 0, 0,
                             nullptr, 0, nullptr, 1, &barrier);
        vkCmdClearColorImage(commands, image, barrier.newLayout, &COLOR, 1, &ALL);
        barrier.oldLayout = barrier.newLayout;
        barrier.newLayout = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
        barrier.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
        barrier.dstAccessMask = 0;
        vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT,
                             0, 0, nullptr, 0, nullptr, 1, &barrier);
        check(vkEndCommandBuffer(commands), "vkEndCommandBuffer");
    }

    void freeCommands() {
        vkFreeCommandBuffers(mDevice, mPool, static_cast<std::uint32_t>(mCommands.size()), mCommands.data());
        for (VkSemaphore semaphore : mDrawn) {
            vkDestroySemaphore(mDevice, semaphore, nullptr);
        }
        mDrawn.clear();
    }

    void destroySwapchain() {
        check(vkDeviceWaitIdle(mDevice), "vkDeviceWaitIdle");
        freeCommands();
        vkDestroySwapchainKHR(mDevice, mSwapchain, nullptr);
    }

    Display* mDisplay = nullptr;
    Window mWindow = 0;
    VkInstance mInstance = VK_NULL_HANDLE;
    VkSurfaceKHR mSurface = VK_NULL_HANDLE;
    VkPhysicalDevice mPhysicalDevice = VK_NULL_HANDLE;
    VkDevice mDevice = VK_NULL_HANDLE;
    VkQueue mQueue = VK_NULL_HANDLE;
    VkCommandPool mPool = VK_NULL_HANDLE;
    VkSwapchainKHR mSwapchain = VK_NULL_HANDLE;
    std::vector<VkCommandBuffer> mCommands;
    std::optional<client::Passes> mPasses;
    std::vector<VkSemaphore> mDrawn;
};

void runRandom(Client& client, unsigned int seed) {
    std::minstd_rand random(seed);
    const auto below = [&random](unsigned int end) { return static_cast<unsigned int>(random() % end); };
    for (int i = 0; i < 30; ++i) {
        switch (below(8)) {
            case 0:
                client.resize(1 + below(700), 1 + below(500));
                break;
            case 1:
                client.renew();
                break;
            default:
                client.present();
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    Client program;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto number = [&words](std::size_t i) {
        return static_cast<unsigned int>(std::stoul(words.at(i)));
    };
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "present") {
            const unsigned int count = number(++i);
            for (unsigned int frame = 0; frame < count; ++frame) {
                program.present();
            }
        } else if (words[i] == "passes") {
            const unsigned int count = number(++i);
            for (unsigned int frame = 0; frame < count; ++frame) {
                program.presentPasses();
            }
        } else if (words[i] == "resize") {
            program.resize(number(i + 1), number(i + 2));
            i += 2;
        } else if (words[i] == "renew") {
            program.renew();
        } else if (words[i] == "random") {
            runRandom(program, number(++i));
        } else {
            std::cerr << words[i] << ": not understood\n";
            return 2;
        }
    }
    return 0;
}
