#include "opengl/draw/Shaders.h"

namespace opengl {

namespace {

// The dialects differ in a few words only, which the sources leave to these.
constexpr char OLD_VERTEX[] = "#version 110\n#define IN attribute\n#define OUT varying\n";
constexpr char OLD_FRAGMENT[] = "#version 110\n#define IN varying\n";
constexpr char ES_VERTEX[] =
    "#version 100\n#define IN attribute\n#define OUT varying\nprecision highp float;\n";
constexpr char ES_FRAGMENT[] =
    "#version 100\n#define IN varying\n"
    "#ifdef GL_FRAGMENT_PRECISION_HIGH\nprecision highp float;\n#else\nprecision mediump float;\n#endif\n";
constexpr char CORE_VERTEX[] = "#version 130\n#define IN in\n#define OUT out\n";
constexpr char CORE_FRAGMENT[] =
    "#version 130\n#define IN in\n#define texture2D texture\n#define gl_FragColor pixel\nout vec4 pixel;\n";
constexpr char NEW_VERTEX[] = "#version 140\n#define IN in\n#define OUT out\n";
constexpr char NEW_FRAGMENT[] =
    "#version 140\n#define IN in\n#define texture2D texture\n#define gl_FragColor pixel\nout vec4 pixel;\n";

constexpr char GLYPHS[] = "#define CHANNELS rrrg\n";
constexpr char COLORS[] = "#define CHANNELS rgba\n";
constexpr char SOLID[] = "#define SOLID\n";
constexpr char SAMPLES_4[] = "#define SAMPLES 2\n";
constexpr char SAMPLES_16[] = "#define SAMPLES 4\n";

constexpr char LINEAR[] = "#define LINEAR\n";

constexpr char VERTEX[] = R"(
IN vec2 position;
IN vec2 uv;
IN vec4 color;
OUT vec2 coordinate;
OUT vec4 shade;
uniform vec4 toClip;
uniform vec4 toTexture;
void main() {
    gl_Position = vec4(position * toClip.xy + toClip.zw, 0.0, 1.0);
    coordinate = uv * toTexture.xy + toTexture.zw;
#if defined(SOLID) && !defined(LINEAR)
    shade = vec4(color.rgb * color.a, color.a);
#else
    shade = color;
#endif
}
)";

// For solid areas the vertices' colours are multiplied by their alpha already. That shader must not compute
// anything: on surfaces without depth, llvmpipe 22.3 takes a multiplication there for another one.
constexpr char SHOW[] = R"(
IN vec2 coordinate;
IN vec4 shade;
uniform sampler2D image;
void main() {
#if defined(SOLID) && !defined(LINEAR)
    gl_FragColor = shade;
}
#else
#ifdef SOLID
    vec4 result = shade;
#else
    vec4 result = shade * texture2D(image, coordinate).CHANNELS;
#endif
#ifdef LINEAR
    vec3 dark = result.rgb / 12.92;
    vec3 light = pow((result.rgb + 0.055) / 1.055, vec3(2.4));
    result.rgb = mix(dark, light, step(vec3(0.04045), result.rgb));
#endif
    gl_FragColor = vec4(result.rgb * result.a, result.a);
}
#endif
)";

// Compilers unroll these loops: one that ends early costs llvmpipe more than its samples.
constexpr char MEAN[] = R"(
IN vec2 coordinate;
uniform sampler2D image;
uniform vec2 gap;
void main() {
    vec3 sum = vec3(0.0);
    for (int y = 0; y < SAMPLES; ++y) {
        for (int x = 0; x < SAMPLES; ++x) {
            vec2 place = vec2(float(x), float(y)) - 0.5 * (float(SAMPLES) - 1.0);
            sum += texture2D(image, coordinate + place * gap).rgb;
        }
    }
    gl_FragColor = vec4(sum / float(SAMPLES * SAMPLES), 1.0);
}
)";

enum class Dialect { OLD, ES, CORE, NEW };

Dialect dialectOf(const Functions& functions) {
    constexpr int FIRST_NEW = 31;
    const Version& version = functions.version;
    if (version.isEs) {
        return Dialect::ES;
    }
    if (functions.features.compatibility) {
        return Dialect::OLD;
    }
    return 10 * version.major + version.minor >= FIRST_NEW ? Dialect::NEW : Dialect::CORE;
}

const char* pick(Dialect dialect, const char* old, const char* es, const char* core, const char* latest) {
    switch (dialect) {
        case Dialect::OLD:
            return old;
        case Dialect::ES:
            return es;
        case Dialect::CORE:
            return core;
        case Dialect::NEW:
            break;
    }
    return latest;
}

}  // namespace

ShaderSource vertexShader(const Functions& functions, Shading shading, bool isLinear) {
    return {{pick(dialectOf(functions), OLD_VERTEX, ES_VERTEX, CORE_VERTEX, NEW_VERTEX),
             shading == Shading::SOLID ? SOLID : "", isLinear ? LINEAR : "", VERTEX}};
}

ShaderSource fragmentShader(const Functions& functions, Shading shading, bool isLinear) {
    const char* const dialect =
        pick(dialectOf(functions), OLD_FRAGMENT, ES_FRAGMENT, CORE_FRAGMENT, NEW_FRAGMENT);
    if (shading == Shading::MEAN_4 || shading == Shading::MEAN_16) {
        return {{dialect, shading == Shading::MEAN_4 ? SAMPLES_4 : SAMPLES_16, "", MEAN}};
    }
    const char* const channels =
        shading == Shading::SOLID ? SOLID : (shading == Shading::GLYPHS ? GLYPHS : COLORS);
    return {{dialect, channels, isLinear ? LINEAR : "", SHOW}};
}

}  // namespace opengl
