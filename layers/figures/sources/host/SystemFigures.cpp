#include "figures/sources/SystemFigures.h"

// Linux has files for all of it; kordanixctl says what is left out.
namespace sources {

Value SystemFigures::gpuLoad(double /*now*/) {
    return Value::none(Reason::NO_FILE);
}

Value SystemFigures::gpuClock() {
    return Value::none(Reason::NO_FILE);
}

Value SystemFigures::gpuMaxClock() {
    return Value::none(Reason::NO_FILE);
}

Value SystemFigures::gpuTemperature() {
    return Value::none(Reason::NO_FILE);
}

Value SystemFigures::thermalStatus() {
    return Value::none(Reason::NOT_SUPPORTED);
}

void noteMissing(const char* /*figure*/, const Value& /*value*/) {}

}  // namespace sources
