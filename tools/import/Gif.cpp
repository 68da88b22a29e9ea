#include "import/Gif.h"

#include <algorithm>
#include <cstring>

#include "import/FormatError.h"

namespace qvimport {
namespace {

constexpr int kMaxFrames = 32767;

struct Palette {
  unsigned char rgb[256][3] = {};
  int count = 0;
};

// Reads the file byte by byte and names the block it is in when it ends.
class Cursor {
 public:
  Cursor(const unsigned char* data, std::size_t size) : data_(data), size_(size) {}
  std::size_t Pos() const { return pos_; }
  void Need(std::size_t n, const std::string& where) const {
    if (size_ - pos_ < n) {
      throw FormatError(where, size_, "the file ends inside it (truncated)");
    }
  }
  unsigned char Byte(const std::string& where) {
    Need(1, where);
    return data_[pos_++];
  }
  int Le16(const std::string& where) {
    Need(2, where);
    const int v = data_[pos_] | (data_[pos_ + 1] << 8);
    pos_ += 2;
    return v;
  }
  const unsigned char* Take(std::size_t n, const std::string& where) {
    Need(n, where);
    const unsigned char* p = data_ + pos_;
    pos_ += n;
    return p;
  }

 private:
  const unsigned char* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

void ReadTable(Cursor* in, int bits, Palette* pal, const std::string& where) {
  pal->count = 1 << (bits + 1);
  const unsigned char* p = in->Take(static_cast<std::size_t>(pal->count) * 3, where);
  std::memcpy(pal->rgb, p, static_cast<std::size_t>(pal->count) * 3);
}

// Sub-blocks up to the terminator; returns their bytes and, in offsets,
// the file offset of each sub-block's first byte with its place in the data.
std::vector<unsigned char> ReadSubBlocks(Cursor* in, const std::string& where,
                                         std::vector<std::pair<std::size_t, std::size_t>>* map) {
  std::vector<unsigned char> out;
  for (;;) {
    const unsigned char n = in->Byte(where);
    if (n == 0) return out;
    if (map) map->emplace_back(out.size(), in->Pos());
    const unsigned char* p = in->Take(n, where);
    out.insert(out.end(), p, p + n);
  }
}

void SkipSubBlocks(Cursor* in, const std::string& where) {
  for (;;) {
    const unsigned char n = in->Byte(where);
    if (n == 0) return;
    in->Take(n, where);
  }
}

// Decodes the LZW data of one image into width x height indices.
void Decode(const std::vector<unsigned char>& data,
            const std::vector<std::pair<std::size_t, std::size_t>>& map, int minCode,
            std::size_t pixels, std::vector<unsigned char>* out, const std::string& where,
            std::size_t dataStart) {
  auto fileOffset = [&](std::size_t byte) -> std::uint64_t {
    std::uint64_t off = dataStart;
    for (const auto& m : map) {
      if (m.first <= byte) off = m.second + (byte - m.first);
    }
    return off;
  };
  out->assign(pixels, 0);
  const int clear = 1 << minCode;
  const int eoi = clear + 1;
  int codeSize = minCode + 1;
  int next = clear + 2;
  int prev = -1;
  std::uint16_t prefix[4096];
  unsigned char suffix[4096];
  unsigned char first[4096];
  unsigned char stack[4097];
  for (int i = 0; i < clear; ++i) {
    prefix[i] = 0;
    suffix[i] = first[i] = static_cast<unsigned char>(i);
  }
  std::size_t n = 0;
  std::uint32_t acc = 0;
  int bits = 0;
  std::size_t byte = 0;
  while (n < pixels) {
    while (bits < codeSize && byte < data.size()) {
      acc |= static_cast<std::uint32_t>(data[byte++]) << bits;
      bits += 8;
    }
    if (bits < codeSize) break;
    const int code = static_cast<int>(acc & ((1u << codeSize) - 1));
    acc >>= codeSize;
    bits -= codeSize;
    if (code == clear) {
      codeSize = minCode + 1;
      next = clear + 2;
      prev = -1;
      continue;
    }
    if (code == eoi) break;
    int sp = 0;
    if (prev < 0) {
      if (code >= clear) {
        throw FormatError(where, fileOffset(byte ? byte - 1 : 0),
                          "LZW code " + std::to_string(code) + " before any string is known");
      }
      stack[sp++] = static_cast<unsigned char>(code);
    } else {
      int c = code;
      if (code > next || (code == next && next >= 4096)) {
        throw FormatError(where, fileOffset(byte ? byte - 1 : 0),
                          "LZW code " + std::to_string(code) + " beyond the table (" +
                              std::to_string(next) + " codes)");
      }
      if (code == next) {
        stack[sp++] = first[prev];
        c = prev;
      }
      while (c >= clear) {
        stack[sp++] = suffix[c];
        c = prefix[c];
      }
      stack[sp++] = static_cast<unsigned char>(c);
      if (next < 4096) {
        prefix[next] = static_cast<std::uint16_t>(prev);
        suffix[next] = static_cast<unsigned char>(c);
        first[next] = first[prev];
        ++next;
        if (next == (1 << codeSize) && codeSize < 12) ++codeSize;
      }
    }
    while (sp > 0 && n < pixels) (*out)[n++] = stack[--sp];
    prev = code;
  }
  if (n < pixels) {
    throw FormatError(where, fileOffset(data.empty() ? 0 : data.size() - 1),
                      "the image data ends after " + std::to_string(n) + " of " +
                          std::to_string(pixels) + " pixels");
  }
}

}  // namespace

bool LooksLikeGif(const unsigned char* data, std::size_t size) {
  return size >= 6 && (std::memcmp(data, "GIF87a", 6) == 0 || std::memcmp(data, "GIF89a", 6) == 0);
}

GifAnimation ReadGif(const unsigned char* data, std::size_t size) {
  if (!LooksLikeGif(data, size)) throw FormatError("header", 0, "not a GIF file");
  Cursor in(data, size);
  in.Take(6, "header");
  GifAnimation anim;
  const std::string screen = "logical screen descriptor";
  anim.width = in.Le16(screen);
  anim.height = in.Le16(screen);
  const unsigned char flags = in.Byte(screen);
  const unsigned char bgIndex = in.Byte(screen);
  in.Byte(screen);
  if (anim.width == 0 || anim.height == 0) throw FormatError(screen, 6, "the screen is empty");
  if (anim.width > 32767 || anim.height > 32767 ||
      static_cast<std::uint64_t>(anim.width) * static_cast<std::uint64_t>(anim.height) >
          kMaxPixels) {
    throw FormatError(screen, 6,
                      "the screen is too large (" + std::to_string(anim.width) + " x " +
                          std::to_string(anim.height) + ")");
  }
  Palette global;
  const bool hasGlobal = (flags & 0x80) != 0;
  if (hasGlobal) ReadTable(&in, flags & 7, &global, "global colour table");
  unsigned char background[3] = {};
  if (hasGlobal && bgIndex < global.count) std::memcpy(background, global.rgb[bgIndex], 3);

  const std::size_t screenPixels =
      static_cast<std::size_t>(anim.width) * static_cast<std::size_t>(anim.height);
  std::vector<unsigned char> canvas(screenPixels * 3);
  std::vector<unsigned char> saved;
  bool fresh = true;
  // Graphic control of the next image.
  int disposal = 0;
  int delay = 0;
  int transparent = -1;
  bool clipped = false;
  bool beyondTable = false;
  int imageNumber = 0;
  for (;;) {
    const std::size_t blockStart = in.Pos();
    const unsigned char introducer = in.Byte("block introducer");
    if (introducer == 0x3B) break;
    if (introducer == 0x21) {
      const unsigned char label = in.Byte("extension");
      if (label == 0xF9) {
        const std::string where = "graphic control extension";
        const unsigned char n = in.Byte(where);
        if (n < 4) throw FormatError(where, blockStart + 2, "too short (4 bytes needed)");
        const unsigned char* p = in.Take(n, where);
        disposal = (p[0] >> 2) & 7;
        delay = p[1] | (p[2] << 8);
        transparent = (p[0] & 1) ? p[3] : -1;
        SkipSubBlocks(&in, where);
        if (disposal > 3) {
          anim.notes.push_back("disposal method " + std::to_string(disposal) +
                               " is not defined: treated as 0");
          disposal = 0;
        }
      } else if (label == 0xFF) {
        const std::string where = "application extension";
        const unsigned char n = in.Byte(where);
        const unsigned char* id = in.Take(n, where);
        std::vector<unsigned char> body = ReadSubBlocks(&in, where, nullptr);
        const bool loopExt = n == 11 && (std::memcmp(id, "NETSCAPE2.0", 11) == 0 ||
                                         std::memcmp(id, "ANIMEXTS1.0", 11) == 0);
        if (loopExt && body.size() >= 3 && body[0] == 1) anim.loops = body[1] | (body[2] << 8);
      } else {
        SkipSubBlocks(&in, "extension");
      }
      continue;
    }
    if (introducer != 0x2C) {
      throw FormatError("block introducer", blockStart,
                        "unknown block 0x" + std::string(1, "0123456789abcdef"[introducer >> 4]) +
                            "0123456789abcdef"[introducer & 15]);
    }
    ++imageNumber;
    const std::string where = "image block " + std::to_string(imageNumber);
    if (static_cast<int>(anim.frames.size()) >= kMaxFrames) {
      throw FormatError(where, blockStart, "more than 32767 frames");
    }
    if ((anim.frames.size() + 1) * screenPixels > kMaxPixels) {
      throw FormatError(where, blockStart,
                        "the frames together are too large (more than " +
                            std::to_string(kMaxPixels) + " pixels)");
    }
    const int left = in.Le16(where);
    const int top = in.Le16(where);
    const int w = in.Le16(where);
    const int h = in.Le16(where);
    const unsigned char imageFlags = in.Byte(where);
    Palette local;
    const bool hasLocal = (imageFlags & 0x80) != 0;
    if (hasLocal) ReadTable(&in, imageFlags & 7, &local, where);
    const Palette* pal = hasLocal ? &local : hasGlobal ? &global : nullptr;
    if (!pal) throw FormatError(where, blockStart, "no colour table (neither local nor global)");
    const std::size_t codeAt = in.Pos();
    const int minCode = in.Byte(where);
    if (minCode < 1 || minCode > 8) {
      throw FormatError(where, codeAt,
                        "LZW minimum code size " + std::to_string(minCode) + " (1 to 8 allowed)");
    }
    const std::size_t pixels = static_cast<std::size_t>(w) * static_cast<std::size_t>(h);
    if (pixels > kMaxPixels) throw FormatError(where, blockStart, "the image is too large");
    std::vector<std::pair<std::size_t, std::size_t>> map;
    const std::vector<unsigned char> lzw = ReadSubBlocks(&in, where, &map);
    std::vector<unsigned char> indices;
    Decode(lzw, map, minCode, pixels, &indices, where, codeAt + 1);

    // Rows of an interlaced image come in four passes.
    std::vector<int> rowOf(static_cast<std::size_t>(h));
    if (imageFlags & 0x40) {
      int r = 0;
      const int starts[4] = {0, 4, 2, 1};
      const int steps[4] = {8, 8, 4, 2};
      for (int pass = 0; pass < 4; ++pass) {
        for (int y = starts[pass]; y < h; y += steps[pass])
          rowOf[static_cast<std::size_t>(r++)] = y;
      }
    } else {
      for (int y = 0; y < h; ++y) rowOf[static_cast<std::size_t>(y)] = y;
    }

    if (fresh) {
      // Nothing drawn yet: the screen starts in the background colour.
      const unsigned char* c =
          transparent >= 0 && transparent < pal->count ? pal->rgb[transparent] : background;
      for (std::size_t i = 0; i < screenPixels; ++i) std::memcpy(&canvas[3 * i], c, 3);
      fresh = false;
    }
    if (disposal == 3) saved = canvas;
    if (left + w > anim.width || top + h > anim.height) clipped = true;
    for (int r = 0; r < h; ++r) {
      const int y = top + rowOf[static_cast<std::size_t>(r)];
      if (y >= anim.height) continue;
      const unsigned char* src = indices.data() + static_cast<std::size_t>(r) * w;
      unsigned char* dst = canvas.data() + (static_cast<std::size_t>(y) * anim.width) * 3;
      for (int x = 0; x < w && left + x < anim.width; ++x) {
        const int idx = src[x];
        if (idx == transparent) continue;
        if (idx >= pal->count) {
          beyondTable = true;
          std::memset(dst + 3 * (left + x), 0, 3);
        } else {
          std::memcpy(dst + 3 * (left + x), pal->rgb[idx], 3);
        }
      }
    }
    GifFrame frame;
    frame.rgb = canvas;
    frame.delay = delay;
    frame.ownTable = hasLocal;
    frame.offset = blockStart;
    anim.frames.push_back(std::move(frame));

    if (disposal == 2) {
      const unsigned char* c =
          transparent >= 0 && transparent < pal->count ? pal->rgb[transparent] : background;
      for (int y = top; y < top + h && y < anim.height; ++y) {
        for (int x = left; x < left + w && x < anim.width; ++x) {
          std::memcpy(&canvas[(static_cast<std::size_t>(y) * anim.width + x) * 3], c, 3);
        }
      }
    } else if (disposal == 3) {
      canvas.swap(saved);
    }
    disposal = 0;
    delay = 0;
    transparent = -1;
  }
  if (anim.frames.empty()) throw FormatError("trailer", in.Pos() - 1, "the GIF holds no image");
  if (clipped) anim.notes.push_back("images reaching past the screen are cut at its edges");
  if (beyondTable) anim.notes.push_back("indices beyond their colour table show black");
  return anim;
}

}  // namespace qvimport
