#pragma once

#include <cstdint>

// A rectangle: left and top inclusive, right and bottom exclusive.
class tbRect {
 public:
  tbRect() = default;
  tbRect(std::int32_t l, std::int32_t t, std::int32_t r, std::int32_t b)
      : left(l), top(t), right(r), bottom(b) {}
  tbRect(const tbRect&) = default;
  tbRect& operator=(const tbRect&) = default;
  virtual ~tbRect();

  std::int32_t Width() const { return right - left; }
  std::int32_t Height() const { return bottom - top; }
  bool operator==(const tbRect& o) const {
    return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
  }
  bool operator!=(const tbRect& o) const { return !(*this == o); }

  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
};
