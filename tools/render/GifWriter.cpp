#include "render/GifWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <cstdlib>
#include <cstdlib>

namespace qvrender {
namespace {

constexpr unsigned char kExtension = 0x21;
constexpr unsigned char kGraphicControl = 0xF9;
constexpr unsigned char kApplication = 0xFF;
constexpr unsigned char kImage = 0x2C;
constexpr unsigned char kTrailer = 0x3B;
constexpr int kDisposeNone = 1;  // "do not dispose": the next frame draws over this one

void Put16(std::vector<unsigned char>* out, int v) {
  out->push_back(static_cast<unsigned char>(v & 0xFF));
  out->push_back(static_cast<unsigned char>((v >> 8) & 0xFF));
}

// Bits of the smallest power-of-two table holding n colours (1 to 8).
int TableBits(int n) {
  int bits = 1;
  while ((1 << bits) < n) ++bits;
  return bits;
}

}  // namespace

// One way of writing the rectangle of a frame: its colour table, its pixels
// as indices into it, the transparent index or -1, and the compressed data.
struct GifWriter::Candidate {
  std::vector<std::uint32_t> colours;
  std::vector<unsigned char>* pixels = nullptr;
  std::vector<unsigned char>* codes = nullptr;
  int transparent = -1;
  int bits = 8;  // of the colour table
  std::size_t Bytes() const { return 3u * (1u << bits) + GifDataSize(codes->size()); }
};

GifWriter::~GifWriter() {
  if (file_) std::fclose(file_);
}

bool GifWriter::Write(const std::vector<unsigned char>& bytes, std::string* error) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
    *error = "cannot write '" + path_ + "': " + std::strerror(errno);
    return false;
  }
  size_ += bytes.size();
  return true;
}

bool GifWriter::Open(const std::string& path, int width, int height, int loops,
                     std::string* error) {
  file_ = std::fopen(path.c_str(), "wb");
  if (!file_) {
    *error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  path_ = path;
  width_ = width;
  height_ = height;
  first_ = true;
  size_ = 0;
  const std::size_t area = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  shown_.assign(area, 0);
  std::vector<unsigned char> head = {'G', 'I', 'F', '8', '9', 'a'};
  Put16(&head, width);
  Put16(&head, height);
  // No global colour table, 8 bits of colour resolution, background 0,
  // square pixels.
  head.insert(head.end(), {0x70, 0, 0});
  // NETSCAPE2.0 application extension: sub-block 1 holds the loop count.
  head.insert(head.end(), {kExtension, kApplication, 11, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E',
                           '2', '.', '0', 3, 1});
  Put16(&head, loops);
  head.push_back(0);
  return Write(head, error);
}

void GifWriter::Encode(Candidate* c) {
  c->codes->clear();
  lzw_.Encode(c->pixels->data(), c->pixels->size(), std::max(2, c->bits), c->codes);
}

bool GifWriter::AddFrame(const Picture& frame, int delay, std::string* error) {
  if (!file_ || frame.width != width_ || frame.height != height_) {
    *error = "internal error: frame does not fit the GIF";
    return false;
  }
  std::uint32_t colour[256];
  for (int i = 0; i < 256; ++i) {
    colour[i] = static_cast<std::uint32_t>(frame.palette[i][0]) << 16 |
                static_cast<std::uint32_t>(frame.palette[i][1]) << 8 | frame.palette[i][2];
  }
  const std::size_t w = static_cast<std::size_t>(width_);
  const std::uint32_t* const shownColour = shownColour_;
  // The rectangle where the colours differ from those shown.
  int left = width_, right = -1, top = height_, bottom = -1;
  if (!first_ && !wholeFrames_) {
    for (int y = 0; y < height_; ++y) {
      const unsigned char* now = frame.Row(y);
      const unsigned char* was = shown_.data() + y * w;
      int x0 = 0;
      while (x0 < width_ && colour[now[x0]] == shownColour[was[x0]]) ++x0;
      if (x0 == width_) continue;
      int x1 = width_ - 1;
      while (colour[now[x1]] == shownColour[was[x1]]) --x1;
      left = std::min(left, x0);
      right = std::max(right, x1);
      if (top > y) top = y;
      bottom = y;
    }
    if (right < 0) left = right = top = bottom = 0;  // nothing changed: one transparent pixel
  } else {
    left = top = 0;
    right = width_ - 1;
    bottom = height_ - 1;
  }
  const bool whole = first_ || wholeFrames_;
  const int rw = right - left + 1, rh = bottom - top + 1;
  const std::size_t count = static_cast<std::size_t>(rw) * static_cast<std::size_t>(rh);

  Candidate opaque, clear, mixed;
  opaque.pixels = &pixels_[0];
  opaque.codes = &codes_[0];
  clear.pixels = &pixels_[1];
  clear.codes = &codes_[1];
  mixed.pixels = &pixels_[2];
  mixed.codes = &codes_[2];
  if (wholeFrames_) {
    opaque.colours.assign(colour, colour + 256);
    opaque.pixels->assign(frame.pixels.begin(), frame.pixels.end());
  } else {
    // The palette entries the rectangle uses, in all its pixels and in
    // those whose colour changes; each distinct colour gets one slot.
    bool usedAll[256] = {}, usedChanged[256] = {};
    changed_.resize(count);
    unsigned char* mask = changed_.data();
    for (int y = top; y <= bottom; ++y) {
      const unsigned char* now = frame.Row(y) + left;
      const unsigned char* was = shown_.data() + y * w + left;
      for (int x = 0; x < rw; ++x) {
        const unsigned char c = now[x];
        const bool differs = whole || colour[c] != shownColour[was[x]];
        usedAll[c] = true;
        usedChanged[c] |= differs;
        *mask++ = differs;
      }
    }
    int slotAll[256], slotChanged[256];
    auto assign = [&](const bool* used, int* slot, std::vector<std::uint32_t>* colours) {
      colours->clear();
      for (int i = 0; i < 256; ++i) {
        const auto at = std::find(colours->begin(), colours->end(), colour[i]);
        slot[i] = static_cast<int>(at - colours->begin());
        if (at == colours->end()) {
          if (used[i]) colours->push_back(colour[i]);
          else slot[i] = -1;
        }
      }
    };
    assign(usedAll, slotAll, &opaque.colours);
    assign(usedChanged, slotChanged, &clear.colours);
    opaque.pixels->resize(count);
    unsigned char* out = opaque.pixels->data();
    for (int y = top; y <= bottom; ++y) {
      const unsigned char* src = frame.Row(y) + left;
      for (int x = 0; x < rw; ++x) *out++ = static_cast<unsigned char>(slotAll[src[x]]);
    }
    // With a transparent index for the pixels that keep their colour (when
    // the changed ones leave a slot free).
    if (!whole && clear.colours.size() < 256) {
      clear.transparent = static_cast<int>(clear.colours.size());
      clear.colours.push_back(0);
      clear.pixels->resize(count);
      mixed.transparent = clear.transparent;
      mixed.colours = clear.colours;
      mixed.pixels->resize(count);
      out = clear.pixels->data();
      unsigned char* out2 = mixed.pixels->data();
      const auto t = static_cast<unsigned char>(clear.transparent);
      mask = changed_.data();
      for (int y = top; y <= bottom; ++y) {
        const unsigned char* src = frame.Row(y) + left;
        int last = t;
        for (int x = 0; x < rw; ++x) {
          const int s = slotChanged[src[x]];
          *out++ = *mask ? static_cast<unsigned char>(s) : t;
          if (*mask || s != last || !getenv("QVMIX")) last = *mask ? s : t;
          *out2++ = static_cast<unsigned char>(last);
          ++mask;
        }
      }
    }
  }
  opaque.bits = TableBits(static_cast<int>(opaque.colours.size()));
  Encode(&opaque);
  const Candidate* best = &opaque;
  if (clear.transparent >= 0) {
    clear.bits = TableBits(static_cast<int>(clear.colours.size()));
    Encode(&clear);
    if (clear.Bytes() < best->Bytes()) best = &clear;
    mixed.bits = clear.bits;
    Encode(&mixed);
    if (getenv("QVMIX") && mixed.Bytes() < best->Bytes()) best = &mixed;
  }

  std::vector<unsigned char>& b = bytes_;
  b.clear();
  b.insert(b.end(), {kExtension, kGraphicControl, 4,
                     static_cast<unsigned char>(kDisposeNone << 2 | (best->transparent >= 0))});
  Put16(&b, std::clamp(delay, 0, 65535));
  b.push_back(static_cast<unsigned char>(best->transparent >= 0 ? best->transparent : 0xFF));
  b.push_back(0);
  b.push_back(kImage);
  Put16(&b, left);
  Put16(&b, top);
  Put16(&b, rw);
  Put16(&b, rh);
  b.push_back(static_cast<unsigned char>(0x80 | (best->bits - 1)));
  for (std::size_t i = 0; i < (1u << best->bits); ++i) {
    const std::uint32_t c = i < best->colours.size() ? best->colours[i] : 0;
    b.insert(b.end(), {static_cast<unsigned char>(c >> 16), static_cast<unsigned char>(c >> 8),
                       static_cast<unsigned char>(c)});
  }
  b.push_back(static_cast<unsigned char>(std::max(2, best->bits)));
  const std::vector<unsigned char>& codes = *best->codes;
  for (std::size_t at = 0; at < codes.size(); at += 255) {
    const std::size_t n = std::min<std::size_t>(255, codes.size() - at);
    b.push_back(static_cast<unsigned char>(n));
    b.insert(b.end(), codes.begin() + static_cast<std::ptrdiff_t>(at),
             codes.begin() + static_cast<std::ptrdiff_t>(at + n));
  }
  b.push_back(0);
  shown_.assign(frame.pixels.begin(), frame.pixels.end());
  std::copy(colour, colour + 256, shownColour_);
  first_ = false;
  return Write(b, error);
}

bool GifWriter::Close(std::string* error) {
  if (!file_) return true;
  std::vector<unsigned char> trailer = {kTrailer};
  bool ok = Write(trailer, error);
  if (std::fclose(file_) != 0 && ok) {
    *error = "cannot write '" + path_ + "': " + std::strerror(errno);
    ok = false;
  }
  file_ = nullptr;
  return ok;
}

}  // namespace qvrender
