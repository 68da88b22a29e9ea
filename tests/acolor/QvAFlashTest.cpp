#include "acolor/QvAFlash.h"

#include <gtest/gtest.h>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

TEST(QvAFlash, HasThreeFrames) {
  NoFailures guard;
  QvAFlash f;
  EXPECT_EQ(3, f.Count());
  EXPECT_EQ(0, f.Top());
  EXPECT_EQ(2, f.End());
  QvPal pal = RangePal(0, 9);
  ASSERT_EQ(1, f.RegArea(&pal));
  EXPECT_EQ(3, f.Count());
  EXPECT_EQ(2, f.End());
}

TEST(QvAFlash, PaintsTheAreaRedGreenBlue) {
  NoFailures guard;
  QvAFlash f;
  QvPal pal = RangePal(0, 9);
  ASSERT_EQ(1, f.RegArea(&pal));
  tbColorTable src = GreyTable();
  const tbRGBColor colours[3] = {tbRGBColor(255, 0, 0), tbRGBColor(0, 255, 0),
                                 tbRGBColor(0, 0, 255)};
  for (std::int16_t n = 0; n < 3; ++n) {
    tbColorTable* out = f.CTable(n, &src);
    ASSERT_NE(nullptr, out);
    for (int i = 0; i < 256; ++i) {
      EXPECT_EQ(i <= 9 ? colours[n] : Entry(src, i), Entry(out, i)) << n << " " << i;
    }
  }
  EXPECT_EQ(nullptr, f.CTable(3, &src));
  EXPECT_EQ(nullptr, f.CTable(-1, &src));
}

TEST(QvAFlash, ColoursDoNotDependOnTheSource) {
  NoFailures guard;
  QvAFlash f;
  QvPal pal = RangePal(0, 3);
  ASSERT_EQ(1, f.RegArea(&pal));
  tbColorTable src = UniformTable(255, 0, 0);
  tbRGBColor white(255, 255, 255);
  src.SetCTTable(1, &white);
  EXPECT_EQ(tbRGBColor(255, 0, 0), Entry(f.CTable(0, &src), 0));
  EXPECT_EQ(tbRGBColor(255, 0, 0), Entry(f.CTable(0, &src), 1));
  EXPECT_EQ(tbRGBColor(0, 255, 0), Entry(f.CTable(1, &src), 0));
  EXPECT_EQ(tbRGBColor(0, 255, 0), Entry(f.CTable(1, &src), 1));
  EXPECT_EQ(tbRGBColor(0, 0, 255), Entry(f.CTable(2, &src), 1));
}

TEST(QvAFlash, WritesOnlyBelowTheAreaCount) {
  NoFailures guard;
  QvAFlash f;
  QvPal pal = RangePal(0, 255);
  pal.SetFlagNum(8);
  ASSERT_EQ(1, f.RegArea(&pal));
  tbRGBColor marker(4, 5, 6);
  for (int i = 0; i < 256; ++i) f.SetColor(static_cast<std::int16_t>(i), &marker);
  tbColorTable src = GreyTable();
  tbColorTable* out = f.CTable(1, &src);
  ASSERT_NE(nullptr, out);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(tbRGBColor(0, 255, 0), Entry(out, i));
  for (int i = 8; i < 256; ++i) EXPECT_EQ(marker, Entry(out, i));
}

TEST(QvAFlash, LoopsThroughTheColours) {
  NoFailures guard;
  QvAFlash f;
  QvPal pal = RangePal(0, 0);
  ASSERT_EQ(1, f.RegArea(&pal));
  f.SetMode(2);
  tbColorTable src = GreyTable();
  f.SetCur(4);  // wraps to 1
  EXPECT_EQ(tbRGBColor(0, 255, 0), Entry(f.CTable(&src), 0));
}

TEST(QvAFlash, DupCopiesModeSpeedAndArea) {
  NoFailures guard;
  QvAFlash a;
  QvPal pal = RangePal(5, 6);
  a.SetMode(2);
  a.SetSpeed(7);
  ASSERT_EQ(1, a.RegArea(&pal));
  QvAFlash b;
  a.Dup(&b);
  EXPECT_EQ(2, b.Mode());
  EXPECT_EQ(7, b.Speed());
  EXPECT_EQ(3, b.Count());
  EXPECT_EQ(2, b.End());
  EXPECT_EQ(1, b.AreaFlag(5));
  EXPECT_EQ(0, b.AreaFlag(4));
  EXPECT_EQ(0, b.Error());
  QvAFlash none;
  none.Dup(&b);  // a source without an area gives an empty one
  EXPECT_EQ(0, b.AreaFlag(5));
  EXPECT_EQ(0, b.Error());
}
