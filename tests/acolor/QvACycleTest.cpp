#include "acolor/QvACycle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

class CycleProbe : public QvACycle {
 public:
  // (top, end, mode) of every range clock in list order; -1s for a range
  // without a clock.
  struct Range {
    std::int32_t top, end;
    int mode;
  };
  std::vector<Range> Ranges() {
    std::vector<Range> out;
    QvACycleInfo* prev = nullptr;
    for (QvACycleInfo* r = head; r; r = r->next) {
      EXPECT_EQ(prev, r->prev);
      prev = r;
      if (r->player) {
        out.push_back({r->player->Top(), r->player->End(), r->player->Mode()});
      } else {
        out.push_back({-1, -1, -1});
      }
    }
    return out;
  }
};

// The source index each output index 10 to 13 holds, written as letters
// W X Y Z for source indices 10 11 12 13.
std::string Quad(tbColorTable* out, tbColorTable& src) {
  std::string s;
  for (int i = 10; i <= 13; ++i) {
    char c = '?';
    for (int j = 10; j <= 13; ++j) {
      if (Entry(out, i) == Entry(src, j)) c = static_cast<char>('W' + (j - 10));
    }
    if (!s.empty()) s += ' ';
    s += c;
  }
  return s;
}

// Index i of the output holds source entry from[i] for each listed pair;
// every other index its own source entry.
void ExpectMoved(tbColorTable* out, tbColorTable& src, std::vector<std::pair<int, int>> moved) {
  ASSERT_NE(nullptr, out);
  std::vector<int> from(256);
  for (int i = 0; i < 256; ++i) from[i] = i;
  for (auto& m : moved) from[m.first] = m.second;
  for (int i = 0; i < 256; ++i) EXPECT_EQ(Entry(src, from[i]), Entry(out, i)) << "index " << i;
}

}  // namespace

TEST(QvACycle, NewCycleHasNoFrames) {
  NoFailures guard;
  CycleProbe c;
  EXPECT_EQ(0, c.Count());
  EXPECT_EQ(0, c.Top());
  EXPECT_EQ(-1, c.End());
  EXPECT_TRUE(c.Ranges().empty());
}

TEST(QvACycle, RegAreaGivesTheFullFrameCount) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal = RangePal(10, 13);
  ASSERT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ(32767, c.Count());
  EXPECT_EQ(0, c.Top());
  EXPECT_EQ(32766, c.End());
  ASSERT_EQ(1u, c.Ranges().size());
  EXPECT_EQ(10, c.Ranges()[0].top);
  EXPECT_EQ(13, c.Ranges()[0].end);
  tbColorTable src = DistinctTable();
  EXPECT_NE(nullptr, c.CTable(32766, &src));
  EXPECT_EQ(nullptr, c.CTable(32767, &src));
  EXPECT_EQ(nullptr, c.CTable(-1, &src));
}

TEST(QvACycle, RotatesFourColoursInEveryMode) {
  NoFailures guard;
  tbColorTable src = DistinctTable();
  QvPal pal = RangePal(10, 13);
  const std::vector<std::string> common = {"W X Y Z", "Z W X Y", "Y Z W X", "X Y Z W"};
  const std::vector<std::vector<std::string>> tails = {
      {"X Y Z W", "X Y Z W"},  // mode 0: stays on the last position
      {"Y Z W X", "Z W X Y"},  // mode 1: bounces back
      {"W X Y Z", "Z W X Y"},  // mode 2: wraps around
  };
  for (char mode = 0; mode <= 2; ++mode) {
    QvACycle c;
    c.SetMode(mode);
    ASSERT_EQ(1, c.RegArea(&pal));
    for (std::int16_t f = 0; f <= 5; ++f) {
      const std::string want = f < 4 ? common[f] : tails[mode][f - 4];
      tbColorTable* out = c.CTable(f, &src);
      ASSERT_NE(nullptr, out);
      EXPECT_EQ(want, Quad(out, src)) << "mode " << int(mode) << " frame " << f;
      // Everything outside the range is the source's.
      for (int i = 0; i < 256; ++i) {
        if (i < 10 || i > 13) {
          EXPECT_EQ(Entry(src, i), Entry(out, i));
        }
      }
    }
  }
}

TEST(QvACycle, ModeSetAfterRegAreaReachesTheRanges) {
  NoFailures guard;
  tbColorTable src = DistinctTable();
  QvPal pal = RangePal(10, 13);
  CycleProbe c;
  ASSERT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ("X Y Z W", Quad(c.CTable(5, &src), src));  // mode 0
  c.SetMode(1);
  EXPECT_EQ(1, c.Ranges()[0].mode);
  EXPECT_EQ("Z W X Y", Quad(c.CTable(5, &src), src));
  EXPECT_EQ("Y Z W X", Quad(c.CTable(4, &src), src));
  c.SetMode(2);
  EXPECT_EQ(2, c.Mode());
  EXPECT_EQ(1, c.IsForward());
  EXPECT_EQ(2, c.Ranges()[0].mode);
  EXPECT_EQ("W X Y Z", Quad(c.CTable(4, &src), src));
  // A large frame wraps with the range's period.
  EXPECT_EQ("X Y Z W", Quad(c.CTable(32763, &src), src));
}

TEST(QvACycle, EmptyAreaCopiesTheSource) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal;  // nothing flagged
  ASSERT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ(32767, c.Count());
  EXPECT_TRUE(c.Ranges().empty());
  tbColorTable src = DistinctTable();
  // Stale contents of the output are overwritten.
  tbRGBColor junk(9, 9, 9);
  for (int i = 0; i < 256; ++i) c.SetColor(static_cast<std::int16_t>(i), &junk);
  tbColorTable* out = c.CTable(7, &src);
  ASSERT_NE(nullptr, out);
  EXPECT_EQ(src, *out);
}

TEST(QvACycle, NullAreaIsAnEmptyArea) {
  NoFailures guard;
  CycleProbe c;
  ASSERT_EQ(1, c.RegArea(nullptr));
  EXPECT_EQ(0, c.Error());
  EXPECT_EQ(32767, c.Count());
  EXPECT_TRUE(c.Ranges().empty());
}

TEST(QvACycle, IsolatedIndicesStayInPlace) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal;
  pal.SetFlag(5, 1);
  pal.SetFlag(7, 1);
  pal.SetFlag(9, 1);
  ASSERT_EQ(1, c.RegArea(&pal));
  auto r = c.Ranges();
  ASSERT_EQ(3u, r.size());
  EXPECT_EQ(5, r[0].top);
  EXPECT_EQ(5, r[0].end);
  EXPECT_EQ(7, r[1].top);
  EXPECT_EQ(9, r[2].end);
  tbColorTable src = DistinctTable();
  for (std::int16_t f : {0, 1, 2, 17, 32766}) {
    tbColorTable* out = c.CTable(f, &src);
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(src, *out) << "frame " << f;
  }
}

TEST(QvACycle, RangeReachingTheLastIndexIsClosed) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal = RangePal(250, 255);
  ASSERT_EQ(1, c.RegArea(&pal));
  auto r = c.Ranges();
  ASSERT_EQ(1u, r.size());
  EXPECT_EQ(250, r[0].top);
  EXPECT_EQ(255, r[0].end);
  tbColorTable src = DistinctTable();
  ExpectMoved(c.CTable(1, &src), src,
              {{250, 255}, {251, 250}, {252, 251}, {253, 252}, {254, 253}, {255, 254}});
}

TEST(QvACycle, TwoRunsTurnIndependently) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal = RangePal(3, 5);
  pal.SetRange(7, 9, 1);
  c.SetMode(2);
  ASSERT_EQ(1, c.RegArea(&pal));
  auto r = c.Ranges();
  ASSERT_EQ(2u, r.size());
  EXPECT_EQ(3, r[0].top);
  EXPECT_EQ(5, r[0].end);
  EXPECT_EQ(7, r[1].top);
  EXPECT_EQ(9, r[1].end);
  EXPECT_EQ(2, r[0].mode);
  EXPECT_EQ(2, r[1].mode);
  tbColorTable src = DistinctTable();
  ExpectMoved(c.CTable(1, &src), src, {{3, 5}, {4, 3}, {5, 4}, {7, 9}, {8, 7}, {9, 8}});
  ExpectMoved(c.CTable(2, &src), src, {{3, 4}, {4, 5}, {5, 3}, {7, 8}, {8, 9}, {9, 7}});
}

TEST(QvACycle, ScanStopsAtTheAreaCount) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal = RangePal(10, 13);
  pal.SetFlagNum(12);  // indices 12 and 13 are not visited
  ASSERT_EQ(1, c.RegArea(&pal));
  auto r = c.Ranges();
  ASSERT_EQ(1u, r.size());
  EXPECT_EQ(10, r[0].top);
  EXPECT_EQ(11, r[0].end);
  tbColorTable src = DistinctTable();
  ExpectMoved(c.CTable(1, &src), src, {{10, 11}, {11, 10}});
}

TEST(QvACycle, RegAreaReplacesTheRanges) {
  NoFailures guard;
  CycleProbe c;
  QvPal a = RangePal(10, 13);
  ASSERT_EQ(1, c.RegArea(&a));
  c.SetMode(1);
  QvPal b = RangePal(20, 21);
  b.SetRange(30, 40, 1);
  ASSERT_EQ(1, c.RegArea(&b));
  auto r = c.Ranges();
  ASSERT_EQ(2u, r.size());
  EXPECT_EQ(20, r[0].top);
  EXPECT_EQ(30, r[1].top);
  EXPECT_EQ(40, r[1].end);
  EXPECT_EQ(1, r[0].mode);  // ranges take the current mode
  tbColorTable src = DistinctTable();
  tbColorTable* out = c.CTable(1, &src);
  ASSERT_NE(nullptr, out);
  for (int i = 10; i <= 13; ++i) EXPECT_EQ(Entry(src, i), Entry(out, i));
}

TEST(QvACycle, MissingRecordDropsItsRange) {
  NoFailures guard;
  CycleProbe c;
  ASSERT_EQ(1, c.RegArea(nullptr));  // area object exists from now on
  QvPal pal = RangePal(3, 5);
  pal.SetRange(7, 9, 1);
  // Attempts: record 1, clock 1, record 2, clock 2.
  QvFailAllocation(1);
  EXPECT_EQ(1, c.RegArea(&pal));
  QvFailAllocation(0);
  auto r = c.Ranges();
  ASSERT_EQ(1u, r.size());
  EXPECT_EQ(7, r[0].top);
  EXPECT_EQ(32767, c.Count());
  tbColorTable src = DistinctTable();
  ExpectMoved(c.CTable(1, &src), src, {{7, 9}, {8, 7}, {9, 8}});
}

TEST(QvACycle, RangeWithoutClockIsPassedOver) {
  NoFailures guard;
  CycleProbe c;
  ASSERT_EQ(1, c.RegArea(nullptr));
  QvPal pal = RangePal(3, 5);
  pal.SetRange(7, 9, 1);
  QvFailAllocation(2);
  EXPECT_EQ(1, c.RegArea(&pal));
  QvFailAllocation(0);
  auto r = c.Ranges();
  ASSERT_EQ(2u, r.size());
  EXPECT_EQ(-1, r[0].top);  // kept without a clock
  EXPECT_EQ(7, r[1].top);
  c.SetMode(2);  // passes over the record without a clock
  EXPECT_EQ(2, c.Ranges()[1].mode);
  tbColorTable src = DistinctTable();
  ExpectMoved(c.CTable(1, &src), src, {{7, 9}, {8, 7}, {9, 8}});
}

TEST(QvACycle, FailedAreaAllocationKeepsTheOldState) {
  NoFailures guard;
  CycleProbe c;
  QvPal pal = RangePal(3, 5);
  QvFailAllocation(1);
  EXPECT_EQ(0, c.RegArea(&pal));
  QvFailAllocation(0);
  EXPECT_EQ(0, c.Count());
  EXPECT_EQ(-1, c.End());
  EXPECT_EQ(16, c.Error());
  EXPECT_TRUE(c.Ranges().empty());
}

TEST(QvACycle, CurrentFrameComesFromTheClock) {
  NoFailures guard;
  QvACycle c;
  QvPal pal = RangePal(10, 13);
  c.SetMode(2);
  ASSERT_EQ(1, c.RegArea(&pal));
  tbColorTable src = DistinctTable();
  c.SetCur(5);
  EXPECT_EQ("Z W X Y", Quad(c.CTable(&src), src));
  // The animation's own clock wraps after frame 32766.
  EXPECT_EQ(0, c.SetCur(32767));
  EXPECT_EQ("W X Y Z", Quad(c.CTable(&src), src));
}

TEST(QvACycle, DupCopiesModeSpeedAndArea) {
  NoFailures guard;
  CycleProbe a;
  QvPal pal = RangePal(10, 13);
  pal.SetRange(20, 22, 1);
  a.SetMode(1);
  a.SetSpeed(12);
  ASSERT_EQ(1, a.RegArea(&pal));
  a.SetCur(40);

  CycleProbe b;
  QvPal other = RangePal(100, 110);
  ASSERT_EQ(1, b.RegArea(&other));
  a.Dup(&b);
  EXPECT_EQ(1, b.Mode());
  EXPECT_EQ(12, b.Speed());
  EXPECT_EQ(0, b.Cur());  // position is not copied
  EXPECT_NE(a.Area(), b.Area());
  EXPECT_EQ(1, b.AreaFlag(21));
  EXPECT_EQ(0, b.AreaFlag(100));
  auto r = b.Ranges();
  ASSERT_EQ(2u, r.size());
  EXPECT_EQ(20, r[1].top);
  EXPECT_EQ(1, r[1].mode);
  tbColorTable src = DistinctTable();
  tbColorTable fromA = *a.CTable(5, &src);
  EXPECT_EQ(fromA, *b.CTable(5, &src));

  // A source without an area gives an empty area; null and self are ignored.
  QvACycle none;
  none.Dup(&b);
  EXPECT_EQ(0, b.AreaFlag(21));
  EXPECT_TRUE(b.Ranges().empty());
  none.Dup(nullptr);
  a.Dup(&a);
  EXPECT_EQ(2u, a.Ranges().size());
}
