#include "ostra/DumpPlace.h"

#include "properties/RuntimeDirectory.h"

#include <cstdlib>

namespace platform {

DumpPlace findDumpPlace() {
    const char* const directory = std::getenv("KORDANIX_DUMP_DIR");  // NOLINT(concurrency-mt-unsafe)
    std::string ignored;
    const std::string* const own = ownRuntimeDirectory(ignored);
    return {directory != nullptr && *directory != '\0' ? directory : ".",
            own == nullptr ? std::string() : *own};
}

}  // namespace platform
