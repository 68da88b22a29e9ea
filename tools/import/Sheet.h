#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "import/Gif.h"
#include "scene/Picture.h"

namespace qvimport {

/// Gives RGB colours palette indices: every colour its own index while
/// there are at most 256 of them, otherwise the 256 most frequent colours
/// and, for each other colour, the nearest of them.
class ColorIndexer {
 public:
  /// Counts the colours of width x height RGB pixels (3 bytes each).
  void Add(const unsigned char* rgb, std::size_t pixels);
  /// The number of distinct colours counted so far.
  std::size_t Distinct() const { return counts_.size(); }
  /// Chooses the palette from the colours counted; returns false when colours
  /// had to be merged (more than 256).
  bool Choose();
  /// The index of a colour (after Choose).
  unsigned char Index(const unsigned char* rgb);
  /// Copies the chosen palette into picture (entries past it are black).
  void FillPalette(qvscene::Picture* picture) const;

 private:
  std::unordered_map<std::uint32_t, std::uint64_t> counts_;
  std::unordered_map<std::uint32_t, unsigned char> index_;
  std::vector<std::uint32_t> palette_;
};

/// Columns of the sprite sheet of n frames of width x height: about square,
/// and never wider or higher than 32767 pixels. 0 when the frames do not fit.
int SheetColumns(int frames, int width, int height);

/// The frames of an animation side by side as one 8-bit picture with one
/// palette for all of them (frame k at column k % columns, row k / columns,
/// columns from SheetColumns). reduced is set when the frames had more than
/// 256 colours together and colours were merged. Throws FormatError when the
/// frames do not fit one picture.
qvscene::Picture GifSheet(const GifAnimation& anim, bool* reduced);

}  // namespace qvimport
