#include "opengl/state/RandomState.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "opengl/state/Call.h"

namespace {

using Random = std::mt19937;
using Names = std::initializer_list<GLenum>;

int below(Random& random, int end) {
    return static_cast<int>(random() % static_cast<unsigned>(end));
}
GLuint bits(Random& random) {
    return static_cast<GLuint>(random());
}
bool oneIn(Random& random, int n) {
    return below(random, n) == 0;
}
GLfloat fraction(Random& random) {
    return static_cast<GLfloat>(below(random, 9)) / 8;
}

template <typename Value>
Value pick(Random& random, std::initializer_list<Value> values) {
    return values.begin()[below(random, static_cast<int>(values.size()))];
}

unsigned pick(Random& random, const std::vector<unsigned>& names) {
    return oneIn(random, 3) ? 0
                            : names[static_cast<std::size_t>(below(random, static_cast<int>(names.size())))];
}

void clearErrors() {
    while (CALL(GetError)() != GL_NO_ERROR) {
    }
}

// Each is tried on every context: where it is unknown, it is an error without an effect.
// clang-format off
const GLenum SWITCHES[] = {
    GL_BLEND, GL_CULL_FACE, GL_DEPTH_TEST, GL_DITHER, GL_SCISSOR_TEST, GL_STENCIL_TEST,
    GL_POLYGON_OFFSET_FILL, GL_POLYGON_OFFSET_LINE, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_COVERAGE,
    GL_SAMPLE_ALPHA_TO_ONE, GL_SAMPLE_MASK, GL_SAMPLE_SHADING, GL_MULTISAMPLE, GL_COLOR_LOGIC_OP,
    GL_DEPTH_CLAMP, GL_FRAMEBUFFER_SRGB, GL_LINE_SMOOTH, GL_POLYGON_SMOOTH, GL_PRIMITIVE_RESTART,
    GL_PRIMITIVE_RESTART_FIXED_INDEX, GL_PROGRAM_POINT_SIZE, GL_RASTERIZER_DISCARD,
    GL_TEXTURE_CUBE_MAP_SEAMLESS, GL_CLIP_DISTANCE0, GL_CLIP_DISTANCE1, GL_CLIP_DISTANCE7, GL_DEBUG_OUTPUT,
    GL_BLEND_ADVANCED_COHERENT_KHR, GL_CONSERVATIVE_RASTERIZATION_INTEL, GL_DEPTH_BOUNDS_TEST_EXT,
    GL_ALPHA_TEST, GL_POLYGON_STIPPLE, GL_LINE_STIPPLE, GL_LIGHTING, GL_FOG, GL_COLOR_MATERIAL,
    GL_NORMALIZE, GL_COLOR_SUM_EXT, GL_VERTEX_PROGRAM_TWO_SIDE_ARB, GL_POINT_SPRITE_ARB, GL_TEXTURE_2D};
// clang-format on

// clang-format off
const GLenum FACTORS[] = {
    GL_ZERO, GL_ONE, GL_SRC_COLOR, GL_DST_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_CONSTANT_COLOR,
    GL_SRC_ALPHA_SATURATE, GL_SRC_ALPHA};
// clang-format on
const GLenum EQUATIONS[] = {GL_FUNC_ADD, GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT, GL_MIN, GL_MAX};
const GLenum COMPARISONS[] = {GL_NEVER, GL_LESS, GL_EQUAL, GL_LEQUAL, GL_GREATER, GL_NOTEQUAL, GL_ALWAYS};
const GLenum OPERATIONS[] = {GL_KEEP, GL_ZERO, GL_REPLACE, GL_INCR, GL_INVERT};

template <std::size_t Count>
GLenum pick(Random& random, const GLenum (&values)[Count]) {
    return values[below(random, static_cast<int>(Count))];
}

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

}  // namespace

unsigned RandomState::link(const char* vertex, const char* fragment, bool captures) const {
    const GLuint program = CALL(CreateProgram)();
    const auto attach = [program](GLenum type, const char* source) {
        const GLuint shader = CALL(CreateShader)(type);
        CALL(ShaderSource)(shader, 1, &source, nullptr);
        CALL(CompileShader)(shader);
        CALL(AttachShader)(program, shader);
        CALL(DeleteShader)(shader);
    };
    attach(GL_VERTEX_SHADER, vertex);
    attach(GL_FRAGMENT_SHADER, fragment);
    if (captures) {
        const char* const captured = "v";
        CALL(TransformFeedbackVaryings)(program, 1, &captured, GL_INTERLEAVED_ATTRIBS);
    }
    CALL(LinkProgram)(program);
    return program;
}

RandomState::RandomState(const HeadlessContext& context, const HeadlessContext& other,
                         const opengl::Functions& gl)
    : mContext(context), mOther(other), mGl(gl) {
    const opengl::Features& features = gl.features;
    const auto make = [](std::vector<unsigned>& names, const auto& generate) {
        names.resize(3);
        generate(3, names.data());
    };
    make(mTextures, CALL(GenTextures));
    for (const GLuint texture : mTextures) {
        CALL(BindTexture)(GL_TEXTURE_2D, texture);
        CALL(TexImage2D)(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    }
    make(mBuffers, CALL(GenBuffers));
    for (const GLuint buffer : mBuffers) {
        CALL(BindBuffer)(GL_ARRAY_BUFFER, buffer);
        CALL(BufferData)(GL_ARRAY_BUFFER, 4096, nullptr, GL_STATIC_DRAW);
    }
    make(mFramebuffers, CALL(GenFramebuffers));
    for (std::size_t i = 0; i < mFramebuffers.size(); ++i) {
        CALL(BindFramebuffer)(GL_FRAMEBUFFER, mFramebuffers[i]);
        CALL(FramebufferTexture2D)(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mTextures[i], 0);
    }
    if (features.vertexArrays) {
        make(mVertexArrays, CALL(GenVertexArrays));
    }
    if (features.samplers) {
        make(mSamplers, CALL(GenSamplers));
        for (const GLuint sampler : mSamplers) {
            CALL(SamplerParameteri)(sampler, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        }
    }
    const bool isCore = gl.version.isCore;
    const char* const vertex = isCore ? CORE_VERTEX : OLD_VERTEX;
    const char* const fragment = isCore ? CORE_FRAGMENT : OLD_FRAGMENT;
    mProgram = link(vertex, fragment);
    if (features.transformFeedback) {
        mCapturing = link(vertex, fragment, true);
    }
    if (features.subroutines) {
        mChoosing = link(CORE_VERTEX, CHOOSING_FRAGMENT);
    }
    if (features.programPipelines) {
        CALL(GenProgramPipelines)(1, &mPipeline);
        const char* const source = mChoosing != 0 ? CHOOSING_FRAGMENT : fragment;
        const GLuint separate = CALL(CreateShaderProgramv)(GL_FRAGMENT_SHADER, 1, &source);
        CALL(UseProgramStages)(mPipeline, GL_FRAGMENT_SHADER_BIT, separate);
    }
    if (features.queries) {
        make(mQueries, CALL(GenQueries));
        if (features.samplesQueries) {  // no sample passes: what hangs on this one is not drawn
            CALL(BeginQuery)(GL_SAMPLES_PASSED, mQueries[0]);
            CALL(EndQuery)(GL_SAMPLES_PASSED);
        }
    }
    if (features.compatibility) {
        const GLubyte nothing[128] = {};
        CALL(PolygonStipple)(nothing);
    }
    clearErrors();
}

RandomState::Expectation RandomState::set(unsigned seed) {
    Random random(seed);
    Expectation expectation;
    wipe();
    setSwitches(random);
    setValues(random);
    setPixels(random);
    bindObjects(random);
    if (mGl.features.compatibility) {
        setFixedFunction(random);
    }
    bindProgram(random, expectation);
    if (oneIn(random, 10)) {
        deleteElsewhere(random, expectation);
    }
    record(random, expectation);
    clearErrors();
    if (oneIn(random, 3)) {
        expectation.pendingError = pick<GLenum>(random, {GL_INVALID_ENUM, GL_INVALID_VALUE});
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

void RandomState::setSwitches(Random& random) const {
    for (const GLenum name : SWITCHES) {
        oneIn(random, 2) ? CALL(Enable)(name) : CALL(Disable)(name);
    }
    // Where there is one viewport only, Mesa counts several all the same.
    const bool hasViewports = mGl.features.viewportArrays;
    for (GLuint i = 0; i < 3 && oneIn(random, 2); ++i) {
        const GLenum name = hasViewports && oneIn(random, 2) ? GL_SCISSOR_TEST : GL_BLEND;
        oneIn(random, 2) ? CALL(Enablei)(name, i) : CALL(Disablei)(name, i);
    }
}

void RandomState::setValues(Random& random) const {
    const auto flag = [&random] { return static_cast<GLboolean>(below(random, 2)); };
    const auto size = [&random] { return below(random, 20); };
    const auto factor = [&random] { return pick(random, FACTORS); };
    oneIn(random, 3) ? CALL(Viewport)(0, 0, mContext.width(), mContext.height())
                     : CALL(Viewport)(size() - 5, size() - 5, size(), size());
    CALL(Scissor)(size(), size(), size(), size());
    CALL(BlendFuncSeparate)(factor(), factor(), factor(), factor());
    if (oneIn(random, 3)) {
        CALL(BlendFuncSeparate)(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    }
    CALL(BlendEquationSeparate)(pick(random, EQUATIONS), pick(random, EQUATIONS));
    CALL(ColorMask)(flag(), flag(), flag(), flag());
    if (oneIn(random, 4)) {
        CALL(BlendEquation)(pick<GLenum>(random, {GL_MULTIPLY_KHR, GL_SCREEN_KHR, GL_FUNC_ADD}));
    }
    for (GLuint i = static_cast<GLuint>(below(random, 4)); i < 3; ++i) {
        CALL(ViewportIndexedf)(i, fraction(random) * 20, fraction(random) * 20, fraction(random) * 20, 8);
        CALL(ScissorIndexed)(i, size(), size(), size(), size());
        CALL(BlendFuncSeparatei)(i, factor(), factor(), factor(), factor());
        CALL(BlendEquationSeparatei)(i, pick(random, EQUATIONS), pick(random, EQUATIONS));
        CALL(ColorMaski)(i, flag(), flag(), flag(), flag());
    }
    CALL(BlendColor)(fraction(random), fraction(random), fraction(random), fraction(random));
    CALL(DepthFunc)(pick(random, COMPARISONS));
    CALL(DepthMask)(flag());
    CALL(DepthRangef)(fraction(random), fraction(random));
    for (const GLenum face : Names{GL_FRONT, GL_BACK}) {
        CALL(StencilFuncSeparate)(face, pick(random, COMPARISONS), below(random, 8), bits(random) % 256);
        CALL(StencilOpSeparate)
        (face, pick(random, OPERATIONS), pick(random, OPERATIONS), pick(random, OPERATIONS));
        CALL(StencilMaskSeparate)(face, bits(random) % 256);
        CALL(PolygonMode)(face, pick<GLenum>(random, {GL_FILL, GL_LINE, GL_POINT}));
    }
    if (oneIn(random, 2)) {
        CALL(PolygonMode)(GL_FRONT_AND_BACK, pick<GLenum>(random, {GL_FILL, GL_LINE}));
    }
    CALL(CullFace)(pick<GLenum>(random, {GL_FRONT, GL_BACK, GL_FRONT_AND_BACK}));
    CALL(FrontFace)(pick<GLenum>(random, {GL_CW, GL_CCW}));
    CALL(PolygonOffset)(fraction(random), fraction(random));
    CALL(LogicOp)(pick<GLenum>(random, {GL_COPY, GL_XOR, GL_CLEAR, GL_INVERT}));
    CALL(SampleCoverage)(fraction(random), flag());
    CALL(SampleMaski)(0, bits(random));
    CALL(MinSampleShading)(fraction(random));
    CALL(PrimitiveRestartIndex)(static_cast<GLuint>(below(random, 8)));
    CALL(ClipControl)
    (pick<GLenum>(random, {GL_LOWER_LEFT, GL_UPPER_LEFT}),
     pick<GLenum>(random, {GL_NEGATIVE_ONE_TO_ONE, GL_ZERO_TO_ONE}));
    CALL(ClearColor)(fraction(random), fraction(random), fraction(random), 1);
    CALL(LineWidth)(1 + fraction(random));
    CALL(ProvokingVertex)(pick<GLenum>(random, {GL_FIRST_VERTEX_CONVENTION, GL_LAST_VERTEX_CONVENTION}));
}

void RandomState::setPixels(Random& random) const {
    for (const GLenum name : Names{GL_UNPACK_ALIGNMENT, GL_PACK_ALIGNMENT}) {
        CALL(PixelStorei)(name, pick(random, {1, 2, 4, 8}));
    }
    for (const GLenum name :
         Names{GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS, GL_PACK_ROW_LENGTH,
               GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS, GL_UNPACK_IMAGE_HEIGHT, GL_PACK_SKIP_IMAGES}) {
        CALL(PixelStorei)(name, oneIn(random, 2) ? 0 : below(random, 40));
    }
    for (const GLenum name : Names{GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST, GL_PACK_SWAP_BYTES,
                                   GL_PACK_LSB_FIRST, GL_PACK_INVERT_MESA}) {
        CALL(PixelStorei)(name, below(random, 2));
    }
}

void RandomState::bindObjects(Random& random) {
    if (!mVertexArrays.empty()) {
        CALL(BindVertexArray)(pick(random, mVertexArrays));
    }
    for (GLuint i = 0; i < 5; ++i) {
        const GLuint buffer = pick(random, mBuffers);
        CALL(BindBuffer)(GL_ARRAY_BUFFER, buffer);
        const void* const pointer =
            buffer != 0 ? reinterpret_cast<const void*>(std::uintptr_t{16}) : CLIENT_VERTICES;
        CALL(VertexAttribPointer)
        (i, 1 + below(random, 4), pick<GLenum>(random, {GL_FLOAT, GL_UNSIGNED_BYTE}),
         static_cast<GLboolean>(below(random, 2)), pick(random, {0, 16, 20}), pointer);
        if (oneIn(random, 4)) {
            CALL(VertexAttribIPointer)(i, 1 + below(random, 4), GL_UNSIGNED_SHORT, 8, pointer);
        }
        CALL(VertexAttribDivisor)(i, static_cast<GLuint>(below(random, 3)));
        oneIn(random, 2) ? CALL(EnableVertexAttribArray)(i) : CALL(DisableVertexAttribArray)(i);
        CALL(VertexAttrib4f)(i, fraction(random), fraction(random), fraction(random), fraction(random));
    }
    for (const GLenum target :
         Names{GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_PACK_BUFFER,
               GL_UNIFORM_BUFFER, GL_COPY_READ_BUFFER, GL_QUERY_BUFFER, GL_DRAW_INDIRECT_BUFFER}) {
        CALL(BindBuffer)(target, pick(random, mBuffers));
    }
    for (GLuint unit = 0; unit < 3; ++unit) {
        CALL(ActiveTexture)(GL_TEXTURE0 + unit);
        CALL(BindTexture)(GL_TEXTURE_2D, pick(random, mTextures));
        if (!mSamplers.empty()) {
            CALL(BindSampler)(unit, pick(random, mSamplers));
        }
    }
    CALL(ActiveTexture)(GL_TEXTURE0 + static_cast<GLenum>(below(random, 3)));
    // The default framebuffer's own state first; it is bound elsewhere when that is saved.
    CALL(BindFramebuffer)(GL_FRAMEBUFFER, 0);
    const GLenum buffers[] = {pick<GLenum>(random, {GL_BACK, GL_NONE, GL_BACK_LEFT}), GL_NONE, GL_FRONT_LEFT};
    CALL(DrawBuffers)(1, buffers);
    if (oneIn(random, 2)) {
        CALL(DrawBuffer)(pick<GLenum>(random, {GL_BACK, GL_FRONT, GL_FRONT_AND_BACK, GL_NONE}));
    }
    if (oneIn(random, 3)) {
        CALL(DrawBuffers)(3, buffers);
    }
    CALL(ReadBuffer)(pick<GLenum>(random, {GL_BACK, GL_NONE, GL_FRONT}));
    CALL(BindFramebuffer)(GL_FRAMEBUFFER, pick(random, mFramebuffers));
    if (mGl.features.readFramebuffers) {
        CALL(BindFramebuffer)(GL_READ_FRAMEBUFFER, pick(random, mFramebuffers));
    }
}

void RandomState::setFixedFunction(Random& random) const {
    GLfloat matrix[16];
    for (const GLenum mode : Names{GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE}) {
        for (GLfloat& element : matrix) {
            element = fraction(random);
        }
        CALL(MatrixMode)(mode);
        CALL(LoadMatrixf)(matrix);
    }
    CALL(MatrixMode)(pick<GLenum>(random, {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE}));
    const GLint environment = pick<GLint>(random, {GL_MODULATE, GL_DECAL, GL_COMBINE});
    CALL(TexEnvi)(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, environment);
    CALL(AlphaFunc)(pick(random, COMPARISONS), fraction(random));
    CALL(ShadeModel)(pick<GLenum>(random, {GL_FLAT, GL_SMOOTH}));
    CALL(Color4f)(fraction(random), fraction(random), fraction(random), fraction(random));
    CALL(ClampColor)(GL_CLAMP_FRAGMENT_COLOR_ARB, pick<GLenum>(random, {GL_TRUE, GL_FALSE, GL_FIXED_ONLY}));
    CALL(VertexPointer)(2, GL_FLOAT, 8, nullptr);
    for (const GLenum name : Names{GL_VERTEX_ARRAY, GL_COLOR_ARRAY, GL_PRIMITIVE_RESTART_NV}) {
        oneIn(random, 2) ? CALL(EnableClientState)(name) : CALL(DisableClientState)(name);
    }
    const bool isScaled = oneIn(random, 2);
    for (const GLenum name :
         Names{GL_RED_SCALE, GL_GREEN_SCALE, GL_ALPHA_SCALE, GL_RED_BIAS, GL_ALPHA_BIAS}) {
        const bool isScale = name == GL_RED_SCALE || name == GL_GREEN_SCALE || name == GL_ALPHA_SCALE;
        CALL(PixelTransferf)(name, isScaled ? fraction(random) : isScale ? 1 : 0);
    }
    CALL(PixelTransferi)(GL_MAP_COLOR, isScaled && oneIn(random, 2));
}

void RandomState::bindProgram(Random& random, Expectation& expectation) {
    const opengl::Features& features = mGl.features;
    if (features.programPipelines) {
        CALL(UseProgram)(0);
        CALL(BindProgramPipeline)(oneIn(random, 2) ? mPipeline : 0);
    }
    const int kind = below(random, 20);
    if (kind < 5) {
        CALL(UseProgram)(0);
    } else if (kind < 10 || (kind < 14 && mChoosing == 0)) {
        CALL(UseProgram)(mProgram);
    } else if (kind < 14) {
        CALL(UseProgram)(mChoosing);
    } else if (kind < 18 && mCapturing != 0) {
        CALL(UseProgram)(mCapturing);
        CALL(BindBufferBase)(GL_TRANSFORM_FEEDBACK_BUFFER, 0, mBuffers[0]);
        CALL(BeginTransformFeedback)(GL_POINTS);
        mIsCapturing = true;
        if (oneIn(random, 3)) {
            CALL(PauseTransformFeedback)();
        }
    } else if (kind >= 18) {
        const bool isCore = mGl.version.isCore;
        const GLuint program = link(isCore ? CORE_VERTEX : OLD_VERTEX, isCore ? CORE_FRAGMENT : OLD_FRAGMENT);
        CALL(UseProgram)(program);
        if (kind == 18) {  // its executable stays in use, but the program cannot be made current again
            GLuint shader = 0;
            const char* const nothing = "";
            CALL(GetAttachedShaders)(program, 1, nullptr, &shader);
            CALL(ShaderSource)(shader, 1, &nothing, nullptr);
            CALL(CompileShader)(shader);
            CALL(LinkProgram)(program);
        } else {
            CALL(DeleteProgram)(program);
        }
        expectation.draws = false;
    }
    if (features.subroutines) {
        const GLuint choice[3] = {bits(random) % 2, bits(random) % 2, bits(random) % 2};
        CALL(UniformSubroutinesuiv)(GL_FRAGMENT_SHADER, 3, choice);
    }
}

void RandomState::deleteElsewhere(Random& random, Expectation& expectation) {
    const int kind = below(random, 5);
    GLuint name = 0;
    if (kind == 0) {
        CALL(ActiveTexture)(GL_TEXTURE0);
        CALL(GenTextures)(1, &name);
        CALL(BindTexture)(GL_TEXTURE_2D, name);
        CALL(ActiveTexture)(GL_TEXTURE0 + static_cast<GLenum>(below(random, 3)));
    } else if (kind == 1 && !mSamplers.empty()) {
        CALL(GenSamplers)(1, &name);
        CALL(BindSampler)(0, name);
    } else if (kind == 2 || kind == 3) {
        CALL(GenBuffers)(1, &name);
        CALL(BindBuffer)(kind == 2 ? GL_ARRAY_BUFFER : GL_PIXEL_UNPACK_BUFFER, name);
    } else if (kind == 4 && oneIn(random, 2)) {
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

void RandomState::record(Random& random, Expectation& expectation) {
    const opengl::Features& features = mGl.features;
    const int kind = below(random, 20);
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
        CALL(BeginConditionalRender)(mQueries[0], GL_QUERY_WAIT);
        mIsConditional = true;
        expectation.isVisible = false;
    } else if (kind < 6 && features.queries) {
        const GLenum target = pick<GLenum>(
            random, {GL_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED, GL_ANY_SAMPLES_PASSED_CONSERVATIVE,
                     GL_PRIMITIVES_GENERATED, GL_TIME_ELAPSED, GL_VERTICES_SUBMITTED,
                     GL_FRAGMENT_SHADER_INVOCATIONS, GL_CLIPPING_OUTPUT_PRIMITIVES});
        GLuint query = 0;
        CALL(GenQueries)(1, &query);
        clearErrors();
        CALL(BeginQuery)(target, query);
        if (CALL(GetError)() == GL_NO_ERROR) {
            mRunning = target;
            mQueries.push_back(query);
            expectation.draws = expectation.draws && target == GL_TIME_ELAPSED;
        }
    }
}

void RandomState::end() {
    if (mIsCompiling) {
        CALL(EndList)();
    }
    if (mGl.features.compatibility) {
        CALL(RenderMode)(GL_RENDER);
    }
    if (mIsConditional) {
        CALL(EndConditionalRender)();
    }
    if (mRunning != 0) {
        CALL(EndQuery)(mRunning);
        CALL(DeleteQueries)(1, &mQueries.back());
        mQueries.pop_back();
    }
    if (mIsCapturing) {
        CALL(EndTransformFeedback)();
    }
    mRunning = 0;
    mIsCompiling = mIsConditional = mIsCapturing = false;
    clearErrors();
}
