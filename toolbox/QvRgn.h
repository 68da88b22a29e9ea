#pragma once

#include <cstdint>

#include "toolbox/BRegion.h"

// Builds regions from images.
class QvRgn : public BRegion {
 public:
  QvRgn() = default;
  ~QvRgn() override;

  // The region becomes the pixels of an 8-bit image (first byte, row distance,
  // width, height) whose index differs from color (flag 1) or equals it
  // (flag 0); pixel (x, y) covers the unit square at (x, y). Gives 1, or 0
  // when the image is null, its size below 1, or memory is short.
  char ColorToRgn(unsigned char* image, std::int16_t rowBytes, std::int16_t width,
                  std::int16_t height, unsigned char color, char flag);
};
