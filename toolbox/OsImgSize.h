/// \file OsImgSize.h
/// \brief OsImgSize, a size converted by BZoom.
#pragma once

#include <cstdint>

/// A size of the platform's image types, converted in place by BZoom.
struct OsImgSize {
  std::int32_t width = 0;   ///< Width, in pixels.
  std::int32_t height = 0;  ///< Height, in pixels.
};
