#include "layer/QvMLayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "cast/QvMCast.h"
#include "toolbox/QvPlatform.h"

namespace {

using V = std::vector<std::int32_t>;
constexpr std::int32_t kMax = INT32_MAX;
constexpr std::int32_t kMin = INT32_MIN;

// The fixture is the layer store under test, with one cast store beside it.
struct QvMLayerTest : ::testing::Test, QvMLayer {
  ~QvMLayerTest() override { QvFailAllocation(0); }
  void Layers(int n) {
    for (int i = 0; i < n; ++i) New(-1, static_cast<std::int16_t>(i));
  }
  // A member of the cast store with the range a..b, and one placed on a layer.
  std::int16_t Member(std::int32_t a, std::int32_t b) {
    const std::int16_t m = cast.New(nullptr);
    return cast.SetStartEnd(m, a, b), m;
  }
  std::int16_t Place(std::int16_t layer, std::int32_t a, std::int32_t b) {
    const std::int16_t m = Member(a, b);
    EXPECT_EQ(RegCast(layer, &cast, m, -1), 1);
    return m;
  }
  V Range(std::int16_t id) { return {cast.Start(id), cast.End(id)}; }
  // The ids of the layers, or of the members on one layer, by index.
  V LayerIds() {
    V out;
    for (std::int16_t i = 0; i < Count(); ++i) out.push_back(Index2ID(i));
    return out;
  }
  V On(std::int16_t layer, QvMLayer* store = nullptr) {  // -2: another cast store
    V out;
    for (std::int16_t i = 0; (store ? store : this)->Get(layer, i, &c, &id); ++i) {
      out.push_back(c == &cast ? id : -2);
    }
    return out;
  }
  int N(std::int16_t layer) { return static_cast<int>(On(layer).size()); }
  // GetFirst / GetNext as the id handed out, -1 for none.
  int First() { return GetFirst(&c, &id) ? id : -1; }
  int Next() { return GetNext(&c, &id) ? id : -1; }
  QvMCast cast;
  QvMCast* c = nullptr;
  std::int16_t id = -1;
};

TEST_F(QvMLayerTest, LayerTable) {
  EXPECT_EQ((V{Count(), New(0, 7), New(-1, 6), New(5, 8), New(1, 9)}), (V{0, 0, 1, 2, 1}));
  EXPECT_EQ(LayerIds(), (V{7, 9, 6, 8}));
  EXPECT_EQ((V{Index2ID(4), Index2ID(-1)}), (V{-1, -1}));
  EXPECT_EQ(New(0, 7), 0);  // ids need not be unique; ID2Index gives the first
  EXPECT_EQ((V{ID2Index(7), ID2Index(9), ID2Index(5)}), (V{0, 2, -1}));
  EXPECT_EQ((V{Del(5), Del(-1), Del(1), Del(0), Del(0)}), (V{0, 0, 1, 1, 1}));
  EXPECT_EQ(found, head);
  EXPECT_EQ(LayerIds(), (V{6, 8}));
  EXPECT_EQ((std::vector<void*>{localSearch(-3), localSearch(2)}), (std::vector<void*>{0, 0}));
  QvMLayerInfo* second = localSearch(1);
  EXPECT_EQ((V{second == found, second->id, Del(1)}), (V{1, 8, 1}));
  EXPECT_EQ((std::vector<void*>{head->prev, head->next}), (std::vector<void*>{0, 0}));
  Place(0, 0, 9);
  New(-1, 1);
  Place(1, 20, 29);
  EXPECT_EQ((V{Empty(0), Empty(2), N(0), N(1)}), (V{1, 0, 0, 1}));
  DelAll();
  EXPECT_EQ((V{Count(), Del(0)}), (V{0, 0}));
  New(-1, 1);
  QvFailAllocation(1);  // the layer record
  EXPECT_EQ(New(0, 2), -1);
  QvFailAllocation(2);  // its cast list
  EXPECT_EQ(New(0, 3), -1);
  EXPECT_EQ(LayerIds(), (V{1}));
}

TEST_F(QvMLayerTest, RegDelAndMoveCast) {
  const std::int16_t loose = Member(0, 9);
  EXPECT_EQ(RegCast(0, &cast, loose, -1), 0);  // no layer
  Layers(2);
  EXPECT_EQ((V{RegCast(0, nullptr, loose, -1), RegCast(2, &cast, loose, -1)}), (V{0, 0}));
  Place(0, 0, 9);
  const std::int16_t m = Place(0, 5, 14);
  EXPECT_EQ((V{RegCast(0, &cast, m, 1), N(0)}), (V{1, 2}));  // again: fits, adds nothing
  EXPECT_EQ(Range(m), (V{10, 14}));
  Place(1, 0, 9);
  const std::int16_t k = Member(5, 14);
  const std::int16_t f = Member(5, 14);
  QvFailAllocation(1);
  EXPECT_EQ((V{RegCast(1, &cast, f, 0), Range(f)[0]}), (V{0, 5}));            // not fitted
  EXPECT_EQ((V{RegCast(1, &cast, k, 0), Range(k)[0], N(1)}), (V{1, 10, 2}));  // moved

  DelAll();
  Layers(3);
  const std::int16_t d = Place(0, 0, 9);
  EXPECT_EQ((V{RegCast(1, &cast, d, -1), RegCast(2, &cast, d, -1)}), (V{1, 1}));
  const std::int16_t b = Place(1, 40, 49);
  EXPECT_EQ((V{DelCast(0, &cast, b), DelCast(5, &cast, d), DelCast(0, &cast, d)}), (V{0, 0, 1}));
  DelCast(&cast, d);  // from every layer
  EXPECT_EQ((V{N(0), N(2), Get(1, 1, &c, &id), Get(3, 0, &c, &id)}), (V{0, 0, 0, 0}));
  EXPECT_EQ(On(1), (V{b}));

  // MoveCast places on the target and fits there.
  Empty(0);
  Empty(1);
  Place(1, 0, 9);
  const std::int16_t mv = Place(0, 5, 14);
  EXPECT_EQ((V{MoveCast(0, &cast, mv, 1), N(0), N(1)}), (V{1, 0, 2}));
  EXPECT_EQ(Range(mv), (V{10, 19}));
  EXPECT_EQ((V{MoveCast(1, &cast, mv, 1), N(1)}), (V{1, 1}));  // same layer: on neither

  // Failures: no target, no source (the new placement stays), not on it, no memory.
  DelAll();
  Layers(2);
  const std::int16_t m2 = Place(0, 5, 14);
  EXPECT_EQ((V{MoveCast(0, &cast, m2, 4), N(0)}), (V{0, 1}));
  EXPECT_EQ((V{MoveCast(4, &cast, m2, 1), N(1)}), (V{0, 1}));
  EXPECT_EQ((V{MoveCast(0, &cast, Member(40, 45), 1), N(1)}), (V{0, 2}));
  const std::int16_t q = Place(0, 60, 65);
  QvFailAllocation(1);
  EXPECT_EQ((V{MoveCast(0, &cast, q, 1), N(0), N(1)}), (V{0, 2, 2}));
}

TEST_F(QvMLayerTest, CopyAndEndOfMovie) {
  Layers(2);
  EXPECT_EQ((V{Copy(1, this, 9), Copy(1, nullptr, 0), Copy(2, this, 0)}), (V{1, 1, 0}));
  const std::int16_t a = Place(0, 0, 9);
  const std::int16_t b = Place(0, 5, 14);  // overlapping: Copy does not fit
  EXPECT_EQ((V{Copy(0, this, 9), Copy(0, nullptr, 0)}), (V{0, 0}));
  QvMLayer other;
  EXPECT_EQ((V{other.New(-1, 0), Copy(0, &other, 0), Range(b)[0]}), (V{0, 1, 5}));
  EXPECT_EQ(On(0, &other), (V{a, b}));
  EXPECT_EQ((V{Copy(0, this, 0), N(0)}), (V{1, 2}));  // onto itself: nothing new
  QvFailAllocation(2);  // a failing registration stops the copy; the rest stays
  EXPECT_EQ((V{Copy(0, this, 1), N(1), Copy(0, this, 1)}), (V{0, 1, 1}));
  EXPECT_EQ(On(1), (V{a, b}));
  // The end of the movie: 0 without references.
  DelAll();
  EXPECT_EQ(End(), 0);
  Layers(2);
  const std::int16_t neg = Place(0, -20, -5);
  EXPECT_EQ(End(), 0);
  Place(1, 0, 44);
  Place(0, 10, 30);
  EXPECT_EQ(End(), 44);
  RegCast(1, &cast, 999, -1);  // a member the store does not hold ends at -1
  EXPECT_EQ(End(), 44);
  cast.SetStartEnd(neg, 0, 50);
  EXPECT_EQ(End(), 50);
}

TEST_F(QvMLayerTest, WalkGoesFromLastLayerToFirstAndSurvivesDeletion) {
  EXPECT_EQ(First(), -1);
  Layers(4);
  EXPECT_EQ(First(), -1);  // only empty layers
  const V ids{Place(0, 0, 1), Place(0, 2, 3), Place(2, 4, 5), Place(2, 6, 7)};
  EXPECT_EQ((V{First(), Next(), Next(), Next(), Next(), Next()}),
            (V{ids[2], ids[3], ids[0], ids[1], -1, -1}));
  Place(1, 8, 9);
  const std::int16_t top = Place(3, 10, 11);
  EXPECT_EQ((V{First(), Next()}), (V{top, ids[2]}));
  // Deleting the layer under the walk, then the next one, then one walked.
  EXPECT_EQ((V{Del(2), Next() >= 0, Del(1), Del(1)}), (V{1, 1, 1, 1}));
  EXPECT_EQ((V{Next(), Next(), Next()}), (V{ids[0], ids[1], -1}));
  Layers(2);
  const V more{Place(1, 0, 1), Place(1, 2, 3), Place(1, 4, 5)};
  // Removing the next reference, then emptying the layer under the walk.
  EXPECT_EQ((V{First(), DelCast(1, &cast, static_cast<std::int16_t>(more[1])), Next(), Empty(1),
               Next(), First()}),
            (V{more[0], 1, more[2], 1, ids[0], ids[0]}));
  DelAll();
  EXPECT_EQ(iter, nullptr);
  EXPECT_EQ(Next(), -1);
}

// One fitting: the neighbours placed in this order, the member M placed after
// them, the mode, the result (-1: not checked) and M's range afterwards.
// clang-format off
struct Fit { std::vector<V> neighbours; V m; char mode; int result; V want; };
const Fit kFits[] = {
    {{{0, 9}, {20, 29}}, {5, 14}, 0, 1, {10, 19}},    // first neighbour overlaps M's start
    {{{0, 9}, {30, 39}}, {25, 34}, 0, 1, {20, 29}},   // second overlaps M's end
    {{{10, 19}}, {5, 14}, 0, 1, {20, 29}},            // interval to 9 unusable (wrap)
    {{{1, 10}}, {0, 4}, 0, 1, {-4, 0}},               // the interval ending at 0
    {{{0, 9}}, {20, 29}, 0, 0, {20, 29}},             // already free
    {{}, {20, 29}, 0, 0, {20, 29}},                   // alone on the layer
    {{{0, 9}, {30, 100}}, {40, 45}, 0, 1, {24, 29}},  // covering neighbour, nearer its start
    {{{0, 9}, {30, 100}}, {85, 90}, 0, 1, {101, 106}},
    {{{0, 5}, {17, 18}}, {10, 20}, 0, 1, {6, 16}},    // covered neighbour near M's end
    {{{0, 5}, {12, 13}}, {10, 20}, 0, 1, {14, 24}},   // near M's start
    {{{30, 39}, {0, 12}}, {10, 34}, 0, 1, {40, 64}},  // the last overlapping one decides
    {{{0, 9}, {5, 19}}, {12, 15}, 0, 0, {12, 15}},    // overlapping neighbours: 10.. free
    {{{5, 5}}, {0, kMax}, 0, 0, {0, kMax}},           // no room anywhere
    {{{-39, -30}}, {-31, -17}, 0, 0, {-31, -17}},     // interval length wraps: unusable
    {{{kMax, kMax}}, {2147483600, kMax}, 0, 0, {2147483600, kMax}},  // wraps to all time
    {{{100, 2147483646}}, {90, 2147483600}, 0, 0, {90, 2147483600}},
    {{{kMin, kMax}}, {kMin, kMax}, 3, -1, {}},        // no overflow
    {{{0, 9}, {12, 15}}, {5, 20}, 1, 1, {16, 20}},    // trim start
    {{{12, 15}, {0, 9}}, {5, 20}, 1, 1, {16, 20}},    // in any order
    {{{0, 9}, {12, 15}}, {16, 20}, 1, 1, {16, 20}},   // a neighbour ending just before
    {{{18, 30}, {25, 40}}, {5, 20}, 2, 1, {5, 17}},   // trim end
    {{{18, 30}, {25, 40}}, {5, 17}, 2, 1, {5, 17}},
    {{{50, 60}}, {5, 20}, 1, 0, {5, 20}},             // trims count only neighbours inside
    {{{50, 60}}, {5, 20}, 2, 0, {5, 20}},
    {{{0, 9}, {18, 30}}, {5, 20}, 3, 1, {10, 17}},    // trim end, trim start, then move
    {{{0, 9}, {18, 30}}, {10, 17}, 0, 0, {10, 17}},
    {{{0, 9}}, {5, 14}, 7, 1, {5, 14}},               // no fitting
    {{{0, 9}}, {5, 14}, -2, 1, {5, 14}},
    {{{0, 9}}, {5, 14}, -1, 1, {5, 14}},
};
// clang-format on

TEST_F(QvMLayerTest, FitCast) {
  const std::int16_t m = Member(5, 14);
  EXPECT_EQ((V{FitCast(0, &cast, m, -1), FitCast(0, &cast, m, 7)}), (V{1, 0}));  // no layer
  Layers(2);
  EXPECT_EQ(FitCast(1, &cast, m, 0), 0);  // not on an empty layer
  Place(0, 0, 9);
  Place(0, 20, 29);
  RegCast(0, &cast, m, -1);
  EXPECT_EQ((V{FitCast(2, &cast, m, 0), FitCast(0, nullptr, m, 0)}), (V{0, 0}));
  EXPECT_EQ(Range(m), (V{5, 14}));
  // Two intervals around the first neighbour, one more for the second.
  for (int k = 1; k <= 4; ++k) {
    QvFailAllocation(k);
    const V want = k < 4 ? V{0, 5, 14} : V{1, 10, 19};
    EXPECT_EQ((V{FitCast(0, &cast, m, 0), Range(m)[0], Range(m)[1]}), want) << k;
  }
  QvFailAllocation(0);
  for (const Fit& f : kFits) {
    SCOPED_TRACE(::testing::Message() << "M " << f.m[0] << " mode " << int(f.mode));
    DelAll();
    Layers(1);
    for (const V& n : f.neighbours) Place(0, n[0], n[1]);
    const std::int16_t m = Place(0, f.m[0], f.m[1]);
    const char got = FitCast(0, &cast, m, f.mode);
    if (f.result < 0) continue;
    EXPECT_EQ((V{got, Range(m)[0], Range(m)[1]}), (V{f.result, f.want[0], f.want[1]}));
  }
}

TEST_F(QvMLayerTest, RandomMovesEndInFreeTime) {
  auto Overlap = [](const V& a, const V& b) { return a[0] <= b[1] && b[0] <= a[1]; };
  std::mt19937 rng(20240611u);
  auto draw = [&rng](std::int32_t lo, std::int32_t hi) {
    return std::uniform_int_distribution<std::int32_t>(lo, hi)(rng);
  };
  int moves = 0, stays = 0;
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE(round);
    QvMCast store;
    QvMLayer layer;
    ASSERT_EQ(layer.New(-1, 0), 0);
    // Neighbours that do not overlap each other, in random order, at times
    // not below 0 (free intervals starting below 0 wrap and are unusable).
    std::vector<V> ranges;
    std::int32_t t = draw(0, 40);
    for (int i = draw(0, 8); i > 0; --i, ++t) {
      t += draw(0, 15);
      ranges.push_back({t, t += draw(0, 20)});  // from t, then t moves to the last time
    }
    std::shuffle(ranges.begin(), ranges.end(), rng);
    const std::int32_t s = draw(-40, 200), len = draw(0, 30);
    bool wasFree = true;
    for (const V& r : ranges) wasFree = wasFree && !Overlap(r, {s, s + len});
    ranges.push_back({s, s + len});  // M, placed last
    std::vector<std::int16_t> ids;
    for (const V& r : ranges) {
      ids.push_back(store.New(nullptr));
      store.SetStartEnd(ids.back(), r[0], r[1]);
      ASSERT_EQ(layer.RegCast(0, &store, ids.back(), -1), 1);
    }
    const std::int16_t m = ids.back();
    ranges.pop_back();

    const char moved = layer.FitCast(0, &store, m, 0);
    const V now{store.Start(m), store.End(m)};
    (moved ? moves : stays) += 1;
    // A member left alone was free; a moved one keeps its length.
    EXPECT_TRUE(moved ? now[1] - now[0] == len : wasFree && now == (V{s, s + len}));
    for (std::size_t i = 0; i < ranges.size(); ++i) {
      EXPECT_FALSE(Overlap(ranges[i], now));
      EXPECT_EQ((V{store.Start(ids[i]), store.End(ids[i])}), ranges[i]);
    }
  }
  EXPECT_TRUE(moves > 100 && stays > 50) << moves << " " << stays;  // both often enough
}

TEST_F(QvMLayerTest, CommentsAndDestruction) {
  unsigned char* data = reinterpret_cast<unsigned char*>(1);
  std::uint16_t size = 99;
  // The result r, then the comment: its size and, up to 5 bytes, its text.
  auto after = [&](char r) {
    GetComment(&data, &size);
    std::string out = std::to_string(r) + " " + (data ? std::to_string(size) : "none");
    if (!data && size != 0) out += " with a size";
    if (data && size <= 5) out += ":" + std::string(reinterpret_cast<char*>(data), size);
    return out;
  };
  EXPECT_EQ(after(1), "1 none");
  unsigned char text[5] = {'h', 'e', 'l', 'l', 'o'};
  EXPECT_EQ(after(SetComment(text, 5)), "1 5:hello");
  text[0] = 'j';  // the store keeps its own copy
  EXPECT_EQ(after(1), "1 5:hello");
  EXPECT_EQ(after(SetComment(text, 0)), "1 none");
  EXPECT_EQ(after(SetComment(nullptr, 10)), "1 10");  // content not set
  EXPECT_EQ(after(NewComment(0)), "1 none");
  EXPECT_EQ(after(NewComment(65535)), "1 65535");
  GetComment(nullptr, nullptr);
  DelComment();
  EXPECT_EQ(after(1), "1 none");
  DelComment();
  // A failing allocation leaves no comment: the old one is already gone.
  EXPECT_EQ(after(SetComment(text, 3)), "1 3:jel");
  QvFailAllocation(1);
  EXPECT_EQ(after(NewComment(8)), "0 none");
  EXPECT_EQ(after(SetComment(text, 3)), "1 3:jel");
  QvFailAllocation(1);
  EXPECT_EQ(after(SetComment(text, 3)), "0 none");

  // A whole store goes with its layers, references and comment (leak-checked
  // in the sanitizer build); Load and Save fail.
  auto* store = QvNew<QvMLayer>();
  ASSERT_NE(store, nullptr);
  const std::int16_t m = Member(0, 9);
  EXPECT_EQ((V{store->New(-1, 0), store->New(-1, 1), store->RegCast(0, &cast, m, -1),
               store->RegCast(1, &cast, m, -1), store->SetComment(text, 4), store->Load(0),
               store->Save(0)}),
            (V{0, 1, 1, 1, 1, 0, 0}));
  delete store;
}

}  // namespace
