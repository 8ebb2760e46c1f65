#pragma once

#include <vulkan/vulkan.h>

#include <cstdint>
#include <cstring>
#include <string>

/// A driver for tests: Mesa's software driver, and in front of it what that lacks. STAND_IN in the
/// environment names, with blanks between, what is to be so besides:
///   count             what was presented, submitted, drawn and made is printed when a device goes
///   strict            a swapchain may be copied to and nothing else, though the surface says otherwise
///   unseen            what is presented to a window is not shown there either, so that it can be shot
///   plain             images of swapchains can only be copied to
///   shot=N:FILE       the N-th picture that is presented is written (see Swapchains.h)
///   lose=N            with the N-th present the device is lost
///   suboptimal=N      the N-th present says so
///   outdated=N        the N-th present says so, and every acquire until the swapchain is made anew
///   surfacelost=N     the N-th present says so
///   refuse=N          the N-th call that makes something fails, counted from the first acquired image
///   submit=N          the N-th submission fails
/// It has surfaces without a window, three families of queues (0 draws, 1 computes, 2 copies) with two
/// queues each, swapchains that share their image with the screen, and swapchains for HDR.
namespace standin {

/// The software driver's function. It is the same for all instances and devices.
PFN_vkVoidFunction lookUp(const char* name);

#define REAL(name)                                                                     \
    [] {                                                                               \
        static const auto call = reinterpret_cast<PFN_##name>(standin::lookUp(#name)); \
        return call;                                                                   \
    }()

struct Hook {
    const char* name;
    PFN_vkVoidFunction function;
};

#define HOOK(name, function)                                                              \
    Hook {                                                                                \
#name, reinterpret_cast < PFN_vkVoidFunction>(static_cast <PFN_##name>(function)) \
    }

template <typename Hooks>
PFN_vkVoidFunction findIn(const Hooks& hooks, const char* name) {
    for (const Hook& hook : hooks) {
        if (std::strcmp(hook.name, name) == 0) {
            return hook.function;
        }
    }
    return nullptr;
}

/// The number after "word=" in STAND_IN; 0 without it. What follows the number's colon is `rest`.
std::uint32_t number(const char* word, std::string* rest = nullptr);

/// Whether STAND_IN has the word.
bool has(const char* word);

/// Counts, and says whether this is the `wanted`-th. Never for 0.
bool isTurn(std::uint32_t& count, std::uint32_t wanted);

/// The hooks of each part; null for a name that it leaves to the software driver.
PFN_vkVoidFunction findSwapchainHook(const char* name);
PFN_vkVoidFunction findQueueHook(const char* name);
PFN_vkVoidFunction findRefusal(const char* name);

/// The device was lost: what waits or is submitted says so from now on.
void loseDevice();

/// The software driver's queue behind one of ours.
VkQueue realQueue(VkQueue queue);

/// So far; and what has been made since enough of them that nothing more should be.
std::uint32_t presents();
std::uint32_t made();

/// Counting for "refuse" begins.
void beginRefusing();

/// Submits in the software driver, one thread at a time.
VkResult submit(VkQueue real, const VkSubmitInfo& info, VkFence fence);

}  // namespace standin
