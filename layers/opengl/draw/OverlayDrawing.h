#pragma once

#include <string>

#include "drawlist/DrawList.h"
#include "drawlist/DrawListFactory.h"
#include "opengl/draw/Renderer.h"

namespace opengl {

class SavedState;
struct Functions;

/// The overlay's drawing in one context: the primitives that the scene draws with, and what shows them. In a
/// frame that shows the overlay:
///
///     drawing.setSurface(width, height, isSrgb);  // before the overlay's own beginFrame()
///     if (state.save(width, height)) {
///         overlay.draw();       // through factory(); nothing when the last drawing can be shown again
///         drawing.show(state);
///         state.restore();
///     }
///
/// Used on the thread that the context is current on. Allocates nothing once warm.
class OverlayDrawing {
public:
    /// `functions` must stay as long as this.
    explicit OverlayDrawing(const Functions& functions) : mFactory(mList), mRenderer(functions) {}

    /// Makes what is needed in the context, between save() and restore(). An empty text, or why the overlay
    /// cannot be drawn in this context; nothing is left in the context then.
    std::string create();

    /// Takes everything out of the context, which is current. create() may follow.
    void destroy();

    /// The context is gone: forgets what was in it, without a call. create() may follow.
    void abandon();

    /// Size in pixels of the surface that is drawn on, and whether it stores sRGB without letting that be
    /// switched off. The next draw is a new one when that is news.
    void setSurface(int width, int height, bool isSrgb);

    /// The primitives, for a scene::Overlay. They outlive contexts.
    drawlist::DrawListFactory& factory() { return mFactory; }

    /// Draws what the primitives have left, between save() and restore(). False when the application's state
    /// does not let it be drawn in this frame. The application's picture is that of some frame of the last
    /// half second.
    bool show(SavedState& state) { return mRenderer.show(mList, state); }

    /// What has been drawn last.
    const drawlist::DrawList& list() const { return mList; }

private:
    drawlist::DrawList mList;
    drawlist::DrawListFactory mFactory;
    Renderer mRenderer;
};

}  // namespace opengl
