#include "acolor/QvAColor.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCast.h"
#include "tests/acolor/AColorTestSupport.h"
#include "toolbox/tbToolBox.h"

using namespace acolortest;

namespace {

class ColorProbe : public QvAColor {
 public:
  using QvAColor::localAddError;
  using QvAColor::localFlagNum;
  using QvAColor::localSubError;
  void ForceError(unsigned char bits) { errorFlags = bits; }
};

std::uint32_t gMillis = 0;
std::uint32_t FakeMillis() { return gMillis; }

struct FakeClock {
  FakeClock() {
    gMillis = 0;
    QvSetTickSource(&FakeMillis);
  }
  ~FakeClock() { QvSetTickSource(nullptr); }
};

}  // namespace

TEST(QvAColorBase, NewAnimationHasNoAreaAndComputesNothing) {
  NoFailures guard;
  QvAColor a;
  EXPECT_EQ(16, a.Error());
  EXPECT_EQ(nullptr, a.Area());
  EXPECT_NE(nullptr, a.CTable());
  EXPECT_EQ(0, a.Count());
  // Before any area the area queries answer 0.
  EXPECT_EQ(0, a.AreaFlag(0));
  EXPECT_EQ(0u, a.AreaNum());
  tbColorTable src = GreyTable();
  // The base computes nothing and hands out its own table.
  EXPECT_EQ(a.CTable(), a.CTable(&src));
  EXPECT_EQ(a.CTable(), a.CTable(0, &src));
  EXPECT_EQ(0, a.Mode());
  EXPECT_EQ(30, a.Speed());
}

TEST(QvAColorBase, RegAreaCopiesFlagsOnceIntoTheSameObject) {
  NoFailures guard;
  QvAColor a;
  QvPal pal = RangePal(3, 5);
  ASSERT_EQ(1, a.RegArea(&pal));
  EXPECT_EQ(0, a.Error());
  QvPal* own = a.Area();
  ASSERT_NE(nullptr, own);
  EXPECT_NE(&pal, own);
  EXPECT_EQ(1, a.AreaFlag(4));
  EXPECT_EQ(0, a.AreaFlag(6));
  EXPECT_EQ(256u, a.AreaNum());

  // Later changes to pal do not reach the animation ...
  pal.SetFlag(6, 1);
  pal.SetFlagNum(40);
  EXPECT_EQ(0, a.AreaFlag(6));
  EXPECT_EQ(256u, a.AreaNum());
  // ... until it is registered again, into the same area object.
  ASSERT_EQ(1, a.RegArea(&pal));
  EXPECT_EQ(own, a.Area());
  EXPECT_EQ(1, a.AreaFlag(6));
  EXPECT_EQ(40u, a.AreaNum());
}

TEST(QvAColorBase, RegAreaWithNullRegistersAnEmptyArea) {
  NoFailures guard;
  QvAColor a;
  ASSERT_EQ(1, a.RegArea(nullptr));
  EXPECT_EQ(0, a.Error());
  ASSERT_NE(nullptr, a.Area());
  EXPECT_EQ(256u, a.AreaNum());
  for (int i = 0; i < 256; ++i) EXPECT_EQ(0, a.AreaFlag(static_cast<unsigned char>(i)));

  // A null area also clears a registered one.
  QvPal pal = RangePal(0, 9);
  ASSERT_EQ(1, a.RegArea(&pal));
  ASSERT_EQ(1, a.RegArea(nullptr));
  EXPECT_EQ(0, a.AreaFlag(0));
}

TEST(QvAColorBase, FailedAreaAllocationKeepsTheErrorBit) {
  NoFailures guard;
  QvAColor a;
  QvPal pal = RangePal(0, 9);
  QvFailAllocation(1);
  EXPECT_EQ(0, a.RegArea(&pal));
  QvFailAllocation(0);
  EXPECT_EQ(16, a.Error());
  EXPECT_EQ(nullptr, a.Area());
  EXPECT_EQ(0u, a.AreaNum());
  // A later attempt succeeds.
  EXPECT_EQ(1, a.RegArea(&pal));
  EXPECT_EQ(0, a.Error());
}

TEST(QvAColorBase, FailedOutputTableSetsBothBits) {
  NoFailures guard;
  QvFailAllocation(1);
  QvAColor a;
  QvFailAllocation(0);
  EXPECT_EQ(17, a.Error());
  EXPECT_EQ(nullptr, a.CTable());
  QvPal pal = RangePal(0, 9);
  ASSERT_EQ(1, a.RegArea(&pal));
  // The table bit never clears.
  EXPECT_EQ(1, a.Error());
  tbRGBColor red(255, 0, 0);
  a.SetColor(0, &red);  // no table: nothing happens
}

TEST(QvAColorBase, SetColorWritesOneEntry) {
  NoFailures guard;
  QvAColor a;
  tbRGBColor c(1, 2, 3);
  a.SetColor(200, &c);
  EXPECT_EQ(c, Entry(a.CTable(), 200));
  a.SetColor(201, nullptr);  // ignored
}

TEST(QvAColorBase, ErrorBitsAreAddedAndRemovedOnce) {
  NoFailures guard;
  ColorProbe a;
  EXPECT_EQ(16, a.Error());
  a.localAddError(0x10);  // already set: no second addition
  EXPECT_EQ(16, a.Error());
  a.localAddError(0x01);
  EXPECT_EQ(17, a.Error());
  a.localSubError(0x10);
  EXPECT_EQ(1, a.Error());
  a.localSubError(0x10);  // not set: nothing subtracted
  EXPECT_EQ(1, a.Error());
  a.localSubError(0x01);
  EXPECT_EQ(0, a.Error());
}

TEST(QvAColorBase, FlagNumIsKeptWithinTheTable) {
  NoFailures guard;
  ColorProbe a;
  EXPECT_EQ(0, a.localFlagNum());
  QvPal pal;
  pal.SetFlagNum(12);
  ASSERT_EQ(1, a.RegArea(&pal));
  EXPECT_EQ(12, a.localFlagNum());
}

TEST(QvAColorBase, LoadAndSaveFail) {
  NoFailures guard;
  QvAColor a;
  char path[] = "movie";
  EXPECT_EQ(0, a.Load(3));
  EXPECT_EQ(0, a.Save(3));
  EXPECT_EQ(0, a.Load(path));
  EXPECT_EQ(0, a.Save(path, 0u, 10u));
  QvACycle c;
  QvAFade f;
  QvAFlash l;
  QvASwitch s;
  EXPECT_EQ(0, c.Load(1, 2u));
  EXPECT_EQ(0, f.Load(1, 2u));
  EXPECT_EQ(0, l.Load(1, 2u));
  EXPECT_EQ(0, s.Load(1, 2u));
  EXPECT_EQ(0, c.Load(1));
  EXPECT_EQ(0, f.Save(1));
  EXPECT_EQ(0, l.Load(path));
  EXPECT_EQ(0, s.Save(path, 1u, 1u));
}

// Behaviour shared by the four kinds.
template <class K>
class QvAColorKinds : public ::testing::Test {};

using Kinds = ::testing::Types<QvACycle, QvAFade, QvAFlash, QvASwitch>;
TYPED_TEST_SUITE(QvAColorKinds, Kinds);

TYPED_TEST(QvAColorKinds, NewAnimationGivesNoTable) {
  NoFailures guard;
  TypeParam k;
  tbColorTable src = GreyTable();
  EXPECT_EQ(16, k.Error());
  EXPECT_EQ(nullptr, k.Area());
  EXPECT_EQ(nullptr, k.CTable(0, &src));
  EXPECT_EQ(nullptr, k.CTable(&src));
  EXPECT_NE(nullptr, k.CTable());
  EXPECT_EQ(0, k.Top());
  EXPECT_EQ(k.Count() - 1, k.End());
}

TYPED_TEST(QvAColorKinds, ErrorBitBlocksEveryFrame) {
  NoFailures guard;
  QvFailAllocation(1);
  TypeParam k;
  QvFailAllocation(0);
  EXPECT_EQ(17, k.Error());
  QvPal pal = RangePal(0, 255);
  EXPECT_EQ(1, k.RegArea(&pal));
  EXPECT_EQ(1, k.Error());
  tbColorTable src = GreyTable();
  EXPECT_EQ(nullptr, k.CTable(0, &src));
  EXPECT_EQ(nullptr, k.CTable(&src));
}

TYPED_TEST(QvAColorKinds, FailedRegAreaChangesNothing) {
  NoFailures guard;
  TypeParam k;
  const std::int16_t count = k.Count();
  QvPal pal = RangePal(0, 9);
  QvFailAllocation(1);
  EXPECT_EQ(0, k.RegArea(&pal));
  QvFailAllocation(0);
  EXPECT_EQ(16, k.Error());
  EXPECT_EQ(nullptr, k.Area());
  EXPECT_EQ(count, k.Count());
  EXPECT_EQ(count - 1, k.End());
}

TYPED_TEST(QvAColorKinds, NullSourceGivesNull) {
  NoFailures guard;
  TypeParam k;
  QvPal pal = RangePal(0, 9);
  ASSERT_EQ(1, k.RegArea(&pal));
  EXPECT_EQ(nullptr, k.CTable(0, nullptr));
  EXPECT_EQ(nullptr, k.CTable(-1, nullptr));
}

template <class T, class = void>
struct HasPublicSetTop : std::false_type {};
template <class T>
struct HasPublicSetTop<T, std::void_t<decltype(std::declval<T&>().SetTop(0))>> : std::true_type {};
template <class T, class = void>
struct HasPublicSetEnd : std::false_type {};
template <class T>
struct HasPublicSetEnd<T, std::void_t<decltype(std::declval<T&>().SetEnd(0))>> : std::true_type {};

TYPED_TEST(QvAColorKinds, RangeIsSetByTheKindItself) {
  static_assert(!HasPublicSetTop<TypeParam>::value, "SetTop must not be public");
  static_assert(!HasPublicSetEnd<TypeParam>::value, "SetEnd must not be public");
  static_assert(HasPublicSetTop<QvAColor>::value, "the base keeps the clock's SetTop");
  // The slot itself keeps the clock's behaviour.
  NoFailures guard;
  TypeParam k;
  QvMPlayer* clock = &k;
  clock->SetEnd(7);
  EXPECT_EQ(7, k.End());
}

TYPED_TEST(QvAColorKinds, CurrentFrameOfAStoppedClockIsCur) {
  NoFailures guard;
  TypeParam k;
  QvPal pal = RangePal(0, 255);
  ASSERT_EQ(1, k.RegArea(&pal));
  tbColorTable src = DistinctTable();
  // A switch needs tables for its frames.
  if constexpr (std::is_same_v<TypeParam, QvASwitch>) {
    tbColorTable a = UniformTable(1, 1, 1), b = UniformTable(2, 2, 2), c = UniformTable(3, 3, 3);
    ASSERT_EQ(1, k.RegCTable(0, &a));
    ASSERT_EQ(1, k.RegCTable(1, &b));
    ASSERT_EQ(1, k.RegCTable(2, &c));
  }
  k.SetMode(2);
  EXPECT_EQ(2, k.SetCur(2));
  ASSERT_NE(nullptr, k.CTable(static_cast<std::int16_t>(2), &src));
  tbColorTable expected = *k.CTable();
  ASSERT_NE(nullptr, k.CTable(0, &src));
  ASSERT_EQ(k.CTable(), k.CTable(&src));
  EXPECT_EQ(expected, *k.CTable());
  EXPECT_EQ(2, k.Cur());
  k.Pause();
  ASSERT_EQ(k.CTable(), k.CTable(&src));
  EXPECT_EQ(expected, *k.CTable());
}

TYPED_TEST(QvAColorKinds, CurrentFrameOfAPlayingClockIsSampledFirst) {
  NoFailures guard;
  FakeClock clock;
  TypeParam k;
  QvPal pal = RangePal(0, 255);
  ASSERT_EQ(1, k.RegArea(&pal));
  tbColorTable src = DistinctTable();
  if constexpr (std::is_same_v<TypeParam, QvASwitch>) {
    for (int i = 0; i < 20; ++i) {
      tbColorTable t = UniformTable(static_cast<unsigned char>(i), 0, 0);
      ASSERT_EQ(1, k.RegCTable(static_cast<std::int16_t>(i), &t));
    }
  }
  if constexpr (std::is_same_v<TypeParam, QvAFlash>) k.SetMode(2);
  k.Play(30);
  gMillis = 500;  // 29 ticks: 14 frames at speed 30
  tbColorTable* out = k.CTable(&src);
  ASSERT_NE(nullptr, out);
  tbColorTable got = *out;
  const std::int32_t frame = k.Cur();
  if constexpr (std::is_same_v<TypeParam, QvAFlash>) {
    EXPECT_EQ(2, frame);  // 14 wrapped into 0..2
  } else {
    EXPECT_EQ(14, frame);
  }
  ASSERT_NE(nullptr, k.CTable(static_cast<std::int16_t>(frame), &src));
  EXPECT_EQ(*k.CTable(), got);
}

TYPED_TEST(QvAColorKinds, FrameComputationAllocatesNothing) {
  NoFailures guard;
  TypeParam k;
  QvPal pal = RangePal(2, 200);
  ASSERT_EQ(1, k.RegArea(&pal));
  tbColorTable src = DistinctTable();
  if constexpr (std::is_same_v<TypeParam, QvASwitch>) {
    tbColorTable a = UniformTable(1, 1, 1), b = UniformTable(2, 2, 2);
    ASSERT_EQ(1, k.RegCTable(0, &a));
    ASSERT_EQ(1, k.RegCTable(1, &b));
  }
  QvFailAllocation(0);
  for (std::int16_t f = 0; f < 2; ++f) ASSERT_NE(nullptr, k.CTable(f, &src));
  k.SetCur(1);
  ASSERT_NE(nullptr, k.CTable(&src));
  EXPECT_EQ(0, QvAllocationCount());
}

// Passing changes on to the cast members that hold copies.
namespace {

template <class K>
constexpr char KindOf();
template <>
constexpr char KindOf<QvACycle>() {
  return 0;
}
template <>
constexpr char KindOf<QvAFlash>() {
  return 1;
}
template <>
constexpr char KindOf<QvASwitch>() {
  return 2;
}
template <>
constexpr char KindOf<QvAFade>() {
  return 3;
}

QvAColor* CopyOf(QvMCast& cast, std::int16_t id, char kind) {
  switch (kind) {
    case 0:
      return cast.ACycle(id);
    case 1:
      return cast.AFlash(id);
    case 2:
      return cast.ASwitch(id);
    default:
      return cast.AFade(id);
  }
}

std::string NameOf(QvMCast& cast, std::int16_t id) {
  unsigned char** handle = nullptr;
  if (!cast.GetName(id, &handle) || !handle) return "<none>";
  std::string s(reinterpret_cast<char*>(*handle));
  QvFreeString(handle);
  return s;
}

// Attaches k to a member of cast with the animation's own list.
template <class K>
std::int16_t Attach(QvMCast& cast, K& k, const char* name) {
  unsigned char text[16] = {};
  if (name) {
    for (int i = 0; name[i] && i < 15; ++i) text[i] = static_cast<unsigned char>(name[i]);
  }
  const std::int16_t id = cast.New(name ? text : nullptr);
  EXPECT_GE(id, 0);
  EXPECT_EQ(id, cast.RegAColor(id, &k, KindOf<K>(), 10, name ? text : nullptr, &k));
  return id;
}

template <class K>
QvMCast* FirstStore(K& k, std::int16_t* id) {
  QvMCast* store = nullptr;
  QvMCastList& list = k;
  if (!list.Get(0, &store, id)) return nullptr;
  return store;
}

}  // namespace

template <class K>
class QvAColorMembers : public ::testing::Test {};
TYPED_TEST_SUITE(QvAColorMembers, Kinds);

TYPED_TEST(QvAColorMembers, UpdateWithoutMembersDoesNothing) {
  NoFailures guard;
  TypeParam k;
  QvFailAllocation(0);
  k.UpdateMCast();
  k.DelFromMCast();
  EXPECT_EQ(0, QvAllocationCount());
  std::int16_t id = -1;
  EXPECT_EQ(nullptr, FirstStore(k, &id));
}

TYPED_TEST(QvAColorMembers, SettingsReachCopiesOnlyThroughUpdate) {
  NoFailures guard;
  QvMCast cast;
  TypeParam k;
  const char kind = KindOf<TypeParam>();
  const std::int16_t named = Attach(cast, k, "lamp");
  const std::int16_t plain = Attach(cast, k, nullptr);
  std::int16_t id = -1;
  EXPECT_EQ(&cast, FirstStore(k, &id));
  EXPECT_EQ(named, id);

  QvAColor* before = CopyOf(cast, named, kind);
  ASSERT_NE(nullptr, before);
  EXPECT_EQ(30, before->Speed());
  // The speed does not pass itself on ...
  k.SetSpeed(15);
  EXPECT_EQ(before, CopyOf(cast, named, kind));
  EXPECT_EQ(30, CopyOf(cast, plain, kind)->Speed());
  // ... until the host asks for it.
  k.UpdateMCast();
  EXPECT_NE(before, CopyOf(cast, named, kind));
  EXPECT_EQ(15, CopyOf(cast, named, kind)->Speed());
  EXPECT_EQ(15, CopyOf(cast, plain, kind)->Speed());
  EXPECT_EQ("lamp", NameOf(cast, named));
  EXPECT_EQ("<none>", NameOf(cast, plain));
  EXPECT_EQ(10, cast.Start(named));

  // A new area is passed on at once.
  QvPal pal = RangePal(40, 41);
  ASSERT_EQ(1, k.RegArea(&pal));
  EXPECT_EQ(1, CopyOf(cast, named, kind)->AreaFlag(40));
  EXPECT_EQ(1, CopyOf(cast, plain, kind)->AreaFlag(41));
  EXPECT_EQ("lamp", NameOf(cast, named));
}

TYPED_TEST(QvAColorMembers, FailedRegAreaRenewsNothing) {
  NoFailures guard;
  QvMCast cast;
  TypeParam k;
  const std::int16_t id = Attach(cast, k, "m");
  QvAColor* before = CopyOf(cast, id, KindOf<TypeParam>());
  QvPal pal = RangePal(0, 3);
  QvFailAllocation(1);
  EXPECT_EQ(0, k.RegArea(&pal));
  QvFailAllocation(0);
  EXPECT_EQ(before, CopyOf(cast, id, KindOf<TypeParam>()));
}

TYPED_TEST(QvAColorMembers, DelFromMCastLeavesTheLastCopies) {
  NoFailures guard;
  QvMCast cast;
  TypeParam k;
  QvPal pal = RangePal(7, 8);
  ASSERT_EQ(1, k.RegArea(&pal));
  const std::int16_t id = Attach(cast, k, "m");
  k.SetSpeed(9);
  k.DelFromMCast();
  std::int16_t got = -1;
  EXPECT_EQ(nullptr, FirstStore(k, &got));
  QvAColor* last = CopyOf(cast, id, KindOf<TypeParam>());
  ASSERT_NE(nullptr, last);
  EXPECT_EQ(9, last->Speed());  // the last copy has the last settings
  EXPECT_EQ(1, last->AreaFlag(7));
  EXPECT_EQ("m", NameOf(cast, id));
  // The member no longer follows the animation.
  QvPal other = RangePal(100, 101);
  ASSERT_EQ(1, k.RegArea(&other));
  EXPECT_EQ(last, CopyOf(cast, id, KindOf<TypeParam>()));
  EXPECT_EQ(1, cast.DelAColor(id, KindOf<TypeParam>()));
}

TYPED_TEST(QvAColorMembers, DestructionDetachesTheMembers) {
  NoFailures guard;
  QvMCast cast;
  std::int16_t a = -1, b = -1;
  {
    TypeParam k;
    QvPal pal = RangePal(1, 2);
    ASSERT_EQ(1, k.RegArea(&pal));
    a = Attach(cast, k, "a");
    b = Attach(cast, k, "b");
    k.SetSpeed(12);
  }
  for (std::int16_t id : {a, b}) {
    QvAColor* copy = CopyOf(cast, id, KindOf<TypeParam>());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(12, copy->Speed());
    EXPECT_EQ(1, copy->AreaFlag(2));
    // Removing the copy touches no list of the destroyed animation.
    EXPECT_EQ(1, cast.DelAColor(id, KindOf<TypeParam>()));
  }
}

TEST(QvAColorMembersByKind, OperationsThatPassTheirChangeOn) {
  NoFailures guard;
  QvMCast cast;
  QvACycle cycle;
  QvAFade fade;
  QvAFlash flash;
  QvASwitch sw;
  const std::int16_t c = Attach(cast, cycle, "c");
  const std::int16_t f = Attach(cast, fade, "f");
  const std::int16_t l = Attach(cast, flash, "l");
  const std::int16_t s = Attach(cast, sw, "s");

  QvAColor* copy = cast.ACycle(c);
  cycle.SetMode(2);
  EXPECT_NE(copy, cast.ACycle(c));
  EXPECT_EQ(2, cast.ACycle(c)->Mode());

  // SetMode of the other kinds does not pass itself on.
  copy = cast.AFade(f);
  fade.SetMode(1);
  EXPECT_EQ(copy, cast.AFade(f));
  fade.RegColor(tbRGBColor(1, 2, 3));
  EXPECT_NE(copy, cast.AFade(f));
  copy = cast.AFade(f);
  fade.RegColor(65535, 0, 0);
  EXPECT_NE(copy, cast.AFade(f));
  copy = cast.AFade(f);
  fade.SetCount(7);
  EXPECT_NE(copy, cast.AFade(f));
  EXPECT_EQ(7, cast.AFade(f)->Count());
  EXPECT_EQ(1, cast.AFade(f)->Mode());

  copy = cast.AFlash(l);
  flash.SetMode(2);
  EXPECT_EQ(copy, cast.AFlash(l));

  copy = cast.ASwitch(s);
  sw.SetMode(2);
  EXPECT_EQ(copy, cast.ASwitch(s));
  tbColorTable t = GreyTable();
  ASSERT_EQ(1, sw.RegCTable(0, &t));
  EXPECT_NE(copy, cast.ASwitch(s));
  EXPECT_EQ(1, cast.ASwitch(s)->Count());
  ASSERT_EQ(1, sw.RegCTable(0, &t));
  copy = cast.ASwitch(s);
  QvFailAllocation(1);
  EXPECT_EQ(0, sw.RegCTable(0, &t));
  QvFailAllocation(1);
  EXPECT_EQ(0, sw.DelCTable(0));
  QvFailAllocation(0);
  EXPECT_EQ(copy, cast.ASwitch(s));  // failures renew nothing
  EXPECT_EQ(0, sw.DelCTable(5));
  EXPECT_EQ(copy, cast.ASwitch(s));
  ASSERT_EQ(1, sw.DelCTable(0));
  EXPECT_NE(copy, cast.ASwitch(s));
  EXPECT_EQ(1, cast.ASwitch(s)->Count());
}
