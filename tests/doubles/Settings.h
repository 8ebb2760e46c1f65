#pragma once

#include "core/SysPropWatcher.h"
#include "doubles/FakeProperties.h"

#include <string>
#include <utility>
#include <vector>

namespace doubles {

/// Sets properties of the library by their short names, such as {"widget_memory", "true"}, and lets every
/// view of them re-read, without a publication.
inline void set(const std::vector<std::pair<std::string, std::string>>& settings) {
    for (const auto& [name, value] : settings) {
        setProperty("debug.kordanix." + name, value);
    }
    SysPropWatcher::forceReadAllProps();
}

/// Gives every setting its default back, for cases that share a process: a text that is no value does.
inline void setDefaults() {
    for (const SysPropBase* const prop : SysPropWatcher::mProps) {
        setProperty(prop->mName, "");
    }
    set({});
}

}  // namespace doubles
