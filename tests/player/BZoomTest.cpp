#include "player/BZoom.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr std::int32_t kMax = INT32_MAX;
constexpr std::int32_t kMin = INT32_MIN;
using V = std::vector<std::int32_t>;
const float kNaN = std::numeric_limits<float>::quiet_NaN();

// One conversion: the six values, the form (1 GPtoLP, 2 GPtoLP2), a rectangle (left and right
// are x values, top and bottom y values) and its result. (left, top) as point and size alike.
// clang-format off
struct Case { const char* what; float zx, zy, ox, oy, sx, sy; int form;
              std::int32_t in[4], out[4]; };
const Case kCases[] = {
    {"defaults", 1, 1, 0, 0, 1, 1, 1, {-7, 12, kMax, kMin}, {-7, 12, kMax, kMin}},
    {"defaults 2", 1, 1, 0, 0, 1, 1, 2, {-7, 12, kMax, kMin}, {-7, 12, kMax, kMin}},
    {"trunc toward zero", 2, 1, 0, 0, 1, 1, 1, {5, 5, -5, -5}, {2, 5, -2, -5}},
    {"trunc toward zero 2", 2, 1, 0, 0, 1, 1, 2, {-5, 0, 5, 0}, {-2, 0, 2, 0}},
    {"offset on sizes", 1, 1, 10, 0, 1, 1, 1, {4, 4, 0, 0}, {14, 4, 10, 0}},
    {"no offset in form 2", 1, 1, 10, 0, 1, 1, 2, {4, 4, 0, 0}, {4, 4, 0, 0}},
    // x: (x / 2 + 0.5) / 2; y: (y / 4 - 1) / 0.5
    {"full formula", 2, 4, 0.5f, -1, 2, 0.5f, 1, {3, 10, -7, -3}, {1, 3, -1, -3}},
    {"full formula 2", 2, 4, 0.5f, -1, 2, 0.5f, 2, {3, 10, -7, -3}, {0, 5, -1, -1}},
    // 1 / 0.1f is 9.99999985 in double precision but exactly 10 in float.
    {"double precision", 0.1f, 0.1f, 0, 0, 1, 1, 1, {1, 1, 0, 0}, {9, 9, 0, 0}},
    {"float", 1, 1, 0, 0, 1, 1, 1, {16777217, -16777217, 0, 0}, {16777217, -16777217, 0, 0}},
    {"values from before", 2, 2, 0, 0, 1, 1, 1, {8, 6, 0, 0}, {4, 3, 0, 0}},
    // Zero divisors saturate; an undefined value gives 0.
    {"zero zoom", 0, 0, 0, 0, 1, 1, 1, {5, -5, 0, 1}, {kMax, kMin, 0, kMax}},
    {"tiny zoom", 1e-30f, 1, 0, 0, 1, 1, 2, {-3, 0, 3, 0}, {kMin, 0, kMax, 0}},
    {"NaN offset", 1, 1, kNaN, 0, 1, 1, 1, {7, 7, 7, 7}, {0, 7, 0, 7}},
};
// clang-format on

TEST(BZoomTest, ConversionTable) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    BZoom z(c.zx, c.zy, c.ox, c.oy, c.sx, c.sy);
    OsImgRect r{c.in[0], c.in[1], c.in[2], c.in[3]};
    OsImgPoint p{c.in[0], c.in[1]};
    OsImgSize s{c.in[0], c.in[1]};
    auto convert = [&](auto& v) { c.form == 1 ? z.GPtoLP(v) : z.GPtoLP2(v); };
    convert(r);
    convert(p);
    convert(s);
    EXPECT_EQ((V{r.left, r.top, r.right, r.bottom}), (V{c.out[0], c.out[1], c.out[2], c.out[3]}));
    EXPECT_EQ((V{p.x, p.y, s.width, s.height}), (V{c.out[0], c.out[1], c.out[0], c.out[1]}));
  }
}

TEST(BZoomTest, SetZoomReturnsPreviousValuesAndCopiesCopy) {
  auto Values = [](const BZoom& z) {
    return std::vector<float>{z.ZoomX(),   z.ZoomY(),  z.OffsetX(),
                              z.OffsetY(), z.ScaleX(), z.ScaleY()};
  };
  BZoom z, c, arg(3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f), b(arg);
  const std::vector<float> want{3, 4, 5, 6, 7, 8};
  EXPECT_EQ(Values(z.SetZoom(arg)), (std::vector<float>{1, 1, 0, 0, 1, 1}));
  EXPECT_EQ(Values(z.SetZoom(arg)), want);
  EXPECT_EQ(&(c = arg), &c);
  EXPECT_TRUE(Values(b) == want && Values(c) == want);
}

}  // namespace
