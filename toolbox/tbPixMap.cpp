#include "toolbox/tbPixMap.h"

tbPixMap::tbPixMap(unsigned char* base, std::int16_t rowBytes, const tbRect& bounds)
    : base(base), rowBytes(rowBytes), bounds(bounds) {}

tbPixMap::~tbPixMap() = default;

unsigned char tbPixMap::Pixel(std::int32_t x, std::int32_t y) const {
  if (!base || x < bounds.left || x >= bounds.right || y < bounds.top || y >= bounds.bottom) {
    return 0;
  }
  const std::int64_t row = static_cast<std::int64_t>(y) - bounds.top;
  const std::int64_t col = static_cast<std::int64_t>(x) - bounds.left;
  return base[row * rowBytes + col];
}
