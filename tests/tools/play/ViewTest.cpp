// The window's parts: layout, the bitmap font, text wrapping, the frame's
// drawing, and the view's timeline, panels and counters.

#include "PlayTestUtil.h"
#include "play/Font.h"

namespace {

using namespace playtest;
using qvplay::ComputeLayout;
using qvplay::Frame;
using qvplay::GlyphPixel;
using qvplay::Layout;
using qvplay::Rgb;

TEST(Layout, TheLargestWholeScaleThatFitsAboveTheBar) {
  const int bar = qvplay::BarHeight(3, 1);
  EXPECT_EQ(bar, 4 + 3 * qvplay::kRowHeight + 3 + 7 + 4);
  Layout l = ComputeLayout(700, 400 + bar, 320, 200, 3);
  EXPECT_EQ(l.scale, 2);
  EXPECT_EQ(l.picX, 30);
  EXPECT_EQ(l.picY, 0);
  EXPECT_EQ(l.barY, 400);
  EXPECT_EQ(l.barHeight, bar);
  l = ComputeLayout(100, 50, 320, 200, 3);  // too small: still one movie pixel per window pixel
  EXPECT_EQ(l.scale, 1);
  EXPECT_EQ(l.picX, -110);
  // Wide windows get larger text and a taller bar; rows are limited.
  l = ComputeLayout(1280, 900, 320, 200, 40);
  EXPECT_EQ(l.textScale, 2);
  EXPECT_EQ(l.rows, qvplay::kMaxRows);
  EXPECT_EQ(l.barHeight, qvplay::BarHeight(qvplay::kMaxRows, 2));
  EXPECT_EQ(l.scale, 4);
  int w = 0, h = 0;
  qvplay::WindowSizeFor(320, 200, 3, 3, &w, &h);
  EXPECT_EQ(w, 960);
  EXPECT_EQ(h, 600 + qvplay::BarHeight(3, 2));
  l = ComputeLayout(w, h, 320, 200, 3);
  EXPECT_EQ(l.scale, 3);
  EXPECT_EQ(l.picX, 0);
  EXPECT_TRUE(l.InPicture(959, 599));
  EXPECT_FALSE(l.InPicture(959, 600));
  EXPECT_TRUE(l.InBar(0, 600));
}

TEST(Layout, TimelinePositionsOfOneAndOfManyMoments) {
  const Layout l = ComputeLayout(116, 100, 10, 10, 1);
  EXPECT_EQ(l.trackX, 8);
  EXPECT_EQ(l.trackWidth, 100);
  EXPECT_EQ(l.IndexAt(500, 1), 0);
  EXPECT_EQ(l.XOfIndex(0, 1), 8);
  EXPECT_EQ(l.XOfIndex(1, 3), 8 + 49);
  const std::pair<int, int> at[] = {{8 + 24, 0}, {8 + 25, 1}, {-100000, 0}, {100000, 2}};
  for (const auto& a : at) EXPECT_EQ(l.IndexAt(a.first, 3), a.second) << a.first;
  // More moments than columns: every column still names a moment in range.
  for (int x = 0; x < 116; ++x) {
    const int k = l.IndexAt(x, 20000);
    EXPECT_TRUE(k >= 0 && k < 20000) << x;
  }
}

TEST(Font, GlyphsOfTheBuiltInFontAndTextWidths) {
  // 'T': a full top row and the middle column below it.
  for (int x = 0; x < qvplay::kGlyphWidth; ++x) EXPECT_TRUE(GlyphPixel('T', x, 0));
  for (int y = 1; y < qvplay::kGlyphHeight; ++y) {
    EXPECT_TRUE(GlyphPixel('T', 2, y));
    EXPECT_FALSE(GlyphPixel('T', 0, y));
  }
  EXPECT_FALSE(GlyphPixel('T', 5, 0));
  EXPECT_FALSE(GlyphPixel('T', 0, -1));
  for (int y = 0; y < qvplay::kGlyphHeight; ++y) {
    for (int x = 0; x < qvplay::kGlyphWidth; ++x) {
      EXPECT_EQ(GlyphPixel('q', x, y), GlyphPixel('Q', x, y));
      EXPECT_EQ(GlyphPixel('\x01', x, y), GlyphPixel('?', x, y));
      EXPECT_EQ(GlyphPixel('\xe9', x, y), GlyphPixel('?', x, y));
      EXPECT_FALSE(GlyphPixel(' ', x, y));
    }
  }
  // Every printable character other than the space has a glyph of its own.
  for (char c = '!'; c <= '~'; ++c) {
    int set = 0;
    for (int y = 0; y < qvplay::kGlyphHeight; ++y) {
      for (int x = 0; x < qvplay::kGlyphWidth; ++x) set += GlyphPixel(c, x, y);
    }
    EXPECT_GT(set, 0) << c;
  }
  EXPECT_EQ(qvplay::TextWidth("", 1), 0);
  EXPECT_EQ(qvplay::TextWidth("AB", 1), 11);
  EXPECT_EQ(qvplay::TextWidth("AB", 2), 22);
}

TEST(Frame, TextAndRectanglesAreDrawnAtTheirPlaceAndClipped) {
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

  f.Resize(4, 3);
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
  EXPECT_EQ(qvplay::WrapText("ab cd efghijklmn o", 6 * 5, 1),
            (std::vector<std::string>{"ab cd", "efghi", "jklmn", "o"}));
  EXPECT_TRUE(qvplay::WrapText("", 100, 1).empty());
  EXPECT_EQ(qvplay::WrapText("abc", 0, 1).size(), 3u);
}

class View : public PlayerTest {
 protected:
  void SetUp() override {
    PlayerTest::SetUp();
    Resize(20, 2);
  }
};

TEST_F(View, TheTimelineShowsTheCurrentMomentAndTheMemberRanges) {
  qvplay::DrawView(&player, &frame);
  ASSERT_EQ(frame.Width(), 160);
  const int cursorY = L().rowsY + 1;
  EXPECT_EQ(frame.At(L().XOfIndex(0, 10), cursorY), Rgb(255, 255, 255));
  // Both members span the whole movie; the middle of each row is coloured.
  const std::uint32_t row0 = frame.At(80, L().rowsY + 1);
  const std::uint32_t row1 = frame.At(80, L().rowsY + qvplay::kRowHeight + 1);
  EXPECT_NE(row0, row1);
  EXPECT_NE(row0, frame.At(80, L().barY));
  player.GoTo(9);
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(frame.At(L().XOfIndex(9, 10), cursorY), Rgb(255, 255, 255));
  EXPECT_EQ(frame.At(L().XOfIndex(0, 10), cursorY), row0);
  Press(SDLK_1);  // a hidden layer's members are greyed
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(frame.At(80, L().rowsY + 1), Rgb(80, 80, 88));
  EXPECT_EQ(frame.At(80, L().rowsY + qvplay::kRowHeight + 1), row1);
}

TEST_F(View, OverlayAndHelpAreDrawnOverThePictureOnly) {
  Resize(80, 2);  // room for the help's lines
  qvplay::DrawView(&player, &frame);
  const Frame plain = frame;
  // Window pixels from row y0 on that differ from the plain view.
  auto changed = [&](int y0) {
    qvplay::DrawView(&player, &frame);
    long n = 0;
    for (int y = y0; y < frame.Height(); ++y) {
      for (int x = 0; x < frame.Width(); ++x) n += frame.At(x, y) != plain.At(x, y);
    }
    return n;
  };
  Press(SDLK_o);
  EXPECT_GT(changed(0), 100);
  Press(SDLK_o);
  Press(SDLK_h);
  EXPECT_GT(changed(0), 100);
  EXPECT_EQ(changed(L().barY), 0);
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
