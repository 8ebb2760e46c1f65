#pragma once

#include <optional>
#include <string>

namespace platform {

/// Whether somebody asked this process for a picture of its next frame: the absolute path of the file to
/// write, once for each request. For a layer to ask once a frame; while nobody asked it takes no lock, makes
/// no system call and allocates nothing. Requests arrive only once the process listens (see KeyChannel.h),
/// which it does from the moment that a background listener was added. Of several requests only the latest
/// counts, and one that its sender gave up meanwhile is nothing.
///
/// The file is a binary PAM of the frame with the overlay in it: the header
///   "P7\nWIDTH <w>\nHEIGHT <h>\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
/// and then four bytes a pixel (red, green, blue, and 255 because a screen shows it opaque), rows from top
/// to bottom without padding. It is written as PATH.part, with mode 0600, and renamed to PATH when it is
/// complete. Whoever cannot write it removes PATH, so that nobody waits for it.
std::optional<std::string> takePictureRequest();

}  // namespace platform
