#pragma once

namespace opengl {

/// What a context can do beyond OpenGL 2.0 and OpenGL ES 2.0, by its version or by an extension. A function
/// or a value of a feature that is off must not be used: the call would raise an error of the application's.
struct Features {
    bool always = true;
    bool desktop = false;         ///< OpenGL, not OpenGL ES
    bool compatibility = false;   ///< desktop with everything that the core profile removed
    bool softwareRaster = false;  ///< the processor draws the pixels (Mesa's llvmpipe)

    bool vertexArrays = false;
    bool mappedRanges = false;  ///< glMapBufferRange
    bool integerAttributes = false;
    bool instancedArrays = false;   ///< attribute divisors
    bool redGreenTextures = false;  ///< GL_RG and GL_RG8; GL_LUMINANCE_ALPHA elsewhere
    bool textureSwizzle = false;    ///< GL_TEXTURE_SWIZZLE_R and its like
    bool samplers = false;
    bool pixelBuffers = false;     ///< GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_PACK_BUFFER
    bool unpackRows = false;       ///< GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS
    bool packRows = false;         ///< GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS
    bool packInvert = false;       ///< GL_PACK_INVERT_MESA
    bool fragmentOutputs = false;  ///< glBindFragDataLocation
    bool programPipelines = false;
    bool subroutines = false;

    bool framebuffers = false;
    bool readFramebuffers = false;  ///< one framebuffer for drawing, another for reading
    bool drawBuffers = false;       ///< glDrawBuffers
    bool readBuffer = false;        ///< glReadBuffer
    bool framebufferSrgb = false;   ///< GL_FRAMEBUFFER_SRGB can be switched

    bool polygonMode = false;
    bool clipControl = false;
    bool clipDistances = false;
    bool viewportArrays = false;
    bool indexedState = false;      ///< blending and colour mask by draw buffer
    bool indexedQueries = false;    ///< glGetIntegeri_v
    bool indexedBlending = false;   ///< blend functions and equations by draw buffer
    bool advancedBlending = false;  ///< blend equations such as GL_MULTIPLY_KHR
    bool sampleAlphaToOne = false;
    bool sampleMask = false;
    bool depthBounds = false;
    bool conservativeRaster = false;  ///< GL_CONSERVATIVE_RASTERIZATION_NV
    bool conservativeRasterIntel = false;
    bool rasterizerDiscard = false;
    bool primitiveRestart = false;
    bool fixedPrimitiveRestart = false;
    bool clientPrimitiveRestart = false;  ///< GL_PRIMITIVE_RESTART_NV, switched as client state
    bool debugOutput = false;             ///< GL_DEBUG_OUTPUT

    bool queries = false;
    bool samplesQueries = false;       ///< GL_SAMPLES_PASSED
    bool anySamplesQueries = false;    ///< GL_ANY_SAMPLES_PASSED
    bool conservativeQueries = false;  ///< GL_ANY_SAMPLES_PASSED_CONSERVATIVE
    bool primitiveQueries = false;     ///< GL_PRIMITIVES_GENERATED
    bool statisticsQueries = false;    ///< GL_VERTICES_SUBMITTED and its like
    bool timerQueries = false;         ///< glQueryCounter; GL_GPU_DISJOINT_EXT in OpenGL ES
    bool queryBuffers = false;         ///< GL_QUERY_BUFFER: with one bound, results go there
    bool transformFeedback = false;    ///< transform feedback that can be paused
};

}  // namespace opengl
