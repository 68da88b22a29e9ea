// Helpers of the qvmovie-import tests: the programs of others that make and
// decode the test files, and small writers for files they cannot make.
#pragma once

#include <cstdint>
#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ToolTestUtil.h"
#include "import/FormatError.h"
#include "scene/PngIO.h"

namespace importtest {

using tooltest::Contains;
using tooltest::Ints;
using tooltest::RunCommand;
using tooltest::RunResult;
using tooltest::TempDir;
using Bytes = std::vector<unsigned char>;

inline bool Have(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

// Runs a shell command line (redirections included): its exit status.
inline int Sh(const std::string& command, const TempDir& dir) {
  return RunCommand("(" + command + ")", dir).exitCode;
}

inline RunResult Import(const std::string& args, const TempDir& dir) {
  return RunCommand(std::string(QV_IMPORT_TOOL) + " " + args, dir);
}
inline RunResult Render(const std::string& args, const TempDir& dir) {
  return RunCommand(std::string(QV_RENDER_TOOL) + " " + args, dir);
}

// read (a decoder of a byte buffer) refuses file with a FormatError whose
// message holds message.
template <class Read>
void ExpectRefused(Read read, const Bytes& file, const std::string& message) {
  try {
    read(file);
    ADD_FAILURE() << "accepted: " << message;
  } catch (const qvimport::FormatError& e) {
    EXPECT_TRUE(Contains(e.what(), message)) << e.what();
  }
}
// read refuses every proper beginning of file.
template <class Read>
void ExpectCutsRefused(Read read, const Bytes& file) {
  for (std::size_t n = 0; n < file.size(); ++n)
    EXPECT_THROW(read(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(n))),
                 qvimport::FormatError)
        << n;
}

inline Bytes ReadBytes(const std::string& path) {
  const std::string s = tooltest::Slurp(path);
  return Bytes(s.begin(), s.end());
}
inline void WriteBytes(const std::string& path, const Bytes& b) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
}

using Rgb = tooltest::RgbImage;
using tooltest::ReadRgb;

// Binary PPM (P6, maxval 255) as netpbm writes it.
inline void WritePpm(const std::string& path, const Rgb& img) {
  std::ofstream f(path, std::ios::binary);
  f << "P6\n" << img.width << " " << img.height << "\n255\n";
  f.write(reinterpret_cast<const char*>(img.pixels.data()),
          static_cast<std::streamsize>(img.pixels.size()));
}
inline Rgb ReadPpm(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::string magic;
  int maxval = 0;
  Rgb img;
  f >> magic >> img.width >> img.height >> maxval;
  f.get();
  if (magic != "P6" || maxval != 255) return Rgb();
  img.pixels.resize(static_cast<std::size_t>(img.width) * img.height * 3);
  f.read(reinterpret_cast<char*>(img.pixels.data()),
         static_cast<std::streamsize>(img.pixels.size()));
  return img;
}

using tooltest::ReadPng;

// width x height pixels, each one of `colors` random colours.
inline Rgb RandomPicture(int width, int height, int colors, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<unsigned char> palette(static_cast<std::size_t>(colors) * 3);
  for (auto& c : palette) c = static_cast<unsigned char>(rng());
  Rgb img{width, height, {}};
  for (int i = 0; i < width * height; ++i) {
    // every colour at least once
    const std::size_t k =
        static_cast<std::size_t>(i < colors ? i : static_cast<int>(rng() % colors));
    img.pixels.insert(img.pixels.end(), &palette[3 * k], &palette[3 * k] + 3);
  }
  return img;
}

// Big-endian fields, each a value and its width in bytes.
inline Bytes Fields(std::initializer_list<std::pair<std::uint32_t, int>> fields) {
  Bytes b;
  for (const auto& [v, n] : fields)
    for (int s = 8 * (n - 1); s >= 0; s -= 8) b.push_back(static_cast<unsigned char>(v >> s));
  return b;
}
inline void Append(Bytes* b, const Bytes& more) { b->insert(b->end(), more.begin(), more.end()); }
inline Bytes Chunk(const char* id, const Bytes& body) {
  Bytes c(id, id + 4);
  Append(&c, Fields({{static_cast<std::uint32_t>(body.size()), 4}}));
  Append(&c, body);
  if (body.size() & 1) c.push_back(0);
  return c;
}
// Puts chunks in front of the BODY of an IFF file and makes the FORM size right.
inline Bytes InsertChunks(const Bytes& file, const Bytes& chunks) {
  std::size_t at = 12;
  while (at + 8 <= file.size() && std::string(file.begin() + at, file.begin() + at + 4) != "BODY") {
    const std::size_t size = (std::size_t{file[at + 4]} << 24) | (std::size_t{file[at + 5]} << 16) |
                             (std::size_t{file[at + 6]} << 8) | file[at + 7];
    at += 8 + size + (size & 1);
  }
  Bytes out(file.begin(), file.begin() + at);
  Append(&out, chunks);
  out.insert(out.end(), file.begin() + at, file.end());
  const std::uint32_t form = static_cast<std::uint32_t>(out.size() - 8);
  for (int i = 0; i < 4; ++i) out[4 + i] = static_cast<unsigned char>(form >> (24 - 8 * i));
  return out;
}
inline Bytes Crng(int low, int high, int rate, bool active, bool reverse) {
  const std::uint32_t flags = (active ? 1 : 0) | (reverse ? 2 : 0);
  return Chunk("CRNG", Fields({{0, 2}, {rate, 2}, {flags, 2}, {low, 1}, {high, 1}}));
}
inline Bytes Ccrt(int direction, int low, int high, std::uint32_t seconds, std::uint32_t micro) {
  return Chunk("CCRT",
               Fields({{direction, 2}, {low, 1}, {high, 1}, {seconds, 4}, {micro, 4}, {0, 2}}));
}
// A DRNG whose cells low ... high show the registers regs (-1: none), and
// whose cells listed in trueCells start with the given colours instead.
inline Bytes Drng(int low, int high, int rate, const std::vector<int>& regs,
                  const std::vector<std::pair<int, std::uint32_t>>& trueCells) {
  Bytes b = Fields({{low, 1}, {high, 1}, {rate, 2}, {1, 2}});
  b.push_back(static_cast<unsigned char>(trueCells.size()));
  b.push_back(static_cast<unsigned char>(regs.size() - std::count(regs.begin(), regs.end(), -1)));
  for (const auto& t : trueCells) {
    Append(&b, Fields({{t.first, 1}, {t.second, 3}}));
  }
  for (std::size_t i = 0; i < regs.size(); ++i) {
    if (regs[i] >= 0)
      b.insert(b.end(), {static_cast<unsigned char>(low + static_cast<int>(i)),
                         static_cast<unsigned char>(regs[i])});
  }
  return Chunk("DRNG", b);
}

// An ILBM or PBM file with an uncompressed BODY written here: pixels are
// indices, masked pixels (mask[i] false) get a clear bit in the mask plane.
inline Bytes MakeIff(bool chunky, int width, int height, int planes, int masking,
                     const std::vector<int>& pixels, const std::vector<bool>& opaque, int colors,
                     std::uint32_t camg = 0) {
  const std::uint32_t w = width, h = height;
  Bytes bmhd = Fields({{w, 2}, {h, 2}, {0, 4}, {planes, 1}, {masking, 1}});
  Append(&bmhd, Fields({{0, 4}, {10, 1}, {11, 1}, {w, 2}, {h, 2}}));
  Bytes cmap;
  for (int i = 0; i < colors; ++i)
    cmap.insert(cmap.end(),
                {static_cast<unsigned char>(i * 40), static_cast<unsigned char>(255 - i * 20),
                 static_cast<unsigned char>(i * 7)});
  Bytes body;
  const int rowBytes = (width + 15) / 16 * 2;
  for (int y = 0; y < height; ++y) {
    if (chunky) {
      for (int x = 0; x < width; ++x)
        body.push_back(static_cast<unsigned char>(pixels[static_cast<std::size_t>(y * width + x)]));
      if (width & 1) body.push_back(0);
      continue;
    }
    for (int p = 0; p < planes + (masking == 1 ? 1 : 0); ++p) {
      Bytes row(static_cast<std::size_t>(rowBytes), 0);
      for (int x = 0; x < width; ++x) {
        const std::size_t i = static_cast<std::size_t>(y * width + x);
        const bool bit = p < planes ? ((pixels[i] >> p) & 1) != 0 : static_cast<bool>(opaque[i]);
        if (bit)
          row[static_cast<std::size_t>(x >> 3)] |= static_cast<unsigned char>(0x80 >> (x & 7));
      }
      Append(&body, row);
    }
  }
  Bytes all(chunky ? "PBM " : "ILBM", (chunky ? "PBM " : "ILBM") + 4);
  Append(&all, Chunk("BMHD", bmhd));
  Append(&all, Chunk("CMAP", cmap));
  if (camg) Append(&all, Chunk("CAMG", Fields({{camg, 4}})));
  Append(&all, Chunk("BODY", body));
  return Chunk("FORM", all);
}

// A one-image GIF of width x height with a 4-colour global table and the
// given LZW codes (minimum code size 2) packed as a decoder reads them:
// 3 bits at first, one more each time the table fills a width.
inline Bytes MakeGif(int width, int height, const std::vector<int>& codes) {
  Bytes g{'G', 'I', 'F', '8', '9', 'a'};
  auto le16 = [&](int v) {
    g.push_back(static_cast<unsigned char>(v));
    g.push_back(static_cast<unsigned char>(v >> 8));
  };
  for (int v : {width, height}) le16(v);
  g.insert(g.end(), {0x81, 0, 0});
  for (int i = 0; i < 4; ++i) g.insert(g.end(), {static_cast<unsigned char>(i * 80), 0, 0});
  g.push_back(0x2C);
  for (int v : {0, 0, width, height}) le16(v);
  g.insert(g.end(), {0, 2});  // no local table; minimum code size 2
  Bytes data;
  std::uint32_t acc = 0;
  int bits = 0;
  int size = 3;
  int next = 6;
  bool first = true;
  for (int c : codes) {
    acc |= static_cast<std::uint32_t>(c) << bits;
    bits += size;
    while (bits >= 8) {
      data.push_back(static_cast<unsigned char>(acc));
      acc >>= 8;
      bits -= 8;
    }
    if (c == 4) {
      size = 3;
      next = 6;
      first = true;
    } else if (c != 5) {
      if (!first && next < 4096 && ++next == (1 << size) && size < 12) ++size;
      first = false;
    }
  }
  if (bits) data.push_back(static_cast<unsigned char>(acc));
  for (std::size_t i = 0; i < data.size(); i += 255) {
    const std::size_t n = std::min<std::size_t>(255, data.size() - i);
    g.push_back(static_cast<unsigned char>(n));
    g.insert(g.end(), data.begin() + static_cast<std::ptrdiff_t>(i),
             data.begin() + static_cast<std::ptrdiff_t>(i + n));
  }
  g.insert(g.end(), {0, 0x3B});
  return g;
}

}  // namespace importtest
