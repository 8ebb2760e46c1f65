#pragma once

#include <GL/glcorearb.h>

// What the layer needs of the compatibility profile and of extensions, which <GL/glcorearb.h> leaves out.

namespace opengl {

using PixelTransferfFunction = void(APIENTRYP)(GLenum, GLfloat);
using PixelTransferiFunction = void(APIENTRYP)(GLenum, GLint);
using ClientStateFunction = void(APIENTRYP)(GLenum);

inline constexpr GLenum POLYGON_STIPPLE = 0x0B42;
inline constexpr GLenum LIST_INDEX = 0x0B33;
inline constexpr GLenum ALPHA_TEST = 0x0BC0;
inline constexpr GLenum RENDER_MODE = 0x0C40;
inline constexpr GLenum RENDER = 0x1C00;
inline constexpr GLenum MAP_COLOR = 0x0D10;
inline constexpr GLenum INDEX_SHIFT = 0x0D12;
inline constexpr GLenum INDEX_OFFSET = 0x0D13;
inline constexpr GLenum RED_SCALE = 0x0D14;
inline constexpr GLenum RED_BIAS = 0x0D15;
inline constexpr GLenum GREEN_SCALE = 0x0D18;
inline constexpr GLenum GREEN_BIAS = 0x0D19;
inline constexpr GLenum BLUE_SCALE = 0x0D1A;
inline constexpr GLenum BLUE_BIAS = 0x0D1B;
inline constexpr GLenum ALPHA_SCALE = 0x0D1C;
inline constexpr GLenum ALPHA_BIAS = 0x0D1D;
inline constexpr GLenum LUMINANCE = 0x1909;
inline constexpr GLenum LUMINANCE_ALPHA = 0x190A;
inline constexpr GLenum PRIMITIVE_RESTART_NV = 0x8558;
inline constexpr GLenum PACK_INVERT_MESA = 0x8758;
inline constexpr GLenum DEPTH_BOUNDS_TEST_EXT = 0x8890;
inline constexpr GLenum CONSERVATIVE_RASTERIZATION_NV = 0x9346;
inline constexpr GLenum CONSERVATIVE_RASTERIZATION_INTEL = 0x83FE;
inline constexpr GLenum GPU_DISJOINT_EXT = 0x8FBB;

}  // namespace opengl
