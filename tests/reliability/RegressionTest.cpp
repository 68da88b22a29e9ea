// Regression tests of faults found by the API fuzzer; each test names what
// failed and the input that showed it. Faults found by the allocation-failure
// sweeps stay held by the sweeps themselves.
#include <gtest/gtest.h>

#include <memory>

#include "cast/QvMCastDft.h"
#include "tests/reliability/Sweep.h"

namespace reliability {
namespace {

// Found by the API fuzzer (input: New(-1), Lock(-1), RegAFrame(0, anim,
// list anim), destroy anim, then the store): the member with id -1 was
// entered in the animation's list, whose walk could not reach it (a negative
// id makes a new member), so after the animation was gone the member's
// removal called into freed memory in QvMCast::DelAFrame.
TEST(Regression, MemberWithNegativeIdIsNotEnteredInAList) {
  auto anim = std::make_unique<QvAFrame>();
  ASSERT_EQ(anim->Reg(-1, 0, 0, 4, 4, 2, 2, 3), 0);
  CastProbe store;
  ASSERT_EQ(store.New(-1, nullptr), 1);
  store.Lock(-1);
  store.RegAFrame(0, anim.get(), 0, nullptr, anim.get());  // acts on the locked member
  store.Unlock();
  ASSERT_NE(store.AFrame(-1), nullptr);  // the member holds its copy
  EXPECT_EQ(casttest::ListSize(*anim, &store, -1), 0);
  EXPECT_EQ(store.Rec(-1)->lists[4], nullptr);
  anim.reset();
  EXPECT_EQ(store.DelAFrame(-1), 1);
  EXPECT_EQ(store.Count(), 1);  // the animation's walk made no member
}

// Found by the API fuzzer: a registration for a negative id makes its member
// with the store's next id, which replaces a member that was given that id
// explicitly; when the source was that member's own copy (or entries), it
// was read after being freed. The copies are now made first.
TEST(Regression, RegistrationFromTheMemberItsNewMemberReplaces) {
  QvAFrame anim;
  ASSERT_EQ(anim.Reg(-1, 0, 0, 4, 4, 2, 2, 3), 0);
  QvAFade fade;
  QvMCastDft entries[2];
  entries[1].pointA = tbPoint(7, 8);
  CastProbe store;
  const std::int16_t zero = 0;
  ASSERT_EQ(store.New(0, nullptr), 1);  // id 0 given explicitly: the next id is still 0
  store.RegAFrame(0, &anim, 0, nullptr, nullptr);
  store.RegAColor(0, &fade, QvAColor::kFade, 0, nullptr, nullptr);
  store.RegDft(0, 1, entries, 2, 0, nullptr, nullptr);

  EXPECT_EQ(store.RegAFrame(-1, store.AFrame(zero), 0, nullptr, nullptr), 0);
  ASSERT_NE(store.AFrame(zero), nullptr);
  EXPECT_EQ(store.AFrame(zero)->CountMFrame(), 3);
  store.New(0, nullptr);
  store.RegAColor(0, &fade, QvAColor::kFade, 0, nullptr, nullptr);
  EXPECT_EQ(store.RegAColor(-1, store.AFade(zero), QvAColor::kFade, 0, nullptr, nullptr), 0);
  EXPECT_NE(store.AFade(zero), nullptr);
  store.New(0, nullptr);
  store.RegDft(0, 1, entries, 2, 0, nullptr, nullptr);
  QvMCastDft* own = nullptr;
  std::int16_t count = 0;
  ASSERT_EQ(store.GetDft(zero, nullptr, &own, &count, nullptr), 1);
  EXPECT_EQ(store.RegDft(-1, 1, own, count, 0, nullptr, nullptr), 0);
  ASSERT_EQ(store.GetDft(zero, nullptr, &own, &count, nullptr), 1);
  EXPECT_EQ(own[1].pointA, tbPoint(7, 8));
  EXPECT_EQ(store.Count(), 1);
}

}  // namespace
}  // namespace reliability
