// The scene reader: where its errors point, and what it builds in the cast
// and layer stores.

#include <gtest/gtest.h>

#include "ToolTestUtil.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "scene/JsonDocument.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbToolBox.h"

namespace {

using namespace tooltest;

TEST(JsonDocument, RemembersTheLineOfEveryValue) {
  const qvscene::JsonDocument doc("f.json",
                                  "{\n"
                                  "  \"a\": [1,\n"
                                  "        {\"b\": 2.5},\n"
                                  "        \"x/y\"],\n"
                                  "  \"c~d\":\n"
                                  "    true, \"e\": 1\n"
                                  ",\n\"f\": 22\n\n}");
  const std::pair<const char*, int> cases[] = {
      {"", 1},     {"/a", 2},    {"/a/0", 2}, {"/a/1", 3}, {"/a/1/b", 3},
      {"/a/2", 4}, {"/c~0d", 6}, {"/e", 6},   {"/f", 8},   {"/nothing", 0},
  };  // "/c~0d": the value's line, not the key's; "/e", "/f": numbers at the end of a line
  for (const auto& c : cases) EXPECT_EQ(c.second, doc.LineOf(c.first)) << c.first;
}

TEST(JsonDocument, InvalidTextAndDuplicateKeysAreRefusedWithTheirLine) {
  struct Case {
    const char* text;
    int line;
    const char* path;
    const char* message;
  };
  const Case cases[] = {
      {"{\n  \"a\": 1,\n  \"b\": tru\n}", 3, "", "f.json:3: invalid JSON"},
      {"{\"a\": {\"k\": 1,\n \"k\": 2}}", 2, "/a/k", "f.json:2: /a/k: duplicate key"},
      {"", 1, "", "f.json:1: invalid JSON"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    try {
      qvscene::JsonDocument doc("f.json", c.text);
      ADD_FAILURE() << "accepted";
    } catch (const qvscene::SceneError& e) {
      EXPECT_EQ(c.line, e.Line());
      EXPECT_EQ(c.path, e.Path());
      EXPECT_NE(std::string::npos, std::string(e.what()).find(c.message)) << e.what();
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
  EXPECT_EQ(8, scene->Width());
  EXPECT_EQ(4, scene->Height());
  EXPECT_EQ((std::vector<std::int32_t>{0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30}), scene->Times());
  EXPECT_EQ((std::vector<std::string>{"a", "b", "m"}), scene->MemberNames());
  EXPECT_EQ(-1, scene->MemberId("nobody"));
  EXPECT_EQ(1, scene->Layers()->Count());
  EXPECT_EQ(7, scene->Layers()->Index2ID(0));
  QvMCast* cast = scene->Cast();
  const std::int16_t b = scene->MemberId("b"), m = scene->MemberId("m");
  ASSERT_GE(m, 0);
  unsigned char** name = nullptr;
  ASSERT_EQ(1, cast->GetName(m, &name));
  EXPECT_STREQ("m", reinterpret_cast<const char*>(*name));
  QvFreeString(name);
  EXPECT_NE(nullptr, cast->AFrame(m));
  EXPECT_NE(nullptr, cast->ACycle(m));
  // b is trimmed past a; its scroll step is set after placing, so it holds.
  EXPECT_EQ(10, cast->Start(b));
  EXPECT_EQ(20, cast->End(b));
  double step = 0;
  ASSERT_EQ(1, cast->GetScrStepH(b, &step));
  EXPECT_DOUBLE_EQ(2.0, step);
  EXPECT_EQ(1, cast->IsScrollRight(b));
  // m's range defaults to the output's end; its path has 4 anchors.
  EXPECT_EQ(2, cast->Start(m));
  EXPECT_EQ(30, cast->End(m));
  std::int16_t n = 0, offset = 0;
  tbPoint p;
  char flag = 0;
  ASSERT_EQ(1, cast->GetAncNum(m, &n));
  EXPECT_EQ(4, n);
  ASSERT_EQ(1, cast->GetAnc(m, static_cast<std::int16_t>(1), &p, &flag));
  EXPECT_EQ(tbPoint(10, 20), p);
  EXPECT_EQ(2, flag);
  ASSERT_EQ(1, cast->GetAncStep(m, &step));
  EXPECT_DOUBLE_EQ(4.0 / 12.0, step);
  ASSERT_EQ(1, cast->GetAncOffset(m, &offset));
  EXPECT_EQ(1, offset);
  // Before m starts the base palette stands; at 3 (frame 1 of its cycle)
  // the area has turned one place: index 5 shows index 4's colour.
  tbColorTable t1, t3;
  scene->Palette(1, &t1);
  scene->Palette(3, &t3);
  const tbColorTable& base = scene->BasePalette();
  EXPECT_TRUE(t1 == base);
  EXPECT_EQ(*base.CTTable(4), *t3.CTTable(5));
  EXPECT_EQ(*base.CTTable(7), *t3.CTTable(4));
  EXPECT_EQ(*base.CTTable(3), *t3.CTTable(3));
}

TEST_F(SceneReader, ErrorsNameTheFilePathAndLine) {
  std::string points;  // a path is checked for its size before its anchors are made
  for (int i = 0; i < 40; ++i)
    points += std::string(i ? ", " : "") + "[" + std::to_string(i) + ", 0]";
  struct Case {
    std::string from, to, path, reason, lineOf = "";  // lineOf: marker of the line, "" for `to`
  };
  const Case cases[] = {
      {R"("kind": "cycle",)", R"("kind": "spin",)", "/members/0/colors/0/kind",
       "unknown value \"spin\""},
      {R"("area": [[4, 7]])", R"("area": [[7, 4]])", "/members/0/colors/0/area/0",
       "range ends before it starts"},
      {R"("area": [[4, 7]])", R"("area": [[4, 256]])", "/members/0/colors/0/area/0/1",
       "out of range: 256"},
      {R"("rect": [0, 0, 8, 4],)", R"("rect": [0, 0, 9, 4],)", "/members/0/frames/0/rect/2",
       "out of range: 9 (allowed 1 to 8)"},
      {R"("rect": [0, 0, 8, 4],)", R"("rect": [0, 0, 8],)", "/members/0/frames/0/rect",
       "expected 4 elements, found 3"},
      {R"("to": 5,)", R"("to": -5,)", "/output/to", "the output ends before it starts"},
      {R"("name": "m",)", R"("name": "",)", "/members/0/name", "must not be empty"},
      {R"("zoom": 1.0)", R"("zoom": [1.0, 0])", "/members/0/frames/0/zoom/1", "out of range: 0"},
      {R"("zoom": 1.0)", R"("zoom": null)", "/members/0/frames/0/zoom",
       "expected a number, found null"},
      {R"("picture": "pal",)", R"("picture": 3,)", "/members/0/picture",
       "expected a string, found an integer"},
      {R"("width": 8,)", R"("width": 8.5,)", "/output/width",
       "expected an integer, found a number with a fraction"},
      // A missing key is reported at the object that lacks it.
      {"\"palette\": \"pal\"", "\"loop\": 0", "/output", "missing key \"palette\"", "\"output\""},
      {R"("name": "m",)", R"("name": "m", "position": [1, 1], "path": {"points": [[1, 1]]},)",
       "/members/0/position", "", "\"position\""},
      {R"("kind": "cycle",)", R"("kind": "cycle", "to": "#ffffff",)", "/members/0/colors/0/to",
       "unknown key \"to\""},
      {R"("members": ["m"])", R"("members": [7])", "/layers/0/members/0", ""},
      {"\"output\": {", "\"outpt\": {", "/outpt", "unknown key"},
      {R"(      "frames": [)",
       "      \"path\": {\"points\": [" + points + "], \"between\": 1000},\n      \"frames\": [",
       "/members/0/path/between", "more than 32767 anchors", "\"between\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.to);
    const std::string text = Replace(TinySceneText(), c.from, c.to);
    try {
      Load(text);
      ADD_FAILURE() << "accepted";
    } catch (const qvscene::SceneError& e) {
      EXPECT_EQ(c.path, e.Path());
      EXPECT_EQ(LineOfText(text, c.lineOf.empty() ? c.to : c.lineOf), e.Line());
      EXPECT_NE(std::string::npos, e.Reason().find(c.reason)) << e.what();
      EXPECT_EQ(dir_ / "s.json", e.File());
    }
  }
  // Comments are allowed in every object.
  EXPECT_NO_THROW(
      Load(Replace(TinySceneText(), R"("kind": "cycle",)", R"("kind": "cycle", "comment": "x",)")));
}

// Every allocation of the library that loading a scene makes is failed in
// turn: loading either reports BuildError or gives a scene that draws, and
// nothing crashes or leaks.
TEST_F(SceneReader, EachFailedAllocationIsReportedOrHarmless) {
  std::string text = AddColors(TinySceneText(), R"({"kind": "fade", "area": [255], "to": "#000000"},
        {"kind": "flash", "area": [10]}, {"kind": "switch", "area": [11], "tables": [{}, {}]})");
  text = Replace(text, R"(      "frames": [)",
                 R"(      "path": {"points": [[1, 1], [6, 2]], "between": 3},
      "scroll": {"directions": ["left", "up"]},
      "transparent": 0,
      "frames": [)");
  QvFailAllocation(0);
  qvscene::Picture reference;
  ASSERT_TRUE(Load(text)->Render(3, &reference));
  QvFailAllocation(0);
  Load(text);
  const int attempts = QvAllocationCount();
  ASSERT_GT(attempts, 10);
  int reported = 0;
  for (int k = 1; k <= attempts; ++k) {
    QvFailAllocation(k);
    std::unique_ptr<qvscene::Scene> scene;
    try {
      scene = Load(text);
    } catch (const qvscene::BuildError& e) {
      ++reported;
      EXPECT_NE(std::string::npos, std::string(e.what()).find("the library could not")) << e.what();
    }
    QvFailAllocation(0);
    qvscene::Picture moment;
    EXPECT_TRUE(!scene || scene->Render(3, &moment)) << "allocation " << k;
  }
  EXPECT_GT(reported, 0);
}

}  // namespace
