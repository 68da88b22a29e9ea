// Allocation-failure sweeps of the toolbox services the library allocates
// through, and of the cast reference list.
#include <gtest/gtest.h>

#include "player/QvMCastList.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/BRegion.h"
#include "toolbox/CPtrList.h"
#include "toolbox/MDependable.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

QvMCast* FakeStore(int n) {
  static char stores[4];
  return reinterpret_cast<QvMCast*>(&stores[n]);
}

TEST(ToolboxSweep, Services) {
  for (int filled : {0, 3}) {
    Sweep("QvMCastList::Reg [" + std::to_string(filled) + " entries]", [filled](Trial& t) {
      QvMCastList list;
      for (int i = 0; i < filled; ++i) list.Reg(FakeStore(1), static_cast<std::int16_t>(i));
      const bool ok = t.Ok([&] { return list.Reg(FakeStore(2), 7); });
      EXPECT_EQ(casttest::ListSize(list), filled + (ok ? 1 : 0)) << "no change on failure";
      EXPECT_EQ(list.Reg(FakeStore(3), 8), 1);
      EXPECT_EQ(list.Del(FakeStore(3), 8), 1);
    });
  }
  Sweep("tbToolBox::NewGWorld", [](Trial& t) {
    tbGWorld* world = reinterpret_cast<tbGWorld*>(&t);
    tbRect bounds(0, 0, 17, 9);
    tbColorTable table(tbColorTable::kStandard);
    const bool ok =
        t.Ok([&] { return qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, &table); });
    ASSERT_EQ(world != nullptr, ok);
    EXPECT_TRUE(!ok || world->PortPixMap()->Width() == 17);
    qv::tb.DisposeGWorld(world);
  });
  Sweep("tbToolBox::NewString", [](Trial& t) {
    unsigned char** h = t([&] { return qv::tb.NewString(Text("a member name")); });
    EXPECT_EQ(h == nullptr, t.faulted);
    EXPECT_STREQ(h ? reinterpret_cast<const char*>(*h) : "", h ? "a member name" : "");
    QvFreeString(h);
  });
  Sweep("BRegion::New", [](Trial& t) {
    tbRegion region;
    EXPECT_EQ(t([&] { return region.New(); }) == nullptr, t.faulted);
    if (!t.faulted) region.RectRegion(0, 0, 4, 4), region.OffsetRegion(2, 2);
    EXPECT_TRUE(t.faulted || region.Contains(5, 5));
    region.Dispose();
  });
  Sweep("BRegion::CopyRegion", [](Trial& t) {
    tbRegion a, b;
    a.New();
    a.RectRegion(1, 1, 3, 9);
    t([&] { b.New(), b.CopyRegion(&a); });
    EXPECT_TRUE(t.faulted || b.Contains(2, 8));
    a.Dispose();
    b.Dispose();
  });
  Sweep("QvCanvas::New", [](Trial& t) {
    QvCanvas canvas;
    EXPECT_EQ(t([&] { return canvas.New(10, 6); }) == 0, t.faulted);
    if (!t.faulted) canvas.Clear(0, 0, 10, 6, 3, nullptr, 0);
  });
  Sweep("QvCanvasUtil::GetPICT", [](Trial& t) {
    QvCanvas canvas;
    EXPECT_NE(canvas.New(10, 6), 0);
    canvas.Clear(0, 0, 10, 6, 3, nullptr, 0);
    tbPicture pict;
    QvCanvasUtil util;
    const bool failed =
        !t([&] { return util.GetPICT(&canvas, 10, 6, &pict, 0, 0, 10, 6, nullptr); });
    EXPECT_EQ(failed, t.faulted);
    EXPECT_TRUE(t.faulted ? pict.Pic() == nullptr : pict.Pixel(9, 5) == 3);
  });
  Sweep("tbPicture::Set", [](Trial& t) {
    std::vector<unsigned char> pixels(6 * 4, 8);
    tbPicture pict;
    EXPECT_EQ(t([&] { return pict.Set(pixels.data(), 6, 6, 4, nullptr); }) == 0, t.faulted);
    EXPECT_EQ(pict.Pic() == nullptr, t.faulted);
  });
  Sweep("CPtrList::AddTail", [](Trial& t) {
    CPtrList list(2);
    int items[3];
    list.AddTail(&items[0]);
    list.AddTail(&items[1]);
    const bool failed = t.Failed(!t([&] { return list.AddTail(&items[2]); }));
    EXPECT_TRUE(list.GetCount() == (failed ? 2 : 3) && list.GetAt(1) == &items[1]);
  });
  Sweep("MDependable::AddDependent", [](Trial& t) {
    MDependable a, b;
    const bool failed = t.Failed(!t([&] { return a.AddDependent(&b); }));
    EXPECT_EQ(a.Dependents().GetCount(), failed ? 0 : 1);
  });
}

}  // namespace
}  // namespace reliability
