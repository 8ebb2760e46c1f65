// Frames of render passes with any numbers and any clock, through both widgets, the caption and a dump.

#include "ByteReader.h"
#include "Check.h"
#include "CheckedPrimitives.h"
#include "drawers/AnimatedRenderPassDrawer.h"
#include "drawers/FixedRenderPassDrawer.h"
#include "drawers/RenderPassInfoDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/FrameData.h"
#include "utils/Time.h"

#include <ostra/Ostra.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

std::uint32_t gClockMs = 0;
std::uint32_t gOrientation = 1;

std::unique_ptr<drawer::TextblockDrawer> checkedBlock(unsigned lines, unsigned hint) {
    return std::make_unique<drawer::TextblockDrawer>(fuzz::createCheckedText,
                                                     std::make_unique<fuzz::CheckedRect>(), lines, hint);
}

class Row : public drawer::AnimatedRenderPassDrawer {
public:
    std::unique_ptr<drawer::TextblockDrawer> createTextblockDrawer(unsigned lines, unsigned hint) override {
        return checkedBlock(lines, hint);
    }
    unsigned getOrientation() override { return gOrientation; }
    void onPreDrawWidgets() override {}
    void onPostDrawWidgets() override {}
};

class TimeLine : public drawer::FixedRenderPassDrawer {
public:
    std::unique_ptr<drawer::TextblockDrawer> createTextblockDrawer(unsigned lines, unsigned hint) override {
        return checkedBlock(lines, hint);
    }
    unsigned getOrientation() override { return gOrientation; }
};

class Caption : public drawer::RenderPassInfoDrawer {
public:
    Caption()
        : RenderPassInfoDrawer(fuzz::createCheckedText(), fuzz::createCheckedText(),
                               fuzz::createCheckedText(), std::make_unique<fuzz::CheckedRect>()) {}
    unsigned getOrientation() override { return gOrientation; }
};

gui::RenderPassData readPass(fuzz::ByteReader& reader) {
    gui::RenderPassData pass(reader.singleNumber(), {});
    pass.setIndex(reader.flag() ? reader.word() : reader.byte());
    for (std::uint32_t i = reader.upTo(9); i > 0; --i) {
        pass.addValue(reader.flag() ? reader.word() : reader.byte());
    }
    const double start = reader.number();
    const double end = reader.number();
    if (reader.flag()) {
        pass.addTimestampInfo(static_cast<long double>(start), static_cast<long double>(end));
    } else {
        pass.mStartTime = static_cast<long double>(start);
        pass.mEndTime = static_cast<long double>(end);
    }
    return pass;
}

/// Reads a few passes, and sometimes thousands that differ in their times.
gui::FrameData readFrame(fuzz::ByteReader& reader) {
    constexpr std::uint32_t MOST_PASSES = 5000;
    gui::FrameData frame(reader.flag() ? reader.word() : reader.byte(), {});
    const auto start = static_cast<long double>(reader.number());
    frame.addFrameTimeInfo(start, static_cast<long double>(reader.number()));
    const bool isRepeated = reader.upTo(31) == 31;
    for (std::uint32_t i = reader.upTo(8); i > 0; --i) {
        frame.addRenderPassInfo(readPass(reader));
    }
    if (isRepeated && !frame.mRenderPasses.empty()) {
        const std::size_t different = frame.mRenderPasses.size();
        const auto step = static_cast<long double>(reader.number());
        const std::size_t count = reader.upTo(MOST_PASSES);
        for (std::size_t i = different; i < count; ++i) {
            gui::RenderPassData pass = frame.mRenderPasses[i - different];
            pass.mStartTime += step;
            pass.mEndTime += step;
            frame.addRenderPassInfo(pass);
        }
    }
    return frame;
}

struct Scene {
    Row row;
    TimeLine timeLine;
    Caption caption;

    void place(fuzz::ByteReader& reader) {
        constexpr float LARGEST = 1e6F;
        const bool isOnCanvas = reader.upTo(3) != 0;
        const auto coordinate = [&] { return isOnCanvas ? reader.fraction() : reader.singleNumber(); };
        const glm::vec4 rect{coordinate(), coordinate(), coordinate(), coordinate()};
        fuzz::surface().isAnyRectangle = false;
        for (int i = 0; i < 4; ++i) {
            fuzz::surface().isAnyRectangle =
                fuzz::surface().isAnyRectangle || !(std::abs(rect[i]) <= LARGEST);
        }
        for (drawer::Drawer* const drawer :
             {static_cast<drawer::Drawer*>(&row), static_cast<drawer::Drawer*>(&timeLine),
              static_cast<drawer::Drawer*>(&caption)}) {
            drawer->mPosition = {rect.x, rect.y};
            drawer->mSize = {rect.z, rect.w};
        }
    }
};

/// A draw without a step must leave the row where it is, even if the row's width has changed.
void checkMarquee(const Row& row, bool isStepped) {
    const float furthest = std::min(2.0F * row.mSize.x - row.mTextWidth, 0.0F);
    FUZZ_CHECK(std::isfinite(row.mMarqueeOffset));
    FUZZ_CHECK(row.mMarqueeOffset <= 0.0F);
    FUZZ_CHECK(!isStepped || std::isnan(furthest) || row.mMarqueeOffset >= furthest);
}

bool hasCyclesLeft(const Row& row) {
    return row.mMarqueeCyclesDone < row.mMarqueeCycles;
}

void drawRow(Row& row) {
    const bool isStepped = hasCyclesLeft(row);
    row.draw();
    FUZZ_CHECK(row.mTextblocks.size() == row.mFrameData.mRenderPasses.size());
    checkMarquee(row, isStepped);
}

void drawTimeLine(TimeLine& line) {
    line.draw();
    if (!line.mFrameData.isValid()) {
        FUZZ_CHECK(line.mTextblocks.empty());
        return;
    }
    const std::vector<gui::RenderPassData>& passes = line.mFrameData.mRenderPasses;
    FUZZ_CHECK(line.mTextblocks.size() == passes.size());
    // Passes must be in the order of their start times, with those without one at the end.
    for (std::size_t i = 1; i < passes.size(); ++i) {
        FUZZ_CHECK(passes[i - 1].mStartTime <= passes[i].mStartTime || std::isnan(passes[i].mStartTime));
    }
    if (fuzz::surface().isAnyRectangle || line.mSize.x < 0.0F) {
        return;
    }
    const float rounding = 1e-5F * (std::abs(line.mPosition.x) + line.mSize.x);
    for (const auto& block : line.mTextblocks) {
        FUZZ_CHECK(block->mSize.x >= 0.0F);
        FUZZ_CHECK(block->mPosition.x >= line.mPosition.x - rounding);
        FUZZ_CHECK(block->mPosition.x + block->mSize.x <= line.mPosition.x + line.mSize.x + rounding);
    }
}

void dump(Row& row) {
    const bool isNew = row.mFrameData.mFrameId != row.mLastDumpedFrameId;
    Ostra::FrameDump record{};
    row.dump(record);
    FUZZ_CHECK(record.renderPasses.size() == (isNew ? row.mFrameData.mRenderPasses.size() : 0));
    Ostra::FrameDump second{};
    row.dump(second);
    FUZZ_CHECK(second.renderPasses.empty() && second.renderPassFrameId == 0);
}

void perform(std::uint32_t operation, Scene& scene, fuzz::ByteReader& reader) {
    bool isStepped = false;
    switch (operation) {
        case 0: {
            const gui::FrameData frame = readFrame(reader);
            scene.row.addFrameInfo(frame);
            scene.timeLine.addFrameInfo(frame);
            scene.caption.setFrameIdAndDuration(frame.mFrameId, frame.mEndTime - frame.mStartTime);
            break;
        }
        case 1:
            drawRow(scene.row);
            break;
        case 2:
            drawTimeLine(scene.timeLine);
            break;
        case 3:
            scene.caption.draw();
            break;
        case 4:
            gClockMs += reader.flag() ? reader.word() : reader.upTo(5000);
            isStepped = hasCyclesLeft(scene.row);
            scene.row.animateMarquee();
            checkMarquee(scene.row, isStepped);
            break;
        case 5:
            gClockMs += reader.upTo(5000);
            scene.row.calculateCircularMarquee();
            checkMarquee(scene.row, true);
            break;
        case 6:
            scene.row.resetAnimation();
            scene.row.mMarqueeCycles = reader.flag() ? reader.word() : reader.byte();
            break;
        case 7:
            scene.place(reader);
            scene.row.prelayoutRenderPassText();
            break;
        case 8:
            gOrientation = reader.flag() ? reader.word() : reader.upTo(1);
            break;
        case 9:
            fuzz::surface().aspectRatio = reader.singleNumber();
            fuzz::surface().height = reader.singleNumber();
            break;
        default:
            dump(scene.row);
    }
}

}  // namespace

// Replaces the library's own functions, because the fuzzer controls the clock.
namespace utils {

std::uint32_t getUtcTime_usec() {
    return gClockMs * 1000;
}

std::uint32_t getUtcTime_msec() {
    return gClockMs;
}

std::uint32_t getUtcTimes_sec() {
    return gClockMs / 1000;
}

}  // namespace utils

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ByteReader reader(data, size);
    gClockMs = reader.word();
    gOrientation = reader.upTo(1);
    fuzz::surface() = {};
    Scene scene;
    scene.row.mMarqueeCycles = reader.upTo(3);
    scene.place(reader);
    // A few draws of thousands of passes show as much as many.
    constexpr std::size_t MOST_RECTANGLES = 15000;
    for (int i = 0; i < 64 && !reader.isEmpty() && fuzz::surface().rectangles < MOST_RECTANGLES; ++i) {
        perform(reader.upTo(10), scene, reader);
    }
    drawRow(scene.row);
    drawTimeLine(scene.timeLine);
    return 0;
}
