#include "settings/KeyNames.h"

#include "settings/NearestName.h"

#include <X11/XF86keysym.h>
#include <X11/keysym.h>

#include <algorithm>
#include <iterator>

namespace control {

namespace {

/// Without pointers, so that nothing needs to be done for it when a program is loaded.
struct Key {
    char name[28];
    std::uint32_t number;
};

constexpr Key KEYS[] = {
#include "KeyNameRows.inc"
};

}  // namespace

std::uint32_t keyNumber(std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(KEYS), std::end(KEYS), [&](const Key& key) { return key.name == name; });
    return found == std::end(KEYS) ? 0 : found->number;
}

std::string keyHint(std::string_view name) {
    NearestName nearest(name);
    for (const Key& key : KEYS) {
        nearest.offer(key.name);
    }
    return nearest.hint("'xev' shows the keys' names");
}

}  // namespace control
