// Attachments (frame animation copies, own colour table, Dft entries, scroll
// directions) and the scroll arithmetic.
#include <gtest/gtest.h>

#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"

using namespace casttest;

TEST(QvMCastAttach, RegAFrameCopiesTheAnimationAndSetsTheFirstRange) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({4, 4, 4});
  EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), 100, Txt("walker"), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 111);
  QvAFrame* copy = cast.AFrame(S(0));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy, anim.get());
  EXPECT_EQ(copy->CountAFrame(), 3);
  EXPECT_EQ(NameOf(cast, S(0)), "walker");
  // The copy is private: the host's changes and destruction do not reach it.
  anim->SetInterval(S(0), S(9));
  anim.reset();
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 12);
  // A second registration keeps the range; the member's own copy may be given.
  auto longer = MakeAnim({30});
  EXPECT_EQ(cast.RegAFrame(S(0), longer.get(), 500, nullptr, nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 111);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");  // a null name removes the name
  EXPECT_EQ(cast.RegAFrame(S(0), cast.AFrame(S(0)), 0, nullptr, nullptr), 0);
  ASSERT_NE(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 30);
}

TEST(QvMCastAttach, FrameListBackReferences) {
  NoFailures guard;
  CastProbe cast;
  auto a = MakeAnim({2});
  auto b = MakeAnim({3});
  EXPECT_EQ(cast.RegAFrame(S(-1), a.get(), 0, nullptr, a.get()), 0);
  EXPECT_EQ(cast.RegAFrame(S(-1), a.get(), 0, nullptr, a.get()), 1);
  EXPECT_EQ(cast.RegAFrame(S(0), a.get(), 0, nullptr, a.get()), 0);  // the pair is there already
  EXPECT_EQ(ListSize(*a), 2);
  EXPECT_EQ(cast.Rec(S(0))->lists[4], a.get());
  EXPECT_EQ(cast.DelAFrame(S(0)), 1);
  EXPECT_EQ(cast.Rec(S(0))->lists[4], nullptr);
  EXPECT_FALSE(ListHas(*a, &cast, S(0)));
  EXPECT_EQ(cast.Del(S(1)), 1);  // deleting a member leaves the list too
  EXPECT_EQ(ListSize(*a), 0);

  // A null animation removes the copy, keeps the flags and records the list.
  cast.RegAFrame(S(0), b.get(), 0, nullptr, nullptr);
  cast.SetActFlag(S(0), 0x010u);
  EXPECT_EQ(cast.RegAFrame(S(0), nullptr, 0, nullptr, a.get()), 0);
  EXPECT_EQ(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x010u);
  EXPECT_TRUE(ListHas(*a, &cast, S(0)));
  // Registering another list takes the member out of the old one, so only the
  // new animation's changes reach the copy.
  cast.RegAFrame(S(0), b.get(), 0, nullptr, b.get());
  EXPECT_EQ(ListSize(*a), 0);
  EXPECT_TRUE(ListHas(*b, &cast, S(0)));
  a->SetInterval(S(0), S(7));
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 3);
  b->SetInterval(S(0), S(6));
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 6);
}

TEST(QvMCastAttach, FrameCopyAllocationFailures) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({4});
  cast.New(nullptr);
  EXPECT_EQ(FailAt(1, [&] { return cast.RegAFrame(S(0), anim.get(), 10, Txt("n"), anim.get()); }),
            0);
  EXPECT_EQ(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_TRUE(ListHas(*anim, &cast, S(0)));
  // Failures inside the animation's own copy leave a partial copy, no leak.
  for (int k = 2; k <= 6; ++k) {
    EXPECT_EQ(FailAt(k, [&] { return cast.RegAFrame(S(0), anim.get(), 10, nullptr, nullptr); }), 0);
  }
  EXPECT_EQ(FailAt(1, [&] { return cast.RegAFrame(S(-1), anim.get(), 10, nullptr, anim.get()); }),
            -1);
  EXPECT_EQ(cast.Count(), 1);
}

TEST(QvMCastAttach, OwnColourTableFillIndexAndWorld) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  struct Case {
    int first, last;  // palette area; last < 0 for none
    int fill;
  };
  const Case cases[] = {{0, 9, 10}, {0, 255, 0}, {0, 3, 4}, {0, -1, 4}};
  ASSERT_EQ(cast.RegOrgCTable(S(-1), &table, nullptr, Txt("t")), 0);
  QvMCastInfo* r = cast.Rec(S(0));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.last);
    QvPal pal = PalRange(c.first, c.last < 0 ? 0 : c.last);
    EXPECT_EQ(cast.RegOrgCTable(S(0), &table, c.last < 0 ? nullptr : &pal, nullptr), 0);
    EXPECT_EQ(r->fillIndex, c.fill);
    EXPECT_EQ(r->orgPal != nullptr, c.last >= 0);
  }
  ASSERT_NE(r->orgCTable, nullptr);
  EXPECT_NE(r->orgCTable, &table);
  EXPECT_TRUE(*r->orgCTable == table);
  EXPECT_EQ(cast.ActFlag(S(0)), 0u);
  // The member's own table and area may be registered again.
  QvPal six = PalRange(0, 5);
  cast.RegOrgCTable(S(0), &table, &six, nullptr);
  EXPECT_EQ(cast.RegOrgCTable(S(0), r->orgCTable, r->orgPal, nullptr), 0);
  EXPECT_TRUE(*r->orgCTable == table);
  EXPECT_EQ(r->fillIndex, 6);

  // The off-screen world needs both the table and a frame animation.
  EXPECT_EQ(r->orgGWorld, nullptr);
  auto anim = MakeAnim({2}, 6, 3, 1, 1);
  cast.RegAFrame(S(0), anim.get(), 0, nullptr, nullptr);
  ASSERT_NE(r->orgGWorld, nullptr);
  EXPECT_EQ(r->orgGWorld->bounds, tbRect(0, 0, 6, 3));
  EXPECT_TRUE(*r->orgGWorld->CTable() == table);
  EXPECT_EQ(cast.DelOrgCTable(S(0)), 1);
  EXPECT_EQ(r->orgCTable, nullptr);
  EXPECT_EQ(r->fillIndex, 6);
  cast.DelAFrame(S(0));
  EXPECT_NE(r->orgGWorld, nullptr);  // removals keep the world
  cast.Empty(S(0));
  EXPECT_EQ(r->orgGWorld, nullptr);
}

TEST(QvMCastAttach, OwnTableAllocationFailures) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  QvPal pal = PalRange(0, 5);
  cast.New(nullptr);
  cast.RegOrgCTable(S(0), &table, &pal, Txt("kept"));
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ(FailAt(1, [&] { return cast.RegOrgCTable(S(0), &table, &pal, nullptr); }), -1);
  EXPECT_EQ(r->orgCTable, nullptr);
  EXPECT_EQ(r->orgPal, nullptr);
  EXPECT_EQ(NameOf(cast, S(0)), "kept");
  EXPECT_EQ(FailAt(2, [&] { return cast.RegOrgCTable(S(0), &table, &pal, nullptr); }), -1);
  EXPECT_NE(r->orgCTable, nullptr);
  EXPECT_EQ(r->orgPal, nullptr);
  EXPECT_EQ(FailAt(1, [&] { return cast.RegOrgCTable(S(-1), &table, nullptr, Txt("x")); }), -1);
  EXPECT_EQ(cast.Count(), 1);
}

TEST(QvMCastAttach, DftEntries) {
  NoFailures guard;
  CastProbe cast;
  QvMCastList list;
  QvMCastDft entries[3];
  for (int i = 0; i < 3; ++i) {
    entries[i].pointC = tbPoint(i, 3);
    entries[i].flag = static_cast<char>(i + 1);
  }
  EXPECT_EQ(cast.RegDft(S(-1), S(42), entries, S(3), 7, Txt("d"), &list), 0);
  EXPECT_TRUE(ListHas(list, &cast, S(0)));
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
  EXPECT_EQ(cast.GetDft(S(0), nullptr, nullptr, nullptr, nullptr), 1);
  // The member's own entries may be registered again.
  EXPECT_EQ(cast.RegDft(S(0), S(42), got, S(3), 7, Txt("d"), &list), 0);
  EXPECT_EQ(cast.Rec(S(0))->dft[2].pointC, tbPoint(2, 3));

  cast.SetAncType(S(0), 3);
  EXPECT_EQ(cast.DelDft(S(0)), 1);
  EXPECT_EQ(cast.IsDft(S(0)), 0);
  EXPECT_EQ(cast.Rec(S(0))->ancType, 1);
  EXPECT_EQ(cast.GetDft(S(0), &param, &got, &count, &flag), 0);
  EXPECT_EQ(ListSize(list), 0);

  // No entries, a count below 1 or a failed allocation: no array, but the
  // param and flag are stored.
  for (int k = 0; k < 4; ++k) {
    SCOPED_TRACE(k);
    const std::int16_t n = k == 1 ? 0 : k == 2 ? -4 : 2;
    EXPECT_EQ(FailAt(k == 3 ? 1 : 0,
                     [&] {
                       return cast.RegDft(S(0), S(5 + k), k ? entries : nullptr, n, 3, nullptr,
                                          nullptr);
                     }),
              0);
    EXPECT_EQ(cast.IsDft(S(0)), 0);
    EXPECT_EQ(cast.Rec(S(0))->dftParam, 5 + k);
    EXPECT_EQ(cast.Rec(S(0))->dftFlag, 3);
  }
}

TEST(QvMCastAttach, ScrollDirections) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  struct Step {
    bool reg;  // RegScroll, else DelScroll
    char dirs;
    char scroll;
  };
  const Step steps[] = {{true, 1, 1},   {true, 2, 2},   {true, 4, 6},  {false, 4, 2},
                        {true, 8, 10},  {true, 4, 6},   {true, 0, 0},  {true, 3, 3},
                        {true, 12, 15}, {false, 1, 14}, {false, 0, 0}, {true, 5, 5}};
  for (const Step& s : steps) {
    SCOPED_TRACE(testing::Message() << s.reg << " " << int(s.dirs));
    EXPECT_EQ(s.reg ? cast.RegScroll(S(0), s.dirs, nullptr) : cast.DelScroll(S(0), s.dirs),
              s.reg ? 0 : 1);
    char dirs = 99;
    EXPECT_EQ(cast.IsScroll(S(0), &dirs), s.scroll != 0);
    EXPECT_EQ(dirs, s.scroll ? s.scroll : 99);
    EXPECT_EQ(cast.IsScrollLeft(S(0)), (s.scroll & 1) != 0);
    EXPECT_EQ(cast.IsScrollRight(S(0)), (s.scroll & 2) != 0);
    EXPECT_EQ(cast.IsScrollUp(S(0)), (s.scroll & 4) != 0);
    EXPECT_EQ(cast.IsScrollDown(S(0)), (s.scroll & 8) != 0);
  }
}

TEST(QvMCastAttach, ScrollOffsets) {
  NoFailures guard;
  CastProbe cast;
  cast.New(nullptr);
  cast.SetStartEnd(S(0), 10, 40);
  cast.SetScrStepH(S(0), 2.5);
  cast.SetScrStepV(S(0), 1.5);
  struct Case {
    char dirs;  // registered after clearing
    std::int32_t time;
    char ok;
    std::int16_t h, v;
  };
  const Case cases[] = {{1, 13, 1, -7, 0},     {1, 10, 1, 0, 0},   {15, 10, 1, 0, 0},
                        {1, 9, 0, 99, 99},     {1, 41, 0, 99, 99}, {3 | 12, 14, 1, -10, -6},
                        {2 | 8, 14, 1, 10, 6}, {0, 14, 1, 0, 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << int(c.dirs) << " " << c.time);
    cast.RegScroll(S(0), 0, nullptr);
    cast.RegScroll(S(0), c.dirs, nullptr);
    std::int16_t h = 99, v = 99;
    EXPECT_EQ(cast.GetScroll(S(0), c.time, &h, &v), c.ok);
    EXPECT_EQ(h, c.h);
    EXPECT_EQ(v, c.v);
  }
  double step = 0;
  EXPECT_EQ(cast.GetScrStepV(S(0), &step), 1);
  EXPECT_EQ(step, 1.5);

  // The default step after a first registration scrolls 5 per unit.
  auto anim = MakeAnim({20});
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  cast.RegScroll(S(1), 2, nullptr);
  std::int16_t h = 0, v = 1;
  EXPECT_EQ(cast.GetScroll(S(1), 5, &h, &v), 1);
  EXPECT_EQ(h, 25);
  EXPECT_EQ(v, 0);
  // Huge products have no 32-bit value and stay defined.
  cast.SetStartEnd(S(1), -2147483647 - 1, 2147483647);
  cast.SetScrStepH(S(1), 1e300);
  cast.SetScrStepV(S(1), -1e300);
  cast.RegScroll(S(1), 1 | 8, nullptr);
  EXPECT_EQ(cast.GetScroll(S(1), 2147483647, &h, &v), 1);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(v, 0);
}

TEST(QvMCastAttach, ScrollCounts) {
  NoFailures guard;
  CastProbe cast;
  auto wide = MakeAnim({3}, 200, 1, 0, 0);
  cast.RegAFrame(S(-1), wide.get(), 0, nullptr, nullptr);
  double v = 0;
  EXPECT_EQ(cast.SetScrCountH(S(0), 10.0), 1);
  EXPECT_EQ(cast.GetScrStepH(S(0), &v), 1);
  EXPECT_DOUBLE_EQ(v, 20.0);
  EXPECT_EQ(cast.GetScrCountH(S(0), S(1), &v), 1);
  EXPECT_DOUBLE_EQ(v, 10.0);
  EXPECT_EQ(cast.GetScrCountH(S(0), S(3), &v), 1);
  EXPECT_DOUBLE_EQ(v, 30.0);
  EXPECT_EQ(cast.SetScrCountV(S(0), 4.0), 1);
  EXPECT_DOUBLE_EQ(cast.Rec(S(0))->scrStepV, 0.25);
  EXPECT_EQ(cast.GetScrCountV(S(0), S(2), &v), 1);
  EXPECT_DOUBLE_EQ(v, 8.0);

  // Without a frame animation the step and count are 0.
  cast.New(nullptr);
  EXPECT_EQ(cast.SetScrCountV(S(1), 4.0), 1);
  EXPECT_EQ(cast.Rec(S(1))->scrStepV, 0.0);
  v = 5;
  EXPECT_EQ(cast.GetScrCountV(S(1), S(3), &v), 1);
  EXPECT_EQ(v, 0.0);
  // A frame animation without frames counts as an image of size 0.
  QvAFrame empty;
  cast.RegAFrame(S(1), &empty, 0, nullptr, nullptr);
  EXPECT_EQ(cast.SetScrCountH(S(1), 2.0), 1);
  EXPECT_EQ(cast.Rec(S(1))->scrStepH, 0.0);
}
