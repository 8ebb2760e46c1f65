#include "opengl/shim/Hooks.h"

#include <string.h>

namespace opengl {

Slot gSlots[HOOKS][SLOTS];

const char* const HOOK_NAMES[HOOKS] = {
#define OPENGL_HOOK(name, Way) #name,
    OPENGL_HOOKS(OPENGL_HOOK)
#undef OPENGL_HOOK
};

Hook findHook(const char* name) {
    // Programs look up thousands of names; two letters decide most of them.
    if ((name[0] == 'e' && name[1] == 'g') || (name[0] == 'g' && name[1] == 'l')) {
        for (std::size_t i = 0; i < HOOKS; ++i) {
            if (strcmp(name, HOOK_NAMES[i]) == 0) {
                return static_cast<Hook>(i);
            }
        }
    }
    return Hook::COUNT;
}

}  // namespace opengl
