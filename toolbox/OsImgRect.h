/// \file OsImgRect.h
/// \brief OsImgRect, a rectangle converted by BZoom.
#pragma once

#include <cstdint>

/// A rectangle of the platform's image types, converted in place by BZoom.
struct OsImgRect {
  std::int32_t left = 0;    ///< Left edge, in pixels (inclusive).
  std::int32_t top = 0;     ///< Top edge, in pixels (inclusive).
  std::int32_t right = 0;   ///< Right edge, in pixels (exclusive).
  std::int32_t bottom = 0;  ///< Bottom edge, in pixels (exclusive).
};
