#include "dumps/CsvReader.h"

#include <cstddef>

namespace dumps {

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

}  // namespace

CsvReader::CsvReader(std::string_view text) : mRest(text) {
    if (text.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
        mRest.remove_prefix(BYTE_ORDER_MARK.size());
    }
}

bool CsvReader::next(std::vector<std::string>& row) {
    if (mRest.empty()) {
        return false;
    }
    for (std::size_t count = 0;; ++count) {
        if (count == row.size()) {
            row.emplace_back();
        }
        const char end = takeField(row[count]);
        if (end == '\n') {
            row.resize(count + 1);
            return true;
        }
        if (end == '\0') {
            mIsCut = true;
            return false;
        }
    }
}

char CsvReader::takeField(std::string& field) {
    field.clear();
    std::size_t i = 0;
    if (!mRest.empty() && mRest.front() == '"') {
        for (++i;; ++i) {
            const std::size_t quote = mRest.find('"', i);
            field.append(mRest.substr(i, quote - i));
            if (quote == std::string_view::npos) {
                mRest = {};
                return '\0';
            }
            i = quote + 1;
            if (i == mRest.size() || mRest[i] != '"') {
                break;
            }
            field.push_back('"');
        }
    }
    const std::size_t end = mRest.find_first_of(",\n", i);
    if (end == std::string_view::npos) {
        mRest = {};
        return '\0';
    }
    const char separator = mRest[end];
    std::string_view unquoted = mRest.substr(i, end - i);
    if (separator == '\n' && !unquoted.empty() && unquoted.back() == '\r') {
        unquoted.remove_suffix(1);
    }
    field.append(unquoted);
    mRest.remove_prefix(end + 1);
    return separator;
}

}  // namespace dumps
