#include "settings/PropertyTable.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <vector>

namespace control {

namespace {

constexpr std::uint32_t OFF = 0;
constexpr std::uint32_t ON = 1;
constexpr std::uint32_t BLACK = 0xFF000000;
constexpr std::uint32_t BLUE = 0xFF0084FF;
constexpr std::uint32_t ORANGE = 0xFFFF7200;
constexpr std::uint32_t YELLOW = 0xFFFFFF00;
constexpr std::uint32_t RED = 0xFFFF0000;
constexpr std::uint32_t GREEN = 0xFF00FF00;

constexpr auto BOOLEAN = PropertyType::BOOLEAN;
constexpr auto POSITION = PropertyType::POSITION;
constexpr auto COLOR = PropertyType::COLOR;

constexpr Property TABLE[] = {
    {"status", BOOLEAN, OFF, "master switch of the overlay"},
    {"devmode", BOOLEAN, OFF, "developer mode: the keys start dumps and captures"},
    {"fixclock", BOOLEAN, OFF, "fix the CPU and GPU clocks while the overlay runs"},
    {"api", PropertyType::API, 0, "number of the graphics API whose layer shows the overlay"},
    {"proc", PropertyType::TEXT, 0, "process that shows the overlay: its command line's first word"},

    {"bg_color", COLOR, BLACK, "background of the widgets"},
    {"bg_transparency", PropertyType::OPACITY, 128, "opacity of the background: 0 clear, 255 opaque"},

    {"widget_fps", BOOLEAN, ON, "frame-rate widget"},
    {"widget_fps_position", POSITION, 0, "its place"},
    {"widget_fps_current", BOOLEAN, ON, "current frame rate"},
    {"widget_fps_current_color", COLOR, BLUE, "its colour"},
    {"widget_fps_median", BOOLEAN, ON, "median frame rate"},
    {"widget_fps_median_color", COLOR, ORANGE, "its colour"},
    {"widget_fps_stability", BOOLEAN, ON, "frame-rate stability"},
    {"widget_fps_stability_color", COLOR, YELLOW, "its colour"},

    {"widget_cpu_gpu", BOOLEAN, ON, "CPU/GPU widget"},
    {"widget_cpu_gpu_position", POSITION, 2, "its place"},
    {"widget_cpu_gpu_cpu_load", BOOLEAN, ON, "CPU load"},
    {"widget_cpu_gpu_cpu_load_color", COLOR, BLUE, "its colour"},
    {"widget_cpu_gpu_gpu_freq", BOOLEAN, OFF, "GPU frequency"},
    {"widget_cpu_gpu_gpu_freq_color", COLOR, YELLOW, "its colour"},
    {"widget_cpu_gpu_gpu_load", BOOLEAN, ON, "GPU load"},
    {"widget_cpu_gpu_gpu_load_color", COLOR, ORANGE, "its colour"},

    {"widget_gpu_activity", BOOLEAN, ON, "GPU-activity widget"},
    {"widget_gpu_activity_position", POSITION, 6, "its place"},
    {"widget_gpu_activity_fragment_load", BOOLEAN, ON, "load of the fragment shaders"},
    {"widget_gpu_activity_fragment_load_color", COLOR, ORANGE, "its colour"},
    {"widget_gpu_activity_vertex_load", BOOLEAN, ON, "load of the vertex shaders"},
    {"widget_gpu_activity_vertex_load_color", COLOR, BLUE, "its colour"},
    {"widget_gpu_activity_renderpass", BOOLEAN, ON, "render passes"},
    {"widget_gpu_activity_thumbnail", BOOLEAN, ON, "thumbnail of the application's picture"},
    {"widget_gpu_activity_thumbnail_position", POSITION, 5, "its place"},

    {"widget_memory", BOOLEAN, OFF, "memory widget"},
    {"widget_memory_position", POSITION, 1, "its place"},
    {"widget_memory_pss", BOOLEAN, ON, "proportional set size of the process"},
    {"widget_memory_pss_color", COLOR, BLUE, "its colour"},
    {"widget_memory_gpu_total", BOOLEAN, ON, "GPU memory in total"},
    {"widget_memory_gpu_total_color", COLOR, YELLOW, "its colour"},
    {"widget_memory_gpu_surface", BOOLEAN, ON, "GPU memory of surfaces"},
    {"widget_memory_gpu_surface_color", COLOR, ORANGE, "its colour"},
    {"widget_memory_gpu_texture", BOOLEAN, ON, "GPU memory of textures"},
    {"widget_memory_gpu_texture_color", COLOR, RED, "its colour"},
    {"widget_memory_sys_free", BOOLEAN, ON, "free memory of the system"},
    {"widget_memory_sys_free_color", COLOR, GREEN, "its colour"},

    {"settingsgeneration", PropertyType::GENERATION, 0, "writing it publishes all the others"},
};

/// The first rows of the table.
constexpr std::ptrdiff_t CONTROL_PROPERTIES = 5;

std::string_view withoutPrefix(std::string_view name) {
    return name.substr(0, PREFIX.size()) == PREFIX ? name.substr(PREFIX.size()) : name;
}

/// How many letters must be inserted, removed or exchanged to make one text of the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t exchanged = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

PropertyRows properties() {
    return {TABLE, std::size(TABLE)};
}

bool isControlProperty(const Property& property) {
    return &property - TABLE < CONTROL_PROPERTIES;
}

std::string fullName(const Property& property) {
    return std::string(PREFIX).append(property.shortName);
}

std::string defaultText(const Property& property) {
    switch (property.type) {
        case PropertyType::BOOLEAN:
            return property.defaultValue != OFF ? "true" : "false";
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
    const std::string_view wanted = withoutPrefix(name);
    // A quarter of the letters may be wrong, and always two.
    std::size_t smallest = std::max<std::size_t>(2, wanted.size() / 4) + 1;
    const Property* nearest = nullptr;
    for (const Property& row : properties()) {
        const std::size_t distance = editDistance(wanted, row.shortName);
        if (distance < smallest) {
            smallest = distance;
            nearest = &row;
        }
    }
    return nearest == nullptr ? "see 'kordanixctl list'"
                              : "did you mean '" + std::string(nearest->shortName) + "'?";
}

std::string expandName(std::string_view name) {
    return name.find('.') == std::string_view::npos ? std::string(PREFIX).append(name) : std::string(name);
}

}  // namespace control
