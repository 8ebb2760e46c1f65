#include "dumps/DumpReader.h"

#include "dumps/DumpText.h"
#include "io/PlainFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace dumps {

namespace {

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

/// Returns an empty text, or "PATH: why".
std::string readFrames(const std::string& path, Dump& dump) {
    std::string text;
    std::string error = readFile(path, text);
    if (error.empty()) {
        error = parseFrames(text, dump);
    }
    if (error.empty() && dump.frames.empty()) {
        error = dump.skippedRows > 0 ? "it has no frames, only malformed rows (" +
                                           std::to_string(dump.skippedRows) + "), the first in line 2"
                                     : "it is empty, without a whole frame";
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
        text += "It ends in the middle of a line; that line is left out. ";
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
