#include "settings/PropertyTable.h"

#include "figures/Catalogue.h"
#include "settings/NearestName.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <vector>

namespace control {

namespace {

constexpr std::uint32_t OFF = 0;
constexpr std::uint32_t ON = 1;
constexpr std::uint32_t BLACK = 0xFF000000;
constexpr std::uint32_t BLUE = 0xFF0084FF;
constexpr std::uint32_t ORANGE = 0xFFFF7200;
constexpr std::uint32_t DARK_GREEN = 0xFF00B300;

constexpr auto BOOLEAN = PropertyType::BOOLEAN;
constexpr auto POSITION = PropertyType::POSITION;
constexpr auto COLOR = PropertyType::COLOR;

constexpr Property CONTROLS[] = {
    {"status", BOOLEAN, OFF, "master switch of the overlay"},
    {"devmode", BOOLEAN, OFF, "developer mode: the keys start dumps and captures"},
    {"fixclock", BOOLEAN, OFF, "fix the CPU and GPU clocks while the overlay runs"},
    {"api", PropertyType::API, 0, "number of the graphics API whose layer shows the overlay"},
    {"proc", PropertyType::TEXT, 0, "process that shows the overlay: its command line's first word"},
};

constexpr Property BACKGROUND[] = {
    {"bg_color", COLOR, BLACK, "background of the widgets"},
    {"bg_transparency", PropertyType::OPACITY, 128, "opacity of the background: 0 clear, 255 opaque"},
    {"scale", PropertyType::SCALE, 0, "size of the widgets: 0.5 half, 1.8 nearly double"},
    {"renderthread", BOOLEAN, OFF, "on Android: also over what the UI toolkit draws, on its RenderThread"},
    {"graphs", BOOLEAN, ON, "graphs and notes below the figures; without them a widget is one line"},
    {"fit_width", BOOLEAN, OFF, "widgets as wide as their figures' texts"},
    {"hide_unreadable", BOOLEAN, OFF, "leave out what cannot be read, even if it was switched on"},
};

// The widgets' own properties. Those of their figures come after them, from the catalogue.
constexpr Property FPS[] = {
    {"widget_fps", BOOLEAN, ON, "frame-rate widget"},
    {"widget_fps_position", POSITION, 0, "its place"},
};

constexpr Property CPU_GPU[] = {
    {"widget_cpu_gpu", BOOLEAN, ON, "CPU/GPU widget"},
    {"widget_cpu_gpu_position", POSITION, 2, "its place"},
};

constexpr Property GPU_ACTIVITY[] = {
    {"widget_gpu_activity", BOOLEAN, ON, "GPU-activity widget"},
    {"widget_gpu_activity_position", POSITION, 6, "its place"},
    {"widget_gpu_activity_fragment_load", BOOLEAN, ON, "load of the fragment shaders"},
    {"widget_gpu_activity_fragment_load_color", COLOR, ORANGE, "its colour"},
    {"widget_gpu_activity_vertex_load", BOOLEAN, ON, "load of the vertex shaders"},
    {"widget_gpu_activity_vertex_load_color", COLOR, BLUE, "its colour"},
    {"widget_gpu_activity_renderpass", BOOLEAN, ON, "render passes"},
    {"widget_gpu_activity_thumbnail", BOOLEAN, ON, "thumbnail of the application's picture"},
    {"widget_gpu_activity_thumbnail_position", POSITION, 5, "its place"},
};

constexpr Property FRAME_TIME[] = {
    {"widget_frame_time", BOOLEAN, ON, "frame times, where a device has no counters of its GPU's activity"},
    {"screen_rate", PropertyType::TEXT, 0,
     "their upper line, in frames a second; 'run' asks X for the screen's"},
    {"widget_frame_time_swap", BOOLEAN, ON, "their part that is spent in the swap"},
    {"widget_frame_time_swap_color", COLOR, BLUE, "its colour"},
    {"widget_frame_time_gpu", BOOLEAN, ON, "their part in which the GPU works"},
    {"widget_frame_time_gpu_color", COLOR, ORANGE, "its colour"},
    {"widget_frame_time_cpu", BOOLEAN, ON, "the rest of them"},
    {"widget_frame_time_cpu_color", COLOR, DARK_GREEN, "its colour"},
};

constexpr Property MEMORY[] = {
    {"widget_memory", BOOLEAN, OFF, "memory widget"},
    {"widget_memory_position", POSITION, 1, "its place"},
};

constexpr Property KEYS[] = {
    {"keys", BOOLEAN, ON, "keys in the program's windows on X11, if 'run' starts with them"},
    {KEY_NAMES[0], PropertyType::KEY, 0, "the key that hides the overlay and shows it again"},
    {KEY_NAMES[1], PropertyType::KEY, 1, "the key for the next preset"},
    {KEY_NAMES[2], PropertyType::KEY, 2, "the key that starts a log and ends it"},
    {KEY_NAMES[3], PropertyType::KEY, 3, "the key that saves a picture"},
};

constexpr const char* DEFAULT_KEYS[] = {"Shift_R+F12", "Shift_R+F10", "Shift_L+F2", "Shift_R+F9"};

constexpr Property GENERATION[] = {
    {"settingsgeneration", PropertyType::GENERATION, 0, "writing it publishes all the others"},
};

class Table {
public:
    Table() {
        add(CONTROLS);
        add(BACKGROUND);
        add(FPS);
        addFigures(gui::WidgetType::FPS);
        add(CPU_GPU);
        addFigures(gui::WidgetType::CPU_GPU);
        add(GPU_ACTIVITY);
        add(FRAME_TIME);
        add(MEMORY);
        addFigures(gui::WidgetType::MEMORY);
        add(KEYS);
        add(GENERATION);
    }

    std::vector<Property> mRows;

private:
    template <std::size_t COUNT>
    void add(const Property (&rows)[COUNT]) {
        mRows.insert(mRows.end(), std::begin(rows), std::end(rows));
    }

    void addFigures(gui::WidgetType widget) {
        for (const figures::Figure& figure : figures::catalogue()) {
            if (figure.widget == widget && !figure.isNote()) {
                const figures::Figure::Settings& settings = figure.settings;
                mRows.push_back({settings.property, BOOLEAN, settings.isOnByDefault ? ON : OFF, figure.name});
                mColorNames.push_back(std::string(settings.property) + "_color");
                mRows.push_back({mColorNames.back(), COLOR, settings.color, "its colour"});
            }
        }
    }

    std::deque<std::string> mColorNames;  // a deque, so that the strings never move
};

const std::vector<Property>& table() {
    static const auto* const instance = new Table;
    return instance->mRows;
}

std::string_view withoutPrefix(std::string_view name) {
    return name.substr(0, PREFIX.size()) == PREFIX ? name.substr(PREFIX.size()) : name;
}

}  // namespace

PropertyRows properties() {
    return {table().data(), table().size()};
}

bool isControlProperty(const Property& property) {
    return static_cast<std::size_t>(&property - table().data()) < std::size(CONTROLS);
}

std::string fullName(const Property& property) {
    return std::string(PREFIX).append(property.shortName);
}

std::string defaultText(const Property& property) {
    switch (property.type) {
        case PropertyType::BOOLEAN:
            return property.defaultValue != OFF ? "true" : "false";
        case PropertyType::SCALE:
            return "1";
        case PropertyType::KEY:
            return DEFAULT_KEYS[property.defaultValue];
        case PropertyType::TEXT:
        case PropertyType::GENERATION:
            return {};
        default:
            return std::to_string(property.defaultValue);
    }
}

const Property* findProperty(std::string_view name) {
    const PropertyRows rows = properties();
    const auto* const found = std::find_if(
        rows.begin(), rows.end(), [&](const Property& row) { return row.shortName == withoutPrefix(name); });
    return found == rows.end() ? nullptr : found;
}

std::string hintFor(std::string_view name) {
    NearestName nearest(withoutPrefix(name));
    for (const Property& row : properties()) {
        nearest.offer(row.shortName);
    }
    return nearest.hint("see 'kordanixctl list'");
}

std::string expandName(std::string_view name) {
    return name.find('.') == std::string_view::npos ? std::string(PREFIX).append(name) : std::string(name);
}

}  // namespace control
