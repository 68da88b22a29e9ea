// The inverse mapping of the zoom-and-rotation transform (not part of the
// library's interface): each pixel (i, j) of the transformed image is solved
// as P0 + s * A + t * B in double precision and sampled from the
// untransformed image. The plain form solves every pixel; the exact form
// steps the same results in integers and solves only the pixels whose
// results the rounding of the plain form could move.
#pragma once

#include <cstdint>

namespace qvaframe {

/// The inverse mapping of one frame's transform.
struct InverseMap {
  /// The untransformed image, width x height bytes; not owned.
  const unsigned char* org = nullptr;
  int width = 0;    ///< The untransformed image's width in pixels.
  int height = 0;   ///< The untransformed image's height in pixels.
  int ax = 0;       ///< A = P1 - P0, x.
  int ay = 0;       ///< A = P1 - P0, y.
  int bx = 0;       ///< B = P3 - P0, x.
  int by = 0;       ///< B = P3 - P0, y.
  int originX = 0;  ///< Offset of pixel (0, 0) of the transformed image from P0, x.
  int originY = 0;  ///< Offset of pixel (0, 0) of the transformed image from P0, y.
};

/// Fills imageWidth x imageHeight image and mask bytes by solving every
/// pixel; B.y * A.x - B.x * A.y must not be 0.
void InverseMapPlain(const InverseMap& map, unsigned char* image, unsigned char* mask,
                     int imageWidth, int imageHeight);
/// The same result, stepped in fixed point with the unclear pixels solved.
void InverseMapExact(const InverseMap& map, unsigned char* image, unsigned char* mask,
                     int imageWidth, int imageHeight);

}  // namespace qvaframe
