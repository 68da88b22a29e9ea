#include "aframe/QvAFrame.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "aframe/QvAFrameLocal.h"
#include "aframe/QvAFrameRows.h"
#include "cast/QvMCast.h"
#include "toolbox/QvCopyLocal.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/QvPlatformLocal.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

using namespace qvaframe;

// ---------------------------------------------------------------------------
// Drawing

namespace {

// A scroll brought into 0 .. size - 1 (size 1 or more), as repeated adding
// or subtracting of the size would.
int ScrollIn(int scroll, int size) {
  const int r = scroll % size;
  return r < 0 ? r + size : r;
}

// The copying form, with the palette area as a 256-bit set (null: none).
void CopyPlaced(const unsigned char* image, const unsigned char* mask, std::int16_t imageRowBytes,
                unsigned char* dst, std::int16_t dstRowBytes, std::int16_t left, std::int16_t top,
                std::int16_t right, std::int16_t bottom, std::int16_t clipLeft,
                std::int16_t clipTop, std::int16_t clipRight, std::int16_t clipBottom,
                const unsigned char* area) {
  if (!image || !mask || !dst) return;
  // Clipping, once per copy, in int so that no difference wraps around: a
  // rectangle whose right or bottom edge wrapped past 16 bits comes out empty.
  const int x0 = left < clipLeft ? clipLeft : left;
  const int y0 = top < clipTop ? clipTop : top;
  const int x1 = right > clipRight ? clipRight : right;
  const int y1 = bottom > clipBottom ? clipBottom : bottom;
  const int w = x1 - x0;
  const int h = y1 - y0;
  if (w <= 0 || h <= 0) return;
  // The rectangle must not be wider than the image rows, and the clip must
  // not start before the target's first pixel.
  if (right - left > imageRowBytes || x0 < 0 || y0 < 0) return;
  const int skipX = x0 - left;
  const int skipY = y0 - top;

  const unsigned char* s = image + static_cast<std::ptrdiff_t>(skipY) * imageRowBytes + skipX;
  const unsigned char* m = mask + static_cast<std::ptrdiff_t>(skipY) * imageRowBytes + skipX;
  unsigned char* d = dst + static_cast<std::ptrdiff_t>(y0) * dstRowBytes + x0;
  const RowKernels& rows = Rows();
  if (area) {
    // A pixel passes when its colour is in the area and its mask byte is
    // not 0.
    for (int row = 0; row < h; ++row) {
      rows.filtered(s, m, d, w, area);
      s += imageRowBytes;
      m += imageRowBytes;
      d += dstRowBytes;
    }
    return;
  }
  auto* copyRow = rows.masked;
  if (w == imageRowBytes && w == dstRowBytes) {
    // Rows back to back in the image and in the target: one long row.
    copyRow(s, m, d, static_cast<long>(w) * h);
    return;
  }
  for (int row = 0; row < h; ++row) {
    copyRow(s, m, d, w);
    s += imageRowBytes;
    m += imageRowBytes;
    d += dstRowBytes;
  }
}

}  // namespace

void QvAFrame::localDrawImage(unsigned char* image, unsigned char* mask, std::int16_t imageRowBytes,
                              unsigned char* dst, std::int16_t dstRowBytes, std::int16_t left,
                              std::int16_t top, std::int16_t right, std::int16_t bottom,
                              std::int16_t clipLeft, std::int16_t clipTop, std::int16_t clipRight,
                              std::int16_t clipBottom, QvPal* pal) {
  // The area's answer for each colour index, asked once per copy.
  unsigned char area[32];
  if (pal) pal->FlagBits(area);
  CopyPlaced(image, mask, imageRowBytes, dst, dstRowBytes, left, top, right, bottom, clipLeft,
             clipTop, clipRight, clipBottom, pal ? area : nullptr);
}

void QvAFrame::localDrawImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                              std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                              std::int16_t fill, char wrap, std::int16_t scrollX,
                              std::int16_t scrollY, tbRect* frameRect) {
  unsigned char area[32];
  if (pal) pal->FlagBits(area);
  localPlaceFrame(curFrame, dst, dstRowBytes, dstWidth, dstHeight, x, y, pal ? area : nullptr, fill,
                  wrap, scrollX, scrollY, frameRect);
}

void QvAFrame::localPlaceFrame(const QvAFrameInfo* f, unsigned char* dst, std::int16_t dstRowBytes,
                               std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x,
                               std::int16_t y, const unsigned char* area, std::int16_t fill,
                               char wrap, std::int16_t scrollX, std::int16_t scrollY,
                               tbRect* frameRect) {
  if (!f || !f->image || !f->mask || !dst) {
    if (frameRect) qv::SetRect(frameRect, 0, 0, 0, 0);
    return;
  }
  const std::int16_t iw = f->imageWidth, ih = f->imageHeight;
  const std::int16_t left = Add16(x, f->imageOffsetX);
  const std::int16_t top = Add16(y, f->imageOffsetY);
  const std::int16_t right = Add16(left, iw);
  const std::int16_t bottom = Add16(top, ih);
  if (frameRect) qv::SetRect(frameRect, left, top, right, bottom);

  // The target is dstHeight rows of dstWidth pixels, rows dstRowBytes apart;
  // a description that cannot be right (negative sizes, rows shorter than
  // the width) draws nothing.
  if (dstWidth < 0 || dstHeight < 0 || dstRowBytes < dstWidth) return;
  if (iw < 1 || ih < 1) return;

  const std::int16_t clipLeft = left > 0 ? left : 0;
  const std::int16_t clipTop = top > 0 ? top : 0;
  const std::int16_t clipRight = right < dstWidth ? right : dstWidth;
  const std::int16_t clipBottom = bottom < dstHeight ? bottom : dstHeight;

  const int sx = ScrollIn(scrollX, iw), sy = ScrollIn(scrollY, ih);

  // In a movie of thousands of members the frame's image and mask are rarely
  // in the caches. Asking for their first kilobyte now lets those reads
  // overlap the filling of the target instead of following it; the
  // processor's own prefetching carries on from there.
  const std::size_t ahead = std::min<std::size_t>(static_cast<std::size_t>(iw) * ih, 1024u);
  for (std::size_t o = 0; o < ahead; o += 64) {
    __builtin_prefetch(f->image + o);
    __builtin_prefetch(f->mask + o);
  }
  if (fill != -1) {
    const unsigned char v = static_cast<unsigned char>(fill);
    for (int row = 0; row < dstHeight; ++row)
      std::memset(dst + static_cast<std::ptrdiff_t>(row) * dstRowBytes, v,
                  static_cast<std::size_t>(dstWidth));
  }

  auto copy = [&](int dx, int dy) {
    CopyPlaced(f->image, f->mask, iw, dst, dstRowBytes, Add16(left, dx), Add16(top, dy),
               Add16(right, dx), Add16(bottom, dy), clipLeft, clipTop, clipRight, clipBottom, area);
  };
  copy(sx, sy);
  if (wrap & 1) copy(sx - iw, sy);
  if (wrap & 2) copy(sx, sy - ih);
  if (wrap == 3) copy(sx - iw, sy - ih);
}

namespace {

// Whether two pixel maps' buffers may share bytes (rows from the top of the
// first to the bottom of the last).
bool Overlap(tbPixMap* a, tbPixMap* b) {
  if (!a || !b || !a->TopAddr() || !b->TopAddr()) return false;
  auto span = [](tbPixMap* p, const unsigned char** lo, const unsigned char** hi) {
    const std::ptrdiff_t rows = p->Height() > 0 ? p->Height() : 0;
    const std::ptrdiff_t row = p->Offset() > 0 ? p->Offset() : 0;
    *lo = p->TopAddr();
    *hi = p->TopAddr() + rows * row;
  };
  const unsigned char *alo, *ahi, *blo, *bhi;
  span(a, &alo, &ahi);
  span(b, &blo, &bhi);
  return a->TopAddr() == b->TopAddr() || (alo < bhi && blo < ahi);
}

// Whether some pixel of the image differs from key.
bool AnyDiffers(const unsigned char* image, std::int16_t rowBytes, std::int16_t w, std::int16_t h,
                unsigned char key) {
  for (int y = 0; y < h; ++y) {
    const unsigned char* row = image + static_cast<std::ptrdiff_t>(y) * rowBytes;
    if (row[0] != key || std::memcmp(row, row + 1, static_cast<std::size_t>(w - 1)) != 0)
      return true;
  }
  return false;
}

// tbToolBox::CopyBits of srcRect in src to dstRect in dst (source copy),
// through the region of the source pixels that differ from key: the same
// clipping, then the keyed row copy.
void KeyedCopy(tbPixMap* src, tbPixMap* dst, const tbRect& srcRect, const tbRect& dstRect,
               unsigned char key) {
  if (!src || !dst || !src->TopAddr() || !dst->TopAddr()) return;
  const tbRect& sb = src->Bounds();
  const tbRect& db = dst->Bounds();
  QvCopyBlock b;
  if (!QvClipCopy(srcRect, dstRect, sb, db, &b)) return;
  const std::int64_t srcRow = src->Offset(), dstRow = dst->Offset();
  const unsigned char* from = src->TopAddr() + (b.sy - sb.top) * srcRow + (b.sx - sb.left);
  unsigned char* to = dst->TopAddr() + (b.dy - db.top) * dstRow + (b.dx - db.left);
  const RowKernels& rows = Rows();
  for (std::int64_t y = 0; y < b.h; ++y, from += srcRow, to += dstRow)
    rows.keyed(from, to, b.w, key);
}

// What drawing frame f into world (fill set over it first, then the frame
// placed at (x, y), through the palette area given as a 256-bit set or
// through its mask alone when area is null) and copying the world to target
// in dst leaves in dst, done straight from the frame. Through an area, the
// copy takes the world's pixels that differ from fill, and anyPass tells
// whether some pixel of the world would; without one, it takes the frame's
// rectangle. False, with nothing done, where the world would not be filled
// whole (no image, no pixels, a description that cannot be right) or a
// tile's edge would wrap around 16 bits.
bool DirectDraw(const QvAFrameInfo* f, tbGWorld* world, const unsigned char* area, std::int16_t x,
                std::int16_t y, std::int16_t fill, char wrap, std::int16_t scrollX,
                std::int16_t scrollY, tbPixMap* dst, const tbRect& target, bool* anyPass) {
  tbPixMap* pm = world->PortPixMap();
  if (!f || !f->image || !f->mask || !pm->TopAddr() || !dst || !dst->TopAddr()) return false;
  const tbRect& sb = pm->Bounds();
  const tbRect& wb = world->bounds;
  if (sb.left != wb.left || sb.top != wb.top || sb.right != wb.right || sb.bottom != wb.bottom)
    return false;
  const int w = Sub16(wb.right, wb.left), h = Sub16(wb.bottom, wb.top);
  const int iw = f->imageWidth, ih = f->imageHeight;
  if (iw < 1 || ih < 1 || w < 1 || h < 1 || pm->Offset() < w) return false;
  const int left = Add16(x, f->imageOffsetX), top = Add16(y, f->imageOffsetY);
  // No tile's edge wraps around: the tiles, a whole image apart, never
  // overlap, and the world holds in each pixel at most one tile's.
  if (left - iw < INT16_MIN || left + 2 * iw > INT16_MAX || top - ih < INT16_MIN ||
      top + 2 * ih > INT16_MAX)
    return false;
  // The world's pixels that would differ from fill: in the area, and not fill.
  unsigned char pass[32] = {};
  if (area) std::memcpy(pass, area, sizeof pass);
  const unsigned key = static_cast<unsigned char>(fill);
  pass[key >> 3] = static_cast<unsigned char>(pass[key >> 3] & ~(1u << (key & 7)));
  auto passes = [&pass](unsigned char v) { return (pass[v >> 3] >> (v & 7)) & 1; };

  QvCopyBlock b;
  bool some = QvClipCopy(wb, target, sb, dst->Bounds(), &b);
  const tbRect& db = dst->Bounds();
  // The part of the world copied, in world pixels, and how far its target
  // lies from it. Without an area, only the frame's rectangle is copied,
  // fill colour and all.
  std::int64_t wx0 = b.sx - sb.left, wy0 = b.sy - sb.top;
  const std::int64_t toX = b.dx - db.left - wx0, toY = b.dy - db.top - wy0;
  std::int64_t wx1 = wx0 + b.w, wy1 = wy0 + b.h;
  const std::int64_t dstRow = dst->Offset();
  if (some && !area) {
    wx0 = std::max<std::int64_t>(wx0, left), wy0 = std::max<std::int64_t>(wy0, top);
    wx1 = std::min<std::int64_t>(wx1, left + iw), wy1 = std::min<std::int64_t>(wy1, top + ih);
    some = wx1 > wx0 && wy1 > wy0;
    for (std::int64_t row = wy0; some && row < wy1; ++row)
      std::memset(dst->TopAddr() + (row + toY) * dstRow + (wx0 + toX), static_cast<int>(key),
                  static_cast<std::size_t>(wx1 - wx0));
  }
  const int clipL = std::max(left, 0), clipT = std::max(top, 0);
  const int clipR = std::min(left + iw, w), clipB = std::min(top + ih, h);
  const int sx = ScrollIn(scrollX, iw), sy = ScrollIn(scrollY, ih);
  const RowKernels& rows = Rows();
  *anyPass = false;
  const int tileX[4] = {sx, sx - iw, sx, sx - iw};
  const int tileY[4] = {sy, sy, sy - ih, sy - ih};
  // Tile 0, then the wrapped ones the mode asks for.
  const bool used[4] = {true, (wrap & 1) != 0, (wrap & 2) != 0, wrap == 3};
  // Each tile: its image's left and top, and the part of it inside the
  // world, in world pixels.
  struct Tile {
    int left, top, x0, y0, x1, y1;
  } tiles[4];
  int count = 0;
  for (int k = 0; k < 4; ++k) {
    if (!used[k]) continue;
    Tile& t = tiles[count];
    t.left = left + tileX[k], t.top = top + tileY[k];
    t.x0 = std::max(t.left, clipL), t.y0 = std::max(t.top, clipT);
    t.x1 = std::min(t.left + iw, clipR), t.y1 = std::min(t.top + ih, clipB);
    if (t.x1 <= t.x0 || t.y1 <= t.y0) continue;
    ++count;
    if (!some) continue;
    const std::int64_t cx0 = std::max<std::int64_t>(t.x0, wx0);
    const std::int64_t cy0 = std::max<std::int64_t>(t.y0, wy0);
    const std::int64_t cx1 = std::min<std::int64_t>(t.x1, wx1);
    const std::int64_t cy1 = std::min<std::int64_t>(t.y1, wy1);
    if (cx1 <= cx0 || cy1 <= cy0) continue;
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>((cy0 - t.top) * iw + (cx0 - t.left));
    const unsigned char* s = f->image + at;
    const unsigned char* m = f->mask + at;
    unsigned char* d = dst->TopAddr() + (cy0 + toY) * dstRow + (cx0 + toX);
    for (std::int64_t row = cy0; row < cy1; ++row, s += iw, m += iw, d += dstRow) {
      if (area)
        *anyPass |= rows.filtered(s, m, d, cx1 - cx0, pass);
      else
        rows.masked(s, m, d, cx1 - cx0);
    }
  }
  // Nothing passed inside the target: a pixel may still pass outside it.
  for (int k = 0; area && k < count && !*anyPass; ++k) {
    const Tile& t = tiles[k];
    for (int row = t.y0; row < t.y1 && !*anyPass; ++row) {
      const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(row - t.top) * iw + (t.x0 - t.left);
      for (int i = 0; i < t.x1 - t.x0 && !*anyPass; ++i)
        *anyPass = f->mask[at + i] != 0 && passes(f->image[at + i]);
    }
  }
  return true;
}

}  // namespace

char QvAFrame::localDrawPicture(tbGWorld* world, std::int16_t x, std::int16_t y, QvPal* pal,
                                std::int16_t fill, char wrap, std::int16_t scrollX,
                                std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                                std::int16_t destY) {
  if (!world) return 0;
  tbPixMap* pm = world->PortPixMap();
  unsigned char* base = pm->TopAddr();
  const std::int16_t rowBytes = pm->Offset();
  const std::int16_t w = Sub16(world->bounds.right, world->bounds.left);
  const std::int16_t h = Sub16(world->bounds.bottom, world->bounds.top);

  tbRect frame;
  localDrawImage(base, rowBytes, w, h, x, y, pal, fill, wrap, scrollX, scrollY, &frame);

  tbRect target(destX, destY, Add16(destX, w), Add16(destY, h));
  if (pal && !Overlap(pm, destPixMap)) {
    // The region of the world's pixels that differ from the fill colour
    // masks a copy of the world: the same as copying those pixels alone,
    // which is done without making the region. The allocations that making
    // it would attempt (the colour region, its boxes when some pixel
    // differs, the copy's region) are still counted, in that order, so that
    // a failing one ends the same way: nothing copied, and 0 when the
    // copy's region fails.
    const unsigned char key = static_cast<unsigned char>(fill);
    bool covered = base && w >= 1 && h >= 1 && rowBytes >= w;
    if (covered && QvAllocationFails()) {
      covered = false;
    } else if (covered && AnyDiffers(base, rowBytes, w, h, key) && QvAllocationFails()) {
      covered = false;
    }
    if (QvAllocationFails()) return 0;
    if (covered) KeyedCopy(pm, destPixMap, world->bounds, target, key);
    return 1;
  }

  tbRegion region;
  QvRgn colorRegion;
  if (pal) {
    colorRegion.ColorToRgn(base, rowBytes, w, h, static_cast<unsigned char>(fill), 1);
    if (!region.New()) return 0;
    region.CopyRegion(&colorRegion);
  } else {
    if (!region.New()) return 0;
    region.RectRegion(frame.left, frame.top, frame.right, frame.bottom);
  }
  region.OffsetRegion(destX, destY);
  qv::tb.CopyBits(pm, destPixMap, &world->bounds, &target, 0x00CC0020, &region);
  region.Dispose();
  return 1;
}

char QvAFrame::DrawAImage(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
                          std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x,
                          std::int16_t y, QvPal* pal, std::int16_t fill, char wrap,
                          std::int16_t scrollX, std::int16_t scrollY, tbRect* frameRect) {
  if (!localSearchA(index)) return 0;
  localDrawImage(dst, dstRowBytes, dstWidth, dstHeight, x, y, pal, fill, wrap, scrollX, scrollY,
                 frameRect);
  return 1;
}

char QvAFrame::DrawMImage(std::int16_t position, unsigned char* dst, std::int16_t dstRowBytes,
                          std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x,
                          std::int16_t y, QvPal* pal, std::int16_t fill, char wrap,
                          std::int16_t scrollX, std::int16_t scrollY, tbRect* frameRect) {
  if (!localSearchM(position)) return 0;
  localDrawImage(dst, dstRowBytes, dstWidth, dstHeight, x, y, pal, fill, wrap, scrollX, scrollY,
                 frameRect);
  return 1;
}

char QvAFrame::DrawMImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                          std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                          std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                          tbRect* frameRect) {
  if (runFlag) localGetCur();
  return DrawMImage(Low16(cur), dst, dstRowBytes, dstWidth, dstHeight, x, y, pal, fill, wrap,
                    scrollX, scrollY, frameRect);
}

char QvAFrame::DrawAPicture(std::int16_t index, tbGWorld* world, std::int16_t x, std::int16_t y,
                            QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                            std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                            std::int16_t destY) {
  if (!localSearchA(index)) return 0;
  return localDrawPicture(world, x, y, pal, fill, wrap, scrollX, scrollY, destPixMap, destX, destY);
}

char QvAFrame::DrawMPicture(std::int16_t position, tbGWorld* world, std::int16_t x, std::int16_t y,
                            QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                            std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                            std::int16_t destY) {
  if (!localSearchM(position)) return 0;
  return localDrawPicture(world, x, y, pal, fill, wrap, scrollX, scrollY, destPixMap, destX, destY);
}

// ---------------------------------------------------------------------------
// A cast member's drawing

char QvAFrame::localDrawMember(std::int16_t position, tbGWorld* world, bool zeroFirst,
                               std::int16_t x, std::int16_t y, QvPal* pal, std::int16_t fill,
                               char wrap, std::int16_t scrollX, std::int16_t scrollY,
                               tbPixMap* destPixMap, std::int16_t destX, std::int16_t destY) {
  // A world made new loses what it was to get. So does a world the member
  // no longer draws into (the store forgets a world before it disposes it;
  // this is for a world disposed without that).
  if (zeroFirst || deferred.world != world) deferred.world = nullptr;
  auto zero = [world] {
    tbPixMap* pm = world ? world->PortPixMap() : nullptr;
    if (!pm || !pm->TopAddr()) return;
    const std::int16_t h = Sub16(world->bounds.bottom, world->bounds.top);
    if (h > 0 && pm->Offset() > 0)
      std::memset(pm->TopAddr(), 0, static_cast<std::size_t>(pm->Offset()) * h);
  };
  if (!localSearchM(position)) {
    if (zeroFirst) zero();
    return 0;
  }
  // The world is filled whole, drawn into and copied from: through a
  // palette area where it differs from the fill colour, else in the frame's
  // rectangle. The target gets the same pixels straight from the frame, and
  // the world's pixels can wait. Not while the frame's buffers may have
  // changed unseen since, nor when one of the allocations counted on the way
  // is to fail.
  const bool keyed = pal != nullptr;
  if (world && fill != -1 && !imagesLent && !Overlap(world->PortPixMap(), destPixMap) &&
      !QvAllocationFailsWithin(keyed ? 3 : 1)) {
    unsigned char area[32] = {};
    if (keyed) pal->FlagBits(area);
    const std::int16_t w = Sub16(world->bounds.right, world->bounds.left);
    const std::int16_t h = Sub16(world->bounds.bottom, world->bounds.top);
    const tbRect target(destX, destY, Add16(destX, w), Add16(destY, h));
    bool anyPass = false;
    if (DirectDraw(curFrame, world, keyed ? area : nullptr, x, y, fill, wrap, scrollX, scrollY,
                   destPixMap, target, &anyPass)) {
      deferred.world = world;
      deferred.frame = curFrame;
      deferred.keyed = keyed;
      std::memcpy(deferred.area, area, sizeof area);
      deferred.x = x;
      deferred.y = y;
      deferred.fill = fill;
      deferred.wrap = wrap;
      deferred.scrollX = scrollX;
      deferred.scrollY = scrollY;
      // The allocations localDrawPicture would have counted, none of which
      // fails: through an area the colour region, its boxes when some pixel
      // differs and the copy's region; else the copy's region.
      if (keyed) {
        QvAllocationFails();
        if (anyPass) QvAllocationFails();
      }
      QvAllocationFails();
      return 1;
    }
  }
  if (zeroFirst)
    zero();
  else
    localSettleWorld();
  return localDrawPicture(world, x, y, pal, fill, wrap, scrollX, scrollY, destPixMap, destX, destY);
}

void QvAFrame::localSettleWorld() {
  tbGWorld* world = deferred.world;
  if (!world) return;
  deferred.world = nullptr;
  tbPixMap* pm = world->PortPixMap();
  localPlaceFrame(deferred.frame, pm->TopAddr(), pm->Offset(),
                  Sub16(world->bounds.right, world->bounds.left),
                  Sub16(world->bounds.bottom, world->bounds.top), deferred.x, deferred.y,
                  deferred.keyed ? deferred.area : nullptr, deferred.fill, deferred.wrap,
                  deferred.scrollX, deferred.scrollY, nullptr);
}
