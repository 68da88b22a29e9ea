// Anchor motion paths: registration, folding, the anchor at a moment,
// re-sampling, the nearest anchor and in-betweening through the hook.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"

using namespace casttest;

namespace {

// Anchor i of the test paths: point (10 i, 100 + i), flag 10 + i.
std::vector<QvMCastAnc> Path(int n) {
  std::vector<QvMCastAnc> path(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    path[static_cast<size_t>(i)].point = tbPoint(10 * i, 100 + i);
    path[static_cast<size_t>(i)].flag = static_cast<char>(10 + i);
  }
  return path;
}

// A new member with a test path of n anchors; returns its id.
std::int16_t AddPath(CastProbe& cast, int n, char type = 0) {
  std::vector<QvMCastAnc> path = Path(n);
  return cast.RegAnc(S(-1), path.data(), S(n), type, nullptr);
}

tbPoint AncAt(QvMCast& cast, std::int16_t id, std::int32_t time) {
  tbPoint p(-1, -1);
  char f = 0;
  EXPECT_EQ(cast.GetAnc(id, time, &p, &f), 1) << time;
  return p;
}

std::int16_t Offset(QvMCast& cast, std::int16_t id) {
  std::int16_t off = -1;
  EXPECT_EQ(cast.GetAncOffset(id, &off), 1);
  return off;
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
    for (int k = 0; k + 1 < keyCount; ++k) {
      const int a = keyIndex[k], b = keyIndex[k + 1];
      for (int j = a + 1; j < b; ++j) {
        out[j - keyIndex[0]] = tbPoint(keys[k].x + (keys[k + 1].x - keys[k].x) * (j - a) / (b - a),
                                       keys[k].y + (keys[k + 1].y - keys[k].y) * (j - a) / (b - a));
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
  for (QvMCastAnc& a : path) a.point = tbPoint(999, 999);
  path[2].point = tbPoint(20, 0);
  path[4].point = tbPoint(60, 40);
  path[4].flag = 1;
  path[6].point = tbPoint(100, 0);
  cast.RegAnc(S(0), path.data(), S(7), 1, nullptr);
  cast.SetAncStep(S(0), 1.0);
  cast.SetAncSelectArea(S(0), 6, 2);
}

}  // namespace

TEST(QvMCastAnc, RegistrationAndMembersWithoutAPath) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  std::int16_t n = 0;
  tbPoint p;
  char f = 0;
  EXPECT_EQ(cast.GetAncNum(S(0), &n), 1);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.GetAnc(S(0), S(0), &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(0), std::int32_t{-1}, &p, &f), 0);
  EXPECT_EQ(cast.SetAnc(S(0), S(0), tbPoint(1, 1), 0), 0);
  EXPECT_EQ(cast.OffsetAnc(S(0), S(1), S(1)), 0);
  EXPECT_EQ(cast.ResetAnc(S(0)), 0);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);

  std::vector<QvMCastAnc> path = Path(4);
  cast.SetAncSelectArea(S(0), 1, 2);
  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(4), 0, Txt("p")), 0);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_NE(r->anc, path.data());
  EXPECT_EQ(r->ancLast, 3);
  EXPECT_EQ(r->ancType, 3);  // type 0 keeps the type
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(r->ancSelEnd, -1);
  EXPECT_EQ(NameOf(cast, S(0)), "p");
  EXPECT_EQ(cast.GetAnc(S(0), S(3), &p, &f), 1);
  EXPECT_EQ(p, tbPoint(30, 103));
  EXPECT_EQ(f, 13);
  EXPECT_EQ(cast.GetAnc(S(0), S(4), &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(0), S(-1), &p, &f), 0);
  EXPECT_EQ(cast.RegAnc(S(0), path.data(), S(2), 2, nullptr), 0);
  EXPECT_EQ(r->ancType, 2);
  EXPECT_EQ(cast.RegAnc(S(-1), path.data(), S(2), 1, nullptr), 1);
  // The member's own path may be registered again.
  EXPECT_EQ(cast.RegAnc(S(0), r->anc, S(2), 0, nullptr), 0);
  EXPECT_EQ(cast.GetAnc(S(0), S(1), &p, &f), 1);
  EXPECT_EQ(p, tbPoint(10, 101));

  // A count below 1, no anchors or a failed allocation give no path; the
  // offset stays, and wrapping it with no path gives 0.
  cast.SetAncOffset(S(0), S(1));
  for (int k = 0; k < 4; ++k) {
    SCOPED_TRACE(k);
    const std::int16_t count = k == 0 ? 0 : k == 1 ? -3 : 3;
    EXPECT_EQ(FailAt(k == 3 ? 1 : 0,
                     [&] {
                       return cast.RegAnc(S(0), k == 2 ? nullptr : path.data(), count, 0, nullptr);
                     }),
              0);
    EXPECT_EQ(cast.IsAnc(S(0)), 0);
    EXPECT_EQ(r->ancLast, 0);
    EXPECT_EQ(r->ancOffset, 1);
  }
  EXPECT_EQ(cast.SetAncOffset(S(0), S(-7)), 1);
  EXPECT_EQ(Offset(cast, S(0)), 0);
}

TEST(QvMCastAnc, Folding) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10);
  struct Case {
    char type;
    std::int16_t in, out;
    char inside;
  };
  const Case cases[] = {
      {1, 12, 9, 0}, {2, 12, 6, 0},
      {3, 12, 2, 0}, {1, -3, 0, 0},
      {2, -3, 3, 0}, {3, -3, 7, 0},
      {1, 4, 4, 1},  {2, 9, 9, 1},
      {3, 0, 0, 1},  {2, 19, 1, 0},
      {2, 18, 0, 0}, {3, 10, 0, 0},
      {0, 5, 0, 1},  {7, 12, 0, 1},
      {-1, 3, 0, 1}, {2, -32768, 32768 % 18 > 9 ? 18 - 32768 % 18 : 32768 % 18, 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << int(c.type) << " " << c.in);
    cast.SetAncType(S(0), c.type);
    std::int16_t k = c.in;
    EXPECT_EQ(cast.Fold(S(0), &k), c.inside);
    EXPECT_EQ(k, c.out);
  }
  // Extreme indices end inside paths of 10, 1 and 2 anchors.
  AddPath(cast, 1);
  AddPath(cast, 2);
  for (std::int16_t id = 0; id < 3; ++id) {
    for (char type = 1; type <= 3; ++type) {
      cast.SetAncType(id, type);
      for (int in : {-32768, -32767, -1, 32767, 32766, 1000}) {
        std::int16_t k = S(in);
        cast.Fold(id, &k);
        EXPECT_GE(k, 0);
        EXPECT_LE(k, cast.Rec(id)->ancLast);
      }
    }
  }
  // A single anchor folds everything onto itself, reported as inside.
  cast.SetAncType(S(1), 2);
  std::int16_t k = S(5);
  EXPECT_EQ(cast.Fold(S(1), &k), 1);
  EXPECT_EQ(k, 0);
}

TEST(QvMCastAnc, OffsetStepCountAndSpan) {
  NoFailures guard;
  CastProbe cast;
  AddPath(cast, 10);
  QvMCastInfo* r = cast.Rec(S(0));
  // Each setting of offset, step or count resets the span.
  for (std::int16_t off : {-1, 23, -32768}) {
    cast.SetAncSelectArea(S(0), 1, 2);
    EXPECT_EQ(cast.SetAncOffset(S(0), off), 1);
    EXPECT_EQ(r->ancSelStart, -1);
  }
  cast.SetAncOffset(S(0), S(-1));
  EXPECT_EQ(Offset(cast, S(0)), 9);
  cast.SetAncOffset(S(0), S(23));
  EXPECT_EQ(Offset(cast, S(0)), 3);
  cast.SetAncOffset(S(0), S(-32768));
  EXPECT_EQ(Offset(cast, S(0)), 2);  // -32768 + 3277 * 10

  double v = 0;
  cast.SetAncSelectArea(S(0), 0, 3);
  EXPECT_EQ(cast.SetAncCount(S(0), 20.0), 1);
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(cast.GetAncStep(S(0), &v), 1);
  EXPECT_DOUBLE_EQ(v, 0.5);
  EXPECT_EQ(cast.GetAncCount(S(0), S(1), &v), 1);
  EXPECT_DOUBLE_EQ(v, 20.0);
  EXPECT_EQ(cast.GetAncCount(S(0), S(3), &v), 1);
  EXPECT_DOUBLE_EQ(v, 60.0);
  cast.SetAncSelectArea(S(0), 0, 3);
  EXPECT_EQ(cast.SetAncStep(S(0), 2.0), 1);
  EXPECT_EQ(r->ancSelStart, -1);

  std::int32_t a = 0, b = 0;
  EXPECT_EQ(cast.SetAncSelectArea(S(0), 9, 3), 1);
  EXPECT_EQ(cast.GetAncSelectArea(S(0), &a, &b), 1);
  EXPECT_EQ(a, 3);
  EXPECT_EQ(b, 9);

  // The nearest anchor to a point; equal distances keep the lower index.
  std::vector<QvMCastAnc> path(4);
  path[1].point = tbPoint(10, 0);
  path[2].point = tbPoint(20, 0);
  path[3].point = tbPoint(10, 20);
  cast.RegAnc(S(0), path.data(), S(4), 0, nullptr);
  const std::pair<tbPoint, int> nearest[] = {
      {{11, 2}, 1}, {{15, 0}, 1}, {{10, 15}, 3}, {{-5, 0}, 0}};
  for (const auto& c : nearest) {
    tbPoint p = c.first;
    cast.SetAncSelectArea(S(0), 0, 1);
    EXPECT_EQ(cast.SetAncOffset(S(0), &p), 1);
    EXPECT_EQ(Offset(cast, S(0)), c.second) << p.x << "," << p.y;
    EXPECT_EQ(r->ancSelEnd, -1);
  }
  EXPECT_EQ(cast.SetAncOffset(S(0), static_cast<tbPoint*>(nullptr)), 0);
  cast.New(nullptr);
  tbPoint p(5, 5);
  EXPECT_EQ(cast.SetAncOffset(S(1), &p), 1);
  EXPECT_EQ(Offset(cast, S(1)), 0);
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
  EXPECT_EQ(AncAt(cast, S(0), 120), tbPoint(90, 109));  // 10 + 2 clamped to 9
  EXPECT_EQ(cast.GetAnc(S(0), 121, &p, &f), 0);
  EXPECT_EQ(cast.GetAnc(S(0), 99, &p, &f), 0);

  // Extreme steps, offsets and times stay inside the path.
  AddPath(cast, 7);
  cast.SetStartEnd(S(1), -2147483647 - 1, 2147483647);
  const double steps[] = {1e12,
                          -1e12,
                          -3.7,
                          0.0,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN(),
                          32767.0};
  for (char type : {0, 1, 2, 3}) {
    cast.SetAncType(S(1), type);
    for (double step : steps) {
      cast.SetAncStep(S(1), step);
      cast.Rec(S(1))->ancOffset = S(32767);
      for (std::int32_t t : {-2147483647 - 1, -1, 0, 12345, 2147483647}) {
        p = AncAt(cast, S(1), t);
        EXPECT_TRUE(p.x % 10 == 0 && p.x >= 0 && p.x <= 60) << p.x;
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
  QvMCastAnc* anc = cast.Rec(S(0))->anc;
  EXPECT_EQ(anc[1].point, tbPoint(-32768, 32767));  // 16-bit sums
  EXPECT_EQ(anc[1].flag, 1);
  EXPECT_EQ(anc[2].point, tbPoint(21, 101));

  // DelAnc keeps the offset and trims both flag sets.
  cast.SetAncOffset(S(0), S(2));
  cast.SetActFlag(S(0), 0xFFFFFFFFu);
  cast.SetShowFlag(S(0), 0xFFFFFFFFu);
  EXPECT_EQ(cast.DelAnc(S(0)), 1);
  EXPECT_EQ(cast.IsAnc(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->ancOffset, 2);
  EXPECT_EQ(cast.Rec(S(0))->actFlag | cast.Rec(S(0))->showFlag, 0u);
}

TEST(QvMCastAnc, Resampling) {
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

  // The motion looks the same before and after.
  AddPath(cast, 10, 3);
  cast.SetStartEnd(S(1), 50, 61);
  cast.SetAncStep(S(1), 1.5);
  cast.SetAncOffset(S(1), S(4));
  std::vector<tbPoint> before;
  for (int t = 50; t <= 61; ++t) before.push_back(AncAt(cast, S(1), t));
  ASSERT_EQ(cast.ResetAnc(S(1)), 1);
  EXPECT_EQ(cast.Rec(S(1))->ancLast, 11);
  for (int t = 50; t <= 61; ++t)
    EXPECT_EQ(AncAt(cast, S(1), t), before[static_cast<size_t>(t - 50)]);

  // An empty range, or a failed allocation, drops the path; the step is reset.
  AddPath(cast, 4);
  cast.SetStartEnd(S(2), 10, 5);
  cast.SetAncStep(S(2), 3.0);
  EXPECT_EQ(cast.ResetAnc(S(2)), 1);
  EXPECT_EQ(cast.IsAnc(S(2)), 0);
  EXPECT_EQ(cast.Rec(S(2))->ancStep, 1.0);
  AddPath(cast, 4);
  cast.SetStartEnd(S(3), 0, 3);
  EXPECT_EQ(FailAt(1, [&] { return cast.ResetAnc(S(3)); }), 1);
  EXPECT_EQ(cast.IsAnc(S(3)), 0);
  cast.SetAncSelectArea(S(3), 0, 0);
  EXPECT_EQ(cast.InbetweenAnc(S(3), 0), 0);

  // Emptying re-samples a path first; without one the step and offset stay.
  AddPath(cast, 4);
  cast.SetStartEnd(S(4), 0, 3);
  cast.SetAncStep(S(4), 2.0);
  cast.SetAncOffset(S(4), S(1));
  cast.Empty(S(4));
  EXPECT_EQ(cast.Rec(S(4))->ancStep, 1.0);
  EXPECT_EQ(cast.Rec(S(4))->ancOffset, 0);
  cast.SetAncStep(S(4), 2.0);
  cast.Empty(S(4));
  EXPECT_EQ(cast.Rec(S(4))->ancStep, 2.0);
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
  QvMCastAnc* anc = cast.Rec(S(0))->anc;
  EXPECT_EQ(anc[3].point, tbPoint(40, 20));
  EXPECT_EQ(anc[5].point, tbPoint(80, 20));
  const char flags[] = {0, 0, 1, 2, 1, 2, 1};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(anc[i].flag, flags[i]) << i;
  EXPECT_EQ(anc[1].point, tbPoint(999, 999));  // outside the span

  // Other flags stay; the span is clipped to the path.
  anc[3].flag = 7;
  cast.SetAncSelectArea(S(0), -5, 100);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 1);
  EXPECT_EQ(cast.gotIndex, (std::vector<std::int16_t>{0, 2, 4, 6}));
  EXPECT_EQ(cast.gotOutCount, 7);
  EXPECT_EQ(cast.Rec(S(0))->anc[3].flag, 7);
  EXPECT_EQ(cast.Rec(S(0))->anc[0].flag, 1);

  // A span of one anchor passes it as both keys.
  cast.SetAncSelectArea(S(0), 3, 3);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 1);
  EXPECT_EQ(cast.gotIndex, (std::vector<std::int16_t>{3, 3}));
  EXPECT_EQ(cast.gotOutCount, 1);

  // The span must lie in the path; right after SetAncStep it is reset.
  const int calls = cast.calls;
  cast.SetAncStep(S(0), 1.0);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0);
  const std::pair<std::int32_t, std::int32_t> spans[] = {{7, 9}, {-4, -1}, {3, 65536 + 1}};
  for (const auto& s : spans) {
    cast.SetAncSelectArea(S(0), s.first, s.second);
    EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 0) << s.first;
  }
  EXPECT_EQ(cast.calls, calls);
}

TEST(QvMCastAnc, TheLibrarysHookMovesInnerAnchorsToTheOrigin) {
  NoFailures guard;
  CastProbe cast;
  SetUpSpan(cast);
  EXPECT_EQ(cast.InbetweenAnc(S(0), 0), 1);
  QvMCastAnc* anc = cast.Rec(S(0))->anc;
  EXPECT_EQ(anc[3].point, tbPoint(0, 0));
  EXPECT_EQ(anc[4].point, tbPoint(0, 0));
  EXPECT_EQ(anc[2].point, tbPoint(20, 0));
  EXPECT_EQ(anc[6].point, tbPoint(100, 0));
}

TEST(QvMCastAnc, InbetweeningAllocationFailures) {
  NoFailures guard;
  for (int k = 2; k <= 4; ++k) {  // 1 is the re-sampled path
    LinearCast cast;
    SetUpSpan(cast);
    EXPECT_EQ(FailAt(k, [&] { return cast.InbetweenAnc(S(0), 0); }), 0) << k;
    EXPECT_EQ(cast.calls, 0);
    EXPECT_EQ(cast.Rec(S(0))->anc[3].point, tbPoint(999, 999));
  }
}
