#include "settings/KeyConflicts.h"

#include "settings/KeyChord.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

namespace control {

std::string keyConflict(const std::string& name, const TextLookup& textOf) {
    const Property* const property = findProperty(name);
    if (property == nullptr || property->type != PropertyType::KEY) {
        return {};
    }
    const TypedChord own = readChord(toDisplayText(*property, textOf(name)));
    for (const std::string_view each : KEY_NAMES) {
        const Property& other = *findProperty(each);
        const TypedChord its = readChord(toDisplayText(other, textOf(fullName(other))));
        if (&other != property && collide(own.chord, its.chord)) {
            return "'" + own.text + "' cannot be '" + std::string(property->shortName) + "': it is '" +
                   std::string(each) + "' already";
        }
    }
    return {};
}

}  // namespace control
