// The cast table: ids, creation and deletion, the lookup lock, names, flags
// and time ranges.
#include <gtest/gtest.h>

#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"

using namespace casttest;

TEST(QvMCastTable, NewStoreIsEmpty) {
  NoFailures guard;
  CastProbe cast;
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(cast.GetNewID(), 0);
  EXPECT_EQ(cast.Head(), nullptr);
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.LockFlag(), 0);
  EXPECT_EQ(cast.End(), 0);
}

TEST(QvMCastTable, AutomaticIdsCountUpAndRestartWhenEmptied) {
  NoFailures guard;
  CastProbe cast;
  EXPECT_EQ(cast.New(Txt("a")), 0);
  EXPECT_EQ(cast.New(Txt("b")), 1);
  EXPECT_EQ(cast.New(nullptr), 2);
  EXPECT_EQ(cast.GetNewID(), 3);
  EXPECT_EQ(cast.Count(), 3);
  EXPECT_EQ(cast.Del(S(1)), 1);
  // The counter never fills gaps.
  EXPECT_EQ(cast.New(Txt("c")), 3);
  EXPECT_EQ(cast.Del(S(0)), 1);
  EXPECT_EQ(cast.Del(S(2)), 1);
  EXPECT_EQ(cast.GetNewID(), 4);
  EXPECT_EQ(cast.Del(S(3)), 1);
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(cast.New(Txt("d")), 0);
}

TEST(QvMCastTable, ExplicitIdIsReplacedByTheCounter) {
  NoFailures guard;
  CastProbe cast;
  ASSERT_EQ(cast.New(S(5), Txt("explicit")), 1);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(cast.New(Txt("auto")), i);
  EXPECT_EQ(cast.Count(), 6);
  EXPECT_EQ(cast.Ids(), (std::vector<std::int16_t>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(NameOf(cast, S(5)), "auto");
  EXPECT_NE(cast.Rec(S(5)), nullptr);
  EXPECT_TRUE(cast.LinksAgree());
}

TEST(QvMCastTable, NewWithExistingIdMovesItToTheEndAndDropsAttachments) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("a"));
  cast.New(Txt("b"));
  cast.New(Txt("c"));
  ASSERT_EQ(cast.RegScroll(S(0), 1, Txt("a2")), 0);
  cast.SetStartEnd(S(0), 3, 7);
  ASSERT_EQ(cast.New(S(0), Txt("again")), 1);
  EXPECT_EQ(cast.Count(), 3);
  EXPECT_EQ(cast.ID2Index(S(0)), 2);
  EXPECT_EQ(cast.Index2ID(S(0)), 1);
  EXPECT_EQ(cast.IsScroll(S(0), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_EQ(NameOf(cast, S(0)), "again");
  EXPECT_TRUE(cast.LinksAgree());
}

TEST(QvMCastTable, IndexAndIdLookups) {
  NoFailures guard;
  CastProbe cast;
  cast.New(S(7), nullptr);
  cast.New(S(3), nullptr);
  EXPECT_EQ(cast.ID2Index(S(7)), 0);
  EXPECT_EQ(cast.ID2Index(S(3)), 1);
  EXPECT_EQ(cast.ID2Index(S(4)), -1);
  EXPECT_EQ(cast.Index2ID(S(1)), 3);
  EXPECT_EQ(cast.Index2ID(cast.Count()), -1);
  EXPECT_EQ(cast.Index2ID(S(-1)), -1);
}

TEST(QvMCastTable, FreshMemberHasCreationValues) {
  NoFailures guard;
  CastProbe cast;
  ASSERT_EQ(cast.New(S(2), nullptr), 1);
  QvMCastInfo* r = cast.Rec(S(2));
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->name, nullptr);
  EXPECT_EQ(r->actFlag, 0u);
  EXPECT_EQ(r->ancStep, 5.0);
  EXPECT_EQ(r->ancType, 3);
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(r->ancSelEnd, -1);
  EXPECT_EQ(r->dftFlag, 0);
  EXPECT_EQ(r->scrStepH, 5.0);
  EXPECT_EQ(r->scrStepV, 5.0);
  EXPECT_EQ(r->start, -1);
  EXPECT_EQ(r->end, -1);
  EXPECT_EQ(r->icon.Pic(), nullptr);
  for (QvMCastList* l : r->lists) EXPECT_EQ(l, nullptr);
}

TEST(QvMCastTable, DeleteUnlinksFromEveryPlace) {
  NoFailures guard;
  CastProbe cast;
  for (int i = 0; i < 4; ++i) cast.New(nullptr);
  EXPECT_EQ(cast.Del(S(0)), 1);  // head
  EXPECT_EQ(cast.Del(S(3)), 1);  // tail
  EXPECT_EQ(cast.Del(S(9)), 0);  // absent
  EXPECT_EQ(cast.Ids(), (std::vector<std::int16_t>{1, 2}));
  EXPECT_TRUE(cast.LinksAgree());
  EXPECT_EQ(cast.GetNewID(), 4);
  cast.DelAll();
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(cast.GetNewID(), 0);
  EXPECT_EQ(cast.Head(), nullptr);
}

TEST(QvMCastTable, EmptyKeepsPlaceRangeAndSteps) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("a"));
  cast.New(Txt("b"));
  cast.SetStartEnd(S(0), 10, 19);
  cast.RegScroll(S(0), 2, Txt("a"));
  cast.SetActFlag(S(0), 0xFFFFFFFFu);
  cast.SetShowFlag(S(0), 0xFFFFFFFFu);
  EXPECT_EQ(cast.Empty(S(0)), 1);
  EXPECT_EQ(cast.Empty(S(5)), 0);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(cast.ID2Index(S(0)), 0);
  EXPECT_EQ(r->name, nullptr);
  EXPECT_EQ(r->scroll, 0);
  EXPECT_EQ(r->actFlag, 0u);
  EXPECT_EQ(r->showFlag, 0u);
  EXPECT_EQ(r->start, 10);
  EXPECT_EQ(r->end, 19);
  EXPECT_EQ(r->scrStepH, 0.5);
  // Emptying removes the Dft entries, which sets the clamp path type.
  EXPECT_EQ(r->ancType, 1);
}

TEST(QvMCastTable, LockActsOnTheLockedMemberWhateverTheId) {
  NoFailures guard;
  CastProbe cast;
  for (int i = 0; i < 4; ++i) cast.New(nullptr);
  cast.SetStartEnd(S(3), 30, 39);
  cast.SetStartEnd(S(1), 10, 19);
  cast.Lock(S(7));
  EXPECT_EQ(cast.LockFlag(), 1);
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.Start(S(3)), -1);
  // Counting and index lookups ignore the lock.
  EXPECT_EQ(cast.Count(), 4);
  EXPECT_EQ(cast.Index2ID(S(3)), 3);
  cast.Unlock();
  EXPECT_EQ(cast.Start(S(3)), 30);

  cast.Lock(S(1));
  EXPECT_EQ(cast.Start(S(3)), 10);
  EXPECT_EQ(cast.SetStartEnd(S(99), 11, 20), 1);
  cast.Unlock();
  EXPECT_EQ(cast.Start(S(1)), 11);
  EXPECT_EQ(cast.Start(S(3)), 30);
}

TEST(QvMCastTable, DeletingTheLockedMemberEndsTheLock) {
  NoFailures guard;
  CastProbe cast;
  for (int i = 0; i < 3; ++i) cast.New(nullptr);
  cast.SetStartEnd(S(2), 5, 6);
  cast.Lock(S(1));
  EXPECT_EQ(cast.Del(S(2)), 1);  // deletes the locked member 1
  EXPECT_EQ(cast.LockFlag(), 0);
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.Ids(), (std::vector<std::int16_t>{0, 2}));
  EXPECT_EQ(cast.Start(S(2)), 5);

  cast.Lock(S(0));
  cast.DelAll();
  EXPECT_EQ(cast.LockFlag(), 0);
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.New(nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), -1);
}

TEST(QvMCastTable, SearchLeavesItsResultInCurInfo) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  cast.New(nullptr);
  cast.Start(S(1));
  EXPECT_EQ(cast.CurInfo(), cast.Rec(S(1)));
  cast.Start(S(8));
  EXPECT_EQ(cast.CurInfo(), nullptr);
  cast.Start(S(1));
  cast.Del(S(1));
  EXPECT_EQ(cast.CurInfo(), nullptr);
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
  EXPECT_EQ(cast.SetName(S(4), Txt("x")), 0);

  unsigned char** h = reinterpret_cast<unsigned char**>(1);
  EXPECT_EQ(cast.GetName(S(4), &h), 0);
  EXPECT_EQ(h, nullptr);
  h = reinterpret_cast<unsigned char**>(1);
  EXPECT_EQ(cast.GetName(S(0), &h), 1);
  EXPECT_EQ(h, nullptr);
  EXPECT_EQ(cast.GetName(S(1), nullptr), 0);

  // The handle given out is a copy the caller owns.
  ASSERT_EQ(cast.GetName(S(1), &h), 1);
  ASSERT_NE(h, nullptr);
  EXPECT_NE(h, cast.Rec(S(1))->name);
  QvFreeString(h);

  // A name may be set from the member's own text.
  EXPECT_EQ(cast.SetName(S(1), *cast.Rec(S(1))->name), 1);
  EXPECT_EQ(NameOf(cast, S(1)), "second");
}

TEST(QvMCastTable, FlagsFollowTheAttachmentMask) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({3});
  ASSERT_EQ(cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr), 0);
  ASSERT_EQ(cast.RegScroll(S(0), 1, nullptr), 0);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x050u);
  EXPECT_EQ(cast.SetActFlag(S(0), 0xFFFFFFFFu), 1);
  EXPECT_EQ(cast.SetShowFlag(S(0), 0x010u), 1);
  std::uint32_t f = 0;
  EXPECT_EQ(cast.GetActFlag(S(0), &f), 1);
  EXPECT_EQ(f, 0x050u);
  EXPECT_EQ(cast.GetShowFlag(S(0), &f), 1);
  EXPECT_EQ(f, 0x010u);
  EXPECT_EQ(cast.DelAFrame(S(0)), 1);
  EXPECT_EQ(cast.GetActFlag(S(0), &f), 1);
  EXPECT_EQ(f, 0x040u);
  EXPECT_EQ(cast.GetShowFlag(S(0), &f), 1);
  EXPECT_EQ(f, 0u);

  // Registration never sets a flag; ResetActFlag only trims.
  cast.RegScroll(S(0), 8, nullptr);
  EXPECT_EQ(cast.GetActFlag(S(0), &f), 1);
  EXPECT_EQ(f, 0x040u);
  EXPECT_EQ(cast.ResetActFlag(S(0)), 1);
  EXPECT_EQ(cast.GetActFlag(S(0), &f), 1);
  EXPECT_EQ(f, 0x040u);

  f = 77;
  EXPECT_EQ(cast.ActFlag(S(3)), 0u);
  EXPECT_EQ(cast.GetActFlag(S(3), &f), 0);
  EXPECT_EQ(f, 77u);
  EXPECT_EQ(cast.SetActFlag(S(3), 1), 0);
  EXPECT_EQ(cast.ResetShowFlag(S(3)), 0);
  EXPECT_EQ(cast.GetActFlag(S(0), nullptr), 0);
}

TEST(QvMCastTable, MaskBitsForEveryAttachment) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  QvMCastAnc anc[2];
  QvMCastDft dft[1];
  cast.RegAnc(S(0), anc, S(2), 0, nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x020u);
  cast.DelAnc(S(0));
  cast.RegDft(S(0), S(0), dft, S(1), 0, nullptr, nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x020u);
  cast.RegScroll(S(0), 2 | 8, nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x020u | 0x080u | 0x200u);
  cast.RegScroll(S(0), 1 | 4, nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x020u | 0x040u | 0x100u);
}

TEST(QvMCastTable, TimeRanges) {
  NoFailures guard;
  CastProbe cast;
  EXPECT_EQ(cast.End(), 0);
  cast.New(nullptr);
  cast.New(nullptr);
  EXPECT_EQ(cast.End(), 0);  // every end -1
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_EQ(cast.Start(S(6)), -1);
  EXPECT_EQ(cast.End(S(6)), -1);
  EXPECT_EQ(cast.SetStartEnd(S(0), 4, 40), 1);
  EXPECT_EQ(cast.SetStartEnd(S(1), 2, 25), 1);
  EXPECT_EQ(cast.End(), 40);
  EXPECT_EQ(cast.SetStart(S(1), 30), 1);
  EXPECT_EQ(cast.Start(S(1)), 30);
  EXPECT_EQ(cast.End(S(1)), 25);  // not checked against the start
  EXPECT_EQ(cast.SetEnd(S(1), 50), 1);
  EXPECT_EQ(cast.End(), 50);
  EXPECT_EQ(cast.SetStartEnd(S(9), 0, 1), 0);
  EXPECT_EQ(cast.SetStart(S(9), 0), 0);
  EXPECT_EQ(cast.SetEnd(S(9), 0), 0);
}

TEST(QvMCastTable, StepsScaleWithTheLengthOfTheRange) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  QvMCastInfo* r = cast.Rec(S(0));
  // An unset range counts one unit long: the first range of 10 divides by 10.
  cast.SetStartEnd(S(0), 0, 9);
  EXPECT_DOUBLE_EQ(r->scrStepH, 0.5);
  EXPECT_DOUBLE_EQ(r->scrStepV, 0.5);
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
}

TEST(QvMCastTable, StepScalingResetsTheSpanAndScalesAnchorsWithDft) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  QvMCastDft dft[2];
  cast.RegDft(S(0), S(1), dft, S(2), 0, nullptr, nullptr);
  cast.SetStartEnd(S(0), 0, 9);
  cast.SetAncSelectArea(S(0), 2, 4);
  cast.SetStartEnd(S(0), 0, 4);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_DOUBLE_EQ(r->ancStep, 0.5 * 2.0);
  EXPECT_EQ(r->ancSelStart, -1);
  EXPECT_EQ(r->ancSelEnd, -1);
  // The same length leaves the span alone.
  cast.SetAncSelectArea(S(0), 2, 4);
  cast.SetStartEnd(S(0), 5, 9);
  EXPECT_EQ(r->ancSelStart, 2);
  // A new length of 0 zeroes the steps.
  cast.SetStartEnd(S(0), 5, 4);
  EXPECT_EQ(r->ancStep, 0.0);
  EXPECT_EQ(r->scrStepH, 0.0);
}

TEST(QvMCastTable, SetEndOnAnUnsetRangeStartsAtZeroAndZeroesTheSteps) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  EXPECT_EQ(cast.SetEnd(S(0), 9), 1);
  EXPECT_EQ(cast.Start(S(0)), 0);
  EXPECT_EQ(cast.End(S(0)), 9);
  EXPECT_EQ(cast.Rec(S(0))->scrStepH, 0.0);
}

TEST(QvMCastTable, ExtremeRangesDoNotOverflow) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  cast.SetStartEnd(S(0), -2147483647 - 1, 2147483647);
  cast.SetStartEnd(S(0), 2147483647, -2147483647 - 1);
  EXPECT_EQ(cast.Start(S(0)), 2147483647);
  EXPECT_EQ(cast.End(S(0)), -2147483647 - 1);
}

TEST(QvMCastTable, AllocationFailureInNew) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("keep"));
  QvFailAllocation(1);
  EXPECT_EQ(cast.New(Txt("x")), -1);
  EXPECT_EQ(cast.GetNewID(), 1);
  EXPECT_EQ(cast.Count(), 1);

  // The deletion of a member with the same id stands.
  QvFailAllocation(1);
  EXPECT_EQ(cast.New(S(0), Txt("y")), 0);
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(cast.GetNewID(), 0);

  // A name that cannot be copied leaves the member without a name.
  QvFailAllocation(2);
  EXPECT_EQ(cast.New(Txt("z")), 0);
  QvFailAllocation(0);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");
}

TEST(QvMCastTable, EveryAllocationOfNewCanFail) {
  NoFailures guard;
  for (int k = 1; k <= 4; ++k) {
    CastProbe cast;
    QvFailAllocation(k);
    const std::int16_t id = cast.New(Txt("member"));
    QvFailAllocation(0);
    if (id == -1) {
      EXPECT_EQ(cast.Count(), 0);
    } else {
      EXPECT_EQ(cast.Count(), 1);
    }
  }
}

TEST(QvMCastTable, GetNameReportsAFailedCopy) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("named"));
  unsigned char** h = nullptr;
  QvFailAllocation(1);
  EXPECT_EQ(cast.GetName(S(0), &h), 0);
  EXPECT_EQ(h, nullptr);
}

TEST(QvMCastTable, LoadAndSaveDoNothing) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  char path[] = "movie.cast";
  EXPECT_EQ(cast.Load(3), 0);
  EXPECT_EQ(cast.Load(path), 0);
  EXPECT_EQ(cast.Save(3), 0);
  EXPECT_EQ(cast.Save(3, S(0)), 0);
  EXPECT_EQ(cast.Save(path, 0u, 0u), 0);
  EXPECT_EQ(cast.SaveEnd(3), 0);
  EXPECT_EQ(cast.SaveTerm(3), 0);
  EXPECT_EQ(cast.Count(), 1);
}
