#include "gui/WidgetsSettings.h"

#include "utils/Time.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <type_traits>

namespace gui {
namespace {

using Position = WidgetsSettings::Position;

constexpr std::uint32_t BLACK = 0xFF000000;
constexpr std::uint32_t BLUE = 0xFF0084FF;
constexpr std::uint32_t GREEN = 0xFF00FF00;
constexpr std::uint32_t ORANGE = 0xFFFF7200;
constexpr std::uint32_t RED = 0xFFFF0000;
constexpr std::uint32_t YELLOW = 0xFFFFFF00;

constexpr int DEFAULT_TRANSPARENCY = 128;
/// How often the watcher looks for the generation property until it exists, and how often we try again to
/// start a watcher.
constexpr std::chrono::milliseconds WATCHER_PERIOD(1000);

// What load() has not managed to start yet. Rendering thread only.
bool gNeedsListener = false;
bool gNeedsWatcher = false;
std::uint32_t gLastRequestMs = 0;

SysProp<bool>& createSwitch(const char* name, bool defaultValue) {
    return SysPropWatcher::createSysProp<bool>(name, defaultValue);
}

SysProp<int>& createColor(const std::string& name, std::uint32_t defaultValue) {
    return SysPropWatcher::createSysProp<int>(name, static_cast<int>(defaultValue));
}

SysProp<Position>& createPosition(const char* name, Position defaultValue) {
    return SysPropWatcher::createSysProp<Position>(name, defaultValue);
}

glm::vec4 toColor(int value, float alpha) {
    const auto argb = static_cast<std::uint32_t>(value);
    const auto component = [argb](unsigned int shift) {
        return static_cast<float>((argb >> shift) & 255U) / 255.0F;
    };
    return {component(16), component(8), component(0), alpha};
}

void startWatching() {
    gLastRequestMs = utils::getUtcTime_msec();
    if (gNeedsListener) {
        // Release: whoever sees the flag also sees the values that the watcher read before it ran its
        // listeners.
        SysPropWatcher::addPropChangedListener(
            [] { WidgetsSettings::wasChanged.store(true, std::memory_order_release); });
        gNeedsListener = false;
    }
    SysPropWatcher::init(WidgetsSettings::propToWatchName, WATCHER_PERIOD);
    gNeedsWatcher = false;
}

void askForWatcherAgain() {
    if (utils::getUtcTime_msec() - gLastRequestMs < WATCHER_PERIOD.count()) {
        return;
    }
    try {
        startWatching();
    } catch (const std::exception&) {
        // The first call has told the caller. Frames go on with the current settings.
    }
}

}  // namespace

bool WidgetsSettings::isInited = false;
std::atomic<bool> WidgetsSettings::wasChanged{true};

WidgetsSettings::Graph::Graph(const std::string& name, bool enabledByDefault, std::uint32_t defaultColor)
    : mEnabled(createSwitch(name.c_str(), enabledByDefault)),
      mColor(createColor(name + "_color", defaultColor)) {}

glm::vec4 WidgetsSettings::Graph::getTextColor() const {
    return getGraphColor(1);
}

glm::vec4 WidgetsSettings::Graph::getGraphColor(std::uint32_t count) const {
    if (!mEnabled.getValue()) {
        return glm::vec4(0.0F);
    }
    return toColor(mColor.getValue(), 1.0F / static_cast<float>(count));
}

WidgetsSettings::Widgets::Fps::Fps()
    : mWidget(createSwitch("debug.kordanix.widget_fps", true)),
      mPosition(createPosition("debug.kordanix.widget_fps_position", Position::TOP_LEFT)),
      mCurrent("debug.kordanix.widget_fps_current", true, BLUE),
      mMedian("debug.kordanix.widget_fps_median", true, ORANGE),
      mStability("debug.kordanix.widget_fps_stability", true, YELLOW) {}

bool WidgetsSettings::Widgets::Fps::enabled() const {
    return mWidget.getValue() &&
           (mCurrent.mEnabled.getValue() || mMedian.mEnabled.getValue() || mStability.mEnabled.getValue());
}

WidgetsSettings::Widgets::CpuGpu::CpuGpu()
    : mWidget(createSwitch("debug.kordanix.widget_cpu_gpu", true)),
      mPosition(createPosition("debug.kordanix.widget_cpu_gpu_position", Position::TOP_RIGHT)),
      mCpuLoad("debug.kordanix.widget_cpu_gpu_cpu_load", true, BLUE),
      mGpuFreq("debug.kordanix.widget_cpu_gpu_gpu_freq", false, YELLOW),
      mGpuLoad("debug.kordanix.widget_cpu_gpu_gpu_load", true, ORANGE) {}

bool WidgetsSettings::Widgets::CpuGpu::enabled() const {
    return mWidget.getValue() &&
           (mCpuLoad.mEnabled.getValue() || mGpuFreq.mEnabled.getValue() || mGpuLoad.mEnabled.getValue());
}

WidgetsSettings::Widgets::GpuActivity::GpuActivity()
    : mWidget(createSwitch("debug.kordanix.widget_gpu_activity", true)),
      mPosition(createPosition("debug.kordanix.widget_gpu_activity_position", Position::BOTTOM_CENTER)),
      mFragmentLoad("debug.kordanix.widget_gpu_activity_fragment_load", true, ORANGE),
      mVertexLoad("debug.kordanix.widget_gpu_activity_vertex_load", true, BLUE),
      mRenderpass(createSwitch("debug.kordanix.widget_gpu_activity_renderpass", true)),
      mThumbnail(createSwitch("debug.kordanix.widget_gpu_activity_thumbnail", true)),
      mThumbnailPosition(
          createPosition("debug.kordanix.widget_gpu_activity_thumbnail_position", Position::BOTTOM_LEFT)) {}

bool WidgetsSettings::Widgets::GpuActivity::enabled() const {
    return mWidget.getValue() && (mFragmentLoad.mEnabled.getValue() || mVertexLoad.mEnabled.getValue() ||
                                  mRenderpass.getValue() || mThumbnail.getValue());
}

bool WidgetsSettings::Widgets::GpuActivity::thumbnailEnabled() const {
    return mWidget.getValue() && mThumbnail.getValue();
}

WidgetsSettings::Widgets::Memory::Memory()
    : mWidget(createSwitch("debug.kordanix.widget_memory", false)),
      mPosition(createPosition("debug.kordanix.widget_memory_position", Position::TOP_CENTER)),
      mPss("debug.kordanix.widget_memory_pss", true, BLUE),
      mGpuTotal("debug.kordanix.widget_memory_gpu_total", true, YELLOW),
      mGpuSurface("debug.kordanix.widget_memory_gpu_surface", true, ORANGE),
      mGpuTexture("debug.kordanix.widget_memory_gpu_texture", true, RED),
      mSysFree("debug.kordanix.widget_memory_sys_free", true, GREEN) {}

bool WidgetsSettings::Widgets::Memory::enabled() const {
    return mWidget.getValue() &&
           (mPss.mEnabled.getValue() || mGpuTotal.mEnabled.getValue() || mGpuSurface.mEnabled.getValue() ||
            mGpuTexture.mEnabled.getValue() || mSysFree.mEnabled.getValue());
}

WidgetsSettings::Widgets::Widgets()
    : mBgColor(createColor("debug.kordanix.bg_color", BLACK)),
      mBgTransparency(
          SysPropWatcher::createSysProp<int>("debug.kordanix.bg_transparency", DEFAULT_TRANSPARENCY)) {}

glm::vec4 WidgetsSettings::Widgets::bgColor() const {
    // A negative number becomes a large unsigned one, which means opaque.
    const auto opacity = static_cast<float>(static_cast<std::uint32_t>(mBgTransparency.getValue()));
    return toColor(mBgColor.getValue(), std::min(opacity / 255.0F, 1.0F));
}

bool WidgetsSettings::load() {
    if (!isInited) {
        isInited = true;
        gNeedsListener = true;
        gNeedsWatcher = true;
        startWatching();
    } else if (gNeedsWatcher) {
        askForWatcherAgain();
    }
    // Almost every frame finds the flag clear; a plain load then avoids the locked instruction of the
    // exchange.
    return wasChanged.load(std::memory_order_relaxed) &&
           wasChanged.exchange(false, std::memory_order_acquire);
}

WidgetsSettings::Widgets& WidgetsSettings::getWidgets() {
    static Widgets widgets;
    // A thread may still call this while the process exits, so nothing may be destroyed.
    static_assert(std::is_trivially_destructible_v<Widgets>);
    return widgets;
}

namespace {

enum Encoding : std::uint32_t { WHOLE = 0, FRACTION = 1, BYTES = 2 };

std::vector<Ostra::DumpWidgetMeta>* makeWidgetsMeta() {
    static constexpr struct {
        const char* name;
        Encoding valueType;
        std::uint32_t flag;
    } ROWS[] = {
        {"Fps", FRACTION, 1},        {"FpsMedian", FRACTION, 0},          {"FpsStability(%)", FRACTION, 0},
        {"CpuLoad(%)", FRACTION, 1}, {"GpuLoad(%)", FRACTION, 1},         {"GpuFreq(MHz)", WHOLE, 1},
        {"MemPss(Bytes)", BYTES, 1}, {"MemGpu(Bytes)", BYTES, 1},         {"MemSurf(Bytes)", BYTES, 1},
        {"MemTex(Bytes)", BYTES, 1}, {"MemSysFreeHeap(Bytes)", BYTES, 1},
    };
    auto* const metas = new std::vector<Ostra::DumpWidgetMeta>;
    for (const auto& row : ROWS) {
        metas->push_back({android::String8(row.name), row.valueType, row.flag});
    }
    return metas;
}

}  // namespace

// Never destroyed: a thread may dump a frame while another one ends the process.
std::vector<Ostra::DumpWidgetMeta>& gWidgetsMeta = *makeWidgetsMeta();

}  // namespace gui
