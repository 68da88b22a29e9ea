// Movie time as GIF delays: units of 1/30 s shown as delays of 1/100 s, the
// rounding error carried from frame to frame.

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "scene/MovieTime.h"

namespace {

using qvscene::DelayCentiseconds;

std::vector<std::int64_t> Delays(std::int64_t step, int n) {
  std::vector<std::int64_t> d;
  for (int k = 0; k < n; ++k) d.push_back(DelayCentiseconds(k, step));
  return d;
}

TEST(MovieTime, UnitsAreTwoTicksAndDelaysAlternateAroundTheExactLength) {
  EXPECT_EQ(2, qvscene::kTicksPerUnit);
  EXPECT_EQ(100, qvscene::CentisecondsAt(30, 1));
  EXPECT_EQ(100, qvscene::CentisecondsAt(15, 2));
  EXPECT_EQ(0, qvscene::CentisecondsAt(0, 7));
  EXPECT_EQ((std::vector<std::int64_t>{3, 4, 3, 3, 4, 3}), Delays(1, 6));
  EXPECT_EQ((std::vector<std::int64_t>{7, 6, 7, 7, 6, 7}), Delays(2, 6));
  EXPECT_EQ(std::vector<std::int64_t>(100, 10), Delays(3, 100));
}

TEST(MovieTime, TotalLengthNeverDriftsByHalfACentisecondOrMore) {
  for (std::int64_t step = 1; step <= 12; ++step) {
    std::int64_t sum = 0;
    for (std::int64_t k = 0; k < 3000; ++k) {
      const std::int64_t delay = DelayCentiseconds(k, step);
      // Each delay is the exact length rounded down or up.
      ASSERT_LE(std::llabs(delay * 30 - step * 100), 30) << "step " << step << " frame " << k;
      sum += delay;
      // sum against the exact (k + 1) * step / 30 s, in 1/3000 s
      ASSERT_LE(std::llabs(sum * 30 - (k + 1) * step * 100), 15) << "step " << step << " @" << k;
    }
  }
}

}  // namespace
