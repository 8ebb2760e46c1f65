#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Appends rows of comma-separated values to a text, by RFC 4180: rows end with CR LF, fields are quoted
/// where they must be. Numbers look the same in every locale. The text belongs to the caller.
class CsvWriter {
public:
    explicit CsvWriter(std::string& text) : mText(text) {}

    void add(std::string_view field);
    void add(std::uint64_t number);
    void add(std::int64_t number);

    /// As the shortest decimal number that reads back as the same value; "inf", "-inf" or "nan" for what is
    /// none.
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
