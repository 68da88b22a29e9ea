// Drawing a member at a moment, its colour table chain, its frame area and
// hit-testing, and its icon.
#include <gtest/gtest.h>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCast.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"

using namespace casttest;

namespace {

constexpr unsigned char kBack = 0xEE;

// Member 0: a one-frame 4 x 2 animation (anchor (2, 1)) from time start on,
// with a grey own colour table.
struct Drawn {
  explicit Drawn(std::int32_t start = 0, std::initializer_list<int> intervals = {5})
      : anim(MakeAnim(intervals)), table(GreyTable()) {
    EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), start, Txt("m"), nullptr), 0);
    EXPECT_EQ(cast.RegOrgCTable(S(0), &table, nullptr, Txt("m")), 0);
  }
  CastProbe cast;
  std::unique_ptr<QvAFrame> anim;
  tbColorTable table;
};

}  // namespace

TEST(QvMCastDraw, MemberWithoutPathStandsAtTheCentre) {
  NoFailures guard;
  Drawn d;
  Screen screen(640, 480, kBack);
  tbRect area(0, 0, 640, 480);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(320, 240), FramePixel(0, 2, 1));
  EXPECT_EQ(screen.At(318, 239), FramePixel(0, 0, 0));
  EXPECT_EQ(screen.At(321, 240), FramePixel(0, 3, 1));
  EXPECT_EQ(screen.At(317, 239), kBack);
  EXPECT_EQ(screen.At(322, 240), kBack);
  EXPECT_EQ(screen.CountNot(kBack), 8);
}

TEST(QvMCastDraw, TimesOutsideTheRangeDrawNothing) {
  NoFailures guard;
  Drawn d(100);
  Screen screen(64, 64, kBack);
  tbRect area(0, 0, 64, 64);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 105, &screen.pixMap, &area), 0);  // end is 104
  EXPECT_EQ(d.cast.DrawPicture(S(0), 99, &screen.pixMap, &area), 0);
  EXPECT_EQ(screen.CountNot(kBack), 0);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 104, &screen.pixMap, &area), 1);
  std::fill(screen.pixels.begin(), screen.pixels.end(), kBack);
  // -1 stands for the start.
  EXPECT_EQ(d.cast.DrawPicture(S(0), -1, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(32, 32), FramePixel(0, 2, 1));
}

TEST(QvMCastDraw, BadRequestsFail) {
  NoFailures guard;
  Drawn d;
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  EXPECT_EQ(d.cast.DrawPicture(S(4), 0, &screen.pixMap, &area), 0);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, nullptr, &area), 0);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, &screen.pixMap, nullptr), 0);
  // No own colour table: no world was made.
  d.cast.New(nullptr);
  d.cast.RegAFrame(S(1), d.anim.get(), 0, nullptr, nullptr);
  EXPECT_EQ(d.cast.DrawPicture(S(1), 0, &screen.pixMap, &area), 0);
  // No frame animation.
  d.cast.DelAFrame(S(0));
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, &screen.pixMap, &area), 0);
  // A frame animation without frames has nothing to draw.
  QvAFrame empty;
  d.cast.RegAFrame(S(0), &empty, 0, nullptr, nullptr);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, &screen.pixMap, &area), 0);
  EXPECT_EQ(screen.CountNot(kBack), 0);
}

TEST(QvMCastDraw, TheFrameFollowsTheTimeAndTheCopysSpeed) {
  NoFailures guard;
  Drawn d(10, {2, 2, 2});
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 13, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(8, 8), FramePixel(1, 2, 1));
  EXPECT_EQ(d.cast.AFrame(S(0))->Cur(), 3);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 14, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(8, 8), FramePixel(2, 2, 1));
  // At half speed, 3 units are frame 1, still the first image.
  d.anim->SetSpeed(S(15));
  d.cast.RegAFrame(S(0), d.anim.get(), 0, Txt("m"), nullptr);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 13, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(8, 8), FramePixel(0, 2, 1));
  // The host's animation is not moved.
  EXPECT_EQ(d.anim->Cur(), 0);
}

TEST(QvMCastDraw, AnchorPathPlacesTheMember) {
  NoFailures guard;
  Drawn d;
  QvMCastAnc anc[1];
  anc[0].point = tbPoint(10, 20);
  d.cast.RegAnc(S(0), anc, S(1), 0, Txt("m"));
  Screen screen(200, 100, kBack);
  tbRect area(100, 50, 200, 100);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(110, 70), FramePixel(0, 2, 1));
  EXPECT_EQ(screen.At(108, 69), FramePixel(0, 0, 0));
  EXPECT_EQ(screen.CountNot(kBack), 8);
}

TEST(QvMCastDraw, ScrollingWrapsInsideTheFrame) {
  NoFailures guard;
  Drawn d;
  d.cast.SetScrStepH(S(0), 1.0);
  d.cast.RegScroll(S(0), 2, Txt("m"));
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 1, &screen.pixMap, &area), 1);
  // Frame rectangle (6, 7) .. (10, 9), the image moved right by one.
  EXPECT_EQ(screen.At(6, 7), FramePixel(0, 3, 0));
  EXPECT_EQ(screen.At(7, 7), FramePixel(0, 0, 0));
  EXPECT_EQ(screen.At(9, 8), FramePixel(0, 2, 1));
  EXPECT_EQ(screen.CountNot(kBack), 8);
}

TEST(QvMCastDraw, PaletteAreaLimitsThePixelsDrawn) {
  NoFailures guard;
  Drawn d;
  QvPal pal = PalRange(0, 20);
  d.cast.RegOrgCTable(S(0), &d.table, &pal, Txt("m"));
  EXPECT_EQ(d.cast.Rec(S(0))->fillIndex, 21);
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 0, &screen.pixMap, &area), 1);
  EXPECT_EQ(screen.At(6, 7), 10);
  EXPECT_EQ(screen.At(9, 7), 13);
  EXPECT_EQ(screen.At(6, 8), 20);
  // 21 to 23 lie outside the area: the world keeps the fill colour there,
  // which the copy leaves out.
  EXPECT_EQ(screen.At(7, 8), kBack);
  EXPECT_EQ(screen.At(9, 8), kBack);
  EXPECT_EQ(screen.CountNot(kBack), 5);
}

TEST(QvMCastDraw, ColourAnimationsGiveTheWorldTheirTable) {
  NoFailures guard;
  Drawn d;
  QvAFade fade;
  QvPal pal = PalRange(5, 5);
  fade.RegArea(&pal);
  fade.RegColor(tbRGBColor(255, 0, 0));
  d.cast.RegAColor(S(0), &fade, 3, 0, Txt("m"), nullptr);
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 4, &screen.pixMap, &area), 1);
  tbGWorld* world = d.cast.Rec(S(0))->orgGWorld;
  ASSERT_NE(world, nullptr);
  EXPECT_EQ(world->bounds, tbRect(0, 0, 4, 2));
  EXPECT_TRUE(*world->CTable() == *d.cast.CTable(S(0), 4));
  EXPECT_EQ(screen.At(8, 8), FramePixel(0, 2, 1));

  // Colour animations need the own colour table.
  d.cast.DelOrgCTable(S(0));
  EXPECT_EQ(d.cast.DrawPicture(S(0), 4, &screen.pixMap, &area), 0);
}

TEST(QvMCastDraw, OwnTableAlone) {
  NoFailures guard;
  Drawn d;
  tbColorTable* ct = d.cast.CTable(S(0), 2);
  ASSERT_NE(ct, nullptr);
  EXPECT_TRUE(*ct == d.table);
  EXPECT_EQ(d.cast.CTable(S(0), 3), ct);  // the store's working table
  EXPECT_EQ(d.cast.CTable(S(0), -1), nullptr);
  EXPECT_EQ(d.cast.CTable(S(0), 5), nullptr);
  EXPECT_EQ(d.cast.CTable(S(3), 0), nullptr);
  d.cast.DelOrgCTable(S(0));
  EXPECT_EQ(d.cast.CTable(S(0), 2), nullptr);
}

TEST(QvMCastDraw, FadeAloneRunsFromTheSourceToItsColour) {
  NoFailures guard;
  Drawn d(50);
  QvAFade fade;
  QvPal pal = PalRange(5, 5);
  fade.RegArea(&pal);
  fade.RegColor(tbRGBColor(255, 0, 0));
  ASSERT_EQ(fade.Count(), 30);
  d.cast.RegAColor(S(0), &fade, 3, 0, nullptr, nullptr);
  d.cast.SetStartEnd(S(0), 50, 100);
  tbColorTable* ct = d.cast.CTable(S(0), 50);
  ASSERT_NE(ct, nullptr);
  EXPECT_EQ(*ct->CTTable(S(5)), tbRGBColor(5, 5, 5));
  ct = d.cast.CTable(S(0), 79);
  ASSERT_NE(ct, nullptr);
  EXPECT_EQ(*ct->CTTable(S(5)), tbRGBColor(255, 0, 0));
  EXPECT_EQ(*ct->CTTable(S(6)), tbRGBColor(6, 6, 6));
  EXPECT_EQ(d.cast.AFade(S(0))->Cur(), 29);
}

TEST(QvMCastDraw, EachCopysClockRunsAtItsOwnSpeed) {
  NoFailures guard;
  Drawn d;
  d.cast.SetStartEnd(S(0), 0, 100);
  QvAFade fast, slow;
  QvPal pal = PalRange(1, 2);
  fast.RegArea(&pal);
  slow.RegArea(&pal);
  slow.SetSpeed(S(15));
  QvAFlash flash;
  flash.RegArea(&pal);
  d.cast.RegAColor(S(0), &fast, 3, 0, nullptr, nullptr);
  d.cast.RegAColor(S(0), &flash, 1, 0, nullptr, nullptr);
  ASSERT_NE(d.cast.CTable(S(0), 7), nullptr);
  EXPECT_EQ(d.cast.AFade(S(0))->Cur(), 7);
  EXPECT_EQ(d.cast.AFlash(S(0))->Cur(), 2);  // 7 fitted into 0..2 in mode 0
  d.cast.RegAColor(S(0), &slow, 3, 0, nullptr, nullptr);
  ASSERT_NE(d.cast.CTable(S(0), 7), nullptr);
  EXPECT_EQ(d.cast.AFade(S(0))->Cur(), 3);
}

TEST(QvMCastDraw, TheChainRunsCycleFlashSwitchFade) {
  NoFailures guard;
  Drawn d;
  d.cast.SetStartEnd(S(0), 0, 100);
  QvPal pal = PalRange(1, 4);
  QvACycle cycle;
  QvAFlash flash;
  QvASwitch sw;
  QvAFade fade;
  cycle.RegArea(&pal);
  flash.RegArea(&pal);
  sw.RegArea(&pal);
  fade.RegArea(&pal);
  tbColorTable t1 = GreyTable(), t2 = GreyTable();
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c1(static_cast<unsigned char>(255 - i), 0, static_cast<unsigned char>(i));
    tbRGBColor c2(0, static_cast<unsigned char>(i / 2), 200);
    t1.SetCTTable(S(i), &c1);
    t2.SetCTTable(S(i), &c2);
  }
  sw.RegCTable(S(0), &t1);
  sw.RegCTable(S(1), &t2);
  fade.RegColor(tbRGBColor(0, 255, 0));
  ASSERT_GE(cycle.Count(), 2);
  ASSERT_GE(sw.Count(), 2);
  // Registered in an order different from the chain's.
  d.cast.RegAColor(S(0), &fade, 3, 0, nullptr, nullptr);
  d.cast.RegAColor(S(0), &sw, 2, 0, nullptr, nullptr);
  d.cast.RegAColor(S(0), &cycle, 0, 0, nullptr, nullptr);
  d.cast.RegAColor(S(0), &flash, 1, 0, nullptr, nullptr);

  // What the kinds give, one after the other, at frame 1 over the own table.
  tbColorTable expected = d.table;
  tbColorTable* step = cycle.CTable(S(1), &expected);
  ASSERT_NE(step, nullptr);
  expected = *step;
  step = flash.CTable(S(1), &expected);
  ASSERT_NE(step, nullptr);
  expected = *step;
  step = sw.CTable(S(1), &expected);
  ASSERT_NE(step, nullptr);
  expected = *step;
  step = fade.CTable(S(1), &expected);
  ASSERT_NE(step, nullptr);
  expected = *step;

  tbColorTable* ct = d.cast.CTable(S(0), 1);
  ASSERT_NE(ct, nullptr);
  EXPECT_TRUE(*ct == expected);
  // Outside the area the own table shows through.
  EXPECT_EQ(*ct->CTTable(S(9)), tbRGBColor(9, 9, 9));

  // And drawing carries exactly that table.
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  ASSERT_EQ(d.cast.DrawPicture(S(0), 1, &screen.pixMap, &area), 1);
  EXPECT_TRUE(*d.cast.Rec(S(0))->orgGWorld->CTable() == expected);
}

TEST(QvMCastDraw, AFailedComputationPassesOnTheFormerOutput) {
  NoFailures guard;
  Drawn d;
  // A switch without tables computes nothing; its output table (black) is
  // passed on all the same.
  QvASwitch sw;
  QvPal pal = PalRange(0, 3);
  sw.RegArea(&pal);
  d.cast.RegAColor(S(0), &sw, 2, 0, nullptr, nullptr);
  tbColorTable* ct = d.cast.CTable(S(0), 0);
  ASSERT_NE(ct, nullptr);
  EXPECT_TRUE(*ct == *d.cast.ASwitch(S(0))->CTable());
}

TEST(QvMCastDraw, FrameAreaInItsThreeModes) {
  NoFailures guard;
  Drawn d;
  QvMCastAnc anc[1];
  anc[0].point = tbPoint(10, 20);
  d.cast.RegAnc(S(0), anc, S(1), 0, nullptr);
  tbRect area(100, 50, 300, 200);
  tbRect r(1, 2, 3, 4);
  tbPoint p;
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 0, &r, &p), 1);
  EXPECT_EQ(p, tbPoint(110, 70));
  EXPECT_EQ(r, tbRect(108, 69, 112, 71));
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 1, &r, &p), 1);
  EXPECT_EQ(p, tbPoint(110, 90));
  EXPECT_EQ(r, tbRect(108, 88, 112, 92));
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 2, &r, &p), 1);
  EXPECT_EQ(p, tbPoint(120, 70));
  EXPECT_EQ(r, tbRect(116, 69, 124, 71));
  // Other modes give the anchor itself and leave the rectangle alone.
  r = tbRect(1, 2, 3, 4);
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 5, &r, &p), 1);
  EXPECT_EQ(p, tbPoint(10, 20));
  EXPECT_EQ(r, tbRect(1, 2, 3, 4));
}

TEST(QvMCastDraw, FrameAreaWithoutPathIsCentred) {
  NoFailures guard;
  Drawn d;
  tbRect area(0, 0, 640, 480);
  tbRect r;
  tbPoint p;
  for (char mode : {0, 1, 2}) {
    EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, mode, &r, &p), 1);
    EXPECT_EQ(p, tbPoint(320, 240));
  }
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 0, &r, &p), 1);
  EXPECT_EQ(r, tbRect(318, 239, 322, 241));
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), -1, &area, 0, &r, &p), 0);
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 5, &area, 0, &r, &p), 0);
  EXPECT_EQ(d.cast.GetAFrameArea(S(7), 0, &area, 0, &r, &p), 0);
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, nullptr, 0, &r, &p), 0);
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 0, nullptr, &p), 0);
  EXPECT_EQ(d.cast.GetAFrameArea(S(0), 0, &area, 0, &r, nullptr), 0);
}

TEST(QvMCastDraw, HitTestingExcludesTheRightAndBottomEdges) {
  NoFailures guard;
  Drawn d;
  tbRect area(0, 0, 640, 480);
  tbPoint pt(318, 239);
  EXPECT_EQ(d.cast.PtInAFrame(&pt, S(0), 0, &area, 0), 1);
  pt = tbPoint(321, 240);
  EXPECT_EQ(d.cast.PtInAFrame(&pt, S(0), 0, &area, 0), 1);
  pt = tbPoint(322, 240);
  EXPECT_EQ(d.cast.PtInAFrame(&pt, S(0), 0, &area, 0), 0);
  pt = tbPoint(320, 241);
  EXPECT_EQ(d.cast.PtInAFrame(&pt, S(0), 0, &area, 0), 0);
  pt = tbPoint(317, 240);
  EXPECT_EQ(d.cast.PtInAFrame(&pt, S(0), 0, &area, 0), 0);
  pt = tbPoint(320, 240);
  EXPECT_EQ(d.cast.PtInAFrame(&pt, S(0), 9, &area, 0), 0);
  EXPECT_EQ(d.cast.PtInAFrame(nullptr, S(0), 0, &area, 0), 0);
}

TEST(QvMCastDraw, SwatchIcon) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  cast.RegOrgCTable(S(-1), &table, nullptr, nullptr);
  tbPicture* icon = cast.Icon(S(0), S(32), S(32));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(icon, &cast.Rec(S(0))->icon);
  EXPECT_EQ(icon->Width(), 32);
  EXPECT_EQ(icon->Height(), 32);
  EXPECT_EQ(icon->Pixel(S(0), S(0)), 0);
  EXPECT_EQ(icon->Pixel(S(1), S(1)), 0);
  EXPECT_EQ(icon->Pixel(S(2), S(0)), 1);
  EXPECT_EQ(icon->Pixel(S(0), S(2)), 16);
  EXPECT_EQ(icon->Pixel(S(31), S(31)), 255);
  EXPECT_TRUE(icon->ColorTable() == table);
  // Asked again with the same size, the cached picture comes back.
  unsigned char* pixels = icon->Pic();
  EXPECT_EQ(cast.Icon(S(0), S(32), S(32)), icon);
  EXPECT_EQ(icon->Pic(), pixels);
  // Another size draws anew: 8 by 8 blocks spread over 256 indices.
  icon = cast.Icon(S(0), S(16), S(16));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(icon->Width(), 16);
  EXPECT_EQ(icon->Pixel(S(2), S(0)), 4);
  EXPECT_EQ(icon->Pixel(S(15), S(15)), 252);
  // An odd size rounds the blocks up.
  icon = cast.Icon(S(0), S(3), S(3));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(icon->Pixel(S(2), S(2)), 192);
}

TEST(QvMCastDraw, RegistrationsDiscardTheIcon) {
  NoFailures guard;
  CastProbe cast;
  tbColorTable table = GreyTable();
  cast.RegOrgCTable(S(-1), &table, nullptr, nullptr);
  ASSERT_NE(cast.Icon(S(0), S(8), S(8)), nullptr);
  cast.RegScroll(S(0), 1, nullptr);
  EXPECT_EQ(cast.Rec(S(0))->icon.Pic(), nullptr);
  EXPECT_EQ(cast.Rec(S(0))->iconWidth, 0);
  ASSERT_NE(cast.Icon(S(0), S(8), S(8)), nullptr);
  cast.DelScroll(S(0), 0);
  EXPECT_EQ(cast.Rec(S(0))->icon.Pic(), nullptr);
  // Setting anchors does not.
  QvMCastAnc anc[2];
  cast.RegAnc(S(0), anc, S(2), 0, nullptr);
  ASSERT_NE(cast.Icon(S(0), S(8), S(8)), nullptr);
  cast.SetAnc(S(0), S(1), tbPoint(3, 3), 0);
  EXPECT_NE(cast.Rec(S(0))->icon.Pic(), nullptr);
}

TEST(QvMCastDraw, FrameAndBlankIcons) {
  NoFailures guard;
  Drawn d;
  tbPicture* icon = d.cast.Icon(S(0), S(8), S(8));
  ASSERT_NE(icon, nullptr);
  EXPECT_EQ(icon->Width(), 8);
  int nonZero = 0;
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) nonZero += icon->Pixel(S(x), S(y)) != 0;
  }
  EXPECT_GT(nonZero, 0);

  d.cast.New(nullptr);
  icon = d.cast.Icon(S(1), S(4), S(4));
  ASSERT_NE(icon, nullptr);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) EXPECT_EQ(icon->Pixel(S(x), S(y)), 0);
  }
  EXPECT_EQ(d.cast.Icon(S(5), S(4), S(4)), nullptr);
  EXPECT_EQ(d.cast.Icon(S(1), S(0), S(4)), nullptr);
  EXPECT_EQ(d.cast.Icon(S(1), S(4), S(-2)), nullptr);
  // A frame animation without an image gives no icon.
  QvAFrame noImage;
  noImage.Reg(S(0), S(0), S(0), S(2), S(2), S(0), S(0), S(1));
  d.cast.RegAFrame(S(1), &noImage, 0, nullptr, nullptr);
  EXPECT_EQ(d.cast.Icon(S(1), S(4), S(4)), nullptr);
}

TEST(QvMCastDraw, AllocationFailuresWhileDrawing) {
  NoFailures guard;
  Drawn d;
  QvAFade fade;
  QvPal pal = PalRange(1, 1);
  fade.RegArea(&pal);
  d.cast.RegAColor(S(0), &fade, 3, 0, nullptr, nullptr);
  Screen screen(16, 16, kBack);
  tbRect area(0, 0, 16, 16);
  for (int k = 1; k <= 8; ++k) {
    QvFailAllocation(k);
    d.cast.DrawPicture(S(0), 1, &screen.pixMap, &area);
    QvFailAllocation(0);
  }
  QvFailAllocation(1);  // the new world
  EXPECT_EQ(d.cast.DrawPicture(S(0), 1, &screen.pixMap, &area), 0);
  QvFailAllocation(0);
  EXPECT_EQ(d.cast.Rec(S(0))->orgGWorld, nullptr);
  EXPECT_EQ(d.cast.DrawPicture(S(0), 1, &screen.pixMap, &area), 1);
  for (int k = 1; k <= 6; ++k) {
    d.cast.RegScroll(S(0), 0, nullptr);  // drops the icon
    QvFailAllocation(k);
    d.cast.Icon(S(0), S(8), S(8));
    QvFailAllocation(0);
  }
}
