#pragma once

#include "settings/Assignment.h"

#include <chrono>
#include <string>

/// What the overlay says on the screen for a second, even while it is switched off.
namespace control {

/// The assignment that has it say `text` when it is published: a few words that are in the overlay's font.
Assignment noticeOf(const std::string& text);

/// Publishes it; without success when properties cannot be written, which is not worth a word.
void showNotice(const std::string& text);

/// How long the last notice is still to be seen, with some time for the program to draw a frame without it.
std::chrono::milliseconds noticeRest();

}  // namespace control
