#pragma once

#include <glm/geometric.hpp>
#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

namespace vulkan {

/// Takes a place to (dot(axes.xy, place), dot(axes.zw, place)) + origin.
struct Placing {
    glm::vec4 axes{1.0F, 0.0F, 0.0F, 1.0F};
    glm::vec2 origin{0.0F};

    /// The same and then factors.
    Placing times(const glm::vec2& factors) const {
        return {{axes.x * factors.x, axes.y * factors.x, axes.z * factors.y, axes.w * factors.y},
                origin * factors};
    }

    /// The same after factors and then `shift`.
    Placing after(const glm::vec2& factors, const glm::vec2& shift) const {
        const glm::vec2 x(axes.x, axes.y);
        const glm::vec2 y(axes.z, axes.w);
        return {{x * factors, y * factors}, origin + glm::vec2(glm::dot(x, shift), glm::dot(y, shift))};
    }

    bool operator==(const Placing& other) const { return axes == other.axes && origin == other.origin; }
};

}  // namespace vulkan
