#pragma once

#include "Real.h"

/// Swapchains of surfaces without a window. What is asked to be shot is written to a file: a line with width,
/// height, layers, the VkFormat's number and bytes a pixel, and then the pixels, a layer after another.
namespace standin {

/// Makes a presented image readable and writes it. Waits for it.
VkResult writePicture(VkDevice device, VkQueue real, VkImage image, const VkSwapchainCreateInfoKHR& info,
                      const VkPresentInfoKHR& present, const std::string& file);

}  // namespace standin
