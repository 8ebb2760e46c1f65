#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace drawer {
class RectDrawer;
class TextDrawer;
}  // namespace drawer

namespace scene {

struct Canvas;
class PrimitiveFactory;

/// Shows a notice (NoticeText.h) below the upper widgets for a second. Rendering thread.
class Notice {
public:
    explicit Notice(PrimitiveFactory& factory);
    ~Notice();
    Notice(const Notice&) = delete;
    Notice& operator=(const Notice&) = delete;

    /// Looks for a new notice; call it after a publication, and layout() then. One that was written seconds
    /// before the first look was for somebody else. Takes the property's lock.
    void read();

    void layout(const Canvas& canvas);

    bool isShown() const { return mIsShown; }

    /// Once a frame: takes it away after its second. Returns whether it has just done so.
    bool expire();

    void draw();

private:
    std::unique_ptr<drawer::RectDrawer> mBackdrop;
    std::unique_ptr<drawer::TextDrawer> mText;
    std::string mSeen;
    bool mHasLooked = false;
    bool mIsShown = false;
    std::uint64_t mEnd = 0;  ///< of its second, by noticeTime()
};

}  // namespace scene
