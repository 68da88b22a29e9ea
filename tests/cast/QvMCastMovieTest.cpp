// A small movie drawn end to end through the layer store: members moving on
// anchor paths, scrolling with wrap, colour animations of every kind, drawn
// layer over layer.
#include <gtest/gtest.h>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"

using namespace casttest;

namespace {

constexpr unsigned char kBack = 0xEE;

struct Movie {
  Movie() : walker(MakeAnim({2, 2})), still(MakeAnim({10})), table(GreyTable()) {
    QvPal area = PalRange(1, 4);
    cycle.RegArea(&area);
    flash.RegArea(&area);
    sw.RegArea(&area);
    fade.RegArea(&area);
    tbColorTable t1 = GreyTable();
    for (int i = 0; i < 256; ++i) {
      tbRGBColor c(static_cast<unsigned char>(255 - i), 40, static_cast<unsigned char>(i));
      t1.SetCTTable(S(i), &c);
    }
    sw.RegCTable(S(0), &t1);
    sw.RegCTable(S(1), &t1);
    fade.RegColor(tbRGBColor(0, 0, 255));

    // Member 0 walks right along four anchors, one per unit of time.
    cast.RegAFrame(S(-1), walker.get(), 0, Txt("walker"), walker.get());
    cast.RegOrgCTable(S(0), &table, nullptr, Txt("walker"));
    QvMCastAnc anc[4];
    for (int i = 0; i < 4; ++i) anc[i].point = tbPoint(10 + 10 * i, 10);
    cast.RegAnc(S(0), anc, S(4), 1, Txt("walker"));
    cast.SetAncStep(S(0), 1.0);

    // Member 1 stands at the centre, scrolls right and carries all colours.
    cast.RegAFrame(S(-1), still.get(), 0, Txt("scroller"), still.get());
    cast.RegOrgCTable(S(1), &table, nullptr, Txt("scroller"));
    cast.SetScrStepH(S(1), 1.0);
    cast.RegScroll(S(1), 2, Txt("scroller"));
    cast.RegAColor(S(1), &cycle, 0, 0, Txt("scroller"), &cycle);
    cast.RegAColor(S(1), &flash, 1, 0, Txt("scroller"), &flash);
    cast.RegAColor(S(1), &sw, 2, 0, Txt("scroller"), &sw);
    cast.RegAColor(S(1), &fade, 3, 0, Txt("scroller"), &fade);

    // Member 2 stands at the centre too, unscrolled.
    cast.RegAFrame(S(-1), still.get(), 0, Txt("cover"), still.get());
    cast.RegOrgCTable(S(2), &table, nullptr, Txt("cover"));

    layers.New(S(0), S(100));
    layers.New(S(1), S(101));
    layers.New(S(2), S(102));
    layers.RegCast(S(0), &cast, S(1), -1);
    layers.RegCast(S(1), &cast, S(2), -1);
    layers.RegCast(S(2), &cast, S(0), -1);
  }
  ~Movie() { layers.DelAll(); }

  std::unique_ptr<QvAFrame> walker;
  std::unique_ptr<QvAFrame> still;
  QvACycle cycle;
  QvAFlash flash;
  QvASwitch sw;
  QvAFade fade;
  tbColorTable table;
  CastProbe cast;
  QvMLayer layers;
};

}  // namespace

TEST(QvMCastMovie, LayersDrawTheirMembersAtEachMoment) {
  NoFailures guard;
  Movie m;
  Screen screen(64, 32, kBack);
  tbRect area(0, 0, 64, 32);
  m.layers.DrawPicture(1, &screen.pixMap, &area);
  // The walker at anchor 1, first image.
  EXPECT_EQ(screen.At(20, 10), FramePixel(0, 2, 1));
  EXPECT_EQ(screen.At(18, 9), FramePixel(0, 0, 0));
  // The cover (layer 1) hides the scroller (layer 0) at the centre.
  for (int x = 0; x < 4; ++x) EXPECT_EQ(screen.At(30 + x, 15), FramePixel(0, x, 0));
  EXPECT_EQ(screen.CountNot(kBack), 16);

  // The scroller's world carries the whole colour chain at that moment.
  tbColorTable expected = m.table;
  const std::pair<QvAColor*, int> chain[] = {
      {&m.cycle, 1}, {&m.flash, 1}, {&m.sw, 1}, {&m.fade, 1}};
  for (const auto& c : chain) {
    tbColorTable* step = c.first->CTable(S(c.second), &expected);
    ASSERT_NE(step, nullptr);
    expected = *step;
  }
  ASSERT_NE(m.cast.Rec(S(1))->orgGWorld, nullptr);
  EXPECT_TRUE(*m.cast.Rec(S(1))->orgGWorld->CTable() == expected);

  // Placed on the top layer as well, the scroller is drawn again over the
  // cover, scrolled by one with wrap.
  m.layers.RegCast(S(2), &m.cast, S(1), -1);
  m.layers.DrawPicture(1, &screen.pixMap, &area);
  EXPECT_EQ(screen.At(30, 15), FramePixel(0, 3, 0));
  EXPECT_EQ(screen.At(31, 15), FramePixel(0, 0, 0));
  EXPECT_EQ(screen.At(33, 16), FramePixel(0, 2, 1));

  // Later the walker has moved on and shows its second image; after its end
  // at 3 it is gone, and at 50 nothing is drawn.
  screen.Fill(kBack);
  m.layers.DrawPicture(3, &screen.pixMap, &area);
  EXPECT_EQ(screen.At(40, 10), FramePixel(1, 2, 1));
  EXPECT_EQ(screen.At(20, 10), kBack);
  screen.Fill(kBack);
  m.layers.DrawPicture(4, &screen.pixMap, &area);
  EXPECT_EQ(screen.At(40, 10), kBack);
  EXPECT_EQ(screen.CountNot(kBack), 8);
  screen.Fill(kBack);
  m.layers.DrawPicture(50, &screen.pixMap, &area);
  EXPECT_EQ(screen.CountNot(kBack), 0);

  // A change of the fade reaches the member and the next picture.
  m.fade.RegColor(tbRGBColor(255, 255, 0));
  m.cast.SetStartEnd(S(1), 0, 29);
  m.layers.DrawPicture(29, &screen.pixMap, &area);
  ASSERT_NE(m.cast.Rec(S(1))->orgGWorld, nullptr);
  EXPECT_EQ(*m.cast.Rec(S(1))->orgGWorld->CTable()->CTTable(S(3)), tbRGBColor(255, 255, 0));
  EXPECT_EQ(*m.cast.Rec(S(1))->orgGWorld->CTable()->CTTable(S(9)), tbRGBColor(9, 9, 9));
}
