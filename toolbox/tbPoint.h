/// \file tbPoint.h
/// \brief tbPoint, a point of the toolbox.
#pragma once

#include <cstdint>

/// A point: two signed 32-bit coordinates, in pixels (y grows downward).
class tbPoint {
 public:
  /// The point (0, 0).
  tbPoint() = default;
  /// The point (px, py).
  ///
  /// \param px,py Coordinates in pixels.
  tbPoint(std::int32_t px, std::int32_t py) : x(px), y(py) {}
  /// Copies both coordinates.
  tbPoint(const tbPoint&) = default;
  /// Copies both coordinates. \return This point.
  tbPoint& operator=(const tbPoint&) = default;
  /// Destroys the point.
  virtual ~tbPoint();

  /// \param o Another point. \return true when both coordinates are equal.
  bool operator==(const tbPoint& o) const { return x == o.x && y == o.y; }
  /// \param o Another point. \return true when a coordinate differs.
  bool operator!=(const tbPoint& o) const { return !(*this == o); }

  std::int32_t x = 0;  ///< Horizontal coordinate, in pixels.
  std::int32_t y = 0;  ///< Vertical coordinate, in pixels.
};
