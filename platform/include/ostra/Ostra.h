#pragma once

#include <utils/String8.h>

#include <cstdint>
#include <functional>
#include <vector>

/// The companion library: takes frame dumps, fixes and releases the device's clocks, delivers key presses
/// and says when the application goes to the background. On 32-bit ARM the records are a binary contract.
namespace Ostra {

/// Names one dumpable value and says how its slot in a dump is encoded.
struct DumpWidgetMeta {
    android::String8 name;    ///< display name, e.g. "Fps"
    std::uint32_t valueType;  ///< 0 and 2: unsigned integer (2: bytes); 1: float
    std::uint32_t flag;       ///< 0 or 1, only passed on
};

/// One value slot. An untouched slot is all zero.
union DumpValue {
    std::uint64_t intValue;  ///< when the meta's valueType is 0 or 2
    float floatValue;        ///< when it is 1; the other four bytes carry no meaning
};

/// One render pass of a dumped frame.
struct DumpRenderpassValue {
    std::uint64_t firstValue;
    std::uint64_t secondValue;
    double duration;  ///< end minus start, in the unit of the layer's time stamps (milliseconds)
};

/// One dumped frame.
struct FrameDump {
    std::uint64_t frameNumber;
    std::int64_t timestampMs;        ///< system clock, milliseconds since 1970-01-01 00:00 UTC
    std::int64_t renderPassFrameId;  ///< frame the render passes belong to; 0 when there are none
    float frameDuration;             ///< duration of that frame; 0 when there is none
    std::uint32_t reserved;          ///< zero
    std::vector<DumpValue> values;   ///< one slot per meta, in the order of the table
    std::vector<DumpRenderpassValue> renderPasses;
};

static_assert(sizeof(DumpValue) == 8 && sizeof(DumpRenderpassValue) == 24, "record layout");
static_assert(sizeof(void*) != 4 || (sizeof(DumpWidgetMeta) == 12 && sizeof(FrameDump) == 56),
              "record layout");

/// A key press or release.
struct KeyEvent {
    std::int32_t keyCode;  ///< Android's key code: 24 volume up, 25 volume down
    std::int32_t action;   ///< 1 when pressed
};

/// Calls `listener` on a thread of the companion library whenever the application goes to the background.
/// Listeners are never removed.
void registerAppBecomeBackgroundListener(std::function<void()> listener);

/// Asks for fixed clocks; true when they are fixed.
bool fixClock(unsigned long long cpuClock, unsigned long long gpuClock);

/// Releases the clocks.
void unfixClock();

/// The key events since the previous call, in arrival order.
std::vector<KeyEvent> receiveKeyEvents();

/// Starts a dump of the values that `metas` names. A dump that is still running is finished first.
void startDumping(const std::vector<DumpWidgetMeta>& metas);

/// Hands over one frame; copies what it keeps and never waits for the disk. Ignored when no dump runs.
void addDump(const FrameDump& dump);

/// Ends the dump; when it returns, everything handed over before is in the files.
void finishDumping();

}  // namespace Ostra
