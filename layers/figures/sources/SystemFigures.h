#pragma once

#include "figures/sources/FileTree.h"
#include "figures/sources/Value.h"

namespace sources {

/// What the system tells an application about the device other than in the kernel's usual files: something on
/// Android, nothing elsewhere. The build decides who answers. May wait for another process, so do not call it
/// on the frame thread. One thread at a time.
class SystemFigures {
public:
    explicit SystemFigures(const FileTree& tree) : mTree(tree) {}

    /// Percent. `now` in seconds, on a clock that does not jump.
    Value gpuLoad(double now);
    Value gpuClock();        ///< MHz
    Value gpuMaxClock();     ///< MHz
    Value gpuTemperature();  ///< degrees Celsius

    /// How much the device slows itself down because it is hot: from 0, not at
    /// all, to 6, about to switch off.
    Value thermalStatus();

private:
    Value headroomLoad(double now);

    const FileTree& mTree;
    Value mHeadroomLoad;
    double mHeadroomDue = 0.0;
    void* mThermalManager = nullptr;
};

/// Says in the system's log why there is no such figure, once for each, where
/// no tool would.
void noteMissing(const char* figure, const Value& value);

}  // namespace sources
