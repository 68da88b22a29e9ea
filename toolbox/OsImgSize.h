#pragma once

#include <cstdint>

struct OsImgSize {
  std::int32_t width = 0;
  std::int32_t height = 0;
};
