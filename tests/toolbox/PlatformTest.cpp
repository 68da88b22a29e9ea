#include <gtest/gtest.h>

#include <cstring>

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

TEST(PlatformTest, TickSourceInstallsAndRestores) {
  EXPECT_EQ(QvSetTickSource(&FakeTicks), nullptr);  // system clock was active
  fakeNow = 1234;
  EXPECT_EQ(GetTickCount(), 1234u);
  EXPECT_EQ(QvSetTickSource(&OtherTicks), &FakeTicks);
  EXPECT_EQ(GetTickCount(), 7u);
  EXPECT_EQ(QvSetTickSource(nullptr), &OtherTicks);
  EXPECT_EQ(QvSetTickSource(nullptr), nullptr);
}

TEST(PlatformTest, TickDifferencesSurviveTheWrap) {
  QvSetTickSource(&FakeTicks);
  fakeNow = 0xFFFFFFF0u;
  const std::uint32_t start = GetTickCount();
  fakeNow += 0x20u;  // wraps to 0x10
  EXPECT_EQ(GetTickCount(), 0x10u);
  EXPECT_EQ(static_cast<std::uint32_t>(GetTickCount() - start), 0x20u);
  QvSetTickSource(nullptr);
}

TEST(PlatformTest, GlobalAllocGivesZeroedBlocksAndNullForNothing) {
  NoFailures guard;
  QvFailAllocation(0);
  EXPECT_EQ(GlobalAlloc(0, 0), nullptr);
  EXPECT_EQ(QvAllocationCount(), 0);  // a size of 0 is no attempt
  auto* p = static_cast<unsigned char*>(GlobalAlloc(0, 64));
  ASSERT_NE(p, nullptr);
  for (int i = 0; i < 64; ++i) EXPECT_EQ(p[i], 0);
  EXPECT_EQ(GlobalFree(p), nullptr);
  EXPECT_EQ(GlobalFree(nullptr), nullptr);
  EXPECT_EQ(QvAllocationCount(), 1);
}

TEST(PlatformTest, OnlyTheKthAttemptFails) {
  NoFailures guard;
  QvFailAllocation(3);
  EXPECT_EQ(QvAllocationCount(), 0);
  void* a = GlobalAlloc(0, 4);
  int* b = QvNew<int>(5);
  void* c = GlobalAlloc(0, 4);  // third attempt
  int* d = QvNewArray<int>(3);
  EXPECT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(*b, 5);
  EXPECT_EQ(c, nullptr);
  EXPECT_NE(d, nullptr);
  EXPECT_EQ(QvAllocationCount(), 4);
  EXPECT_EQ(QvNewArray<int>(0), nullptr);  // not an attempt
  EXPECT_EQ(QvAllocationCount(), 4);
  GlobalFree(a);
  delete b;
  delete[] d;
  QvFailAllocation(0);
  EXPECT_EQ(QvAllocationCount(), 0);
  for (int i = 0; i < 5; ++i) {
    int* e = QvNew<int>();
    EXPECT_NE(e, nullptr);
    delete e;
  }
  EXPECT_EQ(QvAllocationCount(), 5);
}

TEST(PlatformTest, SetRectFillsAllFour) {
  tbRect r;
  SetRect(&r, -1, 2, 30, 40);
  EXPECT_EQ(r, tbRect(-1, 2, 30, 40));
  SetRect(nullptr, 1, 2, 3, 4);  // ignored
}

TEST(PlatformTest, NewStringCopiesAndFailsCleanly) {
  NoFailures guard;
  unsigned char text[] = "Cast 1";
  unsigned char** h = tb.NewString(text);
  ASSERT_NE(h, nullptr);
  ASSERT_NE(*h, nullptr);
  EXPECT_NE(*h, text);
  EXPECT_STREQ(reinterpret_cast<char*>(*h), "Cast 1");
  QvFreeString(h);
  QvFreeString(nullptr);
  EXPECT_EQ(tb.NewString(nullptr), nullptr);

  unsigned char empty[] = "";
  h = tb.NewString(empty);
  ASSERT_NE(h, nullptr);
  EXPECT_EQ((*h)[0], 0);
  QvFreeString(h);

  for (int k = 1; k <= 2; ++k) {  // handle, then block
    QvFailAllocation(k);
    EXPECT_EQ(tb.NewString(text), nullptr);
    EXPECT_EQ(QvAllocationCount(), k);
  }
}

}  // namespace
