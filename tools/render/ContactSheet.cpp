#include "render/ContactSheet.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace qvrender {
namespace {

constexpr int kMargin = 8;
constexpr int kLabel = 16;  // height of the band under each moment
constexpr int kScale = 2;   // glyphs are 3 x 5 pixels, drawn twice as large
constexpr unsigned char kBack[3] = {32, 32, 36};
constexpr unsigned char kInk[3] = {220, 220, 220};

// 3 x 5 glyphs, one row of three bits per entry, top row first.
struct Glyph {
  char c;
  unsigned char rows[5];
};
constexpr Glyph kGlyphs[] = {
    {'0', {7, 5, 5, 5, 7}}, {'1', {2, 6, 2, 2, 7}}, {'2', {7, 1, 7, 4, 7}}, {'3', {7, 1, 7, 1, 7}},
    {'4', {5, 5, 7, 1, 1}}, {'5', {7, 4, 7, 1, 7}}, {'6', {7, 4, 7, 5, 7}}, {'7', {7, 1, 1, 1, 1}},
    {'8', {7, 5, 7, 5, 7}}, {'9', {7, 5, 7, 1, 7}}, {'-', {0, 0, 7, 0, 0}}, {'t', {2, 7, 2, 2, 3}},
    {'=', {0, 7, 0, 7, 0}},
};

}  // namespace

ContactSheet::ContactSheet(int cellWidth, int cellHeight, int count)
    : cellWidth_(cellWidth), cellHeight_(cellHeight) {
  if (count < 1) count = 1;
  columns_ = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count))));
  const int rows = (count + columns_ - 1) / columns_;
  sheet_.width = kMargin + columns_ * (cellWidth_ + kMargin);
  sheet_.height = kMargin + rows * (cellHeight_ + kLabel + kMargin);
  sheet_.pixels.resize(static_cast<std::size_t>(sheet_.width) * sheet_.height * 3);
  for (std::size_t i = 0; i < sheet_.pixels.size(); i += 3)
    std::memcpy(&sheet_.pixels[i], kBack, 3);
}

std::uint64_t ContactSheet::Bytes(int cellWidth, int cellHeight, int count) {
  if (count < 1) count = 1;
  const int columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count))));
  const int rows = (count + columns - 1) / columns;
  const std::uint64_t width = kMargin + static_cast<std::uint64_t>(columns) * (cellWidth + kMargin);
  const std::uint64_t height =
      kMargin + static_cast<std::uint64_t>(rows) * (cellHeight + kLabel + kMargin);
  return width * height * 3;
}

int ContactSheet::CellLeft(int index) const {
  return kMargin + (index % columns_) * (cellWidth_ + kMargin);
}

int ContactSheet::CellTop(int index) const {
  return kMargin + (index / columns_) * (cellHeight_ + kLabel + kMargin);
}

void ContactSheet::Place(int index, std::int32_t t, const Picture& moment) {
  const int left = CellLeft(index);
  const int top = CellTop(index);
  for (int y = 0; y < cellHeight_ && y < moment.height; ++y) {
    for (int x = 0; x < cellWidth_ && x < moment.width; ++x) {
      const unsigned char* c = moment.palette[moment.At(x, y)];
      std::memcpy(&sheet_.pixels[(static_cast<std::size_t>(top + y) * sheet_.width + left + x) * 3],
                  c, 3);
    }
  }
  char label[32];
  std::snprintf(label, sizeof label, "t=%ld", static_cast<long>(t));
  Text(left, top + cellHeight_ + 3, label);
}

void ContactSheet::Text(int x, int y, const char* text) {
  for (const char* p = text; *p; ++p, x += 4 * kScale) {
    const Glyph* glyph = nullptr;
    for (const Glyph& g : kGlyphs) {
      if (g.c == *p) glyph = &g;
    }
    if (!glyph) continue;
    for (int row = 0; row < 5; ++row) {
      for (int col = 0; col < 3; ++col) {
        if (!(glyph->rows[row] & (4 >> col))) continue;
        for (int dy = 0; dy < kScale; ++dy) {
          for (int dx = 0; dx < kScale; ++dx) {
            const int px = x + col * kScale + dx;
            const int py = y + row * kScale + dy;
            if (px < 0 || py < 0 || px >= sheet_.width || py >= sheet_.height) continue;
            std::memcpy(&sheet_.pixels[(static_cast<std::size_t>(py) * sheet_.width + px) * 3],
                        kInk, 3);
          }
        }
      }
    }
  }
}

}  // namespace qvrender
