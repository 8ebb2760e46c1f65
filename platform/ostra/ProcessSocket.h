#pragma once

#include "ostra/logs/LogRequest.h"

#include <ostra/Ostra.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How tools reach the companion library inside a running application. A process that listens has a datagram
/// socket in the runtime directory, with its process id in the name; messages are short texts. Any thread may
/// call these functions.
namespace platform {

/// What a tool can tell a process.
struct ProcessMessage {
    enum class Kind { KEY, BACKGROUND, PICTURE, FIGURES, LOG };
    Kind kind = Kind::KEY;
    Ostra::KeyEvent key = {};  ///< with Kind::KEY
    LogRequest log = {};       ///< with Kind::LOG
    std::uint32_t asker = 0;   ///< with Kind::FIGURES
};

/// The longest message, in bytes; longer datagrams are ignored.
constexpr std::size_t MAX_MESSAGE_SIZE = 64;

/// Returns the text of a message: "key CODE ACTION" with signed decimal numbers, "background", "picture"
/// (see PictureRequest.h), "figures ASKER" (see FigureReport.h), "log start", "log stop", "log toggle", or
/// "log last SECONDS".
std::string encodeMessage(const ProcessMessage& message);

/// Reads a message; nothing unless the text is exactly what encodeMessage() writes and at most
/// MAX_MESSAGE_SIZE long.
std::optional<ProcessMessage> decodeMessage(std::string_view text);

/// DIRECTORY/process.PID.sock.
std::string processSocketPath(const std::string& directory, pid_t process);

/// Opens this process's socket, replacing one that an earlier process with the same id left behind. Returns
/// the file descriptor, which the caller owns, or -1 with the reason in `error`.
int openProcessSocket(const std::string& directory, std::string& error);

/// Opens a datagram socket at this path, which only this user may write to; fails with EADDRINUSE when there
/// is something. Returns the descriptor, which the caller owns, or -1 with errno set.
int openSocketAt(const std::string& path);

/// Sends the bytes from one of our sockets to the one at the path, without waiting and without a signal.
/// Removes the socket of somebody who has ended without doing so. Best effort: an error is the reader's
/// matter.
void sendTo(int socket, const std::string& path, const void* bytes, std::size_t size);

/// Returns the processes that listen now, in ascending order. Removes the sockets and notices of
/// processes that ended without doing so. Empty also when the directory cannot be read.
std::vector<pid_t> listeningProcesses(const std::string& directory);

/// Sends a message, and waits at most a second for a process that is slow to take it. Returns an empty text,
/// or why the message was not delivered.
std::string sendMessage(const std::string& directory, pid_t process, const ProcessMessage& message);

}  // namespace platform
