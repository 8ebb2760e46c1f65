#include "ostra/Csv.h"

#include <charconv>

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
    char digits[32];  // the longest is a double such as -2.2250738585072014e-308
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

void CsvWriter::add(double number) {
    addNumber(number);
}

void CsvWriter::endRow() {
    mText += "\r\n";
    mIsRowBegun = false;
}

}  // namespace platform
