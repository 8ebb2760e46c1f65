#pragma once

#include <memory>
#include <string>

#include "properties/PropertyFile.h"

namespace platform {

/// The properties of this process's runtime directory as a thread last read them.
struct PropertyView {
    const std::string* directory = nullptr;
    FileVersion version;
    PropertyList list;  ///< what was read before, when the file of this version is refused
};

/// How much a look at the file was worth.
enum class Look {
    CURRENT,
    FAILED,  ///< nothing or something older is known; a later look may do better
};

/// The properties as they are now; null while there are none and never were. Costs one system call while the
/// file is the one that this thread has read. What was read stays when the file is deleted or damaged. A file
/// that is refused is reported in the log, once. Any thread: each has its own, so that nothing is locked, and
/// a child may be forked at any time.
std::shared_ptr<const PropertyView> currentProperties(Look& look);

}  // namespace platform
