#include <utils/String8.h>

#include <cstring>
#include <utility>

namespace android {
namespace {

/// What all empty strings point to, so that they allocate nothing.
constexpr char EMPTY[] = "";

const char* copyOf(const char* text) {
    const std::size_t length = text == nullptr ? 0 : std::strlen(text);
    if (length == 0) {
        return EMPTY;
    }
    char* copy = new char[length + 1];
    std::memcpy(copy, text, length + 1);
    return copy;
}

}  // namespace

String8::String8() : mString(EMPTY) {}

String8::String8(const char* text) : mString(copyOf(text)) {}

String8::String8(const String8& other) : mString(copyOf(other.mString)) {}

String8::String8(String8&& other) noexcept : mString(std::exchange(other.mString, EMPTY)) {}

String8& String8::operator=(const String8& other) {
    String8 copy(other);
    std::swap(mString, copy.mString);
    return *this;
}

String8& String8::operator=(String8&& other) noexcept {
    std::swap(mString, other.mString);
    return *this;
}

String8::~String8() {
    if (mString != EMPTY) {
        delete[] mString;
    }
}

std::size_t String8::length() const {
    return std::strlen(mString);
}

bool String8::operator==(const String8& other) const {
    return std::strcmp(mString, other.mString) == 0;
}

bool String8::operator<(const String8& other) const {
    return std::strcmp(mString, other.mString) < 0;
}

}  // namespace android
