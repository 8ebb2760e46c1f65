#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace platform {

/// The file for a picture of a process's frame, DIRECTORY/picture.PID.pam. Whoever wants a picture creates
/// the file, which must not exist, then sends the message "picture" (see ProcessSocket.h), and removes the
/// file after reading the picture or giving up. There is one request at a time.
///
/// The picture is a binary PAM of the frame with the overlay in it: the header
///   "P7\nWIDTH <w>\nHEIGHT <h>\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
/// and then four bytes a pixel (red, green, blue, and 255, since a screen shows it opaque), rows from top to
/// bottom without padding. The process writes the picture beside the file, with mode 0600, and renames it
/// into place if the file is still there. If it cannot write the picture it removes the file, so that nobody
/// waits.
std::string picturePath(const std::string& directory, pid_t process);

/// Returns the path of the file to write if somebody wants a picture of this process's next frame, once for
/// each request. A layer calls it once a frame; without a request it takes no lock, makes no system call and
/// allocates nothing. Requests arrive only once the process listens (see ProcessChannel.h), that is, after
/// somebody added a background listener.
std::optional<std::string> takePictureRequest();

}  // namespace platform
