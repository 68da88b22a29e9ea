// Attachments (frame animation copies, own colour table, Dft entries, scroll
// directions) and the scroll arithmetic.
#include <gtest/gtest.h>

#include "cast/QvMCast.h"
#include "player/QvMCastList.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"

using namespace casttest;

namespace {

int ListSize(QvMCastList& list) {
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  int n = 0;
  while (list.Get(S(n), &c, &id)) ++n;
  return n;
}

bool ListHas(QvMCastList& list, QvMCast* cast, std::int16_t id) {
  QvMCast* c = nullptr;
  std::int16_t i = 0;
  for (int n = 0; list.Get(S(n), &c, &i); ++n) {
    if (c == cast && i == id) return true;
  }
  return false;
}

}  // namespace

TEST(QvMCastAttach, RegAFrameCreatesAMemberWithTheAnimationsRange) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({4, 4, 4});
  ASSERT_EQ(anim->CountMFrame(), 12);
  EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), 100, Txt("walker"), nullptr), 0);
  EXPECT_EQ(cast.Count(), 1);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 111);
  QvAFrame* copy = cast.AFrame(S(0));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy, anim.get());
  EXPECT_EQ(copy->CountMFrame(), 12);
  EXPECT_EQ(copy->CountAFrame(), 3);
  EXPECT_EQ(NameOf(cast, S(0)), "walker");
  EXPECT_EQ(cast.Rec(S(0))->lists[4], nullptr);

  // A second registration keeps the range.
  auto longer = MakeAnim({30});
  EXPECT_EQ(cast.RegAFrame(S(0), longer.get(), 500, Txt("walker"), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 111);
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 30);
}

TEST(QvMCastAttach, RegistrationOnAnAbsentIdCreatesNothing) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2});
  EXPECT_EQ(cast.RegAFrame(S(3), anim.get(), 0, nullptr, anim.get()), -1);
  EXPECT_EQ(cast.RegScroll(S(3), 1, nullptr), -1);
  tbColorTable table = GreyTable();
  EXPECT_EQ(cast.RegOrgCTable(S(3), &table, nullptr, nullptr), -1);
  QvMCastDft dft[1];
  EXPECT_EQ(cast.RegDft(S(3), S(0), dft, S(1), 0, nullptr, nullptr), -1);
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(ListSize(*anim), 0);
  EXPECT_EQ(cast.DelAFrame(S(3)), 0);
  EXPECT_EQ(cast.DelOrgCTable(S(3)), 0);
  EXPECT_EQ(cast.DelDft(S(3)), 0);
  EXPECT_EQ(cast.DelScroll(S(3), 0), 0);
  EXPECT_EQ(cast.AFrame(S(3)), nullptr);
  EXPECT_EQ(cast.IsDft(S(3)), 0);
  EXPECT_EQ(cast.IsAnc(S(3)), 0);
}

TEST(QvMCastAttach, TheCopyIsPrivate) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({5});
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  anim->SetInterval(S(0), S(9));
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 5);
  anim.reset();
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 5);
}

TEST(QvMCastAttach, ListBackReferences) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2});
  EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get()), 0);
  EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get()), 1);
  EXPECT_EQ(ListSize(*anim), 2);
  EXPECT_TRUE(ListHas(*anim, &cast, S(1)));
  EXPECT_EQ(cast.Rec(S(0))->lists[4], anim.get());
  // Registering the same pair again adds nothing.
  EXPECT_EQ(cast.RegAFrame(S(0), anim.get(), 0, nullptr, anim.get()), 0);
  EXPECT_EQ(ListSize(*anim), 2);

  EXPECT_EQ(cast.DelAFrame(S(0)), 1);
  EXPECT_EQ(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.Rec(S(0))->lists[4], nullptr);
  EXPECT_EQ(ListSize(*anim), 1);
  EXPECT_FALSE(ListHas(*anim, &cast, S(0)));

  // Deleting a member takes it out of the list.
  EXPECT_EQ(cast.Del(S(1)), 1);
  EXPECT_EQ(ListSize(*anim), 0);
}

TEST(QvMCastAttach, ANullAnimationRemovesTheCopyButKeepsFlagsAndRecordsTheList) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2});
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  cast.SetActFlag(S(0), 0x010u);
  EXPECT_EQ(cast.RegAFrame(S(0), nullptr, 0, nullptr, anim.get()), 0);
  EXPECT_EQ(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x010u);
  EXPECT_TRUE(ListHas(*anim, &cast, S(0)));
}

TEST(QvMCastAttach, RegisteringAnotherListLetsTheOldOneForgetTheMember) {
  NoFailures guard;
  CastProbe cast;
  auto a = MakeAnim({2});
  auto b = MakeAnim({3});
  cast.RegAFrame(S(-1), a.get(), 0, nullptr, a.get());
  cast.RegAFrame(S(0), b.get(), 0, nullptr, b.get());
  EXPECT_EQ(ListSize(*a), 0);
  EXPECT_TRUE(ListHas(*b, &cast, S(0)));
  // A later change of a no longer reaches the member.
  a->SetInterval(S(0), S(7));
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 3);
  b->SetInterval(S(0), S(6));
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 6);
}

TEST(QvMCastAttach, RegisteringTheMembersOwnCopyAgain) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2, 3});
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  EXPECT_EQ(cast.RegAFrame(S(0), cast.AFrame(S(0)), 0, nullptr, nullptr), 0);
  ASSERT_NE(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 5);
}

TEST(QvMCastAttach, FailedCopyLeavesNoFrameAnimation) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({4});
  cast.New(nullptr);
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegAFrame(S(0), anim.get(), 10, Txt("n"), anim.get()), 0);
  QvFailAllocation(0);
  EXPECT_EQ(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_TRUE(ListHas(*anim, &cast, S(0)));

  // Failures inside the animation's own copy leave a partial copy and no leak.
  for (int k = 2; k <= 6; ++k) {
    QvFailAllocation(k);
    EXPECT_EQ(cast.RegAFrame(S(0), anim.get(), 10, nullptr, nullptr), 0);
    QvFailAllocation(0);
  }
  // A failed creation of a new member gives -1.
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), 10, nullptr, anim.get()), -1);
  QvFailAllocation(0);
  EXPECT_EQ(cast.Count(), 1);
}

TEST(QvMCastAttach, OwnColourTableAndFillIndex) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  QvPal tenIndices = PalRange(0, 9);
  EXPECT_EQ(cast.RegOrgCTable(S(-1), &table, &tenIndices, Txt("t")), 0);
  QvMCastInfo* r = cast.Rec(S(0));
  ASSERT_NE(r->orgCTable, nullptr);
  EXPECT_NE(r->orgCTable, &table);
  EXPECT_TRUE(*r->orgCTable == table);
  ASSERT_NE(r->orgPal, nullptr);
  EXPECT_EQ(r->orgPal->Flag(9), 1);
  EXPECT_EQ(r->orgPal->Flag(10), 0);
  EXPECT_EQ(r->fillIndex, 10);
  EXPECT_EQ(NameOf(cast, S(0)), "t");

  QvPal all = PalRange(0, 255);
  EXPECT_EQ(cast.RegOrgCTable(S(0), &table, &all, nullptr), 0);
  EXPECT_EQ(r->fillIndex, 0);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");

  QvPal some = PalRange(0, 3);
  cast.RegOrgCTable(S(0), &table, &some, nullptr);
  EXPECT_EQ(r->fillIndex, 4);
  // Without an area the fill index stays.
  cast.RegOrgCTable(S(0), &table, nullptr, nullptr);
  EXPECT_EQ(r->orgPal, nullptr);
  EXPECT_EQ(r->fillIndex, 4);
  // The registration keeps no mask bit.
  EXPECT_EQ(cast.ActFlag(S(0)), 0u);

  EXPECT_EQ(cast.DelOrgCTable(S(0)), 1);
  EXPECT_EQ(r->orgCTable, nullptr);
  EXPECT_EQ(r->fillIndex, 4);
}

TEST(QvMCastAttach, OwnTableRegisteredAgainFromItself) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  QvPal pal = PalRange(0, 5);
  cast.RegOrgCTable(S(-1), &table, &pal, nullptr);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(cast.RegOrgCTable(S(0), r->orgCTable, r->orgPal, nullptr), 0);
  EXPECT_TRUE(*r->orgCTable == table);
  EXPECT_EQ(r->fillIndex, 6);
}

TEST(QvMCastAttach, OwnTableAllocationFailures) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  QvPal pal = PalRange(0, 5);
  cast.New(nullptr);
  cast.RegOrgCTable(S(0), &table, &pal, Txt("kept?"));
  QvMCastInfo* r = cast.Rec(S(0));

  QvFailAllocation(1);  // the table
  EXPECT_EQ(cast.RegOrgCTable(S(0), &table, &pal, nullptr), -1);
  QvFailAllocation(0);
  EXPECT_EQ(r->orgCTable, nullptr);
  EXPECT_EQ(r->orgPal, nullptr);
  EXPECT_EQ(NameOf(cast, S(0)), "kept?");

  QvFailAllocation(2);  // the palette area
  EXPECT_EQ(cast.RegOrgCTable(S(0), &table, &pal, nullptr), -1);
  QvFailAllocation(0);
  EXPECT_NE(r->orgCTable, nullptr);
  EXPECT_EQ(r->orgPal, nullptr);

  // A new member is made without a name, then named.
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegOrgCTable(S(-1), &table, nullptr, Txt("x")), -1);
  QvFailAllocation(0);
  EXPECT_EQ(cast.Count(), 1);
}

TEST(QvMCastAttach, OffScreenWorldNeedsFrameAnimationAndTable) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2}, 6, 3, 1, 1);
  tbColorTable table = GreyTable();
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(r->orgGWorld, nullptr);
  cast.RegOrgCTable(S(0), &table, nullptr, nullptr);
  ASSERT_NE(r->orgGWorld, nullptr);
  EXPECT_EQ(r->orgGWorld->bounds, tbRect(0, 0, 6, 3));
  EXPECT_TRUE(*r->orgGWorld->CTable() == table);
  // Removing the table keeps the world.
  cast.DelOrgCTable(S(0));
  EXPECT_NE(r->orgGWorld, nullptr);
  cast.DelAFrame(S(0));
  EXPECT_NE(r->orgGWorld, nullptr);
  cast.Empty(S(0));
  EXPECT_EQ(r->orgGWorld, nullptr);
}

TEST(QvMCastAttach, DftEntries) {
  NoFailures guard;
  CastProbe cast;
  auto list = std::make_unique<QvMCastList>();
  QvMCastDft entries[3];
  for (int i = 0; i < 3; ++i) {
    entries[i].pointA = tbPoint(i, 1);
    entries[i].pointB = tbPoint(i, 2);
    entries[i].pointC = tbPoint(i, 3);
    entries[i].flag = static_cast<char>(i + 1);
  }
  EXPECT_EQ(cast.RegDft(S(-1), S(42), entries, S(3), 7, Txt("d"), list.get()), 0);
  EXPECT_EQ(cast.IsDft(S(0)), 1);
  EXPECT_TRUE(ListHas(*list, &cast, S(0)));
  std::int16_t param = 0, count = 0;
  QvMCastDft* got = nullptr;
  char flag = 0;
  EXPECT_EQ(cast.GetDft(S(0), &param, &got, &count, &flag), 1);
  EXPECT_EQ(param, 42);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(flag, 7);
  ASSERT_NE(got, nullptr);
  EXPECT_NE(got, entries);
  EXPECT_EQ(got[2].pointC, tbPoint(2, 3));
  EXPECT_EQ(got[1].flag, 2);
  // Null outputs are skipped.
  EXPECT_EQ(cast.GetDft(S(0), nullptr, nullptr, nullptr, nullptr), 1);

  cast.SetAncType(S(0), 3);
  EXPECT_EQ(cast.DelDft(S(0)), 1);
  EXPECT_EQ(cast.IsDft(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->ancType, 1);
  EXPECT_EQ(cast.GetDft(S(0), &param, &got, &count, &flag), 0);
  EXPECT_EQ(ListSize(*list), 0);
}

TEST(QvMCastAttach, DftWithoutEntriesStillStoresParamAndFlag) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  QvMCastDft entries[2];
  EXPECT_EQ(cast.RegDft(S(0), S(5), nullptr, S(2), 3, nullptr, nullptr), 0);
  EXPECT_EQ(cast.IsDft(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->dftParam, 5);
  EXPECT_EQ(cast.Rec(S(0))->dftFlag, 3);
  // A count below 1 gives no entries.
  EXPECT_EQ(cast.RegDft(S(0), S(5), entries, S(0), 3, nullptr, nullptr), 0);
  EXPECT_EQ(cast.IsDft(S(0)), 0);
  EXPECT_EQ(cast.RegDft(S(0), S(5), entries, S(-4), 3, nullptr, nullptr), 0);
  EXPECT_EQ(cast.IsDft(S(0)), 0);
  // A failed allocation also gives none.
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegDft(S(0), S(6), entries, S(2), 4, nullptr, nullptr), 0);
  QvFailAllocation(0);
  EXPECT_EQ(cast.IsDft(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->dftParam, 6);
  // The member's own entries may be registered again.
  cast.RegDft(S(0), S(1), entries, S(2), 0, nullptr, nullptr);
  EXPECT_EQ(cast.RegDft(S(0), S(1), cast.Rec(S(0))->dft, S(2), 0, nullptr, nullptr), 0);
  EXPECT_EQ(cast.IsDft(S(0)), 1);
}

TEST(QvMCastAttach, ScrollDirections) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  const std::int16_t id = 0;
  char dirs = 0;
  EXPECT_EQ(cast.IsScroll(id, &dirs), 0);
  cast.RegScroll(id, 1, nullptr);
  cast.RegScroll(id, 2, nullptr);
  EXPECT_EQ(cast.IsScroll(id, &dirs), 1);
  EXPECT_EQ(dirs, 2);
  cast.RegScroll(id, 4, nullptr);
  EXPECT_EQ(cast.IsScroll(id, &dirs), 1);
  EXPECT_EQ(dirs, 6);
  EXPECT_EQ(cast.IsScrollRight(id), 1);
  EXPECT_EQ(cast.IsScrollUp(id), 1);
  EXPECT_EQ(cast.IsScrollLeft(id), 0);
  EXPECT_EQ(cast.IsScrollDown(id), 0);
  EXPECT_EQ(cast.DelScroll(id, 4), 1);
  EXPECT_EQ(cast.IsScroll(id, &dirs), 1);
  EXPECT_EQ(dirs, 2);
  cast.RegScroll(id, 8, nullptr);
  cast.RegScroll(id, 4, nullptr);
  EXPECT_EQ(cast.IsScroll(id, &dirs), 1);
  EXPECT_EQ(dirs, 6);
  EXPECT_EQ(cast.RegScroll(id, 0, nullptr), id);
  EXPECT_EQ(cast.IsScroll(id, nullptr), 0);
  // Both of a pair at once are both set.
  cast.RegScroll(id, 3, nullptr);
  EXPECT_EQ(cast.IsScrollLeft(id), 1);
  EXPECT_EQ(cast.IsScrollRight(id), 1);
  EXPECT_EQ(cast.DelScroll(id, 0), 1);
  EXPECT_EQ(cast.IsScroll(id, nullptr), 0);
}

TEST(QvMCastAttach, ScrollOffsets) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  const std::int16_t id = 0;
  cast.SetStartEnd(id, 10, 40);
  cast.SetScrStepH(id, 2.5);
  cast.RegScroll(id, 1, nullptr);
  std::int16_t h = 99, v = 99;
  EXPECT_EQ(cast.GetScroll(id, 13, &h, &v), 1);
  EXPECT_EQ(h, -7);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(cast.GetScroll(id, 10, &h, &v), 1);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(v, 0);
  h = v = 99;
  EXPECT_EQ(cast.GetScroll(id, 9, &h, &v), 0);
  EXPECT_EQ(cast.GetScroll(id, 41, &h, &v), 0);
  EXPECT_EQ(h, 99);
  EXPECT_EQ(v, 99);
  EXPECT_EQ(cast.GetScroll(S(5), 13, &h, &v), 0);

  // Left wins over right, up over down.
  cast.SetScrStepV(id, 1.5);
  cast.RegScroll(id, 3 | 12, nullptr);
  EXPECT_EQ(cast.GetScroll(id, 14, &h, &v), 1);
  EXPECT_EQ(h, -10);
  EXPECT_EQ(v, -6);
  cast.RegScroll(id, 8, nullptr);
  cast.DelScroll(id, 1);
  cast.RegScroll(id, 2, nullptr);
  EXPECT_EQ(cast.GetScroll(id, 14, &h, &v), 1);
  EXPECT_EQ(h, 10);
  EXPECT_EQ(v, 6);
  double step = 0;
  EXPECT_EQ(cast.GetScrStepH(id, &step), 1);
  EXPECT_EQ(step, 2.5);
  EXPECT_EQ(cast.GetScrStepV(id, &step), 1);
  EXPECT_EQ(step, 1.5);
  EXPECT_EQ(cast.GetScrStepV(S(5), &step), 0);
}

TEST(QvMCastAttach, DefaultStepScrollsFivePixelsPerUnit) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({20});
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  cast.RegScroll(S(0), 2, nullptr);
  std::int16_t h = 0, v = 0;
  EXPECT_EQ(cast.GetScroll(S(0), 5, &h, &v), 1);
  EXPECT_EQ(h, 25);
  EXPECT_EQ(v, 0);
}

TEST(QvMCastAttach, HugeScrollStepsStayDefined) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  cast.SetStartEnd(S(0), -2147483647 - 1, 2147483647);
  cast.SetScrStepH(S(0), 1e300);
  cast.SetScrStepV(S(0), -1e300);
  cast.RegScroll(S(0), 1 | 8, nullptr);
  std::int16_t h = 1, v = 1;
  EXPECT_EQ(cast.GetScroll(S(0), 2147483647, &h, &v), 1);
  // Values without a 32-bit representation become INT32_MIN, whose low
  // 16 bits are 0.
  EXPECT_EQ(h, 0);
  EXPECT_EQ(v, 0);
  cast.SetScrStepH(S(0), 3.0);
  EXPECT_EQ(cast.GetScroll(S(0), 100000, &h, &v), 1);
}

TEST(QvMCastAttach, ScrollCounts) {
  NoFailures guard;
  CastProbe cast;
  auto wide = MakeAnim({3}, 200, 1, 0, 0);
  cast.RegAFrame(S(-1), wide.get(), 0, nullptr, nullptr);
  const std::int16_t id = 0;
  EXPECT_EQ(cast.SetScrCountH(id, 10.0), 1);
  double v = 0;
  EXPECT_EQ(cast.GetScrStepH(id, &v), 1);
  EXPECT_DOUBLE_EQ(v, 20.0);
  EXPECT_EQ(cast.GetScrCountH(id, S(1), &v), 1);
  EXPECT_DOUBLE_EQ(v, 10.0);
  EXPECT_EQ(cast.GetScrCountH(id, S(3), &v), 1);
  EXPECT_DOUBLE_EQ(v, 30.0);
  EXPECT_EQ(cast.SetScrCountV(id, 4.0), 1);
  EXPECT_EQ(cast.GetScrStepV(id, &v), 1);
  EXPECT_DOUBLE_EQ(v, 0.25);
  EXPECT_EQ(cast.GetScrCountV(id, S(2), &v), 1);
  EXPECT_DOUBLE_EQ(v, 8.0);

  cast.New(nullptr);
  EXPECT_EQ(cast.SetScrCountV(S(1), 4.0), 1);
  EXPECT_EQ(cast.GetScrStepV(S(1), &v), 1);
  EXPECT_EQ(v, 0.0);
  v = 5;
  EXPECT_EQ(cast.GetScrCountV(S(1), S(3), &v), 1);
  EXPECT_EQ(v, 0.0);
  EXPECT_EQ(cast.SetScrCountH(S(9), 1.0), 0);
  EXPECT_EQ(cast.GetScrCountH(S(9), S(1), &v), 0);

  // A frame animation without frames counts as an image of size 0.
  QvAFrame empty;
  cast.RegAFrame(S(1), &empty, 0, nullptr, nullptr);
  EXPECT_EQ(cast.SetScrCountH(S(1), 2.0), 1);
  EXPECT_EQ(cast.GetScrStepH(S(1), &v), 1);
  EXPECT_EQ(v, 0.0);
}

TEST(QvMCastAttach, RegistrationsSetOrRemoveTheName) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("old"));
  cast.RegScroll(S(0), 1, nullptr);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");
  cast.RegScroll(S(0), 1, Txt("new"));
  EXPECT_EQ(NameOf(cast, S(0)), "new");
}
