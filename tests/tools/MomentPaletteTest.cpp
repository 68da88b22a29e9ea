// The colour table of a moment, now computed by the library
// (QvMLayer::GetCTable), against the computation the tools made themselves
// before: the base palette overlaid, layer by layer, by each animated
// member's CTable inside the palette areas its scene file names.

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "ToolTestUtil.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "scene/SceneReader.h"

namespace {

using namespace tooltest;
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
  ASSERT_EQ(0, RunCommand(std::string(QV_DEMO_ASSETS_TOOL) + " " + dir / "assets", dir).exitCode);
  const std::string file = std::string(QV_EXAMPLES_DIR) + "/demo.json";
  qvscene::LoadOptions options;
  options.pictureDir = dir / "assets";
  auto scene = qvscene::LoadScene(file, options);
  const Areas areas = AreasOf(file, *scene);
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
