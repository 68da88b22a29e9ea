// Drawing a member at a moment, its colour table chain, its frame area and
// hit-testing, and its icon.
#include <tuple>

#include "acolor/QvACycle.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"

using namespace casttest;

namespace {

constexpr unsigned char kBack = 0xEE;

// Member 0: a 4 x 2 animation (anchor (2, 1)) from time start on, with a grey
// own colour table, drawn into a 16 x 16 screen unless told otherwise.
struct QvMCastDraw : CastTest {
  void Make(std::int32_t start, std::initializer_list<int> intervals) {
    anim = MakeAnim(intervals);
    EXPECT_EQ(cast.RegAFrame(S(-1), anim.get(), start, Txt("m"), nullptr), 0);
    EXPECT_EQ(cast.RegOrgCTable(S(0), &table, nullptr, Txt("m")), 0);
  }
  void SetUp() override { Make(0, {5}); }
  char Draw(std::int32_t t, std::int16_t id = 0) {
    screen.Fill(kBack);
    return cast.DrawPicture(id, t, &screen.pixMap, &screen.area);
  }
  std::unique_ptr<QvAFrame> anim;
  tbColorTable table = GreyTable();
  Screen screen{16, 16, kBack};
};

}  // namespace

TEST_F(QvMCastDraw, PlacesTheAnchorAtTheCentreOrOnThePath) {
  Screen big(640, 480, kBack);
  tbRect full(0, 0, 640, 480), sub(100, 50, 200, 100);
  EXPECT_EQ(cast.DrawPicture(S(0), 0, &big.pixMap, &full), 1);
  EXPECT_EQ((Vals{big.At(320, 240), big.At(318, 239), big.At(321, 240), big.CountNot(kBack)}),
            (Vals{FramePixel(0, 2, 1), FramePixel(0, 0, 0), FramePixel(0, 3, 1), 8}));
  // On a path of two anchors, one per unit of time.
  QvMCastAnc anc[2] = {{tbPoint(10, 20), 0}, {tbPoint(30, 20), 0}};
  cast.RegAnc(S(0), anc, S(2), QvMCast::kAncClamp, Txt("m"));
  cast.SetAncStep(S(0), 1.0);
  for (int t = 0; t < 2; ++t) {
    big.Fill(kBack);
    EXPECT_EQ(cast.DrawPicture(S(0), t, &big.pixMap, &sub), 1);
    EXPECT_EQ((Vals{big.At(110 + 20 * t, 70), big.At(108 + 20 * t, 69), big.CountNot(kBack)}),
              (Vals{FramePixel(0, 2, 1), FramePixel(0, 0, 0), 8}));
  }
  // Scrolling right by one wraps the image inside its frame (6, 7) .. (10, 9).
  cast.DelAnc(S(0));
  cast.SetScrStepH(S(0), 1.0);
  cast.RegScroll(S(0), QvMCast::kScrollRight, Txt("m"));
  EXPECT_EQ(
      (Vals{Draw(1), screen.At(6, 7), screen.At(7, 7), screen.At(9, 8), screen.CountNot(kBack)}),
      (Vals{1, FramePixel(0, 3, 0), FramePixel(0, 0, 0), FramePixel(0, 2, 1), 8}));
}

TEST_F(QvMCastDraw, TimesFramesAndBadRequests) {
  cast.SetStartEnd(S(0), 100, 104);
  EXPECT_EQ((Vals{Draw(105), Draw(99), screen.CountNot(kBack), Draw(104), Draw(-1)}),
            (Vals{0, 0, 0, 1, 1}));  // -1: the start
  EXPECT_EQ(screen.At(8, 8), FramePixel(0, 2, 1));
  EXPECT_EQ((Vals{cast.DrawPicture(S(0), 100, nullptr, &screen.area),
                  cast.DrawPicture(S(0), 100, &screen.pixMap, nullptr)}),
            (Vals{0, 0}));
  // No own colour table (so no world), no frame animation, no frames.
  cast.RegAFrame(S(-1), anim.get(), 0, nullptr, nullptr);
  EXPECT_EQ(Draw(0, S(1)), 0);
  cast.DelAFrame(S(0));
  EXPECT_EQ(Draw(100), 0);
  QvAFrame empty;
  cast.RegAFrame(S(0), &empty, 0, nullptr, nullptr);
  EXPECT_EQ((Vals{Draw(100), screen.CountNot(kBack)}), (Vals{0, 0}));

  // The copy's clock follows the time at the copy's speed: frame 3 is the
  // second image, frame 45 of a long animation is 45.
  cast.Del(S(0));
  cast.Del(S(1));
  Make(10, {2, 2, 2, 60});
  EXPECT_EQ((Vals{Draw(13), screen.At(8, 8), cast.AFrame(S(0))->Cur()}),
            (Vals{1, FramePixel(1, 2, 1), 3}));
  EXPECT_EQ((Vals{Draw(55), cast.AFrame(S(0))->Cur()}), (Vals{1, 45}));
  // At half speed, 3 units are frame 1, still the first image.
  anim->SetSpeed(S(15));
  cast.RegAFrame(S(0), anim.get(), 0, Txt("m"), nullptr);
  EXPECT_EQ((Vals{Draw(13), screen.At(8, 8), anim->Cur()}), (Vals{1, FramePixel(0, 2, 1), 0}));
}

TEST_F(QvMCastDraw, ColourTableChain) {
  cast.SetStartEnd(S(0), 0, 100);
  tbColorTable* ct = cast.CTable(S(0), 2);
  ASSERT_NE(ct, nullptr);
  EXPECT_TRUE(*ct == table);
  EXPECT_EQ(cast.CTable(S(0), 3), ct);  // the store's working table
  EXPECT_TRUE(cast.CTable(S(0), -1) == nullptr && cast.CTable(S(0), 101) == nullptr);

  QvPal pal = RangePal(1, 4);
  QvACycle cycle;
  QvAFlash flash;
  QvASwitch sw;
  QvAFade fade;
  for (QvAColor* a : std::initializer_list<QvAColor*>{&cycle, &flash, &sw, &fade}) a->RegArea(&pal);
  // A switch without tables computes nothing: its output is passed on.
  cast.RegAColor(S(0), &sw, QvAColor::kSwitch, 0, nullptr, nullptr);
  ASSERT_NE(cast.CTable(S(0), 0), nullptr);
  EXPECT_TRUE(*cast.CTable(S(0), 0) == *cast.ASwitch(S(0))->CTable());

  tbColorTable other = GreyTable();
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(static_cast<unsigned char>(255 - i), 0, static_cast<unsigned char>(i));
    other.SetCTTable(S(i), &c);
  }
  sw.RegCTable(S(0), &other);
  sw.RegCTable(S(1), &table);
  fade.RegColor(tbRGBColor(0, 255, 0));
  // Registered in another order than the chain's: cycle, flash, switch, fade.
  cast.RegAColor(S(0), &fade, QvAColor::kFade, 0, nullptr, &fade);
  cast.RegAColor(S(0), &sw, QvAColor::kSwitch, 0, nullptr, nullptr);
  cast.RegAColor(S(0), &cycle, QvAColor::kCycle, 0, nullptr, nullptr);
  cast.RegAColor(S(0), &flash, QvAColor::kFlash, 0, nullptr, nullptr);
  tbColorTable expected = table;
  for (QvAColor* a : std::initializer_list<QvAColor*>{&cycle, &flash, &sw, &fade}) {
    tbColorTable* step = a->CTable(S(1), &expected);
    ASSERT_NE(step, nullptr);
    expected = *step;
  }
  ct = cast.CTable(S(0), 1);
  ASSERT_NE(ct, nullptr);
  EXPECT_TRUE(*ct == expected);
  EXPECT_EQ(*ct->CTTable(S(9)), tbRGBColor(9, 9, 9));  // outside the area
  ASSERT_EQ(Draw(1), 1);
  EXPECT_EQ(cast.Rec(S(0))->orgGWorld->bounds, tbRect(0, 0, 4, 2));
  EXPECT_TRUE(*cast.Rec(S(0))->orgGWorld->CTable() == expected);
  EXPECT_EQ(screen.At(8, 8), FramePixel(0, 2, 1));
  // A change of the fade reaches the member's next world.
  fade.RegColor(tbRGBColor(255, 255, 0));
  ASSERT_EQ(Draw(29), 1);
  EXPECT_EQ(*cast.Rec(S(0))->orgGWorld->CTable()->CTTable(S(3)), tbRGBColor(255, 255, 0));
  // Colour animations need the own colour table.
  cast.DelOrgCTable(S(0));
  EXPECT_EQ((Vals{cast.CTable(S(0), 1) == nullptr, Draw(1)}), (Vals{1, 0}));
}

TEST_F(QvMCastDraw, EachCopysClockRunsAtItsOwnSpeed) {
  cast.SetStartEnd(S(0), 50, 150);
  QvAFade fade, slow;
  QvAFlash flash;
  QvPal pal = RangePal(5, 5);
  for (QvAColor* a : std::initializer_list<QvAColor*>{&fade, &slow, &flash}) a->RegArea(&pal);
  fade.RegColor(tbRGBColor(255, 0, 0));
  slow.SetSpeed(S(15));
  cast.RegAColor(S(0), &fade, QvAColor::kFade, 0, nullptr, nullptr);
  EXPECT_EQ(*cast.CTable(S(0), 50)->CTTable(S(5)), tbRGBColor(5, 5, 5));
  EXPECT_EQ(*cast.CTable(S(0), 79)->CTTable(S(5)), tbRGBColor(255, 0, 0));
  cast.RegAColor(S(0), &flash, QvAColor::kFlash, 0, nullptr, nullptr);
  ASSERT_NE(cast.CTable(S(0), 57), nullptr);
  EXPECT_EQ((Vals{cast.AFade(S(0))->Cur(), cast.AFlash(S(0))->Cur()}), (Vals{7, 2}));  // 7 in 0..2
  cast.RegAColor(S(0), &slow, QvAColor::kFade, 0, nullptr, nullptr);
  ASSERT_NE(cast.CTable(S(0), 57), nullptr);
  EXPECT_EQ(cast.AFade(S(0))->Cur(), 3);
}

TEST_F(QvMCastDraw, FrameAreaAndHitTesting) {
  // Without a path the anchor is the centre in every mode.
  tbRect full(0, 0, 640, 480), r;
  tbPoint p;
  for (char mode : {QvMCast::kPixelsWide, QvMCast::kPixelsTall, QvMCast::kPixelsSquare}) {
    EXPECT_EQ(cast.GetAFrameArea(S(0), 0, &full, mode, &r, &p), 1);
    EXPECT_EQ(p, tbPoint(320, 240));
  }
  EXPECT_EQ(r, tbRect(318, 239, 322, 241));
  const std::pair<tbPoint, int> hits[] = {
      {{318, 239}, 1}, {{321, 240}, 1}, {{322, 240}, 0}, {{320, 241}, 0}, {{317, 240}, 0}};
  for (auto h : hits)
    EXPECT_EQ(cast.PtInAFrame(&h.first, S(0), 0, &full, QvMCast::kPixelsSquare), h.second)
        << h.first.x;
  EXPECT_EQ(
      (Vals{cast.PtInAFrame(&p, S(0), 9, &full, 0), cast.PtInAFrame(nullptr, S(0), 0, &full, 0),
            cast.GetAFrameArea(S(0), -1, &full, 0, &r, &p),
            cast.GetAFrameArea(S(0), 5, &full, 0, &r, &p),
            cast.GetAFrameArea(S(0), 0, nullptr, 0, &r, &p),
            cast.GetAFrameArea(S(0), 0, &full, 0, nullptr, &p),
            cast.GetAFrameArea(S(0), 0, &full, 0, &r, nullptr)}),
      (Vals{0, 0, 0, 0, 0, 0, 0}));

  QvMCastAnc anc[1] = {{tbPoint(10, 20), 0}};
  cast.RegAnc(S(0), anc, S(1), 0, nullptr);
  tbRect sub(100, 50, 300, 200);
  const tbRect untouched(1, 2, 3, 4);
  const std::tuple<char, tbPoint, tbRect> cases[] = {{0, {110, 70}, {108, 69, 112, 71}},
                                                     {1, {110, 90}, {108, 88, 112, 92}},
                                                     {2, {120, 70}, {116, 69, 124, 71}},
                                                     {5, {10, 20}, untouched}};
  for (const auto& c : cases) {
    r = untouched;
    EXPECT_EQ(cast.GetAFrameArea(S(0), 0, &sub, std::get<0>(c), &r, &p), 1);
    EXPECT_EQ(p, std::get<1>(c)) << int(std::get<0>(c));
    EXPECT_EQ(r, std::get<2>(c)) << int(std::get<0>(c));
  }
}

TEST_F(QvMCastDraw, Icons) {
  // A member with only a colour table shows a swatch of the palette.
  ASSERT_EQ(cast.RegOrgCTable(S(-1), &table, nullptr, nullptr), 1);
  tbPicture* icon = cast.Icon(S(1), S(32), S(32));
  ASSERT_EQ(icon, &cast.Rec(S(1))->icon);
  EXPECT_TRUE(icon->ColorTable() == table);
  // {size, x, y, index}
  const int swatch[][4] = {{32, 0, 0, 0},     {32, 1, 1, 0}, {32, 2, 0, 1},     {32, 0, 2, 16},
                           {32, 31, 31, 255}, {16, 2, 0, 4}, {16, 15, 15, 252}, {3, 2, 2, 192}};
  for (const auto& c : swatch) {
    icon = cast.Icon(S(1), S(c[0]), S(c[0]));
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ((Vals{icon->Width(), icon->Height(), icon->Pixel(S(c[1]), S(c[2]))}),
              (Vals{c[0], c[0], c[3]}))
        << c[0] << " " << c[1] << "," << c[2];
  }
  // The same size again returns the cached picture without drawing.
  unsigned char* pixels = icon->Pic();
  EXPECT_EQ(cast.Icon(S(1), S(3), S(3)), icon);
  EXPECT_EQ(icon->Pic(), pixels);
  // Registrations and removals discard it; setting an anchor does not.
  cast.RegScroll(S(1), QvMCast::kScrollLeft, nullptr);
  EXPECT_EQ((Vals{cast.Rec(S(1))->icon.Pic() == nullptr, cast.Rec(S(1))->iconWidth}), (Vals{1, 0}));
  QvMCastAnc anc[2];
  cast.RegAnc(S(1), anc, S(2), 0, nullptr);
  ASSERT_NE(cast.Icon(S(1), S(8), S(8)), nullptr);
  cast.SetAnc(S(1), S(1), tbPoint(3, 3), 0);
  EXPECT_NE(cast.Rec(S(1))->icon.Pic(), nullptr);

  // A frame animation draws into the icon; a member with nothing is blank.
  int sums[2] = {0, 0};
  cast.New(S(2), nullptr);
  for (int id : {0, 2}) {
    ASSERT_NE(icon = cast.Icon(S(id), S(4), S(4)), nullptr);
    for (int i = 0; i < 16; ++i) sums[id / 2] += icon->Pixel(S(i % 4), S(i / 4));
  }
  EXPECT_TRUE(sums[0] > 0 && sums[1] == 0);
  EXPECT_TRUE(cast.Icon(S(2), S(0), S(4)) == nullptr && cast.Icon(S(2), S(4), S(-2)) == nullptr);
  // A frame animation without an image gives no icon.
  QvAFrame noImage;
  noImage.Reg(S(0), S(0), S(0), S(2), S(2), S(0), S(0), S(1));
  cast.RegAFrame(S(2), &noImage, 0, nullptr, nullptr);
  EXPECT_EQ(cast.Icon(S(2), S(4), S(4)), nullptr);
}

TEST_F(QvMCastDraw, AllocationFailuresWhileDrawing) {
  QvAFade fade;
  QvPal pal = RangePal(1, 1);
  fade.RegArea(&pal);
  cast.RegAColor(S(0), &fade, QvAColor::kFade, 0, nullptr, nullptr);
  for (int k = 1; k <= 8; ++k) FailAt(k, [&] { return Draw(1); });
  EXPECT_EQ(FailAt(1, [&] { return Draw(1); }), 0);  // the new world
  EXPECT_EQ(cast.Rec(S(0))->orgGWorld, nullptr);
  EXPECT_EQ(Draw(1), 1);
  for (int k = 1; k <= 6; ++k) {
    cast.RegScroll(S(0), QvMCast::kScrollAll, nullptr);  // drops the icon
    FailAt(k, [&] { return cast.Icon(S(0), S(8), S(8)); });
  }
}
