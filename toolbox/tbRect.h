/// \file tbRect.h
/// \brief tbRect, a rectangle of the toolbox.
#pragma once

#include <cstdint>

/// A rectangle in pixels: left and top inclusive, right and bottom exclusive,
/// signed 32-bit. Filled directly or with qv::SetRect().
class tbRect {
 public:
  /// The empty rectangle (0, 0, 0, 0).
  tbRect() = default;
  /// The rectangle (l, t, r, b).
  ///
  /// \param l,t Inclusive left and top edges.
  /// \param r,b Exclusive right and bottom edges.
  tbRect(std::int32_t l, std::int32_t t, std::int32_t r, std::int32_t b)
      : left(l), top(t), right(r), bottom(b) {}
  /// Copies the four edges.
  tbRect(const tbRect&) = default;
  /// Copies the four edges. \return This rectangle.
  tbRect& operator=(const tbRect&) = default;
  /// Destroys the rectangle.
  virtual ~tbRect();

  /// \return right - left, in pixels (negative when the edges are swapped).
  std::int32_t Width() const { return right - left; }
  /// \return bottom - top, in pixels (negative when the edges are swapped).
  std::int32_t Height() const { return bottom - top; }
  /// \param o Another rectangle. \return true when all four edges are equal.
  bool operator==(const tbRect& o) const {
    return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
  }
  /// \param o Another rectangle. \return true when an edge differs.
  bool operator!=(const tbRect& o) const { return !(*this == o); }

  std::int32_t left = 0;    ///< Left edge, inclusive.
  std::int32_t top = 0;     ///< Top edge, inclusive.
  std::int32_t right = 0;   ///< Right edge, exclusive.
  std::int32_t bottom = 0;  ///< Bottom edge, exclusive.
};
