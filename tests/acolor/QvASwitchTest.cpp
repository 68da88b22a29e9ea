#include "acolor/QvASwitch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;
using S = std::vector<std::string>;

namespace {

// A switch over the whole area; tables are named by a letter: every entry is
// (letter, 0, 0). Reg and Del give the result, the letters of the frames in
// order and the range.
struct Switch : QvASwitch {
  Switch() {
    QvPal pal = RangePal(0, 255);
    EXPECT_EQ(1, RegArea(&pal));
  }
  std::string Order(int r = 1) {
    tbColorTable src = UniformTable(0, 0, 0);
    std::string out = std::to_string(r) + " ";
    for (std::int16_t n = 0; n < Count(); ++n) {
      tbColorTable* t = CTable(n, &src);
      out += t ? static_cast<char>(Entry(t, 0).red) : '?';
    }
    return out + " " + std::to_string(Top()) + ".." + std::to_string(End());
  }
  std::string Reg(int index, char letter) {
    tbColorTable t = UniformTable(letter, 0, 0);
    return Order(RegCTable(static_cast<std::int16_t>(index), &t));
  }
  std::string Del(int index) { return Order(DelCTable(static_cast<std::int16_t>(index))); }
};

}  // namespace

TEST(QvASwitch, RegisterAndDeleteKeepTheOrder) {
  NoFailures guard;
  Switch s;  // no frames; then a table beyond the end of an empty switch
  EXPECT_EQ(s.CTable(0, nullptr), nullptr);
  EXPECT_EQ((S{s.Order(), s.Reg(5, 'T'), s.Del(0)}), (S{"1  0..-1", "1 T 0..0", "1  0..-1"}));
  EXPECT_EQ((S{s.Reg(0, 'P'), s.Reg(1, 'Q'), s.Reg(0, 'R'), s.Reg(-1, 'S'), s.Reg(4, 'T')}),
            (S{"1 P 0..0", "1 PQ 0..1", "1 RPQ 0..2", "1 RPQS 0..3", "1 RPQST 0..4"}));
  EXPECT_EQ((S{s.Reg(2, 'T'), s.Del(5), s.Del(2), s.Del(1), s.Del(3), s.Del(32767)}),
            (S{"1 RPTQST 0..5", "1 RPTQS 0..4", "1 RPQS 0..3", "1 RQS 0..2", "0 RQS 0..2",
               "0 RQS 0..2"}));
  // A null table is refused; a negative position deletes all, even none.
  EXPECT_EQ(s.RegCTable(0, nullptr), 0);
  EXPECT_EQ((S{s.Del(-1), s.Del(-5), s.Del(0)}), (S{"1  0..-1", "1  0..-1", "0  0..-1"}));

  // Failures change nothing; deleting everything needs no new array.
  EXPECT_EQ((S{s.Reg(0, 'P'), s.Reg(1, 'Q'), (QvFailAllocation(1), s.Reg(0, 'R')),
               (QvFailAllocation(1), s.Del(0)), (QvFailAllocation(1), s.Del(-1))}),
            (S{"1 P 0..0", "1 PQ 0..1", "0 PQ 0..1", "0 PQ 0..1", "1  0..-1"}));
}

TEST(QvASwitch, KeepsItsOwnCopiesOfTheirSize) {
  NoFailures guard;
  Switch s;
  tbColorTable t = UniformTable('t', 0, 0);
  ASSERT_EQ(1, s.RegCTable(0, &t));
  tbRGBColor changed(1, 1, 1);
  t.SetCTTable(0, &changed);
  EXPECT_EQ(s.Order(), "1 t 0..0");
  // A table of 10 entries is copied with its size (again on every new
  // array); with the area 0 to 15, entries 10 up come from the source.
  t.SetCTSize(9);
  ASSERT_EQ(1, s.RegCTable(0, &t));
  ASSERT_EQ(1, s.DelCTable(1));
  tbColorTable src = GreyTable();
  QvPal pal = RangePal(0, 15);
  ASSERT_EQ(1, s.RegArea(&pal));
  tbColorTable* out = s.CTable(0, &src);
  ASSERT_NE(nullptr, out);
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(i == 0   ? changed
              : i <= 9 ? tbRGBColor('t', 0, 0)
                       : Entry(src, i),
              Entry(out, i))
        << i;
  }
  Switch b;
  s.Dup(&b);  // the copy's tables are its own
  ASSERT_EQ(1, s.DelCTable(-1));
  EXPECT_EQ((V{b.Count(), Entry(b.CTable(0, &src), 5).red}), (V{1, 't'}));
}
