#include "player/BZoom.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

TEST(BZoomTest, DefaultsLeaveEverythingUnchanged) {
  BZoom z;
  EXPECT_EQ(z.ZoomX(), 1.0f);
  EXPECT_EQ(z.ZoomY(), 1.0f);
  EXPECT_EQ(z.OffsetX(), 0.0f);
  EXPECT_EQ(z.OffsetY(), 0.0f);
  EXPECT_EQ(z.ScaleX(), 1.0f);
  EXPECT_EQ(z.ScaleY(), 1.0f);
  OsImgPoint p{-7, 12};
  OsImgSize s{300, -4};
  OsImgRect r{-1, 2, INT32_MAX, INT32_MIN};
  z.GPtoLP(p);
  z.GPtoLP(s);
  z.GPtoLP(r);
  z.GPtoLP2(p);
  z.GPtoLP2(s);
  z.GPtoLP2(r);
  EXPECT_EQ(p.x, -7);
  EXPECT_EQ(p.y, 12);
  EXPECT_EQ(s.width, 300);
  EXPECT_EQ(s.height, -4);
  EXPECT_EQ(r.left, -1);
  EXPECT_EQ(r.top, 2);
  EXPECT_EQ(r.right, INT32_MAX);
  EXPECT_EQ(r.bottom, INT32_MIN);
}

TEST(BZoomTest, TruncatesTowardZero) {
  BZoom z(2.0f, 1.0f, 0.0f, 0.0f, 1.0f, 1.0f);
  OsImgPoint p{5, 5};
  z.GPtoLP(p);
  EXPECT_EQ(p.x, 2);
  EXPECT_EQ(p.y, 5);
  OsImgPoint n{-5, -5};
  z.GPtoLP(n);
  EXPECT_EQ(n.x, -2);
  EXPECT_EQ(n.y, -5);
  OsImgPoint m{-5, 0};
  z.GPtoLP2(m);
  EXPECT_EQ(m.x, -2);
}

TEST(BZoomTest, OffsetsApplyToSizesOnlyInFirstForm) {
  BZoom z(1.0f, 1.0f, 10.0f, 0.0f, 1.0f, 1.0f);
  OsImgSize a{4, 4};
  z.GPtoLP(a);
  EXPECT_EQ(a.width, 14);
  EXPECT_EQ(a.height, 4);
  OsImgSize b{4, 4};
  z.GPtoLP2(b);
  EXPECT_EQ(b.width, 4);
  EXPECT_EQ(b.height, 4);
}

TEST(BZoomTest, FullFormulaOnRects) {
  // x: (x / 2 + 0.5) / 2; y: (y / 4 - 1) / 0.5
  BZoom z(2.0f, 4.0f, 0.5f, -1.0f, 2.0f, 0.5f);
  OsImgRect r{3, 10, -7, -3};
  z.GPtoLP(r);
  EXPECT_EQ(r.left, 1);     // (1.5 + 0.5) / 2 = 1
  EXPECT_EQ(r.top, 3);      // (2.5 - 1) / 0.5 = 3
  EXPECT_EQ(r.right, -1);   // (-3.5 + 0.5) / 2 = -1.5
  EXPECT_EQ(r.bottom, -3);  // (-0.75 - 1) / 0.5 = -3.5
  OsImgRect q{3, 10, -7, -3};
  z.GPtoLP2(q);
  EXPECT_EQ(q.left, 0);     // 3 / 2 / 2 = 0.75
  EXPECT_EQ(q.top, 5);      // 10 / 4 / 0.5 = 5
  EXPECT_EQ(q.right, -1);   // -1.75
  EXPECT_EQ(q.bottom, -1);  // -1.5
}

TEST(BZoomTest, ComputesInDoublePrecision) {
  // 1 / 0.1f is 9.99999985 in double precision but exactly 10 in float.
  BZoom z(0.1f, 0.1f, 0.0f, 0.0f, 1.0f, 1.0f);
  OsImgPoint p{1, 1};
  z.GPtoLP(p);
  EXPECT_EQ(p.x, 9);
  EXPECT_EQ(p.y, 9);
  // A large value keeps its low digits: float would round 16777217.
  BZoom one;
  OsImgPoint big{16777217, -16777217};
  one.GPtoLP(big);
  EXPECT_EQ(big.x, 16777217);
  EXPECT_EQ(big.y, -16777217);
}

TEST(BZoomTest, PointUsesValuesFromBeforeTheCall) {
  BZoom z(2.0f, 2.0f, 0.0f, 0.0f, 1.0f, 1.0f);
  OsImgPoint p{8, 6};
  z.GPtoLP(p);
  EXPECT_EQ(p.x, 4);
  EXPECT_EQ(p.y, 3);
}

TEST(BZoomTest, SetZoomReturnsPreviousValues) {
  BZoom z;
  BZoom arg(3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f);
  BZoom first = z.SetZoom(arg);
  EXPECT_EQ(first.ZoomX(), 1.0f);
  EXPECT_EQ(first.OffsetY(), 0.0f);
  EXPECT_EQ(first.ScaleY(), 1.0f);
  BZoom second = z.SetZoom(arg);
  EXPECT_EQ(second.ZoomX(), 3.0f);
  EXPECT_EQ(second.ZoomY(), 4.0f);
  EXPECT_EQ(second.OffsetX(), 5.0f);
  EXPECT_EQ(second.OffsetY(), 6.0f);
  EXPECT_EQ(second.ScaleX(), 7.0f);
  EXPECT_EQ(second.ScaleY(), 8.0f);
}

TEST(BZoomTest, CopyAndAssign) {
  BZoom a(3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f);
  BZoom b(a);
  BZoom c;
  BZoom& ref = (c = a);
  EXPECT_EQ(&ref, &c);
  EXPECT_EQ(b.ScaleX(), 7.0f);
  EXPECT_EQ(c.OffsetY(), 6.0f);
}

TEST(BZoomTest, ZeroDivisorsSaturateInsteadOfOverflowing) {
  BZoom z(0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 1.0f);
  OsImgRect r{5, -5, 0, 1};
  z.GPtoLP(r);
  EXPECT_EQ(r.left, INT32_MAX);
  EXPECT_EQ(r.top, INT32_MIN);
  EXPECT_EQ(r.right, 0);  // 0 / 0 is undefined: 0
  EXPECT_EQ(r.bottom, INT32_MAX);

  BZoom tiny(1e-30f, 1.0f, 0.0f, 0.0f, 1.0f, 1.0f);
  OsImgPoint p{-3, 0};
  tiny.GPtoLP2(p);
  EXPECT_EQ(p.x, INT32_MIN);

  const float nan = std::numeric_limits<float>::quiet_NaN();
  BZoom undefined(1.0f, 1.0f, nan, 0.0f, 1.0f, 1.0f);
  OsImgSize s{7, 7};
  undefined.GPtoLP(s);
  EXPECT_EQ(s.width, 0);
  EXPECT_EQ(s.height, 7);
}

}  // namespace
