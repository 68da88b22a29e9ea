// The drawing loops copy many pixels at a time; these tests hold them to a
// plain pixel-by-pixel rendering of the same drawing rules on random input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "aframe/QvAFrame.h"
#include "aframe/QvAFrameRows.h"
#include "aframe/QvAFrameTransform.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

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
  scrollX = (scrollX % w + w) % w;
  scrollY = (scrollY % h + h) % h;
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

// Every vector set of row kernels against the plain loops, on rows of every
// length up to a few vectors at every alignment, with masks, palette areas
// and keys from all-through to nothing-through.
TEST(QvAFrameFastPath, RowKernelsMatchThePlainLoops) {
  using qvaframe::RowKernels;
  std::vector<const RowKernels*> sets{&qvaframe::Sse2Rows()};
  if (qvaframe::Avx2Rows()) sets.push_back(qvaframe::Avx2Rows());
  const RowKernels& plain = qvaframe::PlainRows();
  std::mt19937 rng(2111);
  for (int round = 0; round < 3000; ++round) {
    const long w = static_cast<long>(rng() % 300);
    const std::size_t at = rng() % 32;
    std::vector<unsigned char> src(w + at), mask(w + at), dst(w + at);
    const int style = static_cast<int>(rng() % 4);
    const auto key = static_cast<unsigned char>(rng());
    for (long i = 0; i < w; ++i) {
      src[at + i] = rng() % 3 == 0 ? key : static_cast<unsigned char>(rng());
      mask[at + i] = style == 0 ? 255 : style == 1 ? 0 : rng() % 2 ? 0 : 1 + rng() % 255;
      dst[at + i] = static_cast<unsigned char>(rng());
    }
    unsigned char area[32];
    const int areaStyle = static_cast<int>(rng() % 3);
    for (auto& b : area)
      b = areaStyle == 0 ? 0xFF : areaStyle == 1 ? 0 : static_cast<unsigned char>(rng());
    for (int kernel = 0; kernel < 3; ++kernel) {
      // The output row and, for the filtered copy, whether some pixel passed.
      auto run = [&](const RowKernels& k) {
        std::vector<unsigned char> out = dst;
        if (kernel == 0) k.masked(&src[at], &mask[at], &out[at], w);
        if (kernel == 1) out.push_back(k.filtered(&src[at], &mask[at], &out[at], w, area));
        if (kernel == 2) k.keyed(&src[at], &out[at], w, key);
        return out;
      };
      const auto want = run(plain);
      for (const RowKernels* set : sets)
        ASSERT_EQ(run(*set), want) << set->name << " kernel " << kernel << " round " << round;
    }
  }
}

// The world's drawing copied through a palette area into a pixel map, against
// the copy through the region of the pixels that differ from the fill colour
// (QvRgn::ColorToRgn, then tbToolBox::CopyBits): the same pixels, result and
// allocation attempts, also with each of the allocations failing, and with
// the world drawn onto itself.
TEST(QvAFrameFastPath, PictureThroughPaletteAreaMatchesTheRegionCopy) {
  std::mt19937 rng(2112);
  for (int round = 0; round < 300; ++round) {
    const int w = 1 + static_cast<int>(rng() % 70), h = 1 + static_cast<int>(rng() % 40);
    std::vector<unsigned char> image(static_cast<std::size_t>(w * h)), mask(image.size());
    for (std::size_t i = 0; i < image.size(); ++i) {
      image[i] = static_cast<unsigned char>(rng() % 8);
      mask[i] = rng() % 4 ? 255 : 0;
    }
    QvAFrame anim;
    ASSERT_EQ(anim.Reg(0, 0, 0, S16(w), S16(h), 0, 0, 1), 0);
    ASSERT_EQ(anim.SetImage(0, image.data(), mask.data(), S16(w), S16(h), 0, 0), 1);
    QvPal pal;
    for (int c = 0; c < 8; ++c) pal.SetFlag(static_cast<unsigned char>(c), rng() % 3 ? 1 : 0);
    const int ww = 1 + static_cast<int>(rng() % 90), wh = 1 + static_cast<int>(rng() % 50);
    tbRect bounds(0, 0, ww, wh);
    const int fill = rng() % 8 == 0 ? -1 : static_cast<int>(rng() % 8);
    const int x = static_cast<int>(rng() % (ww + w)) - w / 2;
    const int y = static_cast<int>(rng() % (wh + h)) - h / 2;
    const int destX = static_cast<int>(rng() % 200) - 60,
              destY = static_cast<int>(rng() % 120) - 40;
    const bool onItself = rng() % 10 == 0;
    const int fail = round % 5;  // 0: none, else the fail-th allocation of the copy
    auto run = [&](bool reference, int* attempts, char* result) {
      tbGWorld* world = nullptr;
      QvFailAllocation(0);
      EXPECT_EQ(qv::tb.NewGWorld(&world, 8, &bounds, nullptr), 1);
      std::vector<unsigned char> screen(140 * 90);
      for (auto& b : screen) b = static_cast<unsigned char>(100 + rng() % 50);
      tbPixMap map(screen.data(), 140, tbRect(0, 0, 140, 90));
      tbPixMap* dest = onItself ? world->PortPixMap() : &map;
      QvFailAllocation(fail);
      if (!reference) {
        *result = anim.DrawAPicture(0, world, S16(x), S16(y), &pal, S16(fill), 0, 0, 0, dest,
                                    S16(destX), S16(destY));
      } else {
        tbPixMap* pm = world->PortPixMap();
        tbRect frame;
        anim.DrawAImage(0, pm->TopAddr(), pm->Offset(), S16(ww), S16(wh), S16(x), S16(y), &pal,
                        S16(fill), 0, 0, 0, &frame);
        tbRegion region;
        QvRgn colorRegion;
        colorRegion.ColorToRgn(pm->TopAddr(), pm->Offset(), S16(ww), S16(wh),
                               static_cast<unsigned char>(fill), 1);
        *result = region.New() ? 1 : 0;
        if (*result) {
          region.CopyRegion(&colorRegion);
          region.OffsetRegion(destX, destY);
          tbRect target(destX, destY, destX + ww, destY + wh);
          qv::tb.CopyBits(pm, dest, &world->bounds, &target, 0x00CC0020, &region);
          region.Dispose();
        }
      }
      *attempts = QvAllocationCount();
      QvFailAllocation(0);
      std::vector<unsigned char> out =
          onItself ? std::vector<unsigned char>(world->PortPixMap()->TopAddr(),
                                                world->PortPixMap()->TopAddr() + ww * wh)
                   : screen;
      qv::tb.DisposeGWorld(world);
      return out;
    };
    const auto seed = rng();
    int gotAttempts = 0, wantAttempts = 0;
    char got = 0, want = 0;
    rng.seed(seed);
    const auto gotPixels = run(false, &gotAttempts, &got);
    rng.seed(seed);
    const auto wantPixels = run(true, &wantAttempts, &want);
    ASSERT_EQ(gotPixels, wantPixels) << "round " << round;
    ASSERT_EQ((std::vector<int>{got, gotAttempts}), (std::vector<int>{want, wantAttempts}))
        << "round " << round;
  }
}

// Builds the inverse mapping of a frame zoomed and rotated about (cx, cy) as
// the transform does: the corners, their bounding box, the edges.
qvaframe::InverseMap MapOf(const std::vector<unsigned char>& org, int w, int h, int cx, int cy,
                           double zx, double zy, double rot, int* outW, int* outH,
                           std::vector<unsigned char>* frameImage,
                           std::vector<unsigned char>* frameMask) {
  QvAFrame anim;
  anim.Reg(0, 0, 0, S16(w), S16(h), S16(cx), S16(cy), 1);
  anim.SetZoom(0, zx, zy);
  anim.SetRot(0, rot);
  anim.SetOrgImage(0, const_cast<unsigned char*>(org.data()), S16(w), S16(w), S16(h));
  std::int16_t iw = 0, ih = 0, ox = 0, oy = 0;
  unsigned char *image = nullptr, *mask = nullptr;
  anim.SetImage(0, nullptr, 0, 0, 0);
  // Made again over buffers of the size filled with other bytes, which it
  // keeps: every byte must be written.
  anim.GetAImage(0, &image, &mask, &iw, &ih, &ox, &oy);
  if (image && mask) {
    std::fill(image, image + iw * ih, 0xAB);
    std::fill(mask, mask + iw * ih, 0xCD);
  }
  anim.SetImage(0, nullptr, 0, 0, 0);
  anim.GetAImage(0, &image, &mask, &iw, &ih, &ox, &oy);
  if (image && mask) {
    frameImage->assign(image, image + iw * ih);
    frameMask->assign(mask, mask + iw * ih);
  }
  // The corners again, zoomed then rotated, each product truncated alone.
  int px[4] = {0, w - 1, w - 1, 0}, py[4] = {0, 0, h - 1, h - 1};
  for (int k = 0; k < 4; ++k) {
    if (zx != 1.0) px[k] = static_cast<std::int16_t>(static_cast<int>((px[k] - cx) * zx) + cx);
    if (zy != 1.0) py[k] = static_cast<std::int16_t>(static_cast<int>((py[k] - cy) * zy) + cy);
    if (rot != 0.0) {
      const double dx = px[k] - cx, dy = py[k] - cy, c = std::cos(rot), s = std::sin(rot);
      const int nx = cx + static_cast<int>(dx * c) + static_cast<int>(dy * s);
      const int ny = cy + static_cast<int>(dy * c) - static_cast<int>(dx * s);
      px[k] = static_cast<std::int16_t>(nx);
      py[k] = static_cast<std::int16_t>(ny);
    }
  }
  qvaframe::InverseMap m;
  m.org = org.data();
  m.width = w;
  m.height = h;
  m.ax = px[1] - px[0];
  m.ay = py[1] - py[0];
  m.bx = px[3] - px[0];
  m.by = py[3] - py[0];
  m.originX = (ox + cx) - px[0];
  m.originY = (oy + cy) - py[0];
  *outW = iw;
  *outH = ih;
  return m;
}

// The integer stepping of the transform against solving every pixel in
// double precision, and both against the frame's own transformed image: on
// random sizes, anchors (also far outside), zooms (exact halves and doubles
// among them, where many pixels fall on whole numbers, and zero and negative
// ones) and rotations (quarter turns among them), also for long thin frames
// whose determinant is large. Outside the source the mask and image are 0.
TEST(QvAFrameFastPath, TransformSteppingMatchesSolvingEveryPixel) {
  std::mt19937 rng(2114);
  const double zooms[] = {1.0, 2.0, 0.5, 3.0, 0.25, 1.5, 0.75, 0.0, -1.0, -2.5};
  const double turns[] = {0.0, 1.5707963267948966, 3.141592653589793, 0.7853981633974483};
  for (int round = 0; round < 400; ++round) {
    const bool thin = round % 10 == 0;
    const int w = thin ? 300 + static_cast<int>(rng() % 1200) : 1 + static_cast<int>(rng() % 90);
    const int h = thin ? 2 + static_cast<int>(rng() % 3) : 1 + static_cast<int>(rng() % 90);
    std::vector<unsigned char> org(static_cast<std::size_t>(w * h));
    for (auto& b : org) b = static_cast<unsigned char>(1 + rng() % 255);
    const int pick = static_cast<int>(rng() % 3);
    const double zx = pick == 0 ? zooms[rng() % 10] : 0.2 + (rng() % 1000) / 300.0;
    const double zy = pick == 0 ? zooms[rng() % 10] : pick == 1 ? zx : 0.2 + (rng() % 1000) / 300.0;
    const double rot =
        rng() % 3 == 0 ? turns[rng() % 4] : (static_cast<int>(rng() % 2000) - 1000) / 150.0;
    const int cx = static_cast<int>(rng() % (w + 40)) - 20,
              cy = static_cast<int>(rng() % (h + 40)) - 20;
    int iw = 0, ih = 0;
    std::vector<unsigned char> frameImage, frameMask;
    const qvaframe::InverseMap m =
        MapOf(org, w, h, cx, cy, zx, zy, rot, &iw, &ih, &frameImage, &frameMask);
    ASSERT_FALSE(frameMask.empty()) << "round " << round;
    for (std::size_t i = 0; i < frameMask.size(); ++i)
      ASSERT_TRUE(frameMask[i] ? frameMask[i] == 255 && frameImage[i] : !frameImage[i]) << round;
    if (iw < 1 || ih < 1 || static_cast<long>(m.by) * m.ax == static_cast<long>(m.bx) * m.ay)
      continue;
    const std::size_t n = static_cast<std::size_t>(iw) * ih;
    std::vector<unsigned char> plainImage(n), plainMask(n), exactImage(n), exactMask(n);
    qvaframe::InverseMapPlain(m, plainImage.data(), plainMask.data(), iw, ih);
    qvaframe::InverseMapExact(m, exactImage.data(), exactMask.data(), iw, ih);
    ASSERT_EQ(exactImage, plainImage) << "round " << round;
    ASSERT_EQ(exactMask, plainMask) << "round " << round;
    ASSERT_TRUE(frameImage == plainImage && frameMask == plainMask) << "round " << round;
  }
}

// An animation that also walks its frames from the first one, as a lookup by
// position did before it remembered where it stopped.
class Walked : public QvAFrame {
 public:
  using QvAFrame::localSearchM;
  bool Locked() const { return lockFlag != 0; }
  QvAFrameInfo* Walk(std::int16_t position) const {
    std::uint16_t sum = 0;
    QvAFrameInfo* r = frameList;
    while (r &&
           static_cast<std::int16_t>(sum += static_cast<std::uint16_t>(r->interval)) <= position)
      r = r->next;
    return r;
  }
};

// Random edits of an animation (frames added, inserted, removed; intervals set,
// also to sums past 16 bits; images made and set), each followed by lookups at
// rising, falling and far positions, locked or not: the answers of the walks.
TEST(QvAFrameFastPath, RememberedLookupsMatchTheWalks) {
  std::mt19937 rng(77);
  unsigned char pic[64];
  for (int i = 0; i < 64; ++i) pic[i] = static_cast<unsigned char>(1 + i);
  Walked a;
  std::int16_t position = 0;
  for (int step = 0; step < 3000; ++step) {
    const int n = a.CountAFrame();
    const auto any = [&](int k) { return S16(static_cast<int>(rng() % (k + 1)) - 1); };
    const int op = static_cast<int>(rng() % 8);
    unsigned char mask[4] = {255, 255, 0, 255};
    if (op == 0 && n < 12)
      a.Reg(any(n), 0, 0, S16(1 + rng() % 8), S16(1 + rng() % 8), S16(rng() % 9), S16(rng() % 9),
            S16(rng() % 4));
    else if (op == 1)
      a.Del(any(n));
    else if (op == 2)
      a.SetInterval(any(n), S16(rng() % 5 == 0 ? 9000 + rng() % 9000 : rng() % 4));
    else if (op == 3)
      a.SetRot(any(n), (rng() % 7) * 0.5), a.SetImage(any(n), pic, 8, 8, 8);
    else if (op == 4)
      a.SetImage(any(n), pic, mask, S16(1 + rng() % 2), 2, S16(rng() % 40 - 20), -3);
    else if (op == 5)
      a.LockM(position);
    else if (op == 6)
      rng() % 50 ? a.Unlock() : a.DelAll();
    else
      position = S16(rng() % 3 == 0 ? position + rng() % 5 : rng() % 70000);
    QvAFrameInfo* locked = a.localSearchM(S16(position + 100));
    QvAFrame fresh;  // a copy made now walks its frames for the area
    a.Dup(&fresh);
    std::int16_t w[2][4] = {};
    ASSERT_EQ(a.GetArea(&w[0][0], &w[0][1], &w[0][2], &w[0][3]),
              fresh.GetArea(&w[1][0], &w[1][1], &w[1][2], &w[1][3]));
    ASSERT_TRUE(std::equal(w[0], w[0] + 4, w[1])) << step;
    for (int k = 0; k < 6; ++k, position = S16(position + rng() % 3)) {
      QvAFrameInfo* found = a.localSearchM(position);
      ASSERT_EQ(found, a.Locked() ? locked : a.Walk(position)) << "step " << step;
    }
  }
}

}  // namespace
