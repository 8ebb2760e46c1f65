#include "dumps/DumpFolder.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <tuple>

namespace dumps {

namespace {

namespace fs = std::filesystem;

/// When a dump was made, in the order of time.
using Moment = std::tuple<std::uint64_t, std::uint64_t, std::uint64_t>;  // date, time, number

bool hasFrames(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(folder / "frames.csv", ignored));
}

/// Takes "-NUMBER" off the end; `digits` of them, or any with 0.
std::optional<std::uint64_t> takeNumber(std::string_view& name, std::size_t digits) {
    const std::size_t dash = name.rfind('-');
    const std::string_view text = name.substr(std::min(dash, name.size() - 1) + 1);
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (dash == std::string_view::npos || (digits != 0 && text.size() != digits) ||
        result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    name = name.substr(0, dash);
    return number;
}

std::optional<Moment> momentOf(std::string_view name) {
    const auto number = takeNumber(name, 0);
    const auto time = number ? takeNumber(name, 6) : std::nullopt;
    const auto date = time ? takeNumber(name, 8) : std::nullopt;
    return date && !name.empty() ? std::optional<Moment>({*date, *time, *number}) : std::nullopt;
}

}  // namespace

std::string findDump(const std::string& folder, std::string& error) {
    std::error_code failure;
    if (hasFrames(folder)) {
        return folder;
    }
    std::optional<Moment> newest;
    fs::path found;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string name = entry->path().filename();
        const auto moment = name.empty() ? std::nullopt : momentOf(name);
        if (moment && (!newest || *newest < *moment) && hasFrames(entry->path())) {
            newest = moment;
            found = entry->path();
        }
    }
    if (failure) {
        error = folder + ": " + failure.message();
    } else if (!newest) {
        error =
            folder + ": holds no dump, neither a frames.csv nor a folder PROGRAM-DATE-TIME-NUMBER with one";
    }
    return found;
}

}  // namespace dumps
