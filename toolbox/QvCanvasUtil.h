#pragma once

#include <cstdint>

class QvCanvas;
class tbPicture;
class tbRegion;

class QvCanvasUtil {
 public:
  // Turns the canvas area (left, top, right, bottom) into the picture, with
  // the canvas's colour table; region is accepted and not used. Non-zero on
  // success.
  std::int16_t GetPICT(QvCanvas* canvas, std::int16_t width, std::int16_t height, tbPicture* pict,
                       std::int16_t left, std::int16_t top, std::int16_t right, std::int16_t bottom,
                       tbRegion* region);
};
