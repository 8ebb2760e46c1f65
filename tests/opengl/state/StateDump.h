#pragma once

#include <string>
#include <vector>

/// One number of a context's state.
struct StateValue {
    const char* function;  ///< that tells it
    unsigned name, index;  ///< that it takes
    int unit;              ///< of textures, whose turn it was; -1: the active one
    double number;

    bool operator==(const StateValue& other) const {
        return function == other.function && name == other.name && index == other.index &&
               unit == other.unit && number == other.number;
    }
};

/// Everything that a context tells: it finds out for itself, in its constructor, which names the functions of
/// glGet's kind take there, and raises no error afterwards.
class StateDump {
public:
    StateDump();

    /// The default framebuffer's own state is asked for by binding it for a moment, if the framebuffers that
    /// are bound may be bound again.
    std::vector<StateValue> read(bool mayBindFramebuffers) const;

    /// "FUNCTION(NAME, index): before -> after", a line for each number that differs.
    static std::string compare(const std::vector<StateValue>& before, const std::vector<StateValue>& after);

    const std::vector<unsigned>& switches() const { return mNames[0]; }
    const std::vector<unsigned>& integers() const { return mNames[1]; }

private:
    void readUnit(int unit, std::vector<StateValue>& dump) const;

    std::vector<std::vector<unsigned>> mNames;  ///< that each function takes
};
