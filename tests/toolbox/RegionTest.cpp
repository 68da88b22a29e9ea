#include <gtest/gtest.h>

#include <vector>

#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbRegion.h"

namespace {

using Ints = std::vector<int>;

struct NoFailures {
  ~NoFailures() { QvFailAllocation(0); }
};

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
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(r.New(), h);  // kept
  EXPECT_TRUE(r.IsEmpty());
  r.RectRegion(-2, 3, 4, 7);  // right and bottom excluded
  EXPECT_EQ(r.RectCount(), 1);
  EXPECT_EQ(Bounds(r), Ints({-2, 3, 4, 7}));
  EXPECT_TRUE(r.Contains(-2, 3) && r.Contains(3, 6));
  EXPECT_FALSE(r.Contains(4, 6) || r.Contains(3, 7));
  r.RectRegion(5, 5, 5, 9);  // no width
  EXPECT_TRUE(r.IsEmpty());
  r.RectRegion(5, 9, 8, 2);
  EXPECT_TRUE(r.IsEmpty());

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
  EXPECT_EQ(rgn.ColorToRgn(px, 2, 2, 2, 7, 1), 1);
  EXPECT_TRUE(rgn.IsEmpty());
  EXPECT_EQ(rgn.ColorToRgn(px, 2, 2, 2, 7, 0), 1);
  EXPECT_EQ(Bounds(rgn), Ints({0, 0, 2, 2}));
  EXPECT_EQ(rgn.RectCount(), 1);
}

TEST(RegionTest, ColorToRgnRejectsBadImagesAndFailsCleanly) {
  NoFailures guard;
  unsigned char px[16] = {};
  QvRgn bad, rgn;
  EXPECT_EQ(bad.ColorToRgn(nullptr, 4, 4, 4, 1, 1) + bad.ColorToRgn(px, 4, 0, 4, 1, 1) +
                bad.ColorToRgn(px, 4, 4, -1, 1, 1) + bad.ColorToRgn(px, 3, 4, 4, 1, 1),
            0);  // the last one has rows shorter than wide
  EXPECT_EQ(bad.Handle(), nullptr);
  tbRegion r;
  QvFailAllocation(1);
  EXPECT_EQ(r.New(), nullptr);
  EXPECT_EQ(QvAllocationCount(), 1);
  EXPECT_NE(r.New(), nullptr);
  Ring img;
  QvFailAllocation(1);  // the region itself
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 0);
  EXPECT_EQ(rgn.Handle(), nullptr);
  QvFailAllocation(2);  // the run array
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 0);
  EXPECT_EQ(QvAllocationCount(), 2);
  QvFailAllocation(1);  // the region exists now: the run array is the first attempt
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 0);
  QvFailAllocation(0);
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 1);
  EXPECT_TRUE(rgn.Contains(5, 4));
}

}  // namespace
