#pragma once

#include "scene/PrimitiveFactory.h"
#include "scene/WidgetView.h"

#include <array>
#include <string>

namespace drawer {
class RectDrawer;
class TextblockDrawer;
}  // namespace drawer

namespace scene {

/// A small live view of the application's picture, labelled with the surface's size in pixels and the frame's
/// number.
class ThumbnailWidget : public WidgetView {
public:
    explicit ThumbnailWidget(PrimitiveFactory& factory);

    void refresh(figures::Metrics& metrics) override;
    void draw() override;

protected:
    void applySettings(const Canvas& canvas) override;

private:
    PrimitiveFactory& mFactory;
    std::array<drawer::RectDrawer*, 4> mFrame{};  ///< its sides: what lies below the picture would not show
    drawer::Drawer* mPicture;
    drawer::TextblockDrawer* mLabel;
};

}  // namespace scene
