// Publications of widget settings with any texts, and the layouts that follow.

#include "ByteReader.h"
#include "Check.h"
#include "CheckedPrimitives.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeProperties.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"

#include <cstdint>
#include <string>
#include <vector>

namespace {

using Widgets = gui::WidgetsSettings::Widgets;

std::vector<const gui::WidgetsSettings::Graph*> graphsOf(const Widgets& all) {
    return {&all.mFps.mCurrent,
            &all.mFps.mMedian,
            &all.mFps.mStability,
            &all.mCpuGpu.mCpuLoad,
            &all.mCpuGpu.mGpuFreq,
            &all.mCpuGpu.mGpuLoad,
            &all.mMemory.mPss,
            &all.mMemory.mGpuTotal,
            &all.mMemory.mGpuSurface,
            &all.mMemory.mSysFree,
            &all.mMemory.mGpuTexture,
            &all.mGpuActivity.mFragmentLoad,
            &all.mGpuActivity.mVertexLoad};
}

std::vector<const SysPropBase*> propertiesOf(const Widgets& all) {
    std::vector<const SysPropBase*> properties = {
        &all.mFps.mPosition,           &all.mCpuGpu.mPosition,
        &all.mGpuActivity.mPosition,   &all.mGpuActivity.mThumbnailPosition,
        &all.mMemory.mPosition,        &all.mFps.mWidget,
        &all.mCpuGpu.mWidget,          &all.mGpuActivity.mWidget,
        &all.mGpuActivity.mRenderpass, &all.mGpuActivity.mThumbnail,
        &all.mMemory.mWidget,          &all.mBgColor,
        &all.mBgTransparency};
    for (const gui::WidgetsSettings::Graph* const graph : graphsOf(all)) {
        properties.push_back(&graph->mEnabled);
        properties.push_back(&graph->mColor);
    }
    return properties;
}

bool isColor(const glm::vec4& color) {
    for (int i = 0; i < 4; ++i) {
        if (!(color[i] >= 0.0F && color[i] <= 1.0F)) {
            return false;
        }
    }
    return true;
}

void checkLayout(gui::LayoutManager& manager) {
    constexpr float ROUNDING = 1e-5F;
    for (std::uint32_t i = 0; i < 5; ++i) {
        gui::Widget* const widget = manager.getWidget(static_cast<gui::WidgetType>(i));
        const glm::vec4& rect = widget->mRect;
        FUZZ_CHECK(rect.z > 0.0F && rect.z <= 1.0F && rect.w > 0.0F && rect.w <= 1.0F);
        FUZZ_CHECK(rect.x >= -ROUNDING && rect.x + rect.z <= 1.0F + ROUNDING);
        FUZZ_CHECK(rect.y >= -ROUNDING && rect.y + rect.w <= 1.0F + ROUNDING);
        for (std::uint32_t area = 0; area <= 46; ++area) {
            fuzz::CheckedRect drawer;
            drawer.mRenderArea = static_cast<gui::RenderAreaType>(area);
            drawer.mWidget = widget;
            manager.updateDrawerLayout(&drawer);
            drawer.draw();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Widgets& all = gui::WidgetsSettings::getWidgets();
    static const std::vector<const SysPropBase*> properties = propertiesOf(all);
    static gui::LayoutManager& manager = *gui::LayoutManager::getInstance();
    // Starts no watcher thread: the target publishes by itself.
    gui::WidgetsSettings::isInited = true;

    for (const SysPropBase* const property : properties) {
        doubles::setProperty(property->mName, {});
    }
    fuzz::ByteReader reader(data, size);
    do {
        const std::uint32_t writes = reader.upTo(31);
        for (std::uint32_t i = 0; i < writes; ++i) {
            const auto last = static_cast<std::uint32_t>(properties.size() - 1);
            const std::string& name = properties[reader.upTo(last)]->mName;
            switch (reader.upTo(3)) {
                case 0:
                    doubles::setProperty(name, reader.flag() ? "true" : "false");
                    break;
                case 1:
                    doubles::setProperty(name, std::to_string(reader.upTo(8)));
                    break;
                default:
                    doubles::setProperty(name, reader.text(24));
            }
        }
        SysPropWatcher::forceReadAllProps();
        gui::WidgetsSettings::wasChanged = true;
        FUZZ_CHECK(manager.updateConfig());
        FUZZ_CHECK(!manager.updateConfig());
        // A layout changes positions that do not fit, so the order of the two orientations matters.
        const bool isPortraitFirst = reader.flag();
        for (const bool isPortrait : {isPortraitFirst, !isPortraitFirst, isPortraitFirst}) {
            manager.updateWidgetsLayouts(isPortrait);
            checkLayout(manager);
        }
        FUZZ_CHECK(isColor(all.bgColor()));
        for (const gui::WidgetsSettings::Graph* const graph : graphsOf(all)) {
            FUZZ_CHECK(isColor(graph->getTextColor()));
            FUZZ_CHECK(isColor(graph->getGraphColor(1 + reader.upTo(8))));
        }
    } while (!reader.isEmpty());
    return 0;
}
