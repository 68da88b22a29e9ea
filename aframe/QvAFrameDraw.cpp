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
#include "toolbox/QvRgn.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

using namespace qvaframe;

// ---------------------------------------------------------------------------
// Drawing

void QvAFrame::localDrawImage(unsigned char* image, unsigned char* mask, std::int16_t imageRowBytes,
                              unsigned char* dst, std::int16_t dstRowBytes, std::int16_t left,
                              std::int16_t top, std::int16_t right, std::int16_t bottom,
                              std::int16_t clipLeft, std::int16_t clipTop, std::int16_t clipRight,
                              std::int16_t clipBottom, QvPal* pal) {
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
  if (pal) {
    // The area's answer for each colour index, asked once per copy, as a bit
    // set; a pixel passes when its colour is in the area and its mask byte
    // is not 0.
    unsigned char area[32];
    pal->FlagBits(area);
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

void QvAFrame::localDrawImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                              std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                              std::int16_t fill, char wrap, std::int16_t scrollX,
                              std::int16_t scrollY, tbRect* frameRect) {
  QvAFrameInfo* f = curFrame;
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

  // The scroll brought into 0 .. size - 1, as repeated adding or
  // subtracting of the size would.
  int sx = scrollX % iw;
  if (sx < 0) sx += iw;
  int sy = scrollY % ih;
  if (sy < 0) sy += ih;

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
    localDrawImage(f->image, f->mask, iw, dst, dstRowBytes, Add16(left, dx), Add16(top, dy),
                   Add16(right, dx), Add16(bottom, dy), clipLeft, clipTop, clipRight, clipBottom,
                   pal);
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
