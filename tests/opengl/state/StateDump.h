#pragma once

#include <string>
#include <vector>

/// One number of a context's state.
struct StateValue {
    const char* name;
    int index;  ///< of the draw buffer, texture unit, attribute, query target …, in hundreds; place in the
                ///< value
    double value;

    bool operator==(const StateValue& other) const {
        return name == other.name && index == other.index && value == other.value;
    }
};

/// Everything a context can be asked for. It finds out for itself what that is, in its constructor, and
/// raises no error afterwards.
class StateDump {
public:
    StateDump();

    /// The default framebuffer's own state is asked for by binding it for a moment, if the framebuffers that
    /// are bound may be bound again.
    std::vector<StateValue> read(bool mayBindFramebuffers) const;

    /// "NAME[index]: before -> after", a line for each value that differs.
    static std::string compare(const std::vector<StateValue>& before, const std::vector<StateValue>& after);

private:
    struct Query {
        const char* name;
        unsigned value;
        int count;  ///< of numbers; 0 for those that this context has not
    };

    static std::vector<Query> probe(int (*ask)(unsigned name, double* values), const std::vector<Query>& all);

    std::vector<Query> mIntegers, mFloats, mSwitches, mIndexed, mUnit, mAttributes, mPointers, mRunning,
        mEnvironment, mTarget, mIndexedSwitches;
    bool mHasReadFramebuffer = false;
};
