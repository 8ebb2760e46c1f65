#include "settings/KeyChord.h"

#include "settings/KeyNames.h"
#include "settings/NearestName.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace control {

namespace {

constexpr std::string_view NONE = "none";
constexpr Modifiers LEFT = 1;
constexpr Modifiers RIGHT = 2;
constexpr Modifiers EITHER = LEFT | RIGHT;

constexpr std::string_view KINDS[] = {"Shift", "Control",         "Alt", "Super", "Meta",
                                      "Hyper", "ISO_Level3_Shift"};

constexpr struct {
    std::string_view ending;
    std::string_view said;
    Modifiers bits;
} SIDES[] = {{"", "", EITHER}, {"_L", "left ", LEFT}, {"_R", "right ", RIGHT}};

constexpr struct {
    std::string_view said;
    std::string_view name;
} OTHER_NAMES[] = {{"Ctrl", "Control"}, {"AltGr", "ISO_Level3_Shift"}};

std::string_view trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

bool isSameWord(std::string_view left, std::string_view right) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char a, char b) { return lower(a) == lower(b); });
}

/// X's name of a modifier as people say it, such as "right Shift"; else the text itself.
std::string modifierName(std::string_view said) {
    for (const auto& side : SIDES) {
        if (!isSameWord(said.substr(0, side.said.size()), side.said)) {
            continue;
        }
        const std::string_view rest = trimmed(said.substr(side.said.size()));
        for (const std::string_view kind : KINDS) {
            if (isSameWord(rest, kind)) {
                return std::string(kind).append(side.ending);
            }
        }
        for (const auto& other : OTHER_NAMES) {
            if (isSameWord(rest, other.said)) {
                return std::string(other.name).append(side.ending);
            }
        }
    }
    return std::string(said);
}

/// Both bits of the kind that has these.
unsigned int wholeKind(Modifiers bits) {
    constexpr unsigned int LEFT_ONES = 0x5555;
    return ((bits | bits >> 1U) & LEFT_ONES) * EITHER;
}

std::string noModifier(const std::string& name) {
    std::vector<std::string> all;
    for (const std::string_view kind : KINDS) {
        for (const auto& side : SIDES) {
            all.push_back(std::string(kind).append(side.ending));
        }
    }
    NearestName nearest(name);
    for (const std::string& each : all) {
        nearest.offer(each);
    }
    return "there is no modifier '" + name + "'; " + nearest.hint("there are Shift_L, Control_R and such");
}

}  // namespace

Modifiers modifierBits(std::string_view name) {
    for (std::size_t kind = 0; kind < std::size(KINDS); ++kind) {
        for (const auto& side : SIDES) {
            if (name == std::string(KINDS[kind]).append(side.ending)) {
                return static_cast<Modifiers>(side.bits << (2 * kind));
            }
        }
    }
    return 0;
}

bool areHeld(const KeyChord& chord, Modifiers down) {
    return (down & ~chord.modifiers) == 0 && collide(chord, {down, chord.key});
}

bool collide(const KeyChord& one, const KeyChord& other) {
    for (std::size_t kind = 0; kind < std::size(KINDS); ++kind) {
        const auto bits = [&](const KeyChord& chord) { return (chord.modifiers >> (2 * kind)) & EITHER; };
        if ((bits(one) | bits(other)) != 0 && (bits(one) & bits(other)) == 0) {
            return false;
        }
    }
    return one.key == other.key && one.key != 0;
}

TypedChord readChord(std::string_view typed) {
    TypedChord read;
    std::string_view rest = trimmed(typed);
    if (isSameWord(rest, NONE) || isSameWord(rest, "off")) {
        read.text = NONE;
        return read;
    }
    for (std::size_t sign = rest.find('+'); sign != std::string_view::npos; sign = rest.find('+')) {
        const std::string name = modifierName(trimmed(rest.substr(0, sign)));
        const Modifiers bits = modifierBits(name);
        if (bits == 0) {
            read.error = noModifier(name);
            return read;
        }
        if ((read.chord.modifiers & wholeKind(bits)) != 0) {
            read.error = "'" + name + "' is a modifier that is there already";
            return read;
        }
        read.chord.modifiers |= bits;
        read.text += name + '+';
        rest = trimmed(rest.substr(sign + 1));
    }
    std::string name(rest);
    if (name.size() == 1 && name[0] >= 'A' && name[0] <= 'Z') {
        name[0] = static_cast<char>(name[0] - 'A' + 'a');  // a key has one name, with Shift and without
    }
    read.chord.key = keyNumber(name);
    read.text += name;
    if (name.empty()) {
        read.error = "a key is missing";
    } else if (modifierBits(modifierName(name)) != 0) {
        read.error = "'" + name + "' is a modifier, and no key by itself";
    } else if (read.chord.key == 0) {
        read.error = "there is no key '" + name + "'; " + keyHint(name);
    }
    return read;
}

}  // namespace control
