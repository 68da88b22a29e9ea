#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRGBColor.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbToolBox.h"

namespace {

using Ints = std::vector<int>;
using U = std::vector<std::uint32_t>;

std::uint32_t fakeNow = 0;
std::uint32_t FakeTicks() { return fakeNow; }
std::uint32_t OtherTicks() { return 7; }

// Switches fault injection off again whatever a test does.
struct NoFailures {
  ~NoFailures() { QvFailAllocation(0); }
};

TEST(PlatformTest, TickSourcesInstallRestoreAndWrap) {
  EXPECT_EQ(QvSetTickSource(&FakeTicks), nullptr);  // the system clock was active
  fakeNow = 0xFFFFFFF0u;
  const std::uint32_t start = qv::GetTickCount();
  fakeNow += 0x20u;  // wraps to 0x10; the difference survives
  EXPECT_EQ((U{qv::GetTickCount(), qv::GetTickCount() - start}), (U{0x10u, 0x20u}));
  EXPECT_EQ(QvSetTickSource(&OtherTicks), &FakeTicks);
  EXPECT_EQ(qv::GetTickCount(), 7u);
  EXPECT_EQ(QvSetTickSource(nullptr), &OtherTicks);
  EXPECT_EQ(QvSetTickSource(nullptr), nullptr);
}

TEST(PlatformTest, AllocationsAreCountedAndOnlyTheKthFails) {
  NoFailures guard;
  QvFailAllocation(0);
  // A size of 0 is no attempt; blocks come zeroed.
  EXPECT_TRUE(!qv::GlobalAlloc(0, 0) && !QvNewArray<int>(0) && QvAllocationCount() == 0);
  auto* p = static_cast<unsigned char*>(qv::GlobalAlloc(0, 64));
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(std::count(p, p + 64, 0), 64);
  EXPECT_TRUE(!qv::GlobalFree(p) && !qv::GlobalFree(nullptr) && QvAllocationCount() == 1);
  QvFailAllocation(3);
  void* a = qv::GlobalAlloc(0, 4);
  int* b = QvNew<int>(5);
  void* c = qv::GlobalAlloc(0, 4);  // the third attempt
  int* d = QvNewArray<int>(3);
  ASSERT_NE(b, nullptr);
  EXPECT_TRUE(a && !c && d && *b == 5 && QvAllocationCount() == 4);
  qv::GlobalFree(a);
  delete b;
  delete[] d;
  QvFailAllocation(0);
  for (int i = 0; i < 5; ++i) delete QvNew<int>();
  EXPECT_EQ(QvAllocationCount(), 5);
}

TEST(PlatformTest, SetRectAndNewString) {
  tbRect r;
  qv::SetRect(nullptr, 1, 2, 3, 4);  // ignored
  EXPECT_EQ((qv::SetRect(&r, -1, 2, 30, 40), r), tbRect(-1, 2, 30, 40));
  unsigned char text[] = "Cast 1", empty[] = "";
  unsigned char** h = qv::tb.NewString(text);
  ASSERT_TRUE(h && *h && *h != text);
  EXPECT_STREQ(reinterpret_cast<char*>(*h), "Cast 1");
  QvFreeString(h);
  QvFreeString(nullptr);
  EXPECT_EQ(qv::tb.NewString(nullptr), nullptr);
  h = qv::tb.NewString(empty);
  ASSERT_TRUE(h && (*h)[0] == 0);
  QvFreeString(h);
}

TEST(ColorTableTest, ComponentsTablesAndSizes) {
  const unsigned short in[] = {65535, 32896, 65534, 256, 257, 0};
  const unsigned char out[] = {255, 128, 254, 0, 1, 0};
  for (int i = 0; i < 6; ++i) {
    tbRGBColor c;
    c.SetRed(in[i]), c.SetGreen(in[i]), c.SetBlue(in[i]);
    EXPECT_EQ(c, tbRGBColor(out[i], out[i], out[i])) << in[i];
  }
  tbRGBColor d(1, 128, 255);
  EXPECT_EQ(Ints({d.Red16(), d.Green16(), d.Blue16()}), Ints({257, 32896, 65535}));
  EXPECT_EQ(tbPoint(), tbPoint(0, 0));
  // Tables start black and full; sizes are clamped to 0 ... 255, indices wrap at 8 bits.
  tbColorTable a, b(tbColorTable::kStandard), t;  // entry by entry and the size decide equality
  EXPECT_EQ(Ints({a.CTSize(), b.CTSize()}), Ints({255, 255}));
  for (int i = 0; i < 256; ++i)
    ASSERT_EQ(*a.CTTable(static_cast<std::int16_t>(i)), tbRGBColor(0, 0, 0)) << i;
  const tbRGBColor c(1, 2, 3), red(255, 0, 0);
  EXPECT_EQ(a, b);
  b.SetCTTable(200, &c);
  EXPECT_NE(a, b);
  a.SetCTTable(200, &c);
  EXPECT_TRUE(a == b && (a.SetCTSize(100), !(a == b)));
  EXPECT_EQ(Ints({(t.SetCTSize(-3), t.CTSize()), (t.SetCTSize(300), t.CTSize()),
                  (t.SetCTSize(15), t.CTSize())}),
            Ints({0, 255, 15}));
  t.SetCTTable(256 + 3, &red);  // the low 8 bits: entry 3
  t.SetCTTable(3, nullptr);     // ignored
  EXPECT_EQ(*t.CTTable(3), red);
  EXPECT_EQ(t.CTTable(-1), t.CTTable(255));
}

TEST(ColorTableTest, PaletteAreaFlagsAndCount) {
  QvPal p, q;
  EXPECT_EQ(p.FlagNum(), 256);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(p.Flag(static_cast<unsigned char>(i)), 0) << i;
  p.SetFlag(12, 5);  // any non-zero flags the index, as 1
  p.SetRange(250, 255, 1);
  EXPECT_EQ(Ints({p.Flag(12), p.Flag(249), p.Flag(250), p.Flag(255)}), Ints({1, 0, 1, 1}));
  // The count is clamped to 0 ... 256; GetFlags copies, and resets from null.
  EXPECT_EQ(Ints({(p.SetFlagNum(-5), static_cast<int>(p.FlagNum())),
                  (p.SetFlagNum(1000), static_cast<int>(p.FlagNum()))}),
            Ints({0, 256}));
  p.SetFlagNum(16);
  q.GetFlags(&p);
  EXPECT_EQ(Ints({static_cast<int>(q.FlagNum()), q.Flag(12), q.Flag(255)}), Ints({16, 1, 1}));
  q.GetFlags(nullptr);
  EXPECT_EQ(Ints({static_cast<int>(q.FlagNum()), q.Flag(12)}), Ints({256, 0}));
  // The bit set follows every setter: each flag at its place.
  std::mt19937 rng(5);
  for (int round = 0; round < 60; ++round) {
    const auto i = static_cast<unsigned char>(rng()), j = static_cast<unsigned char>(rng());
    round % 20 == 19 ? q.GetFlags(round == 39 ? &p : nullptr)
    : round % 3      ? q.SetFlag(i, j % 2)
                     : q.SetRange(i, j, j % 2);
    unsigned char bits[32];
    q.FlagBits(bits);
    for (int k = 0; k < 256; ++k) ASSERT_EQ((bits[k >> 3] >> (k & 7)) & 1, q.Flag(k)) << round;
  }
}

}  // namespace
