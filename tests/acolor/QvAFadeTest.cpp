#include "acolor/QvAFade.h"

#include <gtest/gtest.h>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

struct FadeProbe : QvAFade {
  V State() { return {count, lastFrame, Top(), End(), color.red, color.green, color.blue}; }
};

// A fade over the whole area toward target, with count frames.
void Toward(FadeProbe& f, tbRGBColor target, std::int16_t count = 30) {
  QvPal pal = RangePal(0, 255);
  EXPECT_EQ(1, f.RegArea(&pal));
  f.RegColor(target);
  f.SetCount(count);
}

}  // namespace

TEST(QvAFade, WorkedComponents) {
  NoFailures guard;
  FadeProbe f;
  EXPECT_EQ(f.State(), (V{30, 29, 0, 29, 0, 0, 0}));  // thirty frames toward black
  Toward(f, tbRGBColor(0, 255, 100));
  tbColorTable src = DistinctTable();
  tbRGBColor s(255, 0, 200);
  src.SetCTTable(0, &s);
  // Frame, then red from 255 to 0, green from 0 to 255, blue from 200 to 100.
  const V rows[] = {{0, 255, 0, 200}, {1, 246, 8, 196}, {2, 237, 17, 193}, {3, 228, 26, 189},
                    {4, 219, 35, -1}, {5, 211, 43, -1}, {29, 0, 255, 100}};
  for (const V& r : rows) {
    tbColorTable* out = f.CTable(static_cast<std::int16_t>(r[0]), &src);
    ASSERT_NE(nullptr, out);
    const tbRGBColor c = Entry(out, 0);
    EXPECT_EQ((V{r[0], c.red, c.green, r[3] < 0 ? -1 : c.blue}), r);
  }
  const tbColorTable before = *f.CTable();  // out of range: output untouched
  EXPECT_EQ((P{f.CTable(30, &src), f.CTable(-1, &src)}), (P{nullptr, nullptr}));
  EXPECT_EQ(before, *f.CTable());

  FadeProbe four;  // four frames from 100 to 0
  Toward(four, tbRGBColor(0, 0, 0), 4);
  EXPECT_EQ(four.State(), (V{4, 3, 0, 3, 0, 0, 0}));
  tbColorTable hundred = UniformTable(100, 100, 100);
  V got;
  for (std::int16_t n = 0; n < 4; ++n) got.push_back(Entry(four.CTable(n, &hundred), 9).green);
  EXPECT_EQ(got, (V{100, 66, 33, 0}));
  EXPECT_EQ(nullptr, four.CTable(4, &hundred));
}

TEST(QvAFade, EndsAreExactAndTheBlendStaysBetween) {
  NoFailures guard;
  tbColorTable src = GreyTable();
  for (int target : {0, 1, 127, 254, 255}) {
    FadeProbe f;
    Toward(f, tbRGBColor(B(target), B(target), B(target)));
    EXPECT_EQ(src, *f.CTable(0, &src)) << target;
    tbColorTable last = *f.CTable(29, &src);
    EXPECT_EQ(UniformTable(target, target, target), last) << target;
  }
  FadeProbe f;
  Toward(f, tbRGBColor(255, 0, 128));
  for (std::int16_t n = 0; n < 30; ++n) {
    tbColorTable* out = f.CTable(n, &src);
    ASSERT_NE(nullptr, out);
    for (int i = 0; i < 256; ++i) {
      EXPECT_TRUE(Entry(out, i).red >= i && Entry(out, i).green <= i) << n << " " << i;
    }
  }
}

TEST(QvAFade, RegColorSetCountAndArea) {
  NoFailures guard;
  FadeProbe f;
  f.RegColor(65535, 32896, 0);
  EXPECT_EQ(f.State(), (V{30, 29, 0, 29, 255, 128, 0}));
  f.RegColor(65534, 256, 257);
  EXPECT_EQ(f.State(), (V{30, 29, 0, 29, 254, 0, 1}));
  tbColorTable src = GreyTable();
  for (std::int16_t n : {1, 0, -1, -32768}) {  // fewer than two frames: two
    FadeProbe g;
    Toward(g, tbRGBColor(10, 20, 30), n);
    EXPECT_EQ(g.State(), (V{2, 1, 0, 1, 10, 20, 30})) << n;
    EXPECT_EQ(src, *g.CTable(0, &src));
    EXPECT_EQ(UniformTable(10, 20, 30), *g.CTable(1, &src));
    EXPECT_EQ(nullptr, g.CTable(2, &src));
  }
  f.SetCount(32767);
  EXPECT_EQ(f.State(), (V{32767, 32766, 0, 32766, 254, 0, 1}));
}
