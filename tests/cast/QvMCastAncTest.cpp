// Anchor motion paths: registration, folding, the anchor at a moment,
// re-sampling, the nearest anchor and in-betweening through the hook.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"

using namespace casttest;

namespace {

std::vector<QvMCastAnc> Path(int n) {
  std::vector<QvMCastAnc> path(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    path[static_cast<size_t>(i)].point = tbPoint(10 * i, 100 + i);
    path[static_cast<size_t>(i)].flag = static_cast<char>(10 + i);
  }
  return path;
}

// A member 0 with a path of n anchors (point (10 i, 100 + i), flag 10 + i).
void AddPath(CastProbe& cast, int n, char type = 0) {
  std::vector<QvMCastAnc> path = Path(n);
  const std::int16_t expected = cast.GetNewID();
  ASSERT_EQ(cast.RegAnc(S(-1), path.data(), S(n), type, nullptr), expected);
}

// A store whose hook interpolates linearly between the keys and records what
// it was given.
class LinearCast : public CastProbe {
 public:
  using QvMCast::InbetweenAnc;
  void InbetweenAnc(tbPoint* keys, std::int16_t* keyIndex, std::int16_t keyCount, tbPoint* out,
                    std::int16_t outCount, char mode) override {
    ++calls;
    gotIndex.assign(keyIndex, keyIndex + keyCount);
    gotKeys.assign(keys, keys + keyCount);
    gotOutCount = outCount;
    gotMode = mode;
    const int lo = keyIndex[0];
    for (int k = 0; k + 1 < keyCount; ++k) {
      const int a = keyIndex[k], b = keyIndex[k + 1];
      for (int j = a + 1; j < b; ++j) {
        out[j - lo].x = keys[k].x + (keys[k + 1].x - keys[k].x) * (j - a) / (b - a);
        out[j - lo].y = keys[k].y + (keys[k + 1].y - keys[k].y) * (j - a) / (b - a);
      }
    }
  }
  int calls = 0;
  std::vector<std::int16_t> gotIndex;
  std::vector<tbPoint> gotKeys;
  std::int16_t gotOutCount = 0;
  char gotMode = 0;
};

// Member 0 sampled one anchor per unit over 0..6, span 2..6, anchor 4 a key.
void SetUpSpan(CastProbe& cast) {
  cast.New(nullptr);
  cast.SetStartEnd(S(0), 0, 6);
  std::vector<QvMCastAnc> path(7);
  for (int i = 0; i < 7; ++i) path[static_cast<size_t>(i)].point = tbPoint(999, 999);
  path[2].point = tbPoint(20, 0);
  path[4].point = tbPoint(60, 40);
  path[4].flag = 1;
  path[6].point = tbPoint(100, 0);
  cast.RegAnc(S(0), path.data(), S(7), 1, nullptr);
  cast.SetAncStep(S(0), 1.0);
  cast.SetAncSelectArea(S(0), 6, 2);
}

}  // namespace

TEST(QvMCastAnc, FreshMemberHasNoPath) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  std::int16_t n = 0;
  double step = 0;
  EXPECT_EQ(cast.GetAncNum(S(0), &n), 1);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.GetAncStep(S(0), &step), 1);
  EXPECT_EQ(step, 5.0);
  EXPECT_EQ(cast.Rec(S(0))->ancType, 3);
  tbPoint p;
  char f = 0;
  EXPECT_EQ(cast.GetAnc(S(0), S(0), &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(0), -1, &p, &f), 0);
  EXPECT_EQ(cast.SetAnc(S(0), S(0), tbPoint(1, 1), 0), 0);
  EXPECT_EQ(cast.OffsetAnc(S(0), S(1), S(1)), 0);
  EXPECT_EQ(cast.ResetAnc(S(0)), 0);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);
}

TEST(QvMCastAnc, RegAncCopiesAndResetsTheSpan) {
  NoFailures guard;
  CastProbe cast;
  std::vector<QvMCastAnc> path = Path(4);
  cast.New(nullptr);
  cast.SetAncSelectArea(S(0), 1, 2);
  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(4), 0, Txt("p")), 0);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_NE(r->anc, path.data());
  EXPECT_EQ(r->ancLast, 3);
  EXPECT_EQ(r->ancType, 3);  // type 0 keeps the type
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(r->ancSelEnd, -1);
  EXPECT_EQ(cast.IsAnc(S(0)), 1);
  EXPECT_EQ(NameOf(cast, S(0)), "p");
  tbPoint p;
  char f = 0;
  EXPECT_EQ(cast.GetAnc(S(0), S(3), &p, &f), 1);
  EXPECT_EQ(p, tbPoint(30, 103));
  EXPECT_EQ(f, 13);
  EXPECT_EQ(cast.GetAnc(S(0), S(4), &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(0), S(-1), &p, &f), 0);

  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(2), 2, nullptr), 0);
  EXPECT_EQ(r->ancType, 2);
  EXPECT_EQ(r->ancLast, 1);
  EXPECT_EQ(cast.RegAnc(S(-1), path.data(), S(2), 1, nullptr), 1);
  EXPECT_EQ(cast.RegAnc(S(7), path.data(), S(2), 1, nullptr), -1);
  // The member's own path may be registered again.
  EXPECT_EQ(cast.RegAnc(S(0), r->anc, S(2), 0, nullptr), 0);
  EXPECT_EQ(cast.GetAnc(S(0), S(1), &p, &f), 1);
  EXPECT_EQ(p, tbPoint(10, 101));
}

TEST(QvMCastAnc, CountsBelowOneAndFailuresGiveNoPath) {
  NoFailures guard;
  CastProbe cast;
  std::vector<QvMCastAnc> path = Path(3);
  cast.New(nullptr);
  cast.RegAnc(S(0), path.data(), S(3), 0, nullptr);
  cast.SetAncOffset(S(0), S(2));
  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(0), 0, nullptr), 0);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->ancLast, 0);
  // The offset stays.
  EXPECT_EQ(cast.Rec(S(0))->ancOffset, 2);
  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(-3), 0, nullptr), 0);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.RegAnc(S(0), nullptr, S(3), 0, nullptr), 0);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(3), 0, nullptr), 0);
  QvFailAllocation(0);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  // With no path every lookup fails and folding stays in bounds.
  std::int16_t off = 9;
  EXPECT_EQ(cast.SetAncOffset(S(0), S(-7)), 1);
  EXPECT_EQ(cast.GetAncOffset(S(0), &off), 1);
  EXPECT_EQ(off, 0);
}

TEST(QvMCastAnc, FoldingOfTheWorkedExample) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10);
  struct Case {
    char type;
    std::int16_t in;
    std::int16_t out;
    char inside;
  };
  const Case cases[] = {{1, 12, 9, 0}, {2, 12, 6, 0}, {3, 12, 2, 0}, {1, -3, 0, 0}, {2, -3, 3, 0},
                        {3, -3, 7, 0}, {1, 4, 4, 1},  {2, 9, 9, 1},  {3, 0, 0, 1},  {2, 19, 1, 0},
                        {2, 18, 0, 0}, {3, 10, 0, 0}, {0, 5, 0, 1},  {7, 12, 0, 1}, {-1, 3, 0, 1}};
  for (const Case& c : cases) {
    cast.SetAncType(S(0), c.type);
    std::int16_t k = c.in;
    EXPECT_EQ(cast.Fold(S(0), &k), c.inside) << int(c.type) << " " << c.in;
    EXPECT_EQ(k, c.out) << int(c.type) << " " << c.in;
  }
}

TEST(QvMCastAnc, FoldingOfExtremeIndicesEnds) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10);
  AddPath(cast, 1);
  AddPath(cast, 2);
  for (std::int16_t id = 0; id < 3; ++id) {
    const std::int16_t last = cast.Rec(id)->ancLast;
    for (char type = 1; type <= 3; ++type) {
      cast.SetAncType(id, type);
      for (int in : {-32768, -32767, -1, 32767, 32766, 1000}) {
        std::int16_t k = S(in);
        cast.Fold(id, &k);
        EXPECT_GE(k, 0);
        EXPECT_LE(k, last);
      }
    }
  }
  // Reflecting -32768 on a path of 10 is the same as reflecting 32768.
  cast.SetAncType(S(0), 2);
  std::int16_t k = S(-32768);
  cast.Fold(S(0), &k);
  EXPECT_EQ(k, 32768 % 18 > 9 ? 18 - 32768 % 18 : 32768 % 18);
  // A single anchor folds everything onto itself, reported as inside.
  cast.SetAncType(S(1), 2);
  k = S(5);
  EXPECT_EQ(cast.Fold(S(1), &k), 1);
  EXPECT_EQ(k, 0);
}

TEST(QvMCastAnc, OffsetByIndexWraps) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10);
  std::int16_t off = 0;
  cast.SetAncSelectArea(S(0), 1, 2);
  EXPECT_EQ(cast.SetAncOffset(S(0), S(-1)), 1);
  EXPECT_EQ(cast.GetAncOffset(S(0), &off), 1);
  EXPECT_EQ(off, 9);
  EXPECT_EQ(cast.Rec(S(0))->ancSelStart, -1);
  EXPECT_EQ(cast.SetAncOffset(S(0), S(23)), 1);
  EXPECT_EQ(cast.GetAncOffset(S(0), &off), 1);
  EXPECT_EQ(off, 3);
  EXPECT_EQ(cast.SetAncOffset(S(0), S(-32768)), 1);
  EXPECT_EQ(cast.GetAncOffset(S(0), &off), 1);
  EXPECT_EQ(off, 2);  // -32768 + 3277 * 10
  EXPECT_EQ(cast.SetAncOffset(S(4), S(1)), 0);
  EXPECT_EQ(cast.GetAncOffset(S(4), &off), 0);
}

TEST(QvMCastAnc, OffsetByPointPicksTheNearestAnchor) {
  NoFailures guard;
  CastProbe cast;
  std::vector<QvMCastAnc> path(4);
  path[0].point = tbPoint(0, 0);
  path[1].point = tbPoint(10, 0);
  path[2].point = tbPoint(20, 0);
  path[3].point = tbPoint(10, 20);
  cast.RegAnc(S(-1), path.data(), S(4), 0, nullptr);
  tbPoint p(11, 2);
  std::int16_t off = 0;
  cast.SetAncSelectArea(S(0), 0, 1);
  EXPECT_EQ(cast.SetAncOffset(S(0), &p), 1);
  EXPECT_EQ(cast.GetAncOffset(S(0), &off), 1);
  EXPECT_EQ(off, 1);
  EXPECT_EQ(cast.Rec(S(0))->ancSelEnd, -1);
  // Equal distances keep the lower index.
  p = tbPoint(15, 0);
  cast.SetAncOffset(S(0), &p);
  cast.GetAncOffset(S(0), &off);
  EXPECT_EQ(off, 1);
  p = tbPoint(10, 15);
  cast.SetAncOffset(S(0), &p);
  cast.GetAncOffset(S(0), &off);
  EXPECT_EQ(off, 3);
  EXPECT_EQ(cast.SetAncOffset(S(0), static_cast<tbPoint*>(nullptr)), 0);

  cast.New(nullptr);
  cast.SetAncOffset(S(1), S(0));
  p = tbPoint(5, 5);
  EXPECT_EQ(cast.SetAncOffset(S(1), &p), 1);
  EXPECT_EQ(cast.GetAncOffset(S(1), &off), 1);
  EXPECT_EQ(off, 0);
}

TEST(QvMCastAnc, StepAndCount) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10);
  double v = 0;
  cast.SetAncSelectArea(S(0), 0, 3);
  EXPECT_EQ(cast.SetAncCount(S(0), 20.0), 1);
  EXPECT_EQ(cast.GetAncStep(S(0), &v), 1);
  EXPECT_DOUBLE_EQ(v, 0.5);
  EXPECT_EQ(cast.Rec(S(0))->ancSelStart, -1);
  EXPECT_EQ(cast.GetAncCount(S(0), S(1), &v), 1);
  EXPECT_DOUBLE_EQ(v, 20.0);
  EXPECT_EQ(cast.GetAncCount(S(0), S(3), &v), 1);
  EXPECT_DOUBLE_EQ(v, 60.0);
  cast.SetAncSelectArea(S(0), 0, 3);
  EXPECT_EQ(cast.SetAncStep(S(0), 2.0), 1);
  EXPECT_EQ(cast.Rec(S(0))->ancSelStart, -1);
  EXPECT_EQ(cast.GetAncStep(S(0), &v), 1);
  EXPECT_EQ(v, 2.0);
  EXPECT_EQ(cast.SetAncCount(S(3), 1.0), 0);
  EXPECT_EQ(cast.GetAncCount(S(3), S(1), &v), 0);
}

TEST(QvMCastAnc, SelectSpanIsStoredAscending) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  std::int32_t a = 0, b = 0;
  EXPECT_EQ(cast.SetAncSelectArea(S(0), 9, 3), 1);
  EXPECT_EQ(cast.GetAncSelectArea(S(0), &a, &b), 1);
  EXPECT_EQ(a, 3);
  EXPECT_EQ(b, 9);
  EXPECT_EQ(cast.SetAncSelectArea(S(2), 1, 2), 0);
  EXPECT_EQ(cast.GetAncSelectArea(S(2), &a, &b), 0);
}

TEST(QvMCastAnc, AnchorAtAMoment) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10, 1);
  cast.SetStartEnd(S(0), 100, 120);
  cast.SetAncStep(S(0), 0.5);
  cast.SetAncOffset(S(0), S(2));
  tbPoint p;
  char f = 0;
  EXPECT_EQ(cast.GetAnc(S(0), 107, &p, &f), 1);
  EXPECT_EQ(p, tbPoint(50, 105));
  EXPECT_EQ(f, 15);
  EXPECT_EQ(cast.GetAnc(S(0), 120, &p, &f), 1);
  EXPECT_EQ(p, tbPoint(90, 109));  // 10 + 2 clamped to 9
  EXPECT_EQ(cast.GetAnc(S(0), 121, &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(0), 99, &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(5), 107, &p, &f), 0);
}

TEST(QvMCastAnc, ExtremeStepsOffsetsAndTimesStayInsideThePath) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 7);
  cast.SetStartEnd(S(0), -2147483647 - 1, 2147483647);
  const double steps[] = {1e12,
                          -1e12,
                          -3.7,
                          0.0,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN(),
                          32767.0};
  const std::int32_t times[] = {-2147483647 - 1, -1, 0, 12345, 2147483647};
  for (char type : {0, 1, 2, 3}) {
    cast.SetAncType(S(0), type);
    for (double step : steps) {
      cast.SetAncStep(S(0), step);
      cast.Rec(S(0))->ancOffset = S(32767);
      for (std::int32_t t : times) {
        tbPoint p(-1, -1);
        char f = 0;
        ASSERT_EQ(cast.GetAnc(S(0), t, &p, &f), 1);
        EXPECT_EQ(p.x % 10, 0);
        EXPECT_GE(p.x, 0);
        EXPECT_LE(p.x, 60);
      }
    }
  }
}

TEST(QvMCastAnc, SetAndOffsetAnchors) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 3);
  EXPECT_EQ(cast.SetAnc(S(0), S(1), tbPoint(32767, -32768), 1), 1);
  EXPECT_EQ(cast.SetAnc(S(0), S(3), tbPoint(0, 0), 1), 0);
  EXPECT_EQ(cast.SetAnc(S(0), S(-1), tbPoint(0, 0), 1), 0);
  EXPECT_EQ(cast.OffsetAnc(S(0), S(1), S(-1)), 1);
  tbPoint p;
  char f = 0;
  cast.GetAnc(S(0), S(1), &p, &f);
  EXPECT_EQ(p, tbPoint(-32768, 32767));  // 16-bit sums
  EXPECT_EQ(f, 1);
  cast.GetAnc(S(0), S(2), &p, &f);
  EXPECT_EQ(p, tbPoint(21, 101));
  EXPECT_EQ(cast.OffsetAnc(S(3), S(1), S(1)), 0);
}

TEST(QvMCastAnc, ResampleSixAnchorsIntoFive) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 6, 1);
  cast.SetStartEnd(S(0), 0, 4);
  cast.SetAncStep(S(0), 2.0);
  cast.SetAncOffset(S(0), S(0));
  EXPECT_EQ(cast.ResetAnc(S(0)), 1);
  QvMCastInfo* r = cast.Rec(S(0));
  ASSERT_EQ(r->ancLast, 4);
  const int from[] = {0, 2, 4, 5, 5};
  const char flags[] = {10, 12, 14, 0, 0};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(r->anc[i].point, tbPoint(10 * from[i], 100 + from[i])) << i;
    EXPECT_EQ(r->anc[i].flag, flags[i]) << i;
  }
  EXPECT_EQ(r->ancStep, 1.0);
  EXPECT_EQ(r->ancOffset, 0);
}

TEST(QvMCastAnc, ResampleKeepsTheMotion) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10, 3);
  cast.SetStartEnd(S(0), 50, 61);
  cast.SetAncStep(S(0), 1.5);
  cast.SetAncOffset(S(0), S(4));
  std::vector<tbPoint> before;
  for (int t = 50; t <= 61; ++t) {
    tbPoint p;
    char f;
    cast.GetAnc(S(0), t, &p, &f);
    before.push_back(p);
  }
  ASSERT_EQ(cast.ResetAnc(S(0)), 1);
  std::int16_t n = 0;
  cast.GetAncNum(S(0), &n);
  EXPECT_EQ(n, 12);
  for (int t = 50; t <= 61; ++t) {
    tbPoint p;
    char f;
    cast.GetAnc(S(0), t, &p, &f);
    EXPECT_EQ(p, before[static_cast<size_t>(t - 50)]) << t;
  }
}

TEST(QvMCastAnc, ResampleOfAnEmptyRangeOrFailedAllocationDropsThePath) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 4);
  cast.SetStartEnd(S(0), 10, 5);
  cast.SetAncStep(S(0), 3.0);
  EXPECT_EQ(cast.ResetAnc(S(0)), 1);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->ancStep, 1.0);

  AddPath(cast, 4);
  cast.SetStartEnd(S(1), 0, 3);
  QvFailAllocation(1);
  EXPECT_EQ(cast.ResetAnc(S(1)), 1);
  QvFailAllocation(0);
  EXPECT_EQ(cast.IsAnc(S(1)), 0);
  // In-betweening then has nothing to work on.
  cast.SetAncSelectArea(S(1), 0, 0);
  EXPECT_EQ(cast.InbetweenAnc(S(1), 0), 0);
}

TEST(QvMCastAnc, EmptyResamplesThePathFirst) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 4);
  cast.SetStartEnd(S(0), 0, 3);
  cast.SetAncStep(S(0), 2.0);
  cast.SetAncOffset(S(0), S(1));
  cast.Empty(S(0));
  EXPECT_EQ(cast.Rec(S(0))->ancStep, 1.0);
  EXPECT_EQ(cast.Rec(S(0))->ancOffset, 0);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  // Without a path the step and offset stay.
  cast.SetAncStep(S(0), 2.0);
  cast.SetAncOffset(S(0), S(0));
  cast.Empty(S(0));
  EXPECT_EQ(cast.Rec(S(0))->ancStep, 2.0);
}

TEST(QvMCastAnc, DelAncKeepsTheOffsetAndTrimsFlags) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 4);
  cast.SetAncOffset(S(0), S(2));
  cast.SetActFlag(S(0), 0xFFFFFFFFu);
  cast.SetShowFlag(S(0), 0xFFFFFFFFu);
  EXPECT_EQ(cast.DelAnc(S(0)), 1);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->ancOffset, 2);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0u);
  EXPECT_EQ(cast.Rec(S(0))->showFlag, 0u);
  EXPECT_EQ(cast.DelAnc(S(6)), 0);
  EXPECT_EQ(cast.SetAncType(S(6), 1), 0);
}

TEST(QvMCastAnc, InbetweeningThroughTheHook) {
  NoFailures guard;
  LinearCast cast;
  SetUpSpan(cast);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 42), 1);
  EXPECT_EQ(cast.calls, 1);
  EXPECT_EQ(cast.gotIndex, (std::vector<std::int16_t>{2, 4, 6}));
  EXPECT_EQ(cast.gotKeys, (std::vector<tbPoint>{{20, 0}, {60, 40}, {100, 0}}));
  EXPECT_EQ(cast.gotOutCount, 5);
  EXPECT_EQ(cast.gotMode, 42);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(r->anc[3].point, tbPoint(40, 20));
  EXPECT_EQ(r->anc[5].point, tbPoint(80, 20));
  EXPECT_EQ(r->anc[2].flag, 1);
  EXPECT_EQ(r->anc[3].flag, 2);
  EXPECT_EQ(r->anc[4].flag, 1);
  EXPECT_EQ(r->anc[5].flag, 2);
  EXPECT_EQ(r->anc[6].flag, 1);
  // Anchors outside the span are untouched.
  EXPECT_EQ(r->anc[1].point, tbPoint(999, 999));
  EXPECT_EQ(r->anc[1].flag, 0);
}

TEST(QvMCastAnc, InbetweeningKeepsOtherFlagsAndClipsTheSpan) {
  NoFailures guard;
  LinearCast cast;
  SetUpSpan(cast);
  cast.Rec(S(0))->anc[3].flag = 7;
  cast.SetAncSelectArea(S(0), -5, 100);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 1);
  EXPECT_EQ(cast.gotIndex, (std::vector<std::int16_t>{0, 4, 6}));
  EXPECT_EQ(cast.gotOutCount, 7);
  EXPECT_EQ(cast.Rec(S(0))->anc[3].flag, 7);
  EXPECT_EQ(cast.Rec(S(0))->anc[0].flag, 1);
}

TEST(QvMCastAnc, TheLibrarysHookMovesInnerAnchorsToTheOrigin) {
  NoFailures guard;
  CastProbe cast;
  SetUpSpan(cast);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 1);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(r->anc[3].point, tbPoint(0, 0));
  EXPECT_EQ(r->anc[4].point, tbPoint(0, 0));
  EXPECT_EQ(r->anc[2].point, tbPoint(20, 0));
  EXPECT_EQ(r->anc[6].point, tbPoint(100, 0));
}

TEST(QvMCastAnc, InbetweeningNeedsASpanInsideThePath) {
  NoFailures guard;
  LinearCast cast;
  SetUpSpan(cast);
  cast.SetAncStep(S(0), 1.0);  // resets the span
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);
  cast.SetAncSelectArea(S(0), 7, 9);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);
  cast.SetAncSelectArea(S(0), -4, -1);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);
  // A span whose low 16 bits run backwards gives nothing to fill.
  cast.SetAncSelectArea(S(0), 3, 65536 + 1);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);
  EXPECT_EQ(cast.calls, 0);
  EXPECT_EQ(cast.InbetweenAnc(S(9), 0), 0);
  // A span of one anchor passes that anchor as both keys.
  cast.SetAncSelectArea(S(0), 3, 3);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 1);
  EXPECT_EQ(cast.gotIndex, (std::vector<std::int16_t>{3, 3}));
  EXPECT_EQ(cast.gotOutCount, 1);
}

TEST(QvMCastAnc, InbetweeningAllocationFailures) {
  NoFailures guard;
  for (int k = 2; k <= 4; ++k) {  // 1 is the re-sampled path
    LinearCast cast;
    SetUpSpan(cast);
    QvFailAllocation(k);
    EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0) << k;
    QvFailAllocation(0);
    EXPECT_EQ(cast.calls, 0);
    EXPECT_EQ(cast.Rec(S(0))->anc[3].point, tbPoint(999, 999));
  }
}
