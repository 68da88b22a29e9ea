#pragma once

#include <cstdint>

#include "toolbox/tbColorTable.h"

// A drawing canvas: an 8-bit image with a colour table, used to make icons.
class QvCanvas {
 public:
  QvCanvas();
  QvCanvas(const QvCanvas&) = delete;
  QvCanvas& operator=(const QvCanvas&) = delete;
  virtual ~QvCanvas();

  void UpdateCTable(tbColorTable* table);
  // Creates the canvas image (width x height, rows width bytes apart);
  // non-zero on success.
  std::int16_t New(std::int16_t w, std::int16_t h);
  // Fills (left, top, right, bottom), clipped to the canvas, with color.
  // pattern and patternSize are accepted for compatibility and not used.
  void Clear(std::int16_t left, std::int16_t top, std::int16_t right, std::int16_t bottom,
             unsigned char color, unsigned char* pattern, std::int16_t patternSize);
  // Makes the image address current.
  void localGetImg();
  const tbColorTable& CTable() const { return cTable; }

  // Read directly by callers, in this order.
  unsigned char* image = nullptr;
  std::int16_t rowBytes = 0;
  std::int16_t width = 0;
  std::int16_t height = 0;

 private:
  unsigned char* block = nullptr;
  tbColorTable cTable;
};
