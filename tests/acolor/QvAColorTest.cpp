#include "acolor/QvAColor.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCast.h"
#include "tests/acolor/AColorTestSupport.h"

using namespace acolortest;

namespace {

struct ColorProbe : QvAColor {
  using QvAColor::localAddError;
  using QvAColor::localFlagNum;
  using QvAColor::localSubError;
};

std::uint32_t gMillis = 0;
std::uint32_t FakeMillis() { return gMillis; }

}  // namespace

TEST(QvAColorBase, AreaOutputTableErrorBitsAndFiles) {
  NoFailures guard;
  ColorProbe a;
  EXPECT_EQ((V{a.Error(), a.Count(), a.AreaFlag(0), static_cast<std::int32_t>(a.AreaNum()),
               a.localFlagNum(), a.Mode(), a.Speed()}),
            (V{16, 0, 0, 0, 0, 0, 30}));
  tbColorTable src = GreyTable();
  tbRGBColor c(1, 2, 3);
  a.SetColor(200, &c);
  a.SetColor(201, nullptr);        // ignored
  ASSERT_NE(nullptr, a.CTable());  // the base computes nothing: its own table
  EXPECT_EQ((P{a.Area(), a.CTable(&src), a.CTable(0, &src)}), (P{nullptr, a.CTable(), a.CTable()}));
  EXPECT_EQ(c, Entry(a.CTable(), 200));
  QvPal pal = RangePal(3, 5);
  ASSERT_EQ(a.RegArea(&pal), 1);  // its failure: the allocation sweep
  QvPal* own = a.Area();
  pal.SetFlag(6, 1);  // later changes do not reach the animation ...
  pal.SetFlagNum(40);
  EXPECT_EQ((V{own && own != &pal, a.Error(), a.AreaFlag(4), a.AreaFlag(6),
               static_cast<std::int32_t>(a.AreaNum())}),
            (V{1, 0, 1, 0, 256}));
  // ... until registered again, into the same object; a null area clears every flag.
  EXPECT_EQ((V{a.RegArea(&pal), own == a.Area(), a.AreaFlag(6),
               static_cast<std::int32_t>(a.AreaNum()), a.localFlagNum(), a.RegArea(nullptr),
               a.AreaFlag(4), static_cast<std::int32_t>(a.AreaNum())}),
            (V{1, 1, 1, 40, 40, 1, 0, 256}));
  // Bits are added and removed once.
  EXPECT_EQ((V{(a.localAddError(0x10), a.localAddError(0x10), a.localAddError(0x01), a.Error()),
               (a.localSubError(0x10), a.localSubError(0x10), a.Error()),
               (a.localSubError(0x01), a.Error())}),
            (V{17, 1, 0}));
  QvFailAllocation(1);  // no output table: both bits, and the table bit never clears
  QvAColor b;
  EXPECT_EQ((V{b.Error(), b.RegArea(&pal), b.Error(), b.CTable() == nullptr}), (V{17, 1, 1, 1}));
  b.SetColor(0, &c);  // no table: nothing happens
  QvAColor d;
  QvACycle cy;
  QvAFade fd;
  QvAFlash fl;
  QvASwitch sw;  // every Load and Save fails
  char path[] = "movie";
  EXPECT_EQ((V{d.Load(3), d.Save(3), d.Load(path), d.Save(path, 0u, 10u), cy.Load(1, 2u),
               fd.Load(1, 2u), fl.Load(1, 2u), sw.Load(1, 2u), cy.Load(1), fd.Save(1),
               fl.Load(path), sw.Save(path, 1u, 1u)}),
            V(12, 0));
}

// Behaviour shared by the four kinds.
template <class K>
struct QvAColorKinds : ::testing::Test {
  NoFailures guard;
  tbColorTable src = DistinctTable();
  // A kind with the whole area and, for a switch, tables for n frames.
  void Ready(K& k, int frames) {
    QvPal pal = RangePal(0, 255);
    ASSERT_EQ(1, k.RegArea(&pal));
    if constexpr (std::is_same_v<K, QvASwitch>) {
      for (int i = 0; i < frames; ++i) {
        tbColorTable t = UniformTable(i, 0, 0);
        ASSERT_EQ(1, k.RegCTable(static_cast<std::int16_t>(i), &t));
      }
    }
  }
};
using Kinds = ::testing::Types<QvACycle, QvAFade, QvAFlash, QvASwitch>;
TYPED_TEST_SUITE(QvAColorKinds, Kinds);

template <class T, class = void>
struct PublicRange : std::false_type {};
template <class T>
struct PublicRange<
    T, std::void_t<decltype(std::declval<T&>().SetTop(0)), decltype(std::declval<T&>().SetEnd(0))>>
    : std::true_type {};

TYPED_TEST(QvAColorKinds, NoTableWithoutAreaErrorFrameOrSource) {
  static_assert(!PublicRange<TypeParam>::value && PublicRange<QvAColor>::value,
                "a kind sets its own range; the base keeps the clock's");
  TypeParam k;
  EXPECT_EQ((V{k.Error(), k.Top(), k.End()}), (V{16, 0, k.Count() - 1}));
  const P none{nullptr, nullptr, nullptr};
  EXPECT_EQ((P{k.Area(), k.CTable(0, &this->src), k.CTable(&this->src)}), none);
  EXPECT_NE(nullptr, k.CTable());
  static_cast<QvMPlayer&>(k).SetEnd(7);  // the slot keeps the clock's behaviour
  const std::int32_t count = k.Count();
  QvPal pal = RangePal(0, 9);
  QvFailAllocation(1);  // no area object: nothing changes
  EXPECT_EQ((V{k.RegArea(&pal), k.Error(), k.End(), k.Count()}), (V{0, 16, 7, count}));
  this->Ready(k, 1);
  EXPECT_EQ((P{k.Area() ? nullptr : &k, k.CTable(0, nullptr), k.CTable(-1, nullptr)}), none);
  QvFailAllocation(1);
  TypeParam broken;  // no output table: every frame blocked
  this->Ready(broken, 1);
  EXPECT_EQ((P{broken.CTable(0, &this->src), broken.CTable(&this->src), broken.CTable()}), none);
  EXPECT_EQ(broken.Error(), 1);
}

TYPED_TEST(QvAColorKinds, CurrentFrameIsTheClocksAndAllocatesNothing) {
  TypeParam k;
  this->Ready(k, 20);
  k.SetMode(QvMPlayer::kPlayLoop);
  EXPECT_EQ(2, k.SetCur(2));
  ASSERT_NE(nullptr, k.CTable(2, &this->src));
  const tbColorTable two = *k.CTable();
  QvFailAllocation(0);
  for (int paused = 0; paused < 2; ++paused, k.Pause()) {  // stopped or paused: cur as it is
    ASSERT_NE(nullptr, k.CTable(0, &this->src));
    ASSERT_EQ(k.CTable(), k.CTable(&this->src));
    EXPECT_EQ(two, *k.CTable());
  }
  EXPECT_EQ(0, QvAllocationCount());
  gMillis = 0;
  QvTickSource previous = QvSetTickSource(&FakeMillis);
  k.Play(30);
  gMillis = 500;  // 29 ticks: 14 frames at speed 30, sampled first
  ASSERT_NE(nullptr, k.CTable(&this->src));
  const tbColorTable got = *k.CTable();
  const std::int32_t frame = k.Cur();
  QvSetTickSource(previous);
  EXPECT_EQ(frame, (std::is_same_v<TypeParam, QvAFlash> ? 1 : 16));  // 2 + 14, looped
  ASSERT_NE(nullptr, k.CTable(static_cast<std::int16_t>(frame), &this->src));
  EXPECT_EQ(got, *k.CTable());
}

TYPED_TEST(QvAColorKinds, AreaLimitsAndDup) {
  // Area 4 to 6 (and 20, beyond FlagNum 16): other entries keep the source;
  // from FlagNum up nothing is written, except by a cycle, which copies all.
  TypeParam a, b, none;
  QvPal pal = RangePal(4, 6);
  pal.SetFlag(20, 1);
  pal.SetFlagNum(16);
  a.SetMode(QvMPlayer::kPlayBounce);
  a.SetSpeed(20);
  this->Ready(a, 3);
  ASSERT_EQ(1, a.RegArea(&pal));
  a.Dup(&b);  // mode, speed, area and the kind's own settings
  EXPECT_EQ((V{b.Mode(), b.Speed(), b.Count(), b.End(), b.AreaFlag(5), b.AreaFlag(20), b.Error(),
               static_cast<std::int32_t>(b.AreaNum()), b.Area() != a.Area()}),
            (V{1, 20, a.Count(), a.End(), 1, 1, 0, 16, 1}));
  const tbRGBColor marker(1, 2, 3);
  for (std::int16_t n = 0; n < 3; ++n) {
    Mark(a, marker);
    Mark(b, marker);
    tbColorTable* out = a.CTable(n, &this->src);
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(*out, *b.CTable(n, &this->src)) << n;
    for (int i = 0; i < 256; ++i) {
      const bool kept = i < 16 || std::is_same_v<TypeParam, QvACycle>;
      const tbRGBColor want = i >= 4 && i <= 6 ? Entry(out, i)
                              : kept           ? Entry(this->src, i)
                                               : marker;
      EXPECT_EQ(want, Entry(out, i)) << i;
    }
  }
  a.Dup(&a);  // into itself: kept
  EXPECT_EQ((V{a.Count(), a.AreaFlag(5)}), (V{b.Count(), 1}));
  a.Dup(nullptr);
  none.Dup(&b);  // a source without an area gives an empty one
  EXPECT_EQ((V{b.AreaFlag(5), b.Error()}), (V{0, 0}));
}

TEST(QvAColorMembersByKind, OperationsThatPassTheirChangeOn) {
  NoFailures guard;
  QvMCast cast;
  QvACycle cycle;
  QvAFade fade;
  QvAFlash flash;
  QvASwitch sw;
  auto attach = [&](QvAColor* k, QvMCastList* list, char kind) {
    const std::int16_t id = cast.New(nullptr);
    EXPECT_EQ(id, cast.RegAColor(id, k, kind, 10, nullptr, list));
    return id;
  };
  const std::int16_t c = attach(&cycle, &cycle, 0), f = attach(&fade, &fade, 3),
                     l = attach(&flash, &flash, 1), s = attach(&sw, &sw, 2);
  // Whether each step renewed the copy.
  auto renews = [&](QvAColor* (QvMCast::*get)(std::int16_t), std::int16_t id, auto step) {
    QvAColor* before = (cast.*get)(id);
    step();
    return before != (cast.*get)(id);
  };
  tbColorTable t = GreyTable();
  QvPal pal = RangePal(3, 4);
  const std::vector<bool> got = {
      renews(&QvMCast::ACycle, c, [&] { cycle.RegArea(&pal); }),
      renews(&QvMCast::AFlash, l, [&] { flash.RegArea(&pal); }),
      renews(&QvMCast::ASwitch, s, [&] { sw.RegArea(&pal); }),
      renews(&QvMCast::AFade, f, [&] { fade.RegArea(&pal); }),
      renews(&QvMCast::ACycle, c, [&] { cycle.SetSpeed(9); }),  // the speed does not pass itself on
      renews(&QvMCast::ACycle, c, [&] { cycle.UpdateMCast(); }),  // until the host asks for it
      renews(&QvMCast::ACycle, c,
             [&] { cycle.SetMode(QvMPlayer::kPlayLoop); }),  // only the cycle's SetMode
      renews(&QvMCast::AFade, f, [&] { fade.SetMode(QvMPlayer::kPlayBounce); }),
      renews(&QvMCast::AFade, f, [&] { fade.RegColor(tbRGBColor(1, 2, 3)); }),
      renews(&QvMCast::AFade, f, [&] { fade.RegColor(65535, 0, 0); }),
      renews(&QvMCast::AFade, f, [&] { fade.SetCount(7); }),
      renews(&QvMCast::AFlash, l, [&] { flash.SetMode(QvMPlayer::kPlayLoop); }),
      renews(&QvMCast::ASwitch, s, [&] { sw.SetMode(QvMPlayer::kPlayLoop); }),
      renews(&QvMCast::ASwitch, s, [&] { sw.RegCTable(0, &t); }),
      renews(&QvMCast::ASwitch, s, [&] { sw.RegCTable(0, &t); }),
      renews(&QvMCast::ASwitch, s, [&] { QvFailAllocation(1), sw.RegCTable(0, &t); }),
      renews(&QvMCast::ASwitch, s, [&] { QvFailAllocation(1), sw.DelCTable(0); }),
      renews(&QvMCast::ASwitch, s, [&] { sw.DelCTable(5); }),
      renews(&QvMCast::ASwitch, s, [&] { sw.DelCTable(0); }),
  };
  EXPECT_EQ(got, (std::vector<bool>{true, true, true, true, false, true, true, false, true, true,
                                    true, false, false, true, true, false, false, false, true}));
  EXPECT_EQ((V{cast.ACycle(c)->Mode(), cast.ACycle(c)->Speed(), cast.AFade(f)->Count(),
               cast.AFade(f)->Mode(), cast.ASwitch(s)->Count(), cast.AFlash(l)->AreaFlag(4)}),
            (V{2, 9, 7, 1, 1, 1}));
}

namespace {

std::int16_t S16(unsigned v) { return static_cast<std::int16_t>(v); }

// A cycle whose range clocks the test reads.
struct CycleProbe : QvACycle {
  using QvACycle::head;
  using QvACycle::localCopyRanges;
  using QvACycle::localRegArea;
  using QvACycle::localRotate;
};

// The blend of one component as defined: the reference for the fade.
unsigned char PlainBlend(int s, int g, double f) {
  const auto d = static_cast<std::int32_t>(static_cast<double>(s * 257 - g * 257) * f);
  const auto v = static_cast<std::uint16_t>(static_cast<std::uint32_t>(s * 257) -
                                            static_cast<std::uint32_t>(d));
  return B(v / 257);
}

}  // namespace

// Every kind against its plain per-entry loop, over random areas (runs,
// FlagNum below 256 or not), source tables, frames and targets: the entries
// below FlagNum take the kind's colour where flagged and the source's
// elsewhere, the others keep what the output held; a cycle rotates each run
// by its clock, also when it reads its own output as the source.
TEST(QvAColorPlainLoops, RandomAreasAndTables) {
  NoFailures guard;
  std::mt19937 rng(2024);
  tbRGBColor marker(1, 2, 3);
  const tbRGBColor pure[3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    QvPal pal = RandomPal(rng);
    const int n = pal.FlagNum();
    tbColorTable src = RandomTable(rng), own = RandomTable(rng);
    own.SetCTSize(static_cast<std::int16_t>(rng() % 256));
    const auto frame = static_cast<std::int16_t>(rng() % 3);
    QvAFlash flash;
    QvASwitch sw;
    QvAFade fade;
    CycleProbe cycle;
    cycle.SetMode(static_cast<char>(rng() % 3));
    const auto count = static_cast<std::int16_t>(rng() % 400 + 2);
    fade.SetCount(count);
    const tbRGBColor goal(B(rng()), B(rng()), B(rng()));
    fade.RegColor(goal);
    for (int k = 0; k < 3; ++k) sw.RegCTable(-1, k == frame ? &own : &src);
    QvAColor* kinds[4] = {&flash, &sw, &fade, &cycle};
    for (QvAColor* a : kinds) {
      ASSERT_EQ(1, a->RegArea(&pal));
      for (int i = 0; i < 256; ++i) a->SetColor(static_cast<std::int16_t>(i), &marker);
    }
    const double f = static_cast<double>(frame) / static_cast<double>(count - 1);
    for (int k = 0; k < 3; ++k) {
      tbColorTable* out = kinds[k]->CTable(frame, &src);
      ASSERT_NE(out, nullptr);
      for (int i = 0; i < 256; ++i) {
        tbRGBColor want = i < n ? Entry(src, i) : marker;
        if (i < n && pal.Flag(B(i)) == 1) {
          if (k == 0) want = pure[frame];
          if (k == 1 && i <= own.CTSize()) want = Entry(own, i);
          if (k == 2)
            want =
                tbRGBColor(PlainBlend(want.red, goal.red, f), PlainBlend(want.green, goal.green, f),
                           PlainBlend(want.blue, goal.blue, f));
        }
        ASSERT_EQ(want, Entry(out, i)) << k << " " << i;
      }
    }
    // The cycle: frames far apart, from the source and from its own output.
    const auto at = static_cast<std::int16_t>(rng() % 32767);
    const bool itself = round % 3 == 0;
    tbColorTable want = itself ? *cycle.CTable() : src;
    ASSERT_NE(cycle.CTable(at, itself ? cycle.CTable() : &src), nullptr);
    for (QvACycleInfo* r = cycle.head; r; r = r->next) {
      const tbColorTable from = itself ? tbColorTable() : src;
      std::int32_t p = r->player->Cur();
      for (std::int32_t i = r->player->Top(); i <= r->player->End(); ++i, ++p) {
        if (p > r->player->End()) p = r->player->Top();
        want.SetCTTable(static_cast<std::int16_t>(p),
                        (itself ? want : from).CTTable(static_cast<std::int16_t>(i)));
      }
    }
    ASSERT_EQ(want, *cycle.CTable());
    // From an output holding the source outside the ranges, the ranges alone
    // are written when each is one block (one reaching past the table is
    // not): the table computed whole; a copy of the output before it takes
    // the ranges alone.
    if (round % 4 == 0) cycle.localRegArea(S16(240 + rng() % 10), S16(256 + rng() % 14));
    tbColorTable before = *cycle.CTable(at, &src), held;
    bool only = false;
    const auto next = static_cast<std::int16_t>(rng() % 32767);
    held = *cycle.localRotate(next, &src, true, &only);
    ASSERT_TRUE(held == *cycle.CTable(next, &src) && only == (round % 4 != 0));
    if (only) cycle.localCopyRanges(&before, &held);
    ASSERT_TRUE(!only || before == held);
  }
}

// The fade's blend of every source component toward every target component,
// over the whole area (looked up in rows made for the call) and over sparse
// areas (computed entry by entry), for frames across several counts, from
// another table and from its own output.
TEST(QvAColorPlainLoops, FadeOfEveryComponentPair) {
  NoFailures guard;
  const tbColorTable grey = GreyTable();
  const int pairs[][2] = {{0, 30}, {1, 30}, {28, 30},   {29, 30},       {1, 2},
                          {1, 3},  {5, 7},  {171, 300}, {32765, 32767}, {100, 255}};
  for (int shape = 0; shape <= 5; ++shape) {
    QvPal pal;  // shape 5: every index; 0 to 4: every fifth index
    for (int i = 0; i < 256; ++i) pal.SetFlag(B(i), shape == 5 || i % 5 == shape);
    QvAFade fade;
    ASSERT_EQ(1, fade.RegArea(&pal));
    for (const auto& fc : pairs) {
      fade.SetCount(static_cast<std::int16_t>(fc[1]));
      const double f = static_cast<double>(fc[0]) / static_cast<double>(fc[1] - 1);
      for (int g = 0; g < 256; ++g) {
        fade.RegColor(tbRGBColor(B(g), B(255 - g), B(g * 3)));
        // Every other time from its own output as the source.
        tbColorTable src = grey;
        tbColorTable* from = g % 2 ? &src : fade.CTable();
        *from = grey;
        tbColorTable* out = fade.CTable(static_cast<std::int16_t>(fc[0]), from);
        ASSERT_NE(out, nullptr);
        for (int s = 0; s < 256; ++s) {
          const bool in = pal.Flag(B(s)) == 1;
          const tbRGBColor e = Entry(out, s);
          const tbRGBColor want(in ? PlainBlend(s, g, f) : B(s),
                                in ? PlainBlend(s, 255 - g, f) : B(s),
                                in ? PlainBlend(s, B(g * 3), f) : B(s));
          if (!(e == want)) {
            ADD_FAILURE() << shape << " " << fc[0] << "/" << fc[1] << " s " << s << " g " << g;
            return;
          }
        }
      }
    }
  }
}

// The tables' block copy against entry-by-entry copies from a copy of the
// source, over random runs within one table (overlapping) and between two;
// runs leaving a table copy nothing; the size stays.
TEST(QvAColorPlainLoops, TableBlockCopies) {
  std::mt19937 rng(77);
  for (int round = 0; round < 500; ++round) {
    tbColorTable a = RandomTable(rng), b = RandomTable(rng);
    a.SetCTSize(static_cast<std::int16_t>(rng() % 256));
    const bool same = round % 2 == 0;
    tbColorTable* src = same ? &a : &b;
    const tbColorTable before = *src;
    tbColorTable want = a;
    const int count = static_cast<int>(rng() % 300) - 20;
    // A quarter of the runs end at, one before or one after the last entry.
    const int edge = 256 - count + static_cast<int>(rng() % 3) - 1;
    const int to = round % 4 == 1 ? edge : static_cast<int>(rng() % 300) - 20;
    const int from = round % 4 == 3 ? edge : static_cast<int>(rng() % 300) - 20;
    if (count > 0 && to >= 0 && from >= 0 && to + count <= 256 && from + count <= 256)
      for (int i = 0; i < count; ++i)
        want.SetCTTable(static_cast<std::int16_t>(to + i),
                        before.CTTable(static_cast<std::int16_t>(from + i)));
    a.CopyEntries(to, src, from, count);
    ASSERT_EQ(want, a) << round;
  }
}
