#pragma once

#include "doubles/FakeLog.h"
#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace ostra {

/// The runtime directory of this process and its children.
inline const std::string& runtimeDirectory() {
    static const support::TemporaryDirectory folder;
    setenv("KORDANIX_RUNTIME_DIR", folder.path().c_str(), 1);
    return folder.path();
}

/// What was logged at this priority or a higher one.
inline std::vector<std::string> logged(int priority) {
    std::vector<std::string> texts;
    for (const doubles::LogLine& line : doubles::takeLog()) {
        if (line.priority >= priority) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

}  // namespace ostra
