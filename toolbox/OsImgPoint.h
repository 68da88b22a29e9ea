/// \file OsImgPoint.h
/// \brief OsImgPoint, a point converted by BZoom.
#pragma once

#include <cstdint>

/// A point of the platform's image types, converted in place by BZoom.
struct OsImgPoint {
  std::int32_t x = 0;  ///< Horizontal coordinate, in pixels.
  std::int32_t y = 0;  ///< Vertical coordinate, in pixels, growing downward.
};
