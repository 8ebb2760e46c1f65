#pragma once

#include "vulkan/draw/ColorEncoding.h"
#include "vulkan/draw/Memory.h"
#include "vulkan/draw/SubmissionRing.h"
#include "vulkan/draw/Swapchain.h"
#include "vulkan/draw/Upright.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vulkan {

/// Reads a whole frame into a file (entry/PictureFile.h), upright: asked for in one frame, written in a later
/// one when the GPU has done it.
class FrameReader {
public:
    FrameReader(const Gpu& gpu, const SwapchainImages& swapchain);

    /// Why frames cannot be read; null when they can.
    const char* obstacle() const { return mObstacle; }

    bool isBusy() const { return mSubmission != 0; }

    /// Records reading an image in the layout of a copy's source, for the submission that has begun. Throws
    /// Failure.
    void read(const std::string& path, VkImage image, VkCommandBuffer commands, SubmissionRing& ring);

    /// Writes the file when the frame has been read. Throws Failure.
    void advance(SubmissionRing& ring);

    /// The file will not be written: removes it, so that nobody waits for it.
    void abandon();

private:
    bool isConverted() const { return mFormat == VK_FORMAT_R16G16B16A16_SFLOAT; }
    std::vector<std::uint8_t> uprightPixels();

    const Gpu& mGpu;
    VkExtent2D mSize;
    Upright mUpright;
    ColorEncoding mEncoding;
    VkFormat mFormat;  ///< that of the copy: sRGB's codes, or half floats that become those
    const char* mObstacle;
    std::optional<DeviceImage> mImage;
    MappedBuffer mBuffer;
    std::uint64_t mSubmission = 0;
    std::string mPath;
};

}  // namespace vulkan
