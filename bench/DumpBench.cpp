#include "CountedLoop.h"
#include "NullFactory.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "drawers/GraphicDrawer.h"
#include "gui/FrameData.h"
#include "gui/WidgetsSettings.h"
#include "scene/RenderPassRows.h"

#include <benchmark/benchmark.h>
#include <ostra/Ostra.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace {

gui::FrameData makeFrame(unsigned id) {
    gui::FrameData frame(id, {});
    for (unsigned i = 0; i < 20; ++i) {
        gui::RenderPassData pass(0.0F, {i, i * 100U});
        pass.addTimestampInfo(i, i + 0.5L);
        frame.addRenderPassInfo(pass);
    }
    frame.addFrameTimeInfo(0.0L, 20.0L);
    return frame;
}

/// What the post-swap hook does while a dump runs: it fills a record through every drawer and hands it to the
/// companion library, which really writes the files. Every record has a frame of 20 passes.
void DumpRecord(benchmark::State& state) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("kordanix-bench-dump-" + std::to_string(getpid()));
    setenv("KORDANIX_DUMP_DIR", folder.c_str(), 1);
    bench::NullFactory factory;
    std::vector<std::unique_ptr<drawer::Drawer>> owned;
    std::vector<drawer::Drawer*> drawers;
    for (int slot = 0; slot < 11; ++slot) {
        auto graph = std::make_unique<drawer::GraphicDrawer>(
            100, factory.createMesh(scene::Topology::TRIANGLE_STRIP),
            factory.createMesh(scene::Topology::LINE_STRIP), factory.createRect(),
            factory.createGrid(factory.createMesh(scene::Topology::LINES)),
            static_cast<gui::WidgetValueType>(slot));
        graph->addValue(59.94F);
        owned.push_back(std::move(graph));
    }
    auto cells = std::make_unique<scene::PassCellsRow>(factory);
    scene::PassCellsRow& row = *cells;
    owned.push_back(std::move(cells));
    for (const auto& drawer : owned) {
        drawers.push_back(drawer.get());
    }
    row.addFrameInfo(makeFrame(7));
    Ostra::startDumping(gui::gWidgetsMeta);
    core::StateInfo::mIsDumpingEnabled = true;
    bench::countedLoop(state, [&] {
        row.mLastDumpedFrameId = 0;  // makes the row's passes new again
        core::StateInfo::onPostSwapBuffers(drawers);
    });
    core::StateInfo::mIsDumpingEnabled = false;
    Ostra::finishDumping();
    if (!std::filesystem::exists(folder) || std::filesystem::is_empty(folder)) {
        state.SkipWithError("nothing was dumped");
    }
    std::error_code error;
    std::filesystem::remove_all(folder, error);
}

// As many as can wait for the disk: none is dropped, which would be cheaper.
BENCHMARK(DumpRecord)->Iterations(500);

}  // namespace
