#include <utils/String8.h>

#include <cstring>
#include <utility>

namespace android {

namespace {

/// All empty strings point here, so that they allocate nothing.
constexpr char EMPTY[] = "";

const char* copyOf(const char* text, std::size_t length) {
    if (length == 0) {
        return EMPTY;
    }
    char* const copy = new char[length + 1];
    std::memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

}  // namespace

String8::String8() : mString(EMPTY) {}

String8::String8(const String8& other) : String8(other.mString) {}

String8::String8(const char* text) : String8(text, text == nullptr ? 0 : std::strlen(text)) {}

String8::String8(const char* text, std::size_t length) : mString(copyOf(text, length)) {}

String8::~String8() {
    if (mString != EMPTY) {
        delete[] mString;
    }
}

const char* String8::c_str() const {
    return mString;
}

const char* String8::string() const {
    return mString;
}

std::size_t String8::size() const {
    return length();
}

std::size_t String8::length() const {
    return std::strlen(mString);
}

bool String8::isEmpty() const {
    return *mString == '\0';
}

String8& String8::operator=(const String8& other) {
    return *this = other.mString;
}

String8& String8::operator=(const char* text) {
    String8 copy(text);
    std::swap(mString, copy.mString);
    return *this;
}

bool String8::operator<(const String8& other) const {
    return std::strcmp(mString, other.mString) < 0;
}

bool String8::operator==(const String8& other) const {
    return *this == other.mString;
}

bool String8::operator!=(const String8& other) const {
    return *this != other.mString;
}

bool String8::operator==(const char* other) const {
    return std::strcmp(mString, other) == 0;
}

bool String8::operator!=(const char* other) const {
    return !(*this == other);
}

String8::operator const char*() const {
    return mString;
}

}  // namespace android
