#pragma once

#include "scene/PrimitiveFactory.h"
#include "scene/WidgetView.h"

#include <string>

namespace drawer {
class TextblockDrawer;
}

namespace scene {

/// A small live view of what the application drew, labelled with the surface's size in pixels and the
/// frame's number.
class ThumbnailWidget : public WidgetView {
public:
    explicit ThumbnailWidget(PrimitiveFactory& factory);

    void refresh(Metrics& metrics) override;
    void draw() override;

protected:
    void applySettings(float pixelsPerUnit) override;

private:
    PrimitiveFactory& mFactory;
    drawer::Drawer* mPicture;
    drawer::TextblockDrawer* mLabel;
};

}  // namespace scene
