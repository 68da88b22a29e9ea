// Allocation-failure sweeps of the colour animations: construction, areas,
// tables, copies and the passing on of changes to the members that hold
// copies (from the colour level on).
#include <gtest/gtest.h>

#include "tests/reliability/Sweep.h"

namespace reliability {
namespace {

const char* const kKinds[4] = {"QvACycle", "QvAFlash", "QvASwitch", "QvAFade"};

template <class K>
void SweepConstructor(int kind) {
  Sweep(std::string(kKinds[kind]) + " constructor", [](Trial& t) {
    std::unique_ptr<K> a(t([] { return new K; }));
    tbColorTable src(static_cast<std::int16_t>(72));
    if (t.faulted) {
      // Without its output table the animation keeps its settings but never
      // computes a table.
      EXPECT_EQ(a->Error() & QvAColor::noCTableError, QvAColor::noCTableError);
      EXPECT_EQ(a->CTable(static_cast<std::int16_t>(0), &src), nullptr);
    } else {
      EXPECT_EQ(a->Error(), QvAColor::noAreaError);
    }
    QvPal pal;
    pal.SetRange(0, 7, 1);
    EXPECT_EQ(a->RegArea(&pal), 1);
    a->CTable(static_cast<std::int16_t>(0), &src);
  });
}

TEST(AColorSweep, Constructors) {
  SweepConstructor<QvACycle>(0);
  SweepConstructor<QvAFlash>(1);
  SweepConstructor<QvASwitch>(2);
  SweepConstructor<QvAFade>(3);
}

// The area's first registration on empty animations, a change of area on
// populated ones, and the passing on to members.
constexpr unsigned kAreaLevels = kEmpty | kPopulated | kColour;

TEST(AColorSweep, PerKind) {
  QvPal runs;
  runs.SetRange(1, 3, 1);
  runs.SetRange(10, 40, 1);
  runs.SetRange(200, 255, 1);
  for (int kind = 0; kind < 4; ++kind) {
    const std::string name = kKinds[kind];
    SweepOp(name + "::RegArea", kAreaLevels, [&runs, kind](Trial& t, Movie& m) {
      QvAColor* a = m.Colour(kind);
      const bool hadArea = a->Area() != nullptr;
      const char r = t([&] { return a->RegArea(&runs); });
      const bool failed = t.Failed(r == 0);
      EXPECT_FALSE(failed && hadArea) << "an existing area needs no allocation";
      EXPECT_EQ(r, failed ? 0 : 1);
      EXPECT_EQ(a->Area() == nullptr, failed);
      EXPECT_EQ(a->Error() & QvAColor::noAreaError, failed ? QvAColor::noAreaError : 0);
      EXPECT_TRUE(failed || a->AreaFlag(20) == 1);
    });
    SweepOp(name + "::UpdateMCast", kColour, [kind](Trial& t, Movie& m) {
      t([&] { m.OnColour(kind, [](auto& a) { a->UpdateMCast(); }); });
    });
    SweepOp(name + "::DelFromMCast", kColour, [kind](Trial& t, Movie& m) {
      t([&] { m.OnColour(kind, [](auto& a) { a->DelFromMCast(); }); });
    });
    SweepOp(name + " destructor", kColour, [kind](Trial& t, Movie& m) {
      t([&] { m.OnColour(kind, [](auto& a) { a.reset(); }); });
      // The members keep working copies.
      EXPECT_TRUE(t.faulted || m.cast->IsAColor(kColoured) == 1);
    });
  }
  SweepOp("QvACycle::RegArea ranges", kPopulated, [&runs](Trial& t, Movie& m) {
    EXPECT_EQ(t([&] { return m.cycle->RegArea(&runs); }), 1);
    EXPECT_EQ(m.cycle->Count(), 32767);
    int ranges = 0;
    for (QvACycleInfo* i = m.cycle->Ranges(); i; i = i->next) ++ranges;
    EXPECT_TRUE(ranges == 3 || (t.faulted && ranges < 3));
  });
}

TEST(AColorSweep, Changes) {
  SweepOp("QvACycle::SetMode", kColour,
          [](Trial& t, Movie& m) { t([&] { m.cycle->SetMode(1); }); });
  SweepOp("QvAFade::RegColor", kColour,
          [](Trial& t, Movie& m) { t([&] { m.fade->RegColor(tbRGBColor(1, 2, 3)); }); });
  SweepOp("QvAFade::RegColor 16-bit", kColour,
          [](Trial& t, Movie& m) { t([&] { m.fade->RegColor(0, 65535, 257); }); });
  SweepOp("QvAFade::SetCount", kColour, [](Trial& t, Movie& m) {
    t([&] { m.fade->SetCount(4); });
    EXPECT_EQ(m.fade->Count(), 4);
    EXPECT_TRUE(t.faulted || m.cast->AFade(kColoured)->Count() == 4);
  });
  SweepOp("QvASwitch::RegCTable", kAll, [](Trial& t, Movie& m) {
    const std::int16_t count = m.switcher->Count();
    tbColorTable table(m.table);
    const bool failed = t.Failed(t([&] { return m.switcher->RegCTable(0, &table); }) == 0);
    EXPECT_EQ(m.switcher->Count(), count + (failed ? 0 : 1));
  });
  for (std::int16_t index : {0, 1, -1}) {
    SweepOp("QvASwitch::DelCTable(" + std::to_string(index) + ")", kFromPopulated,
            [index](Trial& t, Movie& m) {
              const std::int16_t count = m.switcher->Count();
              const bool failed = t.Failed(t([&] { return m.switcher->DelCTable(index); }) == 0);
              EXPECT_EQ(m.switcher->Count(), failed ? count : index < 0 ? 0 : count - 1);
            });
  }
}

TEST(AColorSweep, Dup) {
  SweepOp("QvACycle::Dup", kAreaLevels, [](Trial& t, Movie& m) {
    QvACycle other;
    t([&] { m.cycle->Dup(&other); });
    EXPECT_TRUE(t.faulted || !m.cycle->Area() || other.Count() == m.cycle->Count());
  });
  SweepOp("QvAFlash::Dup", kAreaLevels, [](Trial& t, Movie& m) {
    QvAFlash other;
    t([&] { m.flash->Dup(&other); });
    EXPECT_TRUE(t.faulted || !m.flash->Area() || other.Error() == m.flash->Error());
  });
  SweepOp("QvASwitch::Dup", kAreaLevels, [](Trial& t, Movie& m) {
    SwitchProbe other;
    tbColorTable table(m.table);
    other.RegCTable(-1, &table);
    t([&] { m.switcher->Dup(&other); });
    EXPECT_EQ(other.Count(), other.TableCount());
    EXPECT_EQ(other.End(), other.Count() - 1);
    EXPECT_TRUE(t.faulted || other.Count() == m.switcher->Count());
  });
  SweepOp("QvAFade::Dup", kAreaLevels, [](Trial& t, Movie& m) {
    QvAFade other;
    t([&] { m.fade->Dup(&other); });
    EXPECT_EQ(other.Count(), m.fade->Count());
  });
  // Copying into the host's animation passes the change on to the members.
  SweepOp("QvASwitch::Dup into an animation with members", kColour, [](Trial& t, Movie& m) {
    QvASwitch src;
    QvPal pal;
    pal.SetRange(0, 100, 1);
    src.RegArea(&pal);
    tbColorTable table(m.table);
    for (int i = 0; i < 3; ++i) src.RegCTable(-1, &table);
    t([&] { src.Dup(m.switcher.get()); });
    EXPECT_EQ(m.switcher->Count(), m.switcher->TableCount());
  });
}

}  // namespace
}  // namespace reliability
