#pragma once

#include <memory>

namespace drawer {
class RectDrawer;
class TextDrawer;
}  // namespace drawer

namespace scene {

struct Canvas;
class PrimitiveFactory;

/// Says on the screen that a dump runs: in the margin above the widgets, so that it takes no room of theirs.
class DumpMark {
public:
    explicit DumpMark(PrimitiveFactory& factory);
    ~DumpMark();
    DumpMark(const DumpMark&) = delete;
    DumpMark& operator=(const DumpMark&) = delete;

    void layout(const Canvas& canvas);
    void draw();

private:
    std::unique_ptr<drawer::RectDrawer> mBackdrop;
    std::unique_ptr<drawer::RectDrawer> mLight;
    std::unique_ptr<drawer::TextDrawer> mText;
};

}  // namespace scene
