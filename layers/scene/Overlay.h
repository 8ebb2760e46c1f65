#pragma once

#include "core/BaseLayer.h"
#include "core/RenderingApiType.h"
#include "scene/PrimitiveFactory.h"
#include "scene/Scene.h"

#include <cstdint>
#include <glm/vec2.hpp>

class KeyEventInterceptor;

namespace scene {

class FrameTimer;
class RenderPassSource;

/// A layer without its graphics API: what a layer does when it attaches, around each buffer swap and when it
/// detaches, in the order the library expects. A layer of an API hooks the application's swap and calls
///
///     overlay.beginFrame();  // the application's picture is complete
///     overlay.draw();
///     ...the application's own swap...
///     overlay.endFrame();
///
/// on the rendering thread. A layer that does more than this says so with beginSwap() and endSwap(), so that
/// the swap's time is the swap's, and has its own time measured with enter() and leave(). attach() and
/// detach() frame the whole. A process may have overlays of several APIs; those on different threads must not
/// be in these operations at the same time.
class Overlay : public core::BaseLayer {
public:
    /// The factory, the source of render passes and the timer (either may be null) must outlive the overlay.
    Overlay(PrimitiveFactory& factory, core::RenderingApiType api, RenderPassSource* passes = nullptr,
            FrameTimer* timer = nullptr);

    /// Detaches.
    ~Overlay() override;

    /// The application has called; before beginFrame() and whatever else the layer does.
    void enter();

    void beginFrame();

    /// Draws the widgets, or nothing while the overlay is off.
    void draw();

    /// Directly around the application's own swap.
    void beginSwap();
    void endSwap();

    void endFrame();

    /// The last thing before the application goes on.
    void leave();

    /// Whether the overlay is shown in this frame.
    bool isShown() const { return mIsShown; }

    /// Whether there is something to draw in this frame: the overlay or, while it is switched off, a notice.
    bool isDrawn() const { return mIsShown || mHasNotice; }

    /// In pixels, at the last layout.
    const glm::uvec2& surfaceSize() const { return mSurfaceSize; }

    void onAttach() override;
    void onDetach() override;

    Scene mScene;

private:
    /// Finds out whether the overlay is shown, after a publication.
    [[gnu::cold]] void decide();

    /// Before a frame with the overlay.
    void update(bool isPublished);

    /// Looks after a notice while the overlay is switched off.
    [[gnu::cold]] void updateNotice(bool isPublished);

    PrimitiveFactory& mFactory;
    KeyEventInterceptor& mKeys;
    core::RenderingApiType mApi;
    bool mIsShown = false;
    bool mIsTimed = false;           // shown, or only switched off: its frames are in logs all the same
    bool mHasNotice = false;         // although it is not shown
    bool mIsDumpKeyPressed = false;  // in the poll of this frame
    bool mIsSwapped = false;         // endSwap() was called in this frame
    std::uint32_t mSeenPublications = 0;
    glm::uvec2 mSurfaceSize{0, 0};
};

}  // namespace scene
