#pragma once

#include <X11/Xlib.h>

#define VK_USE_PLATFORM_XLIB_KHR
#include "Passes.h"

#include <vulkan/vulkan.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace client {

/// How a client is set up.
struct Setup {
    bool isHeadless = false;  ///< no window
    VkSurfaceFormatKHR format = {VK_FORMAT_B8G8R8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR};
    VkPresentModeKHR mode = VK_PRESENT_MODE_FIFO_KHR;
    std::uint32_t layers = 1;      ///< of each image
    std::uint32_t swapchains = 1;  ///< presented together
    std::uint32_t family = 0;      ///< of the queue that presents
    std::uint32_t queues = 1;      ///< of that family, presenting in turns
    std::uint32_t minor = 3;       ///< of Vulkan's version
    std::uint32_t turn = 1;        ///< of the picture, a VkSurfaceTransformFlagBitsKHR
    std::uint32_t flight = 1;  ///< frames that may be under way; one: each is waited for, with its present
    bool isProtected = false;
    bool isShared = false;  ///< made by the call that makes several together
    bool isWaiting = true;  ///< a present waits for a semaphore, rather than the program for its queue
    std::string chain;      ///< of each present: "regions", or "unknown" for those behind something unknown,
                            ///< which all else carries then too
};

/// A Vulkan program with windows of 500 by 400. A call that fails where it may not ends the process.
class Client {
public:
    explicit Client(const Setup& setup);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// One frame of one colour. What does not fit any more is made anew; a lost device is told once, and all
    /// that follows does nothing.
    void present();

    /// The same after render passes of every kind.
    void presentPasses();

    /// So many frames of each swapchain, in a thread and on a queue of its own.
    void presentApart(int frames);

    /// The windows get that size, and the swapchains are made anew from the old ones.
    void resize(std::uint32_t width, std::uint32_t height);

    /// The swapchains, or also their surfaces, are destroyed and made anew.
    void renew(bool hasNewSurfaces = false);

    /// Calls with what Vulkan allows to be null, and look-ups of what is not there.
    void callWithNulls() const;

private:
    /// A window and its swapchain.
    struct Target {
        Window window = 0;
        VkSurfaceKHR surface = VK_NULL_HANDLE;
        VkSwapchainKHR swapchain = VK_NULL_HANDLE;
        std::vector<VkCommandBuffer> commands;  ///< for each image
        std::vector<VkSemaphore> drawn;         ///< for each image, which a present waits for
        std::uint32_t index = 0;                ///< of the image that was acquired
        bool isAcquired = false;
    };

    /// What has to last until the program's submission of a frame is done.
    struct Frame {
        VkFence fence = VK_NULL_HANDLE;  ///< null: nothing to wait for
        std::vector<VkSemaphore> acquired;
    };

    /// By every structure, so that nobody may choke on it; null unless the setup says so.
    const void* carried() const;
    void createInstance();
    void createSurface(Target& target);
    void createDevice();
    void createSwapchain(Target& target, VkSwapchainKHR last);
    void destroySwapchain(Target& target);
    void record(VkCommandBuffer commands, VkImage image) const;
    VkSemaphore createSemaphore();
    void presentAlone(Target& target, VkQueue queue);
    VkResult acquire(Frame& frame);
    VkResult tryPresent(Frame& frame);
    void finish(Frame& frame);
    void finishAll();

    Setup mSetup;
    Display* mDisplay = nullptr;
    VkExtent2D mSize = {500, 400};
    VkInstance mInstance = VK_NULL_HANDLE;
    VkPhysicalDevice mPhysicalDevice = VK_NULL_HANDLE;
    VkDevice mDevice = VK_NULL_HANDLE;
    VkQueue mQueue = VK_NULL_HANDLE;  ///< draws
    std::vector<VkQueue> mPresenting;
    VkCommandPool mPool = VK_NULL_HANDLE;
    std::vector<Target> mTargets;
    std::optional<Passes> mPasses;
    std::vector<Frame> mFlight;
    std::vector<VkSemaphore> mOldSemaphores;  ///< of swapchains that are gone
    std::uint32_t mFrames = 0;
    bool mIsLost = false;
};

}  // namespace client
