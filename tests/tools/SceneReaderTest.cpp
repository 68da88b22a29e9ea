// The scene reader: where its errors point, and what it builds in the cast
// and layer stores.

#include <gtest/gtest.h>

#include "TinyScene.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "scene/JsonDocument.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbToolBox.h"

namespace {

using namespace tooltest;

class SceneReader : public ::testing::Test {
 protected:
  void SetUp() override { WriteTinyPictures(dir_); }

  std::unique_ptr<qvscene::Scene> Load(const std::string& text) {
    return qvscene::LoadSceneText(dir_ / "s.json", text);
  }
  // The error of loading text; fails the test when there is none.
  qvscene::SceneError ErrorOf(const std::string& text) {
    try {
      Load(text);
    } catch (const qvscene::SceneError& e) {
      return e;
    }
    ADD_FAILURE() << "no error";
    return qvscene::SceneError("", 0, "", "");
  }

  TempDir dir_;
};

TEST(JsonDocument, RemembersTheLineOfEveryValue) {
  const std::string text =
      "{\n"
      "  \"a\": [1,\n"
      "        {\"b\": 2.5},\n"
      "        \"x/y\"],\n"
      "  \"c~d\":\n"
      "    true\n"
      "}\n";
  qvscene::JsonDocument doc("f.json", text);
  EXPECT_EQ(1, doc.LineOf(""));
  EXPECT_EQ(2, doc.LineOf("/a"));
  EXPECT_EQ(2, doc.LineOf("/a/0"));
  EXPECT_EQ(3, doc.LineOf("/a/1"));
  EXPECT_EQ(3, doc.LineOf("/a/1/b"));
  EXPECT_EQ(4, doc.LineOf("/a/2"));
  EXPECT_EQ(6, doc.LineOf("/c~0d")) << "the value's line, not the key's";
  EXPECT_EQ(0, doc.LineOf("/nothing"));
}

TEST(JsonDocument, NumberAtTheEndOfALineKeepsItsLine) {
  qvscene::JsonDocument doc("f.json", "{\"a\": 1\n,\n\"b\": 22\n\n}");
  EXPECT_EQ(1, doc.LineOf("/a"));
  EXPECT_EQ(3, doc.LineOf("/b"));
}

TEST(JsonDocument, InvalidTextAndDuplicateKeysAreRefusedWithTheirLine) {
  try {
    qvscene::JsonDocument doc("f.json", "{\n  \"a\": 1,\n  \"b\": tru\n}");
    FAIL();
  } catch (const qvscene::SceneError& e) {
    EXPECT_EQ(3, e.Line());
    EXPECT_NE(std::string::npos, std::string(e.what()).find("f.json:3: invalid JSON")) << e.what();
  }
  try {
    qvscene::JsonDocument doc("f.json", "{\"a\": {\"k\": 1,\n \"k\": 2}}");
    FAIL();
  } catch (const qvscene::SceneError& e) {
    EXPECT_EQ(2, e.Line());
    EXPECT_EQ("/a/k", e.Path());
    EXPECT_EQ("duplicate key", e.Reason());
  }
  try {
    qvscene::JsonDocument doc("f.json", "");
    FAIL();
  } catch (const qvscene::SceneError& e) {
    EXPECT_NE(std::string::npos, std::string(e.what()).find("invalid JSON")) << e.what();
  }
}

TEST_F(SceneReader, BuildsOneMemberPerEntryWithTheOutputRangeByDefault) {
  auto scene = Load(TinySceneText());
  EXPECT_EQ(8, scene->Width());
  EXPECT_EQ(4, scene->Height());
  EXPECT_EQ(0, scene->From());
  EXPECT_EQ(5, scene->To());
  EXPECT_EQ(1, scene->Step());
  EXPECT_EQ((std::vector<std::int32_t>{0, 1, 2, 3, 4, 5}), scene->Times());
  EXPECT_EQ(std::vector<std::string>{"m"}, scene->MemberNames());
  const std::int16_t id = scene->MemberId("m");
  ASSERT_GE(id, 0);
  EXPECT_EQ(-1, scene->MemberId("nobody"));
  QvMCast* cast = scene->Cast();
  EXPECT_EQ(0, cast->Start(id));
  EXPECT_EQ(5, cast->End(id));
  EXPECT_NE(nullptr, cast->AFrame(id));
  EXPECT_NE(nullptr, cast->ACycle(id));
  EXPECT_EQ(1, scene->Layers()->Count());
  unsigned char** name = nullptr;
  ASSERT_EQ(1, cast->GetName(id, &name));
  ASSERT_NE(nullptr, name);
  EXPECT_STREQ("m", reinterpret_cast<const char*>(*name));
  QvFreeString(name);
}

TEST_F(SceneReader, FittingOnALayerTrimsTheLaterMember) {
  std::string text = Replace(TinySceneText(), R"("to": 5,)", R"("to": 30,)");
  text = Replace(text, R"(      "name": "m",)", R"(      "name": "a",
      "picture": "spr",
      "frames": [{"rect": [0, 0, 2, 2]}],
      "start": 0,
      "end": 9
    },
    {
      "name": "b",
      "picture": "spr",
      "frames": [{"rect": [0, 0, 2, 2]}],
      "start": 5,
      "end": 20,
      "scroll": {"directions": ["right"], "stepH": 2}
    },
    {
      "name": "m",)");
  text = Replace(text, R"("members": ["m"])",
                 R"("id": 7, "members": ["a", {"member": "b", "fit": "trimStart"}, "m"])");
  auto scene = Load(text);
  QvMCast* cast = scene->Cast();
  const std::int16_t b = scene->MemberId("b");
  EXPECT_EQ(10, cast->Start(b));
  EXPECT_EQ(20, cast->End(b));
  // The scroll step is set after placing, so it is the scene's value.
  double step = 0;
  ASSERT_EQ(1, cast->GetScrStepH(b, &step));
  EXPECT_DOUBLE_EQ(2.0, step);
  EXPECT_EQ(1, cast->IsScrollRight(b));
  EXPECT_EQ(7, scene->Layers()->Index2ID(0));
}

TEST_F(SceneReader, PathsTakeTheirPointsTypeAndCount) {
  std::string text = Replace(
      TinySceneText(), R"(      "frames": [)",
      R"(      "path": {"points": [[0, 0], [30, 60]], "between": 2, "type": "reflect", "count": 12, "offset": 1},
      "frames": [)");
  auto scene = Load(text);
  QvMCast* cast = scene->Cast();
  const std::int16_t id = scene->MemberId("m");
  std::int16_t n = 0;
  ASSERT_EQ(1, cast->GetAncNum(id, &n));
  EXPECT_EQ(4, n);
  tbPoint p;
  char flag = 0;
  ASSERT_EQ(1, cast->GetAnc(id, static_cast<std::int16_t>(1), &p, &flag));
  EXPECT_EQ(tbPoint(10, 20), p);
  EXPECT_EQ(2, flag);
  double step = 0;
  ASSERT_EQ(1, cast->GetAncStep(id, &step));
  EXPECT_DOUBLE_EQ(4.0 / 12.0, step);
  std::int16_t offset = 0;
  ASSERT_EQ(1, cast->GetAncOffset(id, &offset));
  EXPECT_EQ(1, offset);
}

TEST_F(SceneReader, PaletteOverlaysOnlyMembersOnTheTimeline) {
  // The cycling member lives from 2 to 5 only: before 2 the base palette
  // stands.
  std::string text = Replace(TinySceneText(), R"(      "name": "m",)", R"(      "name": "m",
      "start": 2,)");
  auto scene = Load(text);
  tbColorTable t0;
  tbColorTable t3;
  scene->Palette(0, &t0);
  scene->Palette(3, &t3);
  EXPECT_TRUE(t0 == scene->BasePalette());
  // One place turned at 3 (frame 1 of the cycle): index 5 shows index 4's colour.
  EXPECT_EQ(*scene->BasePalette().CTTable(4), *t3.CTTable(5));
  EXPECT_EQ(*scene->BasePalette().CTTable(7), *t3.CTTable(4));
  EXPECT_EQ(*scene->BasePalette().CTTable(3), *t3.CTTable(3));
}

TEST_F(SceneReader, ErrorsNameThePathAndLine) {
  const std::string base = TinySceneText();
  struct Case {
    std::string from, to, path, reason;
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
  };
  for (const Case& c : cases) {
    const std::string text = Replace(base, c.from, c.to);
    ASSERT_NE(base, text) << c.from;
    qvscene::SceneError e = ErrorOf(text);
    EXPECT_EQ(c.path, e.Path()) << c.to;
    EXPECT_EQ(LineOfText(text, c.to), e.Line()) << c.to;
    EXPECT_NE(std::string::npos, e.Reason().find(c.reason)) << e.what();
    EXPECT_EQ(dir_ / "s.json", e.File());
  }
}

TEST_F(SceneReader, StructuralErrors) {
  const std::string base = TinySceneText();
  // A missing required key is reported at the object that lacks it.
  qvscene::SceneError e = ErrorOf(Replace(base, "\"palette\": \"pal\"", "\"loop\": 0"));
  EXPECT_EQ("/output", e.Path());
  EXPECT_EQ("missing key \"palette\"", e.Reason());
  EXPECT_EQ(2, e.Line());
  e = ErrorOf(Replace(base, R"(      "name": "m",)", R"(      "name": "m",
      "position": [1, 1],
      "path": {"points": [[1, 1]]},)"));
  EXPECT_EQ("/members/0/position", e.Path());
  e = ErrorOf(Replace(base, R"("kind": "cycle",)", R"("kind": "cycle", "to": "#ffffff",)"));
  EXPECT_EQ("/members/0/colors/0/to", e.Path());
  EXPECT_NE(std::string::npos, e.Reason().find("unknown key \"to\"")) << e.Reason();
  e = ErrorOf(Replace(base, R"("members": ["m"])", R"("members": [7])"));
  EXPECT_EQ("/layers/0/members/0", e.Path());
  e = ErrorOf(Replace(base, "\"output\": {", "\"outpt\": {"));
  EXPECT_EQ("/outpt", e.Path());
  // A path is checked for its size before its anchors are made.
  std::string points;
  for (int i = 0; i < 40; ++i)
    points += std::string(i ? ", " : "") + "[" + std::to_string(i) + ", 0]";
  e = ErrorOf(Replace(
      base, R"(      "frames": [)",
      "      \"path\": {\"points\": [" + points + "], \"between\": 1000},\n      \"frames\": ["));
  EXPECT_EQ("/members/0/path/between", e.Path());
  EXPECT_NE(std::string::npos, e.Reason().find("more than 32767 anchors")) << e.Reason();
  // Comments are allowed in every object.
  EXPECT_NO_THROW(
      Load(Replace(base, R"("kind": "cycle",)", R"("kind": "cycle", "comment": "x",)")));
}

}  // namespace

namespace {

using namespace tooltest;

// Every allocation of the library that loading a scene makes is failed in
// turn: loading either reports BuildError or gives a scene that draws, and
// nothing crashes or leaks.
TEST(SceneReaderAllocation, EachFailedAllocationIsReportedOrHarmless) {
  TempDir dir;
  WriteTinyPictures(dir);
  std::string text = Replace(TinySceneText(), R"(          "kind": "cycle",
          "area": [[4, 7]]
        })",
                             R"(          "kind": "cycle",
          "area": [[4, 7]]
        },
        {"kind": "fade", "area": [255], "to": "#000000"},
        {"kind": "flash", "area": [10]},
        {"kind": "switch", "area": [11], "tables": [{}, {}]})");
  text = Replace(text, R"(      "frames": [)",
                 R"(      "path": {"points": [[1, 1], [6, 2]], "between": 3},
      "scroll": {"directions": ["left", "up"]},
      "transparent": 0,
      "frames": [)");
  const std::string path = dir / "s.json";
  QvFailAllocation(0);
  qvscene::Picture reference;
  qvscene::LoadSceneText(path, text)->Render(3, &reference);
  QvFailAllocation(0);
  qvscene::LoadSceneText(path, text);
  const int attempts = QvAllocationCount();
  ASSERT_GT(attempts, 10);
  int reported = 0;
  for (int k = 1; k <= attempts; ++k) {
    QvFailAllocation(k);
    std::unique_ptr<qvscene::Scene> scene;
    try {
      scene = qvscene::LoadSceneText(path, text);
    } catch (const qvscene::BuildError& e) {
      ++reported;
      EXPECT_NE(std::string::npos, std::string(e.what()).find("the library could not")) << e.what();
    }
    QvFailAllocation(0);
    if (scene) {
      qvscene::Picture moment;
      EXPECT_TRUE(scene->Render(3, &moment)) << "allocation " << k;
    }
  }
  EXPECT_GT(reported, 0);
}

}  // namespace
