#include "layer/QvMLayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "acolor/QvAFade.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "tests/acolor/AColorTestSupport.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPixMap.h"

namespace {

using V = std::vector<std::int32_t>;
using S = std::vector<std::string>;
constexpr std::int32_t kMax = INT32_MAX;
constexpr std::int32_t kMin = INT32_MIN;

// The layer store under test beside a cast store. Member makes one with the range a..b, Place
// puts a new one on a layer; On gives a layer's ids (-2: other store), First/Next the walk.
struct QvMLayerTest : ::testing::Test, QvMLayer {
  ~QvMLayerTest() override { QvFailAllocation(0); }
  void Layers(int n) {
    for (int i = 0; i < n; ++i) New(-1, static_cast<std::int16_t>(i));
  }
  std::int16_t Member(std::int32_t a, std::int32_t b) {
    const std::int16_t m = cast.New(nullptr);
    return cast.SetStartEnd(m, a, b), m;
  }
  std::int16_t Place(std::int16_t layer, std::int32_t a, std::int32_t b) {
    const std::int16_t m = Member(a, b);
    EXPECT_EQ(RegCast(layer, &cast, m, kFitNone), 1);
    return m;
  }
  V Range(std::int16_t id) { return {cast.Start(id), cast.End(id)}; }
  V LayerIds() {
    V out;
    for (std::int16_t i = 0; i < Count(); ++i) out.push_back(Index2ID(i));
    return out;
  }
  V On(std::int16_t layer, QvMLayer* store = nullptr) {
    V out;
    for (std::int16_t i = 0; (store ? store : this)->Get(layer, i, &c, &id); ++i)
      out.push_back(c == &cast ? id : -2);
    return out;
  }
  int N(std::int16_t layer) { return static_cast<int>(On(layer).size()); }
  int First() { return GetFirst(&c, &id) ? id : -1; }
  int Next() { return GetNext(&c, &id) ? id : -1; }
  QvMCast cast;
  QvMCast* c = nullptr;
  std::int16_t id = -1;
};

TEST_F(QvMLayerTest, LayerTable) {
  EXPECT_EQ((V{Count(), New(0, 7), New(-1, 6), New(5, 8), New(1, 9)}), (V{0, 0, 1, 2, 1}));
  EXPECT_EQ(LayerIds(), (V{7, 9, 6, 8}));
  // Ids need not be unique: ID2Index gives the first.
  EXPECT_EQ((V{Index2ID(4), Index2ID(-1), New(0, 7), ID2Index(7), ID2Index(9), ID2Index(5)}),
            (V{-1, -1, 0, 0, 2, -1}));
  EXPECT_EQ((V{Del(5), Del(-1), Del(1), Del(0), Del(0), found == head}), (V{0, 0, 1, 1, 1, 1}));
  EXPECT_EQ(LayerIds(), (V{6, 8}));
  EXPECT_EQ((V{!localSearch(-3), !localSearch(2), localSearch(1)->id, found->id, Del(1)}),
            (V{1, 1, 8, 8, 1}));
  EXPECT_EQ((std::vector<void*>{head->prev, head->next}), (std::vector<void*>{0, 0}));
  Place(0, 0, 9);
  New(-1, 1);
  Place(1, 20, 29);
  EXPECT_EQ((V{Empty(0), Empty(2), N(0), N(1)}), (V{1, 0, 0, 1}));
  DelAll();
  EXPECT_EQ((V{Count(), Del(0), New(-1, 1), Count()}), (V{0, 0, 0, 1}));
}

TEST_F(QvMLayerTest, RegDelMoveAndCopyCast) {
  const std::int16_t loose = Member(0, 9);
  EXPECT_EQ(RegCast(0, &cast, loose, kFitNone), 0);  // no layer
  Layers(2);
  EXPECT_EQ((V{RegCast(0, nullptr, loose, kFitNone), RegCast(2, &cast, loose, kFitNone)}),
            (V{0, 0}));
  Place(0, 0, 9);
  const std::int16_t m = Place(0, 5, 14), k = Member(5, 14);
  EXPECT_EQ((V{RegCast(0, &cast, m, kFitTrimStart), N(0), Range(m)[0]}),
            (V{1, 2, 10}));  // again: fits only
  Place(1, 0, 9);
  EXPECT_EQ((V{RegCast(1, &cast, k, kFitMove), Range(k)[0], N(1)}), (V{1, 10, 2}));  // moved
  DelAll();
  Layers(3);
  const std::int16_t d = Place(0, 0, 9);
  EXPECT_EQ((V{RegCast(1, &cast, d, kFitNone), RegCast(2, &cast, d, kFitNone)}), (V{1, 1}));
  const std::int16_t b = Place(1, 40, 49);
  EXPECT_EQ((V{DelCast(0, &cast, b), DelCast(5, &cast, d), DelCast(0, &cast, d)}), (V{0, 0, 1}));
  DelCast(&cast, d);  // from every layer
  EXPECT_EQ((V{N(0), N(2), Get(1, 1, &c, &id), Get(3, 0, &c, &id)}), (V{0, 0, 0, 0}));
  EXPECT_EQ(On(1), (V{b}));
  // MoveCast places on the target and fits there; from equal to to: on neither.
  EXPECT_EQ((V{Empty(0), Empty(1), Place(1, 0, 9) >= 0}), (V{1, 1, 1}));
  const std::int16_t mv = Place(0, 5, 14);
  EXPECT_EQ((V{MoveCast(0, &cast, mv, 1), N(0), N(1), Range(mv)[0]}), (V{1, 0, 2, 10}));
  EXPECT_EQ((V{MoveCast(1, &cast, mv, 1), N(1)}), (V{1, 1}));
  // Failures: no target, no source (the new placement stays), not on it.
  DelAll();
  Layers(2);
  const std::int16_t m2 = Place(0, 5, 14);
  EXPECT_EQ((V{MoveCast(0, &cast, m2, 4), N(0), MoveCast(4, &cast, m2, 1), N(1)}), (V{0, 1, 0, 1}));
  EXPECT_EQ((V{MoveCast(0, &cast, Member(40, 45), 1), N(1)}), (V{0, 2}));
  DelAll();
  Layers(2);
  EXPECT_EQ((V{Copy(1, this, 9), Copy(1, nullptr, 0), Copy(2, this, 0)}), (V{1, 1, 0}));
  const std::int16_t x = Place(0, 0, 9), y = Place(0, 5, 14);  // overlapping: Copy does not fit
  EXPECT_EQ((V{Copy(0, this, 9), Copy(0, nullptr, 0)}), (V{0, 0}));
  QvMLayer other;
  EXPECT_EQ((V{other.New(-1, 0), Copy(0, &other, 0), Range(y)[0]}), (V{0, 1, 5}));
  EXPECT_EQ(On(0, &other), (V{x, y}));
  EXPECT_EQ((V{Copy(0, this, 0), N(0)}), (V{1, 2}));  // onto itself: nothing new
  EXPECT_EQ(Copy(0, this, 1), 1);
  EXPECT_EQ(On(1), (V{x, y}));
}

TEST_F(QvMLayerTest, EndOfMovieAndWalkFromLastLayerToFirst) {
  EXPECT_EQ(End(), 0);
  Layers(2);
  const std::int16_t neg = Place(0, -20, -5);
  EXPECT_EQ((V{End(), Place(1, 0, 44) >= 0, Place(0, 10, 30) >= 0, End()}), (V{0, 1, 1, 44}));
  EXPECT_EQ((V{RegCast(1, &cast, 999, kFitNone), End()}), (V{1, 44}));  // absent member: ends at -1
  cast.SetStartEnd(neg, 0, 50);
  EXPECT_EQ(End(), 50);
  DelAll();
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
  EXPECT_EQ((V{iter == nullptr, Next()}), (V{1, -1}));
}

// One fitting: the neighbours placed in this order, the member M placed after
// them, the mode, the result (-1: not checked) and M's range afterwards.
// clang-format off
struct Fit { std::vector<V> neighbours; V m; char mode; int result; V want; };
const Fit kFits[] = {
    {{{0, 9}, {20, 29}}, {5, 14}, 0, 1, {10, 19}},  {{{0, 9}, {30, 39}}, {25, 34}, 0, 1, {20, 29}},
    {{{10, 19}}, {5, 14}, 0, 1, {20, 29}},          {{{1, 10}}, {0, 4}, 0, 1, {-4, 0}},
    {{{0, 9}}, {20, 29}, 0, 0, {20, 29}},           {{}, {20, 29}, 0, 0, {20, 29}},
    {{{0, 9}, {30, 100}}, {40, 45}, 0, 1, {24, 29}}, {{{0, 9}}, {5, 14}, -1, 1, {5, 14}},
    {{{0, 9}, {30, 100}}, {85, 90}, 0, 1, {101, 106}},
    {{{0, 5}, {17, 18}}, {10, 20}, 0, 1, {6, 16}},  {{{0, 5}, {12, 13}}, {10, 20}, 0, 1, {14, 24}},
    {{{30, 39}, {0, 12}}, {10, 34}, 0, 1, {40, 64}}, {{{0, 9}, {5, 19}}, {12, 15}, 0, 0, {12, 15}},
    {{{5, 5}}, {0, kMax}, 0, 0, {0, kMax}},         {{{-39, -30}}, {-31, -17}, 0, 0, {-31, -17}},
    {{{kMax, kMax}}, {2147483600, kMax}, 0, 0, {2147483600, kMax}},
    {{{100, 2147483646}}, {90, 2147483600}, 0, 0, {90, 2147483600}},
    {{{kMin, kMax}}, {kMin, kMax}, 3, -1, {}},      {{{0, 9}, {12, 15}}, {5, 20}, 1, 1, {16, 20}},
    {{{12, 15}, {0, 9}}, {5, 20}, 1, 1, {16, 20}},  {{{0, 9}, {12, 15}}, {16, 20}, 1, 1, {16, 20}},
    {{{18, 30}, {25, 40}}, {5, 20}, 2, 1, {5, 17}}, {{{18, 30}, {25, 40}}, {5, 17}, 2, 1, {5, 17}},
    {{{50, 60}}, {5, 20}, 1, 0, {5, 20}},           {{{50, 60}}, {5, 20}, 2, 0, {5, 20}},
    {{{0, 9}, {18, 30}}, {5, 20}, 3, 1, {10, 17}},  {{{0, 9}}, {5, 14}, 7, 1, {5, 14}},
};
// clang-format on

TEST_F(QvMLayerTest, FitCast) {
  const std::int16_t m = Member(5, 14);
  EXPECT_EQ((V{FitCast(0, &cast, m, kFitNone), FitCast(0, &cast, m, 7)}), (V{1, 0}));  // no layer
  EXPECT_EQ((Layers(2), FitCast(1, &cast, m, kFitMove)), 0);  // not on an empty layer
  const V placed{Place(0, 0, 9), Place(0, 20, 29), RegCast(0, &cast, m, kFitNone)};
  EXPECT_EQ(
      (V{placed[2], FitCast(2, &cast, m, kFitMove), FitCast(0, nullptr, m, kFitMove), Range(m)[0]}),
      (V{1, 0, 0, 5}));
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

// Neighbours apart, shuffled, at times from 0 (earlier free intervals wrap), M placed last:
// left alone it was free; moved, it keeps its length, ends in free time, moves nobody else.
TEST_F(QvMLayerTest, RandomMovesEndInFreeTime) {
  auto Overlap = [](const V& a, const V& b) { return a[0] <= b[1] && b[0] <= a[1]; };
  std::mt19937 rng(20240611u);
  auto draw = [&rng](std::int32_t lo, std::int32_t hi) {
    return std::uniform_int_distribution<std::int32_t>(lo, hi)(rng);
  };
  int moves = 0, stays = 0;
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE(round);
    DelAll();
    New(-1, 0);
    std::vector<V> ranges;
    std::int32_t t = draw(0, 40);
    for (int i = draw(0, 8); i > 0; --i, ++t)
      ranges.push_back({t += draw(0, 15), t += draw(0, 20)});
    std::shuffle(ranges.begin(), ranges.end(), rng);
    const std::int32_t s = draw(-40, 200), len = draw(0, 30);
    bool wasFree = true;
    for (const V& r : ranges) wasFree = wasFree && !Overlap(r, {s, s + len});
    ranges.push_back({s, s + len});  // M, placed last
    std::vector<std::int16_t> ids;
    for (const V& r : ranges) ids.push_back(Place(0, r[0], r[1]));
    const std::int16_t m = ids.back();
    const char moved = FitCast(0, &cast, m, kFitMove);
    const V now = Range(m);
    (moved ? moves : stays) += 1;
    EXPECT_TRUE(moved ? now[1] - now[0] == len : wasFree && now == (V{s, s + len}));
    for (std::size_t i = 0; i + 1 < ranges.size(); ++i) {
      EXPECT_FALSE(Overlap(ranges[i], now));
      EXPECT_EQ(Range(ids[i]), ranges[i]);
    }
  }
  EXPECT_TRUE(moves > 100 && stays > 50) << moves << " " << stays;  // both often enough
}

TEST_F(QvMLayerTest, CommentsAndDestruction) {
  // The result r, then the comment: its size and, up to 5 bytes, its text.
  auto after = [&](char r) {
    unsigned char* data = reinterpret_cast<unsigned char*>(1);
    std::uint16_t size = 99;
    GetComment(&data, &size);
    std::string out = std::to_string(r) + " " + (data ? std::to_string(size) : "none");
    if (!data && size != 0) out += " with a size";
    if (data && size <= 5) out += ":" + std::string(reinterpret_cast<char*>(data), size);
    return out;
  };
  unsigned char text[5] = {'h', 'e', 'l', 'l', 'o'};
  EXPECT_EQ((S{after(1), after(SetComment(text, 5)), (text[0] = 'j', after(1)),
               after(SetComment(text, 3))}),
            (S{"1 none", "1 5:hello", "1 5:hello", "1 3:jel"}));  // the store keeps its own copy
  EXPECT_EQ((S{after(SetComment(text, 0)), after(SetComment(nullptr, 10)), after(NewComment(0)),
               after(NewComment(65535)), (DelComment(), after(1)), (DelComment(), after(1))}),
            (S{"1 none", "1 10", "1 none", "1 65535", "1 none", "1 none"}));
  GetComment(nullptr, nullptr);
  // A whole store goes with its layers, references and comment; Load and Save fail.
  auto* store = QvNew<QvMLayer>();
  ASSERT_NE(store, nullptr);
  const std::int16_t m = Member(0, 9);
  EXPECT_EQ((V{store->New(-1, 0), store->New(-1, 1), store->RegCast(0, &cast, m, kFitNone),
               store->RegCast(1, &cast, m, kFitNone), store->SetComment(text, 4), store->Load(0),
               store->Save(0)}),
            (V{0, 1, 1, 1, 1, 0, 0}));
  delete store;
}

// What the layers hold (a: a block of colour 11, b: of 22, c: no animation, z: an id the store
// lacks), b's range, the time drawn and the colour then mid-picture (-1: nothing drawn).
// clang-format off
struct DrawCase { const char *layer0, *layer1; std::int32_t bFirst, bLast, time; int want; };
const DrawCase kDraws[] = {
    {"a", "b", 0, 9, 5, 22},   {"b", "a", 0, 9, 5, 11},  {"ba", "", 0, 9, 5, 11},
    {"ab", "a", 0, 9, 5, 11},  {"a", "b", 0, 9, 10, -1}, {"a", "b", 0, 9, -2, -1},
    {"a", "b", 20, 29, 5, 11}, {"a", "b", 20, 29, 25, 22}, {nullptr, nullptr, 0, 9, 5, -1},
    {"", "", 0, 9, 5, -1},     {"c", "cz", 0, 9, 5, -1},
};
// clang-format on

TEST_F(QvMLayerTest, LayersAndPlacementOrderDecideWhatIsOnTop) {
  QvAFrame anims[2];
  tbColorTable table;
  std::int16_t ids[26] = {Member(0, 9), Member(0, 9), Member(0, 9)};  // c has no animation
  ids['z' - 'a'] = 999;
  for (int i = 0; i < 2; ++i) {  // a 4 x 2 block with a full mask, anchored at its middle
    std::vector<unsigned char> image(8, static_cast<unsigned char>(11 * (i + 1))), mask(8, 255);
    ASSERT_EQ(anims[i].Reg(0, 0, 0, 4, 2, 2, 1, 10), 0);
    ASSERT_EQ(anims[i].SetImage(0, image.data(), mask.data(), 4, 2, -2, -1), 1);
    ASSERT_EQ(cast.RegAFrame(ids[i], &anims[i], 0, nullptr, nullptr), ids[i]);
    ASSERT_EQ(cast.RegOrgCTable(ids[i], &table, nullptr, nullptr), ids[i]);  // off-screen worlds
  }
  tbRect area(0, 0, 16, 8);
  for (const DrawCase& c : kDraws) {
    SCOPED_TRACE(::testing::Message() << (c.layer0 ? c.layer0 : "-") << " at " << c.time);
    DelAll();
    const char* held[2] = {c.layer0, c.layer1};
    for (std::int16_t l = 0; l < 2 && held[l]; ++l) {
      New(-1, l);
      for (const char* m = held[l]; *m; ++m) RegCast(l, &cast, ids[*m - 'a'], kFitNone);
    }
    cast.SetStartEnd(ids[1], c.bFirst, c.bLast);
    std::vector<unsigned char> pixels(16 * 8);
    for (int i = 0; i < 16 * 8; ++i) pixels[i] = static_cast<unsigned char>(i);
    const std::vector<unsigned char> before = pixels;
    tbPixMap map(pixels.data(), 16, area);
    DrawPicture(c.time, &map, &area);
    EXPECT_TRUE(c.want < 0 ? pixels == before : pixels[4 * 16 + 8] == c.want);
  }
}

// The colour table of a moment: members a (fade of 1..3, range 0..29) and b
// (fade of 2..5, range 10..39) lay their CTable entries over the base inside
// their areas, the later layer over the earlier; c has a table but no colour
// animation, d an animation but no table; outside its range a member adds
// nothing.
TEST_F(QvMLayerTest, ColourTableOfAMomentOverlaysTheMembersInDrawingOrder) {
  tbColorTable base = acolortest::Table([](int i) { return V{0, i, 7}; });
  tbColorTable own = acolortest::Table([](int i) { return V{i, 0, 9}; });
  QvAFade fades[2];
  const int areas[2][2] = {{1, 3}, {2, 5}};
  const std::int16_t ids[4] = {Member(0, 29), Member(10, 39), Member(0, 39), Member(0, 39)};
  for (int f = 0; f < 2; ++f) {
    QvPal pal = acolortest::RangePal(areas[f][0], areas[f][1]);
    fades[f].RegArea(&pal);
    fades[f].RegColor(tbRGBColor(255, 255, 255));
    ASSERT_EQ(cast.RegAColor(ids[f], &fades[f], 3, 0, nullptr, nullptr), ids[f]);
  }
  ASSERT_EQ(cast.RegAColor(ids[3], &fades[0], 3, 0, nullptr, nullptr), ids[3]);
  for (int m = 0; m < 3; ++m) ASSERT_EQ(cast.RegOrgCTable(ids[m], &own, nullptr, nullptr), ids[m]);
  // Which member's CTable each of the indices 0..6 shows (-1: the base).
  struct Case {
    int first, second;  // members on layers 0 and 1
    std::int32_t time;
    int from[7];
  };
  const Case cases[] = {{0, 1, 20, {-1, 0, 1, 1, 1, 1, -1}},
                        {1, 0, 20, {-1, 0, 0, 0, 1, 1, -1}},
                        {0, 1, 5, {-1, 0, 0, 0, -1, -1, -1}},
                        {0, 1, 35, {-1, -1, 1, 1, 1, 1, -1}},
                        {0, 1, 45, {-1, -1, -1, -1, -1, -1, -1}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.first << c.second << " at " << c.time);
    DelAll();
    Layers(2);
    RegCast(0, &cast, ids[2], kFitNone);
    RegCast(0, &cast, ids[c.first], kFitNone);
    RegCast(1, &cast, ids[c.second], kFitNone);
    RegCast(1, &cast, ids[3], kFitNone);
    tbColorTable out;
    ASSERT_EQ(GetCTable(c.time, &base, &out), 1);
    for (std::int16_t k = 0; k < 7; ++k) {
      const int m = c.from[k];
      const tbColorTable* want = m < 0 ? &base : cast.CTable(ids[m], c.time);
      ASSERT_TRUE(want && *out.CTTable(k) == *want->CTTable(k)) << "index " << k;
      if (m >= 0) {
        EXPECT_FALSE(*want->CTTable(k) == *base.CTTable(k)) << "index " << k;
      }
    }
    for (std::int16_t k = 7; k < 256; ++k) ASSERT_TRUE(*out.CTTable(k) == *base.CTTable(k));
  }
  // In place, and the failures.
  tbColorTable same = base;
  EXPECT_EQ((V{GetCTable(20, &same, &same), GetCTable(20, nullptr, &same),
               GetCTable(20, &base, nullptr), cast.GetCTable(ids[2], 20, &same),
               cast.GetCTable(ids[3], 20, &same), cast.GetCTable(ids[0], 30, &same),
               cast.GetCTable(ids[0], 20, nullptr), cast.GetCTable(99, 20, &same)}),
            (V{1, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_FALSE(same == base);
}

}  // namespace
