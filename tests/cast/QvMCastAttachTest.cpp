// Attachments (frame animation copies, own colour table, Dft entries, scroll
// directions) and the scroll arithmetic.
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"

using namespace casttest;
using QvMCastAttach = CastTest;

TEST_F(QvMCastAttach, RegAFrameCopiesTheAnimationAndSetsTheFirstRange) {
  auto anim = MakeAnim({4, 4, 4});
  auto longer = MakeAnim({30});
  EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), 100, Txt("walker"), nullptr), 0);
  ASSERT_NE(cast.AFrame(S(0)), nullptr);
  EXPECT_NE(cast.AFrame(S(0)), anim.get());
  EXPECT_EQ((Vals{cast.Start(S(0)), cast.End(S(0)), cast.AFrame(S(0))->CountAFrame()}),
            (Vals{100, 111, 3}));
  EXPECT_EQ(NameOf(cast, S(0)), "walker");
  anim.reset();  // the copy is private
  // A second registration keeps the range and takes the (null) name; the
  // member's own copy may be given.
  EXPECT_EQ(cast.RegAFrame(S(0), longer.get(), 500, nullptr, nullptr), 0);
  EXPECT_EQ(cast.RegAFrame(S(0), cast.AFrame(S(0)), 0, nullptr, nullptr), 0);
  ASSERT_NE(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ((Vals{cast.Start(S(0)), cast.End(S(0)), cast.AFrame(S(0))->CountMFrame()}),
            (Vals{100, 111, 30}));
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");
}

TEST_F(QvMCastAttach, FrameListBackReferences) {
  auto a = MakeAnim({2});
  auto b = MakeAnim({3});
  EXPECT_EQ((Vals{cast.RegAFrame(S(-1), a.get(), 0, nullptr, a.get()),
                  cast.RegAFrame(S(-1), a.get(), 0, nullptr, a.get()),
                  cast.RegAFrame(S(0), a.get(), 0, nullptr, a.get()), ListSize(*a)}),
            (Vals{0, 1, 0, 2}));  // a pair already there is not added again
  EXPECT_EQ(cast.Rec(S(0))->lists[4], a.get());
  EXPECT_EQ((Vals{cast.DelAFrame(S(0)), cast.Rec(S(0))->lists[4] == nullptr}), (Vals{1, 1}));
  EXPECT_EQ((Vals{ListSize(*a, &cast, S(0)), cast.Del(S(1)), ListSize(*a)}), (Vals{0, 1, 0}));

  // A null animation removes the copy, keeps the flags and records the list.
  cast.RegAFrame(S(0), b.get(), 0, nullptr, nullptr);
  cast.SetActFlag(S(0), 0x010u);
  EXPECT_EQ((Vals{cast.RegAFrame(S(0), nullptr, 0, nullptr, a.get()), cast.AFrame(S(0)) == nullptr,
                  cast.Rec(S(0))->actFlag, ListSize(*a, &cast, S(0))}),
            (Vals{0, 1, 0x010, 1}));
  // Another list takes the member out of the old one: only b's changes reach it.
  cast.RegAFrame(S(0), b.get(), 0, nullptr, b.get());
  a->SetInterval(S(0), S(7));
  EXPECT_EQ((Vals{ListSize(*a), ListSize(*b, &cast, S(0)), cast.AFrame(S(0))->CountMFrame()}),
            (Vals{0, 1, 3}));
  b->SetInterval(S(0), S(6));
  EXPECT_EQ(cast.AFrame(S(0))->CountMFrame(), 6);
}

TEST_F(QvMCastAttach, AllocationFailures) {
  auto anim = MakeAnim({4});
  cast.New(nullptr);
  // A failed frame copy: no animation, no range, but the list is recorded.
  auto reg = [&] { return cast.RegAFrame(S(0), anim.get(), 10, Txt("n"), anim.get()); };
  EXPECT_EQ((Vals{FailAt(1, reg), cast.AFrame(S(0)) == nullptr, cast.Start(S(0)),
                  ListSize(*anim, &cast, S(0))}),
            (Vals{0, 1, -1, 1}));
  // A member that cannot be made: -1.
  EXPECT_EQ(FailAt(1, [&] { return cast.RegAFrame(S(-1), nullptr, 10, nullptr, nullptr); }), -1);

  // The own table: -1 at once, what was removed stays removed.
  tbColorTable table = GreyTable();
  QvPal pal = RangePal(0, 5);
  cast.RegOrgCTable(S(0), &table, &pal, Txt("kept"));
  QvMCastInfo* r = cast.Rec(S(0));
  auto own = [&] { return cast.RegOrgCTable(S(0), &table, &pal, nullptr); };
  EXPECT_EQ((Vals{FailAt(1, own), r->orgCTable == nullptr, r->orgPal == nullptr}),
            (Vals{-1, 1, 1}));
  EXPECT_EQ(NameOf(cast, S(0)), "kept");
  EXPECT_EQ((Vals{FailAt(2, own), r->orgCTable != nullptr, r->orgPal == nullptr}),
            (Vals{-1, 1, 1}));
  EXPECT_EQ(FailAt(1, [&] { return cast.RegOrgCTable(S(-1), nullptr, nullptr, Txt("x")); }), -1);
  EXPECT_EQ(cast.Count(), 1);
}

TEST_F(QvMCastAttach, OwnColourTableFillIndexAndWorld) {
  tbColorTable table = GreyTable();
  ASSERT_EQ(cast.RegOrgCTable(S(-1), &table, nullptr, Txt("t")), 0);
  QvMCastInfo* r = cast.Rec(S(0));
  const int cases[][2] = {{9, 10}, {255, 0}, {3, 4}, {-1, 4}};  // area 0..last (none), fill
  for (const auto& c : cases) {
    QvPal pal = RangePal(0, c[0] < 0 ? 0 : c[0]);
    EXPECT_EQ(cast.RegOrgCTable(S(0), &table, c[0] < 0 ? nullptr : &pal, nullptr), 0);
    EXPECT_EQ((Vals{r->fillIndex, r->orgPal != nullptr}), (Vals{c[1], c[0] >= 0})) << c[0];
  }
  ASSERT_NE(r->orgCTable, nullptr);
  EXPECT_NE(r->orgCTable, &table);
  EXPECT_TRUE(*r->orgCTable == table);
  // The member's own table and area may be registered again.
  QvPal six = RangePal(0, 5);
  cast.RegOrgCTable(S(0), &table, &six, nullptr);
  EXPECT_EQ(cast.RegOrgCTable(S(0), r->orgCTable, r->orgPal, nullptr), 0);
  EXPECT_TRUE(*r->orgCTable == table);
  EXPECT_EQ((Vals{r->fillIndex, cast.ActFlag(S(0))}), (Vals{6, 0}));

  // The off-screen world needs both the table and a frame animation.
  EXPECT_EQ(r->orgGWorld, nullptr);
  auto anim = MakeAnim({2}, 6, 3, 1, 1);
  cast.RegAFrame(S(0), anim.get(), 0, nullptr, nullptr);
  ASSERT_NE(r->orgGWorld, nullptr);
  EXPECT_EQ(r->orgGWorld->bounds, tbRect(0, 0, 6, 3));
  EXPECT_TRUE(*r->orgGWorld->CTable() == table);
  EXPECT_EQ((Vals{cast.DelOrgCTable(S(0)), r->orgCTable == nullptr, r->fillIndex}),
            (Vals{1, 1, 6}));
  cast.DelAFrame(S(0));
  EXPECT_NE(r->orgGWorld, nullptr);  // removals keep the world
  cast.Empty(S(0));
  EXPECT_EQ(r->orgGWorld, nullptr);
}

TEST_F(QvMCastAttach, DftEntries) {
  QvMCastList list;
  QvMCastDft entries[3];
  for (int i = 0; i < 3; ++i) {
    entries[i].pointC = tbPoint(i, 3);
    entries[i].flag = static_cast<char>(i + 1);
  }
  EXPECT_EQ(cast.RegDft(S(-1), S(42), entries, S(3), 7, Txt("d"), &list), 0);
  std::int16_t param = 0, count = 0;
  QvMCastDft* got = nullptr;
  char flag = 0;
  EXPECT_EQ(
      (Vals{cast.GetDft(S(0), &param, &got, &count, &flag), param, count, flag,
            ListSize(list, &cast, S(0)), cast.GetDft(S(0), nullptr, nullptr, nullptr, nullptr)}),
      (Vals{1, 42, 3, 7, 1, 1}));
  ASSERT_NE(got, nullptr);
  EXPECT_EQ((Vals{got != entries, got[2].pointC == tbPoint(2, 3), got[1].flag}), (Vals{1, 1, 2}));
  // The member's own entries may be registered again.
  EXPECT_EQ(cast.RegDft(S(0), S(42), got, S(3), 7, Txt("d"), &list), 0);
  EXPECT_EQ(cast.Rec(S(0))->dft[2].pointC, tbPoint(2, 3));
  cast.SetAncType(S(0), QvMCast::kAncWrap);
  EXPECT_EQ((Vals{cast.DelDft(S(0)), cast.IsDft(S(0)), cast.Rec(S(0))->ancType,
                  cast.GetDft(S(0), &param, &got, &count, &flag), ListSize(list)}),
            (Vals{1, 0, 1, 0, 0}));

  // No entries, a count below 1 or a failed allocation: no array, but the
  // param and flag are stored.
  for (int k = 0; k < 4; ++k) {
    const std::int16_t n = k == 1 ? 0 : k == 2 ? -4 : 2;
    EXPECT_EQ(FailAt(k == 3 ? 1 : 0,
                     [&] {
                       return cast.RegDft(S(0), S(5 + k), k ? entries : nullptr, n, 3, nullptr,
                                          nullptr);
                     }),
              0);
    QvMCastInfo* r = cast.Rec(S(0));
    EXPECT_EQ((Vals{cast.IsDft(S(0)), r->dftParam, r->dftFlag}), (Vals{0, 5 + k, 3})) << k;
  }
}

TEST_F(QvMCastAttach, ScrollDirections) {
  cast.New(nullptr);
  // {RegScroll (1) or DelScroll (0), directions, resulting bits}
  const int steps[][3] = {{1, 1, 1}, {1, 2, 2}, {1, 4, 6},   {0, 4, 2},  {1, 8, 10}, {1, 4, 6},
                          {1, 0, 0}, {1, 3, 3}, {1, 12, 15}, {0, 1, 14}, {0, 0, 0},  {1, 5, 5}};
  for (const auto& s : steps) {
    const char dirs = static_cast<char>(s[1]);
    EXPECT_EQ(s[0] ? cast.RegScroll(S(0), dirs, nullptr) : cast.DelScroll(S(0), dirs), 1 - s[0]);
    char got = 99;
    EXPECT_EQ((Vals{cast.IsScroll(S(0), &got), got, cast.IsScrollLeft(S(0)),
                    cast.IsScrollRight(S(0)), cast.IsScrollUp(S(0)), cast.IsScrollDown(S(0))}),
              (Vals{s[2] != 0, s[2] ? s[2] : 99, (s[2] & 1) != 0, (s[2] & 2) != 0, (s[2] & 4) != 0,
                    (s[2] & 8) != 0}))
        << s[0] << " " << s[1];
  }
}

TEST_F(QvMCastAttach, ScrollOffsetsAndCounts) {
  cast.New(nullptr);
  cast.SetStartEnd(S(0), 10, 40);
  cast.SetScrStepH(S(0), 2.5);
  cast.SetScrStepV(S(0), 1.5);
  // {directions, time, result, h, v}; 99 where nothing is written
  const int cases[][5] = {{1, 13, 1, -7, 0},     {1, 10, 1, 0, 0},   {15, 10, 1, 0, 0},
                          {1, 9, 0, 99, 99},     {1, 41, 0, 99, 99}, {3 | 12, 14, 1, -10, -6},
                          {2 | 8, 14, 1, 10, 6}, {0, 14, 1, 0, 0}};
  for (const auto& c : cases) {
    cast.RegScroll(S(0), QvMCast::kScrollAll, nullptr);
    cast.RegScroll(S(0), static_cast<char>(c[0]), nullptr);
    std::int16_t h = 99, v = 99;
    EXPECT_EQ((Vals{cast.GetScroll(S(0), c[1], &h, &v), h, v}), (Vals{c[2], c[3], c[4]}))
        << c[0] << " " << c[1];
  }
  // The default step after a first registration scrolls 5 per unit; the
  // count operations use the width of the first image.
  auto wide = MakeAnim({20}, 200, 1, 0, 0);
  double d = 0, e = 0, f = 0;
  std::int16_t h = 0, v = 1;
  cast.RegAFrame(S(-1), wide.get(), 0, nullptr, nullptr);
  cast.RegScroll(S(1), QvMCast::kScrollRight, nullptr);
  EXPECT_EQ((Vals{cast.GetScroll(S(1), 5, &h, &v), h, v}), (Vals{1, 25, 0}));
  EXPECT_EQ((Vals{cast.SetScrCountH(S(1), 10.0), cast.GetScrStepH(S(1), &d), d,
                  cast.GetScrCountH(S(1), S(1), &e), e, cast.GetScrCountH(S(1), S(3), &f), f}),
            (Vals{1, 1, 20.0, 1, 10.0, 1, 30.0}));
  EXPECT_EQ((Vals{cast.SetScrCountV(S(1), 4.0), cast.GetScrStepV(S(1), &d), d,
                  cast.GetScrCountV(S(1), S(2), &e), e}),
            (Vals{1, 1, 0.25, 1, 8.0}));
  // Without a frame animation the step and count are 0; without frames the
  // image counts as size 0.
  d = 5;
  EXPECT_EQ((Vals{cast.SetScrCountV(S(0), 4.0), cast.Rec(S(0))->scrStepV,
                  cast.GetScrCountV(S(0), S(3), &d), d}),
            (Vals{1, 0.0, 1, 0.0}));
  QvAFrame empty;
  cast.RegAFrame(S(0), &empty, 0, nullptr, nullptr);
  EXPECT_EQ((Vals{cast.SetScrCountH(S(0), 2.0), cast.Rec(S(0))->scrStepH}), (Vals{1, 0.0}));
  // Huge products have no 32-bit value and stay defined.
  cast.SetStartEnd(S(1), -2147483647 - 1, 2147483647);
  cast.SetScrStepH(S(1), 1e300);
  cast.SetScrStepV(S(1), -1e300);
  cast.RegScroll(S(1), QvMCast::kScrollLeft | QvMCast::kScrollDown, nullptr);
  EXPECT_EQ((Vals{cast.GetScroll(S(1), 2147483647, &h, &v), h, v}), (Vals{1, 0, 0}));
}
