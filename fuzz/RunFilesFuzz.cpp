// The files of a run that tell of logs, with any bytes: what 'run' wants to be logged, and what became of
// logs.

#include "Check.h"
#include "ostra/logs/LogNotice.h"
#include "runs/LogPlan.h"
#include "support/TemporaryDirectory.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace {

using platform::LogNotice;
using platform::LogPlan;

bool isSame(const LogPlan& one, const LogPlan& other) {
    return one.folder == other.folder && one.isStarted == other.isStarted && one.afterMs == other.afterMs &&
           one.forMs == other.forMs;
}

bool isSame(const LogNotice& one, const LogNotice& other) {
    return one.number == other.number && one.state == other.state && one.frames == other.frames &&
           one.path == other.path && one.error == other.error;
}

/// What was read is what is read again when it has been written.
void checkPlan(const std::string& folder) {
    const LogPlan plan = platform::readLogPlan(folder);
    FUZZ_CHECK(plan.folder.empty() || plan.folder.front() == '/');
    FUZZ_CHECK(platform::writeLogPlan(folder, plan) == 0);
    FUZZ_CHECK(isSame(platform::readLogPlan(folder), plan));
}

void checkNotices(const std::string& folder) {
    constexpr std::size_t KEPT = 20;
    const std::vector<LogNotice> notices = platform::readLogNotices(folder, getpid());
    platform::writeLogNotices(folder, notices);
    const std::vector<LogNotice> again = platform::readLogNotices(folder, getpid());
    FUZZ_CHECK(again.size() == std::min(notices.size(), KEPT));
    for (std::size_t i = 0; i < again.size(); ++i) {
        FUZZ_CHECK(isSame(again[i], notices[notices.size() - again.size() + i]));
    }
    const std::vector<pid_t> processes = platform::processesWithLogs(folder);
    FUZZ_CHECK(processes == std::vector<pid_t>{getpid()});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryDirectory directory;
    const std::string folder = directory.path();
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (const std::string& name : {std::string("/log.plan"), "/log." + std::to_string(getpid())}) {
        std::ofstream(folder + name, std::ios::binary) << bytes;
    }
    checkPlan(folder);
    checkNotices(folder);
    return 0;
}
