#version 450
layout(location = 0) in vec2 position;
layout(location = 1) in uvec2 uv;
layout(location = 2) in vec4 color;
layout(location = 0) out vec2 coordinate;
layout(location = 1) out vec4 shade;
layout(push_constant) uniform Places {
    vec4 toClip;
    vec4 toTexture;
    uint isPicture;
};
void main() {
    gl_Position = vec4(position * toClip.xy + toClip.zw, 0.0, 1.0);
    coordinate = vec2(uv) * toTexture.xy + toTexture.zw;
    shade = color;
}
