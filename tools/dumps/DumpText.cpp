#include "dumps/DumpText.h"

#include "dumps/CsvReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace dumps {

namespace {

using Row = std::vector<std::string>;

constexpr std::size_t NO_COLUMN = std::numeric_limits<std::size_t>::max();

/// The whole field as a number; false, with the number as it was, when it is none.
template <typename Number>
bool parse(const std::string& field, Number& number) {
    const auto result = std::from_chars(field.data(), field.data() + field.size(), number);
    return result.ec == std::errc() && result.ptr == field.data() + field.size();
}

/// Floats are the widest numbers of a dump. Whatever is larger is damage, and could not be reckoned with.
bool isInRange(double number) {
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

/// A figure, or not a number for an empty field and for what the writer has no finite number for.
bool parseFigure(const std::string& field, double& figure) {
    figure = std::numeric_limits<double>::quiet_NaN();
    if (field.empty()) {
        return true;
    }
    if (!parse(field, figure)) {
        return false;
    }
    if (!std::isfinite(figure)) {
        figure = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    return isInRange(figure);
}

bool parseDuration(const std::string& field, double& duration) {
    return parse(field, duration) && duration >= 0.0 && isInRange(duration);
}

std::size_t columnOf(const Row& names, const char* name) {
    const auto found = std::find(names.begin(), names.end(), name);
    return found == names.end() ? NO_COLUMN : static_cast<std::size_t>(found - names.begin());
}

/// Takes the first row. Returns an empty text, or what is wrong with it.
std::string takeNames(CsvReader& reader, std::initializer_list<const char*> required, Row& names) {
    if (!reader.next(names)) {
        return "it has no first row with the names of the columns";
    }
    for (const char* const name : required) {
        if (columnOf(names, name) == NO_COLUMN) {
            return "it has no column \"" + std::string(name) + "\"";
        }
    }
    return {};
}

/// "CpuLoad(%)" is the name CpuLoad with the unit %.
DumpedValue namedValue(const std::string& column) {
    DumpedValue value;
    const std::size_t open = column.rfind('(');
    if (open == std::string::npos || open == 0 || column.back() != ')') {
        value.name = column;
    } else {
        value.name = column.substr(0, open);
        value.unit = column.substr(open + 1, column.size() - open - 2);
    }
    return value;
}

/// Which column of frames.csv holds what.
struct FrameColumns {
    explicit FrameColumns(const Row& names)
        : number(columnOf(names, "FrameNumber")),
          timestamp(columnOf(names, "TimestampMs")),
          passFrame(columnOf(names, "RenderPassFrameId")),
          duration(columnOf(names, "FrameDuration")) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (i != number && i != timestamp && i != passFrame && i != duration) {
                values.push_back(i);
            }
        }
    }

    std::size_t number;
    std::size_t timestamp;
    std::size_t passFrame;  ///< NO_COLUMN when there is none, as `duration`
    std::size_t duration;
    std::vector<std::size_t> values;
};

bool parseFrame(const Row& row, const FrameColumns& columns, DumpedFrame& frame,
                std::vector<double>& figures) {
    if (!parse(row[columns.number], frame.number) || !parse(row[columns.timestamp], frame.timestampMs) ||
        (columns.passFrame != NO_COLUMN && !parse(row[columns.passFrame], frame.passFrameId))) {
        return false;
    }
    if (columns.duration != NO_COLUMN && !parseFigure(row[columns.duration], frame.passFrameMs)) {
        return false;
    }
    if (!(frame.passFrameMs > 0.0)) {
        frame.passFrameMs = 0.0;
    }
    for (std::size_t i = 0; i < columns.values.size(); ++i) {
        if (!parseFigure(row[columns.values[i]], figures[i])) {
            return false;
        }
    }
    return true;
}

/// Nobody has measured a value before its first figure other than 0: its slot is 0 until it is written.
void dropUnmeasured(std::vector<double>& figures) {
    for (double& figure : figures) {
        if (figure != 0.0 && std::isfinite(figure)) {
            return;
        }
        figure = std::numeric_limits<double>::quiet_NaN();
    }
}

}  // namespace

std::string parseFrames(std::string_view text, Dump& dump) {
    CsvReader reader(text);
    Row names;
    std::string error = takeNames(reader, {"FrameNumber", "TimestampMs"}, names);
    if (!error.empty()) {
        return error;
    }
    const FrameColumns columns(names);
    for (const std::size_t column : columns.values) {
        dump.values.push_back(namedValue(names[column]));
    }
    std::vector<double> figures(columns.values.size());
    for (Row row; reader.next(row);) {
        DumpedFrame frame;
        if (row.size() != names.size() || !parseFrame(row, columns, frame, figures) ||
            (!dump.frames.empty() && frame.number <= dump.frames.back().number)) {
            ++dump.skippedRows;
            continue;
        }
        dump.frames.push_back(frame);
        for (std::size_t i = 0; i < figures.size(); ++i) {
            dump.values[i].figures.push_back(figures[i]);
        }
    }
    for (DumpedValue& value : dump.values) {
        dropUnmeasured(value.figures);
    }
    dump.isCut = dump.isCut || reader.isCut();
    return {};
}

std::string parsePasses(std::string_view text, Dump& dump) {
    CsvReader reader(text);
    Row names;
    std::string error = takeNames(reader, {"FrameNumber", "FirstValue", "SecondValue", "Duration"}, names);
    if (!error.empty()) {
        return error;
    }
    const std::size_t number = columnOf(names, "FrameNumber");
    const std::size_t first = columnOf(names, "FirstValue");
    const std::size_t second = columnOf(names, "SecondValue");
    const std::size_t duration = columnOf(names, "Duration");
    for (Row row; reader.next(row);) {
        std::uint64_t frameNumber = 0;
        DumpedPass pass;
        if (row.size() != names.size() || !parse(row[number], frameNumber) ||
            !parse(row[first], pass.firstValue) || !parse(row[second], pass.secondValue) ||
            !parseDuration(row[duration], pass.durationMs)) {
            ++dump.skippedRows;
            continue;
        }
        const auto frame = std::lower_bound(
            dump.frames.begin(), dump.frames.end(), frameNumber,
            [](const DumpedFrame& left, std::uint64_t right) { return left.number < right; });
        if (frame == dump.frames.end() || frame->number != frameNumber) {
            ++dump.strayPasses;
            continue;
        }
        pass.frame = static_cast<std::size_t>(frame - dump.frames.begin());
        dump.passes.push_back(pass);
    }
    dump.isCut = dump.isCut || reader.isCut();
    std::stable_sort(
        dump.passes.begin(), dump.passes.end(),
        [](const DumpedPass& left, const DumpedPass& right) { return left.frame < right.frame; });
    return {};
}

void parseSubjects(std::string_view text, Dump& dump) {
    CsvReader reader(text);
    for (Row row; reader.next(row);) {
        if (row.size() == 2) {
            dump.subjects[row[0]] = row[1];
        }
    }
}

}  // namespace dumps
