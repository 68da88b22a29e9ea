#pragma once

#include <cstdint>

struct OsImgPoint {
  std::int32_t x = 0;
  std::int32_t y = 0;
};
