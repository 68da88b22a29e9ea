#include "import/Ilbm.h"

#include <cstring>

#include "import/FormatError.h"

namespace qvimport {
namespace {

std::uint32_t Be32(const unsigned char* p) {
  return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
         (static_cast<std::uint32_t>(p[2]) << 8) | p[3];
}
std::uint16_t Be16(const unsigned char* p) {
  return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}

std::string ChunkName(const unsigned char* id) {
  std::string s;
  for (int i = 0; i < 4; ++i) {
    const unsigned char c = id[i];
    s += (c >= 32 && c < 127) ? static_cast<char>(c) : '?';
  }
  while (!s.empty() && s.back() == ' ') s.pop_back();
  return "chunk " + s;
}

struct Chunk {
  const unsigned char* data;
  std::uint32_t size;
  std::uint64_t offset;  // of the chunk header
  std::string name;
};

struct Header {
  int width = 0, height = 0, planes = 0, masking = 0, compression = 0, transparent = 0;
};

// Decodes ByteRun1 (or copies, when not compressed) into out, which is
// filled completely; rows counts what a short BODY delivered.
void Unpack(const Chunk& body, bool compressed, std::size_t rowBytes,
            std::vector<unsigned char>* out) {
  const std::size_t want = out->size();
  const std::size_t rows = rowBytes ? want / rowBytes : 0;
  auto fail = [&](std::size_t got, std::uint64_t at) {
    throw FormatError(body.name, at,
                      "ends after " + std::to_string(rowBytes ? got / rowBytes : 0) + " of " +
                          std::to_string(rows) + " rows of planes");
  };
  const unsigned char* p = body.data;
  const unsigned char* end = body.data + body.size;
  const std::uint64_t base = body.offset + 8;
  if (!compressed) {
    if (body.size < want) fail(body.size, base + body.size);
    std::memcpy(out->data(), p, want);
    return;
  }
  std::size_t n = 0;
  while (n < want) {
    if (p >= end) fail(n, base + body.size);
    const int c = static_cast<signed char>(*p++);
    if (c >= 0) {
      const std::size_t count = static_cast<std::size_t>(c) + 1;
      if (static_cast<std::size_t>(end - p) < count) fail(n, base + body.size);
      const std::size_t take = std::min(count, want - n);
      std::memcpy(out->data() + n, p, take);
      p += count;
      n += take;
    } else if (c != -128) {
      if (p >= end) fail(n, base + body.size);
      const std::size_t count = static_cast<std::size_t>(1 - c);
      const std::size_t take = std::min(count, want - n);
      std::memset(out->data() + n, *p++, take);
      n += take;
    }
  }
}

ColorRange ReadCrng(const Chunk& c, int number) {
  if (c.size < 8) throw FormatError(c.name, c.offset + 4, "too short for a colour range");
  ColorRange r;
  r.kind = "CRNG";
  r.number = number;
  r.offset = c.offset;
  const int rate = Be16(c.data + 2);
  const int flags = Be16(c.data + 4);
  r.low = c.data[6];
  r.high = c.data[7];
  r.stepsPerSecond = rate > 0 ? rate * 60.0 / 16384.0 : 0.0;
  r.active = (flags & 1) != 0;
  r.reverse = (flags & 2) != 0;
  return r;
}

ColorRange ReadCcrt(const Chunk& c, int number) {
  if (c.size < 14) throw FormatError(c.name, c.offset + 4, "too short for a colour range");
  ColorRange r;
  r.kind = "CCRT";
  r.number = number;
  r.offset = c.offset;
  const int direction = static_cast<std::int16_t>(Be16(c.data));
  r.low = c.data[2];
  r.high = c.data[3];
  const double seconds = Be32(c.data + 4) + Be32(c.data + 8) / 1e6;
  r.stepsPerSecond = seconds > 0 ? 1.0 / seconds : 0.0;
  r.active = direction != 0;
  r.reverse = direction < 0;
  return r;
}

ColorRange ReadDrng(const Chunk& c, int number, const qvscene::Picture& pic,
                    std::vector<std::string>* notes) {
  if (c.size < 8) throw FormatError(c.name, c.offset + 4, "too short for a colour range");
  ColorRange r;
  r.kind = "DRNG";
  r.number = number;
  r.offset = c.offset;
  r.low = c.data[0];
  r.high = c.data[1];
  const int rate = Be16(c.data + 2);
  const int flags = Be16(c.data + 4);
  const int ntrue = c.data[6];
  const int nregs = c.data[7];
  if (c.size < 8u + 4u * ntrue + 2u * nregs) {
    throw FormatError(c.name, c.offset + 4,
                      "holds " + std::to_string(c.size) + " bytes, too few for " +
                          std::to_string(ntrue) + " colour and " + std::to_string(nregs) +
                          " register cells");
  }
  r.stepsPerSecond = rate > 0 ? rate * 60.0 / 16384.0 : 0.0;
  r.active = (flags & 1) != 0;
  const std::string label = "DRNG " + std::to_string(number) + ": ";
  if (r.high < r.low) return r;
  r.cells.resize(static_cast<std::size_t>(r.high - r.low + 1));
  const unsigned char* p = c.data + 8;
  int outside = 0;
  for (int i = 0; i < ntrue; ++i, p += 4) {
    if (p[0] < r.low || p[0] > r.high) {
      ++outside;
      continue;
    }
    RangeCell& cell = r.cells[static_cast<std::size_t>(p[0] - r.low)];
    cell.hasColor = true;
    std::memcpy(cell.rgb, p + 1, 3);
  }
  for (int i = 0; i < nregs; ++i, p += 2) {
    if (p[0] < r.low || p[0] > r.high) {
      ++outside;
      continue;
    }
    RangeCell& cell = r.cells[static_cast<std::size_t>(p[0] - r.low)];
    cell.reg = p[1];
    if (!cell.hasColor) {
      cell.hasColor = true;
      std::memcpy(cell.rgb, pic.palette[p[1]], 3);
    }
  }
  if (outside > 0) {
    notes->push_back(label + std::to_string(outside) + " cells outside the range " +
                     std::to_string(r.low) + "-" + std::to_string(r.high) + " left out");
  }
  int empty = 0;
  for (const RangeCell& cell : r.cells) empty += cell.hasColor ? 0 : 1;
  if (empty > 0) {
    notes->push_back(label + std::to_string(empty) +
                     " cells with neither a colour nor a register hold black");
  }
  return r;
}

}  // namespace

bool LooksLikeIlbm(const unsigned char* data, std::size_t size) {
  return size >= 12 && std::memcmp(data, "FORM", 4) == 0 &&
         (std::memcmp(data + 8, "ILBM", 4) == 0 || std::memcmp(data + 8, "PBM ", 4) == 0);
}

IlbmImage ReadIlbm(const unsigned char* data, std::size_t size) {
  if (size < 12 || std::memcmp(data, "FORM", 4) != 0) {
    throw FormatError("file header", 0, "not an IFF file (no FORM)");
  }
  if (!LooksLikeIlbm(data, size)) {
    throw FormatError(
        "chunk FORM", 8,
        "not an ILBM or PBM picture (FORM type " + ChunkName(data + 8).substr(6) + ")");
  }
  IlbmImage img;
  img.chunky = std::memcmp(data + 8, "PBM ", 4) == 0;
  const std::uint64_t formSize = Be32(data + 4);
  if (formSize + 8 > size) {
    throw FormatError("chunk FORM", 4,
                      "says " + std::to_string(formSize) + " bytes, the file holds " +
                          std::to_string(size - 8) + " (truncated)");
  }
  if (formSize < 4) throw FormatError("chunk FORM", 4, "too short");
  const std::uint64_t formEnd = formSize + 8;

  // Gather the chunks.
  std::vector<Chunk> chunks;
  std::uint64_t at = 12;
  while (at < formEnd) {
    if (formEnd - at < 8) throw FormatError("chunk header", at, "cut short by the end of the FORM");
    Chunk c;
    c.offset = at;
    c.size = Be32(data + at + 4);
    c.data = data + at + 8;
    c.name = ChunkName(data + at);
    if (c.size > formEnd - at - 8) {
      throw FormatError(c.name, at + 4,
                        "says " + std::to_string(c.size) + " bytes, the FORM holds " +
                            std::to_string(formEnd - at - 8) + " after it (truncated)");
    }
    chunks.push_back(c);
    at += 8 + static_cast<std::uint64_t>(c.size) + (c.size & 1);
  }

  Header h;
  const Chunk* bmhd = nullptr;
  const Chunk* body = nullptr;
  const Chunk* cmap = nullptr;
  std::uint32_t camg = 0;
  for (const Chunk& c : chunks) {
    const std::string id(reinterpret_cast<const char*>(data + c.offset), 4);
    if (id == "BMHD") {
      if (c.size < 20) throw FormatError(c.name, c.offset + 4, "too short (20 bytes needed)");
      bmhd = &c;
    } else if (id == "CMAP") {
      cmap = &c;
    } else if (id == "CAMG") {
      if (c.size >= 4) camg = Be32(c.data);
    } else if (id == "BODY") {
      if (!body) body = &c;
    }
  }
  if (!bmhd) throw FormatError("chunk FORM", 0, "no BMHD chunk");
  if (!body) throw FormatError("chunk FORM", 0, "no BODY chunk");
  h.width = Be16(bmhd->data);
  h.height = Be16(bmhd->data + 2);
  h.planes = bmhd->data[8];
  h.masking = bmhd->data[9];
  h.compression = bmhd->data[10];
  h.transparent = Be16(bmhd->data + 12);
  const std::uint64_t b = bmhd->offset + 8;
  if (h.width == 0 || h.height == 0) throw FormatError("chunk BMHD", b, "the picture is empty");
  if (h.width > 32767 || h.height > 32767 ||
      static_cast<std::uint64_t>(h.width) * static_cast<std::uint64_t>(h.height) > kMaxPixels) {
    throw FormatError("chunk BMHD", b,
                      "the picture is too large (" + std::to_string(h.width) + " x " +
                          std::to_string(h.height) + ")");
  }
  if (h.planes < 1 || h.planes > 8) {
    throw FormatError("chunk BMHD", b + 8,
                      std::to_string(h.planes) + " bit planes (1 to 8 can be imported)");
  }
  if (h.masking > 3) {
    throw FormatError("chunk BMHD", b + 9, "unknown masking " + std::to_string(h.masking));
  }
  if (h.compression > 1) {
    throw FormatError("chunk BMHD", b + 10, "unknown compression " + std::to_string(h.compression));
  }
  if (camg & 0x800) {
    throw FormatError("chunk CAMG", b, "hold-and-modify (HAM) pictures are not indexed");
  }
  img.planes = h.planes;
  img.compressed = h.compression == 1;

  // Palette: CMAP, a grey ramp without one, halves for extra half-brite.
  qvscene::Picture& pic = img.picture;
  const int colors = 1 << h.planes;
  if (cmap) {
    const int n = static_cast<int>(std::min<std::uint32_t>(cmap->size / 3, 256));
    for (int i = 0; i < n; ++i) std::memcpy(pic.palette[i], cmap->data + 3 * i, 3);
    pic.paletteCount = n;
  } else {
    for (int i = 0; i < colors; ++i) {
      const unsigned char v = static_cast<unsigned char>(colors > 1 ? i * 255 / (colors - 1) : 0);
      pic.palette[i][0] = pic.palette[i][1] = pic.palette[i][2] = v;
    }
    pic.paletteCount = colors;
    img.notes.push_back("no CMAP chunk: a grey ramp of " + std::to_string(colors) + " colours");
  }
  if ((camg & 0x80) && h.planes == 6) {
    for (int i = 0; i < 32; ++i) {
      for (int k = 0; k < 3; ++k) pic.palette[32 + i][k] = pic.palette[i][k] >> 1;
    }
    pic.paletteCount = 64;
    img.notes.push_back("extra half-brite: colours 32 to 63 are colours 0 to 31 at half");
  }

  // Pixels.
  pic.width = h.width;
  pic.height = h.height;
  pic.pixels.assign(static_cast<std::size_t>(h.width) * static_cast<std::size_t>(h.height), 0);
  const bool maskPlane = h.masking == 1 && !img.chunky;
  std::vector<bool> masked;
  if (img.chunky) {
    const std::size_t rowBytes = static_cast<std::size_t>(h.width) + (h.width & 1);
    std::vector<unsigned char> raw(rowBytes * static_cast<std::size_t>(h.height));
    Unpack(*body, img.compressed, rowBytes, &raw);
    for (int y = 0; y < h.height; ++y) {
      std::memcpy(pic.Row(y), raw.data() + rowBytes * static_cast<std::size_t>(y),
                  static_cast<std::size_t>(h.width));
    }
  } else {
    const std::size_t planeBytes = static_cast<std::size_t>((h.width + 15) / 16) * 2;
    const int rowPlanes = h.planes + (maskPlane ? 1 : 0);
    const std::size_t rowBytes = planeBytes * static_cast<std::size_t>(rowPlanes);
    std::vector<unsigned char> raw(rowBytes * static_cast<std::size_t>(h.height));
    Unpack(*body, img.compressed, rowBytes, &raw);
    if (maskPlane) masked.assign(pic.pixels.size(), false);
    for (int y = 0; y < h.height; ++y) {
      const unsigned char* row = raw.data() + rowBytes * static_cast<std::size_t>(y);
      unsigned char* out = pic.Row(y);
      for (int p = 0; p < h.planes; ++p) {
        const unsigned char* plane = row + planeBytes * static_cast<std::size_t>(p);
        for (int x = 0; x < h.width; ++x) {
          out[x] =
              static_cast<unsigned char>(out[x] | (((plane[x >> 3] >> (7 - (x & 7))) & 1) << p));
        }
      }
      if (maskPlane) {
        const unsigned char* plane = row + planeBytes * static_cast<std::size_t>(h.planes);
        for (int x = 0; x < h.width; ++x) {
          if (!((plane[x >> 3] >> (7 - (x & 7))) & 1))
            masked[static_cast<std::size_t>(y) * h.width + x] = true;
        }
      }
    }
  }

  // Transparency.
  if (h.masking == 2) {
    if (h.transparent < 256) {
      img.transparent = h.transparent;
    } else {
      img.notes.push_back("transparent colour " + std::to_string(h.transparent) +
                          " is not an index: left out");
    }
  } else if (h.masking == 3) {
    img.notes.push_back("lasso masking left out: every pixel is opaque");
  } else if (maskPlane) {
    bool used[256] = {};
    bool any = false;
    for (std::size_t i = 0; i < pic.pixels.size(); ++i) {
      if (masked[i]) {
        any = true;
      } else {
        used[pic.pixels[i]] = true;
      }
    }
    if (any) {
      int t = h.transparent < 256 && !used[h.transparent] ? h.transparent : -1;
      for (int i = 0; t < 0 && i < 256; ++i) {
        if (!used[i]) t = i;
      }
      if (t < 0) {
        t = h.transparent < 256 ? h.transparent : 0;
        img.notes.push_back("mask plane: every index is in use; pixels of index " +
                            std::to_string(t) + " become transparent too");
      }
      for (std::size_t i = 0; i < pic.pixels.size(); ++i) {
        if (masked[i]) pic.pixels[i] = static_cast<unsigned char>(t);
      }
      img.transparent = t;
    }
  }

  // Colour ranges, in file order.
  int numbers[3] = {};
  for (const Chunk& c : chunks) {
    const std::string id(reinterpret_cast<const char*>(data + c.offset), 4);
    if (id == "CRNG") {
      img.ranges.push_back(ReadCrng(c, ++numbers[0]));
    } else if (id == "CCRT") {
      img.ranges.push_back(ReadCcrt(c, ++numbers[1]));
    } else if (id == "DRNG") {
      img.ranges.push_back(ReadDrng(c, ++numbers[2], pic, &img.notes));
    }
  }
  return img;
}

}  // namespace qvimport
