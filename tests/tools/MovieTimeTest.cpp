// The mapping of movie time to GIF delays: units of 1/30 s shown as delays
// of 1/100 s, the rounding error carried from frame to frame.

#include <gtest/gtest.h>

#include <cstdlib>

#include "scene/MovieTime.h"

namespace {

using qvscene::CentisecondsAt;
using qvscene::DelayCentiseconds;

TEST(MovieTime, OneUnitIsTwoTicksOfASixtiethSecond) {
  EXPECT_EQ(2, qvscene::kTicksPerUnit);
  // 30 units are one second.
  EXPECT_EQ(100, CentisecondsAt(30, 1));
  EXPECT_EQ(100, CentisecondsAt(15, 2));
  EXPECT_EQ(0, CentisecondsAt(0, 7));
}

TEST(MovieTime, DelaysOfOneUnitAlternateAroundThreeAndAThird) {
  std::vector<std::int64_t> d;
  for (int k = 0; k < 6; ++k) d.push_back(DelayCentiseconds(k, 1));
  EXPECT_EQ((std::vector<std::int64_t>{3, 4, 3, 3, 4, 3}), d);
}

TEST(MovieTime, DelaysOfTwoUnitsAlternateAroundSixAndTwoThirds) {
  std::vector<std::int64_t> d;
  for (int k = 0; k < 6; ++k) d.push_back(DelayCentiseconds(k, 2));
  EXPECT_EQ((std::vector<std::int64_t>{7, 6, 7, 7, 6, 7}), d);
}

TEST(MovieTime, TotalLengthNeverDriftsByHalfACentisecondOrMore) {
  for (std::int64_t step = 1; step <= 12; ++step) {
    std::int64_t sum = 0;
    for (std::int64_t k = 0; k < 3000; ++k) {
      const std::int64_t delay = DelayCentiseconds(k, step);
      // Each delay is the exact length rounded down or up.
      EXPECT_GE(delay * 30, step * 100 - 30) << "step " << step << " frame " << k;
      EXPECT_LE(delay * 30, step * 100 + 30) << "step " << step << " frame " << k;
      sum += delay;
      // sum against the exact (k + 1) * step / 30 s, in 1/3000 s
      const std::int64_t error = sum * 30 - (k + 1) * step * 100;
      ASSERT_LE(std::llabs(error), 15) << "step " << step << " after " << k + 1 << " frames";
    }
  }
}

TEST(MovieTime, StepsOfThreeUnitsAreExactTenths) {
  for (int k = 0; k < 100; ++k) EXPECT_EQ(10, DelayCentiseconds(k, 3));
}

}  // namespace
