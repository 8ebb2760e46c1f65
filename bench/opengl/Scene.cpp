#define GL_GLEXT_PROTOTYPES
#include "Scene.h"

#include <GL/glext.h>

#include <cstdint>
#include <cstdlib>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <iostream>
#include <vector>

namespace client {
namespace {

constexpr int COLUMNS = 12;
constexpr int ROWS = 7;
constexpr int FACES = 6;
constexpr int VERTICES_PER_FACE = 6;
constexpr int TEXTURE_SIZE = 64;

constexpr char VERTEX_SHADER[] = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec2 coordinate;
uniform mat4 viewProjection;
uniform float angle;
out vec3 lit;
out vec2 texel;
void main() {
    vec2 cell = vec2(gl_InstanceID % 12, gl_InstanceID / 12);
    float turn = angle + 0.4 * (cell.x + cell.y);
    mat3 around = mat3(cos(turn), 0.0, -sin(turn), 0.0, 1.0, 0.0, sin(turn), 0.0, cos(turn));
    vec3 place = vec3(cell - vec2(5.5, 3.0), 0.0) * 1.8;
    gl_Position = viewProjection * vec4(around * position * 0.5 + place, 1.0);
    lit = vec3(0.25 + 0.75 * max(dot(around * normal, normalize(vec3(1.0, 2.0, 3.0))), 0.0));
    texel = coordinate;
}
)";

constexpr char FRAGMENT_SHADER[] = R"(#version 330 core
in vec3 lit;
in vec2 texel;
uniform sampler2D squares;
out vec4 colour;
void main() { colour = vec4(lit * texture(squares, texel).rgb, 1.0); }
)";

struct CubeVertex {
    glm::vec3 position;
    glm::vec3 normal;
    glm::vec2 coordinate;
};

std::vector<CubeVertex> cube() {
    constexpr int CORNERS[VERTICES_PER_FACE][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}};
    std::vector<CubeVertex> vertices;
    for (int face = 0; face < FACES; ++face) {
        const int axis = face / 2;
        const auto side = static_cast<float>(face % 2 * 2 - 1);
        for (const auto& corner : CORNERS) {
            CubeVertex vertex{};
            vertex.normal[axis] = side;
            vertex.position[axis] = side;
            vertex.position[(axis + 1) % 3] = static_cast<float>(corner[0]);
            vertex.position[(axis + 2) % 3] = static_cast<float>(corner[1]);
            vertex.coordinate = {static_cast<float>(corner[0]), static_cast<float>(corner[1])};
            vertices.push_back(vertex);
        }
    }
    return vertices;
}

std::vector<std::uint8_t> squares() {
    std::vector<std::uint8_t> texels;
    for (int y = 0; y < TEXTURE_SIZE; ++y) {
        for (int x = 0; x < TEXTURE_SIZE; ++x) {
            const bool light = ((x / 8) + (y / 8)) % 2 == 0;
            texels.insert(texels.end(), {static_cast<std::uint8_t>(light ? 230 : 60), 170,
                                         static_cast<std::uint8_t>(light ? 80 : 200), 255});
        }
    }
    return texels;
}

GLuint compile(GLenum stage, const char* text) {
    const GLuint shader = glCreateShader(stage);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    return shader;
}

GLuint link() {
    const GLuint program = glCreateProgram();
    for (const GLuint shader :
         {compile(GL_VERTEX_SHADER, VERTEX_SHADER), compile(GL_FRAGMENT_SHADER, FRAGMENT_SHADER)}) {
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }
    glLinkProgram(program);
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == GL_FALSE) {
        std::cerr << "kordanix-opengl-client: the scene's program does not link\n";
        std::exit(EXIT_FAILURE);
    }
    return program;
}

void attribute(GLuint index, GLint components, std::size_t offset) {
    glEnableVertexAttribArray(index);
    glVertexAttribPointer(index, components, GL_FLOAT, GL_FALSE, sizeof(CubeVertex),
                          reinterpret_cast<const void*>(offset));
}

}  // namespace

Scene::Scene() : mProgram(link()) {
    mViewProjection = glGetUniformLocation(mProgram, "viewProjection");
    mAngle = glGetUniformLocation(mProgram, "angle");

    const std::vector<CubeVertex> vertices = cube();
    glGenVertexArrays(1, &mVertexArray);
    glBindVertexArray(mVertexArray);
    glGenBuffers(1, &mVertices);
    glBindBuffer(GL_ARRAY_BUFFER, mVertices);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size() * sizeof(CubeVertex)),
                 vertices.data(), GL_STATIC_DRAW);
    attribute(0, 3, offsetof(CubeVertex, position));
    attribute(1, 3, offsetof(CubeVertex, normal));
    attribute(2, 2, offsetof(CubeVertex, coordinate));

    const std::vector<std::uint8_t> texels = squares();
    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, TEXTURE_SIZE, TEXTURE_SIZE, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 texels.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
}

Scene::~Scene() {
    glDeleteTextures(1, &mTexture);
    glDeleteBuffers(1, &mVertices);
    glDeleteVertexArrays(1, &mVertexArray);
    glDeleteProgram(mProgram);
}

void Scene::draw(int frame, float aspect) {
    const glm::mat4 projection = glm::perspective(glm::radians(45.0f), aspect, 0.1f, 100.0f);
    const glm::mat4 view =
        glm::lookAt(glm::vec3(3.0f, 2.0f, 16.0f), glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f));
    const glm::mat4 viewProjection = projection * view;

    glClearColor(0.1f, 0.15f, 0.25f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glUseProgram(mProgram);
    glBindVertexArray(mVertexArray);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glUniformMatrix4fv(mViewProjection, 1, GL_FALSE, glm::value_ptr(viewProjection));
    glUniform1f(mAngle, 0.01f * static_cast<float>(frame));
    glDrawArraysInstanced(GL_TRIANGLES, 0, FACES * VERTICES_PER_FACE, COLUMNS * ROWS);
}

}  // namespace client
