#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

#include "render/GifLzw.h"
#include "scene/Picture.h"

namespace qvrender {

using qvscene::Picture;
using qvscene::RgbPicture;

// Writes an animated GIF89a that every viewer shows the same: a NETSCAPE2.0
// loop extension, delays in centiseconds given by the caller and disposal
// "do not dispose" on every frame, so that each frame draws over the one
// before.
//
// The first frame is whole; the global colour table holds the colours of
// the first frames that use it (up to 256, filled in on Close). Every
// later frame holds only the smallest rectangle outside which the colours
// shown (red, green, blue, not the indices, since each moment has its own
// colour table) stay those of the frame before. Inside it the frame is
// compressed three ways and the smallest is kept: opaque (every pixel its
// colour); runs (pixels whose colour stays keep it in stretches of one
// colour that the changing pixels show too, and are transparent elsewhere);
// clear (every pixel whose colour stays transparent). A frame whose colours
// do not change at all is a single transparent pixel. A frame whose colours
// are all in the global table uses it when that is expected to be smaller
// than a local table of just the colours it uses (its size the next power
// of two), and carries such a local table otherwise. Every frame a decoder
// composes is thus, colour for colour, the picture given.
class GifWriter {
 public:
  GifWriter() = default;
  ~GifWriter();
  GifWriter(const GifWriter&) = delete;
  GifWriter& operator=(const GifWriter&) = delete;

  // Every frame whole with its own full 256-entry local table and its
  // indices as given, no global table, as earlier versions wrote them (for
  // comparisons). Before Open.
  void SetWholeFrames(bool whole) { wholeFrames_ = whole; }

  // loops: 0 repeats for ever.
  bool Open(const std::string& path, int width, int height, int loops, std::string* error);
  // One way of writing the rectangle of a frame: its pixels as slots of a
  // local table of colours (plus the transparent slot after them, if any)
  // or as indices of the global table, and the compressed data.
  struct Candidate {
    bool used = false;
    std::vector<std::uint32_t> colours;  // of the local table, without the transparent slot
    std::vector<unsigned char> pixels;
    std::vector<unsigned char> codes;
    bool coded = false;  // codes made already (by Prepare), not to be made again
    bool transparent = false;
    bool global = false;
    int bits = 1;                     // of the local table
    int codeSize = 2;                 // of the compressed data
    int value[257] = {};              // the pixel value of each slot, the transparent one last
    unsigned char byIndex[256] = {};  // the pixel value of each palette entry
    int Transparent() const { return transparent ? value[colours.size()] : -1; }
    std::size_t TableBytes() const { return global ? 0 : 3u << bits; }
    std::size_t Bytes() const { return TableBytes() + GifDataSize(codes.size()); }
  };
  // A frame prepared for compressing: the picture (which must stay until
  // Finish), its rectangle, which of its pixels change colour (one byte
  // each, in rows) and the ways of writing it. Reusable.
  struct Frame {
    const Picture* picture = nullptr;
    bool first = false;
    int delay = 0;
    int left = 0, top = 0, width = 0, height = 0;
    std::vector<unsigned char> mask;
    Candidate opaque, runs, clear;
  };

  // frame must have the size given to Open; delay in 1/100 s (0 to 65535).
  bool AddFrame(const Picture& frame, int delay, std::string* error);
  // AddFrame in two halves, so that frames can be prepared on one thread
  // while the ones before are compressed on another: Prepare, in the order
  // of the frames, compares frame with the one before and fills out; Finish,
  // in the same order (and not at the same time as another Finish),
  // compresses it and writes it. Only Finish uses the file. Prepare already
  // compresses the way Finish tries first (without a limit), with a
  // compressor of its own, so that the two halves take similar times; the
  // bytes written are the same as when Finish compresses it.
  bool Prepare(const Picture& frame, int delay, Frame* out, std::string* error);
  bool Finish(Frame* frame, std::string* error);
  bool Close(std::string* error);

 private:
  bool Write(const std::vector<unsigned char>& bytes, std::string* error);
  bool WriteHead(std::string* error);
  // Gives the colours missing from the global table entries of their own
  // when all of them fit.
  void AdmitColours(const std::vector<std::uint32_t>& colours);
  // The table of c, whose colours are set: the global table when it holds
  // them and is expected to be smaller than a local one; sets c's pixel
  // value for each slot.
  void PlanTable(Candidate* c, std::size_t count);
  // Compresses c, a way of writing frame, into its codes with lzw (none
  // when it grew past limit or fell behind its pace).
  static void Encode(GifLzw* lzw, Frame* frame, Candidate* c, std::size_t limit);

  std::FILE* file_ = nullptr;
  std::string path_;
  int width_ = 0;
  int height_ = 0;
  int loops_ = 0;
  bool wholeFrames_ = false;
  bool first_ = true;
  // What a viewer shows after the last frame: its indices and their
  // colours (0xRRGGBB).
  std::vector<unsigned char> shown_;
  std::uint32_t shownColour_[256] = {};
  // The global table, written at the start and completed on Close: its
  // colours, which entries hold a colour (given to the first frame that
  // needs it; the others are still free), and the entry of each colour.
  bool global_ = false;
  std::uint32_t globalColour_[256] = {};
  int globalHeld_ = 0;
  std::unordered_map<std::uint32_t, int> globalIndex_;
  GifLzw lzw_;         // of Finish
  GifLzw prepareLzw_;  // of Prepare
  std::vector<unsigned char> bytes_;
  Frame frame_;  // of AddFrame
};

}  // namespace qvrender
