#pragma once

namespace qvplay {

// Where the parts of the player's window lie, in window pixels: the movie's
// picture, enlarged by a whole factor and centred above the timeline bar; the
// bar along the bottom, with one row per member range, the track of moments
// and a status line.
struct Layout {
  int windowWidth = 0;
  int windowHeight = 0;
  int scale = 1;  // window pixels per movie pixel
  int picX = 0, picY = 0, picWidth = 0, picHeight = 0;
  int barY = 0, barHeight = 0;
  // Horizontal extent of the timeline: moment index 0 lies at trackX and
  // the last one at trackX + trackWidth - 1.
  int trackX = 0, trackWidth = 1;
  int rowsY = 0, rows = 0;  // member range rows, kRowHeight pixels each
  int statusY = 0;
  int textScale = 1;

  bool InPicture(int x, int y) const {
    return x >= picX && y >= picY && x < picX + picWidth && y < picY + picHeight;
  }
  bool InBar(int x, int y) const {
    return x >= 0 && x < windowWidth && y >= barY && y < barY + barHeight;
  }
  // Moment index under window column x, for count moments (clamped).
  int IndexAt(int x, int count) const;
  // Window column of moment index k of count moments.
  int XOfIndex(int k, int count) const;
};

constexpr int kRowHeight = 4;
constexpr int kMaxRows = 16;

// Text is drawn twice as large in wide windows.
int TextScaleFor(int windowWidth);
// Height of the timeline bar with the given number of member rows.
int BarHeight(int rows, int textScale);
// The layout of a window of that size showing a movie of sceneWidth x
// sceneHeight pixels with the given number of member rows (at most
// kMaxRows are shown).
Layout ComputeLayout(int windowWidth, int windowHeight, int sceneWidth, int sceneHeight, int rows);
// The window size that shows the movie enlarged scale times.
void WindowSizeFor(int sceneWidth, int sceneHeight, int rows, int scale, int* width, int* height);

}  // namespace qvplay
