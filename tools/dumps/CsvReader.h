#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dumps {

/// Reads RFC 4180 text, whatever its bytes: fields between commas, quoted where they hold commas, quotes or
/// line breaks; rows end in CR LF or LF alone. A quote inside an unquoted field stands for itself. A UTF-8
/// byte-order mark, which editors put first, is skipped.
class CsvReader {
public:
    /// The text must live as long as the reader.
    explicit CsvReader(std::string_view text);

    /// Takes the next row that has its line break; false when there is none left. Reuses the row's memory.
    bool next(std::vector<std::string>& row);

    /// After next() was false: whether the text ends in the middle of a row.
    bool isCut() const { return mIsCut; }

private:
    /// Moves one field into `field`. Returns the byte that ended it: ',' or '\n', or 0 at the text's end.
    char takeField(std::string& field);

    std::string_view mRest;
    bool mIsCut = false;
};

}  // namespace dumps
