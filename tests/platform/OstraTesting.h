#pragma once

#include "doubles/FakeLog.h"
#include "platform/TemporaryDirectory.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace ostra {

/// The runtime directory of this process and its children.
inline const std::string& runtimeDirectory() {
    static const platform::TemporaryDirectory folder;
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

/// Makes it impossible to start a thread, as long as it lives.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&mUsual);
        pthread_attr_t huge = mUsual;
        pthread_attr_setstacksize(&huge, std::size_t{1} << (sizeof(void*) == 8 ? 60 : 31));
        pthread_setattr_default_np(&huge);
    }
    ~NoThreads() { pthread_setattr_default_np(&mUsual); }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t mUsual = {};
};

}  // namespace ostra
