// qvmovie-render run as a program: its GIF, PNG and sheet outputs checked
// against what the library draws, its messages and exit codes on bad input,
// and that a failed run leaves no output behind; the demo's colour tables.

#include <gif_lib.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>

#include "ToolTestUtil.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "render/ContactSheet.h"
#include "scene/SceneReader.h"

namespace {

using namespace tooltest;

RunResult RunRender(const std::string& args, const TempDir& scratch) {
  return RunCommand(std::string(QV_RENDER_TOOL) + " " + args, scratch);
}

// A whole GIF; null when it cannot be read.
using GifPtr = std::shared_ptr<GifFileType>;
GifPtr ReadGif(const std::string& path) {
  int error = 0;
  GifPtr gif(DGifOpenFileName(path.c_str(), &error),
             [](GifFileType* g) { DGifCloseFile(g, nullptr); });
  return gif && DGifSlurp(gif.get()) == GIF_OK ? gif : nullptr;
}

// Every frame of a GIF whose frames are all kept (not disposed) as a viewer
// shows it: drawn over the ones before, through its local or the global
// table, its transparent index leaving what was there. Red, green, blue.
std::vector<std::vector<unsigned char>> Composed(GifFileType* gif) {
  std::vector<std::vector<unsigned char>> frames;
  std::vector<unsigned char> canvas(static_cast<std::size_t>(gif->SWidth) * gif->SHeight * 3, 0);
  for (int k = 0; k < gif->ImageCount; ++k) {
    const SavedImage& image = gif->SavedImages[k];
    const GifImageDesc& d = image.ImageDesc;
    const ColorMapObject* map = d.ColorMap ? d.ColorMap : gif->SColorMap;
    GraphicsControlBlock gcb{};
    DGifSavedExtensionToGCB(gif, k, &gcb);
    EXPECT_EQ(DISPOSE_DO_NOT, gcb.DisposalMode);
    for (int y = 0; y < d.Height && map; ++y) {
      for (int x = 0; x < d.Width; ++x) {
        const int i = image.RasterBits[y * d.Width + x];
        if (i == gcb.TransparentColor || i >= map->ColorCount) continue;
        static_assert(sizeof(GifColorType) == 3, "red, green, blue bytes");
        std::memcpy(&canvas[3 * (static_cast<std::size_t>(d.Top + y) * gif->SWidth + d.Left + x)],
                    &map->Colors[i], 3);
      }
    }
    frames.push_back(canvas);
  }
  return frames;
}

GraphicsControlBlock Gcb(GifFileType* gif, int k) {
  GraphicsControlBlock gcb{};
  EXPECT_EQ(GIF_OK, DGifSavedExtensionToGCB(gif, k, &gcb));
  return gcb;
}

// The loop count of the GIF file's NETSCAPE2.0 extension, or -1.
int LoopCount(const std::string& path) {
  const std::string bytes = Slurp(path), mark("NETSCAPE2.0\x03\x01", 13);
  const std::size_t at = bytes.find(mark);
  if (at == std::string::npos || at + 15 > bytes.size()) return -1;
  const auto* count = reinterpret_cast<const unsigned char*>(bytes.data() + at + 13);
  return count[0] | count[1] << 8;
}

bool SamePicture(const Picture& a, const Picture& b) {
  return a.width == b.width && a.height == b.height && a.pixels == b.pixels &&
         std::memcmp(a.palette, b.palette, sizeof a.palette) == 0;
}

class TinySceneRender : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteTinyPictures(dir_);
    WriteText(dir_ / "tiny.json", TinySceneText());
  }
  // Runs the tool on scene text (written to s.json) with args after it.
  RunResult Run(const std::string& text, const std::string& args) {
    WriteText(dir_ / "s.json", text);
    return RunRender(dir_ / "s.json " + args, dir_);
  }
  // The GIF of scene text: six moments of 8 x 4 pixels.
  GifPtr Gif(const std::string& text) {
    const RunResult r = Run(text, "-o " + dir_ / "out.gif");
    EXPECT_EQ(0, r.exitCode) << r.text;
    GifPtr gif = ReadGif(dir_ / "out.gif");
    EXPECT_TRUE(gif && gif->ImageCount == 6);
    return gif && gif->ImageCount == 6 ? std::move(gif) : nullptr;
  }
  TempDir dir_;
};

// Sprite s walks its path over the background and, from 3 on, over m,
// which scrolls left and cycles its indices 4 to 7; s's colour animations
// give their colours to the palette. The GIF shows every moment as the
// library draws it, and the delays carry their rounding.
TEST_F(TinySceneRender, GifOfSpritesPathsScrollingAndColourAnimations) {
  std::string text =
      AddMembers(TinySceneText(), R"({"name": "s", "picture": "spr", "transparent": 0,
      "frames": [{"rect": [0, 0, 2, 2]}], "path": {"points": [[1, 1], [3, 1], [5, 2]], "type": "clamp"},
      "colors": [{"kind": "fade", "area": [255], "to": "#000000"}, {"kind": "flash", "area": [10]},
                 {"kind": "switch", "area": [11], "tables": [{}, {"entries": [[11, [18, 52, 86]]]}]}]})");
  text = Replace(text, R"("members": ["m"])", R"("members": ["m", "s"])");
  text = Replace(text, R"("palette": "pal")", R"("palette": "pal", "background": 9)");
  GifPtr gif =
      Gif(Replace(text, R"("name": "m",)",
                  R"("name": "m", "start": 3, "scroll": {"directions": ["left"], "stepH": 1},)"));
  ASSERT_TRUE(gif);
  EXPECT_EQ(Ints(8, 4, 0), Ints(gif->SWidth, gif->SHeight, LoopCount(dir_ / "out.gif")));
  ASSERT_TRUE(gif->SColorMap);
  EXPECT_EQ(256, gif->SColorMap->ColorCount) << "a global table of 256 colours";
  auto scene = qvscene::LoadScene(dir_ / "s.json");
  const auto shown = Composed(gif.get());
  const int delays[6] = {3, 4, 3, 3, 4, 3};  // 20 cs in all: the length does not drift
  // The anchor is the middle of the 2 x 2 frame, its lower-right pixel: the
  // sprite's top-left pixel lands one pixel up and left of each anchor.
  const int lefts[6] = {0, 2, 4, 4, 4, 4}, tops[6] = {0, 0, 1, 1, 1, 1};
  const int sprite[4] = {3, 5, 6, 0};
  const int fadeRed[6] = {255, 246, 237, 228, 219, 211};  // entry 255 toward black in 30 frames
  const unsigned char flash[3][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
  const unsigned char switched[2][3] = {{11, 244, 77}, {18, 52, 86}};
  const Picture& source = TinyPicture();
  for (int t = 0; t < 6; ++t) {
    SCOPED_TRACE("moment " + std::to_string(t));
    EXPECT_EQ(delays[t], Gcb(gif.get(), t).DelayTime);
    Picture f;
    ASSERT_TRUE(scene->Render(t, &f));
    EXPECT_TRUE(ToRgb(f) == shown[static_cast<std::size_t>(t)]) << "the GIF shows the moment";
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 8; ++x) {
        const int dx = x - lefts[t], dy = y - tops[t];
        const int s = dx >= 0 && dx < 2 && dy >= 0 && dy < 2 ? sprite[dy * 2 + dx] : 0;
        const int under = t < 3 ? 9 : source.At((x + t - 3) % 8, y);
        EXPECT_EQ(s ? s : under, f.At(x, y)) << x << "," << y;
      }
    }
    // From 3 on the cycle is at frame t - 3: the colour of index 4 + k
    // moves to 4 + (k + t - 3) mod 4. Other entries are the base palette's.
    unsigned char want[256][3];
    std::memcpy(want, source.palette, sizeof want);
    for (int k = 0; t >= 3 && k < 4; ++k)
      std::memcpy(want[4 + (k + t - 3) % 4], source.palette[4 + k], 3);
    std::memcpy(want[10], flash[t % 3], 3);
    std::memcpy(want[11], switched[t % 2], 3);
    EXPECT_EQ(fadeRed[t], f.palette[255][0]);
    std::memcpy(want[255], f.palette[255], 3);
    EXPECT_EQ(0, std::memcmp(want, f.palette, sizeof want));
  }
}

// --png-at writes moments with their palettes, --sheet several moments in
// their own colours; --scale enlarges both.
TEST_F(TinySceneRender, PngAtAndSheetWriteTheMomentsWithTheirPalettesScaled) {
  const RunResult r =
      RunRender(dir_ / "tiny.json --png-at 3 " + dir_ / "t3.png --scale 3 --png-at 1 " +
                    dir_ / "t1.png --sheet " + dir_ / "sheet.png --sheet-times 0,1,3,5",
                dir_);
  ASSERT_EQ(0, r.exitCode) << r.text;
  const RgbImage image = ReadRgb(dir_ / "sheet.png");
  const qvrender::ContactSheet sheet(24, 12, 4);
  ASSERT_EQ(Ints(sheet.Sheet().width, sheet.Sheet().height), Ints(image.width, image.height));
  auto scene = qvscene::LoadScene(dir_ / "tiny.json");
  const int times[4] = {0, 1, 3, 5};
  for (int i = 0; i < 4; ++i) {
    Picture m;
    ASSERT_TRUE(scene->Render(times[i], &m));
    Picture enlarged = MakePicture(24, 12, {});
    std::memcpy(enlarged.palette, m.palette, sizeof m.palette);
    enlarged.pixels.clear();
    for (int k = 0; k < 24 * 12; ++k) {
      const int x = k % 24, y = k / 24;
      enlarged.pixels.push_back(m.At(x / 3, y / 3));
      ASSERT_EQ(0, std::memcmp(m.palette[m.At(x / 3, y / 3)],
                               image.At(sheet.CellLeft(i) + x, sheet.CellTop(i) + y), 3))
          << "moment " << times[i];
    }
    if (i == 1 || i == 2) {  // 1 and 3
      EXPECT_TRUE(SamePicture(enlarged, ReadPng(dir_ / ("t" + std::to_string(times[i]) + ".png"))));
    }
  }
}

// Bad scenes exit with 2 and "FILE:LINE: PATH: REASON", and write nothing.
TEST_F(TinySceneRender, BadScenesExitTwoWithFileLinePathAndReason) {
  const std::string tiny = TinySceneText();
  struct Case {
    std::string text, lineOf, message;  // lineOf: "" for no line; message follows "FILE:LINE: "
  };
  const Case cases[] = {
      {tiny, "\"spr\": ", "/pictures/spr: cannot open '" + dir_ / "spr.png': No such file"},
      {tiny, "\"pal\": ",
       "/pictures/pal: '" + dir_ / "pal.png' is not an 8-bit indexed PNG (it is RGB, 8 bits"},
      {Replace(tiny, "4,", "4,,"), ",,", "invalid JSON at column"},
      {"", "", "invalid JSON"},
      {Replace(tiny, "[\"m\"]", "[\"q\"]"), "\"q\"", "/layers/0/members/0: undefined member \"q\""},
      {Replace(tiny, "\"pal\",", "\"pals\","), "pals",
       "/members/0/picture: undefined picture \"pals\""},
  };
  for (std::size_t k = 0; k < sizeof cases / sizeof cases[0]; ++k) {
    const Case& c = cases[k];
    SCOPED_TRACE(c.message);
    WriteTinyPictures(dir_);
    if (k == 0) fs::remove(dir_ / "spr.png");
    qvscene::RgbPicture rgb{2, 2, std::vector<unsigned char>(12, 100)};
    std::string error;
    ASSERT_TRUE(k != 1 || qvscene::WriteRgbPng(dir_ / "pal.png", rgb, &error)) << error;
    const RunResult r = Run(c.text, "-o " + dir_ / "out.gif --png-at 0 " + dir_ / "out.png");
    EXPECT_EQ(2, r.exitCode) << r.text;
    const std::string line = std::to_string(LineOfText(c.text, c.lineOf));
    EXPECT_TRUE(Contains(r.text, "qvmovie-render: " + dir_ / "s.json:" + line + ": " + c.message))
        << r.text;
    EXPECT_FALSE(fs::exists(dir_ / "out.gif") || fs::exists(dir_ / "out.png"));
    EXPECT_FALSE(dir_.HasPartial());
  }
  const RunResult r = RunRender(dir_ / "none.json -o " + dir_ / "out.gif", dir_);
  EXPECT_EQ(2, r.exitCode);
  EXPECT_TRUE(Contains(r.text, dir_ / "none.json: cannot open")) << r.text;
  EXPECT_FALSE(fs::exists(dir_ / "out.gif"));
}

TEST_F(TinySceneRender, BadUsageExitsTwoAndHelpZero) {
  const std::string tiny = dir_ / "tiny.json";
  const std::pair<std::string, const char*> cases[] = {
      {"", ""},
      {tiny + " -o " + dir_ / "a.gif --frobnicate", "unknown option '--frobnicate'"},
      {tiny, "no output given"},
      {tiny + " --png-at soon " + dir_ / "a.png", "'soon' is not a time"},
      {tiny + " --scale 9 -o " + dir_ / "a.gif", ""},
      {tiny + " --scale 0 -o " + dir_ / "a.gif", ""},
  };
  for (const auto& c : cases) {
    const RunResult r = RunRender(c.first, dir_);
    EXPECT_EQ(2, r.exitCode) << c.first;
    EXPECT_TRUE(Contains(r.text, c.second)) << r.text;
  }
  EXPECT_FALSE(fs::exists(dir_ / "a.gif") || fs::exists(dir_ / "a.png"));
  const RunResult help = RunRender("--help", dir_);
  EXPECT_EQ(0, help.exitCode);
  EXPECT_TRUE(Contains(help.text, "Usage: qvmovie-render SCENE")) << help.text;
}

// The bundled demo's scene file, and the demo loaded from the pictures its
// generator makes in dir/assets.
const std::string kDemo = std::string(QV_EXAMPLES_DIR) + "/demo.json";
std::unique_ptr<qvscene::Scene> LoadDemo(const TempDir& dir) {
  EXPECT_EQ(0, RunCommand(std::string(QV_DEMO_ASSETS_TOOL) + " " + dir / "assets", dir).exitCode);
  qvscene::LoadOptions options;
  options.pictureDir = dir / "assets";
  return qvscene::LoadScene(kDemo, options);
}

// The demo rendered by the tool, compared frame by frame with what the
// library draws for the same moments, decoded by giflib and (where it is
// installed) by Pillow.
TEST(DemoRender, EveryFrameMatchesTheLibraryAndTheMovieLastsEightSeconds) {
  TempDir dir;
  auto scene = LoadDemo(dir);
  const RunResult r =
      RunRender(kDemo + " --quiet --pictures " + dir / "assets -o " + dir / "demo.gif", dir);
  ASSERT_EQ(0, r.exitCode) << r.text;
  EXPECT_TRUE(r.text.empty()) << r.text;  // quiet
  const std::vector<std::int32_t> times = scene->Times();
  ASSERT_EQ(120u, times.size());
  GifPtr gif = ReadGif(dir / "demo.gif");
  ASSERT_TRUE(gif);
  ASSERT_EQ(Ints(320, 200, 120, 0),
            Ints(gif->SWidth, gif->SHeight, gif->ImageCount, LoopCount(dir / "demo.gif")));
  int total = 0;
  const auto shown = Composed(gif.get());
  // Python's Pillow, another decoder, shows the same frames.
  const PillowGif pillow =
      *QV_PYTHON3 ? DecodeWithPillow(QV_PYTHON3, dir / "demo.gif", dir) : PillowGif{shown, {}};
  ASSERT_EQ(pillow.frames.size(), 120u);
  for (int k = 0; k < gif->ImageCount; ++k) {
    Picture expected;
    ASSERT_TRUE(scene->Render(times[static_cast<std::size_t>(k)], &expected));
    EXPECT_TRUE(ToRgb(expected) == shown[static_cast<std::size_t>(k)]) << "moment " << times[k];
    EXPECT_TRUE(ToRgb(expected) == pillow.frames[static_cast<std::size_t>(k)]) << times[k];
    const GraphicsControlBlock gcb = Gcb(gif.get(), k);
    EXPECT_TRUE(gcb.DelayTime == 6 || gcb.DelayTime == 7) << gcb.DelayTime;
    total += gcb.DelayTime;
  }
  EXPECT_EQ(800, total) << "120 moments of 2/30 s";
}

// The colour table of a moment, computed by the library
// (QvMLayer::GetCTable), against the tools' former computation: the base
// palette overlaid, layer by layer, by each animated member's CTable inside
// the palette areas its scene file names.
using Areas = std::map<std::int16_t, std::array<bool, 256>>;

// The union of the colour animations' areas of every member, read from the
// scene file itself.
Areas AreasOf(const std::string& file, qvscene::Scene& scene) {
  std::ifstream in(file);
  const nlohmann::json doc = nlohmann::json::parse(in);
  Areas areas;
  for (const auto& m : doc["members"]) {
    if (!m.contains("colors")) continue;
    auto& area = areas[scene.MemberId(m["name"].get<std::string>())];
    area.fill(false);
    for (const auto& c : m["colors"]) {
      for (const auto& e : c["area"]) {
        const int first = e.is_array() ? e[0].get<int>() : e.get<int>();
        const int last = e.is_array() ? e[1].get<int>() : first;
        for (int k = first; k <= last; ++k) area[static_cast<std::size_t>(k)] = true;
      }
    }
  }
  return areas;
}

// The tools' former computation of the table of moment t.
tbColorTable OldPalette(qvscene::Scene& scene, const Areas& areas, std::int32_t t) {
  tbColorTable out = scene.BasePalette();
  QvMLayer* layers = scene.Layers();
  for (std::int16_t layer = 0; layer < layers->Count(); ++layer) {
    QvMCast* cast = nullptr;
    std::int16_t id = -1;
    for (std::int16_t i = 0; layers->Get(layer, i, &cast, &id); ++i) {
      const auto area = areas.find(id);
      if (cast != scene.Cast() || area == areas.end()) continue;
      tbColorTable* table = cast->CTable(id, t);
      if (!table) continue;
      for (std::int16_t k = 0; k < 256; ++k) {
        if (area->second[static_cast<std::size_t>(k)]) out.SetCTTable(k, table->CTTable(k));
      }
    }
  }
  return out;
}

TEST(MomentPalette, TheLibraryGivesTheToolsFormerTablesAtEveryMomentOfTheDemo) {
  TempDir dir;
  auto scene = LoadDemo(dir);
  const Areas areas = AreasOf(kDemo, *scene);
  ASSERT_GE(areas.size(), 3u);
  int changed = 0;  // moments whose table is not the base palette
  for (std::int32_t t = scene->From() - 5; t <= scene->To() + 5; ++t) {
    tbColorTable now;
    ASSERT_EQ(1, scene->Layers()->GetCTable(t, &scene->BasePalette(), &now));
    const tbColorTable old = OldPalette(*scene, areas, t);
    ASSERT_TRUE(now == old) << "moment " << t;
    changed += now != scene->BasePalette();
    tbColorTable viaScene;
    scene->Palette(t, &viaScene);
    ASSERT_TRUE(viaScene == old) << "moment " << t;
  }
  EXPECT_GT(changed, 100);
}

}  // namespace
