#include "opengl/gl/Functions.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace opengl {
namespace {

/// How a feature may be had beside a version that has it.
struct Extension {
    const char* name;
    const char* suffix;  ///< of its functions
};

struct FeatureSource {
    bool Features::*feature;
    int desktop;  ///< first version that has it, 32 for 3.2; 0 for none
    int es;
    Extension extensions[3];
};

const FeatureSource FEATURE_SOURCES[] = {
    {&Features::vertexArrays,
     30,
     30,
     {{"GL_ARB_vertex_array_object", ""}, {"GL_OES_vertex_array_object", "OES"}}},
    {&Features::mappedRanges, 30, 30, {{"GL_ARB_map_buffer_range", ""}}},
    {&Features::integerAttributes, 30, 30, {{"GL_EXT_gpu_shader4", "EXT"}}},
    {&Features::instancedArrays,
     33,
     30,
     {{"GL_ARB_instanced_arrays", "ARB"},
      {"GL_EXT_instanced_arrays", "EXT"},
      {"GL_ANGLE_instanced_arrays", "ANGLE"}}},
    {&Features::redGreenTextures, 30, 30, {{"GL_ARB_texture_rg", ""}}},
    {&Features::textureSwizzle, 33, 30, {{"GL_ARB_texture_swizzle", ""}, {"GL_EXT_texture_swizzle", ""}}},
    {&Features::samplers, 33, 30, {{"GL_ARB_sampler_objects", ""}}},
    {&Features::pixelBuffers,
     21,
     30,
     {{"GL_ARB_pixel_buffer_object", ""}, {"GL_NV_pixel_buffer_object", ""}}},
    {&Features::unpackRows, 20, 30, {{"GL_EXT_unpack_subimage", ""}}},
    {&Features::packRows, 20, 30, {{"GL_NV_pack_subimage", ""}}},
    {&Features::packInvert, 0, 0, {{"GL_MESA_pack_invert", ""}}},
    {&Features::fragmentOutputs, 30, 0, {{"GL_EXT_gpu_shader4", "EXT"}}},
    {&Features::programPipelines,
     41,
     31,
     {{"GL_ARB_separate_shader_objects", ""}, {"GL_EXT_separate_shader_objects", "EXT"}}},
    {&Features::subroutines, 40, 0, {{"GL_ARB_shader_subroutine", ""}}},
    {&Features::framebuffers,
     30,
     20,
     {{"GL_ARB_framebuffer_object", ""}, {"GL_EXT_framebuffer_object", "EXT"}}},
    {&Features::readFramebuffers,
     30,
     30,
     {{"GL_ARB_framebuffer_object", ""},
      {"GL_EXT_framebuffer_blit", "EXT"},
      {"GL_NV_framebuffer_blit", "NV"}}},
    {&Features::drawBuffers, 20, 30, {{"GL_EXT_draw_buffers", "EXT"}}},
    {&Features::readBuffer, 20, 30, {{"GL_NV_read_buffer", "NV"}}},
    {&Features::framebufferSrgb,
     30,
     0,
     {{"GL_ARB_framebuffer_sRGB", ""}, {"GL_EXT_framebuffer_sRGB", ""}, {"GL_EXT_sRGB_write_control", ""}}},
    {&Features::polygonMode, 20, 0, {{"GL_NV_polygon_mode", "NV"}}},
    {&Features::clipControl, 45, 0, {{"GL_ARB_clip_control", ""}, {"GL_EXT_clip_control", "EXT"}}},
    {&Features::clipDistances, 20, 0, {{"GL_EXT_clip_cull_distance", ""}, {"GL_APPLE_clip_distance", ""}}},
    {&Features::viewportArrays,
     41,
     0,
     {{"GL_ARB_viewport_array", ""}, {"GL_OES_viewport_array", "OES"}, {"GL_NV_viewport_array", "NV"}}},
    {&Features::indexedState,
     30,
     32,
     {{"GL_EXT_draw_buffers2", "EXT"},
      {"GL_OES_draw_buffers_indexed", "OES"},
      {"GL_EXT_draw_buffers_indexed", "EXT"}}},
    {&Features::indexedQueries, 30, 30, {{"GL_EXT_draw_buffers2", "EXT"}}},
    {&Features::indexedBlending,
     40,
     32,
     {{"GL_ARB_draw_buffers_blend", "ARB"},
      {"GL_OES_draw_buffers_indexed", "OES"},
      {"GL_EXT_draw_buffers_indexed", "EXT"}}},
    {&Features::advancedBlending,
     0,
     32,
     {{"GL_KHR_blend_equation_advanced", ""}, {"GL_NV_blend_equation_advanced", ""}}},
    {&Features::sampleAlphaToOne, 20, 0, {{"GL_EXT_multisample_compatibility", ""}}},
    {&Features::sampleMask, 32, 31, {{"GL_ARB_texture_multisample", ""}}},
    {&Features::depthBounds, 0, 0, {{"GL_EXT_depth_bounds_test", ""}}},
    {&Features::conservativeRaster, 0, 0, {{"GL_NV_conservative_raster", ""}}},
    {&Features::conservativeRasterIntel, 0, 0, {{"GL_INTEL_conservative_rasterization", ""}}},
    {&Features::rasterizerDiscard, 30, 30, {{"GL_EXT_transform_feedback", ""}}},
    {&Features::primitiveRestart, 31, 0, {}},
    {&Features::fixedPrimitiveRestart, 43, 30, {{"GL_ARB_ES3_compatibility", ""}}},
    {&Features::clientPrimitiveRestart, 0, 0, {{"GL_NV_primitive_restart", ""}}},
    {&Features::debugOutput, 43, 32, {{"GL_KHR_debug", ""}}},
    {&Features::queries,
     20,
     30,
     {{"GL_EXT_occlusion_query_boolean", "EXT"}, {"GL_EXT_disjoint_timer_query", "EXT"}}},
    {&Features::samplesQueries, 20, 0, {}},
    {&Features::anySamplesQueries,
     33,
     30,
     {{"GL_ARB_occlusion_query2", ""}, {"GL_EXT_occlusion_query_boolean", ""}}},
    {&Features::conservativeQueries,
     43,
     30,
     {{"GL_ARB_ES3_compatibility", ""}, {"GL_EXT_occlusion_query_boolean", ""}}},
    {&Features::primitiveQueries,
     30,
     32,
     {{"GL_EXT_transform_feedback", ""}, {"GL_EXT_geometry_shader", ""}, {"GL_OES_geometry_shader", ""}}},
    {&Features::statisticsQueries, 46, 0, {{"GL_ARB_pipeline_statistics_query", ""}}},
    {&Features::timerQueries, 33, 0, {{"GL_ARB_timer_query", ""}, {"GL_EXT_disjoint_timer_query", "EXT"}}},
    {&Features::queryBuffers, 44, 0, {{"GL_ARB_query_buffer_object", ""}}},
    {&Features::transformFeedback, 40, 30, {{"GL_ARB_transform_feedback2", ""}}},
};

/// Which extensions the context has.
class Extensions {
public:
    Extensions(const Functions& functions, PFNGLGETSTRINGIPROC getStringi)
        : mFunctions(functions), mGetStringi(getStringi) {
        if (mGetStringi != nullptr) {
            mFunctions.getIntegerv(GL_NUM_EXTENSIONS, &mCount);
        } else {
            mText = reinterpret_cast<const char*>(mFunctions.getString(GL_EXTENSIONS));
        }
    }

    bool has(const char* name) const {
        for (GLint i = 0; i < mCount; ++i) {
            const auto* extension =
                reinterpret_cast<const char*>(mGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i)));
            if (extension != nullptr && std::strcmp(extension, name) == 0) {
                return true;
            }
        }
        return mText != nullptr && isInText(name);
    }

private:
    bool isInText(const char* name) const {
        const std::size_t length = std::strlen(name);
        for (const char* at = std::strstr(mText, name); at != nullptr; at = std::strstr(at + length, name)) {
            const bool starts = at == mText || at[-1] == ' ';
            if (starts && (at[length] == ' ' || at[length] == '\0')) {
                return true;
            }
        }
        return false;
    }

    const Functions& mFunctions;
    PFNGLGETSTRINGIPROC mGetStringi;
    GLint mCount = 0;
    const char* mText = nullptr;  ///< all of them with spaces between
};

template <typename Function>
void lookUp(Function& function, GetProcAddress getProcAddress, const char* name) {
    function = reinterpret_cast<Function>(getProcAddress(name));
}

/// glMember with a suffix, or oldName with it when there is an old name and the suffix is EXT.
template <typename Function>
void lookUp(Function& function, GetProcAddress getProcAddress, const char* member, const char* oldName,
            const char* suffix) {
    char name[64];
    if (oldName != nullptr && std::strcmp(suffix, "EXT") == 0) {
        std::snprintf(name, sizeof name, "%s%s", oldName, suffix);
    } else {
        std::snprintf(name, sizeof name, "gl%c%s%s", std::toupper(static_cast<unsigned char>(member[0])),
                      member + 1, suffix);
    }
    lookUp(function, getProcAddress, name);
}

bool isCoreProfile(const Functions& functions, const Extensions& extensions) {
    GLint flags = 0;
    if (functions.version.isEs || !functions.version.isAtLeast(30, 0)) {
        return false;
    }
    if (functions.version.isAtLeast(32, 0)) {
        functions.getIntegerv(GL_CONTEXT_PROFILE_MASK, &flags);
        return (flags & GL_CONTEXT_CORE_PROFILE_BIT) != 0;
    }
    if (functions.version.isAtLeast(31, 0)) {
        return !extensions.has("GL_ARB_compatibility");
    }
    return false;
}

}  // namespace

bool Functions::load(GetProcAddress getProcAddress) {
    *this = Functions();
    lookUp(getString, getProcAddress, "glGetString");
    lookUp(getIntegerv, getProcAddress, "glGetIntegerv");
    if (getString == nullptr || getIntegerv == nullptr) {
        return false;
    }
    version = parseVersion(reinterpret_cast<const char*>(getString(GL_VERSION)));
    if (version.major == 0) {
        return false;
    }
    PFNGLGETSTRINGIPROC getStringi = nullptr;
    if (version.isAtLeast(30, 30)) {
        lookUp(getStringi, getProcAddress, "glGetStringi");
        if (getStringi == nullptr) {
            return false;
        }
    }
    const Extensions extensions(*this, getStringi);
    version.isCore = isCoreProfile(*this, extensions);
    features.desktop = !version.isEs;
    features.compatibility = features.desktop && !version.isCore;
    const auto* const renderer = reinterpret_cast<const char*>(getString(GL_RENDERER));
    features.softwareRaster = renderer != nullptr && std::strstr(renderer, "llvmpipe") != nullptr;

    constexpr std::size_t SOURCES = std::size(FEATURE_SOURCES);
    const char* suffixes[SOURCES] = {};
    for (std::size_t i = 0; i < SOURCES; ++i) {
        const FeatureSource& source = FEATURE_SOURCES[i];
        if (version.isAtLeast(source.desktop, source.es)) {
            suffixes[i] = "";
        }
        for (const Extension& extension : source.extensions) {
            if (suffixes[i] == nullptr && extension.name != nullptr && extensions.has(extension.name)) {
                suffixes[i] = extension.suffix;
            }
        }
        features.*source.feature = suffixes[i] != nullptr;
    }
    features.clientPrimitiveRestart =
        features.clientPrimitiveRestart && features.compatibility && !features.primitiveRestart;

    const auto suffixOf = [&suffixes](bool Features::*feature) {
        for (std::size_t i = 0; i < SOURCES; ++i) {
            if (FEATURE_SOURCES[i].feature == feature && suffixes[i] != nullptr) {
                return suffixes[i];
            }
        }
        return "";
    };
    // A driver that names a feature and has no function for it is taken not to have the feature.
#define OPENGL_FUNCTION(feature, TYPE, member)                                          \
    if (features.feature) {                                                             \
        lookUp(member, getProcAddress, #member, nullptr, suffixOf(&Features::feature)); \
        features.feature = member != nullptr;                                           \
    }
#define OPENGL_FUNCTION_RENAMED(feature, TYPE, member, oldName)                   \
    if (features.feature) {                                                       \
        lookUp(member, getProcAddress, #member, version.isEs ? nullptr : oldName, \
               suffixOf(&Features::feature));                                     \
        features.feature = member != nullptr;                                     \
    }
#include "opengl/gl/FunctionList.inc"
#undef OPENGL_FUNCTION
#undef OPENGL_FUNCTION_RENAMED
    features.indexedState = features.indexedState && features.indexedQueries;
    features.indexedBlending = features.indexedBlending && features.indexedState;
    features.viewportArrays = features.viewportArrays && features.indexedState;
    // ... and none of its functions, those that were found before included.
#define OPENGL_FUNCTION(feature, TYPE, member) member = features.feature ? member : nullptr;
#define OPENGL_FUNCTION_RENAMED(feature, TYPE, member, oldName) OPENGL_FUNCTION(feature, TYPE, member)
#include "opengl/gl/FunctionList.inc"
#undef OPENGL_FUNCTION
#undef OPENGL_FUNCTION_RENAMED

    if (!features.always) {
        return false;
    }
    if (features.drawBuffers) {
        getIntegerv(GL_MAX_DRAW_BUFFERS, &maxDrawBuffers);
    }
    if (features.clipDistances) {
        getIntegerv(GL_MAX_CLIP_DISTANCES, &maxClipDistances);
    }
    return true;
}

}  // namespace opengl
