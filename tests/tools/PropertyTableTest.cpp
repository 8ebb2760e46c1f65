#include "PropertyTable.h"

#include "core/RenderingApiType.h"
#include "core/SysPropWatcher.h"
#include "gui/WidgetsSettings.h"

#include <gmock/gmock.h>
#include <sys/system_properties.h>

#include <algorithm>
#include <string>
#include <vector>

/// Every property exists, so that the library reads it; what it would be read into is kept instead.
struct prop_info {
    std::string name;
};

namespace {

struct LookedUp {
    std::string name;
    SysPropBase* property = nullptr;
};

std::vector<LookedUp>& lookedUp() {
    static auto* const instance = new std::vector<LookedUp>;
    return *instance;
}

}  // namespace

const prop_info* __system_property_find(const char* name) {
    lookedUp().push_back({name, nullptr});
    return new prop_info{name};
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*)(void* cookie, const char* name, const char* value,
                                              uint32_t serial),
                                     void* cookie) {
    const auto found = std::find_if(lookedUp().begin(), lookedUp().end(),
                                    [&](const LookedUp& entry) { return entry.name == pi->name; });
    found->property = static_cast<SysPropBase*>(cookie);
}

namespace control {
namespace {

using gui::WidgetsSettings;
using testing::ElementsAreArray;
using testing::UnorderedElementsAreArray;

/// One property in a form in which the table's and the library's can be compared.
struct Row {
    std::string name;
    std::string type;
    std::string defaultText;

    bool operator==(const Row& other) const {
        return name == other.name && type == other.type && defaultText == other.defaultText;
    }
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name << ": " << row.type << ' ' << row.defaultText;
}

Row tableRow(const Property& property) {
    const auto type = [&] {
        switch (property.type) {
            case PropertyType::BOOLEAN:
                return "bool";
            case PropertyType::POSITION:
                return "position";
            case PropertyType::API:
                return "api";
            case PropertyType::TEXT:
                return "text";
            default:
                return "int";
        }
    };
    return {fullName(property), type(), defaultText(property)};
}

template <typename T>
std::string numberText(const SysProp<T>& property) {
    return std::to_string(static_cast<std::uint32_t>(property.getValue()));
}

/// As the library made it; never having been given a text, it has its default.
Row libraryRow(const LookedUp& entry) {
    if (const auto* const boolean = dynamic_cast<SysProp<bool>*>(entry.property)) {
        return {entry.name, "bool", boolean->getValue() ? "true" : "false"};
    }
    if (const auto* const text = dynamic_cast<SysProp<std::string>*>(entry.property)) {
        return {entry.name, "text", text->getValue()};
    }
    if (const auto* const api = dynamic_cast<SysProp<core::RenderingApiType>*>(entry.property)) {
        return {entry.name, "api", numberText(*api)};
    }
    if (const auto* const position = dynamic_cast<SysProp<WidgetsSettings::Position>*>(entry.property)) {
        return {entry.name, "position", numberText(*position)};
    }
    const auto* const number = dynamic_cast<SysProp<int>*>(entry.property);
    return {entry.name, "int", number == nullptr ? "of no known type" : numberText(*number)};
}

TEST(PropertyTable, HasExactlyThePropertiesOfTheLibrary) {
    std::vector<Row> atLoad;
    for (const LookedUp& entry : lookedUp()) {
        if (entry.name != "ro.product.model") {
            atLoad.push_back(libraryRow(entry));
        }
    }
    lookedUp().clear();
    WidgetsSettings::getWidgets();
    std::vector<Row> settings;
    for (const LookedUp& entry : lookedUp()) {
        settings.push_back(libraryRow(entry));
    }

    std::vector<Row> controlRows;
    std::vector<Row> settingRows;
    for (const Property& property : properties()) {
        if (property.type == PropertyType::GENERATION) {
            EXPECT_EQ(fullName(property), WidgetsSettings::propToWatchName);
        } else {
            (isControlProperty(property) ? controlRows : settingRows).push_back(tableRow(property));
        }
    }
    EXPECT_THAT(controlRows, UnorderedElementsAreArray(atLoad));
    EXPECT_THAT(settingRows, ElementsAreArray(settings));
    EXPECT_EQ(GENERATION_NAME, WidgetsSettings::propToWatchName);
}

TEST(PropertyTable, FindsNamesAndTheNearestOfMisspeltOnes) {
    const auto nearest = [](const char* name) {
        const Property* const property = nearestProperty(name);
        return property == nullptr ? std::string_view("none") : property->shortName;
    };
    EXPECT_EQ(findProperty("widget_fps"), findProperty("debug.kordanix.widget_fps"));
    ASSERT_NE(findProperty("widget_fps"), nullptr);
    EXPECT_EQ(findProperty("widget_fps")->shortName, "widget_fps");
    EXPECT_EQ(findProperty("widget_fp"), nullptr);
    EXPECT_EQ(findProperty("debug.kordanix."), nullptr);
    EXPECT_EQ(nearest("widget_fsp_position"), "widget_fps_position");
    EXPECT_EQ(nearest("debug.kordanix.widget_memry"), "widget_memory");
    EXPECT_EQ(nearest("statsu"), "status");
    EXPECT_EQ(nearest("brightness_of_all"), "none");
    EXPECT_EQ(nearest(""), "none");
    EXPECT_EQ(expandName("widget_new"), "debug.kordanix.widget_new");
    EXPECT_EQ(expandName("ro.product.model"), "ro.product.model");
}

}  // namespace
}  // namespace control
