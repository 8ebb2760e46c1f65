#pragma once

namespace figures {

/// Why a figure has no value.
enum class Reason {
    NOT_READ,     ///< nobody has asked yet, or its reader does not say
    NO_FILE,      ///< there is no such file
    NOT_ALLOWED,  ///< this user may not read it
    MALFORMED     ///< the file holds something else
};

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

private:
    double mValue = 0.0;
    bool mHasValue = false;
    Reason mReason = Reason::NOT_READ;
};

/// The same value, or no value for the same reason.
inline bool operator==(const Reading& left, const Reading& right) {
    return left.has_value() == right.has_value() &&
           (left.has_value() ? *left == *right : left.reason() == right.reason());
}

}  // namespace figures
