#pragma once

#include "opengl/context/HeadlessContext.h"
#include "opengl/draw/OverlayDrawing.h"
#include "opengl/gl/SavedState.h"
#include "software/Image.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// A context with the overlay's drawing in it.
class GlStage {
public:
    struct Api {
        const char* name;
        HeadlessContext::Api api;
        int major;
        int minor;
        bool isPlain;  ///< of what later versions have, nothing is used
    };

    static const std::vector<Api> APIS;

    /// Null without such a context, or when the drawing cannot be made there.
    static std::unique_ptr<GlStage> create(const Api& api, std::uint32_t width, std::uint32_t height,
                                           bool isSrgb = false);

    /// What an application does: its picture all over the surface.
    void paintBlocks();

    /// A frame of the overlay, of which `draw` draws the primitives. False when it could not be shown.
    bool show(const std::function<void()>& draw);

    software::Image read() const;

    opengl::OverlayDrawing& drawing() { return mDrawing; }
    HeadlessContext& context() { return *mContext; }

    /// What the drawing calls; a test may put others in their place.
    opengl::Functions& functions() { return mFunctions; }

private:
    explicit GlStage(std::unique_ptr<HeadlessContext> context, const Api& api, bool isSrgb);

    std::unique_ptr<HeadlessContext> mContext;
    opengl::Functions mFunctions;
    opengl::SavedState mState;
    opengl::OverlayDrawing mDrawing;
    bool mIsSrgb;
};
