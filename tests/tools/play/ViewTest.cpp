// The window's parts: layout, the bitmap font, text wrapping and the
// frame's drawing.

#include <gtest/gtest.h>

#include "../ToolTestUtil.h"
#include "play/Font.h"
#include "play/Frame.h"
#include "play/Layout.h"
#include "play/View.h"

namespace {

using qvplay::BarHeight;
using qvplay::ComputeLayout;
using qvplay::GlyphPixel;
using qvplay::Rgb;
using tooltest::Ints;

TEST(Layout, TheLargestWholeScaleThatFitsAboveTheBarAndTheTimeline) {
  const int bar = BarHeight(3, 1);
  EXPECT_EQ(bar, 4 + 3 * qvplay::kRowHeight + 3 + 7 + 4);
  auto l = ComputeLayout(700, 400 + bar, 320, 200, 3);
  EXPECT_EQ(Ints(2, 30, 0, 400, bar), Ints(l.scale, l.picX, l.picY, l.barY, l.barHeight));
  l = ComputeLayout(100, 50, 320, 200, 3);  // too small: still one movie pixel per window pixel
  EXPECT_EQ(Ints(1, -110), Ints(l.scale, l.picX));
  // Wide windows get larger text and a taller bar; rows are limited.
  l = ComputeLayout(1280, 900, 320, 200, 40);
  EXPECT_EQ(Ints(2, qvplay::kMaxRows, BarHeight(qvplay::kMaxRows, 2), 4),
            Ints(l.textScale, l.rows, l.barHeight, l.scale));
  int w = 0, h = 0;
  qvplay::WindowSizeFor(320, 200, 3, 3, &w, &h);
  EXPECT_EQ(Ints(960, 600 + BarHeight(3, 2)), Ints(w, h));
  l = ComputeLayout(w, h, 320, 200, 3);
  EXPECT_EQ(Ints(3, 0), Ints(l.scale, l.picX));
  EXPECT_TRUE(l.InPicture(959, 599) && !l.InPicture(959, 600) && l.InBar(0, 600));
  // The timeline of one moment and of many.
  l = ComputeLayout(116, 100, 10, 10, 1);
  EXPECT_EQ(Ints(8, 100), Ints(l.trackX, l.trackWidth));
  EXPECT_EQ(Ints(0, 8, 8 + 49), Ints(l.IndexAt(500, 1), l.XOfIndex(0, 1), l.XOfIndex(1, 3)));
  EXPECT_EQ(Ints(0, 1, 0, 2), Ints(l.IndexAt(8 + 24, 3), l.IndexAt(8 + 25, 3),
                                   l.IndexAt(-100000, 3), l.IndexAt(100000, 3)));
  // More moments than columns: every column still names a moment in range.
  for (int x = 0; x < 116; ++x) EXPECT_LT(static_cast<unsigned>(l.IndexAt(x, 20000)), 20000u) << x;
}

TEST(Drawing, GlyphsTextAndRectanglesAreDrawnAtTheirPlaceAndClipped) {
  // Lower case is drawn as upper case, unknown characters as '?', the space
  // blank; every other printable character has a glyph of its own.
  int set[128] = {};
  for (int y = -1; y <= qvplay::kGlyphHeight; ++y) {
    for (int x = -1; x <= qvplay::kGlyphWidth; ++x) {
      EXPECT_EQ(GlyphPixel('q', x, y), GlyphPixel('Q', x, y));
      EXPECT_EQ(GlyphPixel('\x01', x, y), GlyphPixel('?', x, y));
      EXPECT_EQ(GlyphPixel('\xe9', x, y), GlyphPixel('?', x, y));
      EXPECT_FALSE(GlyphPixel(' ', x, y));
      for (char c = '!'; c <= '~'; ++c) set[static_cast<int>(c)] += GlyphPixel(c, x, y);
      const bool inside = x >= 0 && y >= 0 && x < qvplay::kGlyphWidth && y < qvplay::kGlyphHeight;
      EXPECT_TRUE(inside || !GlyphPixel('T', x, y));
    }
  }
  for (char c = '!'; c <= '~'; ++c) EXPECT_GT(set[static_cast<int>(c)], 0) << c;
  EXPECT_EQ(Ints(0, 11, 22),
            Ints(qvplay::TextWidth("", 1), qvplay::TextWidth("AB", 1), qvplay::TextWidth("AB", 2)));
  // 'T': a full top row and the middle column below it.
  qvplay::Frame f(20, 10);
  const std::uint32_t white = Rgb(255, 255, 255), black = Rgb(0, 0, 0);
  qvplay::DrawText(&f, 1, 2, "T", white);
  EXPECT_EQ(Ints(white, white, white, black, black),
            Ints(f.At(1, 2), f.At(5, 2), f.At(3, 8), f.At(1, 3), f.At(6, 2)));
  qvplay::DrawText(&f, 16, 8, "TTTT", white, 3);  // mostly outside
  qvplay::DrawText(&f, -100, -100, "TTTT", white, 2);
  qvplay::DrawText(nullptr, 0, 0, "T", white);
  EXPECT_EQ(Ints(white, white), Ints(f.At(16, 8), f.At(19, 9)));
  EXPECT_EQ(qvplay::WrapText("ab cd efghijklmn o", 6 * 5, 1),
            (std::vector<std::string>{"ab cd", "efghi", "jklmn", "o"}));
  EXPECT_TRUE(qvplay::WrapText("", 100, 1).empty());
  EXPECT_EQ(qvplay::WrapText("abc", 0, 1).size(), 3u);  // long words are cut
  // Rectangles are clipped too.
  f.Resize(4, 3);
  f.Fill(Rgb(1, 2, 3));
  f.FillRect(-5, -5, 7, 7, Rgb(9, 9, 9));
  f.FillRect(2, 2, 2147483647, 2147483647, Rgb(7, 7, 7));
  EXPECT_EQ(Ints(Rgb(9, 9, 9), Rgb(1, 2, 3), Rgb(7, 7, 7)),
            Ints(f.At(1, 1), f.At(2, 1), f.At(3, 2)));
  f.FrameRect(0, 0, 4, 3, Rgb(5, 5, 5));
  EXPECT_EQ(Ints(Rgb(5, 5, 5), Rgb(9, 9, 9)), Ints(f.At(3, 1), f.At(1, 1)));
  f.ShadeRect(0, 0, 1, 1, Rgb(255, 255, 255), 255);
  EXPECT_EQ(f.At(0, 0), Rgb(255, 255, 255));
  f.Fill(Rgb(0, 0, 0));
  f.ShadeRect(0, 0, 1, 1, Rgb(200, 100, 0), 128);  // half over black
  EXPECT_EQ(Ints(Rgb(100, 50, 0), 0, 0), Ints(f.At(0, 0), f.At(4, 0), f.At(-1, 0)));
  f.Resize(-3, 2);
  EXPECT_EQ(f.Width(), 0);
}

}  // namespace
