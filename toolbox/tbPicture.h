/// \file tbPicture.h
/// \brief tbPicture, an 8-bit picture with its colour table.
#pragma once

#include <cstdint>

#include "toolbox/tbColorTable.h"

/// A picture: an 8-bit image with rows exactly as long as it is wide, and
/// the colour table it is shown with. QvCanvasUtil::GetPICT() fills one, and
/// so do the cast store's icons. The picture owns its pixel block.
class tbPicture {
 public:
  /// An empty picture: Pic() null, size 0 by 0.
  tbPicture();
  tbPicture(const tbPicture&) = delete;
  tbPicture& operator=(const tbPicture&) = delete;
  /// Frees the pixel block (Dispose()).
  virtual ~tbPicture();

  /// \return The picture's pixel block (Width() * Height() bytes, rows from
  ///         the top), owned by the picture; null when it holds nothing.
  unsigned char* Pic() const { return pixels; }
  /// Frees the pixel block; the picture becomes empty with a black table.
  void Dispose();

  /// \return The width in pixels; 0 when empty.
  std::int16_t Width() const { return width; }
  /// \return The height in pixels; 0 when empty.
  std::int16_t Height() const { return height; }
  /// \return The colour table, read only.
  const tbColorTable& ColorTable() const { return cTable; }
  /// \param x,y A pixel, from the top-left corner.
  /// \return The colour index there; 0 outside the picture or when empty.
  unsigned char Pixel(std::int16_t x, std::int16_t y) const;

  /// Replaces the content by a copy of an image.
  ///
  /// \param src First byte of the image's top row, read only.
  /// \param rowBytes Distance in bytes between the image's rows, at least
  ///        `w`.
  /// \param w,h Size in pixels, 1 or more.
  /// \param table Colour table copied into the picture (read only); null
  ///        leaves a black table.
  /// \return 1 on success; 0 when `src` is null, a size is below 1,
  ///         `rowBytes` is below `w`, or the block cannot be allocated (one
  ///         qv::GlobalAlloc() attempt). On failure the picture is empty.
  char Set(const unsigned char* src, std::int16_t rowBytes, std::int16_t w, std::int16_t h,
           const tbColorTable* table);

 private:
  unsigned char* pixels = nullptr;
  std::int16_t width = 0;
  std::int16_t height = 0;
  tbColorTable cTable;
};
