#include <gtest/gtest.h>

#include <algorithm>

#include "toolbox/QvPlatform.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbToolBox.h"

namespace {

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
  const std::uint32_t start = GetTickCount();
  fakeNow += 0x20u;  // wraps to 0x10; the difference survives
  EXPECT_EQ(GetTickCount(), 0x10u);
  EXPECT_EQ(static_cast<std::uint32_t>(GetTickCount() - start), 0x20u);
  EXPECT_EQ(QvSetTickSource(&OtherTicks), &FakeTicks);
  EXPECT_EQ(GetTickCount(), 7u);
  EXPECT_EQ(QvSetTickSource(nullptr), &OtherTicks);
  EXPECT_EQ(QvSetTickSource(nullptr), nullptr);
}

TEST(PlatformTest, AllocationsAreCountedAndOnlyTheKthFails) {
  NoFailures guard;
  QvFailAllocation(0);
  EXPECT_EQ(GlobalAlloc(0, 0), nullptr);  // a size of 0 is no attempt
  EXPECT_EQ(QvNewArray<int>(0), nullptr);
  EXPECT_EQ(QvAllocationCount(), 0);
  auto* p = static_cast<unsigned char*>(GlobalAlloc(0, 64));
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(std::count(p, p + 64, 0), 64);  // zeroed
  EXPECT_EQ(GlobalFree(p), nullptr);
  EXPECT_EQ(GlobalFree(nullptr), nullptr);
  EXPECT_EQ(QvAllocationCount(), 1);

  QvFailAllocation(3);
  void* a = GlobalAlloc(0, 4);
  int* b = QvNew<int>(5);
  void* c = GlobalAlloc(0, 4);  // the third attempt
  int* d = QvNewArray<int>(3);
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(*b, 5);
  EXPECT_TRUE(a && !c && d);
  EXPECT_EQ(QvAllocationCount(), 4);
  GlobalFree(a);
  delete b;
  delete[] d;
  QvFailAllocation(0);
  for (int i = 0; i < 5; ++i) delete QvNew<int>();
  EXPECT_EQ(QvAllocationCount(), 5);
}

TEST(PlatformTest, SetRectAndNewString) {
  NoFailures guard;
  tbRect r;
  SetRect(&r, -1, 2, 30, 40);
  EXPECT_EQ(r, tbRect(-1, 2, 30, 40));
  SetRect(nullptr, 1, 2, 3, 4);  // ignored

  unsigned char text[] = "Cast 1", empty[] = "";
  unsigned char** h = tb.NewString(text);
  ASSERT_TRUE(h && *h);
  EXPECT_NE(*h, text);
  EXPECT_STREQ(reinterpret_cast<char*>(*h), "Cast 1");
  QvFreeString(h);
  QvFreeString(nullptr);
  EXPECT_EQ(tb.NewString(nullptr), nullptr);
  h = tb.NewString(empty);
  ASSERT_NE(h, nullptr);
  EXPECT_EQ((*h)[0], 0);
  QvFreeString(h);
  for (int k = 1; k <= 2; ++k) {  // the handle, then the block
    QvFailAllocation(k);
    EXPECT_EQ(tb.NewString(text), nullptr);
    EXPECT_EQ(QvAllocationCount(), k);
  }
}

}  // namespace
