// Compares a screenshot of the player (an RGB PNG) with a moment drawn by the
// render tool (an indexed PNG): the picture sits at the screenshot's top-left
// corner, each movie pixel a scale x scale block of its palette colour.
//
//   qvmovie_play_compare SCREENSHOT.png MOMENT.png SCALE
//
// Exit status 0 when every block matches, 1 when not, 2 on bad input.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "../../ToolTestUtil.h"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s SCREENSHOT.png MOMENT.png SCALE\n", argv[0]);
    return 2;
  }
  const int scale = std::atoi(argv[3]);
  if (scale < 1) return 2;

  const tooltest::RgbImage shot = tooltest::ReadRgb(argv[1]);
  if (shot.pixels.empty()) {
    std::fprintf(stderr, "cannot read %s as a PNG\n", argv[1]);
    return 2;
  }
  qvscene::Picture moment;
  std::string error;
  if (!qvscene::ReadIndexedPng(argv[2], &moment, &error)) {
    std::fprintf(stderr, "cannot read %s: %s\n", argv[2], error.c_str());
    return 2;
  }
  const int w = moment.width * scale, h = moment.height * scale;
  if (shot.width != w || shot.height < h) {
    std::fprintf(stderr, "screenshot is %d x %d, expected %d wide and at least %d high\n",
                 shot.width, shot.height, w, h);
    return 1;
  }
  long wrong = 0;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const unsigned char* want = moment.palette[moment.At(x / scale, y / scale)];
      const unsigned char* got = shot.At(x, y);
      if (got[0] != want[0] || got[1] != want[1] || got[2] != want[2]) {
        if (wrong < 5) {
          std::fprintf(stderr, "pixel (%d, %d): screenshot #%02x%02x%02x, render #%02x%02x%02x\n",
                       x, y, got[0], got[1], got[2], want[0], want[1], want[2]);
        }
        ++wrong;
      }
    }
  }
  if (wrong) {
    std::fprintf(stderr, "%ld of %d pixels differ\n", wrong, w * h);
    return 1;
  }
  std::printf("all %d x %d pixels match (movie %d x %d at scale %d)\n", w, h, moment.width,
              moment.height, scale);
  return 0;
}
