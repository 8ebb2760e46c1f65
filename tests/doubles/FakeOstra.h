#pragma once

#include <ostra/Ostra.h>

#include <functional>
#include <string>
#include <vector>

/// The companion library as a record of what was asked of it.
namespace doubles {

struct CompanionLibrary {
    std::vector<std::string>
        calls;  ///< operation names in the order of the calls, polls of key events left out
    std::vector<std::pair<unsigned long long, unsigned long long>> clockRequests;
    std::vector<Ostra::FrameDump> dumps;
    std::vector<Ostra::DumpWidgetMeta> metas;
    std::vector<std::function<void()>> listeners;
    unsigned polls = 0;

    bool fixClockResult = true;              ///< what fixClock() answers
    std::vector<Ostra::KeyEvent> keyEvents;  ///< what the next poll delivers
};

CompanionLibrary& companion();

/// Back to the state at the start of the process.
void resetCompanion();

}  // namespace doubles
