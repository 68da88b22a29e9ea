#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

namespace {

using Ints = std::vector<int>;

struct NoFailures {
  ~NoFailures() { QvFailAllocation(0); }
};

// A host buffer with its pixel map; rows are 3 bytes longer than wide.
struct Buffer {
  int w, h, row;
  std::vector<unsigned char> px;
  tbPixMap map;
  Buffer(int width, int height, unsigned char fill, const tbRect& at = tbRect())
      : w(width), h(height), row(width + 3), px(static_cast<size_t>(row * height), fill) {
    map = tbPixMap(px.data(), static_cast<std::int16_t>(row),
                   tbRect(at.left, at.top, at.left + w, at.top + h));
  }
  unsigned char& At(int x, int y) { return px[static_cast<size_t>(y * row + x)]; }
  void Pattern() {
    for (int i = 0; i < w * h; ++i)
      At(i % w, i / w) = static_cast<unsigned char>(i / w * 16 + i % w + 1);
  }
};

// What a masked source copy must give, pixel by pixel: each destination
// pixel takes the corresponding source pixel when it lies in both
// rectangles (cut to the common size), in both pixel maps and in the region.
std::vector<unsigned char> Expected(Buffer& src, Buffer& dst, const tbRect& s, const tbRect& d,
                                    const BRegion* rgn) {
  std::vector<unsigned char> out = dst.px;
  const int w = std::min(s.Width(), d.Width()), h = std::min(s.Height(), d.Height());
  const tbRect &sb = src.map.Bounds(), &db = dst.map.Bounds();
  for (int i = 0; i < dst.w * dst.h; ++i) {
    const int gx = i % dst.w + db.left, gy = i / dst.w + db.top;  // destination coordinates
    if (gx < d.left || gx >= d.left + w || gy < d.top || gy >= d.top + h) continue;
    if (rgn && !rgn->Contains(gx, gy)) continue;
    const int sx = gx - d.left + s.left, sy = gy - d.top + s.top;
    if (sx < sb.left || sx >= sb.right || sy < sb.top || sy >= sb.bottom) continue;
    out[static_cast<size_t>(i / dst.w * dst.row + i % dst.w)] = src.At(sx - sb.left, sy - sb.top);
  }
  return out;
}

// Copies from src to dst (which may be the same buffer) and compares the
// result with a copy computed beforehand.
void CheckCopy(Buffer& src, Buffer& dst, tbRect s, tbRect d, tbRegion* rgn) {
  Buffer before = src;
  before.map = tbPixMap(before.px.data(), static_cast<std::int16_t>(src.row), src.map.Bounds());
  const std::vector<unsigned char> want = Expected(before, dst, s, d, rgn);
  qv::tb.CopyBits(&src.map, &dst.map, &s, &d, tbToolBox::kSrcCopy, rgn);
  EXPECT_EQ(dst.px, want);
}

TEST(CopyBitsTest, ColorToRgnMaskCopiesExactlyTheForeground) {
  Buffer src(7, 6, 200), dst(12, 10, 9);
  for (int i = 0; i < 42; ++i)  // 7 x 6, background 200 where (3x + 5y) mod 4 is 0
    if ((i % 7 * 3 + i / 7 * 5) % 4)
      src.At(i % 7, i / 7) = static_cast<unsigned char>(i % 7 + 10 * (i / 7));
  QvRgn shape;
  tbRegion mask;
  ASSERT_EQ(shape.ColorToRgn(src.px.data(), static_cast<std::int16_t>(src.row), 7, 6, 200, 1), 1);
  ASSERT_NE(mask.New(), nullptr);
  mask.CopyRegion(&shape);
  mask.OffsetRegion(3, 2);
  CheckCopy(src, dst, tbRect(0, 0, 7, 6), tbRect(3, 2, 10, 8), &mask);
  // Every foreground pixel of the source, and nothing else, replaced a 9.
  const long foreground = 7 * 6 - (std::count(src.px.begin(), src.px.end(), 200) - 6 * 3);
  EXPECT_EQ(std::count(dst.px.begin(), dst.px.end(), 9), long(dst.px.size()) - foreground);
}

TEST(CopyBitsTest, ClipsAtEveryEdgeAndCopiesOnlyInSrcCopyMode) {
  // clang-format off
  const tbRect cases[][2] = {  // inside, clipped on every side, smaller extents, outside, empty
      {{0, 0, 8, 8}, {0, 0, 8, 8}},       {{1, 1, 4, 4}, {4, 4, 7, 7}},
      {{0, 0, 8, 8}, {-3, -2, 5, 6}},     {{0, 0, 8, 8}, {3, 4, 11, 12}},
      {{-4, -1, 4, 7}, {0, 0, 8, 8}},     {{5, 6, 13, 14}, {0, 0, 8, 8}},
      {{-2, -2, 10, 10}, {-5, 1, 7, 13}}, {{0, 0, 3, 9}, {1, 1, 9, 4}},
      {{0, 0, 8, 8}, {20, 20, 28, 28}},   {{0, 0, 8, 8}, {-8, 0, 0, 8}},
      {{2, 2, 2, 6}, {0, 0, 4, 4}}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c[0].left << "," << c[0].top << " " << c[1].left);
    Buffer src(8, 8, 0), dst(6, 7, 0xEE), dst2(6, 7, 0xEE);
    src.Pattern();
    CheckCopy(src, dst, c[0], c[1], nullptr);
    tbRegion r;
    ASSERT_NE(r.New(), nullptr);
    r.RectRegion(-1, 1, 4, 5);
    CheckCopy(src, dst2, c[0], c[1], &r);
  }
  // Pixel maps whose bounds do not start at (0, 0).
  Buffer src(5, 5, 0, tbRect(-10, 20, 0, 0)), dst(6, 6, 0xEE, tbRect(100, -50, 0, 0));
  src.Pattern();
  tbRegion r;
  ASSERT_NE(r.New(), nullptr);
  r.RectRegion(0, 0, 2, 2);
  r.OffsetRegion(101, -48);
  CheckCopy(src, dst, tbRect(-11, 19, -5, 25), tbRect(99, -49, 105, -43), &r);
  CheckCopy(src, dst, tbRect(-11, 19, -5, 25), tbRect(99, -49, 105, -43), nullptr);
  // (100, -48) takes (-10, 20); (100, -49)'s source row lies above the source.
  EXPECT_EQ(Ints({dst.At(0, 2), dst.At(0, 1)}), Ints({src.At(0, 0), 0xEE}));
  // Other modes, uncreated regions and missing arguments copy nothing.
  Buffer one(4, 4, 1), two(4, 4, 2);
  tbRect s(0, 0, 4, 4), d(s);
  tbRegion never;
  qv::tb.CopyBits(&one.map, &two.map, &s, &d, 0x00EE0086, nullptr);
  qv::tb.CopyBits(&one.map, &two.map, &s, &d, tbToolBox::kSrcCopy, &never);
  qv::tb.CopyBits(nullptr, &two.map, &s, &d, tbToolBox::kSrcCopy, nullptr);
  qv::tb.CopyBits(&one.map, &two.map, nullptr, &d, tbToolBox::kSrcCopy, nullptr);
  EXPECT_EQ(two.px, std::vector<unsigned char>(two.px.size(), 2));
}

TEST(CopyBitsTest, OverlappingCopiesWithinOnePixelMap) {
  // Two spans on most rows (column 3 left out), one on row 5: the order of
  // rows and spans matters.
  unsigned char shape[8][8];
  for (int i = 0; i < 64; ++i) shape[i / 8][i % 8] = (i % 8 == 3 && i / 8 != 5) ? 0 : 1;
  QvRgn r;
  ASSERT_EQ(r.ColorToRgn(&shape[0][0], 8, 8, 8, 0, 1), 1);
  tbRegion mask;
  ASSERT_NE(mask.New(), nullptr);
  mask.CopyRegion(&r);
  const tbRect moves[][2] = {{{0, 0, 6, 6}, {1, 1, 7, 7}},
                             {{1, 1, 7, 7}, {0, 0, 6, 6}},  //
                             {{0, 1, 6, 7}, {2, 0, 8, 6}},
                             {{2, 0, 8, 6}, {0, 1, 6, 7}}};
  for (const auto& m : moves) {
    Buffer buf(8, 8, 0);
    buf.Pattern();
    CheckCopy(buf, buf, m[0], m[1], &mask);
  }
}

TEST(CopyBitsTest, NewGWorld) {
  tbColorTable table;
  const tbRGBColor c(10, 20, 30);
  table.SetCTTable(7, &c);
  tbRect bounds(0, 0, 5, 3);
  tbGWorld* w = nullptr;
  ASSERT_EQ(qv::tb.NewGWorld(&w, tbToolBox::kDepth8, &bounds, &table), 1);
  ASSERT_NE(w, nullptr);
  tbPixMap* pm = w->PortPixMap();
  EXPECT_TRUE(w->bounds == bounds && pm->Bounds() == bounds && *w->CTable() == table);
  EXPECT_EQ(Ints({pm->Offset(), int(std::count(pm->TopAddr(), pm->TopAddr() + 15, 0))}),
            Ints({5, 15}));
  pm->TopAddr()[14] = 3;  // (4, 2); outside pixels read 0
  EXPECT_EQ(Ints({pm->Pixel(4, 2), pm->Pixel(5, 2), pm->Pixel(-1, 0)}), Ints({3, 0, 0}));
  qv::tb.DisposeGWorld(w);
  qv::tb.DisposeGWorld(nullptr);
  ASSERT_EQ(qv::tb.NewGWorld(&w, tbToolBox::kDepth8, &bounds, nullptr), 1);
  EXPECT_EQ(*w->CTable(), tbColorTable());
  qv::tb.DisposeGWorld(w);
  // Bad requests give no world (failed allocations: the toolbox sweep).
  tbRect ok(0, 0, 4, 4);
  EXPECT_EQ(qv::tb.NewGWorld(&w, tbToolBox::kDepth8, nullptr, nullptr) +
                qv::tb.NewGWorld(nullptr, tbToolBox::kDepth8, &ok, nullptr),
            0);
  auto none = [&](short depth, tbRect b) {
    w = reinterpret_cast<tbGWorld*>(&ok);  // must be overwritten with null
    return qv::tb.NewGWorld(&w, depth, &b, nullptr) == 0 && w == nullptr;
  };
  EXPECT_TRUE(none(16, ok));
  for (tbRect b : {tbRect(1, 0, 4, 4), tbRect(0, -1, 4, 4), tbRect(0, 0, 0, 4), tbRect(0, 0, 4, -2),
                   tbRect(0, 0, 32768, 1)})
    EXPECT_TRUE(none(8, b)) << b.left << " " << b.right;
}

Ints Bounds(const BRegion& r) {
  std::int32_t l, t, rt, b;
  r.Bounds(&l, &t, &rt, &b);
  return {l, t, rt, b};
}

TEST(RegionTest, RectRegionOffsetCopyAndDispose) {
  tbRegion r, a, b;
  r.RectRegion(0, 0, 10, 10);  // nothing happens before New
  r.OffsetRegion(3, 3);
  EXPECT_TRUE(r.IsEmpty() && !r.Contains(1, 1) && r.RectCount() == 0 && !r.Handle());
  EXPECT_EQ(Bounds(r), Ints({0, 0, 0, 0}));
  void* h = r.New();
  EXPECT_TRUE(h && r.New() == h && r.IsEmpty());  // kept
  r.RectRegion(-2, 3, 4, 7);                      // right and bottom excluded
  EXPECT_EQ(Bounds(r), Ints({-2, 3, 4, 7}));
  EXPECT_TRUE(r.RectCount() == 1 && r.Contains(-2, 3) && r.Contains(3, 6));
  EXPECT_FALSE(r.Contains(4, 6) || r.Contains(3, 7));
  EXPECT_TRUE((r.RectRegion(5, 5, 5, 9), r.IsEmpty()) && (r.RectRegion(5, 9, 8, 2), r.IsEmpty()));
  ASSERT_TRUE(a.New() && b.New());
  a.RectRegion(0, 0, 2, 2);
  a.OffsetRegion(-5, 10);
  b.CopyRegion(&a);
  a.Dispose();
  EXPECT_EQ(a.Handle(), nullptr);
  EXPECT_EQ(Bounds(b), Ints({-5, 10, -3, 12}));  // the copy is independent
  b.CopyRegion(&a);                              // a has none: b becomes empty
  EXPECT_TRUE(b.IsEmpty());
  b.RectRegion(0, 0, 1, 1);
  b.CopyRegion(nullptr);
  r.Dispose();
  EXPECT_TRUE(b.IsEmpty() && r.IsEmpty() && !r.Handle());
}

// A 6 x 5 image (rows 8 bytes apart) of background 255 with a ring of
// colour 4 around a hole, and a lone pixel of colour 0; the 1 lies beyond
// the width and is never looked at.
constexpr unsigned char B = 255;
struct Ring {
  unsigned char px[5][8] = {{B, B, B, B, B, B, 1, B},
                            {B, 4, 4, 4, B, B, B, B},
                            {B, 4, B, 4, B, B, B, B},
                            {B, 4, 4, 4, B, B, B, B},
                            {B, B, B, B, B, 0, B, B}};
  unsigned char* data() { return &px[0][0]; }
};

TEST(RegionTest, ColorToRgnCoversExactlyTheDifferingPixels) {
  Ring img;
  QvRgn rgn;
  for (char flag : {1, 0}) {  // 1: pixels other than the colour, 0: equal to it
    ASSERT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, flag), 1);
    ASSERT_NE(rgn.Handle(), nullptr);  // made by ColorToRgn itself
    for (int y = -1; y <= 6; ++y)
      for (int x = -1; x <= 8; ++x) {
        const bool inImage = x >= 0 && x < 6 && y >= 0 && y < 5;
        EXPECT_EQ(rgn.Contains(x, y), inImage && (img.px[y][x] != 255) == (flag == 1))
            << x << "," << y << " " << int(flag);
      }
    EXPECT_TRUE(!flag || Bounds(rgn) == Ints({1, 1, 6, 5}));
  }
  // A plain image: empty with flag 1, one merged rectangle with flag 0.
  unsigned char px[4] = {7, 7, 7, 7};
  EXPECT_TRUE(rgn.ColorToRgn(px, 2, 2, 2, 7, 1) == 1 && rgn.IsEmpty());
  EXPECT_TRUE(rgn.ColorToRgn(px, 2, 2, 2, 7, 0) == 1 && rgn.RectCount() == 1);
  EXPECT_EQ(Bounds(rgn), Ints({0, 0, 2, 2}));
}

TEST(RegionTest, ColorToRgnRejectsBadImagesAndFailsCleanly) {
  NoFailures guard;
  unsigned char px[16] = {};
  QvRgn bad, rgn;
  EXPECT_EQ(bad.ColorToRgn(nullptr, 4, 4, 4, 1, 1) + bad.ColorToRgn(px, 4, 0, 4, 1, 1) +
                bad.ColorToRgn(px, 4, 4, -1, 1, 1) + bad.ColorToRgn(px, 3, 4, 4, 1, 1),
            0);  // the last one has rows shorter than wide
  EXPECT_EQ(bad.Handle(), nullptr);
  Ring img;
  // The region itself, the run array; once the region exists the run array is the first attempt.
  auto color = [&](int fail) {
    QvFailAllocation(fail);
    return rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1);
  };
  EXPECT_EQ(Ints({color(1), rgn.Handle() != nullptr, color(2), QvAllocationCount(), color(1),
                  color(0), rgn.Contains(5, 4)}),
            Ints({0, 0, 0, 2, 0, 1, 1}));
}

}  // namespace
