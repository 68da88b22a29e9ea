#include <gtest/gtest.h>

#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRGBColor.h"

namespace {

TEST(ColorTableTest, SixteenBitComponentsTruncateByDivisionBy257) {
  tbRGBColor c;
  const struct {
    unsigned short in;
    unsigned char out;
  } cases[] = {{65535, 255}, {32896, 128}, {65534, 254}, {256, 0}, {257, 1}, {0, 0}};
  for (const auto& k : cases) {
    c.SetRed(k.in);
    c.SetGreen(k.in);
    c.SetBlue(k.in);
    EXPECT_EQ(c.red, k.out) << k.in;
    EXPECT_EQ(c.green, k.out) << k.in;
    EXPECT_EQ(c.blue, k.out) << k.in;
  }
  tbRGBColor d(1, 128, 255);
  EXPECT_EQ(d.Red16(), 257);
  EXPECT_EQ(d.Green16(), 32896);
  EXPECT_EQ(d.Blue16(), 65535);
}

TEST(ColorTableTest, NewTablesAreBlackAndFull) {
  tbColorTable a;
  tbColorTable b(72);
  EXPECT_EQ(a.CTSize(), 255);
  EXPECT_EQ(b.CTSize(), 255);
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(*a.CTTable(static_cast<std::int16_t>(i)), tbRGBColor(0, 0, 0));
    EXPECT_EQ(*b.CTTable(static_cast<std::int16_t>(i)), tbRGBColor(0, 0, 0));
  }
  EXPECT_EQ(a, b);
}

TEST(ColorTableTest, SizeClampsAndIndicesWrap) {
  tbColorTable t;
  t.SetCTSize(-3);
  EXPECT_EQ(t.CTSize(), 0);
  t.SetCTSize(300);
  EXPECT_EQ(t.CTSize(), 255);
  t.SetCTSize(15);
  EXPECT_EQ(t.CTSize(), 15);

  const tbRGBColor red(255, 0, 0);
  t.SetCTTable(256 + 3, &red);  // the low 8 bits: entry 3
  EXPECT_EQ(*t.CTTable(3), red);
  EXPECT_EQ(t.CTTable(-1), t.CTTable(255));
  t.SetCTTable(3, nullptr);  // ignored
  EXPECT_EQ(*t.CTTable(3), red);
}

TEST(ColorTableTest, EqualityComparesSizeAndEveryEntry) {
  tbColorTable a, b;
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

TEST(ColorTableTest, PaletteAreaFlagsAndCount) {
  QvPal p;
  EXPECT_EQ(p.FlagNum(), 256);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(p.Flag(static_cast<unsigned char>(i)), 0);
  p.SetFlag(12, 5);  // any non-zero flags the index, as 1
  EXPECT_EQ(p.Flag(12), 1);
  p.SetRange(250, 255, 1);
  EXPECT_EQ(p.Flag(249), 0);
  EXPECT_EQ(p.Flag(250), 1);
  EXPECT_EQ(p.Flag(255), 1);
  p.SetFlagNum(-5);
  EXPECT_EQ(p.FlagNum(), 0);
  p.SetFlagNum(1000);
  EXPECT_EQ(p.FlagNum(), 256);
  p.SetFlagNum(16);

  QvPal q;
  q.GetFlags(&p);
  EXPECT_EQ(q.FlagNum(), 16);
  EXPECT_EQ(q.Flag(12), 1);
  EXPECT_EQ(q.Flag(255), 1);
  q.GetFlags(nullptr);
  EXPECT_EQ(q.FlagNum(), 256);
  EXPECT_EQ(q.Flag(12), 0);
}

TEST(ColorTableTest, PointStartsAtOrigin) {
  tbPoint p;
  EXPECT_EQ(p, tbPoint(0, 0));
}

}  // namespace
