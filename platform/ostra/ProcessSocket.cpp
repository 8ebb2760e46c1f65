#include "ostra/ProcessSocket.h"

#include "ostra/DumpNotice.h"
#include "ostra/logs/LogNotice.h"
#include "runs/RunFolder.h"

#include <dirent.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <system_error>

namespace platform {

namespace {

constexpr std::string_view KEY = "key ";
constexpr std::string_view BACKGROUND = "background";
constexpr std::string_view PICTURE = "picture";
constexpr std::string_view LOG = "log ";
constexpr std::string_view LAST = "last ";
constexpr std::uint32_t SECONDS_MAX = 3600;
constexpr std::string_view FIGURES = "figures ";
constexpr std::string_view SOCKET_BEGIN = "process.";
constexpr std::string_view SOCKET_END = ".sock";
constexpr time_t SEND_PATIENCE_S = 1;

std::string errorText(int error) {
    return std::generic_category().message(error);
}

/// False when the path does not fit into a socket's address.
bool makeAddress(const std::string& path, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

/// A datagram socket, or -1.
int makeSocket() {
    return socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

/// Returns 0 or an error number.
int connectTo(int descriptor, const std::string& path) {
    sockaddr_un address = {};
    if (!makeAddress(path, address)) {
        return ENAMETOOLONG;
    }
    const int result = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    return result == 0 ? 0 : errno;
}

/// Takes a whole number off the front of `text`; false when there is none or it does not fit the type.
template <typename Number>
bool takeNumber(std::string_view& text, Number& number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc()) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return true;
}

std::optional<Ostra::KeyEvent> decodeKey(std::string_view text) {
    Ostra::KeyEvent key = {};
    if (!takeNumber(text, key.keyCode) || text.empty() || text.front() != ' ') {
        return std::nullopt;
    }
    text.remove_prefix(1);
    return takeNumber(text, key.action) && text.empty() ? std::optional(key) : std::nullopt;
}

struct LogWord {
    std::string_view word;
    LogRequest::Kind kind;
};
constexpr LogWord LOG_WORDS[] = {{"start", LogRequest::Kind::START},
                                 {"stop", LogRequest::Kind::STOP},
                                 {"toggle", LogRequest::Kind::TOGGLE}};

/// Takes `beginning` off the front of `text`; false when the text does not begin with it.
bool takeBeginning(std::string_view& text, std::string_view beginning) {
    const bool isThere = text.substr(0, beginning.size()) == beginning;
    text.remove_prefix(isThere ? beginning.size() : 0);
    return isThere;
}

std::optional<LogRequest> decodeLog(std::string_view text) {
    for (const LogWord& each : LOG_WORDS) {
        if (text == each.word) {
            return LogRequest{each.kind};
        }
    }
    LogRequest request = {LogRequest::Kind::LAST};
    return takeBeginning(text, LAST) && takeNumber(text, request.seconds) && text.empty() &&
                   request.seconds <= SECONDS_MAX
               ? std::optional(request)
               : std::nullopt;
}

std::string encodeLog(const LogRequest& request) {
    for (const LogWord& each : LOG_WORDS) {
        if (request.kind == each.kind) {
            return std::string(LOG).append(each.word);
        }
    }
    return std::string(LOG).append(LAST) + std::to_string(std::min(request.seconds, SECONDS_MAX));
}

/// The process id in the name of a socket file; 0 for any other name.
pid_t processOfName(std::string_view name) {
    if (name.size() <= SOCKET_BEGIN.size() + SOCKET_END.size() ||
        name.substr(0, SOCKET_BEGIN.size()) != SOCKET_BEGIN ||
        name.substr(name.size() - SOCKET_END.size()) != SOCKET_END) {
        return 0;
    }
    name.remove_prefix(SOCKET_BEGIN.size());
    name.remove_suffix(SOCKET_END.size());
    pid_t process = 0;
    return takeNumber(name, process) && name.empty() && process > 0 ? process : 0;
}

/// Whether the path is a socket itself, not a link to one.
bool isSocket(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

/// Whether somebody has the socket open. The process id alone does not tell, since another process may have
/// it by now. Removes the socket and the notice of a process that ended without doing so.
bool isListening(const std::string& directory, pid_t process) {
    const std::string path = processSocketPath(directory, process);
    const int descriptor = makeSocket();
    if (descriptor < 0) {
        return false;
    }
    const int error = connectTo(descriptor, path);
    close(descriptor);
    if (error == ECONNREFUSED && isSocket(path)) {
        unlink(path.c_str());
        removeDumpNotice(directory, process);
        if (runProcess(directory) == 0) {  // else its parent reads them at the end
            removeLogNotices(directory, process);
        }
    }
    return error == 0;
}

}  // namespace

std::string encodeMessage(const ProcessMessage& message) {
    switch (message.kind) {
        case ProcessMessage::Kind::BACKGROUND:
            return std::string(BACKGROUND);
        case ProcessMessage::Kind::PICTURE:
            return std::string(PICTURE);
        case ProcessMessage::Kind::LOG:
            return encodeLog(message.log);
        case ProcessMessage::Kind::FIGURES:
            return std::string(FIGURES) + std::to_string(message.asker);
        default:
            return std::string(KEY) + std::to_string(message.key.keyCode) + ' ' +
                   std::to_string(message.key.action);
    }
}

std::optional<ProcessMessage> decodeMessage(std::string_view text) {
    ProcessMessage message;
    if (text.size() > MAX_MESSAGE_SIZE) {
        return std::nullopt;
    }
    if (text == BACKGROUND) {
        message.kind = ProcessMessage::Kind::BACKGROUND;
        return message;
    }
    if (text == PICTURE) {
        message.kind = ProcessMessage::Kind::PICTURE;
        return message;
    }
    if (takeBeginning(text, LOG)) {
        const auto request = decodeLog(text);
        message.kind = ProcessMessage::Kind::LOG;
        message.log = request.value_or(LogRequest());
        return request ? std::optional(message) : std::nullopt;
    }
    if (takeBeginning(text, FIGURES)) {
        message.kind = ProcessMessage::Kind::FIGURES;
        return takeNumber(text, message.asker) && text.empty() ? std::optional(message) : std::nullopt;
    }
    const auto key = takeBeginning(text, KEY) ? decodeKey(text) : std::nullopt;
    if (!key) {
        return std::nullopt;
    }
    message.key = *key;
    return message;
}

std::string processSocketPath(const std::string& directory, pid_t process) {
    return directory + '/' + std::string(SOCKET_BEGIN) + std::to_string(process) + std::string(SOCKET_END);
}

int openSocketAt(const std::string& path) {
    sockaddr_un address = {};
    if (!makeAddress(path, address)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    const int descriptor = makeSocket();
    if (descriptor < 0) {
        return -1;
    }
    fchmod(descriptor, S_IRUSR | S_IWUSR);  // bind() gives the file at most this mode
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const int error = errno;
        close(descriptor);
        errno = error;
        return -1;
    }
    return descriptor;
}

int openProcessSocket(const std::string& directory, std::string& error) {
    const std::string path = processSocketPath(directory, getpid());
    int descriptor = openSocketAt(path);
    if (descriptor < 0 && errno == EADDRINUSE && isSocket(path)) {
        unlink(path.c_str());
        descriptor = openSocketAt(path);
    }
    if (descriptor < 0) {
        error =
            path + ": " + (errno == ENAMETOOLONG ? "the path is too long for a socket" : errorText(errno));
    }
    return descriptor;
}

void sendTo(int socket, const std::string& path, const void* bytes, std::size_t size) {
    sockaddr_un address = {};
    if (makeAddress(path, address) &&
        sendto(socket, bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
               sizeof(address)) < 0 &&
        errno == ECONNREFUSED && isSocket(path)) {
        unlink(path.c_str());
    }
}

std::vector<pid_t> listeningProcesses(const std::string& directory) {
    std::vector<pid_t> processes;
    DIR* const entries = opendir(directory.c_str());
    if (entries == nullptr) {
        return processes;
    }
    // No other thread has this stream.
    while (const dirent* const entry = readdir(entries)) {  // NOLINT(concurrency-mt-unsafe)
        const pid_t process = processOfName(entry->d_name);
        if (process != 0 && isListening(directory, process)) {
            processes.push_back(process);
        }
    }
    closedir(entries);
    std::sort(processes.begin(), processes.end());
    return processes;
}

std::string sendMessage(const std::string& directory, pid_t process, const ProcessMessage& message) {
    const std::string path = processSocketPath(directory, process);
    const int descriptor = makeSocket();
    if (descriptor < 0) {
        return path + ": " + errorText(errno);
    }
    const timeval patience = {SEND_PATIENCE_S, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
    int error = connectTo(descriptor, path);
    if (error == 0) {
        const std::string text = encodeMessage(message);
        error = send(descriptor, text.data(), text.size(), MSG_NOSIGNAL) < 0 ? errno : 0;
    }
    close(descriptor);
    const std::string who = "process " + std::to_string(process);
    switch (error) {
        case 0:
            return {};
        case ENOENT:
        case ECONNREFUSED:
            return who + " does not listen";
        case EAGAIN:
            return who + " does not take its messages";
        default:
            return path + ": " + errorText(error);
    }
}

}  // namespace platform
