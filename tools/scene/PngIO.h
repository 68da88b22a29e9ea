#pragma once

#include <cstdint>
#include <string>

#include "scene/Picture.h"

namespace qvscene {

// Reads an 8-bit indexed (palette) PNG, a regular file of at most
// kMaxPictureBytes (SafeFile.h) with at most maxPixels pixels, checked
// before the pixels are allocated. On failure returns false and sets error
// to a short reason ("not an 8-bit indexed PNG: ...", "cannot open ...: No
// such file or directory").
bool ReadIndexedPng(const std::string& path, Picture* picture, std::string* error,
                    std::uint64_t maxPixels = UINT64_MAX);

// Writes an 8-bit indexed PNG with all 256 palette entries of the picture.
bool WriteIndexedPng(const std::string& path, const Picture& picture, std::string* error);

// Writes an 8-bit RGB PNG.
bool WriteRgbPng(const std::string& path, const RgbPicture& picture, std::string* error);

}  // namespace qvscene
