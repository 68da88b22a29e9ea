/// \file
/// The clipping of the toolbox's pixel copy (CopyBits), shared with the
/// frame drawing's direct copies. Not part of the library's interface.
#pragma once

#include <algorithm>
#include <cstdint>

#include "toolbox/tbRect.h"

/// A block of pixels to copy, in 64-bit coordinates, so that no combination
/// of 32-bit rectangle coordinates can overflow.
struct QvCopyBlock {
  std::int64_t sx;  ///< Left of the block in the source.
  std::int64_t sy;  ///< Top of the block in the source.
  std::int64_t dx;  ///< Left of the block in the destination.
  std::int64_t dy;  ///< Top of the block in the destination.
  std::int64_t w;   ///< Width of the block.
  std::int64_t h;   ///< Height of the block.
};

/// The block that a copy of srcRect to dstRect (the smaller extent of the
/// two on each axis) leaves inside both the source bounds sb and the
/// destination bounds db: each rectangle is clipped and the other moves
/// along. False, with block unspecified, when nothing is left to copy.
inline bool QvClipCopy(const tbRect& srcRect, const tbRect& dstRect, const tbRect& sb,
                       const tbRect& db, QvCopyBlock* block) {
  QvCopyBlock& b = *block;
  b.sx = srcRect.left;
  b.sy = srcRect.top;
  b.dx = dstRect.left;
  b.dy = dstRect.top;
  b.w = std::min(static_cast<std::int64_t>(srcRect.right) - srcRect.left,
                 static_cast<std::int64_t>(dstRect.right) - dstRect.left);
  b.h = std::min(static_cast<std::int64_t>(srcRect.bottom) - srcRect.top,
                 static_cast<std::int64_t>(dstRect.bottom) - dstRect.top);
  // Keeps the one at a within [lo, hi) on one axis, moving the other (c) along.
  auto clip = [](std::int64_t& a, std::int64_t& c, std::int64_t& extent, std::int64_t lo,
                 std::int64_t hi) {
    if (a < lo) {
      const std::int64_t d = lo - a;
      a += d;
      c += d;
      extent -= d;
    }
    if (a + extent > hi) extent = hi - a;
  };
  clip(b.sx, b.dx, b.w, sb.left, sb.right);
  clip(b.sy, b.dy, b.h, sb.top, sb.bottom);
  clip(b.dx, b.sx, b.w, db.left, db.right);
  clip(b.dy, b.sy, b.h, db.top, db.bottom);
  return b.w > 0 && b.h > 0;
}
