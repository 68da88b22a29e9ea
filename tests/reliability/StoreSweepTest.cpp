// Allocation-failure sweeps of the cast store's and the layer store's
// allocating operations.
#include <gtest/gtest.h>

#include <cstring>

#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

using casttest::NameOf;

// A registration's name is set unless its allocation failed.
void ExpectName(QvMCast& cast, std::int16_t id, const std::string& name, bool faulted) {
  const std::string got = NameOf(cast, id);
  EXPECT_TRUE(got == name || (faulted && got == "<none>")) << "name " << got;
}

TEST(CastSweep, NewAndNames) {
  SweepOp("QvMCast::New(id, name) replacing", kFromPopulated, [](Trial& t, Movie& m) {
    const std::int16_t count = m.cast->Count();
    const bool ok = t.Ok([&] { return m.cast->New(kPlain, Text("again")); });
    // On failure the deletion of the old member stands; a new member is last.
    EXPECT_EQ(m.cast->ID2Index(kPlain), ok ? count - 1 : -1);
    EXPECT_EQ(m.cast->Count(), ok ? count : count - 1);
    EXPECT_EQ(m.cast->Start(kPlain), -1);
    if (ok) ExpectName(*m.cast, kPlain, "again", t.faulted);
  });
  SweepOp("QvMCast::New(name)", kAll, [](Trial& t, Movie& m) {
    const std::int16_t count = m.cast->Count(), next = m.cast->GetNewID();
    const std::int16_t r = t([&] { return m.cast->New(Text("auto")); });
    const bool ok = !t.Failed(r == -1);
    EXPECT_EQ(r, ok ? next : -1);
    EXPECT_EQ(m.cast->GetNewID(), ok ? next + 1 : next);
    EXPECT_TRUE(!ok || m.cast->ID2Index(r) == m.cast->Count() - 1);
    if (ok) ExpectName(*m.cast, r, "auto", t.faulted);
    EXPECT_LE(m.cast->Count(), count + 1);  // kPlain has id 0 and is replaced
  });
  SweepOp("QvMCast::SetName", kFromPopulated, [](Trial& t, Movie& m) {
    EXPECT_EQ(t([&] { return m.cast->SetName(kPath, Text("renamed")); }), 1);
    ExpectName(*m.cast, kPath, "renamed", t.faulted);
  });
}

TEST(CastSweep, Registrations) {
  // A new member (id -1) gets an id, or -1 only under a fault.
  SweepOp("QvMCast::RegDft new member", kEmpty | kLayers, [](Trial& t, Movie& m) {
    QvMCastDft dft[2];
    t.Failed(t([&] { return m.cast->RegDft(-1, 1, dft, 2, 1, Text("dft"), &m.dftList); }) < 0);
  });
  SweepOp("QvMCast::RegAFrame new member", kAll, [](Trial& t, Movie& m) {
    const std::int16_t count = m.cast->Count();
    // New(name) first deletes a member that has the id it hands out.
    const bool replaces = m.cast->ID2Index(m.cast->GetNewID()) >= 0;
    QvAFrame* f = m.frame.get();
    const std::int16_t r = t([&] { return m.cast->RegAFrame(-1, f, 5, Text("fresh"), f); });
    if (t.Failed(r == -1)) {
      EXPECT_EQ(m.cast->Count(), count - (replaces ? 1 : 0));
      return;
    }
    EXPECT_GE(m.cast->ID2Index(r), 0);
    EXPECT_TRUE(t.faulted || (m.cast->AFrame(r) && m.cast->Start(r) == 5));
  });
  // Registrations on existing members give the id even under a fault.
  SweepOp("QvMCast::RegAFrame existing member", kFromImages, [](Trial& t, Movie& m) {
    QvAFrame* f = m.frame.get();
    EXPECT_EQ(t([&] { return m.cast->RegAFrame(kFramed, f, 5, Text("framed"), f); }), kFramed);
    EXPECT_EQ(m.cast->Start(kFramed), 20) << "range kept";
  });
  SweepOp("QvMCast::RegAFrame member with a path", kFromPopulated, [](Trial& t, Movie& m) {
    QvAFrame* f = m.frame.get();
    EXPECT_EQ(t([&] { return m.cast->RegAFrame(kPath, f, 5, Text("path"), f); }), kPath);
  });
  SweepOp("QvMCast::RegOrgCTable existing member", kFromImages, [](Trial& t, Movie& m) {
    const std::int16_t r =
        t([&] { return m.cast->RegOrgCTable(kFramed, &m.table, &m.pal, Text("framed")); });
    EXPECT_TRUE(t.Failed(r == -1) || r == kFramed);
    EXPECT_TRUE(t.faulted || m.cast->CTable(kFramed, 20));
  });
  SweepOp("QvMCast::RegDft", kFromPopulated, [](Trial& t, Movie& m) {
    QvMCastDft dft[5];
    for (int i = 0; i < 5; ++i) dft[i].pointB = tbPoint(i, -i);
    EXPECT_EQ(t([&] { return m.cast->RegDft(kPath, 3, dft, 5, 0, Text("path"), nullptr); }), kPath);
    std::int16_t param = 0, count = 0;
    QvMCastDft* e = nullptr;
    char flag = 0;
    const bool kept = m.cast->GetDft(kPath, &param, &e, &count, &flag);
    EXPECT_TRUE(kept ? count == 5 && e[4].pointB == tbPoint(4, -4) : t.faulted);
  });
  SweepOp("QvMCast::RegScroll new member", kEmpty | kPopulated, [](Trial& t, Movie& m) {
    const std::int16_t r = t([&] {
      return m.cast->RegScroll(-1, QvMCast::kScrollRight | QvMCast::kScrollUp, Text("scroll"));
    });
    EXPECT_TRUE(t.Failed(r < 0) || m.cast->IsScrollRight(r) == 1);
  });
  SweepOp("QvMCast::RegScroll", kPopulated, [](Trial& t, Movie& m) {
    EXPECT_EQ(t([&] { return m.cast->RegScroll(kPlain, QvMCast::kScrollLeft, Text("plain")); }),
              kPlain);
    EXPECT_EQ(m.cast->IsScrollLeft(kPlain), 1);
  });
  SweepOp("QvMCast::RegAnc", kFromPopulated, [](Trial& t, Movie& m) {
    QvMCastAnc anc[8];
    for (int i = 0; i < 8; ++i) anc[i].point = tbPoint(i, 2 * i);
    EXPECT_EQ(t([&] { return m.cast->RegAnc(kPath, anc, 8, QvMCast::kAncClamp, Text("path")); }),
              kPath);
    std::int16_t num = 0;
    EXPECT_EQ(m.cast->GetAncNum(kPath, &num), 1);
    EXPECT_TRUE(m.cast->IsAnc(kPath) ? num == 8 : num == 1 && t.faulted);
  });
}

TEST(CastSweep, ColourCopies) {
  for (char kind = 0; kind < 4; ++kind) {
    const std::string name = "QvMCast::RegAColor kind " + std::to_string(kind);
    SweepOp(name, kFromImages, [kind](Trial& t, Movie& m) {
      QvAColor* a = m.Colour(kind);
      QvMCastList* list = m.ColourList(kind);
      EXPECT_EQ(t([&] { return m.cast->RegAColor(kFramed, a, kind, 0, Text("framed"), list); }),
                kFramed);
      // A copy made without a fault is complete (checked for every trial).
      EXPECT_TRUE(t.faulted || m.cast->IsAColor(kFramed));
    });
  }
}

// Plain drawing, icons and copies onto a member are swept in the cast tests;
// here the members with colour animations.
TEST(CastSweep, DrawingWithColourAnimations) {
  SweepOp("QvMCast::DrawPicture with colour animations", kFromColour, [](Trial& t, Movie& m) {
    Screen c(64, 48);
    t.Failed(t([&] { return m.cast->DrawPicture(kColoured, 14, &c.pixMap, &c.area); }) != 1);
    EXPECT_EQ(m.cast->DrawPicture(kColoured, 14, &c.pixMap, &c.area), 1) << "drawing again";
  });
}

TEST(CastSweep, CopiesAndRemoval) {
  // The richest member (with colour copies from the colour level on) is
  // duplicated into the backup store or the same store.
  for (bool same : {false, true}) {
    const std::string name = same ? "within the store" : "to another store";
    SweepOp("QvMCast::Dup " + name, kFromPopulated, [same](Trial& t, Movie& m) {
      const std::int16_t src = m.level >= kColour ? kColoured : kPath;
      QvMCast* dst = same ? static_cast<QvMCast*>(m.cast.get()) : m.backup.get();
      const std::int16_t count = dst->Count();
      const bool replaces = dst->ID2Index(dst->GetNewID()) >= 0;
      const std::int16_t r = t([&] { return m.cast->Dup(src, 100, Text("copy"), dst, -1); });
      if (t.Failed(r == -1)) {
        EXPECT_EQ(dst->Count(), count - (replaces ? 1 : 0));
        return;
      }
      EXPECT_EQ(dst->Start(r), 100);
      EXPECT_EQ(dst->End(r) - dst->Start(r), m.cast->End(src) - m.cast->Start(src));
      if (t.faulted) return;
      EXPECT_EQ(dst->ActFlag(r), m.cast->ActFlag(src));
      ExpectName(*dst, r, "copy", false);
    });
  }
  SweepOp("QvMCast::Backup", kFromPopulated, [](Trial& t, Movie& m) {
    const std::int16_t src = m.level >= kColour ? kColoured : kPath;
    if (!t.Failed(t([&] { return m.cast->Backup(src, m.backup.get()); }) != 1)) {
      EXPECT_EQ(m.backup->Start(src), m.cast->Start(src));
      ExpectName(*m.backup, src, NameOf(*m.cast, src), t.faulted);
    }
    EXPECT_EQ(m.cast->Backup(src, m.backup.get()), 1) << "a later backup";
  });
  SweepOp("QvMCast::Restore", kLayers, [](Trial& t, Movie& m) {
    // Edit the members the backup holds, then bring them back.
    m.cast->DelAFrame(kFramed);
    m.cast->SetStartEnd(kColoured, 200, 210);
    t.Failed(t([&] { return m.cast->Restore(m.backup.get()); }) != 1);
    EXPECT_TRUE(t.faulted || m.cast->AFrame(kFramed));
    EXPECT_TRUE(t.faulted || m.cast->Start(kColoured) == m.backup->Start(kColoured));
    EXPECT_EQ(m.cast->Restore(m.backup.get()), 1);
  });
  SweepOp("QvMCast::Empty", kFromPopulated, [](Trial& t, Movie& m) {
    EXPECT_EQ(t([&] { return m.cast->Empty(kPath); }), 1);
    EXPECT_EQ(m.cast->ActFlag(kPath), 0u);
    EXPECT_EQ(m.cast->IsAnc(kPath), 0);
    EXPECT_EQ(m.cast->IsDft(kPath), 0);
    EXPECT_EQ(NameOf(*m.cast, kPath), "<none>");
  });
  SweepOp("QvMCast::Del", kFromPopulated, [](Trial& t, Movie& m) {
    const std::int16_t id = m.level >= kColour ? kColoured : kPath;
    const std::int16_t count = m.cast->Count();
    EXPECT_EQ(t([&] { return m.cast->Del(id); }), 1);
    EXPECT_EQ(m.cast->Count(), count - 1);
    EXPECT_EQ(m.cast->ID2Index(id), -1);
    m.layers->DelCast(m.cast.get(), id);
  });
  SweepOp("QvMCast::DelAll", kFromPopulated, [](Trial& t, Movie& m) {
    t([&] { m.cast->DelAll(); });
    EXPECT_EQ(m.cast->Count(), 0);
    EXPECT_EQ(m.cast->GetNewID(), 0);
    m.layers->DelAll();
  });
  SweepOp("QvMCast::DelDft", kFromPopulated, [](Trial& t, Movie& m) {
    EXPECT_EQ(t([&] { return m.cast->DelDft(kPath); }), 1);
    EXPECT_EQ(m.cast->IsDft(kPath), 0);
  });
  SweepOp("QvMCast destructor", kFromPopulated, [](Trial& t, Movie& m) {
    m.layers->DelAll();
    t([&] { m.cast.reset(new CastProbe); });
  });
}

bool OnLayer(QvMLayer& layers, std::int16_t index, QvMCast* cast, std::int16_t id) {
  QvMCast* c = nullptr;
  std::int16_t i = 0;
  for (std::int16_t n = 0; layers.Get(index, n, &c, &i); ++n)
    if (c == cast && i == id) return true;
  return false;
}

TEST(LayerSweep, Operations) {
  for (std::int16_t at : {0, -1}) {
    SweepOp("QvMLayer::New at " + std::to_string(at), kAll, [at](Trial& t, Movie& m) {
      const std::int16_t count = m.layers->Count();
      const std::int16_t r = t([&] { return m.layers->New(at, 42); });
      const std::int16_t index = t.Failed(r == -1) ? -1 : at == 0 ? 0 : count;
      EXPECT_EQ(m.layers->Count(), count + (index < 0 ? 0 : 1));
      EXPECT_EQ(m.layers->ID2Index(42), index);
      EXPECT_EQ(r, index);
    });
  }
  for (char fit : {-1, 0, 1, 2, 3}) {
    SweepOp("QvMLayer::RegCast fit " + std::to_string(fit), kFromPopulated,
            [=](Trial& t, Movie& m) {
              CastProbe* c = m.cast.get();
              // The member overlaps the neighbours on layer 0 in the fuller states,
              // so that every fitting has work to do.
              c->SetStartEnd(kTableOnly, 15, 45);
              const bool ok = t.Ok([&] { return m.layers->RegCast(0, c, kTableOnly, fit); });
              EXPECT_EQ(OnLayer(*m.layers, 0, c, kTableOnly), ok);
              EXPECT_TRUE(ok || (c->Start(kTableOnly) == 15 && c->End(kTableOnly) == 45))
                  << "range moved";
              EXPECT_LE(c->End(kTableOnly) - c->Start(kTableOnly), 30);
            });
  }
  for (char mode : {0, 3}) {
    SweepOp("QvMLayer::FitCast mode " + std::to_string(mode), kLayers, [mode](Trial& t, Movie& m) {
      m.cast->SetStartEnd(kScroller, 5, 30);
      t.Ok([&] { return m.layers->FitCast(0, m.cast.get(), kScroller, mode); });
      EXPECT_LE(m.cast->Start(kScroller), m.cast->End(kScroller));
    });
  }
  for (std::int32_t time : {12, 25}) {
    SweepOp("QvMLayer::DrawPicture at " + std::to_string(time), kLayers, [=](Trial& t, Movie& m) {
      Screen c(64, 48);
      t([&] { m.layers->DrawPicture(time, &c.pixMap, &c.area); });
    });
  }
  SweepOp("QvMLayer::RegCast placed again", kLayers, [](Trial& t, Movie& m) {
    EXPECT_EQ(t([&] { return m.layers->RegCast(0, m.cast.get(), kFramed, 3); }), 1);
  });
  SweepOp("QvMLayer::MoveCast", kLayers, [](Trial& t, Movie& m) {
    const bool ok = t.Ok([&] { return m.layers->MoveCast(0, m.cast.get(), kFramed, 1); });
    EXPECT_EQ(OnLayer(*m.layers, 0, m.cast.get(), kFramed), !ok);
    EXPECT_EQ(OnLayer(*m.layers, 1, m.cast.get(), kFramed), ok);
  });
  SweepOp("QvMLayer::Copy to another layer", kLayers, [](Trial& t, Movie& m) {
    const bool ok = t.Ok([&] { return m.layers->Copy(0, m.layers.get(), 1); });
    EXPECT_TRUE(!ok || OnLayer(*m.layers, 1, m.cast.get(), kScroller));
  });
  SweepOp("QvMLayer::Copy to another store", kLayers, [](Trial& t, Movie& m) {
    LayerProbe other;
    EXPECT_EQ(other.New(0, 1), 0);
    const bool ok = t.Ok([&] { return m.layers->Copy(0, &other, 0); });
    QvMCast* c = nullptr;
    std::int16_t id = 0, copied = 0;
    while (other.Get(0, copied, &c, &id)) ++copied;
    EXPECT_EQ(copied == 3, ok);
  });
  for (bool set : {false, true}) {
    SweepOp(set ? "QvMLayer::SetComment" : "QvMLayer::NewComment", kEmpty | kLayers,
            [set](Trial& t, Movie& m) {
              const bool ok = t.Ok([&] {
                return set ? m.layers->SetComment(Text("twelve bytes"), 12)
                           : m.layers->NewComment(64);
              });
              unsigned char* data = nullptr;
              std::uint16_t size = 0;
              m.layers->GetComment(&data, &size);
              EXPECT_EQ(data != nullptr, ok);
              EXPECT_TRUE(set ? !ok || (size == 12 && std::memcmp(data, "twelve bytes", 12) == 0)
                              : size == (ok ? 64 : 0));
            });
  }
}

}  // namespace
}  // namespace reliability
