#include "toolbox/QvCanvas.h"

#include <algorithm>
#include <cstring>

#include "toolbox/QvPlatform.h"

QvCanvas::QvCanvas() = default;

QvCanvas::~QvCanvas() { qv::GlobalFree(block); }

void QvCanvas::UpdateCTable(tbColorTable* table) {
  if (table) cTable = *table;
}

std::int16_t QvCanvas::New(std::int16_t w, std::int16_t h) {
  qv::GlobalFree(block);
  block = nullptr;
  image = nullptr;
  rowBytes = width = height = 0;
  if (w < 1 || h < 1) return 0;
  void* made =
      qv::GlobalAlloc(qv::kGlobalFixed, static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
  if (!made) return 0;
  block = static_cast<unsigned char*>(made);
  image = block;
  rowBytes = w;
  width = w;
  height = h;
  return 1;
}

void QvCanvas::Clear(std::int16_t left, std::int16_t top, std::int16_t right, std::int16_t bottom,
                     unsigned char color, unsigned char* /*pattern*/,
                     std::int16_t /*patternSize*/) {
  if (!block) return;
  const int l = std::max<int>(left, 0);
  const int t = std::max<int>(top, 0);
  const int r = std::min<int>(right, width);
  const int b = std::min<int>(bottom, height);
  if (r <= l || b <= t) return;
  for (int y = t; y < b; ++y) {
    std::memset(block + static_cast<long>(y) * rowBytes + l, color,
                static_cast<std::size_t>(r - l));
  }
}

void QvCanvas::localGetImg() { image = block; }
