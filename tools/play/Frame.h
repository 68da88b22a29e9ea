#pragma once

#include <cstdint>
#include <vector>

namespace qvplay {

// Colours of the window: 0xAARRGGBB, alpha always 0xff.
constexpr std::uint32_t Rgb(int r, int g, int b) {
  return 0xff000000u | (static_cast<std::uint32_t>(r & 255) << 16) |
         (static_cast<std::uint32_t>(g & 255) << 8) | static_cast<std::uint32_t>(b & 255);
}

// The window's content: 32-bit pixels (0xAARRGGBB), rows from the top.
// Drawing outside it is clipped.
class Frame {
 public:
  Frame() = default;
  Frame(int width, int height) { Resize(width, height); }

  void Resize(int width, int height);
  int Width() const { return width_; }
  int Height() const { return height_; }
  std::uint32_t* Row(int y) { return pixels_.data() + static_cast<std::size_t>(y) * width_; }
  const std::uint32_t* Row(int y) const {
    return pixels_.data() + static_cast<std::size_t>(y) * width_;
  }
  const std::uint32_t* Data() const { return pixels_.data(); }
  // The pixel at (x, y); 0 outside the frame.
  std::uint32_t At(int x, int y) const;

  void Fill(std::uint32_t color);
  void FillRect(int x, int y, int w, int h, std::uint32_t color);
  // Blends color over the rectangle with the given opacity (0 to 255).
  void ShadeRect(int x, int y, int w, int h, std::uint32_t color, int alpha);
  void FrameRect(int x, int y, int w, int h, std::uint32_t color);

 private:
  // Clips the rectangle to the frame; false when nothing is left.
  bool Clip(int* x, int* y, int* w, int* h) const;

  int width_ = 0;
  int height_ = 0;
  std::vector<std::uint32_t> pixels_;
};

}  // namespace qvplay
