// Duplicating members within and between stores, backup and restore.
#include "tests/cast/CastTestSupport.h"

using namespace casttest;

namespace {

// Member 3 of a store: a frame animation over 20..29 with everything else
// attached too. The lists outlive the store that refers to them.
struct QvMCastDup : testing::Test {
  void SetUp() override {
    QvPal area = RangePal(1, 2), pal = RangePal(0, 7);
    fade.RegArea(&area);
    cast.New(S(3), nullptr);
    EXPECT_EQ(cast.RegAFrame(S(3), anim.get(), 20, Txt("src"), anim.get()), 3);
    cast.RegAColor(S(3), &fade, QvAColor::kFade, 20, Txt("src"), &fade);
    cast.RegOrgCTable(S(3), &table, &pal, Txt("src"));
    QvMCastDft dft[2];
    dft[1].pointB = tbPoint(4, 5);
    cast.RegDft(S(3), S(9), dft, S(2), 6, Txt("src"), &dftList);
    QvMCastAnc anc[3] = {{}, {}, {tbPoint(7, 8), 0}};
    cast.RegAnc(S(3), anc, S(3), QvMCast::kAncReflect, Txt("src"));
    cast.SetAncOffset(S(3), S(1));
    cast.SetAncStep(S(3), 0.25);
    cast.SetAncSelectArea(S(3), 0, 2);
    cast.RegScroll(S(3), QvMCast::kScrollRight | QvMCast::kScrollUp, Txt("src"));
    cast.SetScrStepH(S(3), 1.5);
    cast.SetScrStepV(S(3), 2.5);
    cast.SetActFlag(S(3), 0xFFFFFFFFu);
  }
  // The duplicate d carries copies of everything member 3 holds, but not its
  // flags or anchor span.
  void ExpectCopies(QvMCastInfo* d) {
    QvMCastInfo* r = cast.Rec(S(3));
    ASSERT_TRUE(d->aFrame && d->aColor[3] && d->orgCTable && d->orgPal && d->dft && d->anc);
    EXPECT_TRUE(d == r ||
                (d->aFrame != r->aFrame && d->aColor[3] != r->aColor[3] && d->dft != r->dft));
    EXPECT_EQ((Vals{*d->orgCTable == table, d->dft[1].pointB == tbPoint(4, 5),
                    d->anc[2].point == tbPoint(7, 8), d->aFrame->CountMFrame(), d->fillIndex,
                    d->dftLast, d->dftParam, d->dftFlag, d->ancLast, d->ancType, d->ancOffset,
                    d->ancStep, d->scroll, d->scrStepH, d->scrStepV, d->actFlag, d->ancSelStart}),
              (Vals{1, 1, 1, 10, 8, 1, 9, 6, 2, 2, 1, 0.25, 6, 1.5, 2.5, 0, -1}));
    EXPECT_TRUE(d->lists[4] == anim.get() && d->lists[3] == &fade && d->lists[5] == &dftList);
  }
  NoFailures guard;
  std::unique_ptr<QvAFrame> anim = MakeAnim({10});
  QvAFade fade;
  QvMCastList dftList;
  tbColorTable table = GreyTable();
  CastProbe cast;
};

}  // namespace

TEST_F(QvMCastDup, DuplicateIntoAnotherStore) {
  CastProbe other;
  other.New(nullptr);
  EXPECT_EQ(cast.Dup(S(3), 100, Txt("copy"), &other, S(-1)), 1);
  EXPECT_EQ((Vals{other.Start(S(1)), other.End(S(1)), other.LockFlag()}), (Vals{100, 109, 0}));
  EXPECT_EQ(NameOf(other, S(1)), "copy");
  ExpectCopies(other.Rec(S(1)));
  EXPECT_EQ(ListSize(*anim) + ListSize(dftList), 4);
  anim->SetInterval(S(0), S(4));  // later changes reach the duplicate too
  EXPECT_EQ((Vals{other.AFrame(S(1))->CountMFrame(), other.End(S(1))}), (Vals{4, 109}));

  // An existing destination keeps its range.
  other.SetStartEnd(S(0), 1, 2);
  EXPECT_EQ(cast.Dup(S(3), 100, nullptr, &other, S(0)), 0);
  EXPECT_EQ((Vals{other.Start(S(0)), other.End(S(0)), other.AFrame(S(0)) != nullptr}),
            (Vals{1, 2, 1}));
}

TEST_F(QvMCastDup, DuplicateWithinOneStoreAndOntoItself) {
  cast.SetActFlag(S(3), 0u);
  cast.SetAncSelectArea(S(3), -1, -1);
  EXPECT_EQ(cast.Dup(S(3), 50, Txt("twin"), &cast, S(-1)), 0);
  ExpectCopies(cast.Rec(S(0)));
  EXPECT_EQ((Vals{cast.Start(S(0)), cast.End(S(0))}), (Vals{50, 59}));
  EXPECT_EQ(NameOf(cast, S(3)) + NameOf(cast, S(0)), "srctwin");
  EXPECT_EQ(cast.Dup(S(3), 0, Txt("self"), &cast, S(3)), 3);
  ExpectCopies(cast.Rec(S(3)));
  EXPECT_EQ(ListSize(*anim), 2);
  EXPECT_EQ(NameOf(cast, S(3)), "self");

  // A source with an own table but no frame animation: no table copied.
  tbColorTable grey = GreyTable();
  const std::int16_t id = cast.RegOrgCTable(S(-1), &grey, nullptr, nullptr);
  cast.SetStartEnd(id, 0, 4);
  EXPECT_EQ(cast.Dup(id, 10, nullptr, &cast, S(-1)), id + 1);
  EXPECT_EQ((Vals{cast.Rec(S(id + 1))->orgCTable == nullptr, cast.End(S(id + 1))}), (Vals{1, 14}));
}

TEST_F(QvMCastDup, DuplicationFailures) {
  CastProbe other;
  EXPECT_EQ(cast.Dup(S(3), 0, nullptr, nullptr, S(-1)), -1);
  // An absent destination id is used unchecked: nothing is copied.
  EXPECT_EQ((Vals{cast.Dup(S(3), 0, nullptr, &other, S(6)), other.LockFlag(), other.Count()}),
            (Vals{6, 0, 0}));
  EXPECT_EQ(FailAt(1, [&] { return cast.Dup(S(3), 0, nullptr, &other, S(-1)); }), -1);
  EXPECT_EQ(other.Count(), 0);
  // A new destination id that would replace the source itself is refused,
  // also while the store is locked on the source.
  CastProbe self;
  self.New(S(0), nullptr);
  self.RegAFrame(S(0), anim.get(), 0, nullptr, nullptr);
  EXPECT_EQ((Vals{self.Dup(S(0), 5, nullptr, &self, S(-1)), self.AFrame(S(0)) != nullptr,
                  self.GetNewID()}),
            (Vals{-1, 1, 0}));
  self.New(S(4), nullptr);
  self.Lock(S(4));
  EXPECT_EQ(self.Dup(S(4), 5, nullptr, &self, S(-1)), -1);
  self.Unlock();
  EXPECT_EQ(self.Count(), 2);
  // Restoring a store from itself replaces each member by itself.
  EXPECT_EQ((Vals{cast.Restore(&cast), cast.Count()}), (Vals{1, 1}));
}

TEST_F(QvMCastDup, BackupAndRestore) {
  auto five = MakeAnim({6});
  cast.New(S(5), Txt("five"));
  cast.RegAFrame(S(5), five.get(), 40, Txt("five"), five.get());
  cast.RegScroll(S(5), QvMCast::kScrollLeft, Txt("five"));
  cast.New(S(6), Txt("six"));
  cast.SetStartEnd(S(6), 1, 1);
  CastProbe backup;
  backup.New(S(3), Txt("stale"));
  backup.RegScroll(S(3), QvMCast::kScrollDown, Txt("stale"));
  EXPECT_EQ(cast.Backup(S(3), &backup), 1);  // replaces the stale member
  EXPECT_EQ((Vals{backup.IsScroll(S(3), nullptr), backup.IsScrollDown(S(3))}), (Vals{1, 0}));
  EXPECT_EQ(NameOf(backup, S(3)), "src");
  EXPECT_EQ(
      (Vals{cast.Backup(S(5), &backup), backup.Start(S(5)), backup.End(S(5)), ListSize(*five)}),
      (Vals{1, 40, 45, 2}));

  // Edit member 5, then restore it; member 6 is not in the backup.
  cast.DelAFrame(S(5));
  cast.DelScroll(S(5), QvMCast::kScrollAll);
  cast.SetStartEnd(S(5), 0, 1);
  cast.SetName(S(5), Txt("edited"));
  cast.SetStartEnd(S(6), 2, 2);
  EXPECT_EQ(cast.Restore(&backup), 1);
  ASSERT_NE(cast.AFrame(S(5)), nullptr);
  EXPECT_EQ((Vals{cast.Start(S(5)), cast.End(S(5)), cast.IsScrollLeft(S(5)), cast.Start(S(6)),
                  cast.Index2ID(S(cast.Count() - 1))}),
            (Vals{40, 45, 1, 2, 5}));
  EXPECT_EQ(NameOf(cast, S(5)), "five");
  five->SetInterval(S(0), S(2));
  EXPECT_EQ((Vals{cast.AFrame(S(5))->CountMFrame(), backup.AFrame(S(5))->CountMFrame()}),
            (Vals{2, 2}));
}

TEST_F(QvMCastDup, BackupAndRestoreFailures) {
  CastProbe store, backup, empty, broken;
  QvMCast& cast = store;
  cast.New(Txt("unset"));
  EXPECT_EQ((Vals{cast.Backup(S(0), &backup), cast.Backup(S(0), nullptr), backup.Count()}),
            (Vals{0, 0, 0}));  // range unset
  cast.SetStartEnd(S(0), 3, 4);
  EXPECT_EQ(FailAt(1, [&] { return cast.Backup(S(0), &backup); }), 0);  // the name copy
  // The name travels with the registrations: without any it stays behind.
  EXPECT_EQ(cast.Backup(S(0), &backup), 1);
  EXPECT_EQ(NameOf(backup, S(0)), "<none>");
  cast.RegScroll(S(0), QvMCast::kScrollUp, Txt("unset"));
  EXPECT_EQ(cast.Backup(S(0), &backup), 1);
  EXPECT_EQ(NameOf(backup, S(0)), "unset");

  EXPECT_EQ((Vals{cast.Restore(&empty), FailAt(1, [&] { return cast.Restore(&empty); }),
                  cast.Restore(nullptr), cast.Count(), cast.Start(S(0))}),
            (Vals{1, 1, 0, 1, 3}));
  // A backup member without a range stops the restore there.
  for (int id = 7; id <= 9; ++id) broken.New(S(id), nullptr);
  broken.SetStartEnd(S(7), 1, 2);
  broken.SetStartEnd(S(9), 1, 2);
  EXPECT_EQ(
      (Vals{cast.Restore(&broken), cast.ID2Index(S(7)), cast.ID2Index(S(8)), cast.ID2Index(S(9))}),
      (Vals{0, 1, -1, -1}));
  broken.SetStartEnd(S(8), 0, 0);
  EXPECT_EQ((Vals{cast.Restore(&broken), cast.Count()}), (Vals{1, 4}));
}
