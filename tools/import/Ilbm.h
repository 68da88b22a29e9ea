#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "scene/Picture.h"

namespace qvimport {

/// One cell of a DRNG range: the colour it starts with, and the palette
/// register that shows what the cell holds (-1 when none does).
struct RangeCell {
  bool hasColor = false;  ///< the cell holds a colour of its own (true colour or register's)
  unsigned char rgb[3] = {};
  int reg = -1;  ///< palette register 0 ... 255 shown by the cell, or -1
};

/// A colour range of an ILBM picture, as one of its CRNG, CCRT or DRNG chunks
/// gives it.
struct ColorRange {
  std::string kind;              ///< "CRNG", "CCRT" or "DRNG"
  int number = 0;                ///< 1 for the first chunk of its kind in the file, and so on
  std::uint64_t offset = 0;      ///< byte offset of the chunk in the file
  bool active = false;           ///< the range cycles when the picture is shown
  bool reverse = false;          ///< colours move toward the lower indices
  int low = 0;                   ///< first palette index (DRNG: first cell)
  int high = 0;                  ///< last palette index (DRNG: last cell), not below low
  double stepsPerSecond = 0;     ///< steps of one place per second; 0 when the file gives none
  std::vector<RangeCell> cells;  ///< DRNG only: high - low + 1 cells
};

/// A decoded ILBM or PBM picture.
struct IlbmImage {
  qvscene::Picture picture;        ///< 8-bit indices and the palette (CMAP, extended for EHB)
  bool chunky = false;             ///< FORM PBM rather than FORM ILBM
  int planes = 0;                  ///< bit planes, 1 ... 8
  bool compressed = false;         ///< BODY in ByteRun1
  int transparent = -1;            ///< the index that stands for transparent pixels, or -1
  std::vector<ColorRange> ranges;  ///< in file order
  std::vector<std::string> notes;  ///< what the reader changed or left out, one line each
};

/// True when data starts like an IFF FORM of type ILBM or PBM.
bool LooksLikeIlbm(const unsigned char* data, std::size_t size);

/// Decodes an IFF ILBM (interleaved planes, 1 to 8, uncompressed or
/// ByteRun1, masking by plane or by transparent colour, extra half-brite) or
/// PBM (chunky) picture with its CMAP and colour ranges. Throws FormatError
/// naming the chunk and byte offset of the first fault; HAM pictures and more
/// than 8 planes are refused.
IlbmImage ReadIlbm(const unsigned char* data, std::size_t size);

}  // namespace qvimport
