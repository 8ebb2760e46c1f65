#include "CountedLoop.h"
#include "NullFactory.h"
#include "gui/FrameData.h"
#include "scene/RenderPassRows.h"

#include <benchmark/benchmark.h>

namespace {

constexpr unsigned PASSES = 20;

/// Twenty passes with three values each, one after the other in a frame of 16 ms.
gui::FrameData makeFrame() {
    gui::FrameData frame(1, {});
    for (unsigned i = 0; i < PASSES; ++i) {
        gui::RenderPassData pass(0.0F, {i * 7U, 1200U + i, 45U});
        pass.setIndex(i);
        pass.addTimestampInfo(i * 0.8L, i * 0.8L + 0.7L);
        frame.addRenderPassInfo(pass);
    }
    frame.addFrameTimeInfo(0.0L, 16.0L);
    return frame;
}

void RenderPassRows(benchmark::State& state) {
    bench::NullFactory factory;
    scene::PassCellsRow cells(factory);
    scene::PassTimeline timeline(factory);
    const gui::FrameData frame = makeFrame();
    cells.mSize = timeline.mSize = {0.9F, 0.04F};
    cells.addFrameInfo(frame);
    timeline.addFrameInfo(frame);
    cells.draw();
    if (cells.mTextblocks.size() != PASSES || factory.drawn.glyphs == 0) {
        state.SkipWithError("the rows are not drawn");
        return;
    }
    bench::countedLoop(state, [&] {
        cells.draw();
        timeline.draw();
    });
}

void MarqueeStep(benchmark::State& state) {
    bench::NullFactory factory;
    scene::PassCellsRow cells(factory);
    cells.mSize = {0.9F, 0.04F};
    cells.mMarqueeCycles = 0xFFFFFFFF;
    cells.addFrameInfo(makeFrame());
    cells.measureWidgets();
    bench::countedLoop(state, [&cells] { cells.animateMarquee(); });
}

BENCHMARK(RenderPassRows);
BENCHMARK(MarqueeStep);

}  // namespace
