#pragma once

#include <cstdint>

class tbColorTable;
class tbGWorld;
class tbPixMap;
class tbRect;
class tbRegion;

// The graphics toolbox: off-screen worlds, masked pixel copies and strings.
class tbToolBox {
 public:
  tbToolBox() = default;
  virtual ~tbToolBox();

  // Makes an 8-bit world of the given bounds (left and top must be 0, width
  // and height at least 1) with a copy of table (a black table when null),
  // its pixels 0. Stores it through world and gives 1; 0 on failure (world
  // then receives null).
  std::int16_t NewGWorld(tbGWorld** world, std::int16_t depth, tbRect* bounds, tbColorTable* table);
  void DisposeGWorld(tbGWorld* world);

  // Copies the pixels of srcRect in src to dstRect in dst (same size; the
  // smaller extent is used when they differ), only where the region (in
  // destination coordinates) allows; a null region masks nothing, a region
  // object whose region was never created (New) lets nothing through. Both
  // rectangles are clipped to their pixel maps. mode must be 0x00CC0020
  // (source copy); any other mode copies nothing.
  void CopyBits(tbPixMap* src, tbPixMap* dst, tbRect* srcRect, tbRect* dstRect, std::uint32_t mode,
                tbRegion* region);

  // A new handle to a copy of the NUL-terminated string: the caller frees the
  // block with GlobalFree and the handle with operator delete (QvFreeString
  // does both). Null for a null string or when an allocation fails.
  unsigned char** NewString(unsigned char* text);
};

// Frees a handle made by NewString (both the block and the handle); null is
// allowed.
void QvFreeString(unsigned char** handle);

namespace qv {
/// The library's one toolbox object.
extern tbToolBox tb;
}  // namespace qv
