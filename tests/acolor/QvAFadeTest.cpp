#include "acolor/QvAFade.h"

#include <gtest/gtest.h>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

struct Fade : QvAFade {
  // A fade over the whole area toward target, with count frames.
  explicit Fade(tbRGBColor target = tbRGBColor(0, 0, 0), std::int16_t n = 30) {
    QvPal pal = RangePal(0, 255);
    EXPECT_EQ(1, RegArea(&pal));
    RegColor(target);
    SetCount(n);
  }
  V State() { return {count, lastFrame, Top(), End(), color.red, color.green, color.blue}; }
  // Entry i of frame n from src, as red, green, blue.
  V At(std::int16_t n, tbColorTable& src, int i = 0) {
    tbColorTable* out = CTable(n, &src);
    return out ? V{Entry(out, i).red, Entry(out, i).green, Entry(out, i).blue} : V{};
  }
};

}  // namespace

TEST(QvAFade, WorkedComponents) {
  NoFailures guard;
  QvAFade plain;  // thirty frames toward black
  EXPECT_EQ((V{plain.Count(), plain.Top(), plain.End()}), (V{30, 0, 29}));
  Fade f(tbRGBColor(0, 255, 100));
  tbColorTable src = DistinctTable();
  tbRGBColor s(255, 0, 200);
  src.SetCTTable(0, &s);
  // Red from 255 to 0, green from 0 to 255, blue from 200 to 100.
  EXPECT_EQ(f.At(0, src), (V{255, 0, 200}));
  EXPECT_EQ(f.At(1, src), (V{246, 8, 196}));
  EXPECT_EQ(f.At(2, src), (V{237, 17, 193}));
  EXPECT_EQ(f.At(3, src), (V{228, 26, 189}));
  EXPECT_EQ((V{f.At(4, src)[0], f.At(4, src)[1], f.At(5, src)[0], f.At(5, src)[1]}),
            (V{219, 35, 211, 43}));
  EXPECT_EQ(f.At(29, src), (V{0, 255, 100}));
  const tbColorTable before = *f.CTable();  // out of range: output untouched
  EXPECT_EQ((P{f.CTable(30, &src), f.CTable(-1, &src)}), (P{nullptr, nullptr}));
  EXPECT_EQ(before, *f.CTable());
  Fade four(tbRGBColor(0, 0, 0), 4);  // four frames from 100 to 0
  EXPECT_EQ(four.State(), (V{4, 3, 0, 3, 0, 0, 0}));
  tbColorTable hundred = UniformTable(100, 100, 100);
  EXPECT_EQ((V{four.At(0, hundred, 9)[1], four.At(1, hundred, 9)[1], four.At(2, hundred, 9)[1],
               four.At(3, hundred, 9)[1], four.CTable(4, &hundred) == nullptr}),
            (V{100, 66, 33, 0, 1}));
}

TEST(QvAFade, EndsAreExact) {
  NoFailures guard;
  tbColorTable src = GreyTable();
  for (int target : {0, 1, 127, 254, 255}) {
    Fade f(tbRGBColor(B(target), B(target), B(target)));
    EXPECT_EQ(src, *f.CTable(0, &src)) << target;
    EXPECT_EQ(UniformTable(target, target, target), *f.CTable(29, &src)) << target;
  }
}

TEST(QvAFade, RegColorSetCountAndArea) {
  NoFailures guard;
  Fade f;
  f.RegColor(65535, 32896, 0);
  EXPECT_EQ(f.State(), (V{30, 29, 0, 29, 255, 128, 0}));
  f.RegColor(65534, 256, 257);
  EXPECT_EQ(f.State(), (V{30, 29, 0, 29, 254, 0, 1}));
  tbColorTable src = GreyTable();
  for (std::int16_t n : {1, 0, -1, -32768}) {  // fewer than two frames: two
    Fade g(tbRGBColor(10, 20, 30), n);
    EXPECT_EQ(g.State(), (V{2, 1, 0, 1, 10, 20, 30})) << n;
    EXPECT_EQ(src, *g.CTable(0, &src));
    EXPECT_EQ(UniformTable(10, 20, 30), *g.CTable(1, &src));
    EXPECT_EQ(nullptr, g.CTable(2, &src));
  }
  f.SetCount(32767);
  EXPECT_EQ(f.State(), (V{32767, 32766, 0, 32766, 254, 0, 1}));
}
