#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvscene {

// An 8-bit indexed picture: one byte per pixel, rows of width bytes from the
// top, and its palette. Entries the file did not define are black.
struct Picture {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<unsigned char> pixels;
  unsigned char palette[256][3] = {};
  int paletteCount = 0;  // entries the file defined

  unsigned char* Row(std::int32_t y) {
    return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
  const unsigned char* Row(std::int32_t y) const {
    return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
  }
  unsigned char At(std::int32_t x, std::int32_t y) const { return Row(y)[x]; }
};

// An RGB picture, three bytes per pixel.
struct RgbPicture {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<unsigned char> pixels;  // r, g, b per pixel, rows from the top
};

}  // namespace qvscene
