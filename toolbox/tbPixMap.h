/// \file tbPixMap.h
/// \brief tbPixMap, an 8-bit pixel map over a buffer.
#pragma once

#include <cstdint>

#include "toolbox/tbRect.h"

/// An 8-bit pixel map: rows of one byte per pixel, described by the address
/// of the top row, the distance between rows and the bounds. A pixel map
/// either belongs to an off-screen world (tbGWorld::PortPixMap()) or
/// describes a buffer that the host owns; it never frees the buffer. Hosts
/// draw a moment of the movie into a pixel map over their own buffer.
class tbPixMap {
 public:
  /// A pixel map over no buffer (TopAddr() null); copying into it or from it
  /// does nothing.
  tbPixMap() = default;
  /// Describes a host buffer; the pixel map does not own it, and the buffer
  /// must outlive every use of the pixel map.
  ///
  /// \param base First byte of the top row, at coordinates (bounds.left,
  ///        bounds.top).
  /// \param rowBytes Distance in bytes between rows, at least the width.
  /// \param bounds The pixel map's coordinates: bounds.Width() by
  ///        bounds.Height() pixels.
  tbPixMap(unsigned char* base, std::int16_t rowBytes, const tbRect& bounds);
  /// Describes the same buffer.
  tbPixMap(const tbPixMap&) = default;
  /// Describes the same buffer. \return This pixel map.
  tbPixMap& operator=(const tbPixMap&) = default;
  /// Leaves the buffer alone.
  virtual ~tbPixMap();

  /// \return The first byte of the top row; null over no buffer.
  unsigned char* TopAddr() const { return base; }
  /// \return The distance in bytes between rows.
  std::int16_t Offset() const { return rowBytes; }
  /// \return The bounds, in the pixel map's coordinates.
  const tbRect& Bounds() const { return bounds; }
  /// \return The width in pixels.
  std::int32_t Width() const { return bounds.right - bounds.left; }
  /// \return The height in pixels.
  std::int32_t Height() const { return bounds.bottom - bounds.top; }
  /// \param x,y A pixel in bounds coordinates.
  /// \return Its colour index; 0 outside the bounds or over no buffer.
  unsigned char Pixel(std::int32_t x, std::int32_t y) const;

 private:
  friend class tbGWorld;
  unsigned char* base = nullptr;
  std::int16_t rowBytes = 0;
  tbRect bounds;
};
