#include "settings/Assignment.h"

#include "properties/PropertyName.h"
#include "settings/KeyChord.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

namespace control {

std::string readAssignment(const std::string& name, const std::string& value, bool isForced,
                           Assignment& assignment) {
    const Property* const property = findProperty(name);
    if (property == nullptr && !isForced) {
        return "there is no property '" + name + "'; " + hintFor(name);
    }
    const PropertyType type = property == nullptr ? PropertyType::TEXT : property->type;
    const auto text = toPropertyText(type, value);
    if (!text) {
        const std::string wrong = "'" + value + "' is no value for '" + name + "'";
        return type == PropertyType::KEY ? wrong + ": " + readChord(value).error
                                         : wrong + "; expected " + std::string(expectedText(type));
    }
    assignment = {property == nullptr ? expandName(name) : fullName(*property), *text};
    const std::string error = platform::propertyNameError(assignment.name.c_str());
    return error.empty() ? error : "'" + assignment.name + "': " + error;
}

}  // namespace control
