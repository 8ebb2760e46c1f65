#include "opengl/entry/ContextOverlay.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "core/RenderingApiType.h"
#include "opengl/entry/PictureFile.h"
#include "ostra/PictureRequest.h"
#include "utils/Log.h"

namespace opengl {

namespace {

/// Puts the program's state back however the drawing ends.
class StateRestorer {
public:
    explicit StateRestorer(SavedState& state) : mState(state) {}
    ~StateRestorer() { mState.restore(); }
    StateRestorer(const StateRestorer&) = delete;
    StateRestorer& operator=(const StateRestorer&) = delete;

private:
    SavedState& mState;
};

}  // namespace

Functions ContextOverlay::load(GetProcAddress lookUp) {
    Functions functions;
    if (!functions.load(lookUp)) {
        throw Unusable("it is older than OpenGL 2.0 and OpenGL ES 2.0, or lacks functions");
    }
    return functions;
}

ContextOverlay::ContextOverlay(GetProcAddress lookUp, std::mutex& libraryMutex)
    : mLibraryMutex(libraryMutex),
      mFunctions(load(lookUp)),
      mState(mFunctions),
      mDrawing(mFunctions),
      mPasses(mFunctions),
      mOverlay(mDrawing.factory(), core::RenderingApiType::OPENGL_ES, &mPasses) {}

bool ContextOverlay::beforeSwap(const WindowLibrary& library, const Swap& swap) {
    endPasses();
    // While the overlay is off nobody asks for the surface. When it has just been switched on, this frame is
    // laid out for what the surface once was, and goes without.
    const bool isLookedAt = mOverlay.isShown() || !mOverlay.mIsAttached;
    if (isLookedAt) {
        lookAtSurface(library, swap);
    }
    bool isShown = false;
    {
        const std::lock_guard<std::mutex> lock(mLibraryMutex);
        mOverlay.attach();
        mOverlay.beginFrame();
        isShown = mOverlay.isShown() && isLookedAt && mSize.isDrawable();
        if (isShown) {
            mOverlay.draw();
        }
    }
    const bool isPictured = isPictureWanted();
    if (isPictured && !isLookedAt) {
        lookAtSurface(library, swap);
    }
    if ((!isShown && !isPictured) || !mSize.isDrawable() || !mState.save(mSize.width, mSize.height)) {
        return false;
    }
    const StateRestorer restorer(mState);
    const bool hasDrawn = isShown && show();
    if (isPictured) {
        takePicture();
    }
    return hasDrawn;
}

void ContextOverlay::afterSwap() {
    {
        const std::lock_guard<std::mutex> lock(mLibraryMutex);
        mOverlay.endFrame();
    }
    mPasses.onFrameBegin();
}

void ContextOverlay::endPasses() {
    // A frame that was recorded carries the library's number.
    if (PassTimer::isAnyRecording()) {
        const std::lock_guard<std::mutex> lock(mLibraryMutex);
        mPasses.onFrameEnd();
    }
}

void ContextOverlay::lookAtSurface(const WindowLibrary& library, const Swap& swap) {
    std::array<GLint, 4> viewport = {};
    mFunctions.getIntegerv(GL_VIEWPORT, viewport.data());
    const bool isAlwaysSrgb = mFunctions.version.isEs && !mFunctions.features.framebufferSrgb;
    const SurfaceWatch::Answer& answer = mSurfaces.look(library, swap, viewport, isAlwaysSrgb);
    mSize = answer.size;
    if (mSize.isDrawable()) {
        mDrawing.setSurface(mSize.width, mSize.height, answer.isSrgb);
    }
}

/// A request stays until its frame could be read, or whoever asked has taken the file away.
bool ContextOverlay::isPictureWanted() {
    if (!mPicture.empty()) {
        if (access(mPicture.c_str(), F_OK) != 0) {
            mPicture.clear();
        }
    } else if (mSize.isDrawable()) {
        if (std::optional<std::string> path = platform::takePictureRequest()) {
            mPicture = *std::move(path);
        }
    }
    return !mPicture.empty();
}

bool ContextOverlay::show() {
    if (!mIsCreated) {
        const std::string error = mDrawing.create();
        if (!error.empty()) {
            throw Unusable(error);
        }
        mIsCreated = true;
    }
    return mDrawing.show(mState);
}

void ContextOverlay::takePicture() {
    constexpr std::size_t CHANNELS = 4;
    if (!mState.prepareRead()) {
        return;
    }
    const std::string path = std::exchange(mPicture, {});
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(mSize.width) *
                                     static_cast<std::size_t>(mSize.height) * CHANNELS);
    mFunctions.readPixels(0, 0, mSize.width, mSize.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    const std::string error = writePicture(path, mSize, pixels);
    if (!error.empty()) {
        KORDANIX_LOG_ERROR("no picture could be written: %s", KORDANIX_LOG_HERE, error.c_str());
    }
}

}  // namespace opengl
