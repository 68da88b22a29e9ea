#pragma once

#include <cstdint>

class tbPoint {
 public:
  tbPoint() = default;
  tbPoint(std::int32_t px, std::int32_t py) : x(px), y(py) {}
  tbPoint(const tbPoint&) = default;
  tbPoint& operator=(const tbPoint&) = default;
  virtual ~tbPoint();

  bool operator==(const tbPoint& o) const { return x == o.x && y == o.y; }
  bool operator!=(const tbPoint& o) const { return !(*this == o); }

  std::int32_t x = 0;
  std::int32_t y = 0;
};
