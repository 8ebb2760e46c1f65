#pragma once

#include <ostra/Ostra.h>

#include <functional>
#include <string>
#include <vector>

/// The companion library as a record of what was asked of it.
namespace doubles {

struct CompanionLibrary {
    std::vector<std::string> calls;  ///< operations in order, polls of key events left out
    std::vector<std::pair<unsigned long long, unsigned long long>> clockRequests;
    std::vector<Ostra::FrameDump> dumps;
    std::vector<Ostra::DumpWidgetMeta> metas;
    std::vector<std::function<void()>> listeners;

    bool fixClockResult = true;              ///< what fixClock() answers
    std::vector<Ostra::KeyEvent> keyEvents;  ///< what the next poll delivers
};

inline CompanionLibrary& companion() {
    static auto* const instance = new CompanionLibrary;
    return *instance;
}

/// Back to the state at the start of the process.
inline void resetCompanion() {
    companion() = {};
}

}  // namespace doubles
