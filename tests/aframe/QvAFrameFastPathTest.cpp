// The drawing loops copy many pixels at a time; these tests hold them to a
// plain pixel-by-pixel rendering of the same drawing rules on random input.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "aframe/QvAFrame.h"
#include "toolbox/QvPal.h"
#include "toolbox/tbRect.h"

namespace {

std::int16_t S16(int v) { return static_cast<std::int16_t>(v); }

// One copy of a placed rectangle of the image through its mask, clipped.
void ReferenceCopy(const unsigned char* image, const unsigned char* mask, int rowBytes,
                   unsigned char* dst, int dstRowBytes, int left, int top, int right, int bottom,
                   int clipLeft, int clipTop, int clipRight, int clipBottom, const QvPal* pal) {
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      if (x < clipLeft || x >= clipRight || y < clipTop || y >= clipBottom) continue;
      const unsigned char v = image[(y - top) * rowBytes + (x - left)];
      const unsigned char m = mask[(y - top) * rowBytes + (x - left)];
      if (pal && pal->Flag(v) != 1) continue;
      if (m != 0) dst[y * dstRowBytes + x] = v;
    }
  }
}

// The placing form, pixel by pixel.
void ReferenceDraw(QvAFrame& anim, unsigned char* dst, int dstRowBytes, int dstWidth, int dstHeight,
                   int x, int y, const QvPal* pal, int fill, int wrap, int scrollX, int scrollY) {
  unsigned char *image = nullptr, *mask = nullptr;
  std::int16_t w = 0, h = 0, ox = 0, oy = 0;
  anim.GetAImage(0, &image, &mask, &w, &h, &ox, &oy);
  const int left = x + ox, top = y + oy, right = left + w, bottom = top + h;
  const int clipLeft = std::max(left, 0), clipTop = std::max(top, 0);
  const int clipRight = std::min(right, dstWidth), clipBottom = std::min(bottom, dstHeight);
  while (scrollX < 0) scrollX += w;
  while (scrollX >= w) scrollX -= w;
  while (scrollY < 0) scrollY += h;
  while (scrollY >= h) scrollY -= h;
  if (fill != -1)
    for (int r = 0; r < dstHeight; ++r)
      for (int c = 0; c < dstWidth; ++c)
        dst[r * dstRowBytes + c] = static_cast<unsigned char>(fill);
  auto copy = [&](int dx, int dy) {
    ReferenceCopy(image, mask, w, dst, dstRowBytes, left + dx, top + dy, right + dx, bottom + dy,
                  clipLeft, clipTop, clipRight, clipBottom, pal);
  };
  copy(scrollX, scrollY);
  if (wrap & 1) copy(scrollX - w, scrollY);
  if (wrap & 2) copy(scrollX, scrollY - h);
  if (wrap == 3) copy(scrollX - w, scrollY - h);
}

TEST(QvAFrameFastPath, MaskedCopiesMatchPixelByPixelRendering) {
  std::mt19937 rng(20261123);
  for (int round = 0; round < 600; ++round) {
    const int w = 1 + static_cast<int>(rng() % 150);
    const int h = 1 + static_cast<int>(rng() % 40);
    std::vector<unsigned char> image(static_cast<std::size_t>(w * h)), mask(image.size());
    const int style = static_cast<int>(rng() % 4);  // opaque, clear, mixed, runs
    for (std::size_t i = 0; i < image.size(); ++i) {
      image[i] = static_cast<unsigned char>(rng());
      mask[i] = style == 0   ? 255
                : style == 1 ? 0
                : style == 2 ? static_cast<unsigned char>(rng() % 3 == 0 ? 0 : rng())
                             : ((i / 37) % 2 ? 255 : 0);
    }
    QvAFrame anim;
    ASSERT_EQ(anim.Reg(0, 0, 0, S16(w), S16(h), 0, 0, 1), 0);
    const int ox = -static_cast<int>(rng() % (w + 1)), oy = -static_cast<int>(rng() % (h + 1));
    ASSERT_EQ(anim.SetImage(0, image.data(), mask.data(), S16(w), S16(h), S16(ox), S16(oy)), 1);

    // Now and then target rows exactly as wide as the image rows, with the
    // image at the left edge: rows back to back on both sides.
    const bool flush = rng() % 4 == 0;
    const int dw = flush ? w : 1 + static_cast<int>(rng() % 200);
    const int dh = 1 + static_cast<int>(rng() % 60);
    const int rowBytes = flush ? dw : dw + static_cast<int>(rng() % 5);
    std::vector<unsigned char> got(static_cast<std::size_t>(rowBytes * dh));
    for (auto& b : got) b = static_cast<unsigned char>(rng());
    std::vector<unsigned char> want = got;

    QvPal pal;
    const bool withPal = rng() % 3 == 0;
    for (int c = 0; c < 256; ++c) pal.SetFlag(static_cast<unsigned char>(c), rng() % 2 ? 1 : 0);
    const int x = flush ? -ox : static_cast<int>(rng() % (dw + 2 * w)) - w;
    const int y = static_cast<int>(rng() % (dh + 2 * h)) - h;
    const int fill = rng() % 4 == 0 ? static_cast<int>(rng() % 256) : -1;
    const int wrap = static_cast<int>(rng() % 8);
    const int scrollX = static_cast<int>(rng() % (4 * w + 1)) - 2 * w;
    const int scrollY = static_cast<int>(rng() % (4 * h + 1)) - 2 * h;

    tbRect frameRect;
    ASSERT_EQ(anim.DrawAImage(0, got.data(), S16(rowBytes), S16(dw), S16(dh), S16(x), S16(y),
                              withPal ? &pal : nullptr, S16(fill), static_cast<char>(wrap),
                              S16(scrollX), S16(scrollY), &frameRect),
              1);
    ReferenceDraw(anim, want.data(), rowBytes, dw, dh, x, y, withPal ? &pal : nullptr, fill, wrap,
                  scrollX, scrollY);
    ASSERT_EQ(got, want) << "round " << round << " style " << style << " pal " << withPal;
  }
}

}  // namespace
