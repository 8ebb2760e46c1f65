#include "gles/ToolkitThread.h"

#include <sys/prctl.h>

#include <cstdint>
#include <cstring>
#include <exception>

namespace gles {

namespace {

enum class Kind : std::uint8_t { UNKNOWN, TOOLKIT, OTHER };

thread_local Kind gKind = Kind::UNKNOWN;

Kind kindByName() {
    constexpr std::size_t LONGEST = 16;  // the kernel's, with its end
    char name[LONGEST] = {};
    const bool isNamed = prctl(PR_GET_NAME, name) == 0 && std::strcmp(name, "RenderThread") == 0;
    return isNamed ? Kind::TOOLKIT : Kind::OTHER;
}

}  // namespace

bool isToolkitThread() {
    if (gKind == Kind::UNKNOWN) {
        gKind = kindByName();
    }
    try {
        return gKind == Kind::TOOLKIT && !isToolkitIncluded().getValue();
    } catch (const std::exception&) {
        return true;  // without memory for the property the thread is left alone
    }
}

const SysProp<bool>& isToolkitIncluded() {
    // Never destroyed: a thread may still draw a frame while the process exits.
    static const auto& instance = SysPropWatcher::createSysProp<bool>("debug.kordanix.renderthread", false);
    return instance;
}

}  // namespace gles
