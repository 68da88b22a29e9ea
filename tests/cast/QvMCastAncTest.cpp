// Anchor motion paths: registration, folding, the anchor at a moment,
// re-sampling, the nearest anchor and in-betweening through the hook.
#include <limits>

#include "tests/cast/CastTestSupport.h"

using namespace casttest;
using QvMCastAnchors = CastTest;

namespace {

// A new member whose anchor i is point (10 i, 100 + i) with flag 10 + i; returns its id.
std::int16_t AddPath(CastProbe& cast, int n, char type = 0) {
  std::vector<QvMCastAnc> path(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    path[static_cast<size_t>(i)].point = tbPoint(10 * i, 100 + i);
    path[static_cast<size_t>(i)].flag = static_cast<char>(10 + i);
  }
  return cast.RegAnc(S(-1), path.data(), S(n), type, nullptr);
}

// Point and flag of anchor i of a member.
Vals AncOf(CastProbe& cast, std::int16_t id, int i) {
  const QvMCastAnc& a = cast.Rec(id)->anc[i];
  return Vals{a.point.x, a.point.y, a.flag};
}

// A store whose hook records what it was given and answers out[i] = (1000 + i, mode).
class HookCast : public CastProbe {
 public:
  using QvMCast::InbetweenAnc;
  void InbetweenAnc(tbPoint* keys, std::int16_t* index, std::int16_t n, tbPoint* out,
                    std::int16_t outCount, char mode) override {
    ++calls;
    gotIndex.assign(index, index + n);
    gotKeys.assign(keys, keys + n);
    gotOutCount = outCount;
    gotMode = mode;
    for (int i = 0; i < outCount; ++i) out[i] = tbPoint(1000 + i, mode);
  }
  int calls = 0;
  std::vector<std::int16_t> gotIndex;
  std::vector<tbPoint> gotKeys;
  int gotOutCount = 0, gotMode = 0;
};

// Member 0 sampled one anchor per unit over 0..6, span 2..6, anchor 4 a key.
void SetUpSpan(CastProbe& cast) {
  cast.New(nullptr);
  cast.SetStartEnd(S(0), 0, 6);
  std::vector<QvMCastAnc> path(7);
  for (QvMCastAnc& a : path) a.point = tbPoint(999, 999);
  path[2].point = tbPoint(20, 0);
  path[4] = {tbPoint(60, 40), 1};
  path[6].point = tbPoint(100, 0);
  cast.RegAnc(S(0), path.data(), S(7), QvMCast::kAncClamp, nullptr);
  cast.SetAncStep(S(0), 1.0);
  cast.SetAncSelectArea(S(0), 6, 2);
}

}  // namespace

TEST_F(QvMCastAnchors, RegistrationAndMembersWithoutAPath) {
  cast.New(nullptr);
  QvMCastInfo* r = cast.Rec(S(0));
  std::int16_t n = 0;
  tbPoint p;
  char f = 0;
  EXPECT_EQ((Vals{r->ancStep, r->ancType, cast.GetAncNum(S(0), &n), n, cast.IsAnc(S(0)),
                  cast.GetAnc(S(0), S(0), &p, &f), cast.GetAnc(S(0), std::int32_t{-1}, &p, &f),
                  cast.SetAnc(S(0), S(0), p, 0), cast.OffsetAnc(S(0), S(1), S(1)),
                  cast.ResetAnc(S(0)), cast.InbetweenAnc(S(0), 0)}),
            (Vals{5.0, 3, 1, 1, 0, 0, 0, 0, 0, 0, 0}));

  QvMCastAnc path[4];
  for (int i = 0; i < 4; ++i) path[i].point = tbPoint(10 * i, 100 + i), path[i].flag = char(10 + i);
  cast.SetAncSelectArea(S(0), 1, 2);
  EXPECT_EQ(cast.RegAnc(S(0), path, S(4), 0, Txt("p")), 0);
  EXPECT_NE(r->anc, path);
  // Type 0 keeps the type; the span is reset.
  EXPECT_EQ((Vals{r->ancLast, r->ancType, r->ancSelStart, r->ancSelEnd}), (Vals{3, 3, -1, -1}));
  EXPECT_EQ((Vals{cast.GetAnc(S(0), S(3), &p, &f), p.x, p.y, f, cast.GetAnc(S(0), S(4), &p, &f),
                  cast.GetAnc(S(0), S(-1), &p, &f)}),
            (Vals{1, 30, 103, 13, 0, 0}));
  EXPECT_EQ((Vals{cast.RegAnc(S(0), path, S(2), QvMCast::kAncReflect, nullptr), r->ancType}),
            (Vals{0, 2}));
  EXPECT_EQ(cast.RegAnc(S(0), r->anc, S(2), 0, nullptr), 0);  // its own path again
  EXPECT_EQ(AncOf(cast, S(0), 1), (Vals{10, 101, 11}));

  // A count below 1, no anchors or a failed allocation give no path; the
  // offset stays, and wrapping it with no path gives 0.
  cast.SetAncOffset(S(0), S(1));
  for (int k = 0; k < 4; ++k) {
    const std::int16_t count = k == 0 ? 0 : k == 1 ? -3 : 3;
    QvMCastAnc* from = k == 2 ? nullptr : path;
    EXPECT_EQ(FailAt(k == 3 ? 1 : 0, [&] { return cast.RegAnc(S(0), from, count, 0, nullptr); }),
              0);
    EXPECT_EQ((Vals{cast.IsAnc(S(0)), r->ancLast, r->ancOffset}), (Vals{0, 0, 1})) << k;
  }
  EXPECT_EQ((Vals{cast.SetAncOffset(S(0), S(-7)), cast.GetAncOffset(S(0), &n), n}),
            (Vals{1, 1, 0}));
}

TEST_F(QvMCastAnchors, Folding) {
  AddPath(cast, 10);
  // {type, index in, index out, inside}
  const int cases[][4] = {{1, 12, 9, 0}, {2, 12, 6, 0}, {3, 12, 2, 0}, {1, -3, 0, 0},
                          {2, -3, 3, 0}, {3, -3, 7, 0}, {1, 4, 4, 1},  {2, 9, 9, 1},
                          {3, 0, 0, 1},  {2, 19, 1, 0}, {2, 18, 0, 0}, {3, 10, 0, 0},
                          {0, 5, 0, 1},  {7, 12, 0, 1}, {-1, 3, 0, 1}, {2, -32768, 8, 0}};
  for (const auto& c : cases) {
    cast.SetAncType(S(0), static_cast<char>(c[0]));
    std::int16_t k = S(c[1]);
    EXPECT_EQ((Vals{cast.Fold(S(0), &k), k}), (Vals{c[3], c[2]})) << c[0] << " " << c[1];
  }
  // Extreme indices end inside paths of 10, 1 and 2 anchors; a single anchor
  // folds everything onto itself, reported as inside.
  AddPath(cast, 1);
  AddPath(cast, 2);
  for (std::int16_t id = 0; id < 3; ++id) {
    for (char type = 1; type <= 3; ++type) {
      cast.SetAncType(id, type);
      for (int in : {-32768, -32767, -1, 32767, 32766, 1000, 5}) {
        std::int16_t k = S(in);
        const char inside = cast.Fold(id, &k);
        EXPECT_TRUE(k >= 0 && k <= cast.Rec(id)->ancLast) << id << " " << in;
        EXPECT_TRUE(id != 1 || type == 1 || (inside == 1 && k == 0));
      }
    }
  }
}

TEST_F(QvMCastAnchors, OffsetStepCountAndSpan) {
  AddPath(cast, 10);
  QvMCastInfo* r = cast.Rec(S(0));
  // Offsets wrap; every setting of offset, step or count resets the span.
  for (auto c : {std::pair<int, int>{-1, 9}, {23, 3}, {-32768, 2}}) {
    cast.SetAncSelectArea(S(0), 1, 2);
    EXPECT_EQ((Vals{cast.SetAncOffset(S(0), S(c.first)), r->ancOffset, r->ancSelStart}),
              (Vals{1, c.second, -1}));
  }
  double v = 0, w = 0, x = 0;
  cast.SetAncSelectArea(S(0), 0, 3);
  EXPECT_EQ((Vals{cast.SetAncCount(S(0), 20.0), r->ancSelStart, cast.GetAncStep(S(0), &v), v,
                  cast.GetAncCount(S(0), S(1), &w), w, cast.GetAncCount(S(0), S(3), &x), x}),
            (Vals{1, -1, 1, 0.5, 1, 20.0, 1, 60.0}));
  cast.SetAncSelectArea(S(0), 0, 3);
  std::int32_t a = 0, b = 0;
  EXPECT_EQ((Vals{cast.SetAncStep(S(0), 2.0), r->ancSelStart, cast.SetAncSelectArea(S(0), 9, 3),
                  cast.GetAncSelectArea(S(0), &a, &b), a, b}),
            (Vals{1, -1, 1, 1, 3, 9}));

  // The nearest anchor to a point; equal distances keep the lower index.
  QvMCastAnc path[4] = {{}, {tbPoint(10, 0), 0}, {tbPoint(20, 0), 0}, {tbPoint(10, 20), 0}};
  cast.RegAnc(S(0), path, S(4), 0, nullptr);
  const std::pair<tbPoint, int> nearest[] = {
      {{11, 2}, 1}, {{15, 0}, 1}, {{10, 15}, 3}, {{-5, 0}, 0}};
  for (auto c : nearest) {
    cast.SetAncSelectArea(S(0), 0, 1);
    EXPECT_EQ((Vals{cast.SetAncOffset(S(0), &c.first), r->ancOffset, r->ancSelEnd}),
              (Vals{1, c.second, -1}));
  }
  tbPoint p(5, 5);
  cast.New(nullptr);
  EXPECT_EQ((Vals{cast.SetAncOffset(S(0), static_cast<tbPoint*>(nullptr)),
                  cast.SetAncOffset(S(1), &p), cast.Rec(S(1))->ancOffset}),
            (Vals{0, 1, 0}));
}

TEST_F(QvMCastAnchors, AnchorAtAMomentAndEdits) {
  AddPath(cast, 10, 1);
  cast.SetStartEnd(S(0), 100, 120);
  cast.SetAncStep(S(0), 0.5);
  cast.SetAncOffset(S(0), S(2));
  tbPoint p, q;
  char f = 0, g = 0;
  EXPECT_EQ((Vals{cast.GetAnc(S(0), 107, &p, &f), p.x, p.y, f}), (Vals{1, 50, 105, 15}));
  EXPECT_EQ((Vals{cast.GetAnc(S(0), 120, &q, &g), q.x, cast.GetAnc(S(0), 121, &p, &f),
                  cast.GetAnc(S(0), 99, &p, &f)}),
            (Vals{1, 90, 0, 0}));  // 10 + 2 clamped to 9

  // Extreme steps, offsets and times stay inside the path.
  cast.SetStartEnd(AddPath(cast, 7), -2147483647 - 1, 2147483647);
  for (char type : {0, 1, 2, 3}) {
    cast.SetAncType(S(1), type);
    for (double step : {1e12, -1e12, -3.7, 0.0, std::numeric_limits<double>::infinity(),
                        std::numeric_limits<double>::quiet_NaN(), 32767.0}) {
      cast.SetAncStep(S(1), step);
      cast.Rec(S(1))->ancOffset = S(32767);
      for (std::int32_t t : {-2147483647 - 1, -1, 0, 12345, 2147483647}) {
        EXPECT_EQ(cast.GetAnc(S(1), t, &p, &f), 1);
        EXPECT_TRUE(p.x % 10 == 0 && p.x >= 0 && p.x <= 60) << p.x;
      }
    }
  }

  // SetAnc checks the index; OffsetAnc takes 16-bit sums.
  EXPECT_EQ((Vals{cast.SetAnc(S(1), S(1), tbPoint(32767, -32768), 1),
                  cast.SetAnc(S(1), S(7), tbPoint(0, 0), 1),
                  cast.SetAnc(S(1), S(-1), tbPoint(0, 0), 1), cast.OffsetAnc(S(1), S(1), S(-1))}),
            (Vals{1, 0, 0, 1}));
  EXPECT_EQ(AncOf(cast, S(1), 1), (Vals{-32768, 32767, 1}));
  EXPECT_EQ(AncOf(cast, S(1), 2), (Vals{21, 101, 12}));
  // DelAnc keeps the offset and trims both flag sets.
  cast.SetAncOffset(S(1), S(2));
  cast.SetActFlag(S(1), 0xFFFFFFFFu);
  cast.SetShowFlag(S(1), 0xFFFFFFFFu);
  QvMCastInfo* r = cast.Rec(S(1));
  EXPECT_EQ((Vals{cast.DelAnc(S(1)), cast.IsAnc(S(1)), r->ancOffset, r->actFlag, r->showFlag}),
            (Vals{1, 0, 2, 0, 0}));
}

TEST_F(QvMCastAnchors, Resampling) {
  AddPath(cast, 6, 1);
  cast.SetStartEnd(S(0), 0, 4);
  cast.SetAncStep(S(0), 2.0);
  EXPECT_EQ(cast.ResetAnc(S(0)), 1);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ((Vals{r->ancLast, r->ancStep, r->ancOffset}), (Vals{4, 1.0, 0}));
  const int from[] = {0, 2, 4, 5, 5}, flags[] = {10, 12, 14, 0, 0};
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(AncOf(cast, S(0), i), (Vals{10 * from[i], 100 + from[i], flags[i]})) << i;

  // An empty range, or a failed allocation, drops the path; the step is reset.
  cast.SetStartEnd(AddPath(cast, 4), 10, 5);
  cast.SetAncStep(S(1), 3.0);
  EXPECT_EQ((Vals{cast.ResetAnc(S(1)), cast.IsAnc(S(1)), cast.Rec(S(1))->ancStep}),
            (Vals{1, 0, 1.0}));
  cast.SetStartEnd(AddPath(cast, 4), 0, 3);
  EXPECT_EQ(FailAt(1, [&] { return cast.ResetAnc(S(2)); }), 1);
  cast.SetAncSelectArea(S(2), 0, 0);
  EXPECT_EQ((Vals{cast.IsAnc(S(2)), cast.InbetweenAnc(S(2), 0)}), (Vals{0, 0}));

  // Emptying re-samples a path first; without one the step and offset stay.
  cast.SetStartEnd(AddPath(cast, 4), 0, 3);
  cast.SetAncStep(S(3), 2.0);
  cast.SetAncOffset(S(3), S(1));
  cast.Empty(S(3));
  EXPECT_EQ((Vals{cast.Rec(S(3))->ancStep, cast.Rec(S(3))->ancOffset}), (Vals{1.0, 0}));
  cast.SetAncStep(S(3), 2.0);
  cast.Empty(S(3));
  EXPECT_EQ(cast.Rec(S(3))->ancStep, 2.0);
}

TEST_F(QvMCastAnchors, InbetweeningThroughTheHook) {
  HookCast hook;
  SetUpSpan(hook);
  EXPECT_EQ((Vals{hook.InbetweenAnc(S(0), 42), hook.calls, hook.gotOutCount, hook.gotMode}),
            (Vals{1, 1, 5, 42}));
  EXPECT_EQ(hook.gotIndex, (std::vector<std::int16_t>{2, 4, 6}));
  EXPECT_EQ(hook.gotKeys, (std::vector<tbPoint>{{20, 0}, {60, 40}, {100, 0}}));
  // Anchors 3 to 5 take out[1] to out[3]; the ends keep their points.
  const Vals after[] = {{999, 999, 0}, {20, 0, 1},    {1001, 42, 2},
                        {1002, 42, 1}, {1003, 42, 2}, {100, 0, 1}};
  for (int i = 1; i <= 6; ++i) EXPECT_EQ(AncOf(hook, S(0), i), after[i - 1]) << i;

  // Other flags stay; the span is clipped to the path.
  hook.Rec(S(0))->anc[3].flag = 7;
  hook.SetAncSelectArea(S(0), -5, 100);
  EXPECT_EQ((Vals{hook.InbetweenAnc(S(0), 0), hook.gotOutCount, hook.Rec(S(0))->anc[3].flag,
                  hook.Rec(S(0))->anc[0].flag}),
            (Vals{1, 7, 7, 1}));
  EXPECT_EQ(hook.gotIndex, (std::vector<std::int16_t>{0, 2, 4, 6}));
  // A span of one anchor passes it as both keys.
  hook.SetAncSelectArea(S(0), 3, 3);
  EXPECT_EQ((Vals{hook.InbetweenAnc(S(0), 0), hook.gotOutCount}), (Vals{1, 1}));
  EXPECT_EQ(hook.gotIndex, (std::vector<std::int16_t>{3, 3}));

  // The span must lie in the path; right after SetAncStep it is reset.
  const int calls = hook.calls;
  hook.SetAncStep(S(0), 1.0);
  EXPECT_EQ(hook.InbetweenAnc(S(0), 0), 0);
  for (auto s : {std::pair<int, int>{7, 9}, {-4, -1}, {3, 65536 + 1}})
    EXPECT_EQ((Vals{hook.SetAncSelectArea(S(0), s.first, s.second), hook.InbetweenAnc(S(0), 0)}),
              (Vals{1, 0}));
  EXPECT_EQ(hook.calls, calls);
  for (int k = 2; k <= 4; ++k) {  // allocation 1 is the re-sampled path
    HookCast failing;
    SetUpSpan(failing);
    EXPECT_EQ((Vals{FailAt(k, [&] { return failing.InbetweenAnc(S(0), 0); }), failing.calls}),
              (Vals{0, 0}));
    EXPECT_EQ(AncOf(failing, S(0), 3), (Vals{999, 999, 0}));
  }

  // The library's own hook moves the inner anchors to the origin.
  CastProbe plain;
  SetUpSpan(plain);
  EXPECT_EQ(plain.InbetweenAnc(S(0), 0), 1);
  for (auto c : {std::pair<int, Vals>{3, {0, 0, 2}}, {4, {0, 0, 1}}, {6, {100, 0, 1}}})
    EXPECT_EQ(AncOf(plain, S(0), c.first), c.second);
}
