#include "dumps/Dump.h"

#include <algorithm>
#include <cmath>

namespace dumps {

bool DumpedValue::hasFigures() const {
    return std::any_of(figures.begin(), figures.end(), [](double figure) { return std::isfinite(figure); });
}

const DumpedValue* Dump::findValue(const std::string& name) const {
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&](const DumpedValue& value) { return value.name == name; });
    return found == values.end() ? nullptr : &*found;
}

}  // namespace dumps
