#include "player/QvMCastList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "toolbox/QvPlatform.h"

namespace {

using V = std::vector<int>;

// The list never looks inside a cast store, so any distinct addresses serve;
// store 9 is null.
QvMCast* Store(long n) {
  static char stores[4];
  return n == 9 ? nullptr : reinterpret_cast<QvMCast*>(&stores[n]);
}

struct QvMCastListTest : ::testing::Test, QvMCastList {
  ~QvMCastListTest() override { QvFailAllocation(0); }
  // Runs blank-separated steps and gives their results: +s.i Reg and -s.i Del
  // of store s and id i (1 or 0), gk Get(k), f GetFirst, n GetNext (the pair
  // handed out as s.i, or 0), a DelAll, L the pairs by index, !k fails the
  // k-th allocation (no result).
  std::string Run(const std::string& script) {
    std::istringstream in(script);
    std::string out;
    for (std::string op; in >> op;) {
      char* rest = nullptr;
      const long s = std::strtol(op.c_str() + 1, &rest, 10);
      const auto i =
          static_cast<std::int16_t>(*rest == '.' ? std::strtol(rest + 1, nullptr, 10) : 0);
      std::string r;
      if (op[0] == '+') r = std::to_string(Reg(Store(s), i));
      if (op[0] == '-') r = std::to_string(Del(Store(s), i));
      if (op[0] == 'g') r = Pair(Get(static_cast<std::int16_t>(s), &cast, &id));
      if (op[0] == 'f') r = Pair(GetFirst(&cast, &id));
      if (op[0] == 'n') r = Pair(GetNext(&cast, &id));
      if (op[0] == 'a') DelAll(), r = "a";
      if (op[0] == '!') QvFailAllocation(static_cast<int>(s));
      if (op[0] == 'L') {
        r = "[";
        for (std::int16_t k = 0; Get(k, &cast, &id); ++k) r += (k ? " " : "") + Pair(1);
        r += "]";
      }
      if (!r.empty()) out += (out.empty() ? "" : " ") + r;
    }
    return out;
  }
  std::string Pair(char ok) {
    if (!ok) return "0";
    for (int s : {0, 1, 2, 3, 9})
      if (cast == Store(s)) return std::to_string(s) + "." + std::to_string(id);
    return "?";
  }
  QvMCast* cast = Store(3);
  std::int16_t id = 99;
};

TEST_F(QvMCastListTest, RegKeepsOrderAndRejectsDuplicates) {
  EXPECT_EQ(Run("g0 g-1 f n -0.1 a L"), "0 0 0 0 0 a []");
  EXPECT_EQ((V{cast == Store(3), id, head == nullptr, found == nullptr}), (V{1, 99, 1, 1}));
  // The same pair twice leaves one entry; the same id in another store is distinct.
  EXPECT_EQ(Run("+0.5 +0.5 +1.5 +0.-7 +9.0 L g1 g4 g-32768"),
            "1 1 1 1 1 [0.5 1.5 0.-7 9.0] 1.5 0 0");
  QvMCastID* hit = localSearch(Store(1), 5);
  ASSERT_NE(hit, nullptr);
  EXPECT_EQ((V{hit->cast == Store(1), found == hit, !localSearch(Store(2), 5), found == nullptr}),
            (V{1, 1, 1, 1}));
  EXPECT_EQ((V{Get(0, nullptr, nullptr), GetFirst(nullptr, nullptr)}), (V{1, 1}));
  // A pair already present needs no allocation (other failures: the toolbox sweep).
  EXPECT_EQ(Run("!1 +1.5 !0"), "1");
}

TEST_F(QvMCastListTest, DelRelinksAndWalksSurviveDeletion) {
  // P, Q, R without Q: Get(1) gives R, the walk P, R, then 0 until GetFirst.
  EXPECT_EQ(Run("+0.1 +0.2 +0.3 -1.2 -0.2") + (found == head ? " head" : ""), "1 1 1 0 1 head");
  EXPECT_EQ(Run("L g1 f n n +0.4 n"), "[0.1 0.3] 0.3 0.1 0.3 0 1 0");
  // First and last, then the rest.
  EXPECT_EQ(Run("-0.1 -0.4 +0.9 f n n -0.3 -0.9 -0.9 L"), "1 1 1 0.3 0.9 0 1 1 0 []");
  EXPECT_EQ(head, nullptr);
  // The entry under the cursor, one already handed out, the last.
  EXPECT_EQ(Run("+0.0 +0.1 +0.2 +0.3 +0.4 f n -0.2 n -0.3 n -0.4 n f a n"),
            "1 1 1 1 1 0.0 0.1 1 0.3 1 0.4 1 0 0.0 a 0");
  EXPECT_EQ(iter, nullptr);
  // Deleting each entry as it is handed out.
  EXPECT_EQ(Run("+0.0 +1.1 +0.2 +1.3 f -0.0 n -1.1 n -0.2 n -1.3 n L"),
            "1 1 1 1 0.0 1 1.1 1 0.2 1 1.3 1 0 []");
}

}  // namespace
