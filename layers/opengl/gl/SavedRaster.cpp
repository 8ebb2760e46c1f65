#include "opengl/gl/SavedRaster.h"

#include "opengl/gl/Get.h"

#include <algorithm>

namespace opengl {
namespace {

struct Switch {
    GLenum name;
    bool Features::*feature;
};

const Switch SWITCHES[] = {
    {GL_DEBUG_OUTPUT, &Features::debugOutput},  // first, to keep the driver's messages on our calls from
                                                // the application
    {GL_DEPTH_TEST, &Features::always},
    {GL_STENCIL_TEST, &Features::always},
    {GL_CULL_FACE, &Features::always},
    {GL_POLYGON_SMOOTH, &Features::desktop},
    {POLYGON_STIPPLE, &Features::compatibility},
    {ALPHA_TEST, &Features::compatibility},
    {GL_COLOR_LOGIC_OP, &Features::desktop},
    {GL_RASTERIZER_DISCARD, &Features::rasterizerDiscard},
    {GL_PRIMITIVE_RESTART, &Features::primitiveRestart},
    {GL_PRIMITIVE_RESTART_FIXED_INDEX, &Features::fixedPrimitiveRestart},
    {GL_FRAMEBUFFER_SRGB, &Features::framebufferSrgb},
    {DEPTH_BOUNDS_TEST_EXT, &Features::depthBounds},
    {CONSERVATIVE_RASTERIZATION_NV, &Features::conservativeRaster},
    {CONSERVATIVE_RASTERIZATION_INTEL, &Features::conservativeRasterIntel},
};

const Switch MULTISAMPLE_SWITCHES[] = {
    {GL_SAMPLE_ALPHA_TO_COVERAGE, &Features::always},
    {GL_SAMPLE_COVERAGE, &Features::always},
    {GL_SAMPLE_ALPHA_TO_ONE, &Features::sampleAlphaToOne},
    {GL_SAMPLE_MASK, &Features::sampleMask},
};

}  // namespace

SavedRaster::SavedRaster(const Functions& gl) {
    static_assert(std::size(SWITCHES) + std::size(MULTISAMPLE_SWITCHES) + 8 <= MAX_SWITCHES);
    for (const Switch& entry : SWITCHES) {
        if (gl.features.*entry.feature) {
            add(entry.name);
        }
    }
    for (int i = 0; i < std::min(gl.maxClipDistances, 8); ++i) {
        add(GL_CLIP_DISTANCE0 + static_cast<GLenum>(i));
    }
    mMultisampleFrom = mSwitchCount;
    for (const Switch& entry : MULTISAMPLE_SWITCHES) {
        if (gl.features.*entry.feature) {
            add(entry.name);
        }
    }
}

void SavedRaster::add(GLenum name) {
    mSwitches[mSwitchCount++] = name;
}

void SavedRaster::set(const Functions& gl) {
    mChanged = 0;
    const bool isMultisample = getInteger(gl, GL_SAMPLE_BUFFERS) != 0;
    const std::size_t count = isMultisample ? mSwitchCount : mMultisampleFrom;
    for (std::size_t i = 0; i < count; ++i) {
        if (gl.isEnabled(mSwitches[i])) {
            gl.disable(mSwitches[i]);
            mChanged |= 1U << i;
        }
    }
    if (gl.features.viewportArrays) {
        mChangesScissor = gl.isEnabledi(GL_SCISSOR_TEST, 0);
        if (mChangesScissor) {
            gl.disablei(GL_SCISSOR_TEST, 0);
        }
    } else {
        mChangesScissor = gl.isEnabled(GL_SCISSOR_TEST);
        if (mChangesScissor) {
            gl.disable(GL_SCISSOR_TEST);
        }
    }
    if (gl.features.clientPrimitiveRestart) {
        mChangesRestart = gl.isEnabled(PRIMITIVE_RESTART_NV);
        if (mChangesRestart) {
            gl.disableClientState(PRIMITIVE_RESTART_NV);
        }
    }
    if (gl.features.polygonMode) {
        mPolygonMode[1] = 0;
        gl.getIntegerv(GL_POLYGON_MODE, mPolygonMode.data());
        if (mPolygonMode[1] == 0) {  // the core profile has one mode for both sides
            mPolygonMode[1] = mPolygonMode[0];
        }
        if (mPolygonMode[0] != GL_FILL || mPolygonMode[1] != GL_FILL) {
            gl.polygonMode(GL_FRONT_AND_BACK, GL_FILL);
        }
    }
    if (gl.features.clipControl) {
        mClipOrigin = getName(gl, GL_CLIP_ORIGIN);
        if (mClipOrigin != GL_LOWER_LEFT) {
            mClipDepth = getName(gl, GL_CLIP_DEPTH_MODE);
            gl.clipControl(GL_LOWER_LEFT, mClipDepth);
        }
    }
}

void SavedRaster::restore(const Functions& gl) const {
    if (gl.features.clipControl && mClipOrigin != GL_LOWER_LEFT) {
        gl.clipControl(mClipOrigin, mClipDepth);
    }
    if (gl.features.polygonMode) {
        if (mPolygonMode[0] != mPolygonMode[1]) {
            gl.polygonMode(GL_FRONT, static_cast<GLenum>(mPolygonMode[0]));
            gl.polygonMode(GL_BACK, static_cast<GLenum>(mPolygonMode[1]));
        } else if (mPolygonMode[0] != GL_FILL) {
            gl.polygonMode(GL_FRONT_AND_BACK, static_cast<GLenum>(mPolygonMode[0]));
        }
    }
    if (mChangesRestart) {
        gl.enableClientState(PRIMITIVE_RESTART_NV);
    }
    if (mChangesScissor) {
        if (gl.features.viewportArrays) {
            gl.enablei(GL_SCISSOR_TEST, 0);
        } else {
            gl.enable(GL_SCISSOR_TEST);
        }
    }
    for (std::size_t i = 0; i < mSwitchCount; ++i) {
        if ((mChanged >> i & 1U) != 0) {
            gl.enable(mSwitches[i]);
        }
    }
}

}  // namespace opengl
