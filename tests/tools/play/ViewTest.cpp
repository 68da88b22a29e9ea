// The window's parts without the player: layout, the bitmap font, text
// wrapping and the frame's drawing, and the view's timeline and panels.

#include <gtest/gtest.h>

#include "PlayTestUtil.h"
#include "play/Font.h"

namespace {

using namespace playtest;
using qvplay::Frame;
using qvplay::Layout;
using qvplay::Rgb;

TEST(Layout, TheLargestWholeScaleThatFitsAboveTheBar) {
  const int bar = qvplay::BarHeight(3, 1);
  EXPECT_EQ(bar, 4 + 3 * qvplay::kRowHeight + 3 + 7 + 4);
  Layout l = qvplay::ComputeLayout(700, 400 + bar, 320, 200, 3);
  EXPECT_EQ(l.scale, 2);
  EXPECT_EQ(l.picX, 30);
  EXPECT_EQ(l.picY, 0);
  EXPECT_EQ(l.barY, 400);
  EXPECT_EQ(l.barHeight, bar);
  // Too small for the picture: still one movie pixel per window pixel.
  l = qvplay::ComputeLayout(100, 50, 320, 200, 3);
  EXPECT_EQ(l.scale, 1);
  EXPECT_EQ(l.picX, -110);
  // Wide windows get larger text and a taller bar; rows are limited.
  l = qvplay::ComputeLayout(1280, 900, 320, 200, 40);
  EXPECT_EQ(l.textScale, 2);
  EXPECT_EQ(l.rows, qvplay::kMaxRows);
  EXPECT_EQ(l.barHeight, qvplay::BarHeight(qvplay::kMaxRows, 2));
  EXPECT_EQ(l.scale, 4);
  int w = 0, h = 0;
  qvplay::WindowSizeFor(320, 200, 3, 3, &w, &h);
  EXPECT_EQ(w, 960);
  EXPECT_EQ(h, 600 + qvplay::BarHeight(3, 2));
  l = qvplay::ComputeLayout(w, h, 320, 200, 3);
  EXPECT_EQ(l.scale, 3);
  EXPECT_EQ(l.picX, 0);
  EXPECT_TRUE(l.InPicture(959, 599));
  EXPECT_FALSE(l.InPicture(959, 600));
  EXPECT_TRUE(l.InBar(0, 600));
}

TEST(Layout, TimelinePositionsOfOneAndOfManyMoments) {
  const Layout l = qvplay::ComputeLayout(116, 100, 10, 10, 1);
  EXPECT_EQ(l.trackX, 8);
  EXPECT_EQ(l.trackWidth, 100);
  EXPECT_EQ(l.IndexAt(500, 1), 0);
  EXPECT_EQ(l.XOfIndex(0, 1), 8);
  EXPECT_EQ(l.XOfIndex(1, 3), 8 + 49);
  EXPECT_EQ(l.IndexAt(8 + 24, 3), 0);
  EXPECT_EQ(l.IndexAt(8 + 25, 3), 1);
  EXPECT_EQ(l.IndexAt(-100000, 3), 0);
  EXPECT_EQ(l.IndexAt(100000, 3), 2);
  // More moments than columns: every column still names a moment in range.
  for (int x = 0; x < 116; ++x) {
    const int k = l.IndexAt(x, 20000);
    EXPECT_GE(k, 0);
    EXPECT_LT(k, 20000);
  }
}

TEST(Font, GlyphsOfTheBuiltInFont) {
  // 'T': a full top row and the middle column below it.
  for (int x = 0; x < qvplay::kGlyphWidth; ++x) EXPECT_TRUE(qvplay::GlyphPixel('T', x, 0));
  for (int y = 1; y < qvplay::kGlyphHeight; ++y) {
    EXPECT_TRUE(qvplay::GlyphPixel('T', 2, y));
    EXPECT_FALSE(qvplay::GlyphPixel('T', 0, y));
  }
  EXPECT_FALSE(qvplay::GlyphPixel('T', 5, 0));
  EXPECT_FALSE(qvplay::GlyphPixel('T', 0, -1));
  for (int y = 0; y < qvplay::kGlyphHeight; ++y) {
    for (int x = 0; x < qvplay::kGlyphWidth; ++x) {
      EXPECT_EQ(qvplay::GlyphPixel('q', x, y), qvplay::GlyphPixel('Q', x, y));
      EXPECT_EQ(qvplay::GlyphPixel('\x01', x, y), qvplay::GlyphPixel('?', x, y));
      EXPECT_EQ(qvplay::GlyphPixel('\xe9', x, y), qvplay::GlyphPixel('?', x, y));
      EXPECT_FALSE(qvplay::GlyphPixel(' ', x, y));
    }
  }
  // Every printable character other than the space has a glyph of its own.
  for (char c = '!'; c <= '~'; ++c) {
    if (c >= 'a' && c <= 'z') continue;
    int set = 0;
    for (int y = 0; y < qvplay::kGlyphHeight; ++y) {
      for (int x = 0; x < qvplay::kGlyphWidth; ++x) set += qvplay::GlyphPixel(c, x, y);
    }
    EXPECT_GT(set, 0) << c;
  }
  EXPECT_EQ(qvplay::TextWidth("", 1), 0);
  EXPECT_EQ(qvplay::TextWidth("AB", 1), 11);
  EXPECT_EQ(qvplay::TextWidth("AB", 2), 22);
}

TEST(Font, TextIsDrawnAtItsPlaceAndClipped) {
  Frame f(20, 10);
  const std::uint32_t white = Rgb(255, 255, 255);
  qvplay::DrawText(&f, 1, 2, "T", white);
  EXPECT_EQ(f.At(1, 2), white);
  EXPECT_EQ(f.At(5, 2), white);
  EXPECT_EQ(f.At(3, 8), white);
  EXPECT_EQ(f.At(1, 3), Rgb(0, 0, 0));
  qvplay::DrawText(&f, 16, 8, "TTTT", white, 3);  // mostly outside
  qvplay::DrawText(&f, -100, -100, "TTTT", white, 2);
  qvplay::DrawText(nullptr, 0, 0, "T", white);
  EXPECT_EQ(f.At(16, 8), white);
  EXPECT_EQ(f.At(19, 9), white);
}

TEST(Frame, RectanglesAreClipped) {
  Frame f(4, 3);
  f.Fill(Rgb(1, 2, 3));
  f.FillRect(-5, -5, 7, 7, Rgb(9, 9, 9));
  EXPECT_EQ(f.At(1, 1), Rgb(9, 9, 9));
  EXPECT_EQ(f.At(2, 1), Rgb(1, 2, 3));
  f.FillRect(2, 2, 2147483647, 2147483647, Rgb(7, 7, 7));
  EXPECT_EQ(f.At(3, 2), Rgb(7, 7, 7));
  f.FrameRect(0, 0, 4, 3, Rgb(5, 5, 5));
  EXPECT_EQ(f.At(3, 1), Rgb(5, 5, 5));
  EXPECT_EQ(f.At(1, 1), Rgb(9, 9, 9));
  f.ShadeRect(0, 0, 1, 1, Rgb(255, 255, 255), 255);
  EXPECT_EQ(f.At(0, 0), Rgb(255, 255, 255));
  f.Fill(Rgb(0, 0, 0));
  f.ShadeRect(0, 0, 1, 1, Rgb(200, 100, 0), 128);
  EXPECT_EQ(f.At(0, 0), Rgb(100, 50, 0));
  EXPECT_EQ(f.At(4, 0), 0u);
  EXPECT_EQ(f.At(-1, 0), 0u);
  f.Resize(-3, 2);
  EXPECT_EQ(f.Width(), 0);
}

TEST(WrapText, BreaksAtSpacesAndCutsLongWords) {
  const auto lines = qvplay::WrapText("ab cd efghijklmn o", 6 * 5, 1);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "ab cd");
  EXPECT_EQ(lines[1], "efghi");
  EXPECT_EQ(lines[2], "jklmn");
  EXPECT_EQ(lines[3], "o");
  EXPECT_TRUE(qvplay::WrapText("", 100, 1).empty());
  EXPECT_EQ(qvplay::WrapText("abc", 0, 1).size(), 3u);
}

class View : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    int status = 0;
    ASSERT_TRUE(player.Open(dir.ScenePath(), {}, &error, &status)) << error;
    int w = 0, h = 0;
    qvplay::WindowSizeFor(8, 4, 2, 20, &w, &h);
    player.SetWindowSize(w, h);
  }
  FakeTicks ticks;
  SceneDir dir;
  qvplay::Player player;
  Frame frame;
};

TEST_F(View, TheTimelineShowsTheCurrentMomentAndTheMemberRanges) {
  qvplay::DrawView(&player, &frame);
  const Layout& l = player.GetLayout();
  ASSERT_EQ(frame.Width(), 160);
  const int cursorY = l.rowsY + 1;
  EXPECT_EQ(frame.At(l.XOfIndex(0, 10), cursorY), Rgb(255, 255, 255));
  // Both members span the whole movie; the middle of each row is coloured.
  const std::uint32_t row0 = frame.At(80, l.rowsY + 1);
  const std::uint32_t row1 = frame.At(80, l.rowsY + qvplay::kRowHeight + 1);
  EXPECT_NE(row0, row1);
  EXPECT_NE(row0, frame.At(80, l.barY));
  player.GoTo(9);
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(frame.At(l.XOfIndex(9, 10), cursorY), Rgb(255, 255, 255));
  EXPECT_EQ(frame.At(l.XOfIndex(0, 10), cursorY), row0);
  // A hidden layer's members are greyed.
  player.HandleEvent(Key(SDLK_1));
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(frame.At(80, l.rowsY + 1), Rgb(80, 80, 88));
  EXPECT_EQ(frame.At(80, l.rowsY + qvplay::kRowHeight + 1), row1);
}

TEST_F(View, OverlayAndHelpAreDrawnOverThePictureOnly) {
  int w = 0, h = 0;
  qvplay::WindowSizeFor(8, 4, 2, 80, &w, &h);  // room for the help's lines
  player.SetWindowSize(w, h);
  qvplay::DrawView(&player, &frame);
  const Frame plain = frame;
  player.HandleEvent(Key(SDLK_o));
  qvplay::DrawView(&player, &frame);
  long changed = 0;
  for (int y = 0; y < frame.Height(); ++y) {
    for (int x = 0; x < frame.Width(); ++x) changed += frame.At(x, y) != plain.At(x, y);
  }
  EXPECT_GT(changed, 100);
  player.HandleEvent(Key(SDLK_o));
  player.HandleEvent(Key(SDLK_h));
  qvplay::DrawView(&player, &frame);
  const Layout& l = player.GetLayout();
  long inBar = 0;
  for (int y = l.barY; y < frame.Height(); ++y) {
    for (int x = 0; x < frame.Width(); ++x) inBar += frame.At(x, y) != plain.At(x, y);
  }
  EXPECT_EQ(inBar, 0);
}

TEST_F(View, DrawTimeAndShownMomentsAreCounted) {
  EXPECT_EQ(player.DrawnMoments(), 0);
  for (int k = 0; k < 5; ++k) {
    player.GoTo(k);
    qvplay::DrawView(&player, &frame);
    player.MarkShown();
  }
  EXPECT_EQ(player.DrawnMoments(), 5);
  EXPECT_GE(player.DrawMs(), 0.0);
  EXPECT_GE(player.MaxDrawMs(), player.DrawMs());
  EXPECT_EQ(player.ShownFps(), 5.0);
  // The same picture presented again is not a new moment.
  qvplay::DrawView(&player, &frame);
  player.MarkShown();
  EXPECT_EQ(player.DrawnMoments(), 5);
  EXPECT_EQ(player.ShownFps(), 5.0);
  EXPECT_FALSE(player.NeedsRedraw());
}

}  // namespace
