// Colour animation copies on members, and how changes of the host's
// animations reach the members that hold copies of them.
#include <gtest/gtest.h>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
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

std::unique_ptr<QvAFade> MakeFade(int count = 30) {
  auto fade = std::make_unique<QvAFade>();
  QvPal pal = PalRange(1, 3);
  fade->RegArea(&pal);
  fade->RegColor(tbRGBColor(255, 0, 0));
  fade->SetCount(S(count));
  return fade;
}

std::int16_t CopySpeed(QvAColor* copy) { return copy ? copy->Speed() : -1; }

std::int16_t FramePosX(QvAFrame* anim, int index) {
  std::int16_t x = -1;
  anim->GetAFrame(S(index), &x, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                  nullptr, nullptr);
  return x;
}

}  // namespace

TEST(QvMCastColor, RegAColorCreatesAMemberWithTheAnimationsRange) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  EXPECT_EQ(cast.RegAColor(S(-1), &fade, 3, 100, Txt("fade"), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 129);
  QvAColor* copy = cast.AFade(S(0));
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy, &fade);
  EXPECT_NE(dynamic_cast<QvAFade*>(copy), nullptr);
  EXPECT_EQ(NameOf(cast, S(0)), "fade");
  EXPECT_EQ(cast.ActFlag(S(0)), 0x008u);

  // A second colour animation keeps the range.
  QvAFlash flash;
  EXPECT_EQ(cast.RegAColor(S(0), &flash, 1, 500, Txt("fade"), nullptr), 0);
  EXPECT_EQ(cast.Start(S(0)), 100);
  EXPECT_EQ(cast.End(S(0)), 129);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x00Au);
}

TEST(QvMCastColor, EachKindHasItsOwnPlace) {
  NoFailures guard;
  CastProbe cast;
  QvACycle cycle;
  QvAFlash flash;
  QvASwitch sw;
  QvAFade fade;
  cast.New(nullptr);
  cast.RegAColor(S(0), &cycle, 0, 0, nullptr, nullptr);
  cast.RegAColor(S(0), &flash, 1, 0, nullptr, nullptr);
  cast.RegAColor(S(0), &sw, 2, 0, nullptr, nullptr);
  cast.RegAColor(S(0), &fade, 3, 0, nullptr, nullptr);
  EXPECT_NE(dynamic_cast<QvACycle*>(cast.ACycle(S(0))), nullptr);
  EXPECT_NE(dynamic_cast<QvAFlash*>(cast.AFlash(S(0))), nullptr);
  EXPECT_NE(dynamic_cast<QvASwitch*>(cast.ASwitch(S(0))), nullptr);
  EXPECT_NE(dynamic_cast<QvAFade*>(cast.AFade(S(0))), nullptr);
  EXPECT_EQ(cast.ActFlag(S(0)), 0x00Fu);

  // Kind 1 again replaces only the flash copy.
  QvAColor* cycleCopy = cast.ACycle(S(0));
  QvAColor* fadeCopy = cast.AFade(S(0));
  QvAFlash flash2;
  flash2.SetSpeed(S(12));
  cast.RegAColor(S(0), &flash2, 1, 0, nullptr, nullptr);
  EXPECT_EQ(cast.ACycle(S(0)), cycleCopy);
  EXPECT_EQ(cast.AFade(S(0)), fadeCopy);
  EXPECT_EQ(CopySpeed(cast.AFlash(S(0))), 12);
}

TEST(QvMCastColor, AbsentMembersAndAccessors) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  EXPECT_EQ(cast.RegAColor(S(2), &fade, 3, 0, nullptr, &fade), -1);
  EXPECT_EQ(cast.Count(), 0);
  EXPECT_EQ(ListSize(fade), 0);
  EXPECT_EQ(cast.DelAColor(S(2), 3), 0);
  EXPECT_EQ(cast.ACycle(S(2)), nullptr);
  EXPECT_EQ(cast.AFlash(S(2)), nullptr);
  EXPECT_EQ(cast.ASwitch(S(2)), nullptr);
  EXPECT_EQ(cast.AFade(S(2)), nullptr);
  EXPECT_EQ(cast.IsAColor(S(2)), 0);
}

TEST(QvMCastColor, IsAColorAndRemoval) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({3});
  tbColorTable table = GreyTable();
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  cast.RegOrgCTable(S(0), &table, nullptr, nullptr);
  EXPECT_EQ(cast.IsAColor(S(0)), 0);
  QvAFlash flash;
  cast.RegAColor(S(0), &flash, 1, 0, nullptr, &flash);
  EXPECT_EQ(cast.IsAColor(S(0)), 1);
  EXPECT_EQ(ListSize(flash), 1);
  cast.SetActFlag(S(0), 0xFFFFFFFFu);
  cast.SetShowFlag(S(0), 0xFFFFFFFFu);
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
}

TEST(QvMCastColor, AnimationOfTheWrongKindGivesNoCopy) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  QvACycle cycle;
  cast.New(nullptr);
  cast.RegAColor(S(0), &cycle, 0, 0, nullptr, nullptr);
  EXPECT_EQ(cast.RegAColor(S(0), &fade, 0, 0, Txt("n"), nullptr), 0);
  EXPECT_EQ(cast.ACycle(S(0)), nullptr);
  EXPECT_EQ(cast.IsAColor(S(0)), 0);
  // No copy gives no range.
  cast.New(nullptr);
  EXPECT_EQ(cast.RegAColor(S(1), &fade, 2, 0, nullptr, nullptr), 1);
  EXPECT_EQ(cast.IsAColor(S(1)), 0);
  EXPECT_EQ(cast.Start(S(1)), -1);
}

TEST(QvMCastColor, UnknownKindsTouchNothing) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  cast.New(Txt("kept"));
  cast.RegAColor(S(0), &fade, 3, 0, Txt("kept"), nullptr);
  cast.SetActFlag(S(0), 0x008u);
  for (char kind : {4, -1, 100}) {
    EXPECT_EQ(cast.RegAColor(S(0), &fade, kind, 7, nullptr, &fade), 0);
    EXPECT_EQ(cast.DelAColor(S(0), kind), 1);
  }
  EXPECT_NE(cast.AFade(S(0)), nullptr);
  EXPECT_EQ(NameOf(cast, S(0)), "kept");
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x008u);
  EXPECT_EQ(ListSize(fade), 0);
  // No member is created for an unknown kind.
  EXPECT_EQ(cast.RegAColor(S(-1), &fade, 4, 0, nullptr, nullptr), -1);
  EXPECT_EQ(cast.Count(), 1);
  EXPECT_EQ(cast.RegAColor(S(9), &fade, 4, 0, nullptr, nullptr), -1);
}

TEST(QvMCastColor, NullAnimationRemovesTheCopyAndRecordsTheList) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  cast.RegAColor(S(-1), &fade, 3, 0, nullptr, nullptr);
  cast.SetActFlag(S(0), 0x008u);
  EXPECT_EQ(cast.RegAColor(S(0), nullptr, 3, 0, nullptr, &fade), 0);
  EXPECT_EQ(cast.AFade(S(0)), nullptr);
  EXPECT_EQ(cast.Rec(S(0))->actFlag, 0x008u);
  EXPECT_EQ(ListSize(fade), 1);
}

TEST(QvMCastColor, FailedCopyLeavesTheKindEmpty) {
  NoFailures guard;
  CastProbe cast;
  QvAFade fade;
  cast.New(nullptr);
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegAColor(S(0), &fade, 3, 5, nullptr, &fade), 0);
  QvFailAllocation(0);
  EXPECT_EQ(cast.AFade(S(0)), nullptr);
  EXPECT_EQ(cast.Start(S(0)), -1);
  EXPECT_EQ(ListSize(fade), 1);
  for (int k = 2; k <= 6; ++k) {
    QvFailAllocation(k);
    EXPECT_EQ(cast.RegAColor(S(0), &fade, 3, 5, nullptr, &fade), 0);
    QvFailAllocation(0);
  }
  QvFailAllocation(1);
  EXPECT_EQ(cast.RegAColor(S(-1), &fade, 3, 5, nullptr, &fade), -1);
  QvFailAllocation(0);
}

TEST(QvMCastColor, ChangesReachTheCopiesOnlyThroughUpdateMCast) {
  NoFailures guard;
  CastProbe cast;
  auto fade = MakeFade();
  cast.RegAColor(S(-1), fade.get(), 3, 0, Txt("a"), fade.get());
  cast.RegAColor(S(-1), fade.get(), 3, 0, Txt("b"), fade.get());
  ASSERT_EQ(ListSize(*fade), 2);
  fade->SetSpeed(S(15));
  EXPECT_EQ(CopySpeed(cast.AFade(S(0))), 30);
  EXPECT_EQ(CopySpeed(cast.AFade(S(1))), 30);
  fade->UpdateMCast();
  EXPECT_EQ(CopySpeed(cast.AFade(S(0))), 15);
  EXPECT_EQ(CopySpeed(cast.AFade(S(1))), 15);
  EXPECT_EQ(ListSize(*fade), 2);
  // Changing the count passes itself on; the members keep their ranges.
  fade->SetCount(S(10));
  EXPECT_EQ(cast.AFade(S(0))->Count(), 10);
  EXPECT_EQ(cast.AFade(S(1))->Count(), 10);
  EXPECT_EQ(cast.End(S(0)), 29);
  EXPECT_EQ(NameOf(cast, S(0)), "a");
  EXPECT_EQ(NameOf(cast, S(1)), "b");
}

TEST(QvMCastColor, NamesSurviveRefreshes) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2});
  cast.RegAFrame(S(-1), anim.get(), 0, Txt("named"), anim.get());
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
  anim->SetPos(S(0), S(4), S(0));
  EXPECT_EQ(FramePosX(cast.AFrame(S(0)), 0), 4);
  EXPECT_EQ(NameOf(cast, S(0)), "named");
  EXPECT_EQ(NameOf(cast, S(1)), "<none>");
}

TEST(QvMCastColor, FrameChangesAndTheirBatching) {
  NoFailures guard;
  CastProbe cast;
  auto anim = MakeAnim({2, 2});
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
  EXPECT_EQ(FramePosX(cast.AFrame(S(0)), 0), 0);
  anim->UnlockUpdateMCast();
  EXPECT_EQ(FramePosX(cast.AFrame(S(0)), 0), 7);
  EXPECT_EQ(cast.AFrame(S(0))->IsActive(S(1)), 1);
  // An unmatched unlock does nothing.
  QvAFrame* current = cast.AFrame(S(0));
  anim->UnlockUpdateMCast();
  EXPECT_EQ(cast.AFrame(S(0)), current);
}

TEST(QvMCastColor, UpdateWithoutMembersDoesNothing) {
  NoFailures guard;
  auto fade = MakeFade();
  auto anim = MakeAnim({1});
  fade->UpdateMCast();
  anim->UpdateMCast();
  EXPECT_EQ(ListSize(*fade), 0);
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
    ASSERT_NE(cast.AFrame(S(i)), nullptr);
    ASSERT_NE(cast.AFade(S(i)), nullptr);
    EXPECT_EQ(cast.DrawPicture(S(i), 1, &screen.pixMap, &area), 1);
    EXPECT_EQ(screen.At(8, 8), FramePixel(0, 2, 1));
  }
  // Removing the copies now touches no list.
  EXPECT_EQ(cast.DelAColor(S(0), 3), 1);
  EXPECT_EQ(cast.DelAFrame(S(1)), 1);
}

TEST(QvMCastColor, DelFromMCastDetachesTheMembers) {
  NoFailures guard;
  CastProbe cast;
  auto fade = MakeFade(12);
  cast.RegAColor(S(-1), fade.get(), 3, 0, Txt("x"), fade.get());
  cast.RegAColor(S(-1), fade.get(), 3, 0, nullptr, fade.get());
  fade->DelFromMCast();
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  EXPECT_EQ(fade->Get(S(0), &c, &id), 0);
  for (int i = 0; i < 2; ++i) {
    ASSERT_NE(cast.AFade(S(i)), nullptr);
    EXPECT_EQ(cast.AFade(S(i))->Count(), 12);
    EXPECT_EQ(cast.Rec(S(i))->lists[3], nullptr);
  }
  EXPECT_EQ(NameOf(cast, S(0)), "x");
  fade->SetCount(S(20));
  EXPECT_EQ(cast.AFade(S(0))->Count(), 12);
}

TEST(QvMCastColor, StoreDestroyedBeforeItsAnimations) {
  NoFailures guard;
  auto anim = MakeAnim({2});
  auto fade = MakeFade();
  QvACycle cycle;
  QvPal pal = PalRange(1, 4);
  cycle.RegArea(&pal);
  {
    CastProbe cast;
    cast.RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
    cast.RegAColor(S(0), fade.get(), 3, 0, nullptr, fade.get());
    cast.RegAColor(S(0), &cycle, 0, 0, nullptr, &cycle);
    QvMCastDft dft[1];
    cast.RegDft(S(0), S(0), dft, S(1), 0, nullptr, anim.get());
    EXPECT_EQ(ListSize(*anim), 1);
  }
  EXPECT_EQ(ListSize(*anim), 0);
  EXPECT_EQ(ListSize(*fade), 0);
  EXPECT_EQ(ListSize(cycle), 0);
  anim->SetPos(S(0), S(1), S(1));
  fade->SetCount(S(3));
  cycle.SetMode(2);
}

TEST(QvMCastColor, MembersAndAnimationsDestroyedInEveryOrder) {
  NoFailures guard;
  for (int order = 0; order < 6; ++order) {
    auto cast = std::make_unique<CastProbe>();
    auto backup = std::make_unique<CastProbe>();
    auto anim = MakeAnim({3});
    auto fade = MakeFade();
    cast->RegAFrame(S(-1), anim.get(), 0, Txt("m"), anim.get());
    cast->RegAColor(S(0), fade.get(), 3, 0, Txt("m"), fade.get());
    cast->RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
    ASSERT_EQ(cast->Backup(S(0), backup.get()), 1);
    EXPECT_EQ(ListSize(*anim), 3);
    switch (order) {
      case 0:  // members, then animations, then stores
        cast->Del(S(0));
        cast->Del(S(1));
        backup->DelAll();
        EXPECT_EQ(ListSize(*anim), 0);
        anim.reset();
        fade.reset();
        break;
      case 1:  // animations first
        anim.reset();
        fade.reset();
        cast->Del(S(1));
        break;
      case 2:  // the store, then a change, then the backup
        cast.reset();
        anim->SetInterval(S(0), S(5));
        EXPECT_EQ(backup->AFrame(S(0))->CountMFrame(), 5);
        backup.reset();
        fade->SetCount(S(4));
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
      default:  // emptying keeps the member but leaves every list
        cast->Empty(S(0));
        backup->Empty(S(0));
        EXPECT_EQ(ListSize(*fade), 0);
        EXPECT_EQ(ListSize(*anim), 1);
        break;
    }
    if (anim) anim->UpdateMCast();
    if (fade) fade->UpdateMCast();
  }
}

TEST(QvMCastColor, OneAnimationOnTwoStores) {
  NoFailures guard;
  CastProbe a, b;
  auto fade = MakeFade();
  a.RegAColor(S(-1), fade.get(), 3, 0, nullptr, fade.get());
  b.RegAColor(S(-1), fade.get(), 3, 0, nullptr, fade.get());
  EXPECT_EQ(ListSize(*fade), 2);
  fade->SetCount(S(5));
  EXPECT_EQ(a.AFade(S(0))->Count(), 5);
  EXPECT_EQ(b.AFade(S(0))->Count(), 5);
  b.Del(S(0));
  EXPECT_EQ(ListSize(*fade), 1);
}
