// A fixed scene as the Vulkan layer draws it, against the software layer's, in every kind of format.

#undef VK_NO_PROTOTYPES  // the layer has none, a program has

#include "drawers/RectDrawer.h"
#include "drawlist/DrawListFactory.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#include "support/PictureDifference.h"
#include "support/PrimitiveScene.h"
#include "vulkan/client/Check.h"
#include "vulkan/draw/Renderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <glm/gtc/packing.hpp>
#include <glm/packing.hpp>

namespace {

using client::infoOf;
using software::Image;
using vulkan::check;

constexpr VkExtent2D SIZE = {1280, 720};
constexpr std::size_t PIXELS = std::size_t{SIZE.width} * SIZE.height;

/// Lavapipe, and a device of it.
struct Machine {
    Machine() {
        const auto instanceInfo = infoOf<VkInstanceCreateInfo>(VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO);
        check(vkCreateInstance(&instanceInfo, nullptr, &instance), "vkCreateInstance");
        std::uint32_t count = 1;
        vkEnumeratePhysicalDevices(instance, &count, &gpu.physicalDevice);
        instanceFunctions.load(instance, vkGetInstanceProcAddr);
        constexpr float PRIORITY = 1.0F;
        auto queueInfo = infoOf<VkDeviceQueueCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO);
        queueInfo.queueCount = 1;
        queueInfo.pQueuePriorities = &PRIORITY;
        auto deviceInfo = infoOf<VkDeviceCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO);
        deviceInfo.queueCreateInfoCount = 1;
        deviceInfo.pQueueCreateInfos = &queueInfo;
        check(vkCreateDevice(gpu.physicalDevice, &deviceInfo, nullptr, &gpu.device), "vkCreateDevice");
        vkGetDeviceQueue(gpu.device, 0, 0, &queue);
        gpu.vk.load(gpu.device, vkGetDeviceProcAddr);
        gpu.instance = &instanceFunctions;
        gpu.setLoaderData = [](VkDevice, void*) { return VK_SUCCESS; };
        vkGetPhysicalDeviceMemoryProperties(gpu.physicalDevice, &gpu.memory);
        auto poolInfo = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
        check(vkCreateCommandPool(gpu.device, &poolInfo, nullptr, &pool), "vkCreateCommandPool");
    }

    /// Runs what `record` records, and waits for it.
    void run(const std::function<void(VkCommandBuffer)>& record) const {
        auto info = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
        info.commandPool = pool;
        info.commandBufferCount = 1;
        VkCommandBuffer commands = VK_NULL_HANDLE;
        check(vkAllocateCommandBuffers(gpu.device, &info, &commands), "vkAllocateCommandBuffers");
        const auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
        vkBeginCommandBuffer(commands, &begin);
        record(commands);
        vkEndCommandBuffer(commands);
        auto submission = infoOf<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
        submission.commandBufferCount = 1;
        submission.pCommandBuffers = &commands;
        check(vkQueueSubmit(queue, 1, &submission, VK_NULL_HANDLE), "vkQueueSubmit");
        check(vkQueueWaitIdle(queue), "vkQueueWaitIdle");
        vkFreeCommandBuffers(gpu.device, pool, 1, &commands);
    }

    VkInstance instance = VK_NULL_HANDLE;
    VkQueue queue = VK_NULL_HANDLE;
    VkCommandPool pool = VK_NULL_HANDLE;
    vulkan::InstanceFunctions instanceFunctions;
    vulkan::Gpu gpu;
};

glm::vec3 toLight(glm::vec3 code) {
    return glm::mix(glm::pow((code + 0.055F) / 1.055F, glm::vec3(2.4F)), code / 12.92F,
                    glm::lessThanEqual(code, glm::vec3(0.04045F)));
}

glm::vec3 toCode(glm::vec3 light) {
    light = glm::clamp(light, 0.0F, 1.0F);
    return glm::mix(1.055F * glm::pow(light, glm::vec3(1.0F / 2.4F)) - 0.055F, light * 12.92F,
                    glm::lessThanEqual(light, glm::vec3(0.0031308F)));
}

/// From light in BT.709, 1 at 203 nits, to BT.2020 and the perceptual quantizer of 10,000 nits; and back.
const glm::mat3 TO_WIDE = glm::transpose(
    glm::mat3(0.6274F, 0.3293F, 0.0433F, 0.0691F, 0.9195F, 0.0114F, 0.0164F, 0.0880F, 0.8956F));
constexpr float M1 = 0.1593017578125F, M2 = 78.84375F, C1 = 0.8359375F, C2 = 18.8515625F, C3 = 18.6875F;

glm::vec3 toPq(glm::vec3 light) {
    const glm::vec3 power = glm::pow(glm::max(TO_WIDE * light, 0.0F) * 0.0203F, glm::vec3(M1));
    return glm::pow((C1 + C2 * power) / (1.0F + C3 * power), glm::vec3(M2));
}

glm::vec3 fromPq(glm::vec3 code) {
    const glm::vec3 power = glm::pow(code, glm::vec3(1.0F / M2));
    const glm::vec3 wide =
        glm::pow(glm::max(power - C1, 0.0F) / (C2 - C3 * power), glm::vec3(1.0F / M1)) / 0.0203F;
    return glm::inverse(TO_WIDE) * wide;
}

/// A format, and how a pixel of sRGB's codes from 0 to 1 is stored in it.
struct Format {
    const char* name;
    VkFormat format;
    VkColorSpaceKHR space;
    std::size_t bytes;
    std::uint64_t (*store)(glm::vec3 code);
    glm::vec3 (*load)(std::uint64_t pixel);
    bool mixesCodes;  ///< of sRGB; elsewhere what is translucent cannot look quite the same
};

std::ostream& operator<<(std::ostream& out, const Format& format) {
    return out << format.name;
}

glm::vec3 swap(glm::vec3 color) {
    return {color.z, color.y, color.x};
}

std::uint64_t store8(glm::vec3 code) {
    return glm::packUnorm4x8(glm::vec4(code, 1.0F));
}

glm::vec3 load8(std::uint64_t pixel) {
    return glm::vec3(glm::unpackUnorm4x8(static_cast<glm::uint>(pixel)));
}

std::uint64_t store10(glm::vec3 code) {
    return glm::packUnorm3x10_1x2(glm::vec4(code, 1.0F));
}

glm::vec3 load10(std::uint64_t pixel) {
    return glm::vec3(glm::unpackUnorm3x10_1x2(static_cast<glm::uint>(pixel)));
}

constexpr auto TEN = VK_FORMAT_A2B10G10R10_UNORM_PACK32;
constexpr auto PLAIN = VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
constexpr float SCRGB_WHITE = 203.0F / 80.0F;

const Format FORMATS[] = {
    {"rgba", VK_FORMAT_R8G8B8A8_UNORM, PLAIN, 4, store8, load8, true},
    {"bgra", VK_FORMAT_B8G8R8A8_UNORM, PLAIN, 4, [](glm::vec3 code) { return store8(swap(code)); },
     [](std::uint64_t pixel) { return swap(load8(pixel)); }, true},
    {"ten_bits", TEN, PLAIN, 4, store10, load10, true},
    {"srgb", VK_FORMAT_R8G8B8A8_SRGB, PLAIN, 4, store8, load8, false},
    {"hdr10", TEN, VK_COLOR_SPACE_HDR10_ST2084_EXT, 4,
     [](glm::vec3 code) { return store10(toPq(toLight(code))); },
     [](std::uint64_t pixel) { return toCode(fromPq(load10(pixel))); }, false},
    {"half", VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT, 8,
     [](glm::vec3 code) -> std::uint64_t {
         return glm::packHalf4x16(glm::vec4(toLight(code) * SCRGB_WHITE, 1.0F));
     },
     [](std::uint64_t pixel) { return toCode(glm::vec3(glm::unpackHalf4x16(pixel)) / SCRGB_WHITE); }, false}};

/// The application's picture: blocks through which what is translucent shows.
void paint(Image& image) {
    for (std::uint32_t y = 0; y < image.mHeight; ++y) {
        for (std::uint32_t x = 0; x < image.mWidth; ++x) {
            const std::uint32_t row = y * 12 / image.mHeight;
            const std::uint32_t column = x * 20 / image.mWidth;
            const auto shade = static_cast<std::uint8_t>(25 + 10 * row);
            const bool isLight = (row + column) % 3 == 0;
            image.row(y)[x] =
                isLight ? software::Pixel{153, 128, shade, 255} : software::Pixel{shade, shade, 102, 255};
        }
    }
}

void toBytes(const Image& image, const Format& format, std::uint8_t* bytes) {
    for (const software::Pixel& pixel : image.mPixels) {
        const std::uint64_t stored = format.store(glm::vec3(pixel.red, pixel.green, pixel.blue) / 255.0F);
        std::memcpy(bytes, &stored, format.bytes);
        bytes += format.bytes;
    }
}

void fromBytes(Image& image, const Format& format, const std::uint8_t* bytes) {
    for (software::Pixel& pixel : image.mPixels) {
        std::uint64_t stored = 0;
        std::memcpy(&stored, bytes, format.bytes);
        bytes += format.bytes;
        const glm::vec3 code = glm::round(glm::clamp(format.load(stored), 0.0F, 1.0F) * 255.0F);
        pixel = {static_cast<std::uint8_t>(code.r), static_cast<std::uint8_t>(code.g),
                 static_cast<std::uint8_t>(code.b), 255};
    }
}

/// The scene, and a rectangle of one colour that hides what is under it.
support::Primitives makePicture(scene::PrimitiveFactory& factory) {
    support::Primitives primitives = support::makeScene(factory);
    auto block = factory.createRect();
    block->mPosition = {0.3F, 0.13F};
    block->mSize = {0.02F, 0.02F};
    block->mColor = {1.0F, 0.45F, 0.0F, 1.0F};
    primitives.push_back(std::move(block));
    return primitives;
}

/// The ways in which a program may turn its picture: by quarters clockwise, and mirrored before that.
constexpr std::array<VkSurfaceTransformFlagBitsKHR, 8> TURNS = {
    VK_SURFACE_TRANSFORM_IDENTITY_BIT_KHR,
    VK_SURFACE_TRANSFORM_ROTATE_90_BIT_KHR,
    VK_SURFACE_TRANSFORM_ROTATE_180_BIT_KHR,
    VK_SURFACE_TRANSFORM_ROTATE_270_BIT_KHR,
    VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_BIT_KHR,
    VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_ROTATE_90_BIT_KHR,
    VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_ROTATE_180_BIT_KHR,
    VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_ROTATE_270_BIT_KHR};

Image turned(const Image& picture, std::size_t turn) {
    Image result = picture;
    for (std::uint32_t y = 0; y < result.mHeight && turn >= 4; ++y) {
        std::reverse(result.row(y), result.row(y) + result.mWidth);
    }
    for (std::size_t quarters = turn % 4; quarters != 0; --quarters) {
        const Image last = result;
        result.resize(last.mHeight, last.mWidth);
        for (std::size_t y = 0; y < last.mHeight; ++y) {
            for (std::size_t x = 0; x < last.mWidth; ++x) {
                result.row(x)[last.mHeight - 1 - y] = last.row(y)[x];
            }
        }
    }
    return result;
}

/// The turn that undoes one: one that mirrors undoes itself.
std::size_t back(std::size_t turn) {
    return turn < 4 ? (4 - turn) % 4 : turn;
}

class Picture : public testing::TestWithParam<Format> {
protected:
    /// The scene over `upright`, drawn by the Vulkan layer's renderer into an image that is turned.
    static void draw(Image& upright, bool isClipped, std::size_t turn = 0) {
        const Format& format = GetParam();
        Image picture = turned(upright, turn);
        const VkExtent2D size = {picture.mWidth, picture.mHeight};
        static const Machine& machine = *new Machine;  // for good: leak checks are to know the driver's names
        constexpr VkImageUsageFlags USES = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT |
                                           VK_IMAGE_USAGE_TRANSFER_SRC_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
        const vulkan::DeviceImage image(machine.gpu, format.format, size, USES);
        vulkan::MappedBuffer buffer(machine.gpu,
                                    VK_BUFFER_USAGE_TRANSFER_SRC_BIT | VK_BUFFER_USAGE_TRANSFER_DST_BIT);
        buffer.reserve(PIXELS * format.bytes);
        toBytes(picture, format, buffer.bytes());
        VkBufferImageCopy copy = {};
        copy.imageSubresource = vulkan::WHOLE_LAYER;
        copy.imageExtent = {size.width, size.height, 1};
        constexpr vulkan::ImageUse FRESH = {VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, VK_IMAGE_LAYOUT_UNDEFINED};
        constexpr vulkan::ImageUse WRITTEN = {VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_WRITE_BIT,
                                              VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL};
        constexpr vulkan::ImageUse READ = {VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_READ_BIT,
                                           VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL};
        constexpr vulkan::ImageUse PRESENTED = {VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0,
                                                VK_IMAGE_LAYOUT_PRESENT_SRC_KHR};
        machine.run([&](VkCommandBuffer commands) {
            move(machine.gpu, commands, image.handle(), FRESH, WRITTEN);
            vkCmdCopyBufferToImage(commands, buffer.handle(), image.handle(), WRITTEN.layout, 1, &copy);
            move(machine.gpu, commands, image.handle(), WRITTEN, PRESENTED);
        });

        const vulkan::SwapchainImages swapchain = {format.format, format.space,     size,       1,
                                                   true,          {image.handle()}, TURNS[turn]};
        drawlist::DrawList list;
        drawlist::DrawListFactory factory(list);
        const support::Primitives primitives = makePicture(factory);
        list.setSize(SIZE.width, SIZE.height);
        list.begin();
        support::drawScene(factory, primitives, isClipped);
        vulkan::Pipelines pipelines(machine.gpu);
        vulkan::Renderer renderer(machine.gpu, pipelines, swapchain, 0, list.glyphs.side());
        const std::string file = testing::TempDir() + "/kordanix-picture-" + GetParam().name;
        std::ofstream(file).close();  // the one who asks makes it
        const vulkan::Renderer::Frame frame = {machine.queue, 0, 0, nullptr, true, file};
        VkSemaphore drawn = VK_NULL_HANDLE;
        ASSERT_EQ(renderer.show(list, frame, drawn), nullptr);
        ASSERT_TRUE(renderer.finish());
        renderer.advance();
        machine.run([&](VkCommandBuffer commands) {
            move(machine.gpu, commands, image.handle(), PRESENTED, READ);
            vkCmdCopyImageToBuffer(commands, image.handle(), READ.layout, buffer.handle(), 1, &copy);
        });
        fromBytes(picture, format, buffer.bytes());
        upright = turned(picture, back(turn));
        expectSaved(file, upright);
    }

    /// Upright, in sRGB's codes.
    static void expectSaved(const std::string& file, const Image& upright) {
        std::ifstream in(file, std::ios::binary);
        std::filesystem::remove(file);
        std::string header;
        for (std::string line; line != "ENDHDR" && std::getline(in, line);) {
            header += line + ' ';
        }
        ASSERT_EQ(header, "P7 WIDTH 1280 HEIGHT 720 DEPTH 4 MAXVAL 255 TUPLTYPE RGB_ALPHA ENDHDR ");
        std::vector<std::uint8_t> bytes(4 * PIXELS);
        in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        int largest = 0;
        for (std::size_t i = 0; i < PIXELS; ++i) {
            const software::Pixel& pixel = upright.mPixels[i];
            largest =
                std::max({largest, std::abs(pixel.red - bytes[4 * i]),
                          std::abs(pixel.green - bytes[4 * i + 1]), std::abs(pixel.blue - bytes[4 * i + 2])});
        }
        EXPECT_LE(largest, 1);
    }
};

/// The mean over all channels.
double meanDifference(const Image& left, const Image& right) {
    double sum = 0.0;
    for (std::size_t i = 0; i < left.mPixels.size(); ++i) {
        sum += std::abs(left.mPixels[i].red - right.mPixels[i].red) +
               std::abs(left.mPixels[i].green - right.mPixels[i].green) +
               std::abs(left.mPixels[i].blue - right.mPixels[i].blue);
    }
    return sum / static_cast<double>(3 * left.mPixels.size());
}

TEST_P(Picture, LooksAsTheSoftwareLayers) {
    const bool isPlain = GetParam().store == store8 && GetParam().mixesCodes;
    for (const bool isClipped : {false, true}) {
        SCOPED_TRACE(isClipped ? "clipped" : "whole");
        software::Surface surface(SIZE.width, SIZE.height);
        software::SoftwareFactory factory(surface);
        paint(surface.mImage);
        Image drawn = surface.mImage;
        const Image bare = surface.mImage;
        const support::Primitives expected = makePicture(factory);
        surface.beginOverlay();
        support::drawScene(factory, expected, isClipped);
        ASSERT_NO_FATAL_FAILURE(draw(drawn, isClipped));
        for (std::size_t turn = 1; turn < TURNS.size() && isClipped && isPlain; ++turn) {
            Image other = bare;
            ASSERT_NO_FATAL_FAILURE(draw(other, isClipped, turn));
            const PictureDifference difference = comparePictures(drawn, other);
            EXPECT_LE(difference.largestInside, LARGEST_INSIDE) << turn;
            EXPECT_LE(difference.meanAtEdges, LARGEST_MEAN_AT_EDGES) << turn;
        }
        const PictureDifference difference = comparePictures(surface.mImage, drawn);
        if (GetParam().mixesCodes) {
            EXPECT_LE(difference.largestInside, LARGEST_INSIDE);
            EXPECT_LE(difference.largestAtEdges, LARGEST_AT_EDGES);
            EXPECT_LE(difference.meanAtEdges, LARGEST_MEAN_AT_EDGES);
        } else {
            EXPECT_LE(meanDifference(surface.mImage, drawn), meanDifference(surface.mImage, bare) / 3.0);
        }
        const software::Pixel block = drawn.row(SIZE.height * 14 / 100)[SIZE.width * 31 / 100];
        EXPECT_NEAR(block.red, 255, 1);
        EXPECT_NEAR(block.green, 115, 1);
        EXPECT_NEAR(block.blue, 0, 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Picture, testing::ValuesIn(FORMATS),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
