#pragma once

#include <cstddef>

namespace android {

/// A zero-terminated 8-bit string that owns its bytes, in an object the size of one pointer. It has a part of
/// Android's class, declared exactly as there, so that code which compiles with this one compiles with that
/// one. One object belongs to one thread at a time.
class String8 {
public:
    String8();
    String8(const String8& other);
    explicit String8(const char* text);
    explicit String8(const char* text, std::size_t length);
    ~String8();

    /// The text; valid until the object changes or is destroyed.
    const char* c_str() const;
    const char* string() const;

    std::size_t size() const;
    std::size_t length() const;
    bool isEmpty() const;

    String8& operator=(const String8& other);
    String8& operator=(const char* text);

    bool operator<(const String8& other) const;
    bool operator==(const String8& other) const;
    bool operator!=(const String8& other) const;
    bool operator==(const char* other) const;
    bool operator!=(const char* other) const;

    operator const char*() const;

private:
    const char* mString;
};

}  // namespace android
