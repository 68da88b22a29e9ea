// qvmovie-import with animated GIFs: files of gifsicle and ImageMagick,
// rendered and compared frame by frame with Pillow's decoding, and files it
// must refuse.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ImportTestUtil.h"
#include "import/Gif.h"
#include "import/SceneWriter.h"

namespace {

using namespace importtest;

qvimport::GifAnimation Decode(const Bytes& b) { return qvimport::ReadGif(b.data(), b.size()); }

// Imports and renders gif; every moment of the rendered GIF shows the
// original's frame of that moment (frame k from its start in 1/100 s rounded
// to the movie's 1/30 s), and both last as long to 1/100 s.
void ExpectSameMovie(const std::string& gif, const TempDir& dir) {
  const RunResult imported = Import(gif + " -o " + dir / "scene/movie.json", dir);
  ASSERT_EQ(imported.exitCode, 0) << imported.text;
  const RunResult rendered = Render(dir / "scene/movie.json -o " + dir / "movie.gif -q", dir);
  ASSERT_EQ(rendered.exitCode, 0) << rendered.text;
  const tooltest::PillowGif want = tooltest::DecodeWithPillow(QV_PYTHON3, gif, dir);
  const tooltest::PillowGif got = tooltest::DecodeWithPillow(QV_PYTHON3, dir / "movie.gif", dir);
  ASSERT_FALSE(want.frames.empty());
  ASSERT_FALSE(got.frames.empty());
  std::vector<int> starts;  // in units of 1/30 s
  int total = 0;
  for (int ms : want.durations) {
    starts.push_back((total / 10 * 30 + 50) / 100);
    total += ms;
  }
  int renderedTotal = 0;
  for (int ms : got.durations) renderedTotal += ms;
  EXPECT_NEAR(renderedTotal, total, 10);
  EXPECT_EQ(got.loop, want.loop < 0 ? 0 : want.loop);
  for (std::size_t u = 0; u < got.frames.size(); ++u) {
    std::size_t k = 0;
    while (k + 1 < starts.size() && starts[k + 1] <= static_cast<int>(u)) ++k;
    EXPECT_TRUE(got.frames[u] == want.frames[k]) << "moment " << u << ", frame " << k;
  }
}

// Frames of a square moving over a stripe pattern; colours spread over
// `shades` values per frame (at most 256 colours a frame) so that frames can
// need colours of their own. With one shade the background is plain #143c5a.
void WriteFrames(const TempDir& dir, int count, int shades) {
  for (int k = 0; k < count; ++k) {
    Rgb f{36, 24, {}};
    for (int y = 0; y < f.height; ++y) {
      for (int x = 0; x < f.width; ++x) {
        const bool square = x >= 3 + 5 * k && x < 12 + 5 * k && y >= 4 + k && y < 12 + k;
        const int s = (x + y * 3) % shades;
        if (shades == 1 && !square) {
          f.pixels.insert(f.pixels.end(), {20, 60, 90});  // one background, #143c5a
          continue;
        }
        f.pixels.insert(
            f.pixels.end(),
            {static_cast<unsigned char>(square ? 250 : 20 + s * 3 + (shades > 16 ? k * 7 : 0)),
             static_cast<unsigned char>(square        ? 200
                                        : shades > 16 ? 40
                                                      : 40 + (x / 6) * 10),
             static_cast<unsigned char>(square ? 10 : 90 + s)});
      }
    }
    const std::string name = dir / ("f" + std::to_string(k));
    WritePpm(name + ".ppm", f);
    ASSERT_EQ(Sh("pamtogif " + name + ".ppm > " + name + ".gif", dir), 0);
  }
}

class GifEncoders : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!*QV_PYTHON3) GTEST_SKIP() << "Pillow is not installed";
    if (!Have("gifsicle") || !Have("pamtogif")) GTEST_SKIP() << "gifsicle or netpbm missing";
  }
  TempDir dir;
  // Delays in 1/100 s whose sum is a whole number of 1/30 s.
  std::string Frames(const char* option, std::initializer_list<int> delays) {
    std::string s;
    int k = 0;
    for (int d : delays)
      s += std::string(" ") + option + std::to_string(d) + " " +
           dir / ("f" + std::to_string(k++) + ".gif");
    return s;
  }
};

// gifsicle's and ImageMagick's optimised files: sub-rectangles and transparency.
TEST_F(GifEncoders, OptimisedSubRectanglesAndTransparency) {
  WriteFrames(dir, 6, 4);
  ASSERT_EQ(Sh("gifsicle -O3 --loopcount=3" + Frames("-d", {10, 20, 7, 13, 10, 20}) + " > " +
                   dir / "in.gif",
               dir),
            0);
  // The file does hold what the test is about.
  const std::string info = RunCommand("gifsicle --info " + dir / "in.gif", dir).text;
  EXPECT_TRUE(Contains(info, "transparent") && Contains(info, " at ")) << info;
  ExpectSameMovie(dir / "in.gif", dir);
  if (!Have("convert")) GTEST_SKIP() << "ImageMagick is not installed";
  const std::string frames = Frames("-delay ", {10, 20, 7, 13, 10, 10});
  ASSERT_EQ(Sh("convert" + frames + " -loop 0 -layers optimize " + dir / "im.gif", dir), 0);
  EXPECT_TRUE(Contains(RunCommand("gifsicle --info " + dir / "im.gif", dir).text, " at "));
  ExpectSameMovie(dir / "im.gif", dir);
}

TEST_F(GifEncoders, GifsicleDisposalInterlaceAndLocalTables) {
  // Background and previous disposal with the background transparent, so
  // that what each frame leaves decides what the next shows; interlaced.
  WriteFrames(dir, 4, 1);
  ASSERT_EQ(Sh("gifsicle -i -d10 -t '#143c5a' --disposal=background " + dir / "f0.gif " +
                   dir / "f1.gif" + " --disposal=previous " + dir / "f2.gif --disposal=none " +
                   dir / "f3.gif > " + dir / "in.gif",
               dir),
            0);
  ExpectSameMovie(dir / "in.gif", dir);
  // 200 colours a frame, different in each: local tables, a colour switch.
  WriteFrames(dir, 5, 200);
  ASSERT_EQ(
      Sh("gifsicle --loopcount=forever" + Frames("-d", {7, 7, 6, 4, 6}) + " > " + dir / "loc.gif",
         dir),
      0);
  ExpectSameMovie(dir / "loc.gif", dir);
  const auto scene = nlohmann::json::parse(tooltest::Slurp(dir / "scene/movie.json"));
  EXPECT_EQ(scene["members"][0]["colors"][0]["kind"], "switch");
}

// Delays of 3, 3, 3, 1 and 40 centiseconds: frames start at 0, 3, 6, 9 and
// 10 cs, that is 0, 0.9, 1.8, 2.7 and 3 units of 1/30 s, rounded 0, 1, 2, 3, 3;
// the last start moves to 4 so that every frame shows, and the end stays at
// 50 cs = 15 units.
TEST(GifScene, DelaysBecomeIntervalsWithTheRoundingCarried) {
  qvimport::GifAnimation anim;
  anim.width = anim.height = 1;
  for (int d : {3, 3, 3, 1, 40}) {
    qvimport::GifFrame f;
    f.rgb = {1, 2, 3};
    f.delay = d;
    anim.frames.push_back(f);
  }
  const qvimport::ImportedScene s = qvimport::SceneFromGif(anim, "x");
  std::vector<int> intervals;
  for (const auto& f : s.scene["members"][0]["frames"])
    intervals.push_back(f["interval"].get<int>());
  EXPECT_EQ(intervals, std::vector<int>({1, 1, 1, 1, 11}));
  EXPECT_EQ(s.scene["output"]["to"], 14);
  EXPECT_EQ(s.scene["output"]["loop"], 0);  // no loop extension
  // Two of the longest delays last longer than a scene's 32767 units.
  anim.frames[3].delay = anim.frames[4].delay = 65535;
  anim.frames[4].offset = 1234;
  ExpectRefused([&](const Bytes&) { qvimport::SceneFromGif(anim, "x"); }, {},
                "image block 5 at byte 1234: the frames last longer");
}

TEST(GifReader, DecodesLzwAndRefusesBadFiles) {
  // 1, 1, then the string 6 = "1 1": four pixels of colour 1.
  const Bytes good = MakeGif(2, 2, {4, 1, 1, 6, 5});
  const qvimport::GifAnimation a = Decode(good);
  ASSERT_EQ(a.frames.size(), 1u);
  EXPECT_TRUE(a.frames[0].rgb == Bytes({80, 0, 0, 80, 0, 0, 80, 0, 0, 80, 0, 0}));

  Bytes wide = good;
  wide[7] = 0x9c;  // screen width 40000
  // Data from byte 37 on, 3 bits a code: code 7 ends in byte 38.
  ExpectRefused(Decode, MakeGif(2, 2, {4, 1, 7, 5}),
                "image block 1 at byte 38: LZW code 7 beyond the table (6 codes)");
  ExpectRefused(Decode, MakeGif(2, 2, {4, 6, 5}), "LZW code 6 before any string is known");
  ExpectRefused(Decode, MakeGif(2, 2, {4, 1, 5}), "the image data ends after 1 of 4 pixels");
  ExpectRefused(Decode, wide, "logical screen descriptor at byte 6: the screen is too large");
  ExpectCutsRefused(Decode, good);

  TempDir dir;
  WriteBytes(dir / "bad.gif", MakeGif(2, 2, {4, 1, 7, 5}));
  const RunResult r = Import(dir / "bad.gif -o " + dir / "bad.json", dir);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_TRUE(Contains(r.text, "bad.gif: image block 1 at byte 38: LZW code 7")) << r.text;
  EXPECT_FALSE(tooltest::fs::exists(dir / "bad.json"));
  EXPECT_FALSE(tooltest::fs::exists(dir / "bad.png"));

  // Outputs that cannot be written, or that would replace the input: nothing
  // is left behind and the input stays.
  WriteBytes(dir / "in.png", good);
  tooltest::WriteText(dir / "file", "x");
  EXPECT_EQ(Import(dir / "in.png -o " + dir / "file/in.json", dir).exitCode, 1);
  EXPECT_EQ(Import(dir / "in.png -o " + dir / "in.json", dir).exitCode, 2);
  EXPECT_TRUE(ReadBytes(dir / "in.png") == good);
  EXPECT_FALSE(tooltest::fs::exists(dir / "in.json"));
  EXPECT_FALSE(dir.HasPartial());
}

}  // namespace
