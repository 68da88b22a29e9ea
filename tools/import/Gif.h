#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvimport {

/// One frame of an animated GIF as a viewer shows it: the whole logical
/// screen after the frame's image is drawn over what the earlier frames left.
struct GifFrame {
  std::vector<unsigned char> rgb;  ///< width x height pixels, r, g, b each, rows from the top
  int delay = 0;                   ///< how long the frame shows, in 1/100 s (0 ... 65535)
  bool ownTable = false;           ///< the frame's image came with a local colour table
  std::uint64_t offset = 0;        ///< byte offset of the frame's image block in the file
};

/// A decoded (animated) GIF.
struct GifAnimation {
  int width = 0;   ///< logical screen width in pixels, 1 ... 32767
  int height = 0;  ///< logical screen height in pixels, 1 ... 32767
  int loops = -1;  ///< NETSCAPE2.0 loop count (0: for ever), or -1 without the extension
  std::vector<GifFrame> frames;    ///< at least one, at most 32767
  std::vector<std::string> notes;  ///< what the reader changed or left out, one line each
};

/// True when data starts with a GIF87a or GIF89a signature.
bool LooksLikeGif(const unsigned char* data, std::size_t size);

/// Decodes a GIF and composites its frames: disposal methods 0 to 3, the
/// transparent index, sub-rectangles (clipped to the screen), interlace, and
/// local colour tables. Areas that no image has covered yet, and areas
/// restored to the background, show the colour of the transparent index of
/// the frame concerned, or else the background colour of the global table.
/// Throws FormatError naming the block and byte offset of the first fault
/// (truncation, an LZW code beyond the table, missing pixels, too large).
GifAnimation ReadGif(const unsigned char* data, std::size_t size);

}  // namespace qvimport
