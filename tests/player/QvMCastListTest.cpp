#include "player/QvMCastList.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "toolbox/QvPlatform.h"

namespace {

// The list never looks inside a cast store, so any distinct addresses serve.
QvMCast* Store(int n) {
  static char stores[4];
  return reinterpret_cast<QvMCast*>(&stores[n]);
}

class ListProbe : public QvMCastList {
 public:
  using QvMCastList::localSearch;
  QvMCastID* Head() const { return head; }
  QvMCastID* Found() const { return found; }
  QvMCastID* Iter() const { return iter; }
};

int Count(QvMCastList& list) {
  int n = 0;
  QvMCast* cast = nullptr;
  std::int16_t id = 0;
  while (list.Get(static_cast<std::int16_t>(n), &cast, &id)) ++n;
  return n;
}

class QvMCastListTest : public ::testing::Test {
 protected:
  void TearDown() override { QvFailAllocation(0); }
};

TEST_F(QvMCastListTest, EmptyList) {
  ListProbe list;
  EXPECT_EQ(list.Head(), nullptr);
  EXPECT_EQ(list.Found(), nullptr);
  QvMCast* cast = Store(3);
  std::int16_t id = 99;
  EXPECT_EQ(list.Get(0, &cast, &id), 0);
  EXPECT_EQ(list.Get(-1, &cast, &id), 0);
  EXPECT_EQ(list.GetFirst(&cast, &id), 0);
  EXPECT_EQ(list.GetNext(&cast, &id), 0);
  EXPECT_EQ(cast, Store(3));  // nothing stored
  EXPECT_EQ(id, 99);
  EXPECT_EQ(list.Del(Store(0), 1), 0);
  list.DelAll();
  EXPECT_EQ(Count(list), 0);
}

TEST_F(QvMCastListTest, RegKeepsOrderAndRejectsDuplicates) {
  QvMCastList list;
  EXPECT_EQ(list.Reg(Store(0), 5), 1);
  EXPECT_EQ(list.Reg(Store(0), 5), 1);
  EXPECT_EQ(Count(list), 1);
  // The same id in another store is another member.
  EXPECT_EQ(list.Reg(Store(1), 5), 1);
  EXPECT_EQ(list.Reg(Store(0), -7), 1);
  EXPECT_EQ(list.Reg(nullptr, 0), 1);
  EXPECT_EQ(Count(list), 4);

  QvMCast* cast = nullptr;
  std::int16_t id = 0;
  ASSERT_EQ(list.Get(0, &cast, &id), 1);
  EXPECT_EQ(cast, Store(0));
  EXPECT_EQ(id, 5);
  ASSERT_EQ(list.Get(1, &cast, &id), 1);
  EXPECT_EQ(cast, Store(1));
  EXPECT_EQ(id, 5);
  ASSERT_EQ(list.Get(2, &cast, &id), 1);
  EXPECT_EQ(id, -7);
  ASSERT_EQ(list.Get(3, &cast, &id), 1);
  EXPECT_EQ(cast, nullptr);
  EXPECT_EQ(list.Get(4, &cast, &id), 0);
  EXPECT_EQ(list.Get(INT16_MIN, &cast, &id), 0);
}

TEST_F(QvMCastListTest, DelMiddleThenWalk) {
  ListProbe list;
  list.Reg(Store(0), 1);                // P
  list.Reg(Store(0), 2);                // Q
  list.Reg(Store(0), 3);                // R
  EXPECT_EQ(list.Del(Store(1), 2), 0);  // other store
  EXPECT_EQ(list.Del(Store(0), 2), 1);
  EXPECT_EQ(list.Found(), list.Head());
  QvMCast* cast = nullptr;
  std::int16_t id = 0;
  ASSERT_EQ(list.Get(1, &cast, &id), 1);
  EXPECT_EQ(id, 3);
  ASSERT_EQ(list.GetFirst(&cast, &id), 1);
  EXPECT_EQ(id, 1);
  ASSERT_EQ(list.GetNext(&cast, &id), 1);
  EXPECT_EQ(id, 3);
  EXPECT_EQ(list.GetNext(&cast, &id), 0);
  EXPECT_EQ(list.GetNext(&cast, &id), 0);
  list.Reg(Store(0), 4);  // added after the walk ended: still at its end
  EXPECT_EQ(list.GetNext(&cast, &id), 0);
  ASSERT_EQ(list.GetFirst(&cast, &id), 1);
  EXPECT_EQ(id, 1);
}

TEST_F(QvMCastListTest, DelFirstAndLastRelinks) {
  QvMCastList list;
  list.Reg(Store(0), 1);
  list.Reg(Store(0), 2);
  list.Reg(Store(0), 3);
  EXPECT_EQ(list.Del(Store(0), 1), 1);
  EXPECT_EQ(list.Del(Store(0), 3), 1);
  QvMCast* cast = nullptr;
  std::int16_t id = 0;
  ASSERT_EQ(list.Get(0, &cast, &id), 1);
  EXPECT_EQ(id, 2);
  EXPECT_EQ(Count(list), 1);
  list.Reg(Store(0), 9);
  ASSERT_EQ(list.Get(1, &cast, &id), 1);
  EXPECT_EQ(id, 9);
  EXPECT_EQ(list.Del(Store(0), 2), 1);
  EXPECT_EQ(list.Del(Store(0), 9), 1);
  EXPECT_EQ(Count(list), 0);
  EXPECT_EQ(list.Del(Store(0), 9), 0);
}

TEST_F(QvMCastListTest, LocalSearchRemembersFound) {
  ListProbe list;
  list.Reg(Store(0), 1);
  list.Reg(Store(1), 1);
  QvMCastID* hit = list.localSearch(Store(1), 1);
  ASSERT_NE(hit, nullptr);
  EXPECT_EQ(hit->cast, Store(1));
  EXPECT_EQ(list.Found(), hit);
  EXPECT_EQ(list.localSearch(Store(2), 1), nullptr);
  EXPECT_EQ(list.Found(), nullptr);
}

TEST_F(QvMCastListTest, DeletingDuringWalkIsSafe) {
  ListProbe list;
  for (std::int16_t i = 0; i < 5; ++i) list.Reg(Store(0), i);
  QvMCast* cast = nullptr;
  std::int16_t id = 0;
  ASSERT_EQ(list.GetFirst(&cast, &id), 1);  // hands out 0, cursor on 1
  ASSERT_EQ(list.GetNext(&cast, &id), 1);   // hands out 1, cursor on 2
  EXPECT_EQ(list.Del(Store(0), 2), 1);      // the entry under the cursor
  ASSERT_EQ(list.GetNext(&cast, &id), 1);
  EXPECT_EQ(id, 3);
  EXPECT_EQ(list.Del(Store(0), 3), 1);  // one already handed out
  ASSERT_EQ(list.GetNext(&cast, &id), 1);
  EXPECT_EQ(id, 4);
  EXPECT_EQ(list.Del(Store(0), 4), 1);  // the last, cursor already at end
  EXPECT_EQ(list.GetNext(&cast, &id), 0);

  ASSERT_EQ(list.GetFirst(&cast, &id), 1);
  list.DelAll();
  EXPECT_EQ(list.Iter(), nullptr);
  EXPECT_EQ(list.GetNext(&cast, &id), 0);
  EXPECT_EQ(Count(list), 0);
}

TEST_F(QvMCastListTest, DeleteEveryEntryWhileWalking) {
  QvMCastList list;
  for (std::int16_t i = 0; i < 6; ++i) list.Reg(Store(i % 2), i);
  QvMCast* cast = nullptr;
  std::int16_t id = 0;
  int seen = 0;
  for (char ok = list.GetFirst(&cast, &id); ok; ok = list.GetNext(&cast, &id)) {
    EXPECT_EQ(id, seen);
    EXPECT_EQ(list.Del(cast, id), 1);
    ++seen;
  }
  EXPECT_EQ(seen, 6);
  EXPECT_EQ(Count(list), 0);
}

TEST_F(QvMCastListTest, GetToleratesNullOutputs) {
  QvMCastList list;
  list.Reg(Store(0), 1);
  EXPECT_EQ(list.Get(0, nullptr, nullptr), 1);
  EXPECT_EQ(list.GetFirst(nullptr, nullptr), 1);
  EXPECT_EQ(list.GetNext(nullptr, nullptr), 0);
}

TEST_F(QvMCastListTest, RegAllocationFailureChangesNothing) {
  QvMCastList list;
  QvFailAllocation(1);
  EXPECT_EQ(list.Reg(Store(0), 1), 0);
  EXPECT_EQ(Count(list), 0);

  EXPECT_EQ(list.Reg(Store(0), 1), 1);
  EXPECT_EQ(list.Reg(Store(0), 2), 1);
  QvFailAllocation(1);
  EXPECT_EQ(list.Reg(Store(0), 3), 0);
  EXPECT_EQ(Count(list), 2);
  // A pair already present needs no allocation.
  QvFailAllocation(1);
  EXPECT_EQ(list.Reg(Store(0), 2), 1);
  QvFailAllocation(0);
  EXPECT_EQ(list.Reg(Store(0), 3), 1);
  EXPECT_EQ(Count(list), 3);
}

TEST_F(QvMCastListTest, DestructorFreesEntries) {
  // Leak checking in the sanitizer build covers this.
  auto* list = QvNew<QvMCastList>();
  ASSERT_NE(list, nullptr);
  for (std::int16_t i = 0; i < 20; ++i) list->Reg(Store(0), i);
  delete list;
}

}  // namespace
