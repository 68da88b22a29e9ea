// The page of `qvmovie-render --html` in a real browser (headless Chromium,
// driven through its DevTools protocol by browser.py): the canvas at fixed
// moments against the render tool's pictures of the same moments, pixel for
// pixel and colour for colour, and the running page against the engine's
// speed and colour tables. Skipped when the WebAssembly build (scripts/web.sh)
// was not configured beside this build.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "../ToolTestUtil.h"

namespace {

using namespace tooltest;

// Every scale x scale block of the screenshot is one pixel of the render
// tool's picture, in its colour.
void ExpectEnlarged(const std::string& shot, const std::string& png, int scale) {
  const RgbImage page = ReadRgb(shot), ref = ReadRgb(png);
  ASSERT_EQ(Ints(page.width, page.height), Ints(ref.width * scale, ref.height * scale));
  int wrong = 0;
  for (int y = 0; y < page.height; ++y) {
    for (int x = 0; x < page.width; ++x) {
      if (std::memcmp(page.At(x, y), ref.At(x / scale, y / scale), 3) != 0 && wrong++ < 5) {
        ADD_FAILURE() << "canvas (" << x << ", " << y << ") differs from pixel (" << x / scale
                      << ", " << y / scale << ")";
      }
    }
  }
  EXPECT_EQ(wrong, 0);
}

std::string Quote(const std::string& s) { return "'" + s + "'"; }

// The render tool's exit status, a space and what it wrote.
std::string RenderTool(const std::string& args, const TempDir& dir, const std::string& env = "") {
  const auto r = RunCommand(env + " " + QV_RENDER_TOOL + " " + args, dir);
  return std::to_string(r.exitCode) + " " + r.text;
}

// A bad scene is reported as by every output of the render tool; an engine
// for the browser that is not there is a failure of the run. Neither leaves
// a page or a part of one.
TEST(HtmlExport, BadSceneOrMissingEngineLeavesNoPage) {
  TempDir dir;
  WriteTinyPictures(dir);
  const std::string bad = Replace(TinySceneText(), "zoom", "zom");
  WriteText(dir / "bad.json", bad);
  const std::string badRun = RenderTool(dir / "bad.json --html " + dir / "out.html", dir);
  EXPECT_TRUE(Contains(
      badRun, "2 qvmovie-render: " + dir / "bad.json:" + std::to_string(LineOfText(bad, "zom")) +
                  ": /members/0/frames/0/zom: unknown key"))
      << badRun;
  WriteText(dir / "tiny.json", TinySceneText());
  fs::create_directory(dir / "empty");
  const std::string missing = RenderTool(dir / "tiny.json --html " + dir / "out.html", dir,
                                         "QVMOVIE_WEB_DIR=" + dir / "empty");
  EXPECT_EQ(missing.substr(0, 2), "1 ");
  EXPECT_TRUE(Contains(missing,
                       "the engine for the browser is not built (no "
                       "qvmovie-engine.wasm in " +
                           dir / "empty" + "): build it with 'bash scripts/web.sh"))
      << missing;
  EXPECT_FALSE(fs::exists(dir / "out.html"));
  EXPECT_FALSE(dir.HasPartial());
}

// The demo's page, made once for all tests.
class WebPage : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!Configured()) return;
    dir_ = std::make_unique<TempDir>();
    scene_ = std::string(QV_EXAMPLES_DIR) + "/demo.json";
    page_ = *dir_ / "demo.html";
    made_ = RunCommand(std::string(QV_RENDER_TOOL) + " " + scene_ + " --html " + page_, *dir_);
  }
  static void TearDownTestSuite() { dir_.reset(); }
  static bool Configured() { return fs::exists(std::string(QV_WEB_BUILD_DIR) + "/CMakeCache.txt"); }

  void SetUp() override {
    if (!Configured()) GTEST_SKIP() << "the WebAssembly build is not configured (scripts/web.sh)";
    ASSERT_EQ(made_.exitCode, 0) << made_.text;
  }

  // Runs browser.py on the page with the address fragment, in the browser
  // QV_CHROMIUM names (default: chromium on the PATH); false (and the
  // browser's complaint in the test's output) when it failed.
  static bool Browse(const std::string& fragment, const std::string& args,
                     const std::string& page = page_) {
    const char* chromium = std::getenv("QV_CHROMIUM");
    std::string url = "file://";
    for (char c : page) url += c == ' ' ? std::string("%20") : std::string(1, c);
    const auto r = RunCommand("python3 " + Quote(QV_BROWSER_PY) + " " +
                                  Quote(chromium && *chromium ? chromium : "chromium") + " " +
                                  Quote(url + "#" + fragment) + " " + args,
                              *dir_);
    if (r.exitCode != 0) ADD_FAILURE() << r.text;
    return r.exitCode == 0;
  }
  static nlohmann::json ReadJson(const std::string& path) {
    return nlohmann::json::parse(Slurp(path));
  }
  // The page paused at moment t, scale times enlarged: every scale x scale
  // block of its canvas is the pixel of the render tool's moment t of scene,
  // in its colour. more: further arguments of browser.py (--eval ...). The
  // render tool's picture is left in the returned file.
  static std::string ExpectMoment(const std::string& page, const std::string& scene, int t,
                                  int scale, const std::string& more = "") {
    SCOPED_TRACE("moment " + std::to_string(t));
    const std::string stem = fs::path(page).stem().string() + std::to_string(t);
    const std::string shot = *dir_ / (stem + "-shot.png"), png = *dir_ / (stem + ".png");
    const std::string when = std::to_string(t);
    EXPECT_TRUE(Browse("t=" + when + "&s=" + std::to_string(scale),
                       "--wait-for 'window.qvPage && qvPage.ready && qvPage.moment() === " + when +
                           "' --shot " + Quote(shot) + " " + more,
                       page));
    EXPECT_EQ(RenderTool(Quote(scene) + " --png-at " + when + " " + Quote(png), *dir_), "0 ");
    ExpectEnlarged(shot, png, scale);
    return png;
  }

  static std::unique_ptr<TempDir> dir_;
  static std::string scene_, page_;
  static RunResult made_;
};

std::unique_ptr<TempDir> WebPage::dir_;
std::string WebPage::scene_, WebPage::page_;
RunResult WebPage::made_;

// #t=T&s=2: moment T paused, twice enlarged. Every 2 x 2 block of the
// canvas is one pixel of the render tool's moment, in its colour; and a
// click anywhere names a member of the scene. The page is one small file.
TEST_F(WebPage, CanvasMatchesTheRenderToolAtFixedMoments) {
  const std::string html = Slurp(page_);
  EXPECT_LE(html.size(), 400u * 1024u);
  // Nothing is fetched: no script, style or picture from elsewhere.
  EXPECT_FALSE(Contains(html, "<script src"));
  EXPECT_FALSE(Contains(html, "<link"));
  EXPECT_FALSE(Contains(html, "<img"));
  std::set<std::string> names;
  const nlohmann::json scene = ReadJson(scene_);
  for (const auto& m : scene["members"]) names.insert(m["name"].get<std::string>());
  for (const int t : {0, 110, 238}) {
    const std::string hits = *dir_ / ("hits" + std::to_string(t) + ".json");
    ExpectMoment(
        page_, scene_, t, 2,
        "--eval '[0, 80, 160, 240, 319].map((x) => qvPage.hit(x, x * 199 / 319))' " + hits);
    for (const auto& name : ReadJson(hits))
      EXPECT_EQ(names.count(name.get<std::string>()), 1u) << name;
  }
}

// The colour-cycling waterfall, copied with its picture into a folder whose
// name has spaces and exported by a relative path from another folder: a
// page of at most 400 KB whose canvas at two moments of the cycles (only
// the colours differ) is the render tool's.
TEST_F(WebPage, FallsFromAFolderWithSpacesAndFromAnIlbmPicture) {
  const std::string folder = *dir_ / "my scenes", scene = folder + "/falls scene.json";
  fs::create_directories(folder);
  fs::create_directories(*dir_ / "elsewhere");
  fs::copy_file(std::string(QV_EXAMPLES_DIR) + "/falls.json", scene);
  fs::copy_file(std::string(QV_EXAMPLES_DIR) + "/falls.png", folder + "/falls.png");
  const auto made = RunCommand("cd " + Quote(*dir_ / "elsewhere") + " && " + QV_RENDER_TOOL +
                                   " '../my scenes/falls scene.json' --html 'falls page.html'",
                               *dir_);
  ASSERT_EQ(made.exitCode, 0) << made.text;
  const std::string page = *dir_ / "elsewhere/falls page.html";
  EXPECT_LE(fs::file_size(page), 400u * 1024u);
  const RgbImage first = ReadRgb(ExpectMoment(page, scene, 0, 2));
  EXPECT_NE(first.pixels, ReadRgb(ExpectMoment(page, scene, 146, 2)).pixels);
  // The imported waterfall with its ILBM picture in place of the PNG one
  // (the scene reader takes either): the page embeds the decoded picture and
  // draws the render tool's moment.
  const std::string import = std::string(QV_EXAMPLES_DIR) + "/import/";
  const std::string ilbm = *dir_ / "ilbm.json", ilbmPage = *dir_ / "ilbm.html";
  WriteText(ilbm, Replace(Slurp(import + "waterfall.json"), "waterfall.png", "waterfall.lbm"));
  fs::copy_file(import + "waterfall.lbm", *dir_ / "waterfall.lbm");
  ASSERT_EQ(RenderTool(ilbm + " --html " + ilbmPage, *dir_), "0 ");
  ExpectMoment(ilbmPage, ilbm, 40, 2);
}

// The player's keys, pressed on the page paused at moment 110: right,
// right, left is one moment on (the step is 2); + + is four times the speed;
// M turns the loop into playing once; O shows the overlay; space plays;
// a click names the member under the mouse.
TEST_F(WebPage, KeysOfThePlayer) {
  const std::string state = *dir_ / "keys.json";
  ASSERT_TRUE(Browse("t=110",
                     "--keys 'ArrowRight,ArrowRight,ArrowLeft,+,+,m,o' --sleep 0.3 --eval "
                     "'[qvPage.moment(), qvPage.speed(), qvPage.mode(), qvPage.overlay()]' " +
                         state));
  EXPECT_EQ(ReadJson(state), nlohmann::json::parse(R"([112, 60, "once", true])"));
  ASSERT_TRUE(Browse("t=110", "--keys End --sleep 0.3 --eval 'qvPage.moment()' " + state));
  EXPECT_EQ(ReadJson(state), 238);
  // A click at page pixel (321, 41) of the twice enlarged movie is on its
  // pixel (160, 20): the status names what the engine's hit test finds there.
  ASSERT_TRUE(Browse("t=110&s=2",
                     "--click 321,41 --sleep 0.3 --eval "
                     "'[document.getElementById(\"status\").textContent, qvPage.hit(160, 20)]' " +
                         state));
  const nlohmann::json clicked = ReadJson(state);
  EXPECT_NE(clicked[1], "");
  EXPECT_TRUE(Contains(clicked[0], "(160, 20): " + clicked[1].get<std::string>())) << clicked;
  ASSERT_TRUE(Browse("t=110", "--keys Home,' ' --sleep 0.5 --eval 'qvPage.moment()' " + state));
  EXPECT_GT(ReadJson(state).get<int>(), 0);  // playing from the first moment
}

// Keys 2 and 6 hide the layers of the sun and moon and of the walker (no
// colour animations on them, so the colours stay): the canvas at moment 110
// is the render tool's picture of the demo without those two layers; 9
// names a layer the demo does not have. F then plays frame by frame: at 32
// times the speed, 480 moments a second, far more than the browser has
// animation frames, every moment is still shown in turn, none skipped.
TEST_F(WebPage, LayersHiddenAndFrameByFrame) {
  for (const auto& f : fs::directory_iterator(QV_EXAMPLES_DIR))
    if (f.path().extension() == ".png") fs::copy_file(f.path(), *dir_ / f.path().filename());
  nlohmann::json scene = ReadJson(scene_);
  auto& layers = scene["layers"];
  layers.erase(5);
  layers.erase(1);
  const std::string reduced = *dir_ / "reduced.json", state = *dir_ / "layers.json";
  WriteText(reduced, scene.dump());
  ExpectMoment(page_, reduced, 110, 2,
               "--keys 2,6,9 --sleep 0.3 --eval '[qvPage.hiddenLayers(), "
               "document.getElementById(\"status\").textContent]' " +
                   state);
  const nlohmann::json shown = ReadJson(state);
  EXPECT_EQ(shown[0], nlohmann::json::parse("[2, 6]"));
  EXPECT_TRUE(Contains(shown[1], "no layer 9")) << shown;

  const std::string log = *dir_ / "fbf.json";
  ASSERT_TRUE(Browse("t=0&log&s=1",
                     "--keys +,+,+,+,+,f,' ' --sleep 1 --eval "
                     "'[qvPage.frameByFrame(), qvPage.speed(), qvPage.log.map((e) => e.index)]' " +
                         log));
  const nlohmann::json played = ReadJson(log);
  EXPECT_EQ(played[0], true);
  EXPECT_EQ(played[1], 480);
  ASSERT_GE(played[2].size(), 6u) << played;
  for (std::size_t i = 1; i < played[2].size(); ++i)
    EXPECT_EQ(played[2][i].get<int>(), played[2][i - 1].get<int>() + 1) << played[2];
}

// Playing from moment 210 for three seconds, over the end of the movie and
// round to its start: every moment the page drew is where the engine's
// clock puts it (the scene's step of 2 units of 1/30 s makes 15 moments a
// second; the loop does not drift), and its colours are the render tool's
// colour table of that moment (the dusk fade, then the water's cycle).
TEST_F(WebPage, PlaysAtTheEnginesSpeedWithItsColours) {
  const std::string log = *dir_ / "log.json", speed = *dir_ / "speed.json";
  const std::string started = *dir_ / "started.json";
  ASSERT_TRUE(Browse("t=210&play&log&s=1", "--sleep 3 --eval qvPage.log " + log +
                                               " --eval 'qvPage.speed()' " + speed +
                                               " --eval qvPage.started " + started));
  const nlohmann::json entries = ReadJson(log), start = ReadJson(started);
  const nlohmann::json scene = ReadJson(scene_);
  const int fps = 30 / scene["output"]["step"].get<int>();
  ASSERT_EQ(ReadJson(speed).get<int>(), fps);
  ASSERT_GE(entries.size(), 20u);  // about 45 in three seconds
  // Where the clock puts the moment at each drawing, counted from the
  // moment and the millisecond at which playing started.
  const double ms0 = start["ms"].get<double>();
  const int index0 = start["index"].get<int>();
  const int count = static_cast<int>(scene["output"]["to"].get<int>() / 2 + 1);
  EXPECT_EQ(index0, 210 / 2);
  std::map<int, std::string> colors;  // moment -> colour table as hex
  for (const auto& e : entries) {
    const double expected = index0 + (e["ms"].get<double>() - ms0) * fps / 1000.0;
    const double behind = std::remainder(expected - e["index"].get<int>(), count);
    EXPECT_LE(std::fabs(behind), 2.0) << e["ms"];
    colors[e["t"].get<int>()] = e["colors"].get<std::string>();
  }
  EXPECT_GE(colors.size(), 20u);  // most moments were drawn

  std::string args;
  for (const auto& c : colors) {
    args += " --png-at " + std::to_string(c.first) + " " +
            (*dir_ / ("p" + std::to_string(c.first) + ".png"));
  }
  ASSERT_EQ(RenderTool(Quote(scene_) + args, *dir_), "0 ");
  std::set<std::string> tables;
  for (const auto& c : colors) {
    const qvscene::Picture p = ReadPng(*dir_ / ("p" + std::to_string(c.first) + ".png"));
    char hex[256 * 6 + 1];
    for (int i = 0; i < 256; ++i)
      std::snprintf(hex + 6 * i, 7, "%02x%02x%02x", p.palette[i][0], p.palette[i][1],
                    p.palette[i][2]);
    EXPECT_EQ(c.second, hex) << "moment " << c.first;
    tables.insert(c.second);
  }
  EXPECT_GE(tables.size(), 5u);  // the fade moves on every few moments
}

// Names and text that mean something in HTML reach the engine unchanged:
// the page of the tiny scene whose member is called "<!--<script></script>m"
// names it on a click, and its moment 3, four times enlarged, is the render
// tool's (the cycle of indices 4 to 7 three steps on).
TEST_F(WebPage, TinySceneWithMarkupInItsNames) {
  const std::string name = "<!--<script></script>m", hit = *dir_ / "hit.json";
  const std::string scene = *dir_ / "tiny.json", page = *dir_ / "tiny.html";
  WriteTinyPictures(*dir_);
  WriteText(scene, Replace(Replace(TinySceneText(), "\"m\",", "\"" + name + "\","), "[\"m\"]",
                           "[\"" + name + "\"]"));
  ASSERT_EQ(RenderTool(scene + " --html " + page, *dir_), "0 ");
  ExpectMoment(page, scene, 3, 4, "--eval 'qvPage.hit(7, 3)' " + hit);
  EXPECT_EQ(ReadJson(hit), name);
}

}  // namespace
