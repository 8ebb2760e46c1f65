#pragma once

#include <utils/String8.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

/// The companion library: takes frame dumps, fixes and releases the device's clocks, delivers key presses and
/// tells listeners when the application goes to the background. On 32-bit ARM the layout of the records is
/// part of the binary interface.
namespace Ostra {

/// Names one dumpable value and says how its slot in a dump is encoded.
struct DumpWidgetMeta {
    android::String8 name;    ///< display name, e.g. "Fps"
    std::uint32_t valueType;  ///< 0 and 2: unsigned integer (2: bytes); 1: float
    std::uint32_t flag;       ///< 0 or 1, passed on unchanged
};

/// One value slot. An untouched slot is all zero.
union DumpValue {
    std::uint64_t intValue;  ///< when the meta's valueType is 0 or 2
    float floatValue;        ///< when it is 1; the other four bytes are ignored
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

static_assert(sizeof(DumpValue) == 8 && offsetof(DumpValue, intValue) == 0 &&
                  offsetof(DumpValue, floatValue) == 0,
              "layout of DumpValue");
static_assert(sizeof(DumpRenderpassValue) == 24 && offsetof(DumpRenderpassValue, firstValue) == 0 &&
                  offsetof(DumpRenderpassValue, secondValue) == 8 &&
                  offsetof(DumpRenderpassValue, duration) == 16,
              "layout of DumpRenderpassValue");
static_assert(offsetof(FrameDump, frameNumber) == 0 && offsetof(FrameDump, timestampMs) == 8 &&
                  offsetof(FrameDump, renderPassFrameId) == 16 && offsetof(FrameDump, frameDuration) == 24 &&
                  offsetof(FrameDump, reserved) == 28 && offsetof(FrameDump, values) == 32,
              "layout of FrameDump");
static_assert(sizeof(void*) != 4 ||
                  (sizeof(DumpWidgetMeta) == 12 && offsetof(DumpWidgetMeta, name) == 0 &&
                   offsetof(DumpWidgetMeta, valueType) == 4 && offsetof(DumpWidgetMeta, flag) == 8),
              "layout of DumpWidgetMeta on 32-bit ARM");
static_assert(sizeof(void*) != 4 || (sizeof(FrameDump) == 56 && sizeof(std::vector<DumpValue>) == 12 &&
                                     offsetof(FrameDump, renderPasses) == 44),
              "layout of FrameDump on 32-bit ARM");

/// A key press or release.
struct KeyEvent {
    std::int32_t keyCode;  ///< Android's key code: 24 volume up, 25 volume down
    std::int32_t action;   ///< 1 when pressed
};

/// Calls `listener` on a thread of the companion library whenever the application goes to the background.
/// Listeners are never removed.
void registerAppBecomeBackgroundListener(std::function<void()> listener);

/// Asks the device to fix its clocks; true when it has.
bool fixClock(unsigned long long cpuClock, unsigned long long gpuClock);

/// Releases the clocks.
void unfixClock();

/// Returns the key events since the previous call, in arrival order.
std::vector<KeyEvent> receiveKeyEvents();

/// Starts a dump of the values that `metas` names. Finishes a running dump first.
void startDumping(const std::vector<DumpWidgetMeta>& metas);

/// Adds one frame to the dump: copies what it needs and never waits for the disk. Does nothing without a
/// dump.
void addDump(const FrameDump& dump);

/// Ends the dump; when it returns, every frame added before is in the files.
void finishDumping();

}  // namespace Ostra
