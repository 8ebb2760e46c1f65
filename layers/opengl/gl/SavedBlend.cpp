#include "opengl/gl/SavedBlend.h"

#include "opengl/gl/Get.h"

namespace opengl {
namespace {

using Function = std::array<GLenum, 4>;
using Equation = std::array<GLenum, 2>;
using Mask = std::array<GLint, 4>;

constexpr Function OVER = {GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA};
constexpr Equation ADD = {GL_FUNC_ADD, GL_FUNC_ADD};
constexpr Mask ALL = {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};

GLenum getBlending(const Functions& gl, GLenum name) {
    if (!gl.features.indexedBlending) {
        return getName(gl, name);
    }
    GLint value = 0;
    gl.getIntegeri_v(name, 0, &value);
    return static_cast<GLenum>(value);
}

void setFunction(const Functions& gl, const Function& function) {
    if (gl.features.indexedBlending) {
        gl.blendFuncSeparatei(0, function[0], function[1], function[2], function[3]);
    } else {
        gl.blendFuncSeparate(function[0], function[1], function[2], function[3]);
    }
}

bool isAdvanced(GLenum equation) {
    return equation != GL_FUNC_ADD && equation != GL_FUNC_SUBTRACT && equation != GL_FUNC_REVERSE_SUBTRACT &&
           equation != GL_MIN && equation != GL_MAX;
}

void setEquation(const Functions& gl, const Equation& equation) {
    const bool isForBoth = isAdvanced(equation[0]);  // an advanced equation is one for colour and alpha
    if (gl.features.indexedBlending) {
        if (isForBoth) {
            gl.blendEquationi(0, equation[0]);
        } else {
            gl.blendEquationSeparatei(0, equation[0], equation[1]);
        }
    } else if (isForBoth) {
        gl.blendEquation(equation[0]);
    } else {
        gl.blendEquationSeparate(equation[0], equation[1]);
    }
}

void setMask(const Functions& gl, const Mask& mask) {
    const auto flag = [&mask](std::size_t i) { return static_cast<GLboolean>(mask[i] != 0); };
    if (gl.features.indexedState) {
        gl.colorMaski(0, flag(0), flag(1), flag(2), flag(3));
    } else {
        gl.colorMask(flag(0), flag(1), flag(2), flag(3));
    }
}

}  // namespace

void SavedBlend::set(const Functions& gl) {
    if (gl.features.indexedState) {
        mChangesEnable = !gl.isEnabledi(GL_BLEND, 0);
        if (mChangesEnable) {
            gl.enablei(GL_BLEND, 0);
        }
        gl.getIntegeri_v(GL_COLOR_WRITEMASK, 0, mMask.data());
    } else {
        mChangesEnable = !gl.isEnabled(GL_BLEND);
        if (mChangesEnable) {
            gl.enable(GL_BLEND);
        }
        gl.getIntegerv(GL_COLOR_WRITEMASK, mMask.data());
    }
    mChangesMask = mMask != ALL;
    if (mChangesMask) {
        setMask(gl, ALL);
    }
    mFunction = {getBlending(gl, GL_BLEND_SRC_RGB), getBlending(gl, GL_BLEND_DST_RGB),
                 getBlending(gl, GL_BLEND_SRC_ALPHA), getBlending(gl, GL_BLEND_DST_ALPHA)};
    mChangesFunction = mFunction != OVER;
    if (mChangesFunction) {
        setFunction(gl, OVER);
    }
    mEquation = {getBlending(gl, GL_BLEND_EQUATION_RGB), getBlending(gl, GL_BLEND_EQUATION_ALPHA)};
    mChangesEquation = mEquation != ADD;
    if (mChangesEquation) {
        setEquation(gl, ADD);
    }
}

void SavedBlend::restore(const Functions& gl) const {
    if (mChangesEquation) {
        setEquation(gl, mEquation);
    }
    if (mChangesFunction) {
        setFunction(gl, mFunction);
    }
    if (mChangesMask) {
        setMask(gl, mMask);
    }
    if (mChangesEnable) {
        if (gl.features.indexedState) {
            gl.disablei(GL_BLEND, 0);
        } else {
            gl.disable(GL_BLEND);
        }
    }
}

}  // namespace opengl
