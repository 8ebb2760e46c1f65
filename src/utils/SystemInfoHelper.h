#pragma once

#include "utils/Export.h"

#include <string>

namespace utils {

/// The GPU makers that the library tells apart.
struct Vendor {
    enum : int { MALI = 0, ADRENO = 1, UNKNOWN = 2 };
};

/// The device index: 0 to 8 for the known models, 9 for any other. Computed once, when the library is loaded.
KORDANIX_EXPORT extern int deviceModel;

/// Returns the first argument of the process's command line without surrounding blanks, at most 255 bytes.
/// When it cannot read the command line, logs an error and returns an empty text. Reads the file on every
/// call.
KORDANIX_EXPORT std::string getProcessName();

KORDANIX_EXPORT void trim(std::string& text);

/// Returns the GPU's vendor, a Vendor. Reads the driver's model file until it has found one of the two; logs
/// an error if it cannot open the file.
KORDANIX_EXPORT int checkVendor();

}  // namespace utils
