#pragma once

#include "drawlist/DrawList.h"
#include "drawlist/DrawListFactory.h"
#include "opengl/draw/Renderer.h"

#include <string>

namespace opengl {

class SavedState;
struct Functions;

/// Draws the overlay in one context: has the primitives that the scene uses, and shows their triangles. In a
/// frame that shows the overlay:
///
///     drawing.setSurface(width, height, isSrgb);  // before the overlay's own beginFrame()
///     if (state.save(width, height)) {
///         overlay.draw();       // through factory(); nothing when the last drawing can be shown again
///         drawing.show(state);
///         state.restore();
///     }
///
/// Use it on the thread where the context is current. Allocates nothing once warm.
class OverlayDrawing {
public:
    /// `functions` must outlive this object.
    explicit OverlayDrawing(const Functions& functions) : mFactory(mList), mRenderer(functions) {}

    /// Creates the objects in the context; call it between save() and restore(). Returns an empty text, or
    /// why it cannot draw the overlay in this context, and then leaves nothing in the context.
    std::string create();

    /// Removes everything from the context, which must be current. create() may follow.
    void destroy();

    /// The context is gone: drops the objects' names without a call. create() may follow.
    void abandon();

    /// Sets the surface's size in pixels, and whether it stores sRGB and cannot be told not to. If one of
    /// them changes, the next drawing is a new one.
    void setSurface(int width, int height, bool isSrgb);

    /// Makes the primitives for a scene::Overlay. They outlive contexts.
    drawlist::DrawListFactory& factory() { return mFactory; }

    /// Shows what the primitives have drawn; call it between save() and restore(). False when the
    /// application's state does not allow it in this frame. The application's picture is at most half a
    /// second old.
    bool show(SavedState& state) { return mRenderer.show(mList, state); }

    /// The last drawing.
    const drawlist::DrawList& list() const { return mList; }

private:
    drawlist::DrawList mList;
    drawlist::DrawListFactory mFactory;
    Renderer mRenderer;
};

}  // namespace opengl
