#include "CountedLoop.h"
#include "NullFactory.h"
#include "core/HWcounterThread.h"
#include "core/RenderingApiType.h"
#include "core/SysPropWatcher.h"
#include "drawers/FixedGraphicDrawer.h"
#include "drawers/GraphicDrawer.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"
#include "scene/Scene.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

constexpr auto API = static_cast<core::RenderingApiType>(0);

/// Shows the three widgets with graphs and texts, with everything in them switched on, and hides the others.
void showFiguresOnly() {
    gui::WidgetsSettings::Widgets& widgets = gui::WidgetsSettings::getWidgets();
    for (SysProp<bool>* const property : {&widgets.mFps.mWidget, &widgets.mCpuGpu.mWidget,
                                          &widgets.mCpuGpu.mGpuFreq.mEnabled, &widgets.mMemory.mWidget}) {
        property->mValue = true;
    }
    widgets.mGpuActivity.mWidget.mValue = false;
    gui::WidgetsSettings::wasChanged = true;
    gui::LayoutManager::getInstance()->updateConfig();
}

void FullFrame(benchmark::State& state) {
    showFiguresOnly();
    bench::NullFactory factory;
    scene::Scene scene(factory, API, nullptr, nullptr);
    scene.layout();
    // A graph is drawn only once it has a sample, and not every machine can read every figure.
    for (drawer::Drawer* const drawer : scene.drawers()) {
        if (auto* const graph = dynamic_cast<drawer::GraphicDrawer*>(drawer)) {
            for (int i = 1; i <= 100; ++i) {
                graph->addValue(static_cast<float>(i));
            }
        }
    }
    scene.draw();
    factory.drawn = {};
    scene.draw();
    const bench::NullFactory::Drawn drawn = factory.drawn;
    // One graph of the frame rate, three of CPU and GPU, five of memory; a text for each and two more.
    if (drawn.meshes < 18 || drawn.texts < 11 || drawn.glyphs < 40) {
        state.SkipWithError("not everything is drawn");
        return;
    }
    bench::countedLoop(state, [&scene] { scene.draw(); });
    state.counters["glyphs"] = static_cast<double>(drawn.glyphs);
    state.counters["texts"] = static_cast<double>(drawn.texts);
}

std::vector<std::unique_ptr<drawer::GraphicDrawer>> makeGraphs(bench::NullFactory& factory,
                                                               std::size_t count) {
    std::vector<std::unique_ptr<drawer::GraphicDrawer>> graphs;
    for (std::size_t i = 0; i < count; ++i) {
        graphs.push_back(std::make_unique<drawer::GraphicDrawer>(
            100, factory.createMesh(scene::Topology::TRIANGLE_STRIP),
            factory.createMesh(scene::Topology::LINE_STRIP), factory.createRect(),
            factory.createGrid(factory.createMesh(scene::Topology::LINES)), gui::WidgetValueType::NONE));
        graphs.back()->mSize = {0.2F, 0.1F};
    }
    return graphs;
}

/// Only the graphs, each with its own background and grid, and a new value in each.
void FullFrameGraphs(benchmark::State& state) {
    bench::NullFactory factory;
    const auto graphs = makeGraphs(factory, 9);
    float value = 0.0F;
    bench::countedLoop(state, [&] {
        for (const auto& graph : graphs) {
            graph->addValue(value += 1.0F);
            graph->draw();
        }
    });
}

void SetData(benchmark::State& state) {
    bench::NullFactory factory;
    std::vector<core::ShaderActivity> samples;
    for (int i = 0; i < 2000; ++i) {
        samples.push_back({i * 0.0005, static_cast<float>(i % 100) * 0.01F});
    }
    drawer::FixedGraphicDrawer graph(factory.createMesh(scene::Topology::TRIANGLE_STRIP),
                                     factory.createMesh(scene::Topology::LINE_STRIP), factory.createRect(),
                                     factory.createGrid(factory.createMesh(scene::Topology::LINES)), samples,
                                     0.0L, 1.0L);
    bench::countedLoop(state, [&] {
        graph.setData(samples, 0.0L, 1.0L);
        benchmark::DoNotOptimize(graph.mLineMesh->mVertices.data());
    });
}

BENCHMARK(FullFrame);
BENCHMARK(FullFrameGraphs);
BENCHMARK(SetData);

}  // namespace
