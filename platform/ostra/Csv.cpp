#include "ostra/Csv.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace platform {

void CsvWriter::beginField() {
    if (mIsRowBegun) {
        mText += ',';
    }
    mIsRowBegun = true;
}

template <typename Number>
void CsvWriter::addNumber(Number number) {
    beginField();
    char digits[32];  // the longest has 20
    const auto result = std::to_chars(digits, digits + sizeof(digits), number);
    mText.append(digits, result.ptr);
}

void CsvWriter::add(std::string_view field) {
    beginField();
    if (field.find_first_of(",\"\r\n") == std::string_view::npos) {
        mText += field;
        return;
    }
    mText += '"';
    for (const char symbol : field) {
        if (symbol == '"') {
            mText += '"';
        }
        mText += symbol;
    }
    mText += '"';
}

void CsvWriter::add(std::uint64_t number) {
    addNumber(number);
}

void CsvWriter::add(std::int64_t number) {
    addNumber(number);
}

void CsvWriter::add(float number) {
    addNumber(number);
}

/// At most 17 digits, and fewer where the number can be read again from them. Not by std::to_chars: in a C++
/// library that is linked statically that is 125 KB.
void CsvWriter::add(double number) {
    beginField();
    char text[32] = {};
    for (const int digits : {15, 16, 17}) {
        std::snprintf(text, sizeof(text), "%.*g", digits, number);
        if (std::strtod(text, nullptr) == number) {
            break;
        }
    }
    // The application's locale may have another decimal point, of several bytes.
    for (const char* symbol = text; *symbol != '\0'; ++symbol) {
        if (std::strchr("0123456789+-einaf", *symbol) != nullptr) {
            mText += *symbol;
        } else if (mText.back() != '.') {
            mText += '.';
        }
    }
}

void CsvWriter::endRow() {
    mText += "\r\n";
    mIsRowBegun = false;
}

}  // namespace platform
