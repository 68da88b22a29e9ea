// Allocation-failure sweeps of the toolbox services the library allocates
// through, and of the cast reference list.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "player/QvMCastList.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/BRegion.h"
#include "toolbox/CPtrList.h"
#include "toolbox/MDependable.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

QvMCast* FakeStore(int n) {
  static char stores[4];
  return reinterpret_cast<QvMCast*>(&stores[n]);
}

int Entries(QvMCastList& list) {
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  int n = 0;
  while (list.Get(static_cast<std::int16_t>(n), &c, &id)) ++n;
  return n;
}

TEST(ToolboxSweep, CastList) {
  for (int filled : {0, 3}) {
    Sweep("QvMCastList::Reg [" + std::to_string(filled) + " entries]", [filled](int k) {
      QvMCastList list;
      for (int i = 0; i < filled; ++i) list.Reg(FakeStore(1), static_cast<std::int16_t>(i));
      char r = 0;
      const int n = Inject(k, [&] { r = list.Reg(FakeStore(2), 7); });
      if (r == 0) {
        EXPECT_TRUE(Faulted(k, n));
        EXPECT_EQ(Entries(list), filled) << "no change on failure";
      } else {
        EXPECT_EQ(Entries(list), filled + 1);
      }
      EXPECT_EQ(list.Reg(FakeStore(3), 8), 1);
      EXPECT_EQ(list.Del(FakeStore(3), 8), 1);
      return n;
    });
  }
}

TEST(ToolboxSweep, GWorld) {
  Sweep("tbToolBox::NewGWorld", [](int k) {
    tbGWorld* world = reinterpret_cast<tbGWorld*>(&k);
    tbRect bounds(0, 0, 17, 9);
    tbColorTable table(static_cast<std::int16_t>(72));
    std::int16_t r = 0;
    const int n = Inject(k, [&] { r = tb.NewGWorld(&world, 8, &bounds, &table); });
    if (r == 0) {
      EXPECT_TRUE(Faulted(k, n));
      EXPECT_EQ(world, nullptr);
    } else {
      EXPECT_NE(world, nullptr);
      if (world) {
        EXPECT_EQ(world->PortPixMap()->Width(), 17);
      }
      tb.DisposeGWorld(world);
    }
    return n;
  });
}

TEST(ToolboxSweep, Strings) {
  Sweep("tbToolBox::NewString", [](int k) {
    Text text("a member name");
    unsigned char** h = nullptr;
    const int n = Inject(k, [&] { h = tb.NewString(text); });
    if (Faulted(k, n)) {
      EXPECT_EQ(h, nullptr);
    } else {
      EXPECT_NE(h, nullptr);
      if (h) {
        EXPECT_STREQ(reinterpret_cast<const char*>(*h), "a member name");
      }
    }
    QvFreeString(h);
    return n;
  });
}

TEST(ToolboxSweep, Regions) {
  Sweep("BRegion::New", [](int k) {
    tbRegion region;
    void* h = nullptr;
    const int n = Inject(k, [&] { h = region.New(); });
    EXPECT_EQ(h == nullptr, Faulted(k, n));
    if (h) {
      region.RectRegion(0, 0, 4, 4);
      region.OffsetRegion(2, 2);
      EXPECT_TRUE(region.Contains(5, 5));
    }
    region.Dispose();
    return n;
  });
  Sweep("BRegion::CopyRegion", [](int k) {
    tbRegion a, b;
    a.New();
    a.RectRegion(1, 1, 3, 9);
    const int n = Inject(k, [&] {
      b.New();
      b.CopyRegion(&a);
    });
    if (!Faulted(k, n)) {
      EXPECT_TRUE(b.Contains(2, 8));
    }
    a.Dispose();
    b.Dispose();
    return n;
  });
  Sweep("QvRgn::ColorToRgn", [](int k) {
    std::vector<unsigned char> image(12 * 8, 0);
    for (int y = 0; y < 8; ++y)
      for (int x = 0; x < 12; ++x)
        if ((x + y) % 3) image[static_cast<std::size_t>(y * 12 + x)] = 4;
    QvRgn rgn;
    char r = 0;
    const int n = Inject(k, [&] { r = rgn.ColorToRgn(image.data(), 12, 12, 8, 4, 1); });
    EXPECT_TRUE(r != 0 || Faulted(k, n));
    rgn.Dispose();
    return n;
  });
}

TEST(ToolboxSweep, Canvas) {
  Sweep("QvCanvas::New", [](int k) {
    QvCanvas canvas;
    std::int16_t r = 0;
    const int n = Inject(k, [&] { r = canvas.New(10, 6); });
    EXPECT_EQ(r == 0, Faulted(k, n));
    if (r) canvas.Clear(0, 0, 10, 6, 3, nullptr, 0);
    return n;
  });
  Sweep("QvCanvasUtil::GetPICT", [](int k) {
    QvCanvas canvas;
    EXPECT_NE(canvas.New(10, 6), 0);
    canvas.Clear(0, 0, 10, 6, 3, nullptr, 0);
    tbPicture pict;
    QvCanvasUtil util;
    const int n = Inject(k, [&] { util.GetPICT(&canvas, 10, 6, &pict, 0, 0, 10, 6, nullptr); });
    if (Faulted(k, n)) {
      EXPECT_EQ(pict.Pic(), nullptr);
    } else {
      EXPECT_EQ(pict.Pixel(9, 5), 3);
    }
    return n;
  });
  Sweep("tbPicture::Set", [](int k) {
    std::vector<unsigned char> pixels(6 * 4, 8);
    tbPicture pict;
    char r = 0;
    const int n = Inject(k, [&] { r = pict.Set(pixels.data(), 6, 6, 4, nullptr); });
    EXPECT_EQ(r == 0, Faulted(k, n));
    EXPECT_EQ(pict.Pic() == nullptr, r == 0);
    return n;
  });
}

TEST(ToolboxSweep, Framework) {
  Sweep("CPtrList::AddTail", [](int k) {
    CPtrList list(2);
    int items[3];
    list.AddTail(&items[0]);
    list.AddTail(&items[1]);
    bool r = false;
    const int n = Inject(k, [&] { r = list.AddTail(&items[2]); });
    EXPECT_EQ(list.GetCount(), r ? 3 : 2);
    EXPECT_TRUE(r || Faulted(k, n));
    return n;
  });
  Sweep("MDependable::AddDependent", [](int k) {
    MDependable a, b;
    bool r = false;
    const int n = Inject(k, [&] { r = a.AddDependent(&b); });
    EXPECT_TRUE(r || Faulted(k, n));
    EXPECT_EQ(a.Dependents().GetCount(), r ? 1 : 0);
    return n;
  });
}

}  // namespace
}  // namespace reliability
