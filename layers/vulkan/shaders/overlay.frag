#version 450
layout(location = 0) in vec2 coordinate;
layout(location = 1) in vec4 shade;
layout(location = 0) out vec4 pixel;
layout(push_constant) uniform Places {
    vec4 toClip;
    vec4 toTexture;
    vec2 clipOrigin;
    vec2 textureOrigin;
    uint isPicture;
};
layout(set = 0, binding = 0) uniform sampler2D glyphs;
layout(set = 0, binding = 1) uniform sampler2D picture;

// How the image's values are to be read, see ColorEncoding.
layout(constant_id = 0) const uint ENCODING = 0;
const uint AS_SRGB = 0;
const uint LINEAR = 1;
const uint SCRGB = 2;
const uint PQ = 3;

vec3 toLinear(vec3 color) {
    return mix(color / 12.92, pow((color + 0.055) / 1.055, vec3(2.4)), step(vec3(0.04045), color));
}

vec3 toPq(vec3 light) {
    const mat3 toWide = mat3(0.6274, 0.0691, 0.0164, 0.3293, 0.9195, 0.0880, 0.0433, 0.0114, 0.8956);
    vec3 power = pow(max(toWide * light, 0.0) * (203.0 / 10000.0), vec3(0.1593017578125));
    return pow((0.8359375 + 18.8515625 * power) / (1.0 + 18.6875 * power), vec3(78.84375));
}

void main() {
    if (isPicture != 0) {
        pixel = vec4(texture(picture, coordinate).rgb, shade.a);
        return;
    }
    vec2 glyph = texture(glyphs, coordinate).rg;
    float alpha = shade.a * glyph.g;
    vec3 color = shade.rgb * glyph.r;
    if (ENCODING != AS_SRGB) {
        // Light is mixed here, or HDR10's codes, and sRGB's codes elsewhere: what looks the same covers more
        // or less of what is darker than itself, and the other way round of what is brighter.
        float exponent = ENCODING == PQ ? 0.5 : 2.2;
        float brightness = dot(color, vec3(0.2126, 0.7152, 0.0722));
        alpha = mix(1.0 - pow(1.0 - alpha, exponent), pow(alpha, exponent), brightness);
        color = toLinear(color);
    }
    if (ENCODING == SCRGB) {
        color *= 203.0 / 80.0;
    } else if (ENCODING == PQ) {
        color = toPq(color);
    }
    pixel = vec4(color, alpha);
}
