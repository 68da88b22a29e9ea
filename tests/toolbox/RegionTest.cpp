#include <gtest/gtest.h>

#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbRegion.h"

namespace {

struct NoFailures {
  ~NoFailures() { QvFailAllocation(0); }
};

void ExpectBounds(const BRegion& r, int l, int t, int rt, int b) {
  std::int32_t bl, bt, br, bb;
  r.Bounds(&bl, &bt, &br, &bb);
  EXPECT_EQ(bl, l);
  EXPECT_EQ(bt, t);
  EXPECT_EQ(br, rt);
  EXPECT_EQ(bb, b);
}

TEST(RegionTest, NothingHappensBeforeNew) {
  tbRegion r;
  EXPECT_EQ(r.Handle(), nullptr);
  r.RectRegion(0, 0, 10, 10);
  r.OffsetRegion(3, 3);
  EXPECT_TRUE(r.IsEmpty());
  EXPECT_FALSE(r.Contains(1, 1));
  EXPECT_EQ(r.RectCount(), 0);
  ExpectBounds(r, 0, 0, 0, 0);
  r.Dispose();
}

TEST(RegionTest, RectRegionExcludesRightAndBottom) {
  tbRegion r;
  void* h = r.New();
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(r.New(), h);  // kept
  EXPECT_TRUE(r.IsEmpty());
  r.RectRegion(-2, 3, 4, 7);
  EXPECT_FALSE(r.IsEmpty());
  EXPECT_EQ(r.RectCount(), 1);
  ExpectBounds(r, -2, 3, 4, 7);
  EXPECT_TRUE(r.Contains(-2, 3));
  EXPECT_TRUE(r.Contains(3, 6));
  EXPECT_FALSE(r.Contains(4, 6));
  EXPECT_FALSE(r.Contains(3, 7));
  r.RectRegion(5, 5, 5, 9);  // no width
  EXPECT_TRUE(r.IsEmpty());
  r.RectRegion(5, 9, 8, 2);
  EXPECT_TRUE(r.IsEmpty());
}

TEST(RegionTest, OffsetCopyAndDispose) {
  tbRegion a, b;
  ASSERT_NE(a.New(), nullptr);
  ASSERT_NE(b.New(), nullptr);
  a.RectRegion(0, 0, 2, 2);
  a.OffsetRegion(-5, 10);
  ExpectBounds(a, -5, 10, -3, 12);
  b.CopyRegion(&a);
  ExpectBounds(b, -5, 10, -3, 12);
  a.Dispose();
  EXPECT_EQ(a.Handle(), nullptr);
  ExpectBounds(b, -5, 10, -3, 12);  // the copy is independent
  b.CopyRegion(&a);                 // a has none: b becomes empty
  EXPECT_TRUE(b.IsEmpty());
  b.RectRegion(0, 0, 1, 1);
  b.CopyRegion(nullptr);
  EXPECT_TRUE(b.IsEmpty());
}

TEST(RegionTest, NewFailsWhenMemoryIsShort) {
  NoFailures guard;
  tbRegion r;
  QvFailAllocation(1);
  EXPECT_EQ(r.New(), nullptr);
  EXPECT_EQ(QvAllocationCount(), 1);
  QvFailAllocation(0);
  EXPECT_NE(r.New(), nullptr);
}

// A 6 x 5 image (rows 8 bytes apart) of background 255 with a ring of
// colour 4 around a hole, and a lone pixel of colour 0.
struct Ring {
  unsigned char px[5][8];
  Ring() {
    for (auto& row : px)
      for (auto& v : row) v = 255;
    for (int y = 1; y <= 3; ++y)
      for (int x = 1; x <= 3; ++x) px[y][x] = 4;
    px[2][2] = 255;
    px[4][5] = 0;
    px[0][6] = 1;  // beyond the width: never looked at
  }
  unsigned char* data() { return &px[0][0]; }
};

TEST(RegionTest, ColorToRgnCoversExactlyTheDifferingPixels) {
  Ring img;
  QvRgn rgn;
  ASSERT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 1);
  ASSERT_NE(rgn.Handle(), nullptr);  // made by ColorToRgn itself
  for (int y = -1; y <= 6; ++y) {
    for (int x = -1; x <= 8; ++x) {
      const bool inImage = x >= 0 && x < 6 && y >= 0 && y < 5;
      const bool expected = inImage && img.px[y][x] != 255;
      EXPECT_EQ(rgn.Contains(x, y), expected) << x << "," << y;
    }
  }
  ExpectBounds(rgn, 1, 1, 6, 5);

  // Flag 0: the pixels equal to the colour, the complement within the image.
  ASSERT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 0), 1);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 6; ++x) EXPECT_EQ(rgn.Contains(x, y), img.px[y][x] == 255);
  EXPECT_FALSE(rgn.Contains(6, 0));
}

TEST(RegionTest, ColorToRgnOfAPlainImageIsEmpty) {
  unsigned char px[4] = {7, 7, 7, 7};
  QvRgn rgn;
  EXPECT_EQ(rgn.ColorToRgn(px, 2, 2, 2, 7, 1), 1);
  EXPECT_TRUE(rgn.IsEmpty());
  EXPECT_EQ(rgn.ColorToRgn(px, 2, 2, 2, 7, 0), 1);
  ExpectBounds(rgn, 0, 0, 2, 2);
  EXPECT_EQ(rgn.RectCount(), 1);  // rows of runs merge into one rectangle
}

TEST(RegionTest, ColorToRgnRejectsBadImages) {
  unsigned char px[16] = {};
  QvRgn rgn;
  EXPECT_EQ(rgn.ColorToRgn(nullptr, 4, 4, 4, 1, 1), 0);
  EXPECT_EQ(rgn.ColorToRgn(px, 4, 0, 4, 1, 1), 0);
  EXPECT_EQ(rgn.ColorToRgn(px, 4, 4, -1, 1, 1), 0);
  EXPECT_EQ(rgn.ColorToRgn(px, 3, 4, 4, 1, 1), 0);  // rows shorter than wide
  EXPECT_EQ(rgn.Handle(), nullptr);
}

TEST(RegionTest, ColorToRgnFailsCleanlyWhenMemoryIsShort) {
  NoFailures guard;
  Ring img;
  QvRgn rgn;
  QvFailAllocation(1);  // the region itself
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 0);
  EXPECT_EQ(rgn.Handle(), nullptr);
  QvFailAllocation(2);  // the run array
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 0);
  EXPECT_EQ(QvAllocationCount(), 2);
  QvFailAllocation(1);  // region exists now: the run array is the first attempt
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 0);
  QvFailAllocation(0);
  EXPECT_EQ(rgn.ColorToRgn(img.data(), 8, 6, 5, 255, 1), 1);
  EXPECT_TRUE(rgn.Contains(5, 4));
}

}  // namespace
