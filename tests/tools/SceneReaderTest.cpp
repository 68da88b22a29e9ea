// The scene library: movie time as GIF delays, indexed PNG pictures, the
// JSON document's lines, and the scene reader: what it builds in the cast
// and layer stores, where its errors point, and its allocation failures.

#include <gtest/gtest.h>
#include <png.h>

#include <cstdlib>
#include <cstring>

#include "ToolTestUtil.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "scene/JsonDocument.h"
#include "scene/MovieTime.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"

namespace {

using namespace tooltest;
TEST(MovieTime, DelaysCarryTheRoundingSoTheLengthNeverDrifts) {
  EXPECT_EQ(Ints(2, 100, 100, 0),
            Ints(qvscene::kTicksPerUnit, qvscene::CentisecondsAt(30, 1),
                 qvscene::CentisecondsAt(15, 2), qvscene::CentisecondsAt(0, 7)));
  std::vector<long long> first[4];  // the first delays of steps 1 to 3
  for (std::int64_t step = 1; step <= 12; ++step) {
    std::int64_t sum = 0;
    for (std::int64_t k = 0; k < 3000; ++k) {
      const std::int64_t delay = qvscene::DelayCentiseconds(k, step);
      if (step <= 3 && k < 6) first[step].push_back(delay);
      // Each delay is the exact length rounded down or up.
      ASSERT_LE(std::llabs(delay * 30 - step * 100), 30) << "step " << step << " frame " << k;
      sum += delay;
      // sum against the exact (k + 1) * step / 30 s, in 1/3000 s
      ASSERT_LE(std::llabs(sum * 30 - (k + 1) * step * 100), 15) << "step " << step << " @" << k;
    }
  }
  EXPECT_EQ(Ints(3, 4, 3, 3, 4, 3), first[1]);
  EXPECT_EQ(Ints(7, 6, 7, 7, 6, 7), first[2]);
  EXPECT_EQ(Ints(10, 10, 10, 10, 10, 10), first[3]);
}

// Writes a 4 x 2 palette PNG of `entries` colours, entry 1 red, the others
// black, all pixels 1: libpng takes 4 bits for up to 16 entries, 8 for more.
void WritePalettePng(const std::string& path, int entries) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = 4;
  image.height = 2;
  image.format = PNG_FORMAT_RGB_COLORMAP;
  image.colormap_entries = static_cast<png_uint_32>(entries);
  std::vector<unsigned char> colormap(3 * static_cast<std::size_t>(entries), 0), pixels(8, 1);
  colormap[3] = 255;
  ASSERT_TRUE(png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, colormap.data()));
}

TEST(PngIO, IndexedPicturesRoundTripShortPalettesTurnBlackOthersAreRefused) {
  TempDir dir;
  const Picture p = MakePicture(3, 2, {0, 1, 2, 253, 254, 255});
  SavePicture(dir / "p.png", p);
  Picture q;
  std::string error;
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "p.png", &q, &error)) << error;
  EXPECT_EQ(Ints(3, 2, 256), Ints(q.width, q.height, q.paletteCount));
  EXPECT_TRUE(p.pixels == q.pixels);
  EXPECT_EQ(0, std::memcmp(p.palette, q.palette, sizeof p.palette));

  WritePalettePng(dir / "short.png", 20);  // read over q: entries from 20 on turn black
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "short.png", &q, &error)) << error;
  EXPECT_EQ(Ints(20, 255, 0, 0, 1),
            Ints(q.paletteCount, q.palette[1][0], q.palette[2][0], q.palette[200][0], q.At(3, 1)));

  // Other files are refused with their reason.
  WritePalettePng(dir / "four.png", 16);
  WriteText(dir / "text.png", "hello, not a picture");
  // A PNG cut short is reported, not read past its end.
  SavePicture(dir / "whole.png", MakePicture(64, 64, {}));
  const std::string bytes = Slurp(dir / "whole.png");
  WriteText(dir / "cut.png", bytes.substr(0, bytes.size() / 2));
  const std::pair<const char*, const char*> cases[] = {
      {"four.png", "not an 8-bit indexed PNG (it is indexed, 4 bits"},
      {"text.png", "is not a PNG file"},
      {"cut.png", "not a valid PNG"},
  };
  for (const auto& c : cases) {
    Picture q;
    error.clear();
    EXPECT_FALSE(qvscene::ReadIndexedPng(dir / c.first, &q, &error)) << c.first;
    EXPECT_TRUE(Contains(error, c.second)) << c.first << ": " << error;
  }
}

TEST(JsonDocument, RemembersTheLineOfEveryValue) {
  const qvscene::JsonDocument doc(
      "f.json",
      "{\n \"a\": [1,\n {\"b\": 2.5},\n \"x/y\"],\n \"c~d\":\n true, \"e\": 1\n,\n\"f\": 22\n\n}");
  const std::pair<const char*, int> cases[] = {
      {"", 1},     {"/a", 2},    {"/a/0", 2}, {"/a/1", 3}, {"/a/1/b", 3},
      {"/a/2", 4}, {"/c~0d", 6}, {"/e", 6},   {"/f", 8},   {"/nothing", 0},
  };  // "/c~0d": the value's line, not the key's; "/e", "/f": numbers at the end of a line
  for (const auto& c : cases) EXPECT_EQ(c.second, doc.LineOf(c.first)) << c.first;
  // A missing key is blamed on the line of its nearest ancestor.
  try {
    doc.Fail("/a/1/nothing/deeper", "why");
    ADD_FAILURE();
  } catch (const qvscene::SceneError& e) {
    EXPECT_EQ(Ints(3), Ints(e.Line())) << e.what();
  }
}

// Nesting up to the limit is read, and lines are found at any depth; one
// level more is refused at the value that opens it.
TEST(JsonDocument, NestingIsLimited) {
  const int limit = qvscene::JsonDocument::kMaxDepth;
  for (const int depth : {limit, limit + 1}) {
    std::string text = "\n";
    std::string pointer;
    for (int i = 0; i < depth; ++i) text += i % 2 ? "[\n" : "{\"k\":";
    for (int i = 1; i < depth; ++i) pointer += (depth - i) % 2 ? "/k" : "/0";
    for (int i = depth - 1; i >= 0; --i) text += i % 2 ? "]" : "}";
    SCOPED_TRACE(depth);
    try {
      const qvscene::JsonDocument doc("f.json", text);
      EXPECT_EQ(limit, depth);
      EXPECT_EQ(1 + limit / 2, doc.LineOf(pointer));
    } catch (const qvscene::SceneError& e) {
      EXPECT_EQ(limit + 1, depth);
      EXPECT_EQ(Ints(2 + limit / 2), Ints(e.Line()));
      EXPECT_TRUE(Contains(e.what(), "nested more than")) << e.what();
    }
  }
}

class SceneReader : public ::testing::Test {
 protected:
  void SetUp() override { WriteTinyPictures(dir_); }
  std::unique_ptr<qvscene::Scene> Load(const std::string& text) {
    return qvscene::LoadSceneText(dir_ / "s.json", text);
  }
  TempDir dir_;
};

TEST_F(SceneReader, BuildsTheMembersLayersPathsAndPalettesItDescribes) {
  std::string text = AddMembers(
      TinySceneText(), R"({"name": "a", "picture": "spr", "frames": [{"rect": [0, 0, 2, 2]}],
     "start": 0, "end": 9},
    {"name": "b", "picture": "spr", "frames": [{"rect": [0, 0, 2, 2]}], "start": 5, "end": 20,
     "scroll": {"directions": ["right"], "stepH": 2}})");
  text = Replace(text, R"("to": 5,)", R"("to": 30, "step": 3,)");
  text = Replace(text, R"("members": ["m"])",
                 R"("id": 7, "members": ["a", {"member": "b", "fit": "trimStart"}, "m"])");
  text = Replace(text, R"("name": "m",)",
                 R"("name": "m", "start": 2, "path": {"points": [[0, 0], [30, 60]],
      "between": 2, "type": "reflect", "count": 12, "offset": 1},)");
  auto scene = Load(text);
  QvMLayer* layers = scene->Layers();
  EXPECT_EQ(Ints(8, 4, 1, 7),
            Ints(scene->Width(), scene->Height(), layers->Count(), layers->Index2ID(0)));
  EXPECT_EQ((std::vector<std::int32_t>{0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30}), scene->Times());
  EXPECT_EQ((std::vector<std::string>{"a", "b", "m"}), scene->MemberNames());
  EXPECT_EQ(-1, scene->MemberId("nobody"));
  QvMCast* cast = scene->Cast();
  const std::int16_t b = scene->MemberId("b"), m = scene->MemberId("m");
  // b is trimmed past a, and its scroll step, set after placing, holds; m's
  // range ends with the output's, its path has 4 anchors (the second at 10,
  // 20) passed once in 12 units, reflected, from anchor 1.
  double scrollStep = 0, pathStep = 0;
  std::int16_t anchors = 0, offset = 0;
  tbPoint p;
  char flag = 0;
  ASSERT_TRUE(cast->GetScrStepH(b, &scrollStep) && cast->GetAncNum(m, &anchors) &&
              cast->GetAnc(m, static_cast<std::int16_t>(1), &p, &flag) &&
              cast->GetAncStep(m, &pathStep) && cast->GetAncOffset(m, &offset));
  EXPECT_EQ(Ints(10, 20, 1, 2, 30, 4, 10, 20, 2, 1),
            Ints(cast->Start(b), cast->End(b), cast->IsScrollRight(b), cast->Start(m), cast->End(m),
                 anchors, p.x, p.y, flag, offset));
  EXPECT_DOUBLE_EQ(2.0, scrollStep);
  EXPECT_DOUBLE_EQ(4.0 / 12.0, pathStep);
  // Before m starts the base palette stands; at 3 (frame 1 of its cycle)
  // the area has turned one place: index 5 shows index 4's colour.
  tbColorTable t1, t3;
  scene->Palette(1, &t1);
  scene->Palette(3, &t3);
  const tbColorTable& base = scene->BasePalette();
  EXPECT_TRUE(t1 == base);
  EXPECT_TRUE(*base.CTTable(4) == *t3.CTTable(5) && *base.CTTable(7) == *t3.CTTable(4) &&
              *base.CTTable(3) == *t3.CTTable(3));
}

TEST_F(SceneReader, ErrorsNameTheFilePathAndLine) {
  std::string points;  // a path is checked for its size before its anchors are made
  for (int i = 0; i < 40; ++i) points += "[" + std::to_string(i) + ", 0], ";
  struct Case {
    std::string from, to, message, lineOf = "";  // lineOf: marker of the line, "" for `to`
  };
  const Case cases[] = {
      {"\"cycle\"", "\"spin\"", "/members/0/colors/0/kind: unknown value \"spin\""},
      {"[[4, 7]]", "[[7, 4]]", "/members/0/colors/0/area/0: range ends before it starts"},
      {"[[4, 7]]", "[[4, 256]]", "/members/0/colors/0/area/0/1: out of range: 256"},
      {"[0, 0, 8, 4]", "[0, 0, 9, 4]",
       "/members/0/frames/0/rect/2: out of range: 9 (allowed 1 to 8)"},
      {"[0, 0, 8, 4]", "[0, 0, 8]", "/members/0/frames/0/rect: expected 4 elements, found 3"},
      {"\"to\": 5", "\"to\": -5", "/output/to: the output ends before it starts"},
      {"\"name\": \"m\"", "\"name\": \"\"", "/members/0/name: must not be empty"},
      {"1.0}", "[1.0, 0]}", "/members/0/frames/0/zoom/1: out of range: 0"},
      {"1.0}", "null}", "/members/0/frames/0/zoom: expected a number, found null"},
      {"\"picture\": \"pal\"", "\"picture\": 3",
       "/members/0/picture: expected a string, found an integer"},
      {"\"width\": 8", "\"width\": 8.5",
       "/output/width: expected an integer, found a number with a fraction"},
      {"\"width\": 8", "\"width\": tru", "invalid JSON"},
      {"\"height\": 4", "\"height\": 4, \"height\": 5", "/output/height: duplicate key"},
      {"\"palette\": \"pal\"", "\"loop\": 0", "/output: missing key \"palette\"", "\"output\""},
      {"\"name\": \"m\",",
       "\"name\": \"m\", \"position\": [1, 1], \"path\": {\"points\": [[1, 1]]},",
       "/members/0/position: ", "\"position\""},
      {"\"cycle\",", "\"cycle\", \"to\": \"#ffffff\",",
       "/members/0/colors/0/to: unknown key \"to\""},
      {"[\"m\"]", "[7]", "/layers/0/members/0: "},
      {"\"output\"", "\"outpt\"", "/outpt: unknown key"},
      {"\"frames\"",
       "\"path\": {\"points\": [" + points + "[40, 0]], \"between\": 1000},\n \"frames\"",
       "/members/0/path/between: the path would have more than 32767 anchors", "\"between\""},
  };
  for (const Case& c : cases) {
    const std::string text = Replace(TinySceneText(), c.from, c.to);
    const int line = LineOfText(text, c.lineOf.empty() ? c.to : c.lineOf);
    try {
      Load(text);
      ADD_FAILURE() << "accepted: " << c.to;
    } catch (const qvscene::SceneError& e) {
      EXPECT_EQ(line, e.Line()) << e.what();
      EXPECT_TRUE(Contains(e.what(), dir_ / "s.json:" + std::to_string(line) + ": " + c.message))
          << e.what();
    }
  }
  // Comments are allowed in every object.
  EXPECT_NO_THROW(Load(Replace(TinySceneText(), "\"cycle\",", "\"cycle\", \"comment\": \"x\",")));
}

// Every allocation of the library that loading a scene makes is failed in
// turn: loading either reports BuildError or gives a scene that draws, and
// nothing crashes or leaks.
TEST_F(SceneReader, EachFailedAllocationIsReportedOrHarmless) {
  std::string text = Replace(TinySceneText(), "[[4, 7]]}",
                             "[[4, 7]]}, "
                             R"({"kind": "fade", "area": [255], "to": "#000000"},
        {"kind": "flash", "area": [10]}, {"kind": "switch", "area": [11], "tables": [{}, {}]})");
  text = Replace(text, R"(      "frames": [)",
                 R"(      "path": {"points": [[1, 1], [6, 2]], "between": 3},
      "scroll": {"directions": ["left", "up"]},
      "transparent": 0,
      "frames": [)");
  QvFailAllocation(0);
  Picture moment;
  ASSERT_TRUE(Load(text)->Render(3, &moment));
  QvFailAllocation(0);  // counts the allocations of one load
  Load(text);
  const int attempts = QvAllocationCount();
  ASSERT_GT(attempts, 10);
  int reported = 0;
  int frames = 0;
  for (int k = 1; k <= attempts; ++k) {
    QvFailAllocation(k);
    std::unique_ptr<qvscene::Scene> scene;
    try {
      scene = Load(text);
    } catch (const qvscene::BuildError& e) {
      ++reported;
      // FILE:LINE: /PATH: what could not be done.
      EXPECT_TRUE(Contains(e.what(), dir_ / "s.json:") &&
                  std::strstr(e.what(), ": /") < std::strstr(e.what(), ": the library could not"))
          << e.what();
      frames += Contains(e.what(),
                         "/frames/0: the library could not make the image of frame 0 "
                         "of member \"m\"");
    }
    QvFailAllocation(0);
    EXPECT_TRUE(!scene || scene->Render(3, &moment)) << "allocation " << k;
  }
  EXPECT_GT(reported, 0);
  EXPECT_GT(frames, 0);
}

// The memory a scene is estimated to need is what the library makes: the
// pictures, a moment twice, and for each frame its rectangle, image and
// mask in the animation and in the member's copy, and the member's area.
TEST_F(SceneReader, TheMemoryEstimateIsWhatTheLibraryMakes) {
  const char* frameSets[] = {
      "",
      R"(, {"rect": [1, 1, 3, 2], "zoom": [3.7, 0.4], "rotation": 33})",
      R"(, {"rect": [0, 0, 8, 4], "anchor": [-200, 90], "zoom": 2.5, "rotation": -170},
         {"rect": [2, 0, 5, 4], "anchor": [7, 3], "rotation": 90.5})",
      R"(, {"rect": [0, 0, 8, 4], "zoom": 16, "rotation": 720.25},
         {"rect": [7, 3, 1, 1], "anchor": [300, -300], "zoom": 9, "rotation": 1})",
  };
  for (const char* frames : frameSets) {
    SCOPED_TRACE(frames);
    auto scene = Load(
        Replace(TinySceneText(), "\"zoom\": 1.0}]", "\"zoom\": 1.0}" + std::string(frames) + "]"));
    QvAFrame* anim = scene->Cast()->AFrame(scene->MemberId("m"));
    ASSERT_TRUE(anim);
    std::uint64_t expected = 8 * 4 + 2 * 2 + 2 * 8 * 4;
    for (std::int16_t n = 0; n < anim->CountAFrame(); ++n) {
      std::int16_t x, y, w, h, iw, ih, ox, oy;
      ASSERT_TRUE(anim->GetAFrame(n, &x, &y, &w, &h, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr) &&
                  anim->GetAImage(n, nullptr, nullptr, &iw, &ih, &ox, &oy));
      expected += 2 * (static_cast<std::uint64_t>(w) * h + 2 * static_cast<std::uint64_t>(iw) * ih);
    }
    std::int16_t aw = 0, ah = 0;
    ASSERT_TRUE(anim->GetArea(&aw, &ah, nullptr, nullptr));
    expected += static_cast<std::uint64_t>(aw) * ah;
    EXPECT_EQ(expected, scene->Memory());
  }
}

}  // namespace
