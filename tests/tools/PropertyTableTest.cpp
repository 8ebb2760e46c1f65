#include "core/RenderingApiType.h"
#include "core/SysPropWatcher.h"
#include "figures/Catalogue.h"
#include "figures/FigureSettings.h"
#include "gles/ToolkitThread.h"
#include "gui/WidgetsSettings.h"
#include "scene/FrameTimeSettings.h"
#include "scene/ShapeSettings.h"
#include "scene/WidgetScale.h"
#include "settings/PropertyTable.h"

#include <gmock/gmock.h>
#include <sys/system_properties.h>

/// Every property exists, so that the library reads it; what it would be read into is kept instead.
struct prop_info {
    std::string name;
};

namespace {

std::map<std::string, SysPropBase*>& lookedUp() {
    static auto* const instance = new std::map<std::string, SysPropBase*>;
    return *instance;
}

}  // namespace

const prop_info* __system_property_find(const char* name) {
    return new prop_info{name};
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*)(void* cookie, const char* name, const char* value,
                                              uint32_t serial),
                                     void* cookie) {
    lookedUp()[pi->name] = static_cast<SysPropBase*>(cookie);
}

namespace control {
namespace {

using gui::WidgetsSettings;

template <typename T>
T defaultOf(SysPropBase& property) {
    return dynamic_cast<SysProp<T>&>(property).getValue();
}

/// The default of one of the library's properties, which was never given a text; throws when the property is
/// of another type.
std::string libraryText(PropertyType type, SysPropBase& property) {
    switch (type) {
        case PropertyType::BOOLEAN:
            return defaultOf<bool>(property) ? "true" : "false";
        case PropertyType::TEXT:
        case PropertyType::SCALE:
            return defaultOf<std::string>(property);
        case PropertyType::POSITION:
            return std::to_string(static_cast<int>(defaultOf<WidgetsSettings::Position>(property)));
        case PropertyType::API:
            return std::to_string(static_cast<int>(defaultOf<core::RenderingApiType>(property)));
        default:
            return std::to_string(static_cast<std::uint32_t>(defaultOf<int>(property)));
    }
}

TEST(PropertyTable, HasExactlyThePropertiesOfTheLibrary) {
    auto atLoad = lookedUp();
    lookedUp().clear();
    atLoad.erase("ro.product.model");
    WidgetsSettings::getWidgets();
    scene::frameTimeSettings();
    scene::scaleSetting();
    gles::isToolkitIncluded();
    scene::shapeSettings();
    for (const figures::Figure& figure : figures::catalogue()) {
        if (!figure.isNote()) {
            figures::settingsOf(figure);
        }
    }
    for (const Property& property : properties()) {
        const bool isOfRun = property.type == PropertyType::KEY || fullName(property) == KEYS_NAME;
        if (property.type != PropertyType::GENERATION && !isOfRun) {
            auto& ofLibrary = isControlProperty(property) ? atLoad : lookedUp();
            ASSERT_EQ(ofLibrary.count(fullName(property)), 1U) << property.shortName;
            SysPropBase& library = *ofLibrary[fullName(property)];
            EXPECT_EQ(defaultText(property), libraryText(property.type, library)) << property.shortName;
            ofLibrary.erase(fullName(property));
        }
    }
    EXPECT_THAT(atLoad, testing::IsEmpty());
    EXPECT_THAT(lookedUp(), testing::IsEmpty());
    EXPECT_EQ(GENERATION_NAME, WidgetsSettings::propToWatchName);
    EXPECT_NE(findProperty(GENERATION_NAME), nullptr);
}

}  // namespace
}  // namespace control
