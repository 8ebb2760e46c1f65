#include "opengl/gl/SavedState.h"

namespace opengl {

SavedState::SavedState(const Functions& functions)
    : mFunctions(functions), mRecording(functions), mRaster(functions) {}

bool SavedState::save(int width, int height) {
    const Functions& gl = mFunctions;
    // All reasons to leave the frame alone come before the first change.
    if (mRecording.isRunning(gl) || !mProgram.read(gl) || !mTarget.read(gl) || !mBindings.read(gl)) {
        return false;
    }
    mProgram.set(gl);
    mBindings.set(gl);
    mTarget.set(gl, width, height);
    mRaster.set(gl);
    mBlend.set(gl);
    return true;
}

void SavedState::prepareTransfer() {
    if (!mHasTransfer) {
        mHasTransfer = true;
        mTransfer.set(mFunctions);
    }
}

bool SavedState::prepareUpload() {
    if (!mHasUnpacking) {
        mHasUnpacking = mUnpacking.set(mFunctions);
        prepareTransfer();
    }
    return mHasUnpacking;
}

bool SavedState::prepareCopy() {
    if (!mHasSource) {
        mHasSource = mSource.set(mFunctions);
        prepareTransfer();
    }
    return mHasSource;
}

bool SavedState::prepareRead() {
    if (!mHasPacking) {
        mHasPacking = prepareCopy() && mPacking.set(mFunctions);
    }
    return mHasPacking;
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
