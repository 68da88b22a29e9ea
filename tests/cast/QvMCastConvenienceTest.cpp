// The conveniences beside the cast store's interface: ids of any integral
// type (a literal 0 included, which also converts to the protected record
// twins' pointer), const char* names, and anchor lookups whose names say
// whether they take an index or a time.

#include <type_traits>
#include <utility>

#include "CastTestSupport.h"

namespace {

using namespace casttest;

// Whether cast.AFrame(x) compiles from outside the class (neither ambiguous
// nor protected), for an argument of type T.
template <class T, class = void>
struct CanAFrame : std::false_type {};
template <class T>
struct CanAFrame<T, std::void_t<decltype(std::declval<QvMCast&>().AFrame(std::declval<T>()))>>
    : std::true_type {};
static_assert(CanAFrame<int>::value && CanAFrame<long>::value && CanAFrame<std::size_t>::value &&
              CanAFrame<std::int16_t>::value && CanAFrame<char>::value);
static_assert(!CanAFrame<std::nullptr_t>::value && !CanAFrame<QvMCastInfo*>::value,
              "the record twin stays protected");

TEST_F(CastTest, LiteralZeroIdsAndCharNamesMeanTheIdAndTheName) {
  auto walk = MakeAnim({2, 3});
  auto fade = MakeFade();
  tbColorTable grey = GreyTable();
  QvMCastAnc anchors[10];
  for (int i = 0; i < 10; ++i) anchors[i].point = tbPoint(i, 2 * i);
  QvMCastDft dft[2];
  char dirs = 0;
  QvMCast other;
  EXPECT_EQ((Vals{cast.New("one"), cast.New(0, "zero"),
                  cast.RegAFrame(0, walk.get(), 0, "walk", walk.get()),
                  cast.RegOrgCTable(0, &grey, nullptr, "table"),
                  cast.RegAColor(0, fade.get(), 3, 0, "fade", fade.get()),
                  cast.RegAnc(0, anchors, 10, QvMCast::kAncClamp, "path"),
                  cast.RegDft(0, 7, dft, 2, 1, "dft", nullptr),
                  cast.RegScroll(0, QvMCast::kScrollLeft | QvMCast::kScrollUp, "scroll"),
                  cast.Dup(0, 50, "copy", &other, QvMCast::kNewId)}),
            (Vals{0, 1, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(NameOf(cast, 0) + NameOf(other, 0), "scrollcopy");
  EXPECT_EQ((Vals{cast.SetName(0, "renamed"), cast.AFrame(0) == cast.AFrame(S(0)),
                  cast.AFrame(0) != nullptr, cast.AFade(0) == cast.AFade(S(0))}),
            (Vals{1, 1, 1, 1}));
  EXPECT_EQ(NameOf(cast, 0), "renamed");
  EXPECT_EQ(cast.ActFlag(0), QvMCast::kAttachFade | QvMCast::kAttachAFrame |
                                 QvMCast::kAttachDftAnc | QvMCast::kAttachScrollLeft |
                                 QvMCast::kAttachScrollUp);
  EXPECT_EQ((Vals{cast.IsScroll(0, &dirs), dirs, cast.IsScrollLeft(0), cast.IsScrollDown(0),
                  cast.IsAnc(0), cast.IsDft(0), cast.IsAColor(0), cast.ACycle(0) == nullptr}),
            (Vals{1, QvMCast::kScrollLeft | QvMCast::kScrollUp, 1, 0, 1, 1, 1, 1}));
  EXPECT_EQ((Vals{cast.SetStartEnd(0, 0, 10), cast.Start(0), cast.End(0)}), (Vals{1, 0, 10}));
  std::int16_t offset = -1;
  EXPECT_EQ((Vals{cast.SetAncOffset(S(0), S(3)), cast.SetAncOffset(S(0), 0),
                  cast.GetAncOffset(0, &offset), offset}),
            (Vals{1, 1, 1, 0}));
  EXPECT_EQ((Vals{cast.SetActFlag(0, QvMCast::kAttachAll), cast.DelScroll(0, QvMCast::kScrollAll),
                  cast.DelDft(0), cast.DelAnc(0), cast.DelAColor(0, 3), cast.DelOrgCTable(0),
                  cast.DelAFrame(0), cast.ActFlag(0), cast.Save(0, 0)}),
            (Vals{1, 1, 1, 1, 1, 1, 1, 0, 0}));
  const long id = 0;  // other integral types mean the id too
  EXPECT_EQ(other.AFrame(id), other.AFrame(S(0)));
  EXPECT_NE(other.AFrame(id), nullptr);
}

TEST_F(CastTest, AnchorLookupsByIndexAndByTimeHaveTheirOwnNames) {
  QvMCastAnc anchors[5];
  for (int i = 0; i < 5; ++i) anchors[i] = {tbPoint(10 * i, 0), QvMCastAnc::kKey};
  ASSERT_EQ(cast.RegAnc(QvMCast::kNewId, anchors, 5, QvMCast::kAncWrap, "path"), 0);
  ASSERT_EQ(cast.SetStartEnd(0, 100, 199), 1);
  ASSERT_EQ(cast.SetAncStep(0, 1.0), 1);
  tbPoint p;
  char f = 0;
  for (int i = 0; i < 5; ++i) {  // an int index is an index here, not a time
    ASSERT_EQ(cast.GetAncAt(0, i, &p, &f), 1);
    EXPECT_EQ((Vals{p.x, f}), (Vals{10 * i, QvMCastAnc::kKey}));
  }
  EXPECT_EQ(cast.GetAncAt(0, 5, &p, &f), 0);
  // By time: 103 is anchor 3; 107 wraps to anchor 2.
  EXPECT_EQ((Vals{cast.GetAncAtTime(0, 103, &p, &f), p.x, cast.GetAncAtTime(0, 107, &p, &f), p.x,
                  cast.GetAncAtTime(0, 3, &p, &f)}),
            (Vals{1, 30, 1, 20, 0}));
  // GetAnc itself takes an int (a std::int32_t) as a time: 3 lies outside the range.
  EXPECT_EQ((Vals{cast.GetAnc(S(0), 3, &p, &f), cast.GetAncAt(0, 3, &p, &f)}), (Vals{0, 1}));
}

}  // namespace
