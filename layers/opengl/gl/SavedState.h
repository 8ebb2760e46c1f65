#pragma once

#include "opengl/gl/Functions.h"

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
    static constexpr GLuint ATTRIBUTES = 3;
    /// The texture unit the overlay draws with; it is active after save().
    static constexpr GLuint TEXTURE_UNIT = 0;

    /// functions must stay as long as this.
    explicit SavedState(const Functions& functions) : mFunctions(functions) {}

    /// Keeps what the overlay's drawing depends on or changes and sets what it wants: the default
    /// framebuffer, its back buffer, the whole surface of width × height pixels as viewport 0, every test and
    /// every special form of rasterization off, blending SRC_ALPHA, ONE_MINUS_SRC_ALPHA for the colour and
    /// ONE, ONE_MINUS_SRC_ALPHA for alpha, all colours writable. Left as the application has them, and put
    /// back: the program, the vertex array, the array and element buffers, texture and sampler of
    /// TEXTURE_UNIT (the sampler is unbound). False, and nothing was changed, when drawing would show in what
    /// the application counts or records, or something that is bound could not be bound again; then this
    /// frame goes without the overlay.
    bool save(int width, int height);

    /// Between save() and restore(), before glTexSubImage2D and its like: no buffer bound for unpacking,
    /// tight rows of single bytes. False when that cannot be had this frame. restore() puts it back.
    bool prepareUpload();

    /// Between save() and restore(), before glReadPixels, glCopyTexSubImage2D and its like: the default
    /// framebuffer's back buffer is read, with no buffer bound for packing and tight rows. False when that
    /// cannot be had this frame. restore() puts it back.
    bool prepareRead();

    /// Puts everything back that save() and the two others kept.
    void restore();

private:
    const Functions& mFunctions;
};

}  // namespace opengl
