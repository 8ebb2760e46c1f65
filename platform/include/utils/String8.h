#pragma once

#include <cstddef>

namespace android {

/// A zero-terminated 8-bit string that owns its bytes, in an object the size of one pointer.
/// A value type; one object belongs to one thread at a time. Never holds null.
class String8 {
public:
    String8();
    String8(const char* text);  // NOLINT(google-explicit-constructor): implicit as on the platform
    String8(const String8& other);
    String8(String8&& other) noexcept;
    String8& operator=(const String8& other);
    String8& operator=(String8&& other) noexcept;
    ~String8();

    /// The text, valid until the object changes or ends.
    const char* string() const { return mString; }
    const char* c_str() const { return mString; }

    /// The number of bytes before the terminating zero.
    std::size_t length() const;
    std::size_t size() const { return length(); }
    bool isEmpty() const { return *mString == '\0'; }

    bool operator==(const String8& other) const;
    bool operator!=(const String8& other) const { return !(*this == other); }
    bool operator<(const String8& other) const;

private:
    const char* mString;
};

}  // namespace android
