// Colour animation copies on members, and how changes of the host's
// animations reach the members that hold copies of them.
#include <gtest/gtest.h>

#include "acolor/QvACycle.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"

using namespace casttest;

namespace {

std::int16_t FramePosX(QvAFrame* anim) {
  std::int16_t x = -1;
  anim->GetAFrame(S(0), &x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                  nullptr);
  return x;
}

}  // namespace

TEST(QvMCastColor, RegistrationByKind) {
  NoFailures guard;
  CastProbe cast;
  QvACycle cycle;
  QvAFlash flash, flash2;
  QvASwitch sw;
  QvAFade fade;
  EXPECT_EQ(cast.RegAColor(S(-1), &fade, 3, 100, Txt("fade"), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 129);
  ASSERT_NE(dynamic_cast<QvAFade*>(cast.AFade(S(0))), nullptr);
  EXPECT_NE(cast.AFade(S(0)), &fade);
  EXPECT_EQ(NameOf(cast, S(0)), "fade");
  EXPECT_EQ(cast.ActFlag(S(0)), 0x008u);
  cast.RegAColor(S(0), &cycle, 0, 500, nullptr, nullptr);
  cast.RegAColor(S(0), &flash, 1, 500, nullptr, nullptr);
  cast.RegAColor(S(0), &sw, 2, 500, nullptr, nullptr);
  EXPECT_EQ(cast.Start(S(0)), 100);  // later registrations keep the range
  EXPECT_EQ(cast.End(S(0)), 129);
  EXPECT_NE(dynamic_cast<QvACycle*>(cast.ACycle(S(0))), nullptr);
  EXPECT_NE(dynamic_cast<QvAFlash*>(cast.AFlash(S(0))), nullptr);
  EXPECT_NE(dynamic_cast<QvASwitch*>(cast.ASwitch(S(0))), nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x00Fu);
  // Kind 1 again replaces only the flash copy.
  QvAColor* cycleCopy = cast.ACycle(S(0));
  QvAColor* fadeCopy = cast.AFade(S(0));
  flash2.SetSpeed(S(12));
  cast.RegAColor(S(0), &flash2, 1, 0, nullptr, nullptr);
  EXPECT_EQ(cast.ACycle(S(0)), cycleCopy);
  EXPECT_EQ(cast.AFade(S(0)), fadeCopy);
  EXPECT_EQ(cast.AFlash(S(0))->Speed(), 12);

  // An animation of another kind than the one named gives no copy, no range.
  cast.New(nullptr);
  EXPECT_EQ(cast.RegAColor(S(1), &fade, 2, 0, Txt("n"), nullptr), 1);
  EXPECT_EQ(cast.IsAColor(S(1)), 0);
  EXPECT_EQ(cast.Start(S(1)), -1);
  // Unknown kinds touch nothing and create no member.
  cast.SetActFlag(S(0), 0x008u);
  cast.SetName(S(0), Txt("kept"));
  for (char kind : {4, -1, 100}) {
    EXPECT_EQ(cast.RegAColor(S(0), &fade, kind, 7, nullptr, &fade), 0);
    EXPECT_EQ(cast.DelAColor(S(0), kind), 1);
  }
  EXPECT_EQ(cast.RegAColor(S(-1), &fade, 4, 0, nullptr, nullptr), -1);
  EXPECT_EQ(cast.Count(), 2);
  EXPECT_EQ(cast.AFade(S(0)), fadeCopy);
  EXPECT_EQ(NameOf(cast, S(0)), "kept");
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x008u);
  EXPECT_EQ(ListSize(fade), 0);
}

TEST(QvMCastColor, RemovalAndNullAnimations) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({3});
  tbColorTable table = GreyTable();
  QvAFlash flash;
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  cast.RegOrgCTable(S(0), &table, nullptr, nullptr);
  EXPECT_EQ(cast.IsAColor(S(0)), 0);
  cast.RegAColor(S(0), &flash, 1, 0, nullptr, &flash);
  EXPECT_EQ(cast.IsAColor(S(0)), 1);
  EXPECT_EQ(ListSize(flash), 1);
  cast.SetActFlag(S(0), 0xFFFFFFFFu);
  EXPECT_EQ(cast.DelAColor(S(0), 1), 1);
  EXPECT_EQ(cast.IsAColor(S(0)), 0);
  EXPECT_EQ(ListSize(flash), 0);
  EXPECT_EQ(cast.Rec(S(0))->lists[1], nullptr);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x010u);
  // Removing a kind that is not there still trims the flags and the icon.
  ASSERT_NE(cast.Icon(S(0), S(8), S(8)), nullptr);
  cast.Rec(S(0))->actFlag = 0x3FFu;
  EXPECT_EQ(cast.DelAColor(S(0), 2), 1);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x010u);
  EXPECT_EQ(cast.Rec(S(0))->icon.Pic(), nullptr);
  // A null animation removes the copy, keeps the flags, records the list.
  cast.RegAColor(S(0), &flash, 1, 0, nullptr, nullptr);
  cast.SetActFlag(S(0), 0x002u);
  EXPECT_EQ(cast.RegAColor(S(0), nullptr, 1, 0, nullptr, &flash), 0);
  EXPECT_EQ(cast.AFlash(S(0)), nullptr);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x002u);
  EXPECT_EQ(ListSize(flash), 1);
}

TEST(QvMCastColor, FailedCopyLeavesTheKindEmpty) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  cast.New(nullptr);
  EXPECT_EQ(FailAt(1, [&] { return cast.RegAColor(S(0), &fade, 3, 5, nullptr, &fade); }), 0);
  EXPECT_EQ(cast.AFade(S(0)), nullptr);
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_EQ(ListSize(fade), 1);
  for (int k = 2; k <= 6; ++k) {
    EXPECT_EQ(FailAt(k, [&] { return cast.RegAColor(S(0), &fade, 3, 5, nullptr, &fade); }), 0);
  }
  EXPECT_EQ(FailAt(1, [&] { return cast.RegAColor(S(-1), &fade, 3, 5, nullptr, &fade); }), -1);
}

TEST(QvMCastColor, ChangesReachTheCopiesThroughUpdateMCast) {
  NoFailures guard;
  CastProbe cast, other;
  auto fade = MakeFade();
  fade->UpdateMCast();  // no members: nothing happens
  cast.RegAColor(S(-1), fade.get(), 3, 0, Txt("a"), fade.get());
  cast.RegAColor(S(-1), fade.get(), 3, 0, nullptr, fade.get());
  fade->SetSpeed(S(15));  // does not pass itself on
  EXPECT_EQ(cast.AFade(S(0))->Speed(), 30);
  EXPECT_EQ(cast.AFade(S(1))->Speed(), 30);
  fade->UpdateMCast();
  EXPECT_EQ(cast.AFade(S(0))->Speed(), 15);
  EXPECT_EQ(cast.AFade(S(1))->Speed(), 15);
  EXPECT_EQ(ListSize(*fade), 2);
  // SetCount passes itself on, to members of every store; names and ranges stay.
  other.RegAColor(S(-1), fade.get(), 3, 0, nullptr, fade.get());
  fade->SetCount(S(10));
  EXPECT_EQ(cast.AFade(S(0))->Count(), 10);
  EXPECT_EQ(cast.AFade(S(1))->Count(), 10);
  EXPECT_EQ(other.AFade(S(0))->Count(), 10);
  EXPECT_EQ(cast.End(S(0)), 29);
  EXPECT_EQ(NameOf(cast, S(0)), "a");
  EXPECT_EQ(NameOf(cast, S(1)), "<none>");
  other.Del(S(0));
  EXPECT_EQ(ListSize(*fade), 2);

  // DelFromMCast detaches the members; they keep their last copies.
  fade->DelFromMCast();
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  EXPECT_EQ(fade->Get(S(0), &c, &id), 0);
  fade->SetCount(S(20));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(cast.AFade(S(i))->Count(), 10);
    EXPECT_EQ(cast.Rec(S(i))->lists[3], nullptr);
  }
  EXPECT_EQ(NameOf(cast, S(0)), "a");
}

TEST(QvMCastColor, FrameChangesAndTheirBatching) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2, 2});
  anim->UpdateMCast();
  cast.RegAFrame(S(-1), anim.get(), 0, Txt("named"), anim.get());
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
  QvAFrame* before = cast.AFrame(S(0));
  anim->Deactivate(S(0));
  anim->Activate(S(1));
  EXPECT_EQ(cast.AFrame(S(0)), before);
  EXPECT_EQ(cast.AFrame(S(0))->IsActive(S(1)), 0);
  anim->LockUpdateMCast();
  anim->LockUpdateMCast();
  anim->SetPos(S(0), S(7), S(0));
  anim->UnlockUpdateMCast();
  EXPECT_EQ(FramePosX(cast.AFrame(S(0))), 0);
  anim->UnlockUpdateMCast();
  EXPECT_EQ(FramePosX(cast.AFrame(S(0))), 7);
  EXPECT_EQ(FramePosX(cast.AFrame(S(1))), 7);
  EXPECT_EQ(cast.AFrame(S(0))->IsActive(S(1)), 1);
  EXPECT_EQ(NameOf(cast, S(0)), "named");
  EXPECT_EQ(NameOf(cast, S(1)), "<none>");
  QvAFrame* current = cast.AFrame(S(0));
  anim->UnlockUpdateMCast();  // unmatched: does nothing
  EXPECT_EQ(cast.AFrame(S(0)), current);
}

TEST(QvMCastColor, DestroyedAnimationsLeaveTheirMembersDrawing) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  auto anim = MakeAnim({4});
  auto fade = MakeFade();
  for (int i = 0; i < 2; ++i) {
    cast.RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
    cast.RegOrgCTable(S(i), &table, nullptr, nullptr);
    cast.RegAColor(S(i), fade.get(), 3, 0, nullptr, fade.get());
  }
  anim.reset();
  fade.reset();
  Screen screen(16, 16, 0xEE);
  tbRect area(0, 0, 16, 16);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(cast.Rec(S(i))->lists[3], nullptr);
    EXPECT_EQ(cast.Rec(S(i))->lists[4], nullptr);
    EXPECT_EQ(cast.DrawPicture(S(i), 1, &screen.pixMap, &area), 1);
    EXPECT_EQ(screen.At(8, 8), FramePixel(0, 2, 1));
  }
  EXPECT_EQ(cast.DelAColor(S(0), 3), 1);  // touches no list
  EXPECT_EQ(cast.DelAFrame(S(1)), 1);
}

// Stores, backups, members and animations destroyed in every order: no list
// keeps a dangling reference.
TEST(QvMCastColor, DestructionInEveryOrder) {
  NoFailures guard;
  for (int order = 0; order < 7; ++order) {
    SCOPED_TRACE(order);
    QvMCastList dftList;
    auto cast = std::make_unique<CastProbe>();
    auto backup = std::make_unique<CastProbe>();
    auto anim = MakeAnim({3});
    auto fade = MakeFade();
    auto cycle = std::make_unique<QvACycle>();
    QvPal pal = PalRange(1, 4);
    cycle->RegArea(&pal);
    QvMCastDft dft[1];
    cast->RegAFrame(S(-1), anim.get(), 0, Txt("m"), anim.get());
    cast->RegAColor(S(0), fade.get(), 3, 0, Txt("m"), fade.get());
    cast->RegAColor(S(0), cycle.get(), 0, 0, Txt("m"), cycle.get());
    cast->RegDft(S(0), S(0), dft, S(1), 0, Txt("m"), &dftList);
    cast->RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
    ASSERT_EQ(cast->Backup(S(0), backup.get()), 1);
    EXPECT_EQ(ListSize(*anim), 3);
    switch (order) {
      case 0:  // members, then animations, then stores
        cast->Del(S(0));
        cast->Del(S(1));
        backup->DelAll();
        EXPECT_EQ(ListSize(*anim) + ListSize(*fade) + ListSize(*cycle) + ListSize(dftList), 0);
        anim.reset();
        fade.reset();
        break;
      case 1:  // animations first
        anim.reset();
        fade.reset();
        cycle.reset();
        cast->Del(S(1));
        break;
      case 2:  // the store, then a change, then the backup
        cast.reset();
        anim->SetInterval(S(0), S(5));
        EXPECT_EQ(backup->AFrame(S(0))->CountMFrame(), 5);
        backup.reset();
        EXPECT_EQ(ListSize(*anim) + ListSize(*fade) + ListSize(*cycle) + ListSize(dftList), 0);
        fade->SetCount(S(4));
        cycle->SetMode(2);
        break;
      case 3:  // the backup, then the animations
        backup.reset();
        fade.reset();
        anim->UpdateMCast();
        anim.reset();
        break;
      case 4:  // one animation, one store, the other animation
        fade.reset();
        cast.reset();
        anim->UpdateMCast();
        break;
      case 5:  // emptying keeps the member but leaves every list
        cast->Empty(S(0));
        backup->Empty(S(0));
        EXPECT_EQ(ListSize(*fade), 0);
        EXPECT_EQ(ListSize(*anim), 1);
        break;
      default:  // both stores first
        cast.reset();
        backup.reset();
        EXPECT_EQ(ListSize(*anim) + ListSize(*fade) + ListSize(*cycle) + ListSize(dftList), 0);
        break;
    }
    if (anim) anim->UpdateMCast();
    if (fade) fade->UpdateMCast();
    if (cycle) cycle->UpdateMCast();
  }
}
