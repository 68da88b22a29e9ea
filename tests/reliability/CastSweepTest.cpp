// Allocation-failure sweeps of the cast store's allocating operations.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "tests/reliability/Movie.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

// The member's name as text; "<none>" without a name, "<absent>" without
// the member.
std::string NameOf(QvMCast& cast, std::int16_t id) {
  unsigned char** h = nullptr;
  if (!cast.GetName(id, &h)) return "<absent>";
  if (!h) return "<none>";
  std::string s(reinterpret_cast<const char*>(*h));
  QvFreeString(h);
  return s;
}

// A registration's name is set unless its allocation failed.
void ExpectName(QvMCast& cast, std::int16_t id, const char* name, bool faulted,
                const std::string& where) {
  const std::string got = NameOf(cast, id);
  if (faulted) {
    EXPECT_TRUE(got == name || got == "<none>") << where << ": name " << got;
  } else {
    EXPECT_EQ(got, name) << where;
  }
}

std::int16_t FrameCount(QvAFrame* a) { return a ? a->CountAFrame() : -1; }

TEST(CastSweep, NewWithId) {
  SweepMovie("QvMCast::New(id, name) replacing", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               const std::int16_t count = m.cast->Count();
               Text name("again");
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->New(kPlain, name); });
               const bool f = Faulted(k, n);
               if (r == 0) {
                 EXPECT_TRUE(f) << where;
                 // The deletion of the old member stands.
                 EXPECT_EQ(m.cast->ID2Index(kPlain), -1) << where;
                 EXPECT_EQ(m.cast->Count(), count - 1) << where;
               } else {
                 EXPECT_EQ(r, 1) << where;
                 EXPECT_EQ(m.cast->ID2Index(kPlain), count - 1) << where;
                 EXPECT_EQ(m.cast->Start(kPlain), -1) << where;
                 ExpectName(*m.cast, kPlain, "again", f, where);
               }
               return n;
             });
  SweepMovie("QvMCast::New(id, name) fresh", {Level::kEmpty, Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               const std::int16_t count = m.cast->Count();
               Text name("seven");
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->New(7, name); });
               const bool f = Faulted(k, n);
               EXPECT_TRUE(r == 1 || f) << where;
               EXPECT_EQ(m.cast->Count(), count + (r == 1 ? 1 : 0)) << where;
               if (r == 1) ExpectName(*m.cast, 7, "seven", f, where);
               return n;
             });
}

TEST(CastSweep, NewAutomaticId) {
  SweepMovie("QvMCast::New(name)", AllLevels(), [](Movie& m, int k, const std::string& where) {
    const std::int16_t count = m.cast->Count();
    const std::int16_t next = m.cast->GetNewID();
    Text name("auto");
    std::int16_t r = 0;
    const int n = Inject(k, [&] { r = m.cast->New(name); });
    if (r == -1) {
      EXPECT_TRUE(Faulted(k, n)) << where;
      EXPECT_EQ(m.cast->GetNewID(), next) << where;
    } else {
      EXPECT_EQ(r, next) << where;
      EXPECT_EQ(m.cast->GetNewID(), next + 1) << where;
      EXPECT_EQ(m.cast->ID2Index(r), m.cast->Count() - 1) << where;
      ExpectName(*m.cast, r, "auto", Faulted(k, n), where);
    }
    // New(name) replaces a member that has the id already (kPlain is 0).
    EXPECT_LE(m.cast->Count(), count + 1) << where;
    return n;
  });
}

TEST(CastSweep, Names) {
  SweepMovie("QvMCast::SetName", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               Text name("renamed");
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->SetName(kPath, name); });
               EXPECT_EQ(r, 1) << where;
               ExpectName(*m.cast, kPath, "renamed", Faulted(k, n), where);
               return n;
             });
  SweepMovie("QvMCast::GetName", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               unsigned char** h = nullptr;
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->GetName(kPath, &h); });
               if (Faulted(k, n)) {
                 // Out of memory is reported as a failure, with no handle.
                 EXPECT_TRUE(r == 0 || r == 1) << where;
                 EXPECT_EQ(h, nullptr) << where << ": a handle from a failed copy";
               } else {
                 EXPECT_EQ(r, 1) << where;
                 EXPECT_NE(h, nullptr) << where;
                 if (h) {
                   EXPECT_STREQ(reinterpret_cast<const char*>(*h), "path") << where;
                 }
               }
               QvFreeString(h);
               return n;
             });
}

TEST(CastSweep, RegAFrame) {
  SweepMovie(
      "QvMCast::RegAFrame new member", AllLevels(), [](Movie& m, int k, const std::string& where) {
        const std::int16_t count = m.cast->Count();
        // New(name) first deletes a member that has the id it hands out.
        const bool replaces = m.cast->ID2Index(m.cast->GetNewID()) >= 0;
        Text name("fresh");
        std::int16_t r = 0;
        const int n =
            Inject(k, [&] { r = m.cast->RegAFrame(-1, m.frame.get(), 5, name, m.frame.get()); });
        const bool f = Faulted(k, n);
        if (r == -1) {
          EXPECT_TRUE(f) << where;
          EXPECT_EQ(m.cast->Count(), count - (replaces ? 1 : 0)) << where;
        } else {
          EXPECT_GE(r, 0) << where;
          EXPECT_GE(m.cast->ID2Index(r), 0) << where;
          if (!f) {
            EXPECT_EQ(FrameCount(m.cast->AFrame(r)), m.frame->CountAFrame()) << where;
            EXPECT_EQ(m.cast->Start(r), 5) << where;
          }
        }
        return n;
      });
  SweepMovie("QvMCast::RegAFrame existing member", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               Text name("framed");
               std::int16_t r = 0;
               const int n = Inject(k, [&] {
                 r = m.cast->RegAFrame(kFramed, m.frame.get(), 5, name, m.frame.get());
               });
               EXPECT_EQ(r, kFramed) << where;
               EXPECT_EQ(m.cast->Start(kFramed), 20) << where << ": range kept";
               if (!Faulted(k, n)) {
                 EXPECT_EQ(FrameCount(m.cast->AFrame(kFramed)), 3) << where;
               }
               return n;
             });
  SweepMovie("QvMCast::RegAFrame member with a path", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               Text name("path");
               std::int16_t r = 0;
               const int n = Inject(
                   k, [&] { r = m.cast->RegAFrame(kPath, m.frame.get(), 5, name, m.frame.get()); });
               EXPECT_EQ(r, kPath) << where;
               return n;
             });
}

TEST(CastSweep, RegOrgCTable) {
  SweepMovie("QvMCast::RegOrgCTable existing member", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               Text name("framed");
               std::int16_t r = 0;
               const int n =
                   Inject(k, [&] { r = m.cast->RegOrgCTable(kFramed, &m.table, &m.pal, name); });
               if (r == -1) {
                 EXPECT_TRUE(Faulted(k, n)) << where;
               } else {
                 EXPECT_EQ(r, kFramed) << where;
                 if (!Faulted(k, n)) {
                   EXPECT_NE(m.cast->CTable(kFramed, 20), nullptr) << where;
                 }
               }
               return n;
             });
  SweepMovie("QvMCast::RegOrgCTable new member", {Level::kEmpty, Level::kColour},
             [](Movie& m, int k, const std::string& where) {
               const std::int16_t count = m.cast->Count();
               Text name("swatch");
               std::int16_t r = 0;
               const int n =
                   Inject(k, [&] { r = m.cast->RegOrgCTable(-1, &m.table, &m.pal, name); });
               EXPECT_TRUE(r >= 0 || Faulted(k, n)) << where;
               EXPECT_LE(m.cast->Count(), count + 1) << where;
               return n;
             });
}

TEST(CastSweep, RegDftScrollAnc) {
  SweepMovie("QvMCast::RegDft", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               QvMCastDft dft[5];
               for (int i = 0; i < 5; ++i) dft[i].pointB = tbPoint(i, -i);
               Text name("path");
               std::int16_t r = 0;
               const int n =
                   Inject(k, [&] { r = m.cast->RegDft(kPath, 3, dft, 5, 0, name, nullptr); });
               EXPECT_EQ(r, kPath) << where;
               std::int16_t param = 0, count = 0;
               QvMCastDft* entries = nullptr;
               char flag = 0;
               if (m.cast->GetDft(kPath, &param, &entries, &count, &flag)) {
                 EXPECT_EQ(count, 5) << where;
                 EXPECT_EQ(entries[4].pointB, tbPoint(4, -4)) << where;
               } else {
                 EXPECT_TRUE(Faulted(k, n)) << where << ": entries lost without a fault";
               }
               return n;
             });
  SweepMovie("QvMCast::RegDft new member", {Level::kEmpty, Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               QvMCastDft dft[2];
               Text name("dft");
               std::int16_t r = 0;
               const int n =
                   Inject(k, [&] { r = m.cast->RegDft(-1, 1, dft, 2, 1, name, nullptr); });
               EXPECT_TRUE(r >= 0 || Faulted(k, n)) << where;
               return n;
             });
  SweepMovie("QvMCast::RegScroll new member", {Level::kEmpty, Level::kPopulated},
             [](Movie& m, int k, const std::string& where) {
               Text name("scroll");
               std::int16_t r = 0;
               const int n = Inject(k, [&] { r = m.cast->RegScroll(-1, 2 | 4, name); });
               EXPECT_TRUE(r >= 0 || Faulted(k, n)) << where;
               if (r >= 0) {
                 EXPECT_EQ(m.cast->IsScrollRight(r), 1) << where;
               }
               return n;
             });
  SweepMovie("QvMCast::RegScroll", {Level::kPopulated},
             [](Movie& m, int k, const std::string& where) {
               Text name("plain");
               std::int16_t r = 0;
               const int n = Inject(k, [&] { r = m.cast->RegScroll(kPlain, 1, name); });
               EXPECT_EQ(r, kPlain) << where;
               EXPECT_EQ(m.cast->IsScrollLeft(kPlain), 1) << where;
               return n;
             });
  SweepMovie("QvMCast::RegAnc", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               QvMCastAnc anc[8];
               for (int i = 0; i < 8; ++i) anc[i].point = tbPoint(i, 2 * i);
               Text name("path");
               std::int16_t r = 0;
               const int n = Inject(k, [&] { r = m.cast->RegAnc(kPath, anc, 8, 1, name); });
               EXPECT_EQ(r, kPath) << where;
               std::int16_t num = 0;
               EXPECT_EQ(m.cast->GetAncNum(kPath, &num), 1) << where;
               if (m.cast->IsAnc(kPath)) {
                 EXPECT_EQ(num, 8) << where;
               } else {
                 EXPECT_TRUE(Faulted(k, n)) << where;
                 EXPECT_EQ(num, 1) << where;
               }
               return n;
             });
  SweepMovie("QvMCast::RegAnc new member", {Level::kEmpty, Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               QvMCastAnc anc[3];
               Text name("anc");
               std::int16_t r = 0;
               const int n = Inject(k, [&] { r = m.cast->RegAnc(-1, anc, 3, 2, name); });
               EXPECT_TRUE(r >= 0 || Faulted(k, n)) << where;
               return n;
             });
}

TEST(CastSweep, AnchorPaths) {
  SweepMovie("QvMCast::ResetAnc", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->ResetAnc(kPath); });
               EXPECT_EQ(r, 1) << where;
               double step = 0;
               m.cast->GetAncStep(kPath, &step);
               EXPECT_EQ(step, 1.0) << where;
               std::int16_t num = 0;
               m.cast->GetAncNum(kPath, &num);
               if (m.cast->IsAnc(kPath)) {
                 EXPECT_EQ(num, 20) << where;
               } else {
                 EXPECT_TRUE(Faulted(k, n)) << where << ": path dropped without a fault";
               }
               return n;
             });
  SweepMovie("QvMCast::InbetweenAnc", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->InbetweenAnc(kPath, 0); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               // A later in-betweening works on what is left.
               m.cast->SetAncSelectArea(kPath, 0, 5);
               if (m.cast->IsAnc(kPath)) {
                 EXPECT_EQ(m.cast->InbetweenAnc(kPath, 1), 1) << where;
               }
               return n;
             });
}

TEST(CastSweep, RegAColor) {
  for (char kind = 0; kind < 4; ++kind) {
    SweepMovie(
        "QvMCast::RegAColor kind " + std::to_string(kind), LevelsFrom(Level::kImages),
        [kind](Movie& m, int k, const std::string& where) {
          QvAColor* anims[4] = {m.cycle.get(), m.flash.get(), m.switcher.get(), m.fade.get()};
          QvMCastList* lists[4] = {m.cycle.get(), m.flash.get(), m.switcher.get(), m.fade.get()};
          Text name("framed");
          std::int16_t r = 0;
          const int n = Inject(k, [&] {
            r = m.cast->RegAColor(kFramed, anims[static_cast<int>(kind)], kind, 0, name,
                                  lists[static_cast<int>(kind)]);
          });
          EXPECT_EQ(r, kFramed) << where;
          QvAColor* copy = kind == 0   ? m.cast->ACycle(kFramed)
                           : kind == 1 ? m.cast->AFlash(kFramed)
                           : kind == 2 ? m.cast->ASwitch(kFramed)
                                       : m.cast->AFade(kFramed);
          if (!Faulted(k, n)) {
            EXPECT_NE(copy, nullptr) << where;
          }
          // A copy whose own registrations failed may be partial; a copy
          // made without a fault has all the frames.
          if (copy && !Faulted(k, n)) {
            EXPECT_EQ(copy->Count(), anims[static_cast<int>(kind)]->Count()) << where;
          }
          return n;
        });
  }
  SweepMovie("QvMCast::RegAColor new member", {Level::kEmpty, Level::kColour},
             [](Movie& m, int k, const std::string& where) {
               Text name("fading");
               std::int16_t r = 0;
               const int n = Inject(
                   k, [&] { r = m.cast->RegAColor(-1, m.fade.get(), 3, 100, name, m.fade.get()); });
               EXPECT_TRUE(r >= 0 || Faulted(k, n)) << where;
               if (r >= 0 && m.cast->AFade(r)) {
                 EXPECT_EQ(m.cast->Start(r), 100) << where;
               }
               return n;
             });
}

TEST(CastSweep, Drawing) {
  SweepMovie("QvMCast::DrawPicture with colour animations", LevelsFrom(Level::kColour),
             [](Movie& m, int k, const std::string& where) {
               Canvas canvas(64, 48);
               char r = 0;
               const int n = Inject(
                   k, [&] { r = m.cast->DrawPicture(kColoured, 14, &canvas.map, &canvas.area); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               // Drawing again succeeds.
               EXPECT_EQ(m.cast->DrawPicture(kColoured, 14, &canvas.map, &canvas.area), 1) << where;
               return n;
             });
  SweepMovie("QvMCast::DrawPicture", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               Canvas canvas(64, 48);
               char r = 0;
               const int n = Inject(
                   k, [&] { r = m.cast->DrawPicture(kScroller, 45, &canvas.map, &canvas.area); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               return n;
             });
  SweepMovie("QvMCast::CTable", LevelsFrom(Level::kColour),
             [](Movie& m, int k, const std::string& where) {
               tbColorTable* t = nullptr;
               const int n = Inject(k, [&] { t = m.cast->CTable(kColoured, 12); });
               EXPECT_TRUE(t != nullptr || Faulted(k, n)) << where;
               return n;
             });
  SweepMovie("QvMCast::PtInAFrame", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string&) {
               Canvas canvas(64, 48);
               tbPoint p(32, 24);
               return Inject(k, [&] { m.cast->PtInAFrame(&p, kFramed, 22, &canvas.area, 0); });
             });
}

TEST(CastSweep, Icon) {
  SweepMovie("QvMCast::Icon frame", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               tbPicture* p = nullptr;
               const int n = Inject(k, [&] { p = m.cast->Icon(kFramed, 16, 12); });
               EXPECT_TRUE(p != nullptr || Faulted(k, n)) << where;
               if (p) {
                 EXPECT_NE(p->Pic(), nullptr) << where;
                 EXPECT_EQ(p->Width(), 16) << where;
               }
               return n;
             });
  SweepMovie("QvMCast::Icon swatch", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               tbPicture* p = nullptr;
               const int n = Inject(k, [&] { p = m.cast->Icon(kTableOnly, 32, 32); });
               EXPECT_TRUE(p != nullptr || Faulted(k, n)) << where;
               if (p) {
                 EXPECT_EQ(p->Pixel(31, 31), 255) << where;
               }
               return n;
             });
  SweepMovie("QvMCast::Icon blank", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               tbPicture* p = nullptr;
               const int n = Inject(k, [&] { p = m.cast->Icon(kPlain, 8, 8); });
               EXPECT_TRUE(p != nullptr || Faulted(k, n)) << where;
               return n;
             });
}

TEST(CastSweep, Duplication) {
  auto dup = [](bool sameStore) {
    return [sameStore](Movie& m, int k, const std::string& where) {
      const std::int16_t src = m.level >= Level::kColour ? kColoured : kPath;
      QvMCast* dst = sameStore ? static_cast<QvMCast*>(m.cast.get()) : m.backup.get();
      const std::int16_t count = dst->Count();
      const bool replaces = dst->ID2Index(dst->GetNewID()) >= 0;
      Text name("copy");
      std::int16_t r = 0;
      const int n = Inject(k, [&] { r = m.cast->Dup(src, 100, name, dst, -1); });
      if (r == -1) {
        EXPECT_TRUE(Faulted(k, n)) << where;
        EXPECT_EQ(dst->Count(), count - (replaces ? 1 : 0)) << where;
      } else {
        EXPECT_EQ(dst->Start(r), 100) << where;
        EXPECT_EQ(dst->End(r) - dst->Start(r), m.cast->End(src) - m.cast->Start(src)) << where;
        if (!Faulted(k, n)) {
          EXPECT_EQ(dst->ActFlag(r), m.cast->ActFlag(src)) << where;
          ExpectName(*dst, r, "copy", false, where);
        }
      }
      return n;
    };
  };
  SweepMovie("QvMCast::Dup to another store", LevelsFrom(Level::kPopulated), dup(false));
  SweepMovie("QvMCast::Dup within the store", LevelsFrom(Level::kPopulated), dup(true));
  SweepMovie("QvMCast::Dup onto an existing member", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               std::int16_t r = 0;
               Text name("onto");
               EXPECT_EQ(m.cast->Empty(kPlain), 1) << where;
               const int n =
                   Inject(k, [&] { r = m.cast->Dup(kScroller, 7, name, m.cast.get(), kPlain); });
               EXPECT_EQ(r, kPlain) << where;
               EXPECT_EQ(m.cast->Start(kPlain), 0) << where << ": range kept";
               return n;
             });
  SweepMovie("QvMCast::Backup", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               const std::int16_t src = m.level >= Level::kColour ? kColoured : kPath;
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->Backup(src, m.backup.get()); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               if (r == 1) {
                 EXPECT_EQ(m.backup->Start(src), m.cast->Start(src)) << where;
                 ExpectName(*m.backup, src, NameOf(*m.cast, src).c_str(), Faulted(k, n), where);
               }
               // A later backup succeeds.
               EXPECT_EQ(m.cast->Backup(src, m.backup.get()), 1) << where;
               return n;
             });
  SweepMovie("QvMCast::Restore", {Level::kLayers}, [](Movie& m, int k, const std::string& where) {
    // Edit the members the backup holds, then bring them back.
    m.cast->DelAFrame(kFramed);
    m.cast->SetStartEnd(kColoured, 200, 210);
    char r = 0;
    const int n = Inject(k, [&] { r = m.cast->Restore(m.backup.get()); });
    EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
    if (!Faulted(k, n)) {
      EXPECT_NE(m.cast->AFrame(kFramed), nullptr) << where;
      EXPECT_EQ(m.cast->Start(kColoured), m.backup->Start(kColoured)) << where;
    }
    EXPECT_EQ(m.cast->Restore(m.backup.get()), 1) << where;
    return n;
  });
}

TEST(CastSweep, Removal) {
  SweepMovie("QvMCast::Empty", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->Empty(kPath); });
               EXPECT_EQ(r, 1) << where;
               EXPECT_EQ(m.cast->ActFlag(kPath), 0u) << where;
               EXPECT_EQ(m.cast->IsAnc(kPath), 0) << where;
               EXPECT_EQ(m.cast->IsDft(kPath), 0) << where;
               EXPECT_EQ(NameOf(*m.cast, kPath), "<none>") << where;
               return n;
             });
  SweepMovie("QvMCast::Del", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               const std::int16_t id = m.level >= Level::kColour ? kColoured : kPath;
               const std::int16_t count = m.cast->Count();
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->Del(id); });
               EXPECT_EQ(r, 1) << where;
               EXPECT_EQ(m.cast->Count(), count - 1) << where;
               EXPECT_EQ(m.cast->ID2Index(id), -1) << where;
               if (m.layers) m.layers->DelCast(m.cast.get(), id);
               return n;
             });
  SweepMovie("QvMCast::DelAll", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               const int n = Inject(k, [&] { m.cast->DelAll(); });
               EXPECT_EQ(m.cast->Count(), 0) << where;
               EXPECT_EQ(m.cast->GetNewID(), 0) << where;
               m.layers->DelAll();
               return n;
             });
  SweepMovie("QvMCast::DelDft", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.cast->DelDft(kPath); });
               EXPECT_EQ(r, 1) << where;
               EXPECT_EQ(m.cast->IsDft(kPath), 0) << where;
               return n;
             });
  SweepMovie("QvMCast destructor", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string&) {
               m.layers->DelAll();
               return Inject(k, [&] { m.cast.reset(new CastProbe); });
             });
}

}  // namespace
}  // namespace reliability
