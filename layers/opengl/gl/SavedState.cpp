#include "opengl/gl/SavedState.h"

namespace opengl {

SavedState::SavedState(const Functions& functions)
    : mFunctions(functions), mRecording(functions), mRaster(functions) {}

bool SavedState::save(int width, int height) {
    const Functions& gl = mFunctions;
    // Finds every reason to skip the frame before the first change.
    mObstacle = read();
    if (mObstacle != nullptr) {
        return false;
    }
    mProgram.set(gl);
    mBindings.set(gl);
    mTarget.set(gl, width, height);
    mRaster.set(gl);
    mBlend.set(gl);
    return true;
}

Obstacle SavedState::read() {
    const Functions& gl = mFunctions;
    Obstacle obstacle = mRecording.find(gl);
    obstacle = obstacle == nullptr ? mProgram.read(gl) : obstacle;
    obstacle = obstacle == nullptr ? mTarget.read(gl) : obstacle;
    return obstacle == nullptr ? mBindings.read(gl) : obstacle;
}

void SavedState::prepareTransfer() {
    if (!mHasTransfer) {
        mHasTransfer = true;
        mTransfer.set(mFunctions);
    }
}

bool SavedState::known(bool isPrepared) {
    if (!isPrepared) {
        mObstacle = "what it reads or copies pixels by was deleted";
    }
    return isPrepared;
}

bool SavedState::prepareUpload() {
    if (!mHasUnpacking) {
        mHasUnpacking = mUnpacking.set(mFunctions);
        prepareTransfer();
    }
    return known(mHasUnpacking);
}

bool SavedState::prepareCopy() {
    if (!mHasSource) {
        mHasSource = mSource.set(mFunctions);
        prepareTransfer();
    }
    return known(mHasSource);
}

bool SavedState::prepareRead() {
    if (!mHasPacking) {
        mHasPacking = prepareCopy() && mPacking.set(mFunctions);
    }
    return known(mHasPacking);
}

void SavedState::restore() {
    const Functions& gl = mFunctions;
    if (mHasPacking) {
        mPacking.restore(gl);
    }
    if (mHasSource) {
        mSource.restore(gl);
    }
    if (mHasUnpacking) {
        mUnpacking.restore(gl);
    }
    if (mHasTransfer) {
        mTransfer.restore(gl);
    }
    mHasTransfer = mHasUnpacking = mHasPacking = mHasSource = false;
    mBlend.restore(gl);
    mTarget.restore(gl);
    mBindings.restore(gl);
    mProgram.restore(gl);
    mRaster.restore(gl);
}

}  // namespace opengl
