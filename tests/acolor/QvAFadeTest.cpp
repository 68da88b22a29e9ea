#include "acolor/QvAFade.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

class FadeProbe : public QvAFade {
 public:
  tbRGBColor Target() { return color; }
  std::int16_t LastFrame() { return lastFrame; }
};

// Entry 0 of a source fades red from 255 to 0, green from 0 to 255 and blue
// from 200 to 100.
struct WorkedFade {
  FadeProbe fade;
  tbColorTable src = DistinctTable();
  WorkedFade() {
    tbRGBColor s(255, 0, 200);
    src.SetCTTable(0, &s);
    QvPal pal = RangePal(0, 0);
    EXPECT_EQ(1, fade.RegArea(&pal));
    fade.RegColor(tbRGBColor(0, 255, 100));
  }
};

}  // namespace

TEST(QvAFade, NewFadeHasThirtyFramesAndABlackTarget) {
  NoFailures guard;
  FadeProbe f;
  EXPECT_EQ(30, f.Count());
  EXPECT_EQ(29, f.LastFrame());
  EXPECT_EQ(0, f.Top());
  EXPECT_EQ(29, f.End());
  EXPECT_EQ(tbRGBColor(0, 0, 0), f.Target());
}

TEST(QvAFade, WorkedComponentsOverThirtyFrames) {
  NoFailures guard;
  WorkedFade w;
  const std::vector<int> red = {255, 246, 237, 228, 219, 211};
  const std::vector<int> green = {0, 8, 17, 26, 35, 43};
  for (std::int16_t f = 0; f <= 5; ++f) {
    tbColorTable* out = w.fade.CTable(f, &w.src);
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(red[f], Entry(out, 0).red) << "frame " << f;
    EXPECT_EQ(green[f], Entry(out, 0).green) << "frame " << f;
  }
  const std::vector<int> blue = {200, 196, 193, 189};
  for (std::int16_t f = 0; f <= 3; ++f) {
    EXPECT_EQ(blue[f], Entry(w.fade.CTable(f, &w.src), 0).blue) << "frame " << f;
  }
  tbColorTable* out = w.fade.CTable(29, &w.src);
  ASSERT_NE(nullptr, out);
  EXPECT_EQ(tbRGBColor(0, 255, 100), Entry(out, 0));
  EXPECT_EQ(nullptr, w.fade.CTable(30, &w.src));
  EXPECT_EQ(nullptr, w.fade.CTable(-1, &w.src));
}

TEST(QvAFade, WorkedComponentsOverFourFrames) {
  NoFailures guard;
  FadeProbe f;
  QvPal pal = RangePal(0, 0);
  ASSERT_EQ(1, f.RegArea(&pal));
  f.SetCount(4);
  EXPECT_EQ(3, f.LastFrame());
  EXPECT_EQ(3, f.End());
  tbColorTable src = UniformTable(100, 100, 100);
  const std::vector<int> want = {100, 66, 33, 0};
  for (std::int16_t n = 0; n < 4; ++n) {
    EXPECT_EQ(tbRGBColor(want[n], want[n], want[n]), Entry(f.CTable(n, &src), 0)) << n;
  }
  EXPECT_EQ(nullptr, f.CTable(4, &src));
}

TEST(QvAFade, EndsAreExactForEveryComponentValue) {
  NoFailures guard;
  for (int target : {0, 1, 127, 254, 255}) {
    FadeProbe f;
    QvPal pal = RangePal(0, 255);
    ASSERT_EQ(1, f.RegArea(&pal));
    f.RegColor(tbRGBColor(target, target, target));
    tbColorTable src = GreyTable();
    tbColorTable first = *f.CTable(0, &src);
    EXPECT_EQ(src, first);
    tbColorTable* last = f.CTable(29, &src);
    for (int i = 0; i < 256; ++i) {
      EXPECT_EQ(tbRGBColor(target, target, target), Entry(last, i)) << "source " << i;
    }
  }
}

TEST(QvAFade, BlendStaysBetweenSourceAndTarget) {
  NoFailures guard;
  FadeProbe f;
  QvPal pal = RangePal(0, 255);
  ASSERT_EQ(1, f.RegArea(&pal));
  f.RegColor(tbRGBColor(255, 0, 128));
  tbColorTable src = GreyTable();
  for (std::int16_t n = 0; n < 30; ++n) {
    tbColorTable* out = f.CTable(n, &src);
    ASSERT_NE(nullptr, out);
    for (int i = 0; i < 256; ++i) {
      EXPECT_GE(Entry(out, i).red, i);
      EXPECT_LE(Entry(out, i).green, i);
    }
  }
}

TEST(QvAFade, RegColorConvertsSixteenBitComponents) {
  NoFailures guard;
  FadeProbe f;
  f.RegColor(65535, 32896, 0);
  EXPECT_EQ(tbRGBColor(255, 128, 0), f.Target());
  f.RegColor(65534, 256, 257);
  EXPECT_EQ(tbRGBColor(254, 0, 1), f.Target());
  f.RegColor(tbRGBColor(9, 8, 7));
  EXPECT_EQ(tbRGBColor(9, 8, 7), f.Target());
}

TEST(QvAFade, SetCountBelowTwoGivesTwo) {
  NoFailures guard;
  for (std::int16_t n : {1, 0, -1, -32768}) {
    FadeProbe f;
    QvPal pal = RangePal(0, 255);
    ASSERT_EQ(1, f.RegArea(&pal));
    f.RegColor(tbRGBColor(10, 20, 30));
    f.SetCount(n);
    EXPECT_EQ(2, f.Count());
    EXPECT_EQ(1, f.LastFrame());
    EXPECT_EQ(0, f.Top());
    EXPECT_EQ(1, f.End());
    tbColorTable src = GreyTable();
    EXPECT_EQ(src, *f.CTable(0, &src));
    EXPECT_EQ(tbRGBColor(10, 20, 30), Entry(f.CTable(1, &src), 77));
    EXPECT_EQ(nullptr, f.CTable(2, &src));
  }
  FadeProbe big;
  big.SetCount(32767);
  EXPECT_EQ(32767, big.Count());
  EXPECT_EQ(32766, big.End());
}

TEST(QvAFade, EntriesOutsideTheAreaKeepTheSource) {
  NoFailures guard;
  FadeProbe f;
  QvPal pal = RangePal(4, 6);
  pal.SetFlag(20, 1);  // beyond FlagNum: ignored
  pal.SetFlagNum(16);
  ASSERT_EQ(1, f.RegArea(&pal));
  f.RegColor(tbRGBColor(255, 255, 255));
  tbRGBColor marker(1, 2, 3);
  for (int i = 0; i < 256; ++i) f.SetColor(static_cast<std::int16_t>(i), &marker);
  tbColorTable src = GreyTable();
  tbColorTable* out = f.CTable(29, &src);
  ASSERT_NE(nullptr, out);
  for (int i = 0; i < 16; ++i) {
    if (i >= 4 && i <= 6) {
      EXPECT_EQ(tbRGBColor(255, 255, 255), Entry(out, i));
    } else {
      EXPECT_EQ(Entry(src, i), Entry(out, i)) << i;
    }
  }
  // Entries from FlagNum() up are never written.
  for (int i = 16; i < 256; ++i) EXPECT_EQ(marker, Entry(out, i)) << i;
}

TEST(QvAFade, FailedFrameLeavesTheOutput) {
  NoFailures guard;
  WorkedFade w;
  tbColorTable before = *w.fade.CTable(3, &w.src);
  tbColorTable other = UniformTable(0, 0, 0);
  EXPECT_EQ(nullptr, w.fade.CTable(30, &other));
  EXPECT_EQ(before, *w.fade.CTable());
}

TEST(QvAFade, DupCopiesEverySetting) {
  NoFailures guard;
  WorkedFade w;
  w.fade.SetMode(1);
  w.fade.SetSpeed(20);
  w.fade.SetCount(5);
  FadeProbe b;
  w.fade.Dup(&b);
  EXPECT_EQ(1, b.Mode());
  EXPECT_EQ(20, b.Speed());
  EXPECT_EQ(5, b.Count());
  EXPECT_EQ(4, b.LastFrame());
  EXPECT_EQ(4, b.End());
  EXPECT_EQ(tbRGBColor(0, 255, 100), b.Target());
  ASSERT_NE(nullptr, b.Area());
  EXPECT_NE(w.fade.Area(), b.Area());
  EXPECT_EQ(1, b.AreaFlag(0));
  EXPECT_EQ(0, b.AreaFlag(1));
  for (std::int16_t n = 0; n < 5; ++n) {
    tbColorTable a = *w.fade.CTable(n, &w.src);
    EXPECT_EQ(a, *b.CTable(n, &w.src)) << n;
  }
  w.fade.Dup(nullptr);
}
