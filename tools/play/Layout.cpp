#include "play/Layout.h"

#include <algorithm>

#include "play/Font.h"

namespace qvplay {

namespace {
constexpr int kPad = 4;
constexpr int kGap = 3;
constexpr int kTrackMargin = 8;
}  // namespace

int TextScaleFor(int windowWidth) { return windowWidth >= 960 ? 2 : 1; }

int BarHeight(int rows, int textScale) {
  rows = std::clamp(rows, 0, kMaxRows);
  return kPad + rows * kRowHeight + kGap + kGlyphHeight * textScale + kPad;
}

int Layout::IndexAt(int x, int count) const {
  if (count <= 1) return 0;
  const long long span = std::max(1, trackWidth - 1);
  const long long k = ((static_cast<long long>(x) - trackX) * (count - 1) * 2 + span) / (2 * span);
  return static_cast<int>(std::clamp<long long>(k, 0, count - 1));
}

int Layout::XOfIndex(int k, int count) const {
  if (count <= 1) return trackX;
  const long long span = std::max(1, trackWidth - 1);
  return trackX +
         static_cast<int>(static_cast<long long>(std::clamp(k, 0, count - 1)) * span / (count - 1));
}

Layout ComputeLayout(int windowWidth, int windowHeight, int sceneWidth, int sceneHeight, int rows) {
  Layout l;
  l.windowWidth = std::max(1, windowWidth);
  l.windowHeight = std::max(1, windowHeight);
  l.rows = std::clamp(rows, 0, kMaxRows);
  l.textScale = TextScaleFor(l.windowWidth);
  l.barHeight = std::min(BarHeight(l.rows, l.textScale), l.windowHeight);
  l.barY = l.windowHeight - l.barHeight;
  const int w = std::max(1, sceneWidth), h = std::max(1, sceneHeight);
  const int room = std::max(0, l.barY);
  l.scale = std::max(1, std::min(l.windowWidth / w, room / h));
  l.picWidth = w * l.scale;
  l.picHeight = h * l.scale;
  l.picX = (l.windowWidth - l.picWidth) / 2;
  l.picY = std::max(0, (room - l.picHeight) / 2);
  l.trackX = std::min(kTrackMargin, l.windowWidth / 4);
  l.trackWidth = std::max(1, l.windowWidth - 2 * l.trackX);
  l.rowsY = l.barY + kPad;
  l.statusY = l.rowsY + l.rows * kRowHeight + kGap;
  return l;
}

void WindowSizeFor(int sceneWidth, int sceneHeight, int rows, int scale, int* width, int* height) {
  *width = std::max(1, sceneWidth) * scale;
  *height = std::max(1, sceneHeight) * scale + BarHeight(rows, TextScaleFor(*width));
}

}  // namespace qvplay
