#pragma once

#include "figures/sources/Value.h"

namespace figures {

using sources::Reason;

/// The value of a figure in the unit that its reader documents, or the reason why there is none.
class Reading {
public:
    Reading() = default;
    Reading(double value) : mValue(value), mHasValue(true) {}
    Reading(Reason reason) : mReason(reason) {}

    explicit operator bool() const { return mHasValue; }
    bool has_value() const { return mHasValue; }
    double operator*() const { return mValue; }
    double value_or(double other) const { return mHasValue ? mValue : other; }
    Reason reason() const { return mReason; }

    /// What is written after the value where it differs from the figure's usual one; else null. A text that
    /// is never destroyed.
    const char* suffix() const { return mSuffix; }
    void setSuffix(const char* suffix) { mSuffix = suffix; }

private:
    double mValue = 0.0;
    bool mHasValue = false;
    Reason mReason = Reason::NOT_READ;
    const char* mSuffix = nullptr;
};

/// The same value, or no value for the same reason.
inline bool operator==(const Reading& left, const Reading& right) {
    return left.has_value() == right.has_value() &&
           (left.has_value() ? *left == *right : left.reason() == right.reason());
}

}  // namespace figures
