// The cast table: ids, creation and deletion, the lookup lock, names, flags,
// time ranges, and what every by-id operation gives for an absent member.
#include "tests/cast/CastTestSupport.h"

using namespace casttest;
using QvMCastTable = CastTest;
using Ids = std::vector<std::int16_t>;

TEST_F(QvMCastTable, IdsCreationAndDeletion) {
  EXPECT_EQ((Vals{cast.GetNewID(), cast.End()}), (Vals{0, 0}));
  EXPECT_EQ((Vals{cast.New(Txt("a")), cast.New(Txt("b")), cast.New(nullptr)}), (Vals{0, 1, 2}));
  EXPECT_EQ((Vals{cast.Del(S(1)), cast.New(Txt("c"))}), (Vals{1, 3}));  // gaps are not filled
  // Absent, head, tail.
  EXPECT_EQ((Vals{cast.Del(S(9)), cast.Del(S(0)), cast.Del(S(3)), cast.GetNewID()}),
            (Vals{0, 1, 1, 4}));
  EXPECT_EQ(cast.Ids(), Ids({2}));
  EXPECT_EQ((Vals{cast.Del(S(2)), cast.New(Txt("d"))}), (Vals{1, 0}));  // empty: from 0 again
  cast.New(nullptr);
  cast.DelAll();
  EXPECT_EQ((Vals{cast.Count(), cast.GetNewID()}), (Vals{0, 0}));

  // New(5) and six New(name): the sixth replaces member 5 at the end.
  ASSERT_EQ(cast.New(S(5), Txt("explicit")), 1);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(cast.New(Txt("auto")), i);
  EXPECT_EQ(cast.Ids(), Ids({0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(NameOf(cast, S(5)), "auto");

  // An existing id moves to the end and loses its attachments.
  cast.RegScroll(S(0), QvMCast::kScrollLeft, nullptr);
  cast.SetStartEnd(S(0), 3, 7);
  ASSERT_EQ(cast.New(S(0), Txt("again")), 1);
  EXPECT_EQ(cast.Ids(), Ids({1, 2, 3, 4, 5, 0}));
  EXPECT_EQ((Vals{cast.ID2Index(S(0)), cast.Index2ID(S(0)), cast.ID2Index(S(6)),
                  cast.Index2ID(cast.Count()), cast.Index2ID(S(-1)), cast.IsScroll(S(0), nullptr),
                  cast.Start(S(0))}),
            (Vals{5, 1, -1, -1, -1, 0, -1}));
  EXPECT_EQ(NameOf(cast, S(0)), "again");
}

TEST_F(QvMCastTable, LockActsOnTheLockedMember) {
  for (int i = 0; i < 4; ++i) cast.New(nullptr);
  cast.SetStartEnd(S(3), 30, 39);
  cast.SetStartEnd(S(1), 10, 19);

  // Locked on an absent id every by-id call fails; Count, the index lookups
  // and End() walk the list themselves.
  cast.Lock(S(7));
  EXPECT_EQ((Vals{cast.LockFlag(), cast.Start(S(3)), cast.Count(), cast.Index2ID(S(3)),
                  cast.ID2Index(S(3)), cast.End()}),
            (Vals{1, -1, 4, 3, 3, 39}));
  cast.Unlock();
  EXPECT_EQ(cast.Start(S(3)), 30);
  cast.Lock(S(1));
  EXPECT_EQ((Vals{cast.Start(S(3)), cast.SetStartEnd(S(99), 11, 20)}), (Vals{10, 1}));
  cast.Unlock();
  EXPECT_EQ((Vals{cast.Start(S(1)), cast.Start(S(3))}), (Vals{11, 30}));

  // Deleting the locked member ends the lock; so does DelAll.
  cast.Lock(S(1));
  EXPECT_EQ((Vals{cast.Del(S(2)), cast.LockFlag()}), (Vals{1, 0}));
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ(cast.Ids(), Ids({0, 2, 3}));
  cast.Lock(S(0));
  cast.DelAll();
  EXPECT_EQ(cast.CurInfo(), nullptr);
  EXPECT_EQ((Vals{cast.LockFlag(), cast.New(nullptr), cast.Start(S(0))}), (Vals{0, 0, -1}));
}

TEST_F(QvMCastTable, NamesAndAllocationFailures) {
  cast.New(Txt("first"));
  cast.New(nullptr);
  EXPECT_EQ((Vals{cast.SetName(S(1), Txt("second")), cast.SetName(S(0), nullptr)}), (Vals{1, 1}));
  EXPECT_EQ(NameOf(cast, S(1)) + NameOf(cast, S(0)), "second<none>");
  for (std::int16_t id : {4, 0}) {  // absent: 0; without a name: 1; null both times
    unsigned char** h = reinterpret_cast<unsigned char**>(1);
    EXPECT_EQ((Vals{cast.GetName(id, &h), h == nullptr}), (Vals{id == 0, 1}));
  }
  unsigned char** h = nullptr;
  EXPECT_EQ((Vals{cast.GetName(S(1), nullptr), cast.GetName(S(1), &h)}), (Vals{0, 1}));
  EXPECT_NE(h, cast.Rec(S(1))->name);  // a copy the caller owns
  QvFreeString(h);
  EXPECT_EQ((Vals{FailAt(1, [&] { return cast.GetName(S(1), &h); }), h == nullptr}), (Vals{0, 1}));
  // A name may be set from the member's own text.
  EXPECT_EQ(cast.SetName(S(1), *cast.Rec(S(1))->name), 1);
  EXPECT_EQ(NameOf(cast, S(1)), "second");

  // A failed New keeps the counter; a failed New(id) still deleted that id; a
  // name that cannot be copied leaves the member without one.
  EXPECT_EQ(FailAt(1, [&] { return cast.New(Txt("x")); }), -1);
  EXPECT_EQ((Vals{cast.GetNewID(), cast.Count()}), (Vals{2, 2}));
  EXPECT_EQ(FailAt(1, [&] { return cast.New(S(1), Txt("y")); }), 0);
  EXPECT_EQ(FailAt(1, [&] { return cast.New(S(0), Txt("y")); }), 0);
  EXPECT_EQ((Vals{cast.GetNewID(), cast.Count()}), (Vals{0, 0}));
  EXPECT_EQ(FailAt(2, [&] { return cast.New(Txt("z")); }), 0);
  EXPECT_EQ(NameOf(cast, S(0)), "<none>");
  for (int k = 1; k <= 4; ++k) {
    CastProbe c;
    const int id = FailAt(k, [&] { return c.New(Txt("member")); });
    EXPECT_EQ(c.Count(), id == -1 ? 0 : 1) << k;
  }
}

TEST_F(QvMCastTable, FlagsStayInsideTheAttachmentMask) {
  auto anim = MakeAnim({3});
  std::uint32_t act = 0, show = 0;
  ASSERT_EQ(cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr), 0);
  cast.RegScroll(S(0), QvMCast::kScrollLeft, nullptr);
  EXPECT_EQ((Vals{cast.SetActFlag(S(0), 0xFFFFFFFFu), cast.SetShowFlag(S(0), 0x010u),
                  cast.ActFlag(S(0)), cast.GetActFlag(S(0), &act), act}),
            (Vals{1, 1, 0x050, 1, 0x050}));
  EXPECT_EQ(cast.DelAFrame(S(0)), 1);
  cast.GetShowFlag(S(0), &show);
  EXPECT_EQ((Vals{cast.GetActFlag(S(0), &act), act, show}), (Vals{1, 0x040, 0}));
  // Registration never sets a flag, and a reset only trims.
  cast.RegScroll(S(0), QvMCast::kScrollDown, nullptr);
  EXPECT_EQ((Vals{cast.ResetActFlag(S(0)), cast.GetActFlag(S(0), &act), act,
                  cast.GetActFlag(S(0), nullptr)}),
            (Vals{1, 1, 0x040, 0}));
  // Anchors have bit 0x020; emptying keeps the range and steps but clears
  // the flags and name, and sets the clamp type.
  QvMCastAnc anc[2];
  cast.RegAnc(S(0), anc, S(2), 0, Txt("n"));
  cast.SetStartEnd(S(0), 10, 12);
  cast.SetShowFlag(S(0), 0xFFFFFFFFu);
  QvMCastInfo* r = cast.Rec(S(0));
  EXPECT_EQ((Vals{r->showFlag, cast.Empty(S(0)), r->showFlag, r->actFlag, r->name == nullptr,
                  r->start, r->end, r->scrStepH, r->ancType}),
            (Vals{0x260, 1, 0, 0, 1, 10, 12, 5.0, 1}));
  char path[] = "movie.cast";  // nothing is loaded or saved
  EXPECT_EQ(cast.Load(3) | cast.Load(path) | cast.Save(3) | cast.Save(3, S(0)) |
                cast.Save(path, 0u, 0u) | cast.SaveEnd(3) | cast.SaveTerm(3),
            0);
}

TEST_F(QvMCastTable, TimeRangesAndStepScaling) {
  cast.New(nullptr);
  cast.New(nullptr);
  EXPECT_EQ(cast.End(), 0);  // every end -1
  cast.SetStartEnd(S(1), 2, 25);
  EXPECT_EQ((Vals{cast.End(), cast.SetStart(S(1), 30), cast.Start(S(1)), cast.End(S(1))}),
            (Vals{25, 1, 30, 25}));  // start after end is not checked
  EXPECT_EQ((Vals{cast.SetEnd(S(1), 50), cast.End()}), (Vals{1, 50}));

  // An unset range counts one unit long: a first range of 10 divides by 10;
  // without Dft entries the anchor step stays.
  QvMCastInfo* r = cast.Rec(S(0));
  const double steps[][3] = {{0, 9, 0.5}, {0, 19, 0.25}, {10, 29, 0.25}, {0, 9, 0.5}, {0, 4, 1.0}};
  for (const auto& st : steps) {
    cast.SetStartEnd(S(0), static_cast<std::int32_t>(st[0]), static_cast<std::int32_t>(st[1]));
    EXPECT_EQ((Vals{r->scrStepH, r->scrStepV, r->ancStep}), (Vals{st[2], st[2], 5.0})) << st[1];
  }
  // With Dft entries the anchor step scales too, and the span is reset.
  QvMCastDft dft[2];
  cast.RegDft(S(0), S(1), dft, S(2), 0, nullptr, nullptr);
  cast.SetAncSelectArea(S(0), 2, 4);
  cast.SetStartEnd(S(0), 0, 9);
  EXPECT_EQ((Vals{r->ancStep, r->ancSelStart, r->ancSelEnd}), (Vals{2.5, -1, -1}));
  cast.SetStartEnd(S(0), 5, 4);  // a length of 0 zeroes the steps
  EXPECT_EQ((Vals{r->ancStep, r->scrStepH}), (Vals{0, 0}));

  // SetEnd on an unset range starts at 0, which zeroes the steps.
  cast.New(S(2), nullptr);
  EXPECT_EQ((Vals{cast.SetEnd(S(2), 9), cast.Start(S(2)), cast.Rec(S(2))->scrStepH}),
            (Vals{1, 0, 0}));
  // Extreme ranges do not overflow.
  cast.SetStartEnd(S(2), -2147483647 - 1, 2147483647);
  cast.SetStartEnd(S(2), 2147483647, -2147483647 - 1);
  EXPECT_EQ(cast.Start(S(2)), 2147483647);
}

// Every by-id operation fails for an absent id, and for any id while the store
// is locked on an absent one; nothing is created or registered.
TEST_F(QvMCastTable, AbsentMembersFailEverywhere) {
  CastProbe other;
  cast.New(nullptr);
  cast.SetStartEnd(S(0), 0, 9);
  auto anim = MakeAnim({2});
  tbColorTable table = GreyTable();
  QvMCastDft dft[1];
  QvMCastAnc anc[1];
  QvAFade fade;
  Screen screen(8, 8);
  tbRect rect, &area = screen.area;
  tbPoint p;
  char c = 0;
  double d = 0;
  std::int16_t h = 0, v = 0, x = 9;
  std::int32_t a = 0, b = 0;
  std::uint32_t u = 0;
  // The first nine calls give -1, the rest 0 (or null).
  // clang-format off
  auto all = [&] {
    return std::vector<int>{
      cast.RegAFrame(x, anim.get(), 0, nullptr, anim.get()), cast.RegScroll(x, QvMCast::kScrollLeft, nullptr),
      cast.RegOrgCTable(x, &table, nullptr, nullptr), cast.RegAnc(x, anc, S(1), QvMCast::kAncClamp, nullptr),
      cast.RegDft(x, S(0), dft, S(1), 0, nullptr, anim.get()), cast.Start(x), cast.End(x),
      cast.RegAColor(x, &fade, 3, 0, nullptr, &fade), cast.Dup(x, 0, nullptr, &other, S(-1)),
      cast.DelAFrame(x), cast.DelOrgCTable(x), cast.DelDft(x), cast.DelScroll(x, QvMCast::kScrollAll), cast.DelAnc(x),
      cast.DelAColor(x, 3), cast.Empty(x), cast.Del(x), cast.SetName(x, Txt("n")),
      static_cast<int>(cast.ActFlag(x)), cast.SetActFlag(x, 1), cast.ResetActFlag(x),
      cast.GetActFlag(x, &u), cast.SetShowFlag(x, 1), cast.ResetShowFlag(x), cast.GetShowFlag(x, &u),
      cast.SetStartEnd(x, 0, 1), cast.SetStart(x, 0), cast.SetEnd(x, 0), cast.AFrame(x) != nullptr,
      cast.IsDft(x), cast.IsAnc(x), cast.IsScroll(x, &c), cast.IsScrollLeft(x),
      cast.IsScrollRight(x), cast.IsScrollUp(x), cast.IsScrollDown(x),
      cast.GetDft(x, &h, nullptr, &v, &c), cast.SetAnc(x, S(0), p, 0), cast.OffsetAnc(x, S(1), S(1)),
      cast.ResetAnc(x), cast.InbetweenAnc(x, 0), cast.SetAncType(x, QvMCast::kAncClamp), cast.SetAncOffset(x, S(1)),
      cast.SetAncOffset(x, &p), cast.GetAncOffset(x, &h), cast.GetAncNum(x, &h),
      cast.SetAncStep(x, 1.0), cast.GetAncStep(x, &d), cast.SetAncCount(x, 1.0),
      cast.GetAncCount(x, S(1), &d), cast.SetAncSelectArea(x, 0, 1), cast.GetAncSelectArea(x, &a, &b),
      cast.GetAnc(x, S(0), &p, &c), cast.GetAnc(x, std::int32_t{0}, &p, &c),
      cast.SetScrStepH(x, 1.0), cast.SetScrStepV(x, 1.0), cast.GetScrStepH(x, &d),
      cast.GetScrStepV(x, &d), cast.SetScrCountH(x, 1.0), cast.SetScrCountV(x, 1.0),
      cast.GetScrCountH(x, S(1), &d), cast.GetScrCountV(x, S(1), &d), cast.GetScroll(x, 0, &h, &v),
      cast.DrawPicture(x, 0, &screen.pixMap, &area), cast.CTable(x, 0) != nullptr,
      cast.GetAFrameArea(x, 0, &area, 0, &rect, &p), cast.PtInAFrame(&p, x, 0, &area, 0),
      cast.Icon(x, S(8), S(8)) != nullptr, cast.Backup(x, &other), cast.ACycle(x) != nullptr,
      cast.AFlash(x) != nullptr, cast.ASwitch(x) != nullptr, cast.AFade(x) != nullptr,
      cast.IsAColor(x)};
  };
  // clang-format on
  std::vector<int> expected(all().size(), 0);
  std::fill(expected.begin(), expected.begin() + 9, -1);
  EXPECT_EQ(all(), expected);
  cast.Lock(S(7));
  x = 0;
  EXPECT_EQ(all(), expected);
  cast.Unlock();
  EXPECT_EQ(cast.Ids(), Ids({0}));
  EXPECT_EQ(
      (Vals{cast.Start(S(0)), cast.End(S(0)), other.Count(), ListSize(*anim) + ListSize(fade)}),
      (Vals{0, 9, 0, 0}));
}

// The lookup by id against a walk of the list, over random series of
// creations (automatic, explicit, while locked, failing), deletions, locks
// and emptying of stores that grow past the size where the lookup table is
// made and back: every by-id call finds the first member of that id in the
// list, or none, and the search result is the same member.
TEST_F(QvMCastTable, LookupByIdMatchesAWalkOfTheList) {
  std::mt19937 rng(21);
  for (int round = 0; round < 6; ++round) {
    CastProbe store;
    const int span = round % 2 ? 40 : 3000;  // few ids (many duplicates) or many
    for (int step = 0; step < 4000; ++step) {
      const auto id = S(static_cast<int>(rng() % span) - 2);
      const unsigned op = rng() % 100;
      const int fail = rng() % 8 == 0 ? static_cast<int>(rng() % 3 + 1) : 0;
      if (op < 45) FailAt(fail, [&] { return store.New(Txt("m")); });
      if (op >= 45 && op < 60) FailAt(fail, [&] { return store.New(id, nullptr); });
      if (op >= 60 && op < 75) store.Del(id);
      if (op >= 75 && op < 80) store.Lock(id);
      if (op >= 80 && op < 88) store.Unlock();
      if (op >= 88 && op < 90) store.SetStartEnd(id, step, step + 1);
      if (op == 90 && rng() % 4 == 0) store.DelAll();
      const bool locked = store.LockFlag() == 1;
      QvMCastInfo* locked_on = store.CurInfo();
      const auto probe = S(static_cast<int>(rng() % span) - 2);
      const std::int32_t start = store.Start(probe);
      QvMCastInfo* expected = locked ? locked_on : store.Rec(probe);
      ASSERT_EQ(store.CurInfo(), expected) << "round " << round << " step " << step;
      ASSERT_EQ(start, expected ? expected->start : -1);
      ASSERT_EQ(store.Count(), static_cast<std::int16_t>(store.Ids().size()));
    }
    store.Unlock();
  }
}
