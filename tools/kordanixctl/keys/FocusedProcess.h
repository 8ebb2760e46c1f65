#pragma once

#include "keys/XFunctions.h"

#include <sys/types.h>

#include <functional>

namespace control {

/// Whether the window that gets the keys now is one of the processes that `isMember` accepts. The server
/// knows the client of a window; where it does not tell, or tells a number that is another machine's or
/// namespace's, the window's "_NET_WM_PID" decides.
bool isFocusIn(const std::function<bool(pid_t)>& isMember, const XFunctions& x, Display* display);

}  // namespace control
