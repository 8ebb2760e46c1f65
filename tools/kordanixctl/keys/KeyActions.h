#pragma once

#include "keys/KeyChords.h"

#include <ostream>

namespace control {

/// Whether it waits for the program.
bool takesTime(KeyAction action);

/// Does what the verb of the same name does for the overlay in this process's runtime directory, and says so
/// on the screen. `told` gets what is for the terminal: where a picture is, and what went wrong.
void performKeyAction(KeyAction action, std::ostream& told);

}  // namespace control
