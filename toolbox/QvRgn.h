/// \file QvRgn.h
/// \brief QvRgn, a region built from the pixels of an 8-bit image.
#pragma once

#include <cstdint>

#include "toolbox/BRegion.h"

/// A region built from an 8-bit image: the pixels of one colour index, or
/// of every other index. Its result is usually copied into a tbRegion with
/// BRegion::CopyRegion() to mask a copy.
class QvRgn : public BRegion {
 public:
  /// The `flag` of ColorToRgn(): the region covers the pixels whose index
  /// differs from the colour.
  static constexpr char kNotColor = 1;
  /// The `flag` of ColorToRgn(): the region covers the pixels whose index
  /// equals the colour.
  static constexpr char kOfColor = 0;

  /// An object without a region.
  QvRgn() = default;
  /// Frees the region.
  ~QvRgn() override;

  /// The region becomes the set of pixels of an image chosen by colour; pixel
  /// (x, y) covers the unit square at (x, y), with (0, 0) the first byte.
  /// Creates the region (New()) when there is none.
  ///
  /// \param image First byte of the top row, read only, owned by the caller.
  /// \param rowBytes Distance in bytes between rows; at least `width`.
  /// \param width,height Size in pixels, 1 or more.
  /// \param color The colour index.
  /// \param flag kNotColor (any non-zero value) to cover the pixels whose
  ///        index differs from `color`, kOfColor to cover those equal to it.
  /// \return 1 on success; 0 when `image` is null, the size is below 1,
  ///         `rowBytes` is below `width`, or memory is short (the region may
  ///         then be left as it was or empty). Allocates the region and a
  ///         temporary list of rectangles.
  char ColorToRgn(unsigned char* image, std::int16_t rowBytes, std::int16_t width,
                  std::int16_t height, unsigned char color, char flag);
};
