// qvmovie-render run as a program: its GIF, PNG and sheet outputs checked
// against what the library draws, its messages and exit codes on bad input,
// and that a failed run leaves no output behind.

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>

#include "TinyScene.h"
#include "render/ContactSheet.h"
#include "scene/MovieTime.h"
#include "scene/SceneReader.h"

namespace {

using namespace tooltest;

bool HasPartial(const TempDir& dir) {
  for (const std::string& f : dir.Files()) {
    if (f.find(".partial") != std::string::npos) return true;
  }
  return false;
}

// The NETSCAPE2.0 loop count stored before the first frame, or -1.
int LoopCount(GifFileType* gif) {
  if (gif->ImageCount < 1) return -1;
  const SavedImage& first = gif->SavedImages[0];
  for (int i = 0; i + 1 < first.ExtensionBlockCount; ++i) {
    const ExtensionBlock& b = first.ExtensionBlocks[i];
    if (b.Function == APPLICATION_EXT_FUNC_CODE && b.ByteCount == 11 &&
        std::memcmp(b.Bytes, "NETSCAPE2.0", 11) == 0) {
      const ExtensionBlock& sub = first.ExtensionBlocks[i + 1];
      if (sub.ByteCount == 3 && sub.Bytes[0] == 1) return sub.Bytes[1] | (sub.Bytes[2] << 8);
    }
  }
  return -1;
}

void ExpectSameMoment(const qvscene::Picture& expected, const qvscene::Picture& actual,
                      const std::string& what) {
  ASSERT_EQ(expected.width, actual.width) << what;
  ASSERT_EQ(expected.height, actual.height) << what;
  EXPECT_TRUE(expected.pixels == actual.pixels) << what << ": pixels differ";
  EXPECT_EQ(0, std::memcmp(expected.palette, actual.palette, sizeof expected.palette))
      << what << ": palettes differ";
}

class TinySceneRender : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteTinyPictures(dir_);
    WriteText(dir_ / "tiny.json", TinySceneText());
  }
  // Writes scene text to bad.json and runs the tool on it with an output in
  // the same directory.
  RunResult RunOn(const std::string& text) {
    WriteText(dir_ / "bad.json", text);
    return RunRender(dir_ / "bad.json" + " -o " + dir_ / "out.gif", dir_);
  }
  void ExpectBadInput(const RunResult& r, const std::string& place, int line,
                      const std::string& reason) {
    EXPECT_EQ(2, r.exitCode) << r.err;
    std::string prefix = dir_ / "bad.json";
    if (line > 0) prefix += ":" + std::to_string(line);
    EXPECT_NE(std::string::npos, r.err.find(prefix + ": " + place)) << r.err;
    EXPECT_NE(std::string::npos, r.err.find(reason)) << r.err;
    EXPECT_FALSE(fs::exists(dir_ / "out.gif"));
    EXPECT_FALSE(HasPartial(dir_));
  }

  TempDir dir_;
};

TEST_F(TinySceneRender, GifHasOneWholeFramePerMomentWithLocalTablesLoopAndKeepDisposal) {
  RunResult r = RunRender(dir_ / "tiny.json" + " -o " + dir_ / "tiny.gif", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  GifPtr gif = ReadGif(dir_ / "tiny.gif");
  ASSERT_TRUE(gif);
  EXPECT_EQ(8, gif->SWidth);
  EXPECT_EQ(4, gif->SHeight);
  EXPECT_EQ(nullptr, gif->SColorMap) << "no global colour table";
  ASSERT_EQ(6, gif->ImageCount);  // moments 0 to 5
  EXPECT_EQ(0, LoopCount(gif.get())) << "loops for ever";
  for (int k = 0; k < gif->ImageCount; ++k) {
    const GifImageDesc& d = gif->SavedImages[k].ImageDesc;
    EXPECT_EQ(0, d.Left);
    EXPECT_EQ(0, d.Top);
    EXPECT_EQ(8, d.Width);
    EXPECT_EQ(4, d.Height);
    ASSERT_NE(nullptr, d.ColorMap);
    EXPECT_EQ(256, d.ColorMap->ColorCount);
    GraphicsControlBlock gcb;
    ASSERT_EQ(GIF_OK, DGifSavedExtensionToGCB(gif.get(), k, &gcb));
    EXPECT_EQ(DISPOSE_DO_NOT, gcb.DisposalMode);
    EXPECT_EQ(NO_TRANSPARENT_COLOR, gcb.TransparentColor);
  }
}

TEST_F(TinySceneRender, CyclingTurnsTheAreaOnePlacePerUnitWhilePixelsStay) {
  RunResult r = RunRender(dir_ / "tiny.json" + " -o " + dir_ / "tiny.gif", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  GifPtr gif = ReadGif(dir_ / "tiny.gif");
  ASSERT_TRUE(gif);
  const qvscene::Picture& source = TinyPicture();
  for (int t = 0; t < 6; ++t) {
    const qvscene::Picture frame = GifFrame(gif.get(), t);
    EXPECT_TRUE(frame.pixels == source.pixels) << "moment " << t;
    // At speed 30 the cycle is at frame t: the colour of index 4 + k moves
    // to index 4 + (k + t) mod 4; every other entry is the base palette.
    for (int i = 0; i < 256; ++i) {
      int from = i;
      if (i >= 4 && i <= 7) from = 4 + ((i - 4 - t) % 4 + 4) % 4;
      EXPECT_EQ(source.palette[from][0], frame.palette[i][0]) << "moment " << t << " entry " << i;
      EXPECT_EQ(source.palette[from][1], frame.palette[i][1]) << "moment " << t << " entry " << i;
    }
  }
}

TEST_F(TinySceneRender, DelaysCarryTheRoundingSoTheLengthDoesNotDrift) {
  // 6 moments of 1/30 s: 3.33 cs each, 20 cs in all.
  RunResult r = RunRender(dir_ / "tiny.json" + " -o " + dir_ / "tiny.gif", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  GifPtr gif = ReadGif(dir_ / "tiny.gif");
  ASSERT_TRUE(gif);
  std::vector<int> delays;
  for (int k = 0; k < gif->ImageCount; ++k) {
    GraphicsControlBlock gcb;
    ASSERT_EQ(GIF_OK, DGifSavedExtensionToGCB(gif.get(), k, &gcb));
    delays.push_back(gcb.DelayTime);
  }
  EXPECT_EQ((std::vector<int>{3, 4, 3, 3, 4, 3}), delays);
}

TEST_F(TinySceneRender, SpriteFollowsItsPathWithATransparentIndex) {
  const std::string text = Replace(TinySceneText(), R"("members": ["m"])", R"("members": ["s"])");
  std::string scene = Replace(text, R"("palette": "pal")", R"("palette": "pal", "background": 9)");
  scene = Replace(scene, R"(      "name": "m",)",
                  R"(      "name": "s",
      "picture": "spr",
      "transparent": 0,
      "frames": [{"rect": [0, 0, 2, 2]}],
      "path": {"points": [[1, 1], [3, 1], [5, 2]], "type": "clamp"}
    },
    {
      "name": "m",)");
  WriteText(dir_ / "spr.json", scene);
  RunResult r = RunRender(dir_ / "spr.json" + " -o " + dir_ / "spr.gif", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  GifPtr gif = ReadGif(dir_ / "spr.gif");
  ASSERT_TRUE(gif);
  ASSERT_EQ(6, gif->ImageCount);
  // The anchor is the middle of the 2 x 2 frame, its lower-right pixel: the
  // sprite's top-left pixel lands one pixel up and left of each anchor.
  const int lefts[6] = {0, 2, 4, 4, 4, 4};
  const int tops[6] = {0, 0, 1, 1, 1, 1};
  for (int t = 0; t < 6; ++t) {
    const qvscene::Picture f = GifFrame(gif.get(), t);
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 8; ++x) {
        int expected = 9;
        const int dx = x - lefts[t];
        const int dy = y - tops[t];
        if (dx >= 0 && dx < 2 && dy >= 0 && dy < 2) {
          const int sprite[4] = {3, 5, 6, 9};  // the transparent pixel shows the background
          expected = sprite[dy * 2 + dx];
        }
        EXPECT_EQ(expected, f.At(x, y)) << "moment " << t << " at " << x << "," << y;
      }
    }
  }
}

TEST_F(TinySceneRender, ScrollingLeftWrapsThePictureAround) {
  const std::string scene = Replace(TinySceneText(), R"(      "name": "m",)", R"(      "name": "m",
      "scroll": {"directions": ["left"], "stepH": 1},)");
  WriteText(dir_ / "scroll.json", scene);
  RunResult r = RunRender(dir_ / "scroll.json" + " -o " + dir_ / "scroll.gif", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  GifPtr gif = ReadGif(dir_ / "scroll.gif");
  ASSERT_TRUE(gif);
  ASSERT_EQ(6, gif->ImageCount);
  const qvscene::Picture& source = TinyPicture();
  for (int t = 0; t < 6; ++t) {
    const qvscene::Picture f = GifFrame(gif.get(), t);
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 8; ++x) {
        EXPECT_EQ(source.At((x + t) % 8, y), f.At(x, y))
            << "moment " << t << " at " << x << "," << y;
      }
    }
  }
}

TEST_F(TinySceneRender, FadeFlashAndSwitchGiveTheirColoursToTheOutputPalette) {
  std::string scene = TinySceneText();
  scene = Replace(scene, R"(          "kind": "cycle",
          "area": [[4, 7]]
        })",
                  R"(          "kind": "fade",
          "area": [255],
          "to": "#000000"
        },
        {"kind": "flash", "area": [10]},
        {"kind": "switch", "area": [11], "tables": [{}, {"entries": [[11, [18, 52, 86]]]}]})");
  WriteText(dir_ / "fx.json", scene);
  RunResult r = RunRender(dir_ / "fx.json" + " -o " + dir_ / "fx.gif", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  GifPtr gif = ReadGif(dir_ / "fx.gif");
  ASSERT_TRUE(gif);
  ASSERT_EQ(6, gif->ImageCount);
  // Fade of entry 255 (red 255) toward black in 30 frames.
  const int fadeRed[6] = {255, 246, 237, 228, 219, 211};
  const unsigned char flash[3][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
  for (int t = 0; t < 6; ++t) {
    const qvscene::Picture f = GifFrame(gif.get(), t);
    EXPECT_EQ(fadeRed[t], f.palette[255][0]) << "moment " << t;
    for (int c = 0; c < 3; ++c) EXPECT_EQ(flash[t % 3][c], f.palette[10][c]) << "moment " << t;
    if (t % 2 == 0) {
      EXPECT_EQ(11, f.palette[11][0]);
      EXPECT_EQ(244, f.palette[11][1]);
    } else {
      EXPECT_EQ(18, f.palette[11][0]);
      EXPECT_EQ(52, f.palette[11][1]);
      EXPECT_EQ(86, f.palette[11][2]);
    }
    EXPECT_EQ(9, f.palette[9][0]) << "untouched entries keep the base palette";
  }
}

TEST_F(TinySceneRender, PngAtAndScaleWriteTheMomentWithItsPalette) {
  RunResult r = RunRender(dir_ / "tiny.json" + " --png-at 3 " + dir_ / "t3.png" + " --scale 3" +
                              " --png-at 1 " + dir_ / "t1.png",
                          dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  std::unique_ptr<qvscene::Scene> scene = qvscene::LoadScene(dir_ / "tiny.json");
  for (int t : {1, 3}) {
    qvscene::Picture expected;
    ASSERT_TRUE(scene->Render(t, &expected));
    qvscene::Picture png;
    std::string error;
    ASSERT_TRUE(qvscene::ReadIndexedPng(dir_ / ("t" + std::to_string(t) + ".png"), &png, &error))
        << error;
    ASSERT_EQ(24, png.width);
    ASSERT_EQ(12, png.height);
    for (int y = 0; y < 12; ++y) {
      for (int x = 0; x < 24; ++x) ASSERT_EQ(expected.At(x / 3, y / 3), png.At(x, y));
    }
    EXPECT_EQ(0, std::memcmp(expected.palette, png.palette, sizeof png.palette));
  }
}

TEST_F(TinySceneRender, SheetShowsEachMomentInItsOwnColours) {
  RunResult r = RunRender(
      dir_ / "tiny.json" + " --sheet " + dir_ / "sheet.png" + " --sheet-times 0,1,2,5", dir_);
  ASSERT_EQ(0, r.exitCode) << r.err;
  // The sheet is RGB: read it back through libpng's simplified interface.
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  ASSERT_TRUE(png_image_begin_read_from_file(&image, (dir_ / "sheet.png").c_str()));
  image.format = PNG_FORMAT_RGB;
  std::vector<unsigned char> rgb(PNG_IMAGE_SIZE(image));
  ASSERT_TRUE(png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr));
  qvrender::ContactSheet layout(8, 4, 4);
  ASSERT_EQ(static_cast<png_uint_32>(layout.Sheet().width), image.width);
  ASSERT_EQ(static_cast<png_uint_32>(layout.Sheet().height), image.height);
  std::unique_ptr<qvscene::Scene> scene = qvscene::LoadScene(dir_ / "tiny.json");
  const int times[4] = {0, 1, 2, 5};
  for (int i = 0; i < 4; ++i) {
    qvscene::Picture m;
    ASSERT_TRUE(scene->Render(times[i], &m));
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 8; ++x) {
        const std::size_t at = (static_cast<std::size_t>(layout.CellTop(i) + y) * image.width +
                                layout.CellLeft(i) + x) *
                               3;
        for (int c = 0; c < 3; ++c) {
          ASSERT_EQ(m.palette[m.At(x, y)][c], rgb[at + c]) << "moment " << times[i];
        }
      }
    }
  }
}

TEST_F(TinySceneRender, MissingSceneFile) {
  RunResult r = RunRender(dir_ / "none.json" + " -o " + dir_ / "out.gif", dir_);
  EXPECT_EQ(2, r.exitCode);
  EXPECT_NE(std::string::npos, r.err.find(dir_ / "none.json: cannot open")) << r.err;
  EXPECT_FALSE(fs::exists(dir_ / "out.gif"));
}

TEST_F(TinySceneRender, MissingPictureFile) {
  fs::remove(dir_ / "spr.png");
  const std::string text = TinySceneText();
  RunResult r = RunOn(text);
  ExpectBadInput(r, "/pictures/spr: ", LineOfText(text, "\"spr\": "), "spr.png");
  EXPECT_NE(std::string::npos, r.err.find("No such file")) << r.err;
}

TEST_F(TinySceneRender, PictureThatIsNotIndexed) {
  qvscene::RgbPicture rgb;
  rgb.width = 2;
  rgb.height = 2;
  rgb.pixels.assign(12, 100);
  std::string error;
  ASSERT_TRUE(qvscene::WriteRgbPng(dir_ / "spr.png", rgb, &error));
  const std::string text = TinySceneText();
  ExpectBadInput(RunOn(text), "/pictures/spr: ", LineOfText(text, "\"spr\": "),
                 "not an 8-bit indexed PNG");
}

TEST_F(TinySceneRender, InvalidJson) {
  const std::string text = Replace(TinySceneText(), "\"height\": 4,", "\"height\": 4,,");
  RunResult r = RunOn(text);
  ExpectBadInput(r, "invalid JSON", LineOfText(text, ",,"), "invalid JSON at column");
}

TEST_F(TinySceneRender, UnknownKey) {
  const std::string text = Replace(TinySceneText(), "\"zoom\": 1.0", "\"zom\": 1.0");
  ExpectBadInput(RunOn(text), "/members/0/frames/0/zom: ", LineOfText(text, "\"zom\""),
                 "unknown key \"zom\"");
}

TEST_F(TinySceneRender, WrongType) {
  const std::string text = Replace(TinySceneText(), "\"width\": 8,", "\"width\": \"8\",");
  ExpectBadInput(RunOn(text), "/output/width: ", LineOfText(text, "\"width\""),
                 "expected an integer, found a string");
}

TEST_F(TinySceneRender, OutOfRange) {
  const std::string text = Replace(TinySceneText(), "\"zoom\": 1.0", "\"zoom\": -2");
  ExpectBadInput(RunOn(text), "/members/0/frames/0/zoom: ", LineOfText(text, "\"zoom\""),
                 "out of range: -2");
}

TEST_F(TinySceneRender, UndefinedMember) {
  const std::string text = Replace(TinySceneText(), R"("members": ["m"])", R"("members": ["q"])");
  ExpectBadInput(RunOn(text), "/layers/0/members/0: ", LineOfText(text, "[\"q\"]"),
                 "undefined member \"q\"");
}

TEST_F(TinySceneRender, UndefinedPicture) {
  const std::string text =
      Replace(TinySceneText(), R"("picture": "pal",)", R"("picture": "pals",)");
  ExpectBadInput(RunOn(text), "/members/0/picture: ", LineOfText(text, "\"pals\""),
                 "undefined picture \"pals\"");
}

TEST_F(TinySceneRender, BadUsageGivesExitTwoAndHelpGivesZero) {
  EXPECT_EQ(2, RunRender("", dir_).exitCode);
  RunResult r = RunRender(dir_ / "tiny.json" + " -o " + dir_ / "a.gif --frobnicate", dir_);
  EXPECT_EQ(2, r.exitCode);
  EXPECT_NE(std::string::npos, r.err.find("unknown option '--frobnicate'")) << r.err;
  r = RunRender(dir_ / "tiny.json", dir_);
  EXPECT_EQ(2, r.exitCode);
  EXPECT_NE(std::string::npos, r.err.find("no output given")) << r.err;
  r = RunRender(dir_ / "tiny.json --png-at soon " + dir_ / "a.png", dir_);
  EXPECT_EQ(2, r.exitCode);
  EXPECT_NE(std::string::npos, r.err.find("'soon' is not a time")) << r.err;
  EXPECT_EQ(2, RunRender(dir_ / "tiny.json --scale 9 -o " + dir_ / "a.gif", dir_).exitCode);
  r = RunRender("--help", dir_);
  EXPECT_EQ(0, r.exitCode);
  EXPECT_NE(std::string::npos, r.out.find("Usage: qvmovie-render SCENE")) << r.out;
  EXPECT_FALSE(fs::exists(dir_ / "a.gif"));
  EXPECT_FALSE(fs::exists(dir_ / "a.png"));
}

TEST_F(TinySceneRender, FailedOutputLeavesNoFileBehindAndExitsOne) {
  // The GIF can be written, the PNG cannot (its directory would have to be
  // made inside a file): the run fails and the finished GIF goes too.
  WriteText(dir_ / "plain", "x");
  RunResult r = RunRender(
      dir_ / "tiny.json -o " + dir_ / "ok.gif --png-at 0 " + dir_ / "plain/sub/t.png", dir_);
  EXPECT_EQ(1, r.exitCode) << r.err;
  EXPECT_NE(std::string::npos, r.err.find("cannot create directory")) << r.err;
  EXPECT_FALSE(fs::exists(dir_ / "ok.gif"));
  EXPECT_FALSE(HasPartial(dir_));
}

// The bundled demo, rendered from pictures made by its generator, compared
// frame by frame with what the library draws for the same moments.
TEST(DemoRender, EveryFrameMatchesTheLibraryAndTheMovieLastsEightSeconds) {
  TempDir dir;
  RunResult gen = RunCommand(std::string(QV_DEMO_ASSETS_TOOL) + " " + dir / "assets", dir);
  ASSERT_EQ(0, gen.exitCode) << gen.err;
  const std::string scenePath = std::string(QV_EXAMPLES_DIR) + "/demo.json";
  RunResult r = RunRender(scenePath + " --quiet --pictures " + dir / "assets" + " -o " +
                              dir / "demo.gif --png-at 100 " + dir / "t100.png",
                          dir);
  ASSERT_EQ(0, r.exitCode) << r.err;
  EXPECT_TRUE(r.err.empty()) << r.err;

  qvscene::LoadOptions options;
  options.pictureDir = dir / "assets";
  std::unique_ptr<qvscene::Scene> scene = qvscene::LoadScene(scenePath, options);
  const std::vector<std::int32_t> times = scene->Times();
  ASSERT_EQ(120u, times.size());

  GifPtr gif = ReadGif(dir / "demo.gif");
  ASSERT_TRUE(gif);
  EXPECT_EQ(320, gif->SWidth);
  EXPECT_EQ(200, gif->SHeight);
  ASSERT_EQ(120, gif->ImageCount);
  EXPECT_EQ(0, LoopCount(gif.get()));
  int total = 0;
  std::vector<qvscene::Picture> moments;
  for (int k = 0; k < gif->ImageCount; ++k) {
    qvscene::Picture expected;
    ASSERT_TRUE(scene->Render(times[static_cast<std::size_t>(k)], &expected));
    ExpectSameMoment(expected, GifFrame(gif.get(), k), "moment " + std::to_string(times[k]));
    GraphicsControlBlock gcb;
    ASSERT_EQ(GIF_OK, DGifSavedExtensionToGCB(gif.get(), k, &gcb));
    EXPECT_EQ(DISPOSE_DO_NOT, gcb.DisposalMode);
    EXPECT_TRUE(gcb.DelayTime == 6 || gcb.DelayTime == 7) << gcb.DelayTime;
    total += gcb.DelayTime;
  }
  EXPECT_EQ(800, total) << "120 moments of 2/30 s";

  qvscene::Picture png;
  qvscene::Picture expected;
  std::string error;
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "t100.png", &png, &error)) << error;
  ASSERT_TRUE(scene->Render(100, &expected));
  ExpectSameMoment(expected, png, "png at 100");
}

TEST(DemoRender, ColourAnimationsChangeThePaletteOverTime) {
  TempDir dir;
  ASSERT_EQ(0, RunCommand(std::string(QV_DEMO_ASSETS_TOOL) + " " + dir / "assets", dir).exitCode);
  qvscene::LoadOptions options;
  options.pictureDir = dir / "assets";
  std::unique_ptr<qvscene::Scene> scene =
      qvscene::LoadScene(std::string(QV_EXAMPLES_DIR) + "/demo.json", options);
  qvscene::Picture a;
  qvscene::Picture b;
  qvscene::Picture c;
  ASSERT_TRUE(scene->Render(0, &a));
  ASSERT_TRUE(scene->Render(5, &b));
  ASSERT_TRUE(scene->Render(239, &c));
  // Water cycles (80 to 91), the lamp flashes (104 to 107), the sky fades
  // toward the dusk colour #2c1c4c by the end (16 to 47).
  EXPECT_NE(0, std::memcmp(a.palette[80], b.palette[80], 3));
  EXPECT_NE(0, std::memcmp(a.palette[104], b.palette[104], 3));
  EXPECT_EQ(0, std::memcmp(a.palette[16], b.palette[16], 3));
  for (int i = 16; i <= 47; ++i) {
    EXPECT_EQ(0x2c, c.palette[i][0]);
    EXPECT_EQ(0x1c, c.palette[i][1]);
    EXPECT_EQ(0x4c, c.palette[i][2]);
  }
}

}  // namespace
