// The cast table: ids, creation and deletion, the lookup lock, names, flags,
// time ranges, and what every by-id operation gives for an absent member.
#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"

using namespace casttest;
using Ids = std::vector<std::int16_t>;

TEST(QvMCastTable, IdsCreationAndDeletion) {
  NoFailures guard;
  CastProbe cast;
  EXPECT_EQ(cast.GetNewID(), 0);
  EXPECT_EQ(cast.End(), 0);
  EXPECT_EQ(cast.New(Txt("a")), 0);
  EXPECT_EQ(cast.New(Txt("b")), 1);
  EXPECT_EQ(cast.New(nullptr), 2);
  EXPECT_EQ(cast.Del(S(1)), 1);
  EXPECT_EQ(cast.New(Txt("c")), 3);  // the counter never fills gaps
  EXPECT_EQ(cast.Del(S(9)), 0);
  EXPECT_EQ(cast.Del(S(0)), 1);  // head
  EXPECT_EQ(cast.Del(S(3)), 1);  // tail
  EXPECT_EQ(cast.Ids(), Ids({2}));
  EXPECT_EQ(cast.GetNewID(), 4);
  EXPECT_EQ(cast.Del(S(2)), 1);
  EXPECT_EQ(cast.New(Txt("d")), 0);  // an emptied store counts from 0 again
  cast.New(nullptr);
  cast.DelAll();
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(cast.GetNewID(), 0);

  // New(5) and six New(name): the sixth replaces member 5 at the end.
  ASSERT_EQ(cast.New(S(5), Txt("explicit")), 1);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(cast.New(Txt("auto")), i);
  EXPECT_EQ(cast.Ids(), Ids({0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(NameOf(cast, S(5)), "auto");

  // An existing id moves to the end and loses its attachments.
  cast.RegScroll(S(0), 1, nullptr);
  cast.SetStartEnd(S(0), 3, 7);
  ASSERT_EQ(cast.New(S(0), Txt("again")), 1);
  EXPECT_EQ(cast.Ids(), Ids({1, 2, 3, 4, 5, 0}));
  EXPECT_EQ(cast.ID2Index(S(0)), 5);
  EXPECT_EQ(cast.Index2ID(S(0)), 1);
  EXPECT_EQ(cast.ID2Index(S(6)), -1);
  EXPECT_EQ(cast.Index2ID(cast.Count()), -1);
  EXPECT_EQ(cast.Index2ID(S(-1)), -1);
  EXPECT_EQ(cast.IsScroll(S(0), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_EQ(NameOf(cast, S(0)), "again");
}

TEST(QvMCastTable, CreationValuesAndEmpty) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("a"));
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(r->actFlag | r->showFlag | static_cast<std::uint32_t>(r->scroll), 0u);
  EXPECT_EQ(r->ancStep, 5.0);
  EXPECT_EQ(r->ancType, 3);
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(r->ancSelEnd, -1);
  EXPECT_EQ(r->scrStepH, 5.0);
  EXPECT_EQ(r->scrStepV, 5.0);
  EXPECT_EQ(r->start, -1);
  EXPECT_EQ(r->end, -1);
  EXPECT_EQ(r->icon.Pic(), nullptr);
  for (QvMCastList* l : r->lists) EXPECT_EQ(l, nullptr);

  cast.New(Txt("b"));
  cast.SetStartEnd(S(0), 10, 19);
  cast.RegScroll(S(0), 2, Txt("a"));
  cast.SetActFlag(S(0), 0xFFFFFFFFu);
  cast.SetShowFlag(S(0), 0xFFFFFFFFu);
  EXPECT_EQ(cast.Empty(S(0)), 1);
  EXPECT_EQ(cast.Ids(), Ids({0, 1}));
  EXPECT_EQ(r->name, nullptr);
  EXPECT_EQ(r->actFlag | r->showFlag | static_cast<std::uint32_t>(r->scroll), 0u);
  EXPECT_EQ(r->start, 10);
  EXPECT_EQ(r->end, 19);
  EXPECT_EQ(r->scrStepH, 0.5);
  EXPECT_EQ(r->ancType, 1);  // removing the Dft entries sets the clamp type
}

TEST(QvMCastTable, LockActsOnTheLockedMember) {
  NoFailures guard;
  CastProbe cast;
  for (int i = 0; i < 4; ++i) cast.New(nullptr);
  cast.SetStartEnd(S(3), 30, 39);
  cast.SetStartEnd(S(1), 10, 19);
  cast.Start(S(1));
  EXPECT_EQ(cast.CurInfo(), cast.Rec(S(1)));
  cast.Start(S(8));
  EXPECT_EQ(cast.CurInfo(), nullptr);

  cast.Lock(S(7));
  EXPECT_EQ(cast.LockFlag(), 1);
  EXPECT_EQ(cast.Start(S(3)), -1);
  // Count, index lookups and End() walk the list themselves.
  EXPECT_EQ(cast.Count(), 4);
  EXPECT_EQ(cast.Index2ID(S(3)), 3);
  EXPECT_EQ(cast.ID2Index(S(3)), 3);
  EXPECT_EQ(cast.End(), 39);
  cast.Unlock();
  EXPECT_EQ(cast.Start(S(3)), 30);

  cast.Lock(S(1));
  EXPECT_EQ(cast.Start(S(3)), 10);
  EXPECT_EQ(cast.SetStartEnd(S(99), 11, 20), 1);
  cast.Unlock();
  EXPECT_EQ(cast.Start(S(1)), 11);
  EXPECT_EQ(cast.Start(S(3)), 30);

  // Deleting the locked member ends the lock; so does DelAll.
  cast.Lock(S(1));
  EXPECT_EQ(cast.Del(S(2)), 1);
  EXPECT_EQ(cast.LockFlag(), 0);
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.Ids(), Ids({0, 2, 3}));
  cast.Lock(S(0));
  cast.DelAll();
  EXPECT_EQ(cast.LockFlag(), 0);
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.New(nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), -1);
}

TEST(QvMCastTable, Names) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("first"));
  cast.New(nullptr);
  EXPECT_EQ(NameOf(cast, S(0)), "first");
  EXPECT_EQ(NameOf(cast, S(1)), "<none>");
  EXPECT_EQ(cast.SetName(S(1), Txt("second")), 1);
  EXPECT_EQ(NameOf(cast, S(1)), "second");
  EXPECT_EQ(cast.SetName(S(0), nullptr), 1);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");

  unsigned char** h = reinterpret_cast<unsigned char**>(1);
  EXPECT_EQ(cast.GetName(S(4), &h), 0);
  EXPECT_EQ(h, nullptr);
  h = reinterpret_cast<unsigned char**>(1);
  EXPECT_EQ(cast.GetName(S(0), &h), 1);
  EXPECT_EQ(h, nullptr);
  EXPECT_EQ(cast.GetName(S(1), nullptr), 0);
  ASSERT_EQ(cast.GetName(S(1), &h), 1);
  EXPECT_NE(h, cast.Rec(S(1))->name);  // a copy the caller owns
  QvFreeString(h);
  EXPECT_EQ(FailAt(1, [&] { return cast.GetName(S(1), &h); }), 0);
  EXPECT_EQ(h, nullptr);
  // A name may be set from the member's own text.
  EXPECT_EQ(cast.SetName(S(1), *cast.Rec(S(1))->name), 1);
  EXPECT_EQ(NameOf(cast, S(1)), "second");
}

TEST(QvMCastTable, FlagsStayInsideTheAttachmentMask) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({3});
  ASSERT_EQ(cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr), 0);
  cast.RegScroll(S(0), 1, nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x050u);
  EXPECT_EQ(cast.SetActFlag(S(0), 0xFFFFFFFFu), 1);
  EXPECT_EQ(cast.SetShowFlag(S(0), 0x010u), 1);
  std::uint32_t act = 0, show = 0;
  cast.GetActFlag(S(0), &act);
  EXPECT_EQ(act, 0x050u);
  EXPECT_EQ(cast.DelAFrame(S(0)), 1);
  cast.GetActFlag(S(0), &act);
  cast.GetShowFlag(S(0), &show);
  EXPECT_EQ(act, 0x040u);
  EXPECT_EQ(show, 0u);
  // Registration never sets a flag, and a reset only trims.
  cast.RegScroll(S(0), 8, nullptr);
  EXPECT_EQ(cast.ResetActFlag(S(0)), 1);
  EXPECT_EQ(cast.GetActFlag(S(0), &act), 1);
  EXPECT_EQ(act, 0x040u);
  EXPECT_EQ(cast.GetActFlag(S(0), nullptr), 0);

  QvMCastAnc anc[2];
  QvMCastDft dft[1];
  cast.New(nullptr);
  cast.RegAnc(S(1), anc, S(2), 0, nullptr);
  EXPECT_EQ(cast.ActFlag(S(1)), 0x020u);
  cast.DelAnc(S(1));
  cast.RegDft(S(1), S(0), dft, S(1), 0, nullptr, nullptr);
  EXPECT_EQ(cast.ActFlag(S(1)), 0x020u);
  cast.RegScroll(S(1), 2 | 8, nullptr);
  EXPECT_EQ(cast.ActFlag(S(1)), 0x2A0u);
  cast.RegScroll(S(1), 1 | 4, nullptr);
  EXPECT_EQ(cast.ActFlag(S(1)), 0x160u);
}

TEST(QvMCastTable, TimeRangesAndStepScaling) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  cast.New(nullptr);
  EXPECT_EQ(cast.End(), 0);  // every end -1
  cast.SetStartEnd(S(1), 2, 25);
  EXPECT_EQ(cast.End(), 25);
  EXPECT_EQ(cast.SetStart(S(1), 30), 1);
  EXPECT_EQ(cast.Start(S(1)), 30);
  EXPECT_EQ(cast.End(S(1)), 25);  // not checked against the start
  EXPECT_EQ(cast.SetEnd(S(1), 50), 1);
  EXPECT_EQ(cast.End(), 50);

  // An unset range counts one unit long: a first range of 10 divides by 10.
  QvMCastInfo* r = cast.Rec(S(0));
  cast.SetStartEnd(S(0), 0, 9);
  EXPECT_DOUBLE_EQ(r->scrStepH, 0.5);
  EXPECT_DOUBLE_EQ(r->ancStep, 5.0);  // no Dft entries: the anchor step stays
  cast.SetStartEnd(S(0), 0, 19);
  EXPECT_DOUBLE_EQ(r->scrStepH, 0.25);
  EXPECT_DOUBLE_EQ(r->scrStepV, 0.25);
  cast.SetStartEnd(S(0), 10, 29);  // same length
  EXPECT_DOUBLE_EQ(r->scrStepH, 0.25);
  cast.SetStartEnd(S(0), 0, 9);
  cast.SetStartEnd(S(0), 0, 4);
  EXPECT_DOUBLE_EQ(r->scrStepH, 1.0);
  EXPECT_DOUBLE_EQ(r->scrStepV, 1.0);

  // With Dft entries the anchor step scales too, and the span is reset.
  QvMCastDft dft[2];
  cast.RegDft(S(0), S(1), dft, S(2), 0, nullptr, nullptr);
  cast.SetAncSelectArea(S(0), 2, 4);
  cast.SetStartEnd(S(0), 5, 9);  // same length: the span stays
  EXPECT_EQ(r->ancSelStart, 2);
  cast.SetStartEnd(S(0), 0, 9);
  EXPECT_DOUBLE_EQ(r->ancStep, 2.5);
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(r->ancSelEnd, -1);
  cast.SetStartEnd(S(0), 5, 4);  // a length of 0 zeroes the steps
  EXPECT_EQ(r->ancStep, 0.0);
  EXPECT_EQ(r->scrStepH, 0.0);

  // SetEnd on an unset range starts at 0, which zeroes the steps.
  cast.New(S(2), nullptr);
  EXPECT_EQ(cast.SetEnd(S(2), 9), 1);
  EXPECT_EQ(cast.Start(S(2)), 0);
  EXPECT_EQ(cast.Rec(S(2))->scrStepH, 0.0);
  // Extreme ranges do not overflow.
  cast.SetStartEnd(S(2), -2147483647 - 1, 2147483647);
  cast.SetStartEnd(S(2), 2147483647, -2147483647 - 1);
  EXPECT_EQ(cast.Start(S(2)), 2147483647);
}

TEST(QvMCastTable, AllocationFailuresInNew) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("keep"));
  EXPECT_EQ(FailAt(1, [&] { return cast.New(Txt("x")); }), -1);
  EXPECT_EQ(cast.GetNewID(), 1);
  EXPECT_EQ(cast.Count(), 1);
  // The deletion of a member with the same id stands.
  EXPECT_EQ(FailAt(1, [&] { return cast.New(S(0), Txt("y")); }), 0);
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(cast.GetNewID(), 0);
  // A name that cannot be copied leaves the member without a name.
  EXPECT_EQ(FailAt(2, [&] { return cast.New(Txt("z")); }), 0);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");
  for (int k = 1; k <= 4; ++k) {
    CastProbe c;
    const std::int16_t id = FailAt(k, [&] { return c.New(Txt("member")); });
    EXPECT_EQ(c.Count(), id == -1 ? 0 : 1) << k;
  }
}

// Every by-id operation fails for an absent id, and for any id while the store
// is locked on an absent one; nothing is created or registered.
TEST(QvMCastTable, AbsentMembersFailEverywhere) {
  NoFailures guard;
  CastProbe cast, other;
  cast.New(nullptr);
  cast.SetStartEnd(S(0), 0, 9);
  auto anim = MakeAnim({2});
  tbColorTable table = GreyTable();
  QvMCastDft dft[1];
  QvMCastAnc anc[1];
  QvAFade fade;
  Screen screen(8, 8);
  tbRect area(0, 0, 8, 8), rect;
  tbPoint p;
  char c = 0;
  double d = 0;
  std::int16_t h = 0, v = 0;
  std::int32_t a = 0, b = 0;
  std::uint32_t u = 0;
  std::int16_t x = 9;
#define CALL(expected, expr)                                  \
  {                                                           \
    expected, [&]() -> int { return static_cast<int>(expr); } \
  }
  const std::vector<std::pair<int, std::function<int()>>> calls = {
      CALL(-1, cast.RegAFrame(x, anim.get(), 0, nullptr, anim.get())),
      CALL(-1, cast.RegOrgCTable(x, &table, nullptr, nullptr)),
      CALL(-1, cast.RegDft(x, S(0), dft, S(1), 0, nullptr, anim.get())),
      CALL(-1, cast.RegScroll(x, 1, nullptr)),
      CALL(-1, cast.RegAnc(x, anc, S(1), 1, nullptr)),
      CALL(-1, cast.RegAColor(x, &fade, 3, 0, nullptr, &fade)),
      CALL(0, cast.DelAFrame(x)),
      CALL(0, cast.DelOrgCTable(x)),
      CALL(0, cast.DelDft(x)),
      CALL(0, cast.DelScroll(x, 0)),
      CALL(0, cast.DelAnc(x)),
      CALL(0, cast.DelAColor(x, 3)),
      CALL(0, cast.Empty(x)),
      CALL(0, cast.Del(x)),
      CALL(0, cast.SetName(x, Txt("n"))),
      CALL(0, cast.ActFlag(x)),
      CALL(0, cast.SetActFlag(x, 1)),
      CALL(0, cast.ResetActFlag(x)),
      CALL(0, cast.GetActFlag(x, &u)),
      CALL(0, cast.SetShowFlag(x, 1)),
      CALL(0, cast.ResetShowFlag(x)),
      CALL(0, cast.GetShowFlag(x, &u)),
      CALL(-1, cast.Start(x)),
      CALL(-1, cast.End(x)),
      CALL(0, cast.SetStartEnd(x, 0, 1)),
      CALL(0, cast.SetStart(x, 0)),
      CALL(0, cast.SetEnd(x, 0)),
      CALL(0, cast.AFrame(x) != nullptr),
      CALL(0, cast.IsDft(x)),
      CALL(0, cast.IsAnc(x)),
      CALL(0, cast.IsScroll(x, &c)),
      CALL(0, cast.IsScrollLeft(x)),
      CALL(0, cast.IsScrollRight(x)),
      CALL(0, cast.IsScrollUp(x)),
      CALL(0, cast.IsScrollDown(x)),
      CALL(0, cast.GetDft(x, &h, nullptr, &v, &c)),
      CALL(0, cast.SetAnc(x, S(0), p, 0)),
      CALL(0, cast.OffsetAnc(x, S(1), S(1))),
      CALL(0, cast.ResetAnc(x)),
      CALL(0, cast.InbetweenAnc(x, 0)),
      CALL(0, cast.SetAncType(x, 1)),
      CALL(0, cast.SetAncOffset(x, S(1))),
      CALL(0, cast.SetAncOffset(x, &p)),
      CALL(0, cast.GetAncOffset(x, &h)),
      CALL(0, cast.GetAncNum(x, &h)),
      CALL(0, cast.SetAncStep(x, 1.0)),
      CALL(0, cast.GetAncStep(x, &d)),
      CALL(0, cast.SetAncCount(x, 1.0)),
      CALL(0, cast.GetAncCount(x, S(1), &d)),
      CALL(0, cast.SetAncSelectArea(x, 0, 1)),
      CALL(0, cast.GetAncSelectArea(x, &a, &b)),
      CALL(0, cast.GetAnc(x, S(0), &p, &c)),
      CALL(0, cast.GetAnc(x, std::int32_t{0}, &p, &c)),
      CALL(0, cast.SetScrStepH(x, 1.0)),
      CALL(0, cast.SetScrStepV(x, 1.0)),
      CALL(0, cast.GetScrStepH(x, &d)),
      CALL(0, cast.GetScrStepV(x, &d)),
      CALL(0, cast.SetScrCountH(x, 1.0)),
      CALL(0, cast.SetScrCountV(x, 1.0)),
      CALL(0, cast.GetScrCountH(x, S(1), &d)),
      CALL(0, cast.GetScrCountV(x, S(1), &d)),
      CALL(0, cast.GetScroll(x, 0, &h, &v)),
      CALL(0, cast.DrawPicture(x, 0, &screen.pixMap, &area)),
      CALL(0, cast.CTable(x, 0) != nullptr),
      CALL(0, cast.GetAFrameArea(x, 0, &area, 0, &rect, &p)),
      CALL(0, cast.PtInAFrame(&p, x, 0, &area, 0)),
      CALL(0, cast.Icon(x, S(8), S(8)) != nullptr),
      CALL(-1, cast.Dup(x, 0, nullptr, &other, S(-1))),
      CALL(0, cast.Backup(x, &other)),
      CALL(0, cast.ACycle(x) != nullptr),
      CALL(0, cast.AFlash(x) != nullptr),
      CALL(0, cast.ASwitch(x) != nullptr),
      CALL(0, cast.AFade(x) != nullptr),
      CALL(0, cast.IsAColor(x))};
#undef CALL
  for (int pass = 0; pass < 2; ++pass) {
    if (pass == 1) {
      cast.Lock(S(7));
      x = 0;
    }
    for (size_t i = 0; i < calls.size(); ++i) {
      SCOPED_TRACE(testing::Message() << "pass " << pass << " call " << i);
      EXPECT_EQ(calls[i].second(), calls[i].first);
    }
  }
  cast.Unlock();
  EXPECT_EQ(cast.Ids(), Ids({0}));
  EXPECT_EQ(cast.Start(S(0)), 0);
  EXPECT_EQ(cast.End(S(0)), 9);
  EXPECT_EQ(other.Count(), 0);
  EXPECT_EQ(ListSize(*anim) + ListSize(fade), 0);
}

TEST(QvMCastTable, LoadAndSaveDoNothing) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  char path[] = "movie.cast";
  EXPECT_EQ(cast.Load(3) | cast.Load(path) | cast.Save(3) | cast.Save(3, S(0)) |
                cast.Save(path, 0u, 0u) | cast.SaveEnd(3) | cast.SaveTerm(3),
            0);
  EXPECT_EQ(cast.Count(), 1);
}
