/// \file QvCanvas.h
/// \brief QvCanvas, an 8-bit drawing canvas with a colour table.
#pragma once

#include <cstdint>

#include "toolbox/tbColorTable.h"

/// A drawing canvas: an 8-bit image (one byte per pixel, rows from the top)
/// with a colour table. The cast store draws its icons on one and turns them
/// into pictures with QvCanvasUtil::GetPICT(); hosts may use it the same
/// way. The canvas owns its image block.
class QvCanvas {
 public:
  /// A canvas without an image (`image` null, sizes 0) and a table of 256
  /// black entries.
  QvCanvas();
  QvCanvas(const QvCanvas&) = delete;
  QvCanvas& operator=(const QvCanvas&) = delete;
  /// Frees the image block.
  virtual ~QvCanvas();

  /// Copies a colour table into the canvas.
  ///
  /// \param table The table, read only; null does nothing.
  void UpdateCTable(tbColorTable* table);
  /// Creates the canvas image, every pixel 0, replacing (and freeing) any
  /// former one.
  ///
  /// \param w,h Size in pixels, 1 or more; rows are `w` bytes apart.
  /// \return Non-zero on success; 0 when a size is below 1 or memory is
  ///         short (one qv::GlobalAlloc() attempt), the canvas then without
  ///         an image.
  std::int16_t New(std::int16_t w, std::int16_t h);
  /// Fills a rectangle with one colour index.
  ///
  /// \param left,top Inclusive corner, in pixels.
  /// \param right,bottom Exclusive corner, in pixels. The rectangle is
  ///        clipped to the canvas; an empty one fills nothing.
  /// \param color The colour index.
  /// \param pattern Accepted for compatibility and not used (may be null).
  /// \param patternSize Accepted for compatibility and not used.
  ///
  /// Does nothing without an image.
  void Clear(std::int16_t left, std::int16_t top, std::int16_t right, std::int16_t bottom,
             unsigned char color, unsigned char* pattern, std::int16_t patternSize);
  /// Makes `image` point at the current image block; call it before reading
  /// `image` directly.
  void localGetImg();
  /// \return The canvas's colour table, read only.
  const tbColorTable& CTable() const { return cTable; }

  /// First byte of the top row; null without an image. Owned by the canvas.
  unsigned char* image = nullptr;
  /// Distance in bytes between rows (the width); 0 without an image.
  std::int16_t rowBytes = 0;
  /// Width in pixels; 0 without an image.
  std::int16_t width = 0;
  /// Height in pixels; 0 without an image.
  std::int16_t height = 0;

 private:
  unsigned char* block = nullptr;
  tbColorTable cTable;
};
