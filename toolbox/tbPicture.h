#pragma once

#include <cstdint>

#include "toolbox/tbColorTable.h"

// A picture: an 8-bit image with rows as long as it is wide, and the colour
// table it is shown with. Made by QvCanvasUtil::GetPICT.
class tbPicture {
 public:
  tbPicture();
  tbPicture(const tbPicture&) = delete;
  tbPicture& operator=(const tbPicture&) = delete;
  virtual ~tbPicture();

  // The picture's pixel block, null when the picture holds nothing.
  unsigned char* Pic() const { return pixels; }
  void Dispose();

  std::int16_t Width() const { return width; }
  std::int16_t Height() const { return height; }
  const tbColorTable& ColorTable() const { return cTable; }
  unsigned char Pixel(std::int16_t x, std::int16_t y) const;

  // Replaces the content by a copy of an image; 0 when the block cannot be
  // allocated (the picture is then empty).
  char Set(const unsigned char* src, std::int16_t rowBytes, std::int16_t w, std::int16_t h,
           const tbColorTable* table);

 private:
  unsigned char* pixels = nullptr;
  std::int16_t width = 0;
  std::int16_t height = 0;
  tbColorTable cTable;
};
