#include "opengl/state/StateDump.h"

#include <cmath>
#include <limits>

#include "opengl/state/Call.h"

namespace {

constexpr int UNITS = 3;
constexpr int ATTRIBUTES = 5;
constexpr int INDICES = 3;
constexpr int MAX_NUMBERS = 16;

#define Q(name) \
    { #name, GL_##name, 0 }

/// Calls a function of glGet's kind; tells how many numbers it gave.
template <typename Number, typename Get>
int ask(const Get& get, double* values) {
    // No call gives this number.
    const Number unset = static_cast<Number>(-987654321);
    Number numbers[64];
    std::fill(std::begin(numbers), std::end(numbers), unset);
    get(numbers);
    int count = 0;
    while (count < MAX_NUMBERS && numbers[count] != unset) {
        values[count] = static_cast<double>(numbers[count]);
        ++count;
    }
    return count;
}

int askInteger(unsigned name, double* values) {
    return ask<GLint>([name](GLint* to) { CALL(GetIntegerv)(name, to); }, values);
}

int askFloat(unsigned name, double* values) {
    return ask<GLfloat>([name](GLfloat* to) { CALL(GetFloatv)(name, to); }, values);
}

int askSwitch(unsigned name, double* values) {
    values[0] = CALL(IsEnabled)(name);
    return 1;
}

int askIndexed(unsigned name, double* values, GLuint index) {
    if (name == GL_VIEWPORT || name == GL_DEPTH_RANGE) {
        return ask<GLfloat>([=](GLfloat* to) { CALL(GetFloati_v)(name, index, to); }, values);
    }
    return ask<GLint>([=](GLint* to) { CALL(GetIntegeri_v)(name, index, to); }, values);
}

int askIndexedSwitch(unsigned name, double* values, GLuint index) {
    values[0] = CALL(IsEnabledi)(name, index);
    return 1;
}

int askAttribute(unsigned name, double* values, GLuint attribute) {
    return ask<GLfloat>([=](GLfloat* to) { CALL(GetVertexAttribfv)(attribute, name, to); }, values);
}

int askPointer(unsigned name, double* values) {
    void* pointer = nullptr;
    CALL(GetPointerv)(name, &pointer);
    values[0] = static_cast<double>(reinterpret_cast<std::uintptr_t>(pointer));
    return 1;
}

int askRunning(unsigned target, double* values) {
    return ask<GLint>([=](GLint* to) { CALL(GetQueryiv)(target, GL_CURRENT_QUERY, to); }, values);
}

int askEnvironment(unsigned name, double* values) {
    return ask<GLfloat>([=](GLfloat* to) { CALL(GetTexEnvfv)(GL_TEXTURE_ENV, name, to); }, values);
}

}  // namespace

std::vector<StateDump::Query> StateDump::probe(int (*ask)(unsigned, double*), const std::vector<Query>& all) {
    std::vector<Query> known;
    double values[MAX_NUMBERS];
    for (Query query : all) {
        query.count = ask(query.value, values);
        if (CALL(GetError)() == GL_NO_ERROR && query.count > 0) {
            known.push_back(query);
        }
    }
    return known;
}

StateDump::StateDump() {
    while (CALL(GetError)() != GL_NO_ERROR) {
    }
    // clang-format off
    const std::vector<Query> values = {
        // Programs, arrays, buffers.
        Q(CURRENT_PROGRAM), Q(PROGRAM_PIPELINE_BINDING), Q(VERTEX_ARRAY_BINDING), Q(ARRAY_BUFFER_BINDING),
        Q(ELEMENT_ARRAY_BUFFER_BINDING), Q(PIXEL_PACK_BUFFER_BINDING), Q(PIXEL_UNPACK_BUFFER_BINDING),
        Q(UNIFORM_BUFFER_BINDING), Q(COPY_READ_BUFFER_BINDING), Q(COPY_WRITE_BUFFER_BINDING),
        Q(TRANSFORM_FEEDBACK_BUFFER_BINDING), Q(DRAW_INDIRECT_BUFFER_BINDING), Q(QUERY_BUFFER_BINDING),
        Q(TRANSFORM_FEEDBACK_BINDING), Q(TRANSFORM_FEEDBACK_ACTIVE), Q(TRANSFORM_FEEDBACK_PAUSED),
        Q(ACTIVE_TEXTURE), Q(CLIENT_ACTIVE_TEXTURE), Q(PATCH_VERTICES), Q(PRIMITIVE_RESTART_INDEX),
        Q(PROVOKING_VERTEX),
        // Framebuffers.
        Q(DRAW_FRAMEBUFFER_BINDING), Q(READ_FRAMEBUFFER_BINDING), Q(RENDERBUFFER_BINDING),
        Q(COLOR_CLEAR_VALUE), Q(DEPTH_CLEAR_VALUE), Q(STENCIL_CLEAR_VALUE), Q(CLAMP_READ_COLOR),
        Q(CLAMP_FRAGMENT_COLOR_ARB), Q(CLAMP_VERTEX_COLOR_ARB),
        // Rasterization and tests.
        Q(VIEWPORT), Q(SCISSOR_BOX), Q(DEPTH_RANGE), Q(DEPTH_FUNC), Q(DEPTH_WRITEMASK), Q(STENCIL_FUNC),
        Q(STENCIL_REF), Q(STENCIL_VALUE_MASK), Q(STENCIL_WRITEMASK), Q(STENCIL_FAIL),
        Q(STENCIL_PASS_DEPTH_FAIL), Q(STENCIL_PASS_DEPTH_PASS), Q(STENCIL_BACK_FUNC), Q(STENCIL_BACK_REF),
        Q(STENCIL_BACK_VALUE_MASK), Q(STENCIL_BACK_WRITEMASK), Q(STENCIL_BACK_FAIL), Q(CULL_FACE_MODE),
        Q(FRONT_FACE), Q(POLYGON_MODE), Q(POLYGON_OFFSET_FACTOR), Q(POLYGON_OFFSET_UNITS), Q(LINE_WIDTH),
        Q(POINT_SIZE), Q(LOGIC_OP_MODE), Q(SAMPLE_COVERAGE_VALUE), Q(SAMPLE_COVERAGE_INVERT),
        Q(MIN_SAMPLE_SHADING_VALUE), Q(CLIP_ORIGIN), Q(CLIP_DEPTH_MODE),
        // Blending.
        Q(BLEND_SRC_RGB), Q(BLEND_DST_RGB), Q(BLEND_SRC_ALPHA), Q(BLEND_DST_ALPHA), Q(BLEND_EQUATION_RGB),
        Q(BLEND_EQUATION_ALPHA), Q(BLEND_COLOR), Q(COLOR_WRITEMASK),
        // Pixels.
        Q(UNPACK_ALIGNMENT), Q(UNPACK_ROW_LENGTH), Q(UNPACK_SKIP_ROWS), Q(UNPACK_SKIP_PIXELS),
        Q(UNPACK_IMAGE_HEIGHT), Q(UNPACK_SKIP_IMAGES), Q(UNPACK_SWAP_BYTES), Q(UNPACK_LSB_FIRST),
        Q(PACK_ALIGNMENT), Q(PACK_ROW_LENGTH), Q(PACK_SKIP_ROWS), Q(PACK_SKIP_PIXELS), Q(PACK_IMAGE_HEIGHT),
        Q(PACK_SKIP_IMAGES), Q(PACK_SWAP_BYTES), Q(PACK_LSB_FIRST), Q(PACK_INVERT_MESA), Q(MAP_COLOR),
        Q(RED_SCALE), Q(RED_BIAS), Q(GREEN_SCALE), Q(GREEN_BIAS), Q(BLUE_SCALE), Q(BLUE_BIAS),
        Q(ALPHA_SCALE), Q(ALPHA_BIAS), Q(DEPTH_SCALE), Q(INDEX_SHIFT),
        // The compatibility profile.
        Q(MATRIX_MODE), Q(MODELVIEW_MATRIX), Q(PROJECTION_MATRIX), Q(MODELVIEW_STACK_DEPTH),
        Q(PROJECTION_STACK_DEPTH), Q(ATTRIB_STACK_DEPTH), Q(CLIENT_ATTRIB_STACK_DEPTH), Q(CURRENT_COLOR),
        Q(CURRENT_NORMAL), Q(CURRENT_SECONDARY_COLOR_EXT), Q(CURRENT_FOG_COORDINATE_EXT),
        Q(CURRENT_RASTER_POSITION), Q(ALPHA_TEST_FUNC), Q(ALPHA_TEST_REF), Q(SHADE_MODEL), Q(FOG_COLOR),
        Q(FOG_MODE), Q(LIST_INDEX), Q(LIST_MODE), Q(LIST_BASE), Q(RENDER_MODE), Q(VERTEX_ARRAY_SIZE),
        Q(VERTEX_ARRAY_TYPE), Q(VERTEX_ARRAY_STRIDE), Q(VERTEX_ARRAY_BUFFER_BINDING_ARB),
        Q(COLOR_ARRAY_SIZE), Q(COLOR_ARRAY_BUFFER_BINDING_ARB), Q(NORMAL_ARRAY_STRIDE),
        Q(TEXTURE_COORD_ARRAY_SIZE),
    };
    mHasReadFramebuffer = !probe(&askInteger, {Q(READ_FRAMEBUFFER_BINDING)}).empty();
    mIntegers = probe(&askInteger, values);
    mFloats = probe(&askFloat, values);
    mSwitches = probe(&askSwitch, {
        Q(BLEND), Q(CULL_FACE), Q(DEPTH_TEST), Q(DITHER), Q(SCISSOR_TEST), Q(STENCIL_TEST),
        Q(POLYGON_OFFSET_FILL), Q(POLYGON_OFFSET_LINE), Q(POLYGON_OFFSET_POINT),
        Q(SAMPLE_ALPHA_TO_COVERAGE), Q(SAMPLE_COVERAGE), Q(SAMPLE_ALPHA_TO_ONE), Q(SAMPLE_MASK),
        Q(SAMPLE_SHADING), Q(MULTISAMPLE), Q(COLOR_LOGIC_OP), Q(DEPTH_CLAMP), Q(FRAMEBUFFER_SRGB),
        Q(LINE_SMOOTH), Q(POLYGON_SMOOTH), Q(PRIMITIVE_RESTART), Q(PRIMITIVE_RESTART_FIXED_INDEX),
        Q(PRIMITIVE_RESTART_NV), Q(PROGRAM_POINT_SIZE), Q(RASTERIZER_DISCARD), Q(TEXTURE_CUBE_MAP_SEAMLESS),
        Q(CLIP_DISTANCE0), Q(CLIP_DISTANCE1), Q(CLIP_DISTANCE7), Q(DEBUG_OUTPUT),
        Q(DEBUG_OUTPUT_SYNCHRONOUS), Q(BLEND_ADVANCED_COHERENT_KHR), Q(CONSERVATIVE_RASTERIZATION_INTEL),
        Q(DEPTH_BOUNDS_TEST_EXT), Q(ALPHA_TEST), Q(POLYGON_STIPPLE), Q(LINE_STIPPLE), Q(POINT_SMOOTH),
        Q(LIGHTING), Q(FOG), Q(COLOR_MATERIAL), Q(NORMALIZE), Q(COLOR_SUM_EXT), Q(VERTEX_PROGRAM_ARB),
        Q(FRAGMENT_PROGRAM_ARB), Q(VERTEX_PROGRAM_TWO_SIDE_ARB), Q(POINT_SPRITE_ARB), Q(VERTEX_ARRAY),
        Q(NORMAL_ARRAY), Q(COLOR_ARRAY), Q(TEXTURE_COORD_ARRAY)});
    mIndexed = probe(
        [](unsigned name, double* to) { return askIndexed(name, to, 0); }, {
        Q(BLEND_SRC_RGB), Q(BLEND_DST_RGB), Q(BLEND_SRC_ALPHA), Q(BLEND_DST_ALPHA), Q(BLEND_EQUATION_RGB),
        Q(BLEND_EQUATION_ALPHA), Q(COLOR_WRITEMASK), Q(VIEWPORT), Q(SCISSOR_BOX), Q(DEPTH_RANGE),
        Q(UNIFORM_BUFFER_BINDING), Q(TRANSFORM_FEEDBACK_BUFFER_BINDING), Q(SAMPLE_MASK_VALUE)});
    mIndexedSwitches = probe([](unsigned name, double* to) { return askIndexedSwitch(name, to, 0); }, {
        Q(BLEND), Q(SCISSOR_TEST)});
    mUnit = probe(&askInteger, {
        Q(TEXTURE_BINDING_2D), Q(TEXTURE_BINDING_CUBE_MAP), Q(TEXTURE_BINDING_3D),
        Q(TEXTURE_BINDING_2D_ARRAY), Q(TEXTURE_BINDING_RECTANGLE), Q(TEXTURE_BINDING_1D),
        Q(SAMPLER_BINDING), Q(TEXTURE_MATRIX), Q(TEXTURE_STACK_DEPTH), Q(CURRENT_TEXTURE_COORDS),
        Q(TEXTURE_2D)});
    mEnvironment = probe(&askEnvironment, {
        Q(TEXTURE_ENV_MODE), Q(TEXTURE_ENV_COLOR), Q(COMBINE_RGB), Q(COMBINE_ALPHA), Q(SOURCE0_RGB),
        Q(RGB_SCALE)});
    mAttributes = probe(
        [](unsigned name, double* to) { return askAttribute(name, to, 1); }, {
        Q(VERTEX_ATTRIB_ARRAY_ENABLED), Q(VERTEX_ATTRIB_ARRAY_SIZE), Q(VERTEX_ATTRIB_ARRAY_TYPE),
        Q(VERTEX_ATTRIB_ARRAY_NORMALIZED), Q(VERTEX_ATTRIB_ARRAY_INTEGER), Q(VERTEX_ATTRIB_ARRAY_STRIDE),
        Q(VERTEX_ATTRIB_ARRAY_DIVISOR), Q(VERTEX_ATTRIB_ARRAY_BUFFER_BINDING), Q(CURRENT_VERTEX_ATTRIB)});
    mPointers = probe(&askPointer, {
        Q(VERTEX_ARRAY_POINTER), Q(NORMAL_ARRAY_POINTER), Q(COLOR_ARRAY_POINTER),
        Q(DEBUG_CALLBACK_FUNCTION), Q(DEBUG_CALLBACK_USER_PARAM)});
    mRunning =
        probe(&askRunning, {
        Q(SAMPLES_PASSED), Q(ANY_SAMPLES_PASSED), Q(ANY_SAMPLES_PASSED_CONSERVATIVE),
        Q(PRIMITIVES_GENERATED), Q(TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN), Q(TIME_ELAPSED),
        Q(VERTICES_SUBMITTED), Q(PRIMITIVES_SUBMITTED), Q(VERTEX_SHADER_INVOCATIONS),
        Q(FRAGMENT_SHADER_INVOCATIONS), Q(CLIPPING_INPUT_PRIMITIVES), Q(CLIPPING_OUTPUT_PRIMITIVES)});
    mTarget = probe(&askInteger, {
        Q(DRAW_BUFFER0), Q(DRAW_BUFFER1), Q(DRAW_BUFFER2), Q(DRAW_BUFFER7), Q(READ_BUFFER)});
    // clang-format on
}

std::vector<StateValue> StateDump::read(bool mayBindFramebuffers) const {
    std::vector<StateValue> dump;
    dump.reserve(1200);
    const auto add = [&dump](const std::vector<Query>& queries, int index, const auto& askOne) {
        double values[MAX_NUMBERS];
        for (const Query& query : queries) {
            const int count = askOne(query.value, values);
            for (int i = 0; i < count; ++i) {
                dump.push_back({query.name, 100 * index + i, values[i]});
            }
        }
    };
    add(mIntegers, 0, askInteger);
    add(mFloats, 1, askFloat);
    add(mSwitches, 0, askSwitch);
    add(mPointers, 0, askPointer);
    add(mRunning, 0, askRunning);
    add(mTarget, 0, askInteger);
    for (int i = 0; i < INDICES; ++i) {
        const auto index = static_cast<GLuint>(i);
        add(mIndexed, i, [index](unsigned name, double* to) {
            const bool hasOne = name == GL_SAMPLE_MASK_VALUE && index > 0;
            return hasOne ? 0 : askIndexed(name, to, index);
        });
        add(mIndexedSwitches, i,
            [index](unsigned name, double* to) { return askIndexedSwitch(name, to, index); });
    }
    for (GLuint i = 0; i < ATTRIBUTES; ++i) {
        add(mAttributes, static_cast<int>(i), [i](unsigned name, double* to) {
            const bool isVertex = name == GL_CURRENT_VERTEX_ATTRIB && i == 0;
            return isVertex ? 0 : askAttribute(name, to, i);
        });
        void* pointer = nullptr;
        CALL(GetVertexAttribPointerv)(i, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
        dump.push_back({"VERTEX_ATTRIB_ARRAY_POINTER", static_cast<int>(i),
                        static_cast<double>(reinterpret_cast<std::uintptr_t>(pointer))});
    }
    for (GLint i = 0; i < 3; ++i) {
        GLuint subroutine = ~0U;  // it stays so where there are none
        CALL(GetUniformSubroutineuiv)(GL_FRAGMENT_SHADER, i, &subroutine);
        dump.push_back({"subroutine", i, static_cast<double>(subroutine)});
    }
    GLint active = 0;
    CALL(GetIntegerv)(GL_ACTIVE_TEXTURE, &active);
    for (int unit = 0; unit < UNITS; ++unit) {
        CALL(ActiveTexture)(GL_TEXTURE0 + static_cast<GLenum>(unit));
        add(mUnit, unit, askInteger);
        add(mEnvironment, unit, askEnvironment);
    }
    CALL(ActiveTexture)(static_cast<GLenum>(active));
    if (mayBindFramebuffers && !mTarget.empty()) {
        GLint draw = 0;
        GLint read = 0;
        CALL(GetIntegerv)(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
        if (mHasReadFramebuffer) {
            CALL(GetIntegerv)(GL_READ_FRAMEBUFFER_BINDING, &read);
        }
        CALL(BindFramebuffer)(GL_FRAMEBUFFER, 0);
        add(mTarget, 1, askInteger);
        CALL(BindFramebuffer)
        (mHasReadFramebuffer ? GL_DRAW_FRAMEBUFFER : GL_FRAMEBUFFER, static_cast<GLuint>(draw));
        if (mHasReadFramebuffer) {
            CALL(BindFramebuffer)(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read));
        }
    }
    while (CALL(GetError)() != GL_NO_ERROR) {
    }
    return dump;
}

std::string StateDump::compare(const std::vector<StateValue>& before, const std::vector<StateValue>& after) {
    if (before == after) {
        return {};
    }
    if (before.size() != after.size()) {
        return "another number of values";
    }
    std::string text;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (!(before[i] == after[i])) {
            text += std::string(before[i].name) + "[" + std::to_string(before[i].index) +
                    "]: " + std::to_string(before[i].value) + " -> " + std::to_string(after[i].value) + "\n";
        }
    }
    return text;
}
