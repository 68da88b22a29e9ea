#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "render/GifLzw.h"
#include "scene/Picture.h"

namespace qvrender {

using qvscene::Picture;
using qvscene::RgbPicture;

// Writes an animated GIF89a that every viewer shows the same: no global
// colour table, a NETSCAPE2.0 loop extension, delays in centiseconds given
// by the caller and disposal "do not dispose" on every frame.
//
// The first frame is whole. Every later frame holds only the smallest
// rectangle outside which the colours shown (red, green, blue, not the
// indices, since each moment has its own colour table) stay those of the
// frame before; inside it, the pixels whose colour stays may be written as
// a transparent index, whichever of the two encodings compresses smaller.
// A frame whose colours do not change at all is a single transparent pixel.
// Each frame carries a local colour table of just the colours it uses (its
// size the next power of two), and its pixels are indices into it. Every
// frame a decoder composes is thus, colour for colour, the picture given.
class GifWriter {
 public:
  GifWriter() = default;
  ~GifWriter();
  GifWriter(const GifWriter&) = delete;
  GifWriter& operator=(const GifWriter&) = delete;

  // Every frame whole with its own full 256-entry table and its indices as
  // given, as earlier versions wrote them (for comparisons). Before Open.
  void SetWholeFrames(bool whole) { wholeFrames_ = whole; }

  // loops: 0 repeats for ever.
  bool Open(const std::string& path, int width, int height, int loops, std::string* error);
  // frame must have the size given to Open; delay in 1/100 s (0 to 65535).
  bool AddFrame(const Picture& frame, int delay, std::string* error);
  bool Close(std::string* error);

  // Bytes written so far.
  std::uint64_t Size() const { return size_; }

 private:
  struct Candidate;
  bool Write(const std::vector<unsigned char>& bytes, std::string* error);
  void Encode(Candidate* c);

  std::FILE* file_ = nullptr;
  std::string path_;
  int width_ = 0;
  int height_ = 0;
  bool wholeFrames_ = false;
  bool first_ = true;
  std::uint64_t size_ = 0;
  // What a viewer shows after the last frame: its indices and their
  // colours (0xRRGGBB).
  std::vector<unsigned char> shown_;
  std::uint32_t shownColour_[256] = {};
  GifLzw lzw_;
  std::vector<unsigned char> bytes_;
  std::vector<unsigned char> changed_;
  std::vector<unsigned char> pixels_[3];
  std::vector<unsigned char> codes_[3];
};

}  // namespace qvrender
