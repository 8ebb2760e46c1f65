#include "opengl/gl/Recording.h"

#include "opengl/gl/Get.h"

namespace opengl {
namespace {

struct QueryTarget {
    GLenum target;
    bool Features::*feature;
};

// Without queries of geometry, tessellation and compute shaders, which the overlay does not use, and without
// those of time, which the overlay does take.
const QueryTarget TARGETS[] = {
    {GL_SAMPLES_PASSED, &Features::samplesQueries},
    {GL_ANY_SAMPLES_PASSED, &Features::anySamplesQueries},
    {GL_ANY_SAMPLES_PASSED_CONSERVATIVE, &Features::conservativeQueries},
    {GL_PRIMITIVES_GENERATED, &Features::primitiveQueries},
    {GL_VERTICES_SUBMITTED, &Features::statisticsQueries},
    {GL_PRIMITIVES_SUBMITTED, &Features::statisticsQueries},
    {GL_VERTEX_SHADER_INVOCATIONS, &Features::statisticsQueries},
    {GL_FRAGMENT_SHADER_INVOCATIONS, &Features::statisticsQueries},
    {GL_CLIPPING_INPUT_PRIMITIVES, &Features::statisticsQueries},
    {GL_CLIPPING_OUTPUT_PRIMITIVES, &Features::statisticsQueries},
};

}  // namespace

Recording::Recording(const Functions& gl) {
    static_assert(sizeof TARGETS / sizeof TARGETS[0] == std::tuple_size_v<decltype(mTargets)>);
    for (const QueryTarget& query : TARGETS) {
        if (gl.features.queries && gl.features.*query.feature) {
            mTargets[mTargetCount++] = query.target;
        }
    }
}

Obstacle Recording::find(const Functions& gl) const {
    if (gl.features.compatibility && getInteger(gl, LIST_INDEX) != 0) {
        return "a display list is being compiled when it swaps";
    }
    if (gl.features.compatibility && getName(gl, RENDER_MODE) != RENDER) {
        return "what it draws goes to selection or feedback when it swaps";
    }
    for (std::size_t i = 0; i < mTargetCount; ++i) {
        GLint query = 0;
        gl.getQueryiv(mTargets[i], GL_CURRENT_QUERY, &query);
        if (query != 0) {
            return "a query of what is drawn spans the swap";
        }
    }
    return nullptr;
}

}  // namespace opengl
