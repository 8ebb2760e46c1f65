#include "settings/RunProperties.h"

#include "properties/PropertyWriter.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"

namespace control {

namespace {

std::string textOf(const PropertyTexts& texts, const std::string& name) {
    const auto found = texts.find(name);
    return found == texts.end() ? std::string() : found->second;
}

}  // namespace

std::string changeBeginning(const std::string& folder, const PropertyTexts& before,
                            const PropertyTexts& now) {
    PropertyTexts all = now;
    all.insert(before.begin(), before.end());
    platform::PropertyWriter writer(folder);
    for (const auto& [name, either] : all) {
        const std::string last = textOf(before, name);
        const std::string next = textOf(now, name);
        if (next != last && writer.value(name) == last) {
            writer.set(name, next);
        }
    }
    writer.set(std::string(GENERATION_NAME), generationAfter(writer.value(std::string(GENERATION_NAME))));
    return writer.commit();
}

}  // namespace control
