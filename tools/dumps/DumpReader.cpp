#include "dumps/DumpReader.h"

#include "dumps/CsvReader.h"
#include "io/PlainFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

namespace dumps {

namespace {

using Row = std::vector<std::string>;

constexpr std::size_t NO_COLUMN = std::numeric_limits<std::size_t>::max();

/// More than two days of frames.
constexpr std::size_t MAX_FILE_SIZE = std::size_t{1} << 30;

/// Returns an empty text, or why the file cannot be read.
std::string readFile(const std::string& path, std::string& text) {
    switch (const int error = platform::readPlainFile(path, text, MAX_FILE_SIZE, true)) {
        case 0:
            return {};
        case EFBIG:
            return "it is larger than 1 GiB, the most that is read";
        case EINVAL:
            return "it is not a regular file";
        default:
            return "it cannot be read: " + platform::plainFileError(error);
    }
}

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

namespace {

/// Returns an empty text, or "PATH: why".
std::string readFrames(const std::string& path, Dump& dump) {
    std::string text;
    std::string error = readFile(path, text);
    if (error.empty()) {
        error = parseFrames(text, dump);
    }
    if (error.empty() && dump.frames.empty()) {
        error = "the dump is empty, it has no whole frame";
    }
    return error.empty() ? error : path + ": " + error;
}

/// Empty, with the reason in `error`, when the folder has no log.
std::string newestLog(const std::string& folder, std::string& error) {
    namespace fs = std::filesystem;
    std::error_code failure;
    std::pair<fs::file_time_type, std::string> newest(fs::file_time_type::min(), "");
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        std::error_code ignored;
        if (entry->path().extension() == ".csv" && entry->is_regular_file(ignored)) {
            newest = std::max(newest, {entry->last_write_time(ignored), entry->path().string()});
        }
    }
    error = failure ? folder + ": " + failure.message()
                    : folder + ": holds no log, a file whose name ends in .csv";
    return newest.second;
}

}  // namespace

std::string readLog(const std::string& path, Dump& dump) {
    std::error_code ignored;
    std::string error;
    dump.folder = path;
    if (std::filesystem::is_directory(path, ignored)) {
        if (std::filesystem::exists(path + "/frames.csv", ignored)) {
            return readDump(path, dump);
        }
        dump.folder = newestLog(path, error);
        if (dump.folder.empty()) {
            return error;
        }
    }
    return readFrames(dump.folder, dump);
}

std::string readDump(const std::string& folder, Dump& dump) {
    dump.folder = folder;
    std::string text;
    std::string error = readFrames(folder + "/frames.csv", dump);
    if (!error.empty()) {
        return error;
    }
    if (readFile(folder + "/about.csv", text).empty()) {
        parseSubjects(text, dump);
    }
    dump.passError = readFile(folder + "/passes.csv", text);
    if (dump.passError.empty()) {
        dump.passError = parsePasses(text, dump);
    }
    return {};
}

std::string describeLosses(const Dump& dump) {
    std::string text;
    const auto count = [](std::size_t number, const char* noun) {
        return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
    };
    if (dump.isCut) {
        text += "The dump ends in the middle of a line; that line is left out. ";
    }
    if (dump.skippedRows > 0) {
        text += count(dump.skippedRows, "malformed row") + " skipped. ";
    }
    if (dump.strayPasses > 0) {
        text +=
            count(dump.strayPasses, "row") + " of passes.csv left out, their frames are not in frames.csv. ";
    }
    if (!dump.passError.empty()) {
        text += "No render passes are shown, because of passes.csv: " + dump.passError + ". ";
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

}  // namespace dumps
