#pragma once

#include <random>
#include <vector>

class HeadlessContext;
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

    /// Makes the objects that are bound later. other shares its objects with context and is made current for
    /// a moment now and then. gl is context's; what is off in its features is left alone.
    RandomState(const HeadlessContext& context, const HeadlessContext& other, const opengl::Functions& gl);

    /// Sets everything there is at random; no error is pending but the expected one once raiseError() was
    /// called.
    Expectation set(unsigned seed);
    void raiseError(const Expectation& expectation) const;

    /// Ends what began in set() and would be in the way of the next.
    void end();

private:
    using Random = std::mt19937;

    unsigned link(const char* vertex, const char* fragment, bool captures = false) const;
    void wipe() const;  ///< the surface
    void setSwitches(Random& random) const;
    void setValues(Random& random) const;
    void setPixels(Random& random) const;
    void setFixedFunction(Random& random) const;
    void bindObjects(Random& random);
    void bindProgram(Random& random, Expectation& expectation);
    void deleteElsewhere(Random& random, Expectation& expectation);
    void record(Random& random, Expectation& expectation);

    const HeadlessContext& mContext;
    const HeadlessContext& mOther;
    const opengl::Functions& mGl;
    std::vector<unsigned> mTextures, mBuffers, mVertexArrays, mSamplers, mFramebuffers, mQueries;
    unsigned mProgram = 0, mCapturing = 0, mChoosing = 0, mPipeline = 0;
    unsigned mRunning = 0;  ///< target of the query that is running
    bool mIsCapturing = false, mIsCompiling = false, mIsConditional = false;
};
