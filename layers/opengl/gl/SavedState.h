#pragma once

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"
#include "opengl/gl/Recording.h"
#include "opengl/gl/SavedBindings.h"
#include "opengl/gl/SavedBlend.h"
#include "opengl/gl/SavedPixels.h"
#include "opengl/gl/SavedProgram.h"
#include "opengl/gl/SavedRaster.h"
#include "opengl/gl/SavedTarget.h"

namespace opengl {

/// The application's state of a context while the overlay draws. One for each context, used on whichever
/// thread the context is current on. Allocates nothing, raises no OpenGL error and never asks for one.
///
///     if (state.save(width, height)) {
///         … draw …
///         state.restore();
///     }
class SavedState {
public:
    /// The vertex attributes the overlay draws with are 0 to ATTRIBUTES - 1; where there are no vertex arrays
    /// they are the application's too, and saved.
    static constexpr GLuint ATTRIBUTES = SavedAttributes::COUNT;
    /// The texture unit the overlay draws with; it is active after save().
    static constexpr GLuint TEXTURE_UNIT = SavedBindings::UNIT;

    /// functions must stay as long as this.
    explicit SavedState(const Functions& functions);

    /// Keeps what the overlay's drawing depends on or changes and sets what it wants: the default
    /// framebuffer, its back buffer, the whole surface of width × height pixels as viewport 0, every test and
    /// every special form of rasterization off, blending SRC_ALPHA, ONE_MINUS_SRC_ALPHA for the colour and
    /// ONE, ONE_MINUS_SRC_ALPHA for alpha, all colours writable, no sampler at TEXTURE_UNIT. Left as the
    /// application has them, free to be changed, and put back: the program, the vertex array, the array and
    /// element buffers, the 2D texture of TEXTURE_UNIT. Everything else must be left alone: there are no
    /// uniforms of the application's the overlay could set, no depth, no lines or points, no second colour
    /// output. False, and nothing was changed, when drawing would show in what the application counts or
    /// records, or when something that is bound could not be bound again; then
    /// this frame goes without the overlay.
    bool save(int width, int height);

    /// Why the last save(), prepareUpload(), prepareCopy() or prepareRead() was in vain.
    Obstacle obstacle() const { return mObstacle; }

    /// After save(): what is drawn on the surface stays there, since it has no back buffer.
    bool isSingleBuffered() const { return mTarget.isSingleBuffered(); }

    /// Between save() and restore(), before glTexSubImage2D and its like: no buffer bound for unpacking, rows
    /// without gaps. False when that cannot be had this frame. restore() puts it back.
    bool prepareUpload();

    /// Between save() and restore(), before glCopyTexSubImage2D or glBlitFramebuffer: what is read from is
    /// the default framebuffer's buffer that the next swap shows. False when that cannot be had this frame.
    /// restore() puts it back.
    bool prepareCopy();

    /// Between save() and restore(), where there are framebuffers: draws into one of the overlay's own from
    /// now on, all width × height pixels of it. With 0 and the surface's size, back on the surface; so before
    /// restore().
    void drawInto(GLuint framebuffer, int width, int height) {
        SavedTarget::move(mFunctions, framebuffer, width, height);
    }

    /// Between save() and restore(), before glReadPixels: prepareCopy(), and no buffer bound for packing,
    /// rows without gaps.
    bool prepareRead();

    /// Puts everything back that save() and the others kept.
    void restore();

private:
    Obstacle read();
    void prepareTransfer();
    bool known(bool isPrepared);

    const Functions& mFunctions;
    Obstacle mObstacle = nullptr;
    Recording mRecording;
    SavedProgram mProgram;
    SavedBindings mBindings;
    SavedTarget mTarget;
    SavedRaster mRaster;
    SavedBlend mBlend;
    SavedPixelTransfer mTransfer;
    SavedPixelStore mUnpacking{SavedPixelStore::Direction::UNPACK};
    SavedPixelStore mPacking{SavedPixelStore::Direction::PACK};
    SavedSource mSource;
    bool mHasTransfer = false;
    bool mHasUnpacking = false;
    bool mHasPacking = false;
    bool mHasSource = false;
};

}  // namespace opengl
