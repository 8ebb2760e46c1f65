#pragma once

#include "utils/Export.h"

#include <locale.h>

namespace utils {

/// While it lives, printf and scanf functions on this thread write and read numbers with a decimal point,
/// whatever locale the application has set. The application's own locale stays as it is.
class KORDANIX_EXPORT PlainNumbers {
public:
    PlainNumbers();
    ~PlainNumbers();
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    locale_t mApplications;
};

}  // namespace utils
