#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace platform {

/// The file of a process's picture, DIRECTORY/picture.PID.pam. Whoever wants a picture creates it, empty and
/// new, then sends the message "picture" (see ProcessSocket.h), and removes it when it has read the picture
/// or waits no longer. There is one request at a time.
///
/// The picture is a binary PAM of the frame with the overlay in it: the header
///   "P7\nWIDTH <w>\nHEIGHT <h>\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
/// and then four bytes a pixel (red, green, blue, and 255 because a screen shows it opaque), rows from top
/// to bottom without padding. The process writes it aside, with mode 0600, and renames it into place if the
/// file is still there. A process that cannot write it removes the file, so that nobody waits for it.
std::string picturePath(const std::string& directory, pid_t process);

/// Whether somebody waits for a picture of this process's next frame: the path of the file to write, once for
/// each request. For a layer to ask once a frame; while nobody asked it takes no lock, makes no system call
/// and allocates nothing. Requests arrive only once the process listens (see ProcessChannel.h), which it does
/// from the moment that a background listener was added.
std::optional<std::string> takePictureRequest();

}  // namespace platform
