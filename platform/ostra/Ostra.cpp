#include "ostra/DumpControl.h"
#include "ostra/PerProcess.h"

#include <android/log.h>
#include <ostra/ExtraColumns.h>
#include <ostra/Ostra.h>

#include <atomic>

namespace Ostra {

using platform::DumpControl;
using platform::PerProcess;

bool fixClock(unsigned long long /*cpuClock*/, unsigned long long /*gpuClock*/) {
    static std::atomic<bool> isSaid{false};
    if (!isSaid.exchange(true)) {
        __android_log_print(ANDROID_LOG_INFO, "Ostra", "Clocks are not fixed: this host's are left alone");
    }
    return false;
}

void unfixClock() {}

void startDumping(const std::vector<DumpWidgetMeta>& metas) {
    PerProcess<DumpControl>::get().start(metas);
}

void addDump(const FrameDump& dump) {
    if (DumpControl* const control = PerProcess<DumpControl>::find()) {
        control->add(dump);
    }
}

void setExtraColumns(const std::vector<const char*>& names) {
    PerProcess<DumpControl>::get().setExtraColumns(names);
}

void setExtraValues(const double* values, std::size_t count) {
    if (DumpControl* const control = PerProcess<DumpControl>::find()) {
        control->setExtraValues(values, count);
    }
}

void setDumpSubject(const char* name, const std::string& text) {
    PerProcess<DumpControl>::get().setSubject(name, text);
}

void finishDumping() {
    if (DumpControl* const control = PerProcess<DumpControl>::find()) {
        control->finish();
    }
}

}  // namespace Ostra
