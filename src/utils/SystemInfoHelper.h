#pragma once

#include "utils/Export.h"

#include <string>

namespace utils {

/// Makers of GPUs, as far as the library tells them apart.
struct Vendor {
    enum : int { MALI = 0, ADRENO = 1, UNKNOWN = 2 };
};

/// Device index 0 to 8 of the known models, 9 for any other. Computed when the library is loaded and not
/// again.
KORDANIX_EXPORT extern int deviceModel;

/// The first argument of the process's command line without surrounding blanks, at most 255 bytes of it.
/// Empty, with an error logged, if the command line cannot be read. Reads the file on every call.
KORDANIX_EXPORT std::string getProcessName();

/// Erases leading and trailing white space.
KORDANIX_EXPORT void trim(std::string& text);

/// The GPU's vendor, a Vendor. Reads the driver's model file until it has named one of the
/// two; logs an error if the file cannot be opened.
KORDANIX_EXPORT int checkVendor();

}  // namespace utils
