#pragma once

#include "drawers/Drawer.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>

namespace drawer {

/// Fills its rectangle, shifted by mTranslation, with one colour. A layer implements draw().
class KORDANIX_EXPORT RectDrawer : public Drawer {
public:
    ~RectDrawer() override;

    glm::vec4 mColor{0.0F};
};

}  // namespace drawer
