#include "opengl/entry/ContextOverlay.h"

#include "core/StateInfo.h"
#include "entry/LibraryFrame.h"
#include "entry/PictureFile.h"
#include "opengl/entry/LayerApi.h"
#include "ostra/PictureRequest.h"
#include "utils/Log.h"

#include <ostra/ExtraColumns.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

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
        throw Unusable("its context is older than OpenGL 2.0 and OpenGL ES 2.0, or lacks functions");
    }
    return functions;
}

ContextOverlay::ContextOverlay(GetProcAddress lookUp, Shared& shared)
    : mShared(shared),
      mFunctions(load(lookUp)),
      mState(mFunctions),
      mDrawing(mFunctions),
      mPasses(mFunctions),
      mTimer(mFunctions),
      mOverlay(mDrawing.factory(), LAYER_API, &mPasses, &mTimer) {
    const auto* const renderer = reinterpret_cast<const char*>(mFunctions.getString(GL_RENDERER));
    if (renderer != nullptr && Ostra::setDumpSubject != nullptr) {
        Ostra::setDumpSubject("GPU", renderer);
    }
}

Obstacle ContextOverlay::beforeSwap(const WindowLibrary& library, const Swap& swap,
                                    unsigned int attributeChanges) {
    mOverlay.enter();
    const Obstacle obstacle = drawOverlay(library, swap, attributeChanges);
    mOverlay.beginSwap();
    return obstacle;
}

Obstacle ContextOverlay::drawOverlay(const WindowLibrary& library, const Swap& swap,
                                     unsigned int attributeChanges) {
    mTimer.onFrameEnd();
    mPasses.onFrameEnd();
    // While the overlay is off nobody asks for the surface. When it has just been switched on, this frame is
    // laid out for what the surface once was, and goes without.
    const bool isLookedAt = mOverlay.isDrawn() || !mOverlay.mIsAttached;
    if (isLookedAt) {
        lookAtSurface(library, swap, attributeChanges);
        if (mSurface.obstacle != nullptr) {
            return mSurface.obstacle;
        }
        // A processor that draws the pixels begins with the program's while the overlay is laid out.
        if (mFunctions.features.softwareRaster) {
            mFunctions.flush();
        }
    }
    Obstacle obstacle = beginFrame(isLookedAt);
    const bool isPictured = mIsInFrame && isPictureWanted();
    if (isPictured && !isLookedAt) {
        lookAtSurface(library, swap, attributeChanges);
    }
    if ((obstacle != nullptr && !isPictured) || mSurface.obstacle != nullptr || !mSurface.size.isDrawable()) {
        return obstacle;
    }
    if (!mState.save(mSurface.size.width, mSurface.size.height)) {
        return mState.obstacle();
    }
    const StateRestorer restorer(mState);
    if (mState.isSingleBuffered()) {
        return SINGLE_BUFFERED;
    }
    if (obstacle == nullptr) {
        obstacle = show();
    }
    if (isPictured) {
        takePicture();
    }
    return obstacle;
}

void ContextOverlay::afterSwap(bool isProgramMeasuring) {
    if (!mIsInFrame) {
        return;
    }
    mOverlay.endSwap();
    std::uint64_t swapped = 0;
    {
        const std::lock_guard<std::mutex> lock(mShared.mutex);
        mIsInFrame = false;
        mOverlay.endFrame();
        swapped = core::StateInfo::mFrameNumber;
    }
    mPasses.onFrameBegin(static_cast<std::uint32_t>(swapped));
    mTimer.onFrameBegin(isProgramMeasuring);
    mOverlay.leave();
}

void ContextOverlay::release() {
    mPasses.release();
    mTimer.release();
    mDrawing.destroy();
}

/// The library's part.
Obstacle ContextOverlay::beginFrame(bool isLookedAt) {
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    // Launchers have windows of a single pixel, which are not to be taken for the program.
    const bool isDrawable = mSurface.size.isDrawable();
    Obstacle surface = isDrawable ? nullptr : entry::TOO_SMALL;
    surface = isLookedAt ? surface : "it has just been switched on";
    return entry::beginFrame(mOverlay, mShared.right, surface, isDrawable, mIsInFrame);
}

void ContextOverlay::lookAtSurface(const WindowLibrary& library, const Swap& swap,
                                   unsigned int attributeChanges) {
    SurfaceSizeCache::Signs signs;
    mFunctions.getIntegerv(GL_VIEWPORT, signs.viewport.data());
    signs.attributeChanges = attributeChanges;
    const bool isAlwaysSrgb = mFunctions.version.isEs && !mFunctions.features.framebufferSrgb;
    mSurface = mSurfaces.look(library, swap, signs, isAlwaysSrgb);
    if (mSurface.size.isDrawable()) {
        mDrawing.setSurface(mSurface.size.width, mSurface.size.height, mSurface.isSrgb);
    }
}

/// A request stays until its frame could be read, or whoever asked has taken the file away.
bool ContextOverlay::isPictureWanted() {
    if (!mPicture.empty()) {
        if (access(mPicture.c_str(), F_OK) != 0) {
            mPicture.clear();
        }
    } else if (mSurface.size.isDrawable()) {
        if (std::optional<std::string> path = platform::takePictureRequest()) {
            mPicture = *std::move(path);
        }
    }
    return !mPicture.empty();
}

Obstacle ContextOverlay::show() {
    if (!mIsCreated) {
        const std::string error = mDrawing.create();
        if (!error.empty()) {
            throw Unusable(error);
        }
        mIsCreated = true;
    }
    if (mDrawing.show(mState)) {
        return nullptr;
    }
    return mState.obstacle() != nullptr ? mState.obstacle() : "its drawing cannot be made for this surface";
}

void ContextOverlay::takePicture() {
    constexpr std::size_t CHANNELS = 4;
    if (!mState.prepareRead()) {
        return;
    }
    const std::string path = std::exchange(mPicture, {});
    const SurfaceSize& size = mSurface.size;
    std::string error = "there is no memory for it";
    try {
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(size.width) *
                                         static_cast<std::size_t>(size.height) * CHANNELS);
        mFunctions.readPixels(0, 0, size.width, size.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        error = entry::writePicture(path, size, entry::RowOrder::BOTTOM_FIRST, pixels);
    } catch (const std::bad_alloc&) {
        unlink(path.c_str());
    }
    if (!error.empty()) {
        KORDANIX_LOG_ERROR("no picture could be written: %s", KORDANIX_LOG_HERE, error.c_str());
    }
}

}  // namespace opengl
