#include "layer/QvMLayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "cast/QvMCast.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"

namespace {

class LayerProbe : public QvMLayer {
 public:
  using QvMLayer::localSearch;
  QvMLayerInfo* Head() const { return head; }
  QvMLayerInfo* Found() const { return found; }
  QvMLayerInfo* Iter() const { return iter; }
  std::int16_t NewLayerFlag() const { return newLayer; }
};

class QvMLayerTest : public ::testing::Test {
 protected:
  void TearDown() override { QvFailAllocation(0); }

  // A member of the cast store with the range first..last.
  std::int16_t Member(std::int32_t first, std::int32_t last) {
    std::int16_t id = cast.New(nullptr);
    EXPECT_GE(id, 0);
    cast.SetStartEnd(id, first, last);
    return id;
  }
  // Places a member on the layer without fitting.
  std::int16_t Place(std::int16_t layer, std::int32_t first, std::int32_t last) {
    std::int16_t id = Member(first, last);
    EXPECT_EQ(layers.RegCast(layer, &cast, id, -1), 1);
    return id;
  }
  std::pair<std::int32_t, std::int32_t> Range(std::int16_t id) {
    return {cast.Start(id), cast.End(id)};
  }
  static std::pair<std::int32_t, std::int32_t> R(std::int32_t a, std::int32_t b) { return {a, b}; }
  int CastsOn(std::int16_t layer) {
    int n = 0;
    QvMCast* c = nullptr;
    std::int16_t id = 0;
    while (layers.Get(layer, static_cast<std::int16_t>(n), &c, &id)) ++n;
    return n;
  }

  QvMCast cast;
  LayerProbe layers;
};

// ---- Layer table ----

TEST_F(QvMLayerTest, NewInsertsOrAppends) {
  EXPECT_EQ(layers.Count(), 0);
  EXPECT_EQ(layers.New(0, 7), 0);
  EXPECT_EQ(layers.New(-1, 6), 1);
  EXPECT_EQ(layers.New(5, 8), 2);
  EXPECT_EQ(layers.Count(), 3);
  EXPECT_EQ(layers.New(1, 9), 1);
  EXPECT_EQ(layers.Count(), 4);
  EXPECT_EQ(layers.Index2ID(0), 7);
  EXPECT_EQ(layers.Index2ID(1), 9);
  EXPECT_EQ(layers.Index2ID(2), 6);
  EXPECT_EQ(layers.Index2ID(3), 8);
  EXPECT_EQ(layers.Index2ID(4), -1);
  EXPECT_EQ(layers.Index2ID(-1), -1);
  EXPECT_EQ(layers.New(0, 1), 0);
  EXPECT_EQ(layers.Index2ID(0), 1);
  EXPECT_EQ(layers.Index2ID(1), 7);
}

TEST_F(QvMLayerTest, IdsNeedNotBeUnique) {
  layers.New(-1, 4);
  layers.New(-1, 5);
  layers.New(-1, 4);
  EXPECT_EQ(layers.ID2Index(4), 0);
  EXPECT_EQ(layers.ID2Index(5), 1);
  EXPECT_EQ(layers.ID2Index(6), -1);
  EXPECT_EQ(layers.localSearch(-3), nullptr);
  EXPECT_EQ(layers.localSearch(3), nullptr);
  QvMLayerInfo* third = layers.localSearch(2);
  ASSERT_NE(third, nullptr);
  EXPECT_EQ(third, layers.Found());
  EXPECT_EQ(third->id, 4);
}

TEST_F(QvMLayerTest, NewAllocationFailureChangesNothing) {
  layers.New(-1, 1);
  QvFailAllocation(1);  // the layer record
  EXPECT_EQ(layers.New(0, 2), -1);
  QvFailAllocation(2);  // its cast list
  EXPECT_EQ(layers.New(0, 3), -1);
  QvFailAllocation(0);
  EXPECT_EQ(layers.Count(), 1);
  EXPECT_EQ(layers.Index2ID(0), 1);
}

TEST_F(QvMLayerTest, DelRelinksAndResetsFound) {
  for (std::int16_t id = 10; id < 14; ++id) layers.New(-1, id);
  EXPECT_EQ(layers.Del(4), 0);
  EXPECT_EQ(layers.Del(-1), 0);
  EXPECT_EQ(layers.Del(1), 1);
  EXPECT_EQ(layers.Found(), layers.Head());
  EXPECT_EQ(layers.Del(0), 1);
  EXPECT_EQ(layers.Del(1), 1);
  EXPECT_EQ(layers.Count(), 1);
  EXPECT_EQ(layers.Index2ID(0), 12);
  EXPECT_EQ(layers.Head()->prev, nullptr);
  EXPECT_EQ(layers.Head()->next, nullptr);
  layers.DelAll();
  EXPECT_EQ(layers.Count(), 0);
  EXPECT_EQ(layers.Del(0), 0);
}

TEST_F(QvMLayerTest, EmptyClearsOneLayer) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  Place(0, 0, 9);
  Place(1, 20, 29);
  EXPECT_EQ(layers.Empty(0), 1);
  EXPECT_EQ(CastsOn(0), 0);
  EXPECT_EQ(CastsOn(1), 1);
  EXPECT_EQ(layers.Empty(2), 0);
  EXPECT_EQ(layers.Count(), 2);
}

// ---- Cast placement ----

TEST_F(QvMLayerTest, RegCastBadInput) {
  std::int16_t id = Member(0, 9);
  EXPECT_EQ(layers.RegCast(0, &cast, id, -1), 0);  // no layer
  layers.New(-1, 0);
  EXPECT_EQ(layers.RegCast(0, nullptr, id, -1), 0);
  EXPECT_EQ(layers.RegCast(1, &cast, id, -1), 0);
  EXPECT_EQ(CastsOn(0), 0);
}

TEST_F(QvMLayerTest, RegCastAgainAddsNothingButFitsAgain) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ(Range(m), R(5, 14));
  EXPECT_EQ(layers.RegCast(0, &cast, m, 1), 1);
  EXPECT_EQ(CastsOn(0), 2);
  EXPECT_EQ(Range(m), R(10, 14));
}

TEST_F(QvMLayerTest, RegCastFitsByMovingByDefaultMode) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  std::int16_t m = Member(5, 14);
  EXPECT_EQ(layers.RegCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(10, 19));
}

TEST_F(QvMLayerTest, RegCastAllocationFailure) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  std::int16_t m = Member(5, 14);
  QvFailAllocation(1);
  EXPECT_EQ(layers.RegCast(0, &cast, m, 0), 0);
  QvFailAllocation(0);
  EXPECT_EQ(CastsOn(0), 1);
  EXPECT_EQ(Range(m), R(5, 14));  // not fitted
}

TEST_F(QvMLayerTest, DelCastFromOneOrAllLayers) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  layers.New(-1, 2);
  std::int16_t a = Place(0, 0, 9);
  layers.RegCast(1, &cast, a, -1);
  layers.RegCast(2, &cast, a, -1);
  std::int16_t b = Place(1, 20, 29);
  EXPECT_EQ(layers.DelCast(0, &cast, b), 0);
  EXPECT_EQ(layers.DelCast(5, &cast, a), 0);
  EXPECT_EQ(layers.DelCast(0, &cast, a), 1);
  EXPECT_EQ(CastsOn(0), 0);
  layers.DelCast(&cast, a);
  EXPECT_EQ(CastsOn(1), 1);
  EXPECT_EQ(CastsOn(2), 0);
  QvMCast* c = nullptr;
  std::int16_t id = -1;
  ASSERT_EQ(layers.Get(1, 0, &c, &id), 1);
  EXPECT_EQ(id, b);
  EXPECT_EQ(c, &cast);
  EXPECT_EQ(layers.Get(1, 1, &c, &id), 0);
  EXPECT_EQ(layers.Get(3, 0, &c, &id), 0);
}

TEST_F(QvMLayerTest, MoveCastPlacesAndFitsOnTarget) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  Place(1, 0, 9);
  std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ(layers.MoveCast(0, &cast, m, 1), 1);
  EXPECT_EQ(CastsOn(0), 0);
  EXPECT_EQ(CastsOn(1), 2);
  EXPECT_EQ(Range(m), R(10, 19));
}

TEST_F(QvMLayerTest, MoveCastOntoSameLayerRemovesIt) {
  layers.New(-1, 0);
  std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ(layers.MoveCast(0, &cast, m, 0), 1);
  EXPECT_EQ(CastsOn(0), 0);
}

TEST_F(QvMLayerTest, MoveCastFailures) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ(layers.MoveCast(0, &cast, m, 4), 0);  // no target layer
  EXPECT_EQ(CastsOn(0), 1);
  // No source layer: the new placement stays.
  EXPECT_EQ(layers.MoveCast(4, &cast, m, 1), 0);
  EXPECT_EQ(CastsOn(1), 1);
  // Not on the source layer.
  std::int16_t n = Member(40, 45);
  EXPECT_EQ(layers.MoveCast(0, &cast, n, 1), 0);
  EXPECT_EQ(CastsOn(1), 2);
  // Allocation failure on the target.
  std::int16_t k = Place(0, 60, 65);
  QvFailAllocation(1);
  EXPECT_EQ(layers.MoveCast(0, &cast, k, 1), 0);
  QvFailAllocation(0);
  EXPECT_EQ(CastsOn(0), 2);
  EXPECT_EQ(CastsOn(1), 2);
}

TEST_F(QvMLayerTest, CopyAddsReferencesInOrder) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  std::int16_t a = Place(0, 0, 9);
  std::int16_t b = Place(0, 5, 14);  // overlapping: Copy does not fit
  QvMLayer other;
  other.New(-1, 0);
  EXPECT_EQ(layers.Copy(0, &other, 0), 1);
  QvMCast* c = nullptr;
  std::int16_t id = -1;
  ASSERT_EQ(other.Get(0, 0, &c, &id), 1);
  EXPECT_EQ(id, a);
  ASSERT_EQ(other.Get(0, 1, &c, &id), 1);
  EXPECT_EQ(id, b);
  EXPECT_EQ(c, &cast);
  EXPECT_EQ(Range(b), R(5, 14));

  // Within the same store, onto the same layer and onto another one.
  EXPECT_EQ(layers.Copy(0, &layers, 0), 1);
  EXPECT_EQ(CastsOn(0), 2);
  EXPECT_EQ(layers.Copy(0, &layers, 1), 1);
  EXPECT_EQ(CastsOn(1), 2);
}

TEST_F(QvMLayerTest, CopyFailures) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  // An empty layer copies to anything.
  EXPECT_EQ(layers.Copy(1, &layers, 9), 1);
  EXPECT_EQ(layers.Copy(1, nullptr, 0), 1);
  EXPECT_EQ(layers.Copy(2, &layers, 0), 0);
  Place(0, 0, 9);
  Place(0, 20, 29);
  EXPECT_EQ(layers.Copy(0, &layers, 9), 0);
  EXPECT_EQ(layers.Copy(0, nullptr, 0), 0);
  // A failing registration stops the copy; what was copied stays.
  QvFailAllocation(2);
  EXPECT_EQ(layers.Copy(0, &layers, 1), 0);
  QvFailAllocation(0);
  EXPECT_EQ(CastsOn(1), 1);
}

TEST_F(QvMLayerTest, EndOfMovie) {
  EXPECT_EQ(layers.End(), 0);
  layers.New(-1, 0);
  layers.New(-1, 1);
  EXPECT_EQ(layers.End(), 0);
  std::int16_t neg = Place(0, -20, -5);
  EXPECT_EQ(layers.End(), 0);
  Place(1, 0, 44);
  Place(0, 10, 30);
  EXPECT_EQ(layers.End(), 44);
  // A reference to a member the store does not hold ends at -1.
  layers.RegCast(1, &cast, 999, -1);
  EXPECT_EQ(layers.End(), 44);
  cast.SetStartEnd(neg, 0, 50);
  EXPECT_EQ(layers.End(), 50);
}

// ---- Walk over all references ----

TEST_F(QvMLayerTest, WalkGoesFromLastLayerToFirst) {
  QvMCast* c = nullptr;
  std::int16_t id = -1;
  EXPECT_EQ(layers.GetFirst(&c, &id), 0);
  layers.New(-1, 0);
  layers.New(-1, 1);
  layers.New(-1, 2);
  layers.New(-1, 3);
  EXPECT_EQ(layers.GetFirst(&c, &id), 0);
  std::int16_t a = Place(0, 0, 1);
  std::int16_t b = Place(0, 2, 3);
  std::int16_t x = Place(2, 4, 5);
  std::int16_t y = Place(2, 6, 7);
  std::vector<std::int16_t> seen;
  for (char ok = layers.GetFirst(&c, &id); ok; ok = layers.GetNext(&c, &id)) {
    EXPECT_EQ(c, &cast);
    seen.push_back(id);
  }
  EXPECT_EQ(seen, (std::vector<std::int16_t>{x, y, a, b}));
  EXPECT_EQ(layers.GetNext(&c, &id), 0);
  EXPECT_EQ(layers.GetNext(&c, &id), 0);
}

TEST_F(QvMLayerTest, DeletingLayersDuringWalkIsSafe) {
  for (std::int16_t i = 0; i < 4; ++i) layers.New(-1, i);
  std::int16_t m0 = Place(0, 0, 1);
  Place(1, 2, 3);
  std::int16_t m2 = Place(2, 4, 5);
  Place(2, 6, 7);
  Place(3, 8, 9);
  QvMCast* c = nullptr;
  std::int16_t id = -1;
  ASSERT_EQ(layers.GetFirst(&c, &id), 1);  // layer 3
  ASSERT_EQ(layers.GetNext(&c, &id), 1);   // layer 2, first
  EXPECT_EQ(id, m2);
  EXPECT_EQ(layers.Del(2), 1);  // the layer under the walk
  ASSERT_EQ(layers.GetNext(&c, &id), 1);
  EXPECT_EQ(layers.Index2ID(1), 1);  // layer 1 follows
  EXPECT_EQ(layers.Del(1), 1);       // again under the walk
  EXPECT_EQ(layers.Del(1), 1);       // a layer already walked
  ASSERT_EQ(layers.GetNext(&c, &id), 1);
  EXPECT_EQ(id, m0);
  EXPECT_EQ(layers.GetNext(&c, &id), 0);

  layers.New(-1, 8);
  Place(1, 10, 11);
  Place(1, 12, 13);
  ASSERT_EQ(layers.GetFirst(&c, &id), 1);
  layers.DelAll();
  EXPECT_EQ(layers.Iter(), nullptr);
  EXPECT_EQ(layers.GetNext(&c, &id), 0);
}

TEST_F(QvMLayerTest, EmptyingAndRemovingReferencesDuringWalkIsSafe) {
  layers.New(-1, 0);
  layers.New(-1, 1);
  std::int16_t a = Place(0, 0, 1);
  std::int16_t b = Place(1, 2, 3);
  std::int16_t c2 = Place(1, 4, 5);
  std::int16_t d = Place(1, 6, 7);
  QvMCast* c = nullptr;
  std::int16_t id = -1;
  ASSERT_EQ(layers.GetFirst(&c, &id), 1);
  EXPECT_EQ(id, b);
  EXPECT_EQ(layers.DelCast(1, &cast, c2), 1);  // the next one
  ASSERT_EQ(layers.GetNext(&c, &id), 1);
  EXPECT_EQ(id, d);
  EXPECT_EQ(layers.Empty(1), 1);
  ASSERT_EQ(layers.GetNext(&c, &id), 1);
  EXPECT_EQ(id, a);
  EXPECT_EQ(layers.GetNext(&c, &id), 0);
}

// ---- Fitting ----

TEST_F(QvMLayerTest, FitModesWithoutFitting) {
  std::int16_t m = Member(5, 14);
  EXPECT_EQ(layers.FitCast(0, &cast, m, -1), 1);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 7), 0);  // no layer
  layers.New(-1, 0);
  Place(0, 0, 9);
  layers.RegCast(0, &cast, m, -1);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 7), 1);
  EXPECT_EQ(layers.FitCast(0, &cast, m, -2), 1);
  EXPECT_EQ(layers.FitCast(0, &cast, m, -1), 1);
  EXPECT_EQ(layers.FitCast(1, &cast, m, 0), 0);
  EXPECT_EQ(layers.FitCast(0, nullptr, m, 0), 0);
  EXPECT_EQ(Range(m), R(5, 14));
}

TEST_F(QvMLayerTest, MoveLaterPastStartOverlap) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 20, 29);
  std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(10, 19));
}

TEST_F(QvMLayerTest, MoveEarlierBeforeEndOverlap) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 30, 39);
  std::int16_t m = Place(0, 25, 34);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(20, 29));
}

TEST_F(QvMLayerTest, FirstIntervalUnusableUnlessEndingAtZero) {
  layers.New(-1, 0);
  Place(0, 10, 19);
  std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(20, 29));

  layers.New(-1, 1);
  Place(1, 1, 10);
  std::int16_t n = Place(1, 0, 4);
  EXPECT_EQ(layers.FitCast(1, &cast, n, 0), 1);
  EXPECT_EQ(Range(n), R(-4, 0));
}

TEST_F(QvMLayerTest, MoveLeavesFreeMemberAlone) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  std::int16_t m = Place(0, 20, 29);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 0);
  EXPECT_EQ(Range(m), R(20, 29));
  // Alone on the layer, or on an empty layer: nothing to fit against.
  layers.New(-1, 1);
  EXPECT_EQ(layers.FitCast(1, &cast, m, 0), 0);
  layers.RegCast(1, &cast, m, -1);
  EXPECT_EQ(layers.FitCast(1, &cast, m, 0), 0);
  EXPECT_EQ(Range(m), R(20, 29));
}

TEST_F(QvMLayerTest, CoveringNeighbourDecidesByNearerSide) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 30, 100);
  std::int16_t m = Place(0, 40, 45);  // nearer the neighbour's start
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(24, 29));

  layers.New(-1, 1);
  Place(1, 0, 9);
  Place(1, 30, 100);
  std::int16_t n = Place(1, 85, 90);  // nearer its end
  EXPECT_EQ(layers.FitCast(1, &cast, n, 0), 1);
  EXPECT_EQ(Range(n), R(101, 106));
}

TEST_F(QvMLayerTest, CoveredNeighbourDecidesByNearerSide) {
  layers.New(-1, 0);
  Place(0, 0, 5);
  Place(0, 17, 18);
  std::int16_t m = Place(0, 10, 20);  // the neighbour sits near M's end
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(6, 16));

  layers.New(-1, 1);
  Place(1, 0, 5);
  Place(1, 12, 13);
  std::int16_t n = Place(1, 10, 20);  // near M's start
  EXPECT_EQ(layers.FitCast(1, &cast, n, 0), 1);
  EXPECT_EQ(Range(n), R(14, 24));
}

TEST_F(QvMLayerTest, LastOverlappingNeighbourDecides) {
  layers.New(-1, 0);
  Place(0, 30, 39);  // overlaps M's end: earlier
  Place(0, 0, 12);   // overlaps M's start: later, and it comes last
  std::int16_t m = Place(0, 10, 34);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(40, 64));
}

TEST_F(QvMLayerTest, OverlappingNeighboursLeaveIntervalsAlone) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 5, 19);  // overlaps time already taken: not counted as taken
  std::int16_t m = Place(0, 12, 15);
  // The first neighbour alone leaves 10.. free: M counts as free.
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 0);
  EXPECT_EQ(Range(m), R(12, 15));
}

TEST_F(QvMLayerTest, NoRoomAnywhere) {
  layers.New(-1, 0);
  Place(0, 5, 5);
  std::int16_t m = Place(0, 0, 2147483647);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 0);
  EXPECT_EQ(Range(m), R(0, 2147483647));
}

TEST_F(QvMLayerTest, IntervalsFromNegativeTimesWrapAndAreUnusable) {
  // The interval after the neighbour runs from -29 to the last time; its
  // length wraps to a negative number, so the member finds no place.
  layers.New(-1, 0);
  Place(0, -39, -30);
  std::int16_t m = Place(0, -31, -17);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 0);
  EXPECT_EQ(Range(m), R(-31, -17));
}

TEST_F(QvMLayerTest, ExtremeTimesWrapWithoutOverflow) {
  layers.New(-1, 0);
  Place(0, -2147483647 - 1, 2147483647);
  std::int16_t m = Place(0, -2147483647 - 1, 2147483647);
  layers.FitCast(0, &cast, m, 3);
  layers.New(-1, 1);
  Place(1, 2147483647, 2147483647);
  std::int16_t n = Place(1, 2147483600, 2147483647);
  // The interval after a neighbour that ends at the last time wraps round to
  // all of time, so the member counts as free.
  EXPECT_EQ(layers.FitCast(1, &cast, n, 0), 0);
  EXPECT_EQ(Range(n), R(2147483600, 2147483647));
  layers.New(-1, 2);
  Place(2, 100, 2147483646);
  std::int16_t k = Place(2, 90, 2147483600);
  EXPECT_EQ(layers.FitCast(2, &cast, k, 0), 0);  // no room left
  EXPECT_EQ(Range(k), R(90, 2147483600));
}

TEST_F(QvMLayerTest, TrimStart) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 12, 15);
  std::int16_t m = Place(0, 5, 20);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 1), 1);
  EXPECT_EQ(Range(m), R(16, 20));
  // A neighbour ending just before the start still counts as a trim.
  EXPECT_EQ(layers.FitCast(0, &cast, m, 1), 1);
  EXPECT_EQ(Range(m), R(16, 20));

  // The order of the neighbours does not matter.
  layers.New(-1, 1);
  Place(1, 12, 15);
  Place(1, 0, 9);
  std::int16_t n = Place(1, 5, 20);
  EXPECT_EQ(layers.FitCast(1, &cast, n, 1), 1);
  EXPECT_EQ(Range(n), R(16, 20));
}

TEST_F(QvMLayerTest, TrimEnd) {
  layers.New(-1, 0);
  Place(0, 18, 30);
  Place(0, 25, 40);
  std::int16_t m = Place(0, 5, 20);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 2), 1);
  EXPECT_EQ(Range(m), R(5, 17));
  EXPECT_EQ(layers.FitCast(0, &cast, m, 2), 1);
  EXPECT_EQ(Range(m), R(5, 17));
}

TEST_F(QvMLayerTest, TrimsOnlyCountNeighboursInsideTheRange) {
  layers.New(-1, 0);
  Place(0, 50, 60);
  std::int16_t m = Place(0, 5, 20);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 1), 0);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 2), 0);
  EXPECT_EQ(Range(m), R(5, 20));
}

TEST_F(QvMLayerTest, ModeThreeTrimsThenMoves) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 18, 30);
  std::int16_t m = Place(0, 5, 20);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 3), 1);
  EXPECT_EQ(Range(m), R(10, 17));
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 0);
}

TEST_F(QvMLayerTest, MoveAllocationFailureLeavesMember) {
  layers.New(-1, 0);
  Place(0, 0, 9);
  Place(0, 20, 29);
  std::int16_t m = Place(0, 5, 14);
  // Two intervals around the first neighbour, one more for the second.
  for (int k = 1; k <= 3; ++k) {
    QvFailAllocation(k);
    EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 0) << k;
    EXPECT_EQ(Range(m), R(5, 14)) << k;
  }
  QvFailAllocation(4);
  EXPECT_EQ(layers.FitCast(0, &cast, m, 0), 1);
  EXPECT_EQ(Range(m), R(10, 19));
}

bool Overlap(std::pair<std::int32_t, std::int32_t> a, std::pair<std::int32_t, std::int32_t> b) {
  return a.first <= b.second && b.first <= a.second;
}

TEST_F(QvMLayerTest, RandomMovesEndInFreeTime) {
  std::mt19937 rng(20240611u);
  int moves = 0;
  int stays = 0;
  for (int round = 0; round < 400; ++round) {
    QvMCast store;
    QvMLayer layer;
    ASSERT_EQ(layer.New(-1, 0), 0);
    // Neighbours that do not overlap each other, placed in random order.
    std::vector<std::pair<std::int32_t, std::int32_t>> ranges;
    // Neighbour times are not negative: free intervals that start below 0
    // and run to the last time have a length that wraps, and are unusable.
    std::int32_t t = std::uniform_int_distribution<std::int32_t>(0, 40)(rng);
    const int count = std::uniform_int_distribution<int>(0, 8)(rng);
    for (int i = 0; i < count; ++i) {
      t += std::uniform_int_distribution<std::int32_t>(0, 15)(rng);
      const std::int32_t len = std::uniform_int_distribution<std::int32_t>(0, 20)(rng);
      ranges.push_back({t, t + len});
      t += len + 1;
    }
    std::shuffle(ranges.begin(), ranges.end(), rng);
    std::vector<std::int16_t> ids;
    for (auto r : ranges) {
      std::int16_t id = store.New(nullptr);
      store.SetStartEnd(id, r.first, r.second);
      ASSERT_EQ(layer.RegCast(0, &store, id, -1), 1);
      ids.push_back(id);
    }
    const std::int32_t s = std::uniform_int_distribution<std::int32_t>(-40, 200)(rng);
    const std::int32_t len = std::uniform_int_distribution<std::int32_t>(0, 30)(rng);
    std::int16_t m = store.New(nullptr);
    store.SetStartEnd(m, s, s + len);
    ASSERT_EQ(layer.RegCast(0, &store, m, -1), 1);

    bool wasFree = true;
    for (auto r : ranges) wasFree = wasFree && !Overlap(r, {s, s + len});

    const char moved = layer.FitCast(0, &store, m, 0);
    const std::pair<std::int32_t, std::int32_t> now{store.Start(m), store.End(m)};
    (moved ? moves : stays) += 1;
    if (moved == 0) {
      EXPECT_TRUE(wasFree) << "round " << round;
      EXPECT_EQ(now, (std::pair<std::int32_t, std::int32_t>{s, s + len})) << "round " << round;
    } else {
      EXPECT_EQ(now.second - now.first, len) << "round " << round;
    }
    for (std::size_t i = 0; i < ranges.size(); ++i) {
      EXPECT_FALSE(Overlap(ranges[i], now)) << "round " << round;
      EXPECT_EQ(store.Start(ids[i]), ranges[i].first);
      EXPECT_EQ(store.End(ids[i]), ranges[i].second);
    }
  }
  // Both outcomes occur often enough to mean something.
  EXPECT_GT(moves, 100);
  EXPECT_GT(stays, 50);
}

// ---- Drawing and comment ----

TEST_F(QvMLayerTest, DrawingWithoutDrawableMembersLeavesPixelsAlone) {
  unsigned char pixels[16 * 8];
  for (int i = 0; i < 16 * 8; ++i) pixels[i] = static_cast<unsigned char>(i);
  tbRect bounds;
  SetRect(&bounds, 0, 0, 16, 8);
  tbPixMap map(pixels, 16, bounds);
  tbRect area;
  SetRect(&area, 0, 0, 16, 8);
  layers.DrawPicture(0, &map, &area);  // no layers
  layers.New(-1, 0);
  layers.New(-1, 1);
  layers.DrawPicture(5, &map, &area);  // empty layers
  Place(0, 0, 9);                      // members without animations
  Place(1, 0, 9);
  layers.RegCast(1, &cast, 999, -1);  // and one the store does not hold
  layers.DrawPicture(5, &map, &area);
  layers.DrawPicture(-1, &map, &area);
  for (int i = 0; i < 16 * 8; ++i) ASSERT_EQ(pixels[i], static_cast<unsigned char>(i));
}

TEST_F(QvMLayerTest, CommentLifecycle) {
  unsigned char* data = reinterpret_cast<unsigned char*>(1);
  std::uint16_t size = 99;
  layers.GetComment(&data, &size);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0);

  unsigned char text[5] = {'h', 'e', 'l', 'l', 'o'};
  EXPECT_EQ(layers.SetComment(text, 5), 1);
  layers.GetComment(&data, &size);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(size, 5);
  EXPECT_EQ(std::vector<unsigned char>(data, data + 5), std::vector<unsigned char>(text, text + 5));
  text[0] = 'j';  // the store keeps its own copy
  EXPECT_EQ(data[0], 'h');

  EXPECT_EQ(layers.SetComment(text, 0), 1);
  layers.GetComment(&data, &size);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0);

  EXPECT_EQ(layers.SetComment(nullptr, 10), 1);
  layers.GetComment(&data, &size);
  EXPECT_NE(data, nullptr);
  EXPECT_EQ(size, 10);

  EXPECT_EQ(layers.NewComment(0), 1);
  layers.GetComment(&data, &size);
  EXPECT_EQ(data, nullptr);

  EXPECT_EQ(layers.NewComment(65535), 1);
  layers.GetComment(&data, &size);
  EXPECT_EQ(size, 65535);
  layers.GetComment(nullptr, nullptr);
  layers.DelComment();
  layers.DelComment();
  layers.GetComment(&data, &size);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0);
}

TEST_F(QvMLayerTest, CommentAllocationFailureDropsOldComment) {
  unsigned char text[3] = {1, 2, 3};
  ASSERT_EQ(layers.SetComment(text, 3), 1);
  QvFailAllocation(1);
  EXPECT_EQ(layers.NewComment(8), 0);
  unsigned char* data = nullptr;
  std::uint16_t size = 1;
  layers.GetComment(&data, &size);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0);

  ASSERT_EQ(layers.SetComment(text, 3), 1);
  QvFailAllocation(1);
  EXPECT_EQ(layers.SetComment(text, 3), 0);
  layers.GetComment(&data, &size);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0);
}

TEST_F(QvMLayerTest, DestructionFreesEverything) {
  // Leak checking in the sanitizer build covers this.
  auto* store = QvNew<QvMLayer>();
  ASSERT_NE(store, nullptr);
  store->New(-1, 0);
  store->New(-1, 1);
  std::int16_t id = Member(0, 9);
  store->RegCast(0, &cast, id, -1);
  store->RegCast(1, &cast, id, -1);
  unsigned char text[4] = {1, 2, 3, 4};
  store->SetComment(text, 4);
  EXPECT_EQ(store->Load(0), 0);
  EXPECT_EQ(store->Save(0), 0);
  delete store;
}

}  // namespace
