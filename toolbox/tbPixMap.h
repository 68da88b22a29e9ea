#pragma once

#include <cstdint>

#include "toolbox/tbRect.h"

// An 8-bit pixel map: rows of one byte per pixel. A pixel map either belongs
// to an off-screen world or describes a buffer that the host owns.
class tbPixMap {
 public:
  tbPixMap() = default;
  // Describes a host buffer of bounds.Width() x bounds.Height() pixels with
  // rows rowBytes apart; the pixel map does not own it.
  tbPixMap(unsigned char* base, std::int16_t rowBytes, const tbRect& bounds);
  tbPixMap(const tbPixMap&) = default;
  tbPixMap& operator=(const tbPixMap&) = default;
  virtual ~tbPixMap();

  unsigned char* TopAddr() const { return base; }
  std::int16_t Offset() const { return rowBytes; }
  const tbRect& Bounds() const { return bounds; }
  std::int32_t Width() const { return bounds.right - bounds.left; }
  std::int32_t Height() const { return bounds.bottom - bounds.top; }
  // Pixel at (x, y) in bounds coordinates; 0 outside.
  unsigned char Pixel(std::int32_t x, std::int32_t y) const;

 private:
  friend class tbGWorld;
  unsigned char* base = nullptr;
  std::int16_t rowBytes = 0;
  tbRect bounds;
};
