#version 450
layout(location = 0) in vec2 position;
layout(location = 1) in uvec2 uv;
layout(location = 2) in vec4 color;
layout(location = 0) out vec2 coordinate;
layout(location = 1) out vec4 shade;
layout(push_constant) uniform Places {
    vec4 toClip;
    vec4 toTexture;
    vec2 clipOrigin;
    vec2 textureOrigin;
    uint isPicture;
};
vec2 place(vec2 at, vec4 axes) {
    return vec2(dot(axes.xy, at), dot(axes.zw, at));
}
void main() {
    gl_Position = vec4(place(position, toClip) + clipOrigin, 0.0, 1.0);
    coordinate = place(vec2(uv), toTexture) + textureOrigin;
    shade = color;
}
