#include "opengl/passes/TimeStamps.h"

namespace opengl {

std::uint64_t timeStampMask(const Functions& gl) {
    constexpr int FULL_BITS = 64;
    GLint bits = 0;
    gl.getQueryiv(GL_TIMESTAMP, GL_QUERY_COUNTER_BITS, &bits);
    if (bits <= 0) {
        return 0;
    }
    return bits >= FULL_BITS ? ~std::uint64_t{0} : (std::uint64_t{1} << bits) - 1;
}

bool canPutTimeStamp(const Functions& gl) {
    GLint list = 0;
    if (gl.features.compatibility) {
        gl.getIntegerv(LIST_INDEX, &list);
    }
    return list == 0;
}

bool canReadTimeStamp(const Functions& gl) {
    GLint buffer = 0;
    if (gl.features.queryBuffers) {
        gl.getIntegerv(GL_QUERY_BUFFER_BINDING, &buffer);
    }
    return buffer == 0;
}

bool wasDisjoint(const Functions& gl) {
    GLint isDisjoint = GL_FALSE;
    if (gl.version.isEs) {
        gl.getIntegerv(GPU_DISJOINT_EXT, &isDisjoint);
    }
    return isDisjoint != GL_FALSE;
}

}  // namespace opengl
