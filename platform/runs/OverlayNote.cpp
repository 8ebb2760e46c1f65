#include "runs/OverlayNote.h"

#include "io/EscapedText.h"
#include "io/PlainFile.h"
#include "properties/RuntimeDirectory.h"
#include "runs/RunFolder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <optional>
#include <string_view>

namespace platform {

namespace {

constexpr std::string_view NOTE_BEGIN = "note.";
constexpr std::string_view NOTE_HEADER = "kordanix note 2";
constexpr std::size_t NOTE_MAX_BYTES = 32768;

template <typename Number>
std::optional<Number> toNumber(std::string_view text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

/// The process in a note's file name; 0 for another name.
pid_t processOfName(std::string_view name) {
    if (name.substr(0, NOTE_BEGIN.size()) != NOTE_BEGIN) {
        return 0;
    }
    return std::max(toNumber<pid_t>(name.substr(NOTE_BEGIN.size())).value_or(0), 0);
}

std::string notePath(const std::string& directory, pid_t process) {
    return directory + '/' + std::string(NOTE_BEGIN) + std::to_string(process);
}

std::string toText(const OverlayNote& note) {
    return std::string(NOTE_HEADER) + "\nname " + escapeText(note.name) + "\napi " +
           std::to_string(note.api) + "\nshown " + (note.wasShown ? "1" : "0") + "\nframes " +
           std::to_string(note.frames) + "\nreason " + escapeText(note.reason) + "\nown " +
           std::to_string(note.ownNanoseconds) + '\n';
}

/// Takes the next line off the text and returns what follows `key` and a blank; nothing when the line does
/// not begin with them.
std::optional<std::string_view> takeLine(std::string_view& text, std::string_view key) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (end == std::string_view::npos || line.substr(0, key.size()) != key ||
        line.substr(key.size(), 1) != " ") {
        return std::nullopt;
    }
    text.remove_prefix(end + 1);
    line.remove_prefix(key.size() + 1);
    return line;
}

std::optional<OverlayNote> parse(std::string_view text, pid_t process) {
    if (text.substr(0, NOTE_HEADER.size() + 1) != std::string(NOTE_HEADER) + '\n') {
        return std::nullopt;
    }
    text.remove_prefix(NOTE_HEADER.size() + 1);
    const auto name = takeLine(text, "name");
    const auto api = takeLine(text, "api");
    const auto shown = takeLine(text, "shown");
    const auto frames = takeLine(text, "frames");
    const auto reason = takeLine(text, "reason");
    const auto own = takeLine(text, "own");
    if (!name || !api || !shown || !frames || !reason || !own || !text.empty()) {
        return std::nullopt;
    }
    const auto plainName = unescapeText(*name);
    const auto apiNumber = toNumber<std::int32_t>(*api);
    const auto frameCount = toNumber<std::uint64_t>(*frames);
    const auto plainReason = unescapeText(*reason);
    const auto ownNanoseconds = toNumber<std::uint64_t>(*own);
    if (!plainName || !apiNumber || !frameCount || !plainReason || !ownNanoseconds ||
        (*shown != "0" && *shown != "1")) {
        return std::nullopt;
    }
    return OverlayNote{process,     *plainName,   *apiNumber,     *shown == "1",
                       *frameCount, *plainReason, *ownNanoseconds};
}

/// Reads a note only if a process of this user wrote it.
std::optional<OverlayNote> readNote(const std::string& directory, pid_t process) {
    std::string text;
    if (readPlainFile(notePath(directory, process), text, NOTE_MAX_BYTES) != 0) {
        return std::nullopt;
    }
    return parse(text, process);
}

/// The processes that the folder has notes of.
std::vector<pid_t> namedProcesses(const std::string& directory) {
    std::vector<pid_t> processes;
    DIR* const entries = opendir(directory.c_str());
    if (entries == nullptr) {
        return processes;
    }
    // No other thread has this stream.
    while (const dirent* const entry = readdir(entries)) {  // NOLINT(concurrency-mt-unsafe)
        const pid_t process = processOfName(entry->d_name);
        if (process != 0) {
            processes.push_back(process);
        }
    }
    closedir(entries);
    std::sort(processes.begin(), processes.end());
    return processes;
}

/// A run's folder is removed together with its notes. In the user's folder, where every program with the
/// layer leaves a note, each new one removes those of ended processes.
void removeOldNotes(const std::string& directory) {
    for (const pid_t process : namedProcesses(directory)) {
        if (kill(process, 0) != 0 && errno == ESRCH && readNote(directory, process)) {
            unlink(notePath(directory, process).c_str());
        }
    }
}

}  // namespace

void writeOverlayNote(const OverlayNote& note) {
    const int callersErrno = errno;
    std::string error;
    const std::string* const directory = ownRuntimeDirectory(error);
    if (directory != nullptr) {
        const std::string path = notePath(*directory, getpid());
        const std::optional<OverlayNote> last = note.wasShown ? std::nullopt : readNote(*directory, getpid());
        if (last && last->wasShown && last->api != note.api) {
            errno = callersErrno;
            return;
        }
        if (runProcess(*directory) == 0 && access(path.c_str(), F_OK) != 0) {
            removeOldNotes(*directory);
        }
        replaceFile(path, toText(note));
    }
    errno = callersErrno;
}

std::vector<OverlayNote> readOverlayNotes(const std::string& directory) {
    std::vector<OverlayNote> notes;
    for (const pid_t process : namedProcesses(directory)) {
        if (auto note = readNote(directory, process)) {
            notes.push_back(std::move(*note));
        }
    }
    return notes;
}

}  // namespace platform
