#include "acolor/QvACycle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;
using S = std::vector<std::string>;

namespace {

struct Cycle : QvACycle {
  // The range clocks in list order as "top-end:mode", "-" for a range
  // without a clock.
  std::string Ranges() {
    std::string out;
    for (QvACycleInfo* r = head; r; r = r->next) {
      EXPECT_EQ(r->next ? r->next->prev : r, r);
      QvMPlayer* p = r->player;
      out += (out.empty() ? "" : " ") +
             (p ? std::to_string(p->Top()) + "-" + std::to_string(p->End()) + ":" +
                      std::to_string(p->Mode())
                : std::string("-"));
    }
    return out;
  }
  // Frame n of the distinct source as "i=j" for each index i that holds
  // source entry j != i.
  std::string Moved(std::int32_t n) {
    const tbColorTable src = DistinctTable();
    tbColorTable copy = src;
    tbColorTable* out = n < 0 ? CTable(&copy) : CTable(static_cast<std::int16_t>(n), &copy);
    if (!out) return "null";
    std::string s;
    for (int i = 0; i < 256; ++i) {
      const int j = Entry(out, i).red;
      if (!(Entry(out, i) == Entry(copy, j))) return "not a source colour";
      if (j != i) s += (s.empty() ? "" : " ") + std::to_string(i) + "=" + std::to_string(j);
    }
    return s;
  }
};

std::string Quad(const std::string& moved) {  // 10..13 holding W X Y Z, as letters
  std::string letters = "WXYZ";
  for (std::size_t p = 0; (p = moved.find('=', p)) != std::string::npos; ++p) {
    letters[std::stoi(moved.substr(p - 2, 2)) - 10] =
        "WXYZ"[std::stoi(moved.substr(p + 1, 2)) - 10];
  }
  return letters;
}

}  // namespace

TEST(QvACycle, RotatesTheWorkedRangeInEveryMode) {
  NoFailures guard;
  QvPal pal = RangePal(10, 13);
  const char* want[3] = {"WXYZ ZWXY YZWX XYZW XYZW XYZW",   // play once: stays at the end
                         "WXYZ ZWXY YZWX XYZW YZWX ZWXY",   // bounce
                         "WXYZ ZWXY YZWX XYZW WXYZ ZWXY"};  // loop
  for (char mode = 0; mode <= 2; ++mode) {
    Cycle c;
    c.SetMode(mode);
    ASSERT_EQ(1, c.RegArea(&pal));
    std::string got;
    for (int f = 0; f <= 5; ++f) got += (f ? " " : "") + Quad(c.Moved(f));
    EXPECT_EQ(got, want[int(mode)]) << int(mode);
  }
  Cycle c;  // a mode set afterwards reaches the range clocks
  EXPECT_EQ((V{c.Count(), c.Top(), c.End()}), (V{0, 0, -1}));
  EXPECT_EQ(c.Moved(0), "null");
  ASSERT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ((V{c.Count(), c.Top(), c.End()}), (V{32767, 0, 32766}));
  EXPECT_EQ((V{c.Moved(32766) != "null", c.Moved(32767) == "null", c.Moved(-1) != "null"}),
            (V{1, 1, 1}));
  EXPECT_EQ(Quad(c.Moved(5)), "XYZW");
  c.SetMode(1);
  EXPECT_EQ(c.Ranges(), "10-13:1");
  EXPECT_EQ((S{Quad(c.Moved(5)), Quad(c.Moved(4))}), (S{"ZWXY", "YZWX"}));
  c.SetMode(2);
  EXPECT_EQ((V{c.Mode(), c.IsForward()}), (V{2, 1}));
  EXPECT_EQ((S{Quad(c.Moved(4)), Quad(c.Moved(32763))}), (S{"WXYZ", "XYZW"}));  // period 4
  c.SetCur(5);  // the current frame comes from the animation's clock
  EXPECT_EQ(Quad(c.Moved(-1)), "ZWXY");
  EXPECT_EQ(c.SetCur(32767), 0);  // which wraps after 32766
  EXPECT_EQ(Quad(c.Moved(-1)), "WXYZ");
}

// An area (flagged runs, a FlagNum below 256 or 0 for 256), the mode, then
// the ranges made and the moves of frames 1 and 2.
// clang-format off
struct Shape { V runs; int flagNum, mode; const char *ranges, *frame1, *frame2; };

const Shape kShapes[] = {
    {{}, 0, 0, "", "", ""},                                       // nothing flagged: a plain copy
    {{5, 5, 7, 7, 9, 9}, 0, 0, "5-5:0 7-7:0 9-9:0", "", ""},      // isolated indices stay
    {{250, 255}, 0, 0, "250-255:0", "250=255 251=250 252=251 253=252 254=253 255=254",
     "250=254 251=255 252=250 253=251 254=252 255=253"},
    {{3, 5, 7, 9}, 0, 2, "3-5:2 7-9:2", "3=5 4=3 5=4 7=9 8=7 9=8", "3=4 4=5 5=3 7=8 8=9 9=7"},
    {{10, 13}, 12, 0, "10-11:0", "10=11 11=10", "10=11 11=10"},             // the scan stops at FlagNum
};
// clang-format on

TEST(QvACycle, RangesFollowTheArea) {
  NoFailures guard;
  for (const Shape& s : kShapes) {
    SCOPED_TRACE(s.ranges);
    QvPal pal;
    for (std::size_t i = 0; i < s.runs.size(); i += 2)
      pal.SetRange(B(s.runs[i]), B(s.runs[i + 1]), 1);
    if (s.flagNum) pal.SetFlagNum(static_cast<std::uint32_t>(s.flagNum));
    Cycle c;
    c.SetMode(static_cast<char>(s.mode));
    ASSERT_EQ(1, c.RegArea(&pal));
    Mark(c, tbRGBColor(9, 9, 9));  // stale output is overwritten
    EXPECT_EQ((V{c.Count(), c.Error()}), (V{32767, 0}));
    EXPECT_EQ(c.Ranges(), s.ranges);
    EXPECT_EQ(c.Moved(1), s.frame1);
    EXPECT_EQ(c.Moved(2), s.frame2);
  }
  Cycle c;  // a null area is an empty one; a new area replaces the ranges
  ASSERT_EQ(1, c.RegArea(nullptr));
  EXPECT_EQ((V{c.Count(), c.Error()}), (V{32767, 0}));
  EXPECT_EQ(c.Ranges(), "");
  c.SetMode(1);
  QvPal b = RangePal(20, 21);
  b.SetRange(30, 40, 1);
  ASSERT_EQ(1, c.RegArea(&b));
  EXPECT_EQ(c.Ranges(), "20-21:1 30-40:1");
}

TEST(QvACycle, AllocationFailures) {
  NoFailures guard;
  QvPal pal = RangePal(3, 5);
  pal.SetRange(7, 9, 1);
  Cycle c;
  QvFailAllocation(1);  // the area object: nothing changes
  EXPECT_EQ(0, c.RegArea(&pal));
  EXPECT_EQ((V{c.Count(), c.End(), c.Error()}), (V{0, -1, 16}));
  EXPECT_EQ(c.Ranges(), "");
  ASSERT_EQ(1, c.RegArea(nullptr));  // the area object exists from now on
  // Attempts: record 1, clock 1, record 2, clock 2. A missing record drops its
  // range; a range without a clock is kept and passed over.
  QvFailAllocation(1);
  EXPECT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ(c.Ranges(), "7-9:0");
  EXPECT_EQ(c.Moved(1), "7=9 8=7 9=8");
  QvFailAllocation(2);
  EXPECT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ(c.Ranges(), "- 7-9:0");
  c.SetMode(2);
  EXPECT_EQ(c.Ranges(), "- 7-9:2");
  EXPECT_EQ(c.Moved(1), "7=9 8=7 9=8");
  EXPECT_EQ(c.Count(), 32767);
}
