#pragma once

#include "properties/PropertyFile.h"

#include <memory>
#include <string>

namespace platform {

/// The properties of this process's runtime directory as a thread last read them.
struct PropertyView {
    const std::string* directory = nullptr;
    FileVersion version;
    PropertyList list;  ///< the earlier properties, when this version of the file was refused
};

/// Whether the returned properties are current.
enum class Look {
    CURRENT,
    FAILED,  ///< they are missing or old; a later look may succeed
};

/// Returns the properties as they are now; null when there never were any. Costs one system call while the
/// file has not changed since this thread read it. If somebody deletes or damages the file, the thread keeps
/// what it read. The log says once that a file was refused. Any thread: each keeps its own view, so there is
/// no lock, and a child may be forked at any time.
std::shared_ptr<const PropertyView> currentProperties(Look& look);

}  // namespace platform
