#include "aframe/QvAFrame.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#include <immintrin.h>
#endif

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "aframe/QvAFrameLocal.h"
#include "cast/QvMCast.h"
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

namespace {

// Copies the pixels of one row whose mask byte is not 0. Sixteen mask bytes
// are tested at a time: a run that is wholly opaque is copied as one block,
// a wholly transparent one is skipped, and a mixed one is blended so that
// the target keeps its byte wherever the mask is 0.
#if defined(__x86_64__) && defined(__GNUC__)
#define QV_HAVE_AVX2_ROWS 1
// The same row copy for processors with AVX2 (chosen once at run time): 64
// mask bytes tested at a time, then 32.
__attribute__((target("avx2"))) void CopyMaskedRowAvx2(const unsigned char* s,
                                                       const unsigned char* m, unsigned char* d,
                                                       long w) {
  long i = 0;
  const __m256i zero = _mm256_setzero_si256();
  for (; i + 64 <= w; i += 64) {
    const __m256i m0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i m1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i + 32));
    const __m256i low = _mm256_min_epu8(m0, m1);
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, zero)) != 0) break;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i + 32),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i + 32)));
  }
  for (; i + 32 <= w; i += 32) {
    const __m256i mv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i clear = _mm256_cmpeq_epi8(mv, zero);
    const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
    if (bits == 0xFFFFFFFFu) continue;
    const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    __m256i* dp = reinterpret_cast<__m256i*>(d + i);
    _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
  }
  for (; i < w; ++i)
    if (m[i] != 0) d[i] = s[i];
}
#endif

void CopyMaskedRow(const unsigned char* s, const unsigned char* m, unsigned char* d, long w) {
  long i = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  // Opaque stretches first, 64 pixels at a time: the smallest of the 64 mask
  // bytes is 0 only when one of them is.
  for (; i + 64 <= w; i += 64) {
    const __m128i* mp = reinterpret_cast<const __m128i*>(m + i);
    const __m128i low =
        _mm_min_epu8(_mm_min_epu8(_mm_loadu_si128(mp), _mm_loadu_si128(mp + 1)),
                     _mm_min_epu8(_mm_loadu_si128(mp + 2), _mm_loadu_si128(mp + 3)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(low, zero)) != 0) break;
    const __m128i* sp = reinterpret_cast<const __m128i*>(s + i);
    __m128i* dp = reinterpret_cast<__m128i*>(d + i);
    _mm_storeu_si128(dp, _mm_loadu_si128(sp));
    _mm_storeu_si128(dp + 1, _mm_loadu_si128(sp + 1));
    _mm_storeu_si128(dp + 2, _mm_loadu_si128(sp + 2));
    _mm_storeu_si128(dp + 3, _mm_loadu_si128(sp + 3));
  }
  for (; i + 16 <= w; i += 16) {
    const __m128i mv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m + i));
    const __m128i clear = _mm_cmpeq_epi8(mv, zero);
    const int bits = _mm_movemask_epi8(clear);
    if (bits == 0xFFFF) continue;
    const __m128i sv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    if (bits == 0) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), sv);
    } else {
      const __m128i dv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d + i));
      const __m128i out = _mm_or_si128(_mm_and_si128(clear, dv), _mm_andnot_si128(clear, sv));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), out);
    }
  }
#endif
  for (; i < w; ++i)
    if (m[i] != 0) d[i] = s[i];
}

}  // namespace

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
  if (pal) {
    // The area's answer for each colour index, asked once per copy; a pixel
    // passes when its colour is in the area and its mask byte is not 0.
    unsigned char inArea[256];
    for (int c = 0; c < 256; ++c) inArea[c] = pal->Flag(static_cast<unsigned char>(c)) == 1;
    for (int row = 0; row < h; ++row) {
      for (int i = 0; i < w; ++i) {
        const unsigned char v = s[i];
        // All ones when the pixel passes, else 0: a select without a branch.
        const unsigned char keep = static_cast<unsigned char>(-(inArea[v] & (m[i] != 0)));
        d[i] = static_cast<unsigned char>((v & keep) | (d[i] & ~keep));
      }
      s += imageRowBytes;
      m += imageRowBytes;
      d += dstRowBytes;
    }
    return;
  }
#ifdef QV_HAVE_AVX2_ROWS
  // QV_ROW_COPY=sse2 in the environment keeps to the baseline rows (so that
  // both can be tested on one machine).
  static const bool avx2 =
      __builtin_cpu_supports("avx2") &&
      !(std::getenv("QV_ROW_COPY") && std::strcmp(std::getenv("QV_ROW_COPY"), "sse2") == 0);
  auto* copyRow = avx2 ? CopyMaskedRowAvx2 : CopyMaskedRow;
#else
  auto* copyRow = CopyMaskedRow;
#endif
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
  tbRect target(destX, destY, Add16(destX, w), Add16(destY, h));
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
