#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"

namespace {

// A one-frame animation: a 4 x 2 block of one colour with a full mask,
// anchored at its middle.
std::unique_ptr<QvAFrame> Block(unsigned char colour) {
  auto anim = std::make_unique<QvAFrame>();
  std::vector<unsigned char> image(8, colour), mask(8, 255);
  EXPECT_EQ(anim->Reg(0, 0, 0, 4, 2, 2, 1, 10), 0);
  EXPECT_EQ(anim->SetImage(0, image.data(), mask.data(), 4, 2, -2, -1), 1);
  return anim;
}

// What the layers hold (null: no layers; a: colour 11, b: colour 22, c: no
// animation, z: an id the cast store does not hold), b's range, the time drawn
// and the colour then at the middle of the picture (-1: nothing drawn).
// clang-format off
struct DrawCase { const char* layer0; const char* layer1; std::int32_t bFirst, bLast, time; int want; };
const DrawCase kCases[] = {
    {"a", "b", 0, 9, 5, 22},   {"b", "a", 0, 9, 5, 11},    // later layers over earlier ones
    {"ba", "", 0, 9, 5, 11},                               // in a layer, placement order
    {"ab", "a", 0, 9, 5, 11},                              // drawn again for each layer
    {"a", "b", 0, 9, 10, -1},  {"a", "b", 0, 9, -2, -1},   // outside every range
    {"a", "b", 20, 29, 5, 11}, {"a", "b", 20, 29, 25, 22},
    {nullptr, nullptr, 0, 9, 5, -1}, {"", "", 0, 9, 5, -1}, {"c", "cz", 0, 9, 5, -1},
};
// clang-format on

TEST(QvMLayerDrawTest, LayersAndPlacementOrderDecideWhatIsOnTop) {
  std::unique_ptr<QvAFrame> anims[2] = {Block(11), Block(22)};
  tbColorTable table;
  QvMCast cast;
  std::int16_t ids[26] = {};
  ids['z' - 'a'] = 999;
  for (int i = 0; i < 3; ++i) {
    ids[i] = cast.New(nullptr);
    cast.SetStartEnd(ids[i], 0, 9);
    if (i == 2) break;  // c has no animation
    ASSERT_EQ(cast.RegAFrame(ids[i], anims[i].get(), 0, nullptr, nullptr), ids[i]);
    // The members' own colour table gives them their off-screen worlds.
    ASSERT_EQ(cast.RegOrgCTable(ids[i], &table, nullptr, nullptr), ids[i]);
  }
  tbRect area;
  SetRect(&area, 0, 0, 16, 8);
  for (const DrawCase& c : kCases) {
    SCOPED_TRACE(::testing::Message() << (c.layer0 ? c.layer0 : "-") << " at " << c.time);
    QvMLayer layers;
    const char* held[2] = {c.layer0, c.layer1};
    for (std::int16_t l = 0; l < 2 && held[l]; ++l) {
      layers.New(-1, l);
      for (const char* m = held[l]; *m; ++m) layers.RegCast(l, &cast, ids[*m - 'a'], -1);
    }
    cast.SetStartEnd(ids[1], c.bFirst, c.bLast);
    std::vector<unsigned char> pixels(16 * 8);
    for (int i = 0; i < 16 * 8; ++i) pixels[i] = static_cast<unsigned char>(i);
    const std::vector<unsigned char> before = pixels;
    tbPixMap map(pixels.data(), 16, area);
    layers.DrawPicture(c.time, &map, &area);
    EXPECT_TRUE(c.want < 0 ? pixels == before : pixels[4 * 16 + 8] == c.want);
  }
}

}  // namespace
