#include "acolor/QvASwitch.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

class SwitchProbe : public QvASwitch {
 public:
  tbColorTable* Table(int n) { return &tables[n]; }
};

// Tables named by a letter: every entry is (letter, 0, 0).
tbColorTable Named(char letter) { return UniformTable(static_cast<unsigned char>(letter), 0, 0); }

// The letters of the tables in frame order, read through the frames.
std::string Order(QvASwitch& s) {
  tbColorTable src = UniformTable(0, 0, 0);
  std::string out;
  for (std::int16_t n = 0; n < s.Count(); ++n) {
    tbColorTable* t = s.CTable(n, &src);
    out += t ? static_cast<char>(Entry(t, 0).red) : '?';
  }
  return out;
}

struct Filled {
  SwitchProbe s;
  tbColorTable P = Named('P'), Q = Named('Q'), R = Named('R'), S = Named('S'), T = Named('T');
  Filled() {
    QvPal pal = RangePal(0, 255);
    EXPECT_EQ(1, s.RegArea(&pal));
  }
};

}  // namespace

TEST(QvASwitch, NewSwitchHasNoTables) {
  NoFailures guard;
  QvASwitch s;
  QvPal pal = RangePal(0, 255);
  ASSERT_EQ(1, s.RegArea(&pal));
  EXPECT_EQ(0, s.Count());
  EXPECT_EQ(-1, s.End());
  tbColorTable src = GreyTable();
  EXPECT_EQ(nullptr, s.CTable(0, &src));
}

TEST(QvASwitch, RegisterBeyondTheEndOfAnEmptySwitch) {
  NoFailures guard;
  Filled f;
  ASSERT_EQ(1, f.s.RegCTable(5, &f.T));
  EXPECT_EQ(1, f.s.Count());
  EXPECT_EQ(0, f.s.Top());
  EXPECT_EQ(0, f.s.End());
  EXPECT_EQ("T", Order(f.s));
}

TEST(QvASwitch, InsertionOrder) {
  NoFailures guard;
  Filled f;
  ASSERT_EQ(1, f.s.RegCTable(0, &f.P));
  ASSERT_EQ(1, f.s.RegCTable(1, &f.Q));
  EXPECT_EQ("PQ", Order(f.s));
  ASSERT_EQ(1, f.s.RegCTable(0, &f.R));
  EXPECT_EQ("RPQ", Order(f.s));
  ASSERT_EQ(1, f.s.RegCTable(-1, &f.S));
  EXPECT_EQ("RPQS", Order(f.s));
  ASSERT_EQ(1, f.s.RegCTable(4, &f.T));  // 4 equals the count: appended
  EXPECT_EQ("RPQST", Order(f.s));
  ASSERT_EQ(1, f.s.RegCTable(2, &f.T));
  EXPECT_EQ("RPTQST", Order(f.s));
  EXPECT_EQ(6, f.s.Count());
  EXPECT_EQ(5, f.s.End());
}

TEST(QvASwitch, DeletionOrder) {
  NoFailures guard;
  Filled f;
  ASSERT_EQ(1, f.s.RegCTable(0, &f.R));
  ASSERT_EQ(1, f.s.RegCTable(1, &f.P));
  ASSERT_EQ(1, f.s.RegCTable(2, &f.Q));
  ASSERT_EQ(1, f.s.RegCTable(3, &f.S));
  ASSERT_EQ(1, f.s.DelCTable(1));
  EXPECT_EQ("RQS", Order(f.s));
  EXPECT_EQ(2, f.s.End());
  EXPECT_EQ(0, f.s.DelCTable(3));
  EXPECT_EQ("RQS", Order(f.s));
  EXPECT_EQ(0, f.s.DelCTable(32767));
  ASSERT_EQ(1, f.s.DelCTable(2));
  EXPECT_EQ("RQ", Order(f.s));
  ASSERT_EQ(1, f.s.DelCTable(-1));
  EXPECT_EQ(0, f.s.Count());
  EXPECT_EQ(-1, f.s.End());
  // A negative position on an empty switch still succeeds; 0 does not.
  EXPECT_EQ(1, f.s.DelCTable(-5));
  EXPECT_EQ(0, f.s.DelCTable(0));
}

TEST(QvASwitch, DeletingTheOnlyTable) {
  NoFailures guard;
  Filled f;
  ASSERT_EQ(1, f.s.RegCTable(0, &f.P));
  ASSERT_EQ(1, f.s.DelCTable(0));
  EXPECT_EQ(0, f.s.Count());
  EXPECT_EQ(0, f.s.Top());
  EXPECT_EQ(-1, f.s.End());
  tbColorTable src = GreyTable();
  EXPECT_EQ(nullptr, f.s.CTable(0, &src));
}

TEST(QvASwitch, KeepsItsOwnCopies) {
  NoFailures guard;
  Filled f;
  tbColorTable t = Named('t');
  ASSERT_EQ(1, f.s.RegCTable(0, &t));
  tbRGBColor changed(1, 1, 1);
  t.SetCTTable(0, &changed);
  EXPECT_EQ("t", Order(f.s));
  // Copies keep the size of the original and its entries.
  tbColorTable small = Named('s');
  small.SetCTSize(9);
  ASSERT_EQ(1, f.s.RegCTable(0, &small));
  EXPECT_EQ(9, f.s.Table(0)->CTSize());
  EXPECT_EQ(255, f.s.Table(1)->CTSize());
  ASSERT_EQ(1, f.s.DelCTable(1));
  EXPECT_EQ(9, f.s.Table(0)->CTSize());
  EXPECT_EQ(tbRGBColor('s', 0, 0), Entry(f.s.Table(0), 9));
}

TEST(QvASwitch, AreaTakesTheTableOthersTheSource) {
  NoFailures guard;
  QvASwitch s;
  QvPal pal = RangePal(0, 15);
  ASSERT_EQ(1, s.RegArea(&pal));
  tbColorTable a = DistinctTable();
  tbColorTable b = Named('b');
  ASSERT_EQ(1, s.RegCTable(0, &a));
  ASSERT_EQ(1, s.RegCTable(1, &b));
  tbColorTable src = GreyTable();
  for (std::int16_t n = 0; n < 2; ++n) {
    tbColorTable* out = s.CTable(n, &src);
    ASSERT_NE(nullptr, out);
    tbColorTable& table = n == 0 ? a : b;
    for (int i = 0; i < 256; ++i) {
      EXPECT_EQ(i <= 15 ? Entry(table, i) : Entry(src, i), Entry(out, i)) << n << " " << i;
    }
  }
  EXPECT_EQ(nullptr, s.CTable(2, &src));
}

TEST(QvASwitch, SmallTableLeavesHigherIndicesToTheSource) {
  NoFailures guard;
  QvASwitch s;
  QvPal pal = RangePal(0, 15);
  ASSERT_EQ(1, s.RegArea(&pal));
  tbColorTable t = Named('t');
  t.SetCTSize(9);
  ASSERT_EQ(1, s.RegCTable(0, &t));
  tbColorTable src = GreyTable();
  tbColorTable* out = s.CTable(0, &src);
  ASSERT_NE(nullptr, out);
  for (int i = 0; i <= 9; ++i) EXPECT_EQ(tbRGBColor('t', 0, 0), Entry(out, i));
  for (int i = 10; i < 256; ++i) EXPECT_EQ(Entry(src, i), Entry(out, i));
}

TEST(QvASwitch, WritesOnlyBelowTheAreaCount) {
  NoFailures guard;
  QvASwitch s;
  QvPal pal = RangePal(0, 255);
  pal.SetFlagNum(20);
  ASSERT_EQ(1, s.RegArea(&pal));
  tbColorTable t = Named('t');
  ASSERT_EQ(1, s.RegCTable(0, &t));
  tbRGBColor marker(7, 7, 7);
  for (int i = 0; i < 256; ++i) s.SetColor(static_cast<std::int16_t>(i), &marker);
  tbColorTable src = GreyTable();
  tbColorTable* out = s.CTable(0, &src);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(tbRGBColor('t', 0, 0), Entry(out, i));
  for (int i = 20; i < 256; ++i) EXPECT_EQ(marker, Entry(out, i));
}

TEST(QvASwitch, FailedAllocationChangesNothing) {
  NoFailures guard;
  Filled f;
  ASSERT_EQ(1, f.s.RegCTable(0, &f.P));
  ASSERT_EQ(1, f.s.RegCTable(1, &f.Q));
  tbColorTable* before = f.s.Table(0);

  QvFailAllocation(1);
  EXPECT_EQ(0, f.s.RegCTable(0, &f.R));
  QvFailAllocation(0);
  EXPECT_EQ(before, f.s.Table(0));
  EXPECT_EQ("PQ", Order(f.s));
  EXPECT_EQ(2, f.s.Count());
  EXPECT_EQ(1, f.s.End());

  QvFailAllocation(1);
  EXPECT_EQ(0, f.s.DelCTable(0));
  QvFailAllocation(0);
  EXPECT_EQ(before, f.s.Table(0));
  EXPECT_EQ("PQ", Order(f.s));
  EXPECT_EQ(1, f.s.End());

  // Deleting everything needs no new array.
  QvFailAllocation(1);
  EXPECT_EQ(1, f.s.DelCTable(-1));
  QvFailAllocation(0);
  EXPECT_EQ(0, f.s.Count());
}

TEST(QvASwitch, NullTableIsRefused) {
  NoFailures guard;
  Filled f;
  EXPECT_EQ(0, f.s.RegCTable(0, nullptr));
  EXPECT_EQ(0, f.s.Count());
  EXPECT_EQ(-1, f.s.End());
}

TEST(QvASwitch, DupCopiesTheTablesInOrder) {
  NoFailures guard;
  Filled a;
  ASSERT_EQ(1, a.s.RegCTable(0, &a.R));
  ASSERT_EQ(1, a.s.RegCTable(1, &a.P));
  ASSERT_EQ(1, a.s.RegCTable(2, &a.Q));
  a.s.SetMode(2);
  a.s.SetSpeed(5);
  SwitchProbe b;
  tbColorTable old = Named('o');
  ASSERT_EQ(1, b.RegCTable(0, &old));
  a.s.Dup(&b);
  EXPECT_EQ(2, b.Mode());
  EXPECT_EQ(5, b.Speed());
  EXPECT_EQ(1, b.AreaFlag(255));
  EXPECT_EQ("RPQ", Order(b));
  EXPECT_EQ(2, b.End());
  EXPECT_NE(a.s.Table(0), b.Table(0));
  a.s.Dup(&a.s);  // copying into itself keeps everything
  EXPECT_EQ("RPQ", Order(a.s));
}
