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

/// Keeps the application's state of a context while the overlay draws. One for each context; use it on the
/// thread where the context is current. Allocates nothing, raises no OpenGL error and never calls glGetError.
///
///     if (state.save(width, height)) {
///         … draw …
///         state.restore();
///     }
class SavedState {
public:
    /// The overlay draws with vertex attributes 0 to ATTRIBUTES - 1. Without vertex array objects they are
    /// the application's too, and saved.
    static constexpr GLuint ATTRIBUTES = SavedAttributes::COUNT;
    /// The texture unit that the overlay uses; active after save().
    static constexpr GLuint TEXTURE_UNIT = SavedBindings::UNIT;

    /// `functions` must outlive this object.
    explicit SavedState(const Functions& functions);

    /// Saves what the overlay's drawing depends on or changes, and sets what the overlay needs: the default
    /// framebuffer, its back buffer, the whole surface of width × height pixels as viewport 0, all tests and
    /// all special forms of rasterization off, blending with ONE, ONE_MINUS_SRC_ALPHA for colours that
    /// are multiplied by their alpha, all channels writable, no sampler at TEXTURE_UNIT.
    ///
    /// The caller may change the program, the vertex array, the array and element buffers and the 2D texture
    /// of TEXTURE_UNIT; they still have the application's values, and restore() puts those back. It must
    /// leave everything else alone: no uniforms of the application, no depth, no lines or points, no second
    /// colour output.
    ///
    /// Returns false, without any change, when the application counts or records what is drawn, or when
    /// something bound cannot be bound again; then this frame has no overlay.
    bool save(int width, int height);

    /// Why the last save(), prepareUpload(), prepareCopy() or prepareRead() failed.
    Obstacle obstacle() const { return mObstacle; }

    /// After save(): the surface has no back buffer, so what is drawn on it stays.
    bool isSingleBuffered() const { return mTarget.isSingleBuffered(); }

    /// Call it between save() and restore(), before glTexSubImage2D and the like: unbinds the unpack buffer
    /// and sets rows without gaps. False when that is impossible in this frame. restore() undoes it.
    bool prepareUpload();

    /// Call it between save() and restore(), before glCopyTexSubImage2D or glBlitFramebuffer: reads from the
    /// default framebuffer's buffer that the next swap shows. False when that is impossible in this frame.
    /// restore() undoes it.
    bool prepareCopy();

    /// Call it between save() and restore(), where there are framebuffers: from now on draws into one of the
    /// overlay's own, all width × height pixels of it. Before restore(), return to the surface with 0 and the
    /// surface's size.
    void drawInto(GLuint framebuffer, int width, int height) {
        SavedTarget::move(mFunctions, framebuffer, width, height);
    }

    /// Call it between save() and restore(), before glReadPixels: does what prepareCopy() does, unbinds the
    /// pack buffer and sets rows without gaps.
    bool prepareRead();

    /// Puts everything back that save() and the prepare functions changed.
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
