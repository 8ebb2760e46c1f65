#pragma once

#include <optional>
#include <string>
#include <utility>

namespace sources {

constexpr double PERCENT = 100.0;
constexpr double NS_PER_SECOND = 1e9;

/// Why a figure has no value.
enum class Reason {
    NONE,           ///< it has one
    NOT_READ,       ///< nobody has asked yet, or its reader does not say
    NO_FILE,        ///< there is no such file on this machine
    NOT_ALLOWED,    ///< this user may not read it
    ASLEEP,         ///< the device sleeps, and is not woken for a figure
    NOT_SUPPORTED,  ///< the driver or the hardware does not tell
    SWITCHED_OFF,   ///< the driver would tell if its administrator let it
    MALFORMED,      ///< the file holds something else
    FIRST_READING,  ///< a rate, which needs a second reading
    NO_PROCESS,     ///< it belongs to a process, and none is meant
    NO_DEVICE,      ///< no device is known, or this process uses none
    NOT_ANSWERING,  ///< the driver's library has not answered yet
};

/// One figure as its source tells it: a value with the file or call it comes from, or the reason why there is
/// none with the file that was tried. Plain data.
struct Value {
    std::optional<double> number;
    std::string source;
    Reason reason = Reason::NO_FILE;
    const char* unit = nullptr;  ///< where it differs from the figure's usual one

    static Value of(double number, std::string source) {
        return {number, std::move(source), Reason::NONE, nullptr};
    }
    static Value none(Reason reason, std::string source = {}) {
        return {std::nullopt, std::move(source), reason, nullptr};
    }

    explicit operator bool() const { return number.has_value(); }
};

/// The first of two that has a value; of two without, the one that knows more than "no such file".
inline Value firstOf(Value first, Value second) {
    if (first || (!second && first.reason != Reason::NO_FILE)) {
        return first;
    }
    return second;
}

/// What an error number of a kernel file means for its figure.
Reason reasonOf(int error);

/// The reason as the end of a sentence: "there is no such file".
const char* describe(Reason reason);

}  // namespace sources
