/// \file QvCanvasUtil.h
/// \brief QvCanvasUtil, which turns a canvas into a picture.
#pragma once

#include <cstdint>

class QvCanvas;
class tbPicture;
class tbRegion;

/// Conversions of canvases. The class holds no state.
class QvCanvasUtil {
 public:
  /// Turns an area of a canvas into a picture: the picture receives a copy
  /// of the area's pixels and of the canvas's colour table, replacing what it
  /// held.
  ///
  /// \param canvas The canvas, read only (its `image` is made current).
  /// \param width,height Accepted for compatibility and not used.
  /// \param pict The picture to fill, owned by the caller.
  /// \param left,top Inclusive corner of the area, in canvas pixels.
  /// \param right,bottom Exclusive corner; the area is clipped to the canvas.
  /// \param region Accepted for compatibility and not used (may be null).
  /// \return Non-zero on success; 0 when `canvas` or `pict` is null, the
  ///         canvas has no image, the clipped area is empty, or memory is
  ///         short (one qv::GlobalAlloc() attempt; the picture is then empty).
  std::int16_t GetPICT(QvCanvas* canvas, std::int16_t width, std::int16_t height, tbPicture* pict,
                       std::int16_t left, std::int16_t top, std::int16_t right, std::int16_t bottom,
                       tbRegion* region);
};
