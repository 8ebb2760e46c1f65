// A source of counters that asks for a control property while it is loaded.

#include "core/HWcounterAdreno.cpp"  // NOLINT(bugprone-suspicious-include): everything else of it is as it is
#include "core/StateInfo.h"

namespace core {

KORDANIX_EXPORT extern const std::string askedProperty;
const std::string askedProperty = StateInfo::mStatusProp.mName;

}  // namespace core
