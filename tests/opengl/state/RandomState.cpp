#include "opengl/state/RandomState.h"

#include "opengl/state/StateDump.h"

#include <cstdint>
#include <initializer_list>

namespace {

using Names = std::initializer_list<GLenum>;

// clang-format off
const GLenum PACK_REVERSE_ROW_ORDER_ANGLE = 0x93A4;
const Names FACTORS = {GL_ZERO, GL_ONE, GL_SRC_COLOR, GL_DST_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_SRC_ALPHA};
const Names EQUATIONS = {GL_FUNC_ADD, GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT, GL_MIN, GL_MAX};
const Names BUFFERS = {
    GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_PACK_BUFFER, GL_UNIFORM_BUFFER,
    GL_COPY_READ_BUFFER, GL_QUERY_BUFFER, GL_DRAW_INDIRECT_BUFFER};
const Names QUERIES = {
    GL_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED_CONSERVATIVE, GL_PRIMITIVES_GENERATED,
    GL_TIME_ELAPSED, GL_VERTICES_SUBMITTED, GL_FRAGMENT_SHADER_INVOCATIONS, GL_CLIPPING_OUTPUT_PRIMITIVES};
// clang-format on

const char* const OLD_VERTEX = "attribute vec4 p; varying vec4 v; void main() { v = p; gl_Position = p; }";
const char* const OLD_FRAGMENT = "void main() { gl_FragColor = vec4(0.5); }";
const char* const CORE_VERTEX =
    "#version 150\nin vec4 p; out vec4 v; void main() { v = p; gl_Position = p; }";
const char* const CORE_FRAGMENT = "#version 150\nout vec4 c; void main() { c = vec4(0.5); }";
const char* const CHOOSING_FRAGMENT =
    "#version 400\nsubroutine vec4 Kind(); subroutine(Kind) vec4 a() { return vec4(0.0); }"
    "subroutine(Kind) vec4 b() { return vec4(1.0); } subroutine uniform Kind kinds[3]; out vec4 c;"
    "void main() { c = kinds[0]() + kinds[1]() + kinds[2](); }";

const GLfloat CLIENT_VERTICES[64] = {};

void clearErrors() {
    while (CALL(GetError)() != GL_NO_ERROR) {
    }
}

}  // namespace

GLuint RandomState::link(bool captures, const char* fragment) const {
    const bool isCore = mGl.version.isCore || fragment != nullptr;
    const char* const sources[] = {isCore ? CORE_VERTEX : OLD_VERTEX, fragment != nullptr ? fragment
                                                                      : isCore            ? CORE_FRAGMENT
                                                                                          : OLD_FRAGMENT};
    const GLuint program = CALL(CreateProgram)();
    for (const int i : {0, 1}) {
        const GLuint shader = CALL(CreateShader)(i == 0 ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER);
        CALL(ShaderSource)(shader, 1, &sources[i], nullptr);
        CALL(CompileShader)(shader);
        CALL(AttachShader)(program, shader);
        CALL(DeleteShader)(shader);
    }
    const char* const captured = "v";
    if (captures) {
        CALL(TransformFeedbackVaryings)(program, 1, &captured, GL_INTERLEAVED_ATTRIBS);
    }
    CALL(LinkProgram)(program);
    return program;
}

RandomState::RandomState(const HeadlessContext& context, const HeadlessContext& other,
                         const opengl::Functions& gl)
    : mContext(context), mOther(other), mGl(gl) {
    const opengl::Features& features = gl.features;
    const auto make = [](Objects& names, const auto& generate, const auto& prepare) {
        names.resize(3);
        generate(3, names.data());
        for (const GLuint name : names) {
            prepare(name);
        }
    };
    make(mTextures, CALL(GenTextures), [](GLuint texture) {
        CALL(BindTexture)(GL_TEXTURE_2D, texture);
        CALL(TexImage2D)(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    });
    make(mFramebuffers, CALL(GenFramebuffers), [this](GLuint framebuffer) {
        CALL(BindFramebuffer)(GL_FRAMEBUFFER, framebuffer);
        CALL(FramebufferTexture2D)
        (GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mTextures[0], 0);
    });
    make(mBuffers, CALL(GenBuffers), [](GLuint buffer) {
        CALL(BindBuffer)(GL_ARRAY_BUFFER, buffer);
        CALL(BufferData)(GL_ARRAY_BUFFER, 4096, nullptr, GL_STATIC_DRAW);
    });
    if (features.vertexArrays) {
        make(mVertexArrays, CALL(GenVertexArrays), CALL(BindVertexArray));
    }
    if (features.samplers) {
        make(mSamplers, CALL(GenSamplers), [](GLuint sampler) { CALL(BindSampler)(0, sampler); });
    }
    mProgram = link();
    mCapturing = features.transformFeedback ? link(true) : 0;
    if (features.subroutines) {
        mChoosing = link(false, CHOOSING_FRAGMENT);
        CALL(UseProgram)(mChoosing);  // so that it is known what can be asked of it
    }
    if (features.programPipelines) {
        const char* const source = mChoosing != 0       ? CHOOSING_FRAGMENT
                                   : mGl.version.isCore ? CORE_FRAGMENT
                                                        : OLD_FRAGMENT;
        CALL(GenProgramPipelines)(1, &mPipeline);
        CALL(UseProgramStages)
        (mPipeline, GL_FRAGMENT_SHADER_BIT, CALL(CreateShaderProgramv)(GL_FRAGMENT_SHADER, 1, &source));
    }
    if (features.samplesQueries) {  // no sample passes: what hangs on this one is not drawn
        CALL(GenQueries)(1, &mEmptyQuery);
        CALL(BeginQuery)(GL_SAMPLES_PASSED, mEmptyQuery);
        CALL(EndQuery)(GL_SAMPLES_PASSED);
    }
    const GLubyte stipple[128] = {};
    CALL(PolygonStipple)(stipple);
    CALL(AlphaFunc)(GL_NEVER, 0);
    CALL(DepthFunc)(GL_NEVER);
    CALL(StencilFunc)(GL_NEVER, 1, 3);
    CALL(StencilOp)(GL_INVERT, GL_INVERT, GL_INVERT);
    CALL(CullFace)(GL_FRONT_AND_BACK);
    CALL(LogicOp)(GL_CLEAR);
    CALL(SampleCoverage)(0, GL_FALSE);
    CALL(SampleMaski)(0, 0);
    CALL(BlendColor)(0.1F, 0.2F, 0.3F, 0.4F);
    CALL(VertexPointer)(2, GL_FLOAT, 8, nullptr);
    clearErrors();
}

RandomState::Expectation RandomState::set(unsigned seed, const StateDump& known) {
    Dice dice(seed);
    Expectation expectation;
    wipe();
    setValues(dice, known);
    bindObjects(dice);
    bindProgram(dice, expectation);
    if (dice.oneIn(10)) {
        deleteElsewhere(dice, expectation);
    }
    record(dice, expectation);
    clearErrors();
    if (dice.oneIn(3)) {
        expectation.pendingError = dice.pick<GLenum>({GL_INVALID_ENUM, GL_INVALID_VALUE});
    }
    return expectation;
}

void RandomState::raiseError(const Expectation& expectation) const {
    GLint unused = 0;  // both are calls that a display list does not keep for later
    if (expectation.pendingError == GL_INVALID_ENUM) {
        CALL(GetIntegerv)(GL_TRIANGLES, &unused);
    } else if (expectation.pendingError == GL_INVALID_VALUE) {
        CALL(GetVertexAttribiv)(~0U, GL_VERTEX_ATTRIB_ARRAY_SIZE, &unused);
    }
}

void RandomState::wipe() const {
    CALL(Disable)(GL_RASTERIZER_DISCARD);
    CALL(Disable)(GL_SCISSOR_TEST);
    CALL(ColorMask)(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    CALL(BindFramebuffer)(GL_FRAMEBUFFER, 0);
    const GLenum back = GL_BACK;
    mGl.version.isEs ? CALL(DrawBuffers)(1, &back) : CALL(DrawBuffer)(back);
    CALL(ClearColor)(0, 0, 0, 0);
    CALL(Clear)(GL_COLOR_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

/// Each is tried on every context: where it is unknown, it is an error without an effect.
void RandomState::setValues(Dice& dice, const StateDump& known) const {
    const auto factor = [&dice] { return dice.pick(FACTORS); };
    const auto mode = [&dice] { return dice.pick<GLenum>({GL_FILL, GL_LINE, GL_POINT}); };
    for (const GLenum name : known.switches()) {
        if (name > GL_CLIP_DISTANCE0 && name < GL_CLIP_DISTANCE0 + 7) {
            continue;  // to Mesa each set of them is a shader of its own, to be compiled
        }
        dice.oneIn(2) ? CALL(Enable)(name) : CALL(Disable)(name);
    }
    for (const GLenum name : Names{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_PRIMITIVE_RESTART_NV}) {
        dice.oneIn(2) ? CALL(EnableClientState)(name) : CALL(DisableClientState)(name);
    }
    for (const GLenum name : known.integers()) {
        if (name == PACK_REVERSE_ROW_ORDER_ANGLE) {
            continue;  // which the layer does not know: its pictures are upside down
        }
        CALL(PixelStorei)(name, 1);
        CALL(PixelStorei)(name, dice.pick({0, 1, 2, 4, 8}));
        CALL(PixelTransferf)(name, dice.fraction());
    }
    dice.oneIn(3) ? CALL(Viewport)(0, 0, mContext.width(), mContext.height())
                  : CALL(Viewport)(dice.size() - 5, dice.size() - 5, dice.size(), dice.size());
    CALL(Scissor)(dice.size(), dice.size(), dice.size(), dice.size());
    CALL(BlendFuncSeparate)(factor(), factor(), factor(), factor());
    if (dice.oneIn(3)) {
        CALL(BlendFuncSeparate)(GL_ONE, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    }
    CALL(BlendEquationSeparate)(dice.pick(EQUATIONS), dice.pick(EQUATIONS));
    if (dice.oneIn(4)) {
        CALL(BlendEquation)(dice.pick<GLenum>({GL_MULTIPLY_KHR, GL_SCREEN_KHR, GL_FUNC_ADD}));
    }
    CALL(ColorMask)(dice.flag(), dice.flag(), dice.flag(), dice.flag());
    for (GLuint i = dice.bits() % 4; i < 3; ++i) {
        // Where there is one viewport only, Mesa counts several all the same.
        const GLenum name = mGl.features.viewportArrays && dice.oneIn(2) ? GL_SCISSOR_TEST : GL_BLEND;
        dice.oneIn(2) ? CALL(Enablei)(name, i) : CALL(Disablei)(name, i);
        CALL(ViewportIndexedf)(i, dice.fraction() * 20, dice.fraction() * 20, dice.fraction() * 20, 8);
        CALL(ScissorIndexed)(i, dice.size(), dice.size(), dice.size(), dice.size());
        CALL(BlendFuncSeparatei)(i, factor(), factor(), factor(), factor());
        CALL(BlendEquationSeparatei)(i, dice.pick(EQUATIONS), dice.pick(EQUATIONS));
        CALL(ColorMaski)(i, dice.flag(), dice.flag(), dice.flag(), dice.flag());
    }
    CALL(DepthMask)(dice.flag());
    CALL(StencilMask)(dice.bits() % 256);
    CALL(PolygonMode)(GL_FRONT_AND_BACK, mode());
    CALL(PolygonMode)(GL_FRONT, mode());
    CALL(ClipControl)
    (dice.pick<GLenum>({GL_LOWER_LEFT, GL_UPPER_LEFT}),
     dice.pick<GLenum>({GL_NEGATIVE_ONE_TO_ONE, GL_ZERO_TO_ONE}));
    CALL(ClearColor)(dice.fraction(), dice.fraction(), dice.fraction(), 1);
    CALL(PrimitiveRestartIndex)(dice.bits() % 8);
    for (const GLenum matrix : Names{GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE}) {
        CALL(MatrixMode)(matrix);
        CALL(Scalef)(dice.fraction(), 1, 1);
    }
    CALL(MatrixMode)(dice.pick<GLenum>({GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE}));
    CALL(TexEnvi)(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, dice.pick<GLint>({GL_MODULATE, GL_DECAL, GL_COMBINE}));
    CALL(ClampColor)(GL_CLAMP_FRAGMENT_COLOR_ARB, dice.pick<GLenum>({GL_TRUE, GL_FALSE, GL_FIXED_ONLY}));
}

void RandomState::bindObjects(Dice& dice) const {
    if (!mVertexArrays.empty()) {
        CALL(BindVertexArray)(dice.object(mVertexArrays));
    }
    for (GLuint i = 0; i < 5; ++i) {
        const GLuint buffer = dice.object(mBuffers);
        CALL(BindBuffer)(GL_ARRAY_BUFFER, buffer);
        const void* const pointer =
            buffer != 0 ? reinterpret_cast<const void*>(std::uintptr_t{16}) : CLIENT_VERTICES;
        CALL(VertexAttribPointer)
        (i, 1 + dice.below(4), dice.pick<GLenum>({GL_FLOAT, GL_UNSIGNED_BYTE}), dice.flag(),
         dice.pick({0, 16, 20}), pointer);
        if (dice.oneIn(4)) {
            CALL(VertexAttribIPointer)(i, 1 + dice.below(4), GL_UNSIGNED_SHORT, 8, pointer);
        }
        CALL(VertexAttribDivisor)(i, dice.bits() % 3);
        dice.oneIn(2) ? CALL(EnableVertexAttribArray)(i) : CALL(DisableVertexAttribArray)(i);
        CALL(VertexAttrib4f)(i, dice.fraction(), dice.fraction(), dice.fraction(), dice.fraction());
    }
    for (const GLenum target : BUFFERS) {
        CALL(BindBuffer)(target, dice.object(mBuffers));
    }
    for (GLuint unit = 0; unit < 3; ++unit) {
        CALL(ActiveTexture)(GL_TEXTURE0 + unit);
        CALL(BindTexture)(GL_TEXTURE_2D, dice.object(mTextures));
        if (!mSamplers.empty()) {
            CALL(BindSampler)(unit, dice.object(mSamplers));
        }
    }
    CALL(ActiveTexture)(GL_TEXTURE0 + dice.bits() % 3);
    // The default framebuffer's own state first; it is bound elsewhere when that is saved.
    CALL(BindFramebuffer)(GL_FRAMEBUFFER, 0);
    const GLenum buffers[] = {dice.pick<GLenum>({GL_BACK, GL_NONE, GL_BACK_LEFT}), GL_NONE, GL_FRONT_LEFT};
    CALL(DrawBuffers)(1, buffers);
    if (dice.oneIn(2)) {
        CALL(DrawBuffer)(dice.pick<GLenum>({GL_BACK, GL_FRONT, GL_FRONT_AND_BACK, GL_NONE}));
    }
    if (dice.oneIn(3)) {
        CALL(DrawBuffers)(3, buffers);
    }
    CALL(ReadBuffer)(dice.pick<GLenum>({GL_BACK, GL_NONE, GL_FRONT}));
    CALL(BindFramebuffer)(GL_FRAMEBUFFER, dice.object(mFramebuffers));
    if (mGl.features.readFramebuffers) {
        CALL(BindFramebuffer)(GL_READ_FRAMEBUFFER, dice.object(mFramebuffers));
    }
}

void RandomState::bindProgram(Dice& dice, Expectation& expectation) {
    if (mGl.features.programPipelines) {
        CALL(UseProgram)(0);
        CALL(BindProgramPipeline)(dice.oneIn(2) ? mPipeline : 0);
    }
    const int kind = dice.below(20);
    const GLuint program = kind < 5 ? 0 : kind >= 18 ? link() : dice.pick({mProgram, mChoosing, mCapturing});
    CALL(UseProgram)(program);
    if (kind == 18) {  // its executable stays in use, but the program cannot be made current again
        GLuint shader = 0;
        const char* const nothing = "";
        CALL(GetAttachedShaders)(program, 1, nullptr, &shader);
        CALL(ShaderSource)(shader, 1, &nothing, nullptr);
        CALL(CompileShader)(shader);
        CALL(LinkProgram)(program);
    } else if (kind == 19) {
        CALL(DeleteProgram)(program);
    } else if (program != 0 && program == mCapturing) {
        CALL(BindBufferBase)(GL_TRANSFORM_FEEDBACK_BUFFER, 0, mBuffers[0]);
        CALL(BeginTransformFeedback)(GL_POINTS);
        mIsCapturing = true;
        if (dice.oneIn(3)) {
            CALL(PauseTransformFeedback)();
        }
    }
    expectation.draws = kind < 18;
    const GLuint choice[3] = {dice.bits() % 2, dice.bits() % 2, dice.bits() % 2};
    CALL(UniformSubroutinesuiv)(GL_FRAGMENT_SHADER, 3, choice);
}

void RandomState::deleteElsewhere(Dice& dice, Expectation& expectation) const {
    const int kind = dice.below(5);
    GLuint name = 0;
    if (kind == 0) {
        CALL(GenTextures)(1, &name);
        CALL(ActiveTexture)(GL_TEXTURE0);
        CALL(BindTexture)(GL_TEXTURE_2D, name);
        CALL(ActiveTexture)(GL_TEXTURE0 + dice.bits() % 3);
    } else if (kind == 1 && !mSamplers.empty()) {
        CALL(GenSamplers)(1, &name);
        CALL(BindSampler)(0, name);
    } else if (kind == 2 || kind == 3) {
        CALL(GenBuffers)(1, &name);
        CALL(BindBuffer)(kind == 2 ? GL_ARRAY_BUFFER : GL_PIXEL_UNPACK_BUFFER, name);
    } else if (kind == 4 && dice.oneIn(2)) {
        CALL(GenFramebuffers)(1, &name);
        CALL(BindFramebuffer)(GL_FRAMEBUFFER, name);
    }
    CALL(Finish)();
    mOther.makeCurrent();
    if (name != 0) {
        kind == 0   ? CALL(DeleteTextures)(1, &name)
        : kind == 1 ? CALL(DeleteSamplers)(1, &name)
        : kind == 4 ? CALL(DeleteFramebuffers)(1, &name)
                    : CALL(DeleteBuffers)(1, &name);
    }
    CALL(Finish)();
    mContext.makeCurrent();
    clearErrors();
    GLint unpack = 0;
    if (mGl.features.pixelBuffers) {
        mGl.getIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &unpack);
        expectation.uploads = unpack == 0 || mGl.isBuffer(static_cast<GLuint>(unpack));
    }
    if (kind == 4 && name != 0) {
        // Whether framebuffers are shared is up to the driver.
        expectation.rebinds = mGl.isFramebuffer(name);
        expectation.draws = expectation.draws && expectation.rebinds;
    } else if (kind < 3 && name != 0) {
        expectation.draws = false;
    }
}

void RandomState::record(Dice& dice, Expectation& expectation) {
    const opengl::Features& features = mGl.features;
    const int kind = dice.below(20);
    if (kind == 0 && features.compatibility) {
        CALL(NewList)(1, GL_COMPILE);
        mIsCompiling = true;
        expectation.draws = false;
    } else if (kind == 1 && features.compatibility) {
        static GLfloat feedback[256];
        CALL(FeedbackBuffer)(256, GL_2D, feedback);
        CALL(RenderMode)(GL_FEEDBACK);
        expectation.draws = false;
    } else if (kind == 2 && features.samplesQueries && features.primitiveRestart) {
        CALL(BeginConditionalRender)(mEmptyQuery, GL_QUERY_WAIT);
        mIsConditional = true;
        expectation.isVisible = false;
    } else if (kind < 6 && features.queries) {
        mRunning = dice.pick(QUERIES);
        CALL(GenQueries)(1, &mRunningQuery);
        clearErrors();
        CALL(BeginQuery)(mRunning, mRunningQuery);
        const bool isCounted = CALL(GetError)() == GL_NO_ERROR && mRunning != GL_TIME_ELAPSED;
        expectation.draws = expectation.draws && !isCounted;
    }
}

void RandomState::end() {
    if (mIsCompiling) {
        CALL(EndList)();
    }
    CALL(RenderMode)(GL_RENDER);
    if (mIsConditional) {
        CALL(EndConditionalRender)();
    }
    if (mRunning != 0) {
        CALL(EndQuery)(mRunning);
        CALL(DeleteQueries)(1, &mRunningQuery);
    }
    if (mIsCapturing) {
        CALL(EndTransformFeedback)();
    }
    mRunning = 0;
    mIsCompiling = mIsConditional = mIsCapturing = false;
    clearErrors();
}
