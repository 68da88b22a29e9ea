#include "play/Frame.h"

#include <algorithm>

namespace qvplay {

void Frame::Resize(int width, int height) {
  width_ = std::max(0, width);
  height_ = std::max(0, height);
  pixels_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_),
                 Rgb(0, 0, 0));
}

std::uint32_t Frame::At(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
  return Row(y)[x];
}

void Frame::Fill(std::uint32_t color) { std::fill(pixels_.begin(), pixels_.end(), color); }

bool Frame::Clip(int* x, int* y, int* w, int* h) const {
  int x0 = std::max(*x, 0), y0 = std::max(*y, 0);
  // Computed in 64 bits: callers may pass huge sizes.
  const long long x1 = std::min<long long>(static_cast<long long>(*x) + *w, width_);
  const long long y1 = std::min<long long>(static_cast<long long>(*y) + *h, height_);
  if (x1 <= x0 || y1 <= y0) return false;
  *x = x0;
  *y = y0;
  *w = static_cast<int>(x1 - x0);
  *h = static_cast<int>(y1 - y0);
  return true;
}

void Frame::FillRect(int x, int y, int w, int h, std::uint32_t color) {
  if (!Clip(&x, &y, &w, &h)) return;
  for (int row = y; row < y + h; ++row) std::fill(Row(row) + x, Row(row) + x + w, color);
}

void Frame::ShadeRect(int x, int y, int w, int h, std::uint32_t color, int alpha) {
  if (!Clip(&x, &y, &w, &h)) return;
  const std::uint32_t a = static_cast<std::uint32_t>(std::clamp(alpha, 0, 255));
  auto mix = [a](std::uint32_t under, std::uint32_t over, int shift) {
    const std::uint32_t u = (under >> shift) & 255, o = (over >> shift) & 255;
    return ((o * a + u * (255 - a) + 127) / 255) << shift;
  };
  for (int row = y; row < y + h; ++row) {
    std::uint32_t* p = Row(row);
    for (int col = x; col < x + w; ++col) {
      p[col] = 0xff000000u | mix(p[col], color, 16) | mix(p[col], color, 8) | mix(p[col], color, 0);
    }
  }
}

void Frame::FrameRect(int x, int y, int w, int h, std::uint32_t color) {
  if (w <= 0 || h <= 0) return;
  FillRect(x, y, w, 1, color);
  FillRect(x, y + h - 1, w, 1, color);
  FillRect(x, y, 1, h, color);
  FillRect(x + w - 1, y, 1, h, color);
}

}  // namespace qvplay
