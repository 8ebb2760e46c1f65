#include "opengl/gl/Version.h"

#include <cstdio>
#include <cstring>

namespace opengl {

Version parseVersion(const char* text) {
    static constexpr char ES_PREFIX[] = "OpenGL ES ";
    Version version;
    if (text == nullptr) {
        return version;
    }
    version.isEs = std::strncmp(text, ES_PREFIX, sizeof ES_PREFIX - 1) == 0;
    const char* numbers = version.isEs ? text + sizeof ES_PREFIX - 1 : text;
    if (std::sscanf(numbers, "%2d.%1d", &version.major, &version.minor) != 2 || version.major < 2) {
        return {};
    }
    return version;
}

}  // namespace opengl
