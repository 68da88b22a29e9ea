#include "acolor/QvAFlash.h"

#include <gtest/gtest.h>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

TEST(QvAFlash, PaintsTheAreaRedGreenBlueWhateverTheSource) {
  NoFailures guard;
  QvAFlash f;
  EXPECT_EQ((V{f.Count(), f.Top(), f.End()}), (V{3, 0, 2}));
  QvPal pal = RangePal(0, 9);
  ASSERT_EQ(1, f.RegArea(&pal));
  EXPECT_EQ((V{f.Count(), f.End()}), (V{3, 2}));
  tbColorTable src = GreyTable();
  const tbRGBColor colours[3] = {tbRGBColor(255, 0, 0), tbRGBColor(0, 255, 0),
                                 tbRGBColor(0, 0, 255)};
  src.SetCTTable(1, &colours[0]);  // already red: red at frame 0, green at frame 1
  for (std::int16_t n = 0; n < 3; ++n) {
    tbColorTable* out = f.CTable(n, &src);
    ASSERT_NE(nullptr, out);
    for (int i = 0; i < 256; ++i)
      EXPECT_EQ(i <= 9 ? colours[n] : Entry(src, i), Entry(out, i)) << n << " " << i;
  }
  EXPECT_EQ((P{f.CTable(3, &src), f.CTable(-1, &src)}), (P{nullptr, nullptr}));
  f.SetMode(QvMPlayer::kPlayLoop);
  f.SetCur(4);  // loops round to frame 1
  EXPECT_EQ(colours[1], Entry(f.CTable(&src), 0));
}
