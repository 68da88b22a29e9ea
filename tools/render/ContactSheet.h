#pragma once

#include <cstdint>
#include <vector>

#include "scene/Picture.h"

namespace qvrender {

using qvscene::Picture;
using qvscene::RgbPicture;

// Lays out moments of a movie on one RGB sheet: a grid of about as many
// columns as rows, each moment with its time written below it.
class ContactSheet {
 public:
  ContactSheet(int cellWidth, int cellHeight, int count);

  // Bytes of the sheet of count moments of that size, known before it is
  // made.
  static std::uint64_t Bytes(int cellWidth, int cellHeight, int count);

  // Places moment number index (0-based), drawn at time t, on the sheet.
  void Place(int index, std::int32_t t, const Picture& moment);
  const RgbPicture& Sheet() const { return sheet_; }

  // Layout, for callers that check it.
  int Columns() const { return columns_; }
  int CellLeft(int index) const;
  int CellTop(int index) const;

 private:
  void Text(int x, int y, const char* text);

  int cellWidth_;
  int cellHeight_;
  int columns_;
  RgbPicture sheet_;
};

}  // namespace qvrender
