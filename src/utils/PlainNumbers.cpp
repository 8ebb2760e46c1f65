#include "utils/PlainNumbers.h"

namespace utils {

namespace {

/// Made once and never freed: a thread may be using it while the process exits. Without memory for it,
/// uselocale() changes nothing, and numbers have the application's locale.
locale_t plainLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

}  // namespace

PlainNumbers::PlainNumbers() : mApplications(uselocale(plainLocale())) {}

PlainNumbers::~PlainNumbers() {
    uselocale(mApplications);
}

}  // namespace utils
