// qvmovie-import with ILBM and PBM pictures: against netpbm's encoder and
// decoder, colour ranges played by the renderer, and files it must refuse.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "ImportTestUtil.h"
#include "import/Ilbm.h"
#include "scene/SceneReader.h"

namespace {

using namespace importtest;

qvimport::IlbmImage Decode(const Bytes& b) { return qvimport::ReadIlbm(b.data(), b.size()); }

// netpbm writes the file at 1, 3, 5 and 8 planes, with and without ByteRun1,
// at odd widths; every pixel that the import renders has the colour that
// netpbm's own decoder gives it.
TEST(IlbmFromNetpbm, EveryPixelHasTheColourAndMaskIlbmtoppmDecodes) {
  if (!Have("ppmtoilbm") || !Have("ilbmtoppm")) GTEST_SKIP() << "netpbm is not installed";
  TempDir dir;
  for (int planes : {1, 3, 5, 8}) {
    for (bool compress : {true, false}) {
      SCOPED_TRACE("planes " + std::to_string(planes) + (compress ? " compressed" : ""));
      WritePpm(dir / "in.ppm", RandomPicture(29 + 2 * planes, 13, 1 << planes, 7u * planes));
      ASSERT_EQ(Sh("ppmtoilbm -maxplanes 8 " + std::string(compress ? "-compress" : "-nocompress") +
                       " " + dir / "in.ppm > " + dir / "in.lbm",
                   dir),
                0);
      const qvimport::IlbmImage img = Decode(ReadBytes(dir / "in.lbm"));
      EXPECT_EQ(Ints(img.planes, img.compressed), Ints(planes, compress));
      ASSERT_EQ(Sh("ilbmtoppm " + dir / "in.lbm > " + dir / "ref.ppm", dir), 0);
      const RunResult r = Import("-q " + dir / "in.lbm -o " + dir / "s/in.json", dir);
      ASSERT_EQ(r.exitCode, 0) << r.text;
      ASSERT_EQ(Render(dir / "s/in.json --png-at 0 " + dir / "out.png -q", dir).exitCode, 0);
      const Rgb got = ReadRgb(dir / "out.png");
      const Rgb want = ReadPpm(dir / "ref.ppm");
      ASSERT_EQ(Ints(got.width, got.height), Ints(want.width, want.height));
      EXPECT_TRUE(got.pixels == want.pixels);
    }
  }

  // A mask plane written by ppmtoilbm: the pixels that netpbm's decoder calls
  // transparent (white in its mask) are exactly those of the member's
  // transparent index, and the others have ilbmtoppm's colours.
  const int w = 21;
  const int h = 9;
  WritePpm(dir / "in.ppm", RandomPicture(w, h, 16, 5));
  std::ofstream mask(dir / "mask.pbm");
  mask << "P1\n" << w << " " << h << "\n";
  for (int i = 0; i < w * h; ++i) mask << ((i % 7) * (i % 3) == 0 ? "0 " : "1 ");  // 0: white
  mask.close();
  ASSERT_EQ(Sh("ppmtoilbm -maxplanes 8 -maskfile " + dir / "mask.pbm " + dir / "in.ppm > " +
                   dir / "in.lbm",
               dir),
            0);
  ASSERT_EQ(
      Sh("ilbmtoppm -maskfile " + dir / "out.pbm " + dir / "in.lbm > " + dir / "ref.ppm", dir), 0);
  ASSERT_EQ(Import("-q " + dir / "in.lbm -o " + dir / "in.json", dir).exitCode, 0);
  const auto scene = nlohmann::json::parse(tooltest::Slurp(dir / "in.json"));
  const int transparent = scene["members"][0]["transparent"].get<int>();
  const qvscene::Picture got = ReadPng(dir / "in.png");
  const Rgb want = ReadPpm(dir / "ref.ppm");
  // ilbmtoppm's mask: raw PBM, rows padded to whole bytes, 1 (black) opaque.
  const std::string pbm = tooltest::Slurp(dir / "out.pbm");
  const std::size_t bits = pbm.find('\n', pbm.find('\n') + 1) + 1;
  ASSERT_EQ(pbm.size(), bits + static_cast<std::size_t>((w + 7) / 8 * h));
  int transparentPixels = 0;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const bool opaque =
          (pbm[bits + static_cast<std::size_t>(y * ((w + 7) / 8) + x / 8)] >> (7 - x % 8)) & 1;
      const int i = y * w + x;
      const unsigned char index = got.pixels[static_cast<std::size_t>(i)];
      EXPECT_EQ(index == transparent, !opaque) << x << "," << y;
      transparentPixels += opaque ? 0 : 1;
      if (opaque) {
        EXPECT_EQ(std::vector<int>(got.palette[index], got.palette[index] + 3),
                  std::vector<int>(&want.pixels[static_cast<std::size_t>(3 * i)],
                                   &want.pixels[static_cast<std::size_t>(3 * i)] + 3));
      }
    }
  }
  EXPECT_GT(transparentPixels, 0);
}

// A 32-colour picture from ppmtoilbm with ranges added: forward and
// backward CRNG, both CCRT directions, a DRNG with a true-colour cell and an
// inactive range. At several moments the rendered table is the base table
// turned by as many steps as the range's rate gives, in its direction.
TEST(IlbmRanges, RenderedTablesTurnAsTheRangesSay) {
  if (!Have("ppmtoilbm")) GTEST_SKIP() << "netpbm is not installed";
  TempDir dir;
  Rgb map{32, 1, {}};
  for (int i = 0; i < 32; ++i)
    map.pixels.insert(map.pixels.end(),
                      {static_cast<unsigned char>(i * 8), static_cast<unsigned char>(200 - i * 5),
                       static_cast<unsigned char>(i * 13)});
  Rgb pic{32, 4, {}};
  for (int y = 0; y < 4; ++y)
    pic.pixels.insert(pic.pixels.end(), map.pixels.begin(), map.pixels.end());
  WritePpm(dir / "map.ppm", map);
  WritePpm(dir / "pic.ppm", pic);
  ASSERT_EQ(Sh("ppmtoilbm -map " + dir / "map.ppm " + dir / "pic.ppm > " + dir / "pic.lbm", dir),
            0);
  const std::uint32_t gold = 0xffd700;
  Bytes chunks;
  for (const Bytes& c :
       {Crng(0, 7, 2731, true, false), Crng(8, 11, 1000, true, true), Ccrt(1, 12, 17, 0, 250000),
        Ccrt(-1, 18, 21, 1, 0), Drng(22, 27, 1638, {22, 23, -1, 25, 26, 27}, {{24, gold}}),
        Crng(28, 31, 8192, false, false)})
    Append(&chunks, c);
  Bytes file = InsertChunks(ReadBytes(dir / "pic.lbm"), chunks);
  WriteBytes(dir / "r.lbm", file);
  const RunResult r = Import(dir / "r.lbm -o " + dir / "r.json", dir);
  ASSERT_EQ(r.exitCode, 0) << r.text;
  EXPECT_TRUE(Contains(r.text, "CRNG 2: indices 8-11, backward, 3.66 steps/s runs at 4 (+9.2%)"))
      << r.text;
  const auto scene = nlohmann::json::parse(tooltest::Slurp(dir / "r.json"));
  EXPECT_EQ(scene["layers"][0]["members"].dump(),
            R"(["picture","crng1","crng2","ccrt1","ccrt2","drng1"])");
  EXPECT_EQ(scene["members"].size(), 7u);  // crng3 is kept, switched off

  struct Expect {
    int low, high;
    double steps;
    int dir;
  };  // dir 0: unchanged
  const Expect ranges[] = {{0, 7, 2731 * 60 / 16384.0, 1},
                           {8, 11, 1000 * 60 / 16384.0, -1},
                           {12, 17, 4, 1},
                           {18, 21, 1, -1},
                           {22, 27, 1638 * 60 / 16384.0, 1},
                           {28, 31, 30, 0}};
  const qvscene::Picture base = ReadPng(dir / "r.png");
  for (int t : {0, 5, 17, 40, 119}) {
    SCOPED_TRACE("time " + std::to_string(t));
    ASSERT_EQ(
        Render(dir / "r.json --png-at " + std::to_string(t) + " " + dir / "t.png -q", dir).exitCode,
        0);
    const qvscene::Picture at = ReadPng(dir / "t.png");
    EXPECT_TRUE(at.pixels == base.pixels);
    for (const Expect& e : ranges) {
      const int n = static_cast<int>(t * std::lround(e.steps) / 30);
      const int len = e.high - e.low + 1;
      for (int k = 0; k < len; ++k) {
        const int reg = e.low + k;
        // the colour the cell k places along started with
        int from = e.dir > 0 ? ((k - n) % len + len) % len : e.dir < 0 ? (k + n) % len : k;
        std::vector<int> want(base.palette[e.low + from], base.palette[e.low + from] + 3);
        if (e.low == 22 && from == 2) want = {0xff, 0xd7, 0x00};
        if (e.low == 22 && k == 2)
          want.assign(base.palette[reg], base.palette[reg] + 3);  // no register
        EXPECT_EQ(std::vector<int>(at.palette[reg], at.palette[reg] + 3), want) << "index " << reg;
      }
    }
  }
}

TEST(IlbmReader, PbmMaskPlaneAndHalfBrite) {
  const std::vector<int> px{0, 1, 2, 3, 4, 5, 6, 7, 2, 2, 1, 0, 3, 3, 3};
  const qvimport::IlbmImage pbm = Decode(MakeIff(true, 5, 3, 8, 0, px, {}, 8));
  EXPECT_TRUE(pbm.chunky);
  EXPECT_EQ(std::vector<int>(pbm.picture.pixels.begin(), pbm.picture.pixels.end()), px);

  std::vector<bool> opaque(px.size(), true);
  opaque[4] = opaque[9] = false;
  const qvimport::IlbmImage masked = Decode(MakeIff(false, 5, 3, 3, 1, px, opaque, 8));
  // Index 0 is used by opaque pixels, so transparency takes an unused index.
  ASSERT_GE(masked.transparent, 0);
  for (std::size_t i = 0; i < px.size(); ++i) {
    EXPECT_EQ(masked.picture.pixels[i], opaque[i] ? px[i] : masked.transparent) << i;
    if (opaque[i]) {
      EXPECT_NE(px[i], masked.transparent);
    }
  }

  const qvimport::IlbmImage ehb = Decode(MakeIff(false, 5, 3, 6, 0, px, {}, 32, 0x80));
  for (int i = 0; i < 32; ++i) {
    for (int c = 0; c < 3; ++c)
      EXPECT_EQ(ehb.picture.palette[32 + i][c], ehb.picture.palette[i][c] >> 1);
  }
}

// Refused with the chunk and byte offset, and nothing written.
TEST(IlbmReader, BadFilesAreRefusedWithChunkAndOffset) {
  const std::vector<int> px(40, 1);
  const Bytes good = MakeIff(false, 8, 5, 2, 0, px, {}, 4);
  auto with = [&](std::size_t at, unsigned char v) {
    Bytes b = good;
    b[at] = v;
    return b;
  };
  // BMHD data starts at byte 20: width 20-21, height 22-23, planes 28.
  const std::pair<Bytes, const char*> cases[] = {
      {with(28, 0), "chunk BMHD at byte 28: 0 bit planes"},
      {with(28, 9), "chunk BMHD at byte 28: 9 bit planes"},
      {with(23, 9), "chunk BODY at byte"},  // 9 rows, the BODY holds 5
      {with(20, 0x90), "chunk BMHD at byte 20: the picture is too large"},
      {with(30, 7), "unknown compression 7"},
      {Bytes(good.begin(), good.begin() + 30), "chunk FORM at byte 4"},
      {with(8, 'X'), "not an ILBM or PBM picture"},
  };
  for (const auto& [file, message] : cases) ExpectRefused(Decode, file, message);
  // Every truncation, and a HAM picture.
  ExpectCutsRefused(Decode, good);
  EXPECT_THROW(Decode(MakeIff(false, 8, 5, 6, 0, px, {}, 16, 0x800)), qvimport::FormatError);

  TempDir dir;
  WriteBytes(dir / "bad.lbm", with(28, 9));
  const RunResult r = Import(dir / "bad.lbm -o " + dir / "out/bad.json", dir);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_TRUE(Contains(r.text, "bad.lbm: chunk BMHD at byte 28: 9 bit planes")) << r.text;
  EXPECT_FALSE(tooltest::fs::exists(dir / "out"));
}

// The scene reader takes a GIF (its frames side by side) or an ILBM file as a
// picture by its content; a broken one is a fault of the scene, named with its
// JSON path. Both writers give colour i a colour of its own.
TEST(SceneReaderPictures, GifAndIlbmAreReadByContent) {
  const std::vector<int> px{0, 1, 2, 3, 3, 2, 1, 0};
  const struct {
    const char* name;
    Bytes file;
    int width;
    std::vector<int> pixels;
    const char* cutMessage;
  } cases[] = {{"p.iff", MakeIff(false, 4, 2, 2, 0, px, {}, 4), 4, px, "chunk FORM at byte 4"},
               {"p.gif", MakeGif(2, 2, {4, 1, 1, 6, 5}), 2, {1, 1, 1, 1}, "image block 1"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    WriteBytes(dir / c.name, c.file);
    tooltest::WriteText(dir / "s.json", R"({"output": {"width": )" + std::to_string(c.width) +
                                            R"(, "height": 2, "to": 0, "palette": "p"},
      "pictures": {"p": ")" + c.name + R"("}, "layers": [{"members": ["m"]}],
      "members": [{"name": "m", "picture": "p", "frames": [{"rect": [0, 0, )" +
                                            std::to_string(c.width) +
                                            R"(, 2], "anchor": [0, 0]}], "position": [0, 0]}]})");
    ASSERT_EQ(Render(dir / "s.json --png-at 0 " + dir / "o.png -q", dir).exitCode, 0);
    const Rgb out = ReadRgb(dir / "o.png");
    Bytes want;
    const bool gif = c.name[2] == 'g';
    for (int i : c.pixels)
      want.insert(want.end(), {static_cast<unsigned char>(i * (gif ? 80 : 40)),
                               static_cast<unsigned char>(gif ? 0 : 255 - i * 20),
                               static_cast<unsigned char>(gif ? 0 : i * 7)});
    EXPECT_TRUE(out.pixels == want);

    WriteBytes(dir / c.name, Bytes(c.file.begin(), c.file.begin() + 30));
    const RunResult r = Render(dir / "s.json --png-at 0 " + dir / "o.png -q", dir);
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_TRUE(Contains(r.text, "/pictures/p: '" + dir / c.name + "': " + c.cutMessage)) << r.text;
  }
}

// The example scenes in the repository are what the import makes of the
// example files, and they load.
TEST(ImportExamples, CommittedScenesAreWhatTheImportMakes) {
  const std::string examples = std::string(QV_EXAMPLES_DIR) + "/import/";
  TempDir dir;
  for (const char* name : {"waterfall", "ball"}) {
    SCOPED_TRACE(name);
    const std::string source = examples + name + (std::string(name) == "ball" ? ".gif" : ".lbm");
    const RunResult r = Import("-q " + source + " -o " + dir / (std::string(name) + ".json"), dir);
    ASSERT_EQ(r.exitCode, 0) << r.text;
    EXPECT_EQ(tooltest::Slurp(dir / (std::string(name) + ".json")),
              tooltest::Slurp(examples + name + ".json"));
    const qvscene::Picture made = ReadPng(dir / (std::string(name) + ".png"));
    const qvscene::Picture kept = ReadPng(examples + name + ".png");
    EXPECT_TRUE(made.pixels == kept.pixels);
    EXPECT_EQ(0, std::memcmp(made.palette, kept.palette, sizeof made.palette));
    EXPECT_NO_THROW(qvscene::LoadScene(examples + name + ".json"));
  }
}

}  // namespace
