#pragma once

#include <GL/gl.h>

namespace client {

/// A small modern scene: a wall of lit, textured, turning cubes in one instanced draw call. The same frame
/// number gives the same picture. Its context must be current from construction to destruction.
class Scene {
public:
    Scene();
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void draw(int frame, float aspect);

private:
    GLuint mProgram = 0;
    GLuint mVertexArray = 0;
    GLuint mVertices = 0;
    GLuint mTexture = 0;
    GLint mViewProjection = -1;
    GLint mAngle = -1;
};

}  // namespace client
