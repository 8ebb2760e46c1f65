#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Appends rows of comma-separated values to a text, by RFC 4180: a row ends with CR LF, and a field is
/// quoted when it has to be. Numbers look the same in every locale. The caller owns the text.
class CsvWriter {
public:
    explicit CsvWriter(std::string& text) : mText(text) {}

    void add(std::string_view field);
    void add(std::uint64_t number);
    void add(std::int64_t number);

    /// Writes a decimal number that reads back as the same value, no longer than it has to be but for very
    /// small ones, or "inf", "-inf" or "nan".
    void add(float number);
    void add(double number);

    void endRow();

private:
    void beginField();
    template <typename Number>
    void addNumber(Number number);

    std::string& mText;
    bool mIsRowBegun = false;
};

}  // namespace platform
