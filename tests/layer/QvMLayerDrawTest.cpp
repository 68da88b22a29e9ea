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
  EXPECT_EQ(anim->Reg(0, 0, 0, 4, 2, 2, 1, 10), 0);
  std::vector<unsigned char> image(8, colour);
  std::vector<unsigned char> mask(8, 255);
  EXPECT_EQ(anim->SetImage(0, image.data(), mask.data(), 4, 2, -2, -1), 1);
  return anim;
}

class QvMLayerDrawTest : public ::testing::Test {
 protected:
  void SetUp() override {
    QvFailAllocation(0);
    a = cast.New(nullptr);
    b = cast.New(nullptr);
    ASSERT_EQ(cast.RegAFrame(a, animA.get(), 0, nullptr, nullptr), a);
    ASSERT_EQ(cast.RegAFrame(b, animB.get(), 0, nullptr, nullptr), b);
    // The members' own colour table gives them their off-screen worlds.
    ASSERT_EQ(cast.RegOrgCTable(a, &table, nullptr, nullptr), a);
    ASSERT_EQ(cast.RegOrgCTable(b, &table, nullptr, nullptr), b);
    cast.SetStartEnd(a, 0, 9);
    cast.SetStartEnd(b, 0, 9);
    SetRect(&area, 0, 0, 16, 8);
    layers.New(-1, 0);
    layers.New(-1, 1);
  }
  // The colour at the middle of the picture after drawing at time.
  unsigned char Draw(std::int32_t time) {
    std::vector<unsigned char> pixels(16 * 8, 0);
    tbRect bounds;
    SetRect(&bounds, 0, 0, 16, 8);
    tbPixMap map(pixels.data(), 16, bounds);
    layers.DrawPicture(time, &map, &area);
    return pixels[4 * 16 + 8];
  }

  std::unique_ptr<QvAFrame> animA = Block(11);
  std::unique_ptr<QvAFrame> animB = Block(22);
  tbColorTable table;
  QvMCast cast;
  QvMLayer layers;
  std::int16_t a = -1;
  std::int16_t b = -1;
  tbRect area;
};

TEST_F(QvMLayerDrawTest, LaterLayersDrawOverEarlierOnes) {
  layers.RegCast(0, &cast, a, -1);
  layers.RegCast(1, &cast, b, -1);
  EXPECT_EQ(Draw(5), 22);
  layers.Empty(0);
  layers.Empty(1);
  layers.RegCast(0, &cast, b, -1);
  layers.RegCast(1, &cast, a, -1);
  EXPECT_EQ(Draw(5), 11);
}

TEST_F(QvMLayerDrawTest, WithinLayerPlacementOrderDecides) {
  layers.RegCast(0, &cast, b, -1);
  layers.RegCast(0, &cast, a, -1);
  EXPECT_EQ(Draw(5), 11);
}

TEST_F(QvMLayerDrawTest, MemberOnTwoLayersIsDrawnForEach) {
  layers.RegCast(0, &cast, a, -1);
  layers.RegCast(0, &cast, b, -1);
  layers.RegCast(1, &cast, a, -1);
  EXPECT_EQ(Draw(5), 11);  // drawn again on layer 1, over b
}

TEST_F(QvMLayerDrawTest, TimeOutsideRangesDrawsNothing) {
  layers.RegCast(0, &cast, a, -1);
  layers.RegCast(1, &cast, b, -1);
  EXPECT_EQ(Draw(10), 0);
  EXPECT_EQ(Draw(-2), 0);
  cast.SetStartEnd(b, 20, 29);
  EXPECT_EQ(Draw(5), 11);
  EXPECT_EQ(Draw(25), 22);
}

}  // namespace
