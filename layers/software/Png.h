#pragma once

#include <string>

namespace software {

class Image;

/// Writes the picture as an 8-bit RGBA PNG. The file is complete or not there at all: it is written under a
/// temporary name in the same folder and renamed. Replaces only a regular file. On failure returns false,
/// leaves `path` alone and sets `error` to a sentence that names the file.
bool writePng(const Image& image, const std::string& path, std::string& error);

/// Makes the same PNG in memory. On failure returns false and sets `error` to the reason.
bool encodePng(const Image& image, std::string& bytes, std::string& error);

/// Reads a PNG of any colour type as 8-bit RGBA. On failure returns false, leaves `image` alone and sets
/// `error` to a sentence that names the file. Refuses pictures over 64 million pixels.
bool readPng(const std::string& path, Image& image, std::string& error);

}  // namespace software
