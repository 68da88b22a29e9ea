#include "player/QvMCastList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "toolbox/QvPlatform.h"

namespace {

using Ids = std::vector<int>;

// The list never looks inside a cast store, so any distinct addresses serve.
QvMCast* Store(int n) {
  static char stores[4];
  return reinterpret_cast<QvMCast*>(&stores[n]);
}

struct QvMCastListTest : ::testing::Test, QvMCastList {
  ~QvMCastListTest() override { QvFailAllocation(0); }
  // The ids by index (Get), or of a GetFirst/GetNext walk.
  Ids ById() {
    Ids out;
    for (std::int16_t i = 0; Get(i, &cast, &id); ++i) out.push_back(id);
    return out;
  }
  Ids Walk() {
    Ids out;
    for (char ok = GetFirst(&cast, &id); ok; ok = GetNext(&cast, &id)) out.push_back(id);
    return out;
  }
  QvMCast* cast = Store(3);
  std::int16_t id = 99;
};

TEST_F(QvMCastListTest, RegKeepsOrderAndRejectsDuplicates) {
  EXPECT_EQ((Ids{Get(0, &cast, &id), Get(-1, &cast, &id), GetFirst(&cast, &id), GetNext(&cast, &id),
                 Del(Store(0), 1)}),
            (Ids{0, 0, 0, 0, 0}));
  EXPECT_EQ(cast, Store(3));
  EXPECT_EQ(id, 99);
  EXPECT_EQ(head, nullptr);
  EXPECT_EQ(found, nullptr);
  DelAll();
  EXPECT_EQ(ById(), Ids{});
  EXPECT_EQ((Ids{Reg(Store(0), 5), Reg(Store(0), 5), Reg(Store(1), 5), Reg(Store(0), -7),
                 Reg(nullptr, 0)}),
            (Ids{1, 1, 1, 1, 1}));
  EXPECT_EQ(ById(), (Ids{5, 5, -7, 0}));  // the same id in another store is distinct
  ASSERT_EQ(Get(1, &cast, &id), 1);
  EXPECT_EQ(cast, Store(1));
  EXPECT_EQ((Ids{Get(4, &cast, &id), Get(INT16_MIN, &cast, &id)}), (Ids{0, 0}));
  QvMCastID* hit = localSearch(Store(1), 5);
  ASSERT_NE(hit, nullptr);
  EXPECT_EQ(hit->cast, Store(1));
  EXPECT_EQ(found, hit);
  EXPECT_EQ(localSearch(Store(2), 5), nullptr);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ((Ids{Get(0, nullptr, nullptr), GetFirst(nullptr, nullptr)}), (Ids{1, 1}));
}

TEST_F(QvMCastListTest, DelRelinksAndWalksSurviveDeletion) {
  for (std::int16_t i : {1, 2, 3}) Reg(Store(0), i);  // P, Q, R
  EXPECT_EQ(Del(Store(1), 2), 0);                     // other store
  EXPECT_EQ(Del(Store(0), 2), 1);
  EXPECT_EQ(found, head);
  EXPECT_EQ(ById(), (Ids{1, 3}));
  EXPECT_EQ(Walk(), (Ids{1, 3}));
  Reg(Store(0), 4);
  EXPECT_EQ(GetNext(&cast, &id), 0);  // stays at the end until GetFirst
  EXPECT_EQ((Ids{Del(Store(0), 1), Del(Store(0), 4)}), (Ids{1, 1}));  // first and last
  Reg(Store(0), 9);
  EXPECT_EQ(Walk(), (Ids{3, 9}));
  EXPECT_EQ((Ids{Del(Store(0), 3), Del(Store(0), 9), Del(Store(0), 9)}), (Ids{1, 1, 0}));
  EXPECT_EQ(head, nullptr);
  for (std::int16_t i = 0; i < 5; ++i) Reg(Store(0), i);
  ASSERT_EQ((Ids{GetFirst(&cast, &id), GetNext(&cast, &id)}), (Ids{1, 1}));  // 0 and 1 handed out
  EXPECT_EQ(Del(Store(0), 2), 1);  // the entry under the cursor
  ASSERT_EQ(GetNext(&cast, &id), 1);
  EXPECT_EQ(id, 3);
  EXPECT_EQ(Del(Store(0), 3), 1);  // one already handed out
  ASSERT_EQ(GetNext(&cast, &id), 1);
  EXPECT_EQ(id, 4);
  EXPECT_EQ(Del(Store(0), 4), 1);
  EXPECT_EQ(GetNext(&cast, &id), 0);
  ASSERT_EQ(GetFirst(&cast, &id), 1);
  DelAll();
  EXPECT_EQ(iter, nullptr);
  EXPECT_EQ(GetNext(&cast, &id), 0);

  for (std::int16_t i = 0; i < 6; ++i) Reg(Store(i % 2), i);
  int seen = 0;  // deleting each entry as it is handed out
  for (char ok = GetFirst(&cast, &id); ok; ok = GetNext(&cast, &id), ++seen) {
    EXPECT_EQ(id, seen);
    EXPECT_EQ(Del(cast, id), 1);
  }
  EXPECT_EQ(seen, 6);
  EXPECT_EQ(ById(), Ids{});
}

TEST_F(QvMCastListTest, RegAllocationFailureChangesNothing) {
  QvFailAllocation(1);
  EXPECT_EQ(Reg(Store(0), 1), 0);
  EXPECT_EQ(ById(), Ids{});
  EXPECT_EQ((Ids{Reg(Store(0), 1), Reg(Store(0), 2)}), (Ids{1, 1}));
  QvFailAllocation(1);
  EXPECT_EQ(Reg(Store(0), 3), 0);
  EXPECT_EQ(ById(), (Ids{1, 2}));
  QvFailAllocation(1);
  EXPECT_EQ(Reg(Store(0), 2), 1);  // a pair already present needs nothing
  QvFailAllocation(0);
  auto* owned = QvNew<QvMCastList>();  // its destructor frees the entries
  ASSERT_NE(owned, nullptr);
  for (std::int16_t i = 0; i < 20; ++i) owned->Reg(Store(0), i);
  delete owned;
}

}  // namespace
