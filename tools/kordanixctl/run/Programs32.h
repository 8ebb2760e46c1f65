#pragma once

#include <string>

namespace control {

/// The overlay over 32-bit programs of a 64-bit machine, for which it has a shim and layers of their own. The
/// dynamic loader of 64-bit programs puts another folder in the place of $LIB in a path than that of 32-bit
/// programs does, so that each of them finds at `preloaded` what it can load.
struct Programs32 {
    std::string loader;  ///< the path of their dynamic loader; empty where kordanixctl is itself of 32 bits
    std::string folder;  ///< of the shim and layers for them; empty when they have no overlay
    std::string preloaded;  ///< the shims' path with $LIB in it
    std::string obstacle;   ///< why they have no overlay
};

/// `prefix` is the folder that both $LIB are below. Asks the dynamic loaders, which takes some milliseconds
/// where a machine has both.
Programs32 findPrograms32(const std::string& prefix);

/// Those of this kordanixctl, as it was built or installed.
Programs32 ownPrograms32();

}  // namespace control
