#include "opengl/gl/SavedProgram.h"

#include "opengl/gl/Get.h"

namespace opengl {
namespace {

constexpr GLenum STAGE_TYPES[] = {GL_VERTEX_SHADER, GL_TESS_CONTROL_SHADER, GL_TESS_EVALUATION_SHADER,
                                  GL_GEOMETRY_SHADER, GL_FRAGMENT_SHADER};

Obstacle findObstacle(const Functions& gl, GLuint program) {
    GLint isDeleted = GL_FALSE;
    GLint isLinked = GL_FALSE;
    gl.getProgramiv(program, GL_DELETE_STATUS, &isDeleted);
    gl.getProgramiv(program, GL_LINK_STATUS, &isLinked);
    if (isDeleted != GL_FALSE) {
        return "its current program was deleted";
    }
    return isLinked != GL_FALSE ? nullptr : "its current program failed to link again";
}

/// Returns the number of subroutine uniforms, counting the elements of arrays. Asks for the number of
/// uniforms first, because drivers differ on whether one may ask for the locations in a program without the
/// stage.
GLint countSubroutines(const Functions& gl, GLuint program, GLenum stage) {
    GLint count = 0;
    gl.getProgramStageiv(program, stage, GL_ACTIVE_SUBROUTINE_UNIFORMS, &count);
    if (count != 0) {
        gl.getProgramStageiv(program, stage, GL_ACTIVE_SUBROUTINE_UNIFORM_LOCATIONS, &count);
    }
    return count;
}

}  // namespace

Obstacle SavedProgram::read(const Functions& gl) {
    mProgram = getName(gl, GL_CURRENT_PROGRAM);
    const Obstacle obstacle = mProgram != 0 ? findObstacle(gl, mProgram) : nullptr;
    if (obstacle != nullptr) {
        return obstacle;
    }
    // A context that cannot pause it cannot be asked about it either.
    mPausesFeedback = gl.features.transformFeedback && getInteger(gl, GL_TRANSFORM_FEEDBACK_ACTIVE) != 0 &&
                      getInteger(gl, GL_TRANSFORM_FEEDBACK_PAUSED) == 0;
    return gl.features.subroutines ? readSubroutines(gl) : nullptr;
}

Obstacle SavedProgram::readSubroutines(const Functions& gl) {
    mSubroutineCounts = {};
    GLuint pipeline = 0;
    if (mProgram == 0 && gl.features.programPipelines) {
        pipeline = getName(gl, GL_PROGRAM_PIPELINE_BINDING);
    }
    if (mProgram == 0 && pipeline == 0) {
        return nullptr;
    }
    std::size_t total = 0;
    for (std::size_t stage = 0; stage < STAGES; ++stage) {
        auto program = static_cast<GLint>(mProgram);
        if (pipeline != 0) {
            gl.getProgramPipelineiv(pipeline, STAGE_TYPES[stage], &program);
        }
        GLint& count = mSubroutineCounts[stage];
        if (program != 0) {
            count = countSubroutines(gl, static_cast<GLuint>(program), STAGE_TYPES[stage]);
        }
        if (total + static_cast<std::size_t>(count) > MAX_SUBROUTINES) {
            return "its current program has more subroutines than can be kept";
        }
        for (GLint location = 0; location < count; ++location) {
            gl.getUniformSubroutineuiv(STAGE_TYPES[stage], location, &mSubroutines[total++]);
        }
    }
    return nullptr;
}

void SavedProgram::set(const Functions& gl) const {
    if (mPausesFeedback) {
        gl.pauseTransformFeedback();
    }
}

void SavedProgram::restore(const Functions& gl) const {
    gl.useProgram(mProgram);
    const GLuint* subroutines = mSubroutines.data();
    for (std::size_t stage = 0; stage < STAGES; ++stage) {
        const GLint count = mSubroutineCounts[stage];
        if (count > 0) {
            gl.uniformSubroutinesuiv(STAGE_TYPES[stage], count, subroutines);
            subroutines += count;
        }
    }
    if (mPausesFeedback) {
        gl.resumeTransformFeedback();
    }
}

}  // namespace opengl
