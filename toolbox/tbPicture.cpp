#include "toolbox/tbPicture.h"

#include <cstring>

#include "toolbox/QvPlatform.h"

tbPicture::tbPicture() = default;

tbPicture::~tbPicture() { Dispose(); }

void tbPicture::Dispose() {
  qv::GlobalFree(pixels);
  pixels = nullptr;
  width = 0;
  height = 0;
  cTable = tbColorTable();
}

unsigned char tbPicture::Pixel(std::int16_t x, std::int16_t y) const {
  if (!pixels || x < 0 || y < 0 || x >= width || y >= height) return 0;
  return pixels[static_cast<long>(y) * width + x];
}

char tbPicture::Set(const unsigned char* src, std::int16_t rowBytes, std::int16_t w, std::int16_t h,
                    const tbColorTable* table) {
  Dispose();
  if (!src || w < 1 || h < 1 || rowBytes < w) return 0;
  void* block =
      qv::GlobalAlloc(qv::kGlobalFixed, static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
  if (!block) return 0;
  pixels = static_cast<unsigned char*>(block);
  for (int y = 0; y < h; ++y) {
    std::memcpy(pixels + static_cast<long>(y) * w, src + static_cast<long>(y) * rowBytes,
                static_cast<std::size_t>(w));
  }
  width = w;
  height = h;
  if (table) cTable = *table;
  return 1;
}
