// Duplicating members within and between stores, backup and restore.
#include <gtest/gtest.h>

#include "acolor/QvAFade.h"
#include "cast/QvMCast.h"
#include "player/QvMCastList.h"
#include "tests/cast/CastTestSupport.h"

using namespace casttest;

namespace {

int ListSize(QvMCastList& list) {
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  int n = 0;
  while (list.Get(S(n), &c, &id)) ++n;
  return n;
}

// Member 3 of a store: a frame animation over 20..29 with everything else
// attached too.
struct Source {
  Source() : anim(MakeAnim({10})), table(GreyTable()), pal(PalRange(0, 7)) {
    QvPal area = PalRange(1, 2);
    fade.RegArea(&area);
    cast.New(S(3), nullptr);
    EXPECT_EQ(cast.RegAFrame(S(3), anim.get(), 20, Txt("src"), anim.get()), 3);
    cast.RegAColor(S(3), &fade, 3, 20, Txt("src"), &fade);
    cast.RegOrgCTable(S(3), &table, &pal, Txt("src"));
    QvMCastDft dft[2];
    dft[1].pointB = tbPoint(4, 5);
    cast.RegDft(S(3), S(9), dft, S(2), 6, Txt("src"), &dftList);
    QvMCastAnc anc[3];
    anc[2].point = tbPoint(7, 8);
    cast.RegAnc(S(3), anc, S(3), 2, Txt("src"));
    cast.SetAncOffset(S(3), S(1));
    cast.SetAncStep(S(3), 0.25);
    cast.SetAncSelectArea(S(3), 0, 2);
    cast.RegScroll(S(3), 2 | 4, Txt("src"));
    cast.SetScrStepH(S(3), 1.5);
    cast.SetScrStepV(S(3), 2.5);
    cast.SetActFlag(S(3), 0xFFFFFFFFu);
    EXPECT_EQ(cast.Start(S(3)), 20);
    EXPECT_EQ(cast.End(S(3)), 29);
  }
  // The lists outlive the store that refers to them.
  std::unique_ptr<QvAFrame> anim;
  QvAFade fade;
  QvMCastList dftList;
  tbColorTable table;
  QvPal pal;
  CastProbe cast;
};

}  // namespace

TEST(QvMCastDup, DuplicateIntoAnotherStore) {
  NoFailures guard;
  Source s;
  CastProbe other;
  other.New(nullptr);
  EXPECT_EQ(s.cast.Dup(S(3), 100, Txt("copy"), &other, S(-1)), 1);
  EXPECT_EQ(other.Start(S(1)), 100);
  EXPECT_EQ(other.End(S(1)), 109);
  EXPECT_EQ(NameOf(other, S(1)), "copy");
  QvMCastInfo* d = other.Rec(S(1));
  QvMCastInfo* r = s.cast.Rec(S(3));
  // Own copies of everything.
  ASSERT_NE(d->aFrame, nullptr);
  EXPECT_NE(d->aFrame, r->aFrame);
  EXPECT_EQ(d->aFrame->CountMFrame(), 10);
  ASSERT_NE(d->aColor[3], nullptr);
  EXPECT_NE(d->aColor[3], r->aColor[3]);
  ASSERT_NE(d->orgCTable, nullptr);
  EXPECT_TRUE(*d->orgCTable == s.table);
  ASSERT_NE(d->orgPal, nullptr);
  EXPECT_EQ(d->fillIndex, 8);
  ASSERT_NE(d->dft, nullptr);
  EXPECT_NE(d->dft, r->dft);
  EXPECT_EQ(d->dftLast, 1);
  EXPECT_EQ(d->dftParam, 9);
  EXPECT_EQ(d->dftFlag, 6);
  EXPECT_EQ(d->dft[1].pointB, tbPoint(4, 5));
  ASSERT_NE(d->anc, nullptr);
  EXPECT_EQ(d->ancLast, 2);
  EXPECT_EQ(d->anc[2].point, tbPoint(7, 8));
  EXPECT_EQ(d->ancType, 2);
  EXPECT_EQ(d->ancOffset, 1);
  EXPECT_EQ(d->ancStep, 0.25);
  EXPECT_EQ(d->scroll, 6);
  EXPECT_EQ(d->scrStepH, 1.5);
  EXPECT_EQ(d->scrStepV, 2.5);
  // Not the flags, the icon or the span.
  EXPECT_EQ(d->actFlag, 0u);
  EXPECT_EQ(d->ancSelStart, -1);
  // The same reference lists.
  EXPECT_EQ(d->lists[4], s.anim.get());
  EXPECT_EQ(d->lists[3], &s.fade);
  EXPECT_EQ(d->lists[5], &s.dftList);
  EXPECT_EQ(ListSize(*s.anim), 2);
  EXPECT_EQ(ListSize(s.dftList), 2);
  // So later changes reach the duplicate too.
  s.anim->SetInterval(S(0), S(4));
  EXPECT_EQ(other.AFrame(S(1))->CountMFrame(), 4);
  EXPECT_EQ(other.End(S(1)), 109);
  // The destination is unlocked afterwards.
  EXPECT_EQ(other.LockFlag(), 0);
}

TEST(QvMCastDup, ExistingDestinationKeepsItsRange) {
  NoFailures guard;
  Source s;
  CastProbe other;
  other.New(S(8), nullptr);
  other.SetStartEnd(S(8), 1, 2);
  EXPECT_EQ(s.cast.Dup(S(3), 100, nullptr, &other, S(8)), 8);
  EXPECT_EQ(other.Start(S(8)), 1);
  EXPECT_EQ(other.End(S(8)), 2);
  EXPECT_NE(other.AFrame(S(8)), nullptr);
  EXPECT_EQ(NameOf(other, S(8)), "<none>");
}

TEST(QvMCastDup, OwnTableComesOnlyWithAFrameAnimation) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  cast.RegOrgCTable(S(-1), &table, nullptr, nullptr);
  cast.SetStartEnd(S(0), 0, 4);
  EXPECT_EQ(cast.Dup(S(0), 10, nullptr, &cast, S(-1)), 1);
  EXPECT_EQ(cast.Rec(S(1))->orgCTable, nullptr);
  EXPECT_EQ(cast.Start(S(1)), 10);
  EXPECT_EQ(cast.End(S(1)), 14);
}

TEST(QvMCastDup, WithinOneStore) {
  NoFailures guard;
  Source s;
  EXPECT_EQ(s.cast.Dup(S(3), 50, Txt("twin"), &s.cast, S(-1)), 0);
  EXPECT_EQ(s.cast.Count(), 2);
  QvMCastInfo* d = s.cast.Rec(S(0));
  QvMCastInfo* r = s.cast.Rec(S(3));
  ASSERT_NE(d->aFrame, nullptr);
  EXPECT_NE(d->aFrame, r->aFrame);
  EXPECT_NE(d->anc, r->anc);
  EXPECT_EQ(s.cast.Start(S(0)), 50);
  EXPECT_EQ(s.cast.End(S(0)), 59);
  EXPECT_EQ(NameOf(s.cast, S(3)), "src");
  EXPECT_EQ(NameOf(s.cast, S(0)), "twin");
}

TEST(QvMCastDup, OntoItself) {
  NoFailures guard;
  Source s;
  EXPECT_EQ(s.cast.Dup(S(3), 0, Txt("self"), &s.cast, S(3)), 3);
  QvMCastInfo* r = s.cast.Rec(S(3));
  ASSERT_NE(r->aFrame, nullptr);
  EXPECT_EQ(r->aFrame->CountMFrame(), 10);
  ASSERT_NE(r->aColor[3], nullptr);
  ASSERT_NE(r->orgCTable, nullptr);
  EXPECT_TRUE(*r->orgCTable == s.table);
  EXPECT_EQ(r->dftLast, 1);
  EXPECT_EQ(r->anc[2].point, tbPoint(7, 8));
  EXPECT_EQ(ListSize(*s.anim), 1);
  EXPECT_EQ(NameOf(s.cast, S(3)), "self");
}

TEST(QvMCastDup, NewDestinationThatReplacesTheSource) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2});
  cast.New(S(0), nullptr);
  cast.RegAFrame(S(0), anim.get(), 0, nullptr, nullptr);
  // The counter would hand out 0 and so delete the source itself: refused.
  EXPECT_EQ(cast.Dup(S(0), 5, nullptr, &cast, S(-1)), -1);
  EXPECT_EQ(cast.Count(), 1);
  EXPECT_NE(cast.AFrame(S(0)), nullptr);
  EXPECT_EQ(cast.GetNewID(), 0);
  EXPECT_EQ(cast.LockFlag(), 0);
  // While the store is locked, creating a member would delete the locked
  // source as well.
  cast.New(S(4), nullptr);
  cast.Lock(S(4));
  EXPECT_EQ(cast.Dup(S(4), 5, nullptr, &cast, S(-1)), -1);
  cast.Unlock();
  EXPECT_EQ(cast.Count(), 2);
}

TEST(QvMCastDup, Failures) {
  NoFailures guard;
  Source s;
  CastProbe other;
  EXPECT_EQ(s.cast.Dup(S(4), 0, nullptr, &other, S(-1)), -1);
  EXPECT_EQ(s.cast.Dup(S(3), 0, nullptr, nullptr, S(-1)), -1);
  EXPECT_EQ(other.Count(), 0);
  // An absent destination id is used unchecked: nothing is copied.
  EXPECT_EQ(s.cast.Dup(S(3), 0, nullptr, &other, S(6)), 6);
  EXPECT_EQ(other.Count(), 0);
  EXPECT_EQ(other.LockFlag(), 0);
  QvFailAllocation(1);
  EXPECT_EQ(s.cast.Dup(S(3), 0, nullptr, &other, S(-1)), -1);
  QvFailAllocation(0);
  EXPECT_EQ(other.Count(), 0);
  // Failures part-way leave a partial duplicate and no leak.
  for (int k = 2; k <= 40; k += 3) {
    CastProbe partial;
    QvFailAllocation(k);
    s.cast.Dup(S(3), 0, Txt("p"), &partial, S(-1));
    QvFailAllocation(0);
  }
}

TEST(QvMCastDup, BackupAndRestore) {
  NoFailures guard;
  Source s;
  s.cast.New(S(5), Txt("five"));
  auto other = MakeAnim({6});
  s.cast.RegAFrame(S(5), other.get(), 40, Txt("five"), other.get());
  s.cast.RegScroll(S(5), 1, Txt("five"));
  s.cast.New(S(6), Txt("six"));
  s.cast.SetStartEnd(S(6), 1, 1);

  CastProbe backup;
  EXPECT_EQ(s.cast.Backup(S(5), &backup), 1);
  EXPECT_EQ(backup.Count(), 1);
  EXPECT_EQ(backup.Start(S(5)), 40);
  EXPECT_EQ(backup.End(S(5)), 45);
  EXPECT_EQ(NameOf(backup, S(5)), "five");
  EXPECT_EQ(ListSize(*other), 2);

  // Edit member 5, then restore it.
  s.cast.DelAFrame(S(5));
  s.cast.DelScroll(S(5), 0);
  s.cast.SetStartEnd(S(5), 0, 1);
  s.cast.SetName(S(5), Txt("edited"));
  s.cast.SetStartEnd(S(6), 2, 2);
  EXPECT_EQ(s.cast.Restore(&backup), 1);
  EXPECT_EQ(s.cast.Start(S(5)), 40);
  EXPECT_EQ(s.cast.End(S(5)), 45);
  ASSERT_NE(s.cast.AFrame(S(5)), nullptr);
  EXPECT_EQ(s.cast.IsScrollLeft(S(5)), 1);
  EXPECT_EQ(NameOf(s.cast, S(5)), "five");
  // Members the backup does not hold stay as they are.
  EXPECT_EQ(s.cast.Start(S(6)), 2);
  EXPECT_NE(s.cast.AFrame(S(3)), nullptr);
  // The restored member is at the end of the order and the list knows it.
  EXPECT_EQ(s.cast.Index2ID(S(s.cast.Count() - 1)), 5);
  EXPECT_EQ(ListSize(*other), 2);
  other->SetInterval(S(0), S(2));
  EXPECT_EQ(s.cast.AFrame(S(5))->CountMFrame(), 2);
  EXPECT_EQ(backup.AFrame(S(5))->CountMFrame(), 2);
}

TEST(QvMCastDup, BackupReplacesTheBackedUpMember) {
  NoFailures guard;
  Source s;
  CastProbe backup;
  backup.New(S(3), Txt("stale"));
  backup.RegScroll(S(3), 8, Txt("stale"));
  backup.SetStartEnd(S(3), 7, 8);
  EXPECT_EQ(s.cast.Backup(S(3), &backup), 1);
  EXPECT_EQ(backup.Start(S(3)), 20);
  EXPECT_EQ(backup.IsScrollDown(S(3)), 0);
  EXPECT_EQ(backup.IsScrollRight(S(3)), 1);
  EXPECT_EQ(NameOf(backup, S(3)), "src");
}

TEST(QvMCastDup, BackupFailures) {
  NoFailures guard;
  CastProbe cast;
  CastProbe backup;
  cast.New(Txt("unset"));
  EXPECT_EQ(cast.Backup(S(0), &backup), 0);
  EXPECT_EQ(cast.Backup(S(4), &backup), 0);
  EXPECT_EQ(cast.Backup(S(0), nullptr), 0);
  EXPECT_EQ(backup.Count(), 0);
  cast.SetStartEnd(S(0), 0, 3);
  QvFailAllocation(1);  // the name copy
  EXPECT_EQ(cast.Backup(S(0), &backup), 0);
  QvFailAllocation(0);
  for (int k = 2; k <= 8; ++k) {
    QvFailAllocation(k);
    cast.Backup(S(0), &backup);
    QvFailAllocation(0);
  }
  // The name travels with the registrations: a member without attachments
  // is backed up without it.
  EXPECT_EQ(cast.Backup(S(0), &backup), 1);
  EXPECT_EQ(NameOf(backup, S(0)), "<none>");
  cast.RegScroll(S(0), 4, Txt("unset"));
  EXPECT_EQ(cast.Backup(S(0), &backup), 1);
  EXPECT_EQ(NameOf(backup, S(0)), "unset");
  EXPECT_EQ(backup.Start(S(0)), 0);
  EXPECT_EQ(backup.End(S(0)), 3);
}

TEST(QvMCastDup, RestoreFromEmptyOrBrokenBackups) {
  NoFailures guard;
  CastProbe cast;
  cast.New(Txt("a"));
  cast.SetStartEnd(S(0), 3, 4);
  CastProbe empty;
  EXPECT_EQ(cast.Restore(&empty), 1);
  EXPECT_EQ(cast.Count(), 1);
  EXPECT_EQ(cast.Start(S(0)), 3);
  EXPECT_EQ(cast.Restore(nullptr), 0);

  // A backup member without a range stops the restore there.
  CastProbe broken;
  broken.New(S(7), nullptr);
  broken.SetStartEnd(S(7), 1, 2);
  broken.New(S(8), nullptr);
  broken.New(S(9), nullptr);
  broken.SetStartEnd(S(9), 1, 2);
  EXPECT_EQ(cast.Restore(&broken), 0);
  EXPECT_EQ(cast.ID2Index(S(7)), 1);
  EXPECT_EQ(cast.ID2Index(S(8)), -1);
  EXPECT_EQ(cast.ID2Index(S(9)), -1);

  // A failed creation stops it too.
  QvFailAllocation(1);
  EXPECT_EQ(cast.Restore(&empty), 1);
  QvFailAllocation(0);
  broken.SetStartEnd(S(8), 0, 0);
  for (int k = 1; k <= 10; ++k) {
    QvFailAllocation(k);
    cast.Restore(&broken);
    QvFailAllocation(0);
  }
  EXPECT_EQ(cast.Restore(&broken), 1);
  EXPECT_EQ(cast.Count(), 4);
}

TEST(QvMCastDup, RestoreFromItself) {
  NoFailures guard;
  Source s;
  EXPECT_EQ(s.cast.Restore(&s.cast), 1);
  EXPECT_EQ(s.cast.Count(), 1);
}
