#pragma once

#include <GL/gl.h>

namespace client {

/// A small scene as a program of today draws it: a wall of lit, textured, turning cubes in one instanced draw
/// call. The same frame number gives the same picture. Needs its context current from birth to death.
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
