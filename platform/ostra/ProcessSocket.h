#pragma once

#include <ostra/Ostra.h>
#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How tools reach the companion library inside a running application. A process that listens has a datagram
/// socket in the runtime directory, named after its process id; messages are short texts. All functions may
/// be called from any thread.
namespace platform {

/// What can be told to a process.
struct ProcessMessage {
    enum class Kind { KEY, BACKGROUND, PICTURE };
    Kind kind = Kind::KEY;
    Ostra::KeyEvent key = {};  ///< with Kind::KEY
};

/// No message is longer, in bytes; longer datagrams are not looked at.
constexpr std::size_t MAX_MESSAGE_SIZE = 64;

/// The text of a message: "key CODE ACTION" with signed decimal numbers, "background" or "picture" (see
/// PictureRequest.h).
std::string encodeMessage(const ProcessMessage& message);

/// Nothing when the text is not exactly what encodeMessage() makes of such a message, or is longer than
/// MAX_MESSAGE_SIZE.
std::optional<ProcessMessage> decodeMessage(std::string_view text);

/// DIRECTORY/process.PID.sock.
std::string processSocketPath(const std::string& directory, pid_t process);

/// Opens this process's socket, taking the place of one that an earlier process with the same id left.
/// Returns the file descriptor, which the caller owns, or -1 with the reason in `error`.
int openProcessSocket(const std::string& directory, std::string& error);

/// The processes that listen now, in ascending order. Removes the sockets and the dump notices of those
/// that ended without doing so themselves. Empty also when the directory cannot be read.
std::vector<pid_t> listeningProcesses(const std::string& directory);

/// Sends a message, waiting at most a second for a process that is slow to take it. Returns an empty text,
/// or why it could not be delivered.
std::string sendMessage(const std::string& directory, pid_t process, const ProcessMessage& message);

}  // namespace platform
