// Allocation-failure sweeps of the colour animations: construction, areas,
// tables, copies and the passing on of changes to the members that hold
// copies (from the colour level on).
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/reliability/Movie.h"
#include "tests/reliability/Sweep.h"

namespace reliability {
namespace {

template <class K>
void SweepConstructor(const char* name) {
  Sweep(std::string(name) + " constructor", [name](int k) {
    std::unique_ptr<K> a;
    const int n = Inject(k, [&] { a.reset(new K); });
    const std::string where = std::string(name) + " k=" + std::to_string(k);
    tbColorTable src(static_cast<std::int16_t>(72));
    if (Faulted(k, n)) {
      // Without its output table the animation keeps its settings but never
      // computes a table.
      EXPECT_EQ(a->Error() & QvAColor::noCTableError, QvAColor::noCTableError) << where;
      EXPECT_EQ(a->CTable(static_cast<std::int16_t>(0), &src), nullptr) << where;
    } else {
      EXPECT_EQ(a->Error(), QvAColor::noAreaError) << where;
    }
    QvPal pal;
    pal.SetRange(0, 7, 1);
    EXPECT_EQ(a->RegArea(&pal), 1) << where;
    a->CTable(static_cast<std::int16_t>(0), &src);
    return n;
  });
}

TEST(AColorSweep, Constructors) {
  SweepConstructor<QvACycle>("QvACycle");
  SweepConstructor<QvAFlash>("QvAFlash");
  SweepConstructor<QvASwitch>("QvASwitch");
  SweepConstructor<QvAFade>("QvAFade");
}

// Levels: the area's first registration on empty animations, a change of
// area on populated ones, and the passing on to members.
const std::vector<Level> kAreaLevels = {Level::kEmpty, Level::kPopulated, Level::kColour};

TEST(AColorSweep, RegArea) {
  QvPal runs;
  runs.SetRange(1, 3, 1);
  runs.SetRange(10, 40, 1);
  runs.SetRange(200, 255, 1);
  struct Kind {
    const char* name;
    std::function<QvAColor*(Movie&)> anim;
  };
  const std::vector<Kind> kinds = {
      {"QvACycle::RegArea", [](Movie& m) -> QvAColor* { return m.cycle.get(); }},
      {"QvAFlash::RegArea", [](Movie& m) -> QvAColor* { return m.flash.get(); }},
      {"QvASwitch::RegArea", [](Movie& m) -> QvAColor* { return m.switcher.get(); }},
      {"QvAFade::RegArea", [](Movie& m) -> QvAColor* { return m.fade.get(); }},
  };
  for (const Kind& kind : kinds) {
    SweepMovie(kind.name, kAreaLevels, [&](Movie& m, int k, const std::string& where) {
      QvAColor* a = kind.anim(m);
      const bool hadArea = a->Area() != nullptr;
      char r = 0;
      const int n = Inject(k, [&] { r = a->RegArea(&runs); });
      if (r == 0) {
        EXPECT_TRUE(Faulted(k, n)) << where;
        EXPECT_FALSE(hadArea) << where << ": an existing area needs no allocation";
        EXPECT_EQ(a->Error() & QvAColor::noAreaError, QvAColor::noAreaError) << where;
        EXPECT_EQ(a->Area(), nullptr) << where;
      } else {
        EXPECT_EQ(r, 1) << where;
        EXPECT_EQ(a->AreaFlag(20), 1) << where;
        EXPECT_EQ(a->Error() & QvAColor::noAreaError, 0) << where;
      }
      return n;
    });
  }
  SweepMovie("QvACycle::RegArea ranges", {Level::kPopulated},
             [&](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.cycle->RegArea(&runs); });
               EXPECT_EQ(r, 1) << where;
               EXPECT_EQ(m.cycle->Count(), 32767) << where;
               int ranges = 0;
               for (QvACycleInfo* i = m.cycle->Ranges(); i; i = i->next) ++ranges;
               EXPECT_TRUE(ranges == 3 || Faulted(k, n)) << where;
               EXPECT_LE(ranges, 3) << where;
               return n;
             });
}

TEST(AColorSweep, Changes) {
  SweepMovie("QvACycle::SetMode", {Level::kColour}, [](Movie& m, int k, const std::string&) {
    return Inject(k, [&] { m.cycle->SetMode(1); });
  });
  SweepMovie("QvAFade::RegColor", {Level::kColour}, [](Movie& m, int k, const std::string&) {
    return Inject(k, [&] { m.fade->RegColor(tbRGBColor(1, 2, 3)); });
  });
  SweepMovie("QvAFade::RegColor 16-bit", {Level::kColour}, [](Movie& m, int k, const std::string&) {
    return Inject(k, [&] { m.fade->RegColor(0, 65535, 257); });
  });
  SweepMovie("QvAFade::SetCount", {Level::kColour}, [](Movie& m, int k, const std::string& where) {
    const int n = Inject(k, [&] { m.fade->SetCount(4); });
    EXPECT_EQ(m.fade->Count(), 4) << where;
    if (!Faulted(k, n)) {
      EXPECT_EQ(m.cast->AFade(kColoured)->Count(), 4) << where;
    }
    return n;
  });
  for (const char* kind : {"QvACycle", "QvAFlash", "QvASwitch", "QvAFade"}) {
    const std::string name = kind;
    SweepMovie(name + "::UpdateMCast", {Level::kColour},
               [name](Movie& m, int k, const std::string&) {
                 return Inject(k, [&] {
                   if (name == "QvACycle") m.cycle->UpdateMCast();
                   if (name == "QvAFlash") m.flash->UpdateMCast();
                   if (name == "QvASwitch") m.switcher->UpdateMCast();
                   if (name == "QvAFade") m.fade->UpdateMCast();
                 });
               });
    SweepMovie(name + "::DelFromMCast", {Level::kColour},
               [name](Movie& m, int k, const std::string&) {
                 return Inject(k, [&] {
                   if (name == "QvACycle") m.cycle->DelFromMCast();
                   if (name == "QvAFlash") m.flash->DelFromMCast();
                   if (name == "QvASwitch") m.switcher->DelFromMCast();
                   if (name == "QvAFade") m.fade->DelFromMCast();
                 });
               });
    SweepMovie(name + " destructor", {Level::kColour},
               [name](Movie& m, int k, const std::string& where) {
                 const int n = Inject(k, [&] {
                   if (name == "QvACycle") m.cycle.reset();
                   if (name == "QvAFlash") m.flash.reset();
                   if (name == "QvASwitch") m.switcher.reset();
                   if (name == "QvAFade") m.fade.reset();
                 });
                 // The members keep working copies.
                 if (!Faulted(k, n)) {
                   EXPECT_EQ(m.cast->IsAColor(kColoured), 1) << where;
                 }
                 return n;
               });
  }
}

TEST(AColorSweep, SwitchTables) {
  SweepMovie("QvASwitch::RegCTable", AllLevels(), [](Movie& m, int k, const std::string& where) {
    const std::int16_t count = m.switcher->Count();
    tbColorTable t(m.table);
    char r = 0;
    const int n = Inject(k, [&] { r = m.switcher->RegCTable(0, &t); });
    if (r == 0) {
      EXPECT_TRUE(Faulted(k, n)) << where;
      EXPECT_EQ(m.switcher->Count(), count) << where;
    } else {
      EXPECT_EQ(m.switcher->Count(), count + 1) << where;
    }
    return n;
  });
  for (std::int16_t index : {0, 1, -1}) {
    SweepMovie("QvASwitch::DelCTable(" + std::to_string(index) + ")", LevelsFrom(Level::kPopulated),
               [index](Movie& m, int k, const std::string& where) {
                 const std::int16_t count = m.switcher->Count();
                 char r = 0;
                 const int n = Inject(k, [&] { r = m.switcher->DelCTable(index); });
                 if (r == 0) {
                   EXPECT_TRUE(Faulted(k, n)) << where;
                   EXPECT_EQ(m.switcher->Count(), count) << where;
                 } else {
                   EXPECT_EQ(m.switcher->Count(), index < 0 ? 0 : count - 1) << where;
                 }
                 return n;
               });
  }
}

TEST(AColorSweep, Dup) {
  SweepMovie("QvACycle::Dup", kAreaLevels, [](Movie& m, int k, const std::string& where) {
    QvACycle other;
    const int n = Inject(k, [&] { m.cycle->Dup(&other); });
    if (!Faulted(k, n) && m.cycle->Area()) {
      EXPECT_EQ(other.Count(), m.cycle->Count()) << where;
    }
    return n;
  });
  SweepMovie("QvAFlash::Dup", kAreaLevels, [](Movie& m, int k, const std::string& where) {
    QvAFlash other;
    const int n = Inject(k, [&] { m.flash->Dup(&other); });
    if (!Faulted(k, n) && m.flash->Area()) {
      EXPECT_EQ(other.Error(), m.flash->Error()) << where;
    }
    return n;
  });
  SweepMovie("QvASwitch::Dup", kAreaLevels, [](Movie& m, int k, const std::string& where) {
    SwitchProbe other;
    tbColorTable t(m.table);
    other.RegCTable(-1, &t);
    const int n = Inject(k, [&] { m.switcher->Dup(&other); });
    EXPECT_EQ(other.Count(), other.TableCount()) << where;
    EXPECT_EQ(other.End(), other.Count() - 1) << where;
    if (!Faulted(k, n)) {
      EXPECT_EQ(other.Count(), m.switcher->Count()) << where;
    }
    return n;
  });
  SweepMovie("QvAFade::Dup", kAreaLevels, [](Movie& m, int k, const std::string& where) {
    QvAFade other;
    const int n = Inject(k, [&] { m.fade->Dup(&other); });
    EXPECT_EQ(other.Count(), m.fade->Count()) << where;
    return n;
  });
  // Copying into the host's animations passes the change on to the members.
  SweepMovie("QvASwitch::Dup into an animation with members", {Level::kColour},
             [](Movie& m, int k, const std::string& where) {
               QvASwitch src;
               QvPal pal;
               pal.SetRange(0, 100, 1);
               src.RegArea(&pal);
               tbColorTable t(m.table);
               src.RegCTable(-1, &t);
               src.RegCTable(-1, &t);
               src.RegCTable(-1, &t);
               const int n = Inject(k, [&] { src.Dup(m.switcher.get()); });
               EXPECT_EQ(m.switcher->Count(), m.switcher->TableCount()) << where;
               return n;
             });
}

}  // namespace
}  // namespace reliability
