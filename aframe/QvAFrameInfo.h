/// \file
/// QvAFrameInfo, the record of one frame of a QvAFrame.
#pragma once

#include <cstdint>

/// \brief One frame of a frame animation, owned by its QvAFrame and doubly
/// linked in frame-index order. The pixel buffers (orgImage, image, mask,
/// icon) are qv::GlobalAlloc blocks owned by the animation; hosts read the
/// fields through QvAFrame's getters.
struct QvAFrameInfo {
  std::int16_t posX = 0;         ///< left of the frame's rectangle in the source picture, pixels
  std::int16_t posY = 0;         ///< top of the frame's rectangle in the source picture, pixels
  std::int16_t width = 0;        ///< width of the rectangle and of the untransformed image
  std::int16_t height = 0;       ///< height of the rectangle and of the untransformed image
  std::int16_t anchorX = 0;      ///< anchor point, horizontal, in source picture coordinates
  std::int16_t anchorY = 0;      ///< anchor point, vertical, in source picture coordinates
  unsigned char activeFlag = 0;  ///< host flag; copied but never interpreted
  std::int16_t interval = 0;     ///< clock frames for which the frame is shown
  double zoomX = 1.0;            ///< horizontal zoom factor (1.0 = none)
  double zoomY = 1.0;            ///< vertical zoom factor (1.0 = none)
  double rotation = 0.0;  ///< rotation in radians; positive turns counter-clockwise on the screen
  unsigned char* orgImage = nullptr;  ///< untransformed image, width x height
  unsigned char* image = nullptr;     ///< transformed image, imageWidth x imageHeight
  unsigned char* mask = nullptr;      ///< 255 where the image shows the frame, else 0
  std::int16_t imageWidth = 0;        ///< width of image and mask
  std::int16_t imageHeight = 0;       ///< height of image and mask
  std::int16_t imageOffsetX = 0;      ///< left pixel of image relative to the anchor
  std::int16_t imageOffsetY = 0;      ///< top pixel of image relative to the anchor
  unsigned char* icon = nullptr;      ///< cached thumbnail, iconWidth x iconHeight
  std::int16_t iconWidth = 0;         ///< width the thumbnail was made for
  std::int16_t iconHeight = 0;        ///< height the thumbnail was made for
  QvAFrameInfo* prev = nullptr;       ///< previous frame; null for the first
  QvAFrameInfo* next = nullptr;       ///< next frame; null for the last

  // Bookkeeping of the animation: the size for which orgImage was allocated.
  // width and height can be changed after the buffer was made (SetSize, Set);
  // the animation compares them with this size so that the buffer is never
  // read or written beyond its real extent (a buffer whose size no longer
  // matches is released when the size changes).
  std::int16_t orgWidth = 0;   ///< width orgImage was allocated for
  std::int16_t orgHeight = 0;  ///< height orgImage was allocated for
};
