// The inverse mapping of the zoom-and-rotation transform (not part of the
// library's interface): each pixel (i, j) of the transformed image is solved
// as P0 + s * A + t * B in double precision and sampled from the
// untransformed image. The plain form solves every pixel; the exact form
// steps the same results in integers and solves only the pixels whose
// results the rounding of the plain form could move.
#pragma once

#include <cstdint>

namespace qvaframe {

struct InverseMap {
  const unsigned char* org = nullptr;  // untransformed image, width x height
  int width = 0, height = 0;
  int ax = 0, ay = 0;  // A = P1 - P0
  int bx = 0, by = 0;  // B = P3 - P0
  // The offsets of pixel (0, 0) of the transformed image from P0.
  int originX = 0, originY = 0;
};

// Both fill imageWidth x imageHeight image and mask bytes; B.y * A.x - B.x
// * A.y must not be 0.
void InverseMapPlain(const InverseMap& map, unsigned char* image, unsigned char* mask,
                     int imageWidth, int imageHeight);
void InverseMapExact(const InverseMap& map, unsigned char* image, unsigned char* mask,
                     int imageWidth, int imageHeight);

}  // namespace qvaframe
