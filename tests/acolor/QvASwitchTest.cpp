#include "acolor/QvASwitch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;
using S = std::vector<std::string>;

namespace {

// A switch over the whole area; tables are named by a letter: every entry is
// (letter, 0, 0). Order() reads the letters of the frames in order.
struct Switch : QvASwitch {
  Switch() {
    QvPal pal = RangePal(0, 255);
    EXPECT_EQ(1, RegArea(&pal));
  }
  std::string Order() {
    tbColorTable src = UniformTable(0, 0, 0);
    std::string out;
    for (std::int16_t n = 0; n < Count(); ++n) {
      tbColorTable* t = CTable(n, &src);
      out += t ? static_cast<char>(Entry(t, 0).red) : '?';
    }
    return out + " " + std::to_string(Top()) + ".." + std::to_string(End());
  }
  std::string Reg(int index, char letter) {
    tbColorTable t = UniformTable(letter, 0, 0);
    const int r = RegCTable(static_cast<std::int16_t>(index), &t);
    return std::to_string(r) + " " + Order();
  }
  std::string Del(int index) {
    const int r = DelCTable(static_cast<std::int16_t>(index));
    return std::to_string(r) + " " + Order();
  }
  tbColorTable* Table(int n) { return &tables[n]; }
};

}  // namespace

TEST(QvASwitch, RegisterAndDeleteKeepTheOrder) {
  NoFailures guard;
  Switch s;
  EXPECT_EQ(s.Order(), " 0..-1");
  tbColorTable src = GreyTable();
  EXPECT_EQ(nullptr, s.CTable(0, &src));
  EXPECT_EQ(s.Reg(5, 'T'), "1 T 0..0");  // beyond the end of an empty switch
  EXPECT_EQ(s.Del(0), "1  0..-1");
  EXPECT_EQ((S{s.Reg(0, 'P'), s.Reg(1, 'Q')}), (S{"1 P 0..0", "1 PQ 0..1"}));
  EXPECT_EQ(s.Reg(0, 'R'), "1 RPQ 0..2");
  EXPECT_EQ(s.Reg(-1, 'S'), "1 RPQS 0..3");
  EXPECT_EQ(s.Reg(4, 'T'), "1 RPQST 0..4");  // 4 equals the count: appended
  EXPECT_EQ(s.Reg(2, 'T'), "1 RPTQST 0..5");
  EXPECT_EQ((S{s.Del(5), s.Del(2)}), (S{"1 RPTQS 0..4", "1 RPQS 0..3"}));
  EXPECT_EQ(s.Del(1), "1 RQS 0..2");
  EXPECT_EQ((S{s.Del(3), s.Del(32767)}), (S{"0 RQS 0..2", "0 RQS 0..2"}));
  EXPECT_EQ(s.RegCTable(0, nullptr), 0);
  EXPECT_EQ(s.Del(-1), "1  0..-1");
  EXPECT_EQ((S{s.Del(-5), s.Del(0)}),
            (S{"1  0..-1", "0  0..-1"}));  // negative: deletes all, even none
}

TEST(QvASwitch, KeepsItsOwnCopiesOfTheirSize) {
  NoFailures guard;
  Switch s;
  tbColorTable t = UniformTable('t', 0, 0);
  ASSERT_EQ(1, s.RegCTable(0, &t));
  tbRGBColor changed(1, 1, 1);
  t.SetCTTable(0, &changed);
  EXPECT_EQ(s.Order(), "t 0..0");
  tbColorTable small = UniformTable('s', 0, 0);
  small.SetCTSize(9);
  ASSERT_EQ(1, s.RegCTable(0, &small));
  EXPECT_EQ((V{s.Table(0)->CTSize(), s.Table(1)->CTSize()}), (V{9, 255}));
  ASSERT_EQ(1, s.DelCTable(1));  // copied again into a new array
  EXPECT_EQ(s.Table(0)->CTSize(), 9);
  EXPECT_EQ(tbRGBColor('s', 0, 0), Entry(s.Table(0), 9));
}

TEST(QvASwitch, TheAreaTakesTheTable) {
  NoFailures guard;
  // Area 0 to 15: entries 0 to 15 from the table, the rest from the source; a
  // table of 10 entries leaves 10 up to the source; from FlagNum() 20 up
  // nothing is written.
  QvASwitch s;
  QvPal pal = RangePal(0, 15);
  pal.SetFlagNum(20);
  ASSERT_EQ(1, s.RegArea(&pal));
  tbColorTable a = DistinctTable(), b = UniformTable('b', 0, 0);
  b.SetCTSize(9);
  ASSERT_EQ(1, s.RegCTable(0, &a));
  ASSERT_EQ(1, s.RegCTable(1, &b));
  tbColorTable src = GreyTable();
  for (std::int16_t n = 0; n < 2; ++n) {
    Mark(s, tbRGBColor(7, 7, 7));
    tbColorTable* out = s.CTable(n, &src);
    ASSERT_NE(nullptr, out);
    for (int i = 0; i < 256; ++i) {
      const tbRGBColor want = i >= 20                  ? tbRGBColor(7, 7, 7)
                              : i > 15 || (n && i > 9) ? Entry(src, i)
                                                       : Entry(n ? b : a, i);
      EXPECT_EQ(want, Entry(out, i)) << n << " " << i;
    }
  }
  EXPECT_EQ(nullptr, s.CTable(2, &src));
}

TEST(QvASwitch, FailedAllocationChangesNothingAndDupCopiesInOrder) {
  NoFailures guard;
  Switch s;
  s.Reg(0, 'P');
  s.Reg(1, 'Q');
  tbColorTable* before = s.Table(0);
  QvFailAllocation(1);
  EXPECT_EQ(s.Reg(0, 'R'), "0 PQ 0..1");
  QvFailAllocation(1);
  EXPECT_EQ(s.Del(0), "0 PQ 0..1");
  EXPECT_EQ(before, s.Table(0));
  s.SetMode(2);
  s.SetSpeed(5);
  Switch b;
  b.Reg(0, 'o');
  s.Dup(&b);
  EXPECT_EQ((V{b.Mode(), b.Speed(), b.AreaFlag(255)}), (V{2, 5, 1}));
  EXPECT_EQ(b.Order(), "PQ 0..1");
  EXPECT_NE(s.Table(0), b.Table(0));
  s.Dup(&s);  // into itself: everything kept
  EXPECT_EQ(s.Order(), "PQ 0..1");
  QvFailAllocation(1);  // deleting everything needs no new array
  EXPECT_EQ(s.Del(-1), "1  0..-1");
}
