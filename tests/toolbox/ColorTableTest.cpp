#include <gtest/gtest.h>

#include <vector>

#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRGBColor.h"

namespace {

using Ints = std::vector<int>;

TEST(ColorTableTest, SixteenBitComponentsAreDividedBy257) {
  const unsigned short in[] = {65535, 32896, 65534, 256, 257, 0};
  const unsigned char out[] = {255, 128, 254, 0, 1, 0};
  for (int i = 0; i < 6; ++i) {
    tbRGBColor c;
    c.SetRed(in[i]);
    c.SetGreen(in[i]);
    c.SetBlue(in[i]);
    EXPECT_EQ(c, tbRGBColor(out[i], out[i], out[i])) << in[i];
  }
  tbRGBColor d(1, 128, 255);
  EXPECT_EQ(Ints({d.Red16(), d.Green16(), d.Blue16()}), Ints({257, 32896, 65535}));
  EXPECT_EQ(tbPoint(), tbPoint(0, 0));
}

TEST(ColorTableTest, TablesStartBlackAndFullAndCompareEveryEntry) {
  tbColorTable a, b(72);
  EXPECT_EQ(Ints({a.CTSize(), b.CTSize()}), Ints({255, 255}));
  for (int i = 0; i < 256; ++i)
    ASSERT_EQ(*a.CTTable(static_cast<std::int16_t>(i)), tbRGBColor(0, 0, 0)) << i;
  EXPECT_EQ(a, b);
  const tbRGBColor c(1, 2, 3);
  b.SetCTTable(200, &c);
  EXPECT_NE(a, b);
  a.SetCTTable(200, &c);
  EXPECT_EQ(a, b);
  a.SetCTSize(100);
  EXPECT_NE(a, b);
  tbColorTable copy = a;
  EXPECT_EQ(copy, a);
}

TEST(ColorTableTest, SizeClampsAndIndicesWrap) {
  tbColorTable t;
  const std::int16_t sizes[][2] = {{-3, 0}, {300, 255}, {15, 15}};
  for (const auto& s : sizes) {
    t.SetCTSize(s[0]);
    EXPECT_EQ(t.CTSize(), s[1]) << s[0];
  }
  const tbRGBColor red(255, 0, 0);
  t.SetCTTable(256 + 3, &red);  // the low 8 bits: entry 3
  EXPECT_EQ(*t.CTTable(3), red);
  EXPECT_EQ(t.CTTable(-1), t.CTTable(255));
  t.SetCTTable(3, nullptr);  // ignored
  EXPECT_EQ(*t.CTTable(3), red);
}

TEST(ColorTableTest, PaletteAreaFlagsAndCount) {
  QvPal p, q;
  EXPECT_EQ(p.FlagNum(), 256);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(p.Flag(static_cast<unsigned char>(i)), 0) << i;
  p.SetFlag(12, 5);  // any non-zero flags the index, as 1
  p.SetRange(250, 255, 1);
  EXPECT_EQ(Ints({p.Flag(12), p.Flag(249), p.Flag(250), p.Flag(255)}), Ints({1, 0, 1, 1}));
  p.SetFlagNum(-5);
  EXPECT_EQ(p.FlagNum(), 0);
  p.SetFlagNum(1000);
  EXPECT_EQ(p.FlagNum(), 256);
  p.SetFlagNum(16);
  q.GetFlags(&p);
  EXPECT_EQ(Ints({q.FlagNum(), q.Flag(12), q.Flag(255)}), Ints({16, 1, 1}));
  q.GetFlags(nullptr);  // resets
  EXPECT_EQ(Ints({q.FlagNum(), q.Flag(12)}), Ints({256, 0}));
}

}  // namespace
