#pragma once

#include <string>

/// Gets layers into a program through variables in its environment.
namespace control {

/// A layer's way into a program. To add a layer, add a row in WaysIn.cpp.
struct WayIn {
    const char* graphics;  ///< what the layer draws over, in messages
    const char* variable;  ///< of the program's environment
    const char* file;  ///< or folder: its path goes first into the variable, before what the user has there
    char separator;    ///< between the paths in the variable
    bool isExpanded;   ///< the reader of the variable replaces $LIB, $ORIGIN and $PLATFORM in paths
    bool isSplitAtBlanks;  ///< and takes blanks for separators too
    bool isOptional;       ///< what is not installed is left out
    const char* unset;     ///< what the variable means while it is not set
    const char* enabling;  ///< a variable that is set to 1 besides; empty for none
};

/// Sets the variables of all layers in this process's environment. Returns an empty text, or why a layer
/// cannot be found. Call it in a process with one thread.
std::string openWaysIn();

/// "OpenGL or OpenGL ES": what the layers draw over.
std::string knownGraphics();

}  // namespace control
