#pragma once

#include "opengl/state/Dice.h"

#include <vector>

class HeadlessContext;
class StateDump;
namespace opengl {
struct Functions;
}

/// An application that leaves its context in random states.
class RandomState {
public:
    /// What may be expected of an overlay in the state that was set.
    struct Expectation {
        bool draws = true;      ///< false: the frame must be left alone
        bool isVisible = true;  ///< false: conditional rendering may take the overlay away
        bool uploads = true;    ///< false: what is unpacked from cannot be bound again
        bool rebinds = true;    ///< whether the bound framebuffers may be bound again
        unsigned pendingError = 0;
    };

    /// Makes the objects that are bound later, and sets what would take the overlay away where a switch for
    /// it were left on. other shares its objects with context and is made current for a moment now and then.
    /// gl is context's; what is off in its features is left alone.
    RandomState(const HeadlessContext& context, const HeadlessContext& other, const opengl::Functions& gl);

    /// Sets everything there is at random, switches and integers by the names that the context knows; no
    /// error is pending but the expected one once raiseError() was called.
    Expectation set(unsigned seed, const StateDump& known);
    void raiseError(const Expectation& expectation) const;

    /// Ends what began in set() and would be in the way of the next.
    void end();

private:
    using Objects = std::vector<GLuint>;

    GLuint link(bool captures = false, const char* fragment = nullptr) const;
    void wipe() const;  ///< the surface
    void setValues(Dice& dice, const StateDump& known) const;
    void bindObjects(Dice& dice) const;
    void bindProgram(Dice& dice, Expectation& expectation);
    void deleteElsewhere(Dice& dice, Expectation& expectation) const;
    void record(Dice& dice, Expectation& expectation);

    const HeadlessContext& mContext;
    const HeadlessContext& mOther;
    const opengl::Functions& mGl;
    Objects mTextures, mBuffers, mVertexArrays, mSamplers, mFramebuffers;
    GLuint mProgram = 0, mCapturing = 0, mChoosing = 0, mPipeline = 0, mEmptyQuery = 0;
    GLenum mRunning = 0;  ///< target of the query that is running
    GLuint mRunningQuery = 0;
    bool mIsCapturing = false, mIsCompiling = false, mIsConditional = false;
};
