#pragma once

#include <cstdint>

// One frame of a frame animation, owned by its QvAFrame and doubly linked in
// frame-index order. The pixel buffers (orgImage, image, mask, icon) are
// GlobalAlloc blocks owned by the animation.
struct QvAFrameInfo {
  std::int16_t posX = 0;  // top-left corner of the frame in the source picture
  std::int16_t posY = 0;
  std::int16_t width = 0;  // size of the rectangle and of the untransformed image
  std::int16_t height = 0;
  std::int16_t anchorX = 0;  // anchor point, in source picture coordinates
  std::int16_t anchorY = 0;
  unsigned char activeFlag = 0;  // host flag; copied but never interpreted
  std::int16_t interval = 0;     // clock frames for which the frame is shown
  double zoomX = 1.0;
  double zoomY = 1.0;
  double rotation = 0.0;              // radians
  unsigned char* orgImage = nullptr;  // untransformed image, width x height
  unsigned char* image = nullptr;     // transformed image, imageWidth x imageHeight
  unsigned char* mask = nullptr;      // 255 where the image shows the frame, else 0
  std::int16_t imageWidth = 0;
  std::int16_t imageHeight = 0;
  std::int16_t imageOffsetX = 0;  // top-left pixel of image relative to the anchor
  std::int16_t imageOffsetY = 0;
  unsigned char* icon = nullptr;  // cached thumbnail, iconWidth x iconHeight
  std::int16_t iconWidth = 0;
  std::int16_t iconHeight = 0;
  QvAFrameInfo* prev = nullptr;
  QvAFrameInfo* next = nullptr;

  // Bookkeeping of the animation: the size for which orgImage was allocated.
  // width and height can be changed after the buffer was made (SetSize, Set);
  // the animation compares them with this size so that the buffer is never
  // read or written beyond its real extent (a buffer whose size no longer
  // matches is released when the size changes).
  std::int16_t orgWidth = 0;
  std::int16_t orgHeight = 0;
};
