#include "acolor/QvACycle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

struct Cycle : QvACycle {
  // The range clocks in list order as "top-end:mode", "-" for one without a clock.
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
  // Frame n (the clock's for n < 0) of the distinct source as "i=j" for each
  // index i that holds source entry j != i.
  std::string Moved(std::int32_t n) {
    tbColorTable src = DistinctTable();
    tbColorTable* out = n < 0 ? CTable(&src) : CTable(static_cast<std::int16_t>(n), &src);
    if (!out) return "null";
    std::string s;
    for (int i = 0; i < 256; ++i) {
      const int j = Entry(out, i).red;
      if (!(Entry(out, i) == Entry(src, j))) return "not a source colour";
      if (j != i) s += (s.empty() ? "" : " ") + std::to_string(i) + "=" + std::to_string(j);
    }
    return s;
  }
  // Indices 10 to 13, holding W X Y Z at frame 0, as letters.
  std::string Quad(std::int32_t n) {
    tbColorTable src = DistinctTable();
    tbColorTable* out = n < 0 ? CTable(&src) : CTable(static_cast<std::int16_t>(n), &src);
    std::string s;
    for (int i = 10; i <= 13; ++i) s += out ? static_cast<char>('W' + Entry(out, i).red - 10) : '?';
    return s;
  }
};

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
    for (int f = 0; f <= 5; ++f) got += (f ? " " : "") + c.Quad(f);
    EXPECT_EQ(got, want[int(mode)]) << int(mode);
  }
  Cycle c;  // no frames before an area; a mode set afterwards reaches the range clocks
  EXPECT_EQ((V{c.Count(), c.Top(), c.End(), c.Moved(0) == "null"}), (V{0, 0, -1, 1}));
  ASSERT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ((V{c.Count(), c.Top(), c.End(), c.Quad(32766) != "????", c.Quad(32767) == "????",
               c.Quad(-1) == "WXYZ"}),
            (V{32767, 0, 32766, 1, 1, 1}));
  EXPECT_EQ(c.Quad(5), "XYZW");
  c.SetMode(QvMPlayer::kPlayBounce);
  EXPECT_EQ(c.Ranges() + " " + c.Quad(5) + " " + c.Quad(4), "10-13:1 ZWXY YZWX");
  c.SetMode(QvMPlayer::kPlayLoop);
  EXPECT_EQ((V{c.Mode(), c.IsForward()}), (V{2, 1}));
  EXPECT_EQ(c.Quad(4) + " " + c.Quad(32763), "WXYZ XYZW");  // period 4
  c.SetCur(5);  // the current frame comes from the animation's clock, which wraps after 32766
  EXPECT_EQ(c.Quad(-1), "ZWXY");
  EXPECT_EQ(c.SetCur(32767), 0);
  EXPECT_EQ(c.Quad(-1), "WXYZ");
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
    {{10, 13}, 12, 0, "10-11:0", "10=11 11=10", "10=11 11=10"},  // the scan stops at FlagNum
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
    EXPECT_EQ(c.Ranges() + "|" + c.Moved(1) + "|" + c.Moved(2),
              std::string(s.ranges) + "|" + s.frame1 + "|" + s.frame2);
  }
  Cycle c;  // a null area is an empty one; a new area replaces the ranges
  ASSERT_EQ(1, c.RegArea(nullptr));
  EXPECT_EQ((V{c.Count(), c.Error(), c.Ranges() == ""}), (V{32767, 0, 1}));
  c.SetMode(QvMPlayer::kPlayBounce);
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
  ASSERT_EQ(1, c.RegArea(nullptr));  // the area object exists from now on
  // Attempts: record 1, clock 1, record 2, clock 2. A missing record drops its
  // range; a range without a clock is kept and passed over.
  QvFailAllocation(1);
  EXPECT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ(c.Ranges() + "|" + c.Moved(1), "7-9:0|7=9 8=7 9=8");
  QvFailAllocation(2);
  EXPECT_EQ(1, c.RegArea(&pal));
  EXPECT_EQ(c.Ranges(), "- 7-9:0");
  c.SetMode(QvMPlayer::kPlayLoop);
  EXPECT_EQ(c.Ranges() + "|" + c.Moved(1), "- 7-9:2|7=9 8=7 9=8");
  EXPECT_EQ(c.Count(), 32767);
}
