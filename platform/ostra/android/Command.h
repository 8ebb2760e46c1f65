#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The property that takes the place of the volume keys and of the host's messages: "<n> dump", "<n> capture"
/// or "<n> picture". Every new n is a new command.
inline constexpr const char* COMMAND_PROPERTY = "debug.kordanix.command";

struct Command {
    enum class Kind { DUMP, CAPTURE, PICTURE };
    std::string number;  ///< its digits
    Kind kind = Kind::DUMP;
};

/// Reads the property's text; nothing when it is no command.
std::optional<Command> parseCommand(std::string_view text);

/// The name of the file with the picture that a command asked for.
inline std::string pictureName(const std::string& number) {
    return "picture-" + number + ".pam";
}

}  // namespace platform
