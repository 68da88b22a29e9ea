#include "toolbox/QvRgn.h"

#include <pixman.h>

#include <memory>

#include "toolbox/QvPlatform.h"

QvRgn::~QvRgn() = default;

char QvRgn::ColorToRgn(unsigned char* image, std::int16_t rowBytes, std::int16_t width,
                       std::int16_t height, unsigned char color, char flag) {
  if (!image || width < 1 || height < 1 || rowBytes < width) return 0;
  const bool wantDiffering = flag != 0;
  auto inside = [&](unsigned char v) { return (v != color) == wantDiffering; };

  // First pass: count the runs of covered pixels, row by row.
  long runs = 0;
  for (int y = 0; y < height; ++y) {
    const unsigned char* row = image + static_cast<long>(y) * rowBytes;
    bool in = false;
    for (int x = 0; x < width; ++x) {
      const bool now = inside(row[x]);
      if (now && !in) ++runs;
      in = now;
    }
  }

  if (!New()) return 0;
  pixman_region32_t* r = static_cast<pixman_region32_t*>(region);
  if (runs == 0) {
    pixman_region32_fini(r);
    pixman_region32_init(r);
    return 1;
  }

  std::unique_ptr<pixman_box32_t[]> boxes(QvNewArray<pixman_box32_t>(runs));
  if (!boxes) return 0;

  // Second pass: one box per run, in row order and left to right, which is
  // the banded order the region expects.
  long n = 0;
  for (int y = 0; y < height; ++y) {
    const unsigned char* row = image + static_cast<long>(y) * rowBytes;
    int x = 0;
    while (x < width) {
      if (!inside(row[x])) {
        ++x;
        continue;
      }
      const int start = x;
      while (x < width && inside(row[x])) ++x;
      boxes[n++] = pixman_box32_t{start, y, x, y + 1};
    }
  }

  pixman_region32_t built;
  if (!pixman_region32_init_rects(&built, boxes.get(), static_cast<int>(n))) {
    pixman_region32_fini(&built);
    return 0;
  }
  pixman_region32_fini(r);
  pixman_region32_init(r);
  const bool ok = pixman_region32_copy(r, &built);
  pixman_region32_fini(&built);
  return ok ? 1 : 0;
}
