// Allocation-failure sweeps of the cast store's allocating operations.
#include <gtest/gtest.h>

#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

// The member's name as text; "<none>" without a name, "<absent>" without the
// member.
std::string NameOf(QvMCast& cast, std::int16_t id) {
  unsigned char** h = nullptr;
  if (!cast.GetName(id, &h)) return "<absent>";
  if (!h) return "<none>";
  std::string s(reinterpret_cast<const char*>(*h));
  QvFreeString(h);
  return s;
}

// A registration's name is set unless its allocation failed.
void ExpectName(QvMCast& cast, std::int16_t id, const std::string& name, bool faulted) {
  const std::string got = NameOf(cast, id);
  EXPECT_TRUE(got == name || (faulted && got == "<none>")) << "name " << got;
}

// A registration that makes a new member (id -1) or replaces one: the id it
// gives, or -1 only under a fault.
Op NewMember(const std::string& name, unsigned levels, std::function<std::int16_t(Movie&)> reg) {
  return {"QvMCast::" + name + " new member", levels, [reg](Trial& t, Movie& m) {
            const std::int16_t count = m.cast->Count();
            const std::int16_t r = t([&] { return reg(m); });
            t.Failed(r < 0);
            EXPECT_LE(m.cast->Count(), count + 1);
          }};
}

// A registration on an existing member that gives its id even under a fault.
Op Keeps(const std::string& name, unsigned levels, std::int16_t id,
         std::function<std::int16_t(Movie&)> reg, std::function<void(Trial&, Movie&)> check) {
  return {"QvMCast::" + name, levels, [=](Trial& t, Movie& m) {
            EXPECT_EQ(t([&] { return reg(m); }), id);
            check(t, m);
          }};
}

TEST(CastSweep, NewAndNames) {
  SweepOps({
      {"QvMCast::New(id, name) replacing", kFromPopulated,
       [](Trial& t, Movie& m) {
         const std::int16_t count = m.cast->Count();
         Text name("again");
         if (t.Failed(t([&] { return m.cast->New(kPlain, name); }) == 0)) {
           // The deletion of the old member stands.
           EXPECT_EQ(m.cast->ID2Index(kPlain), -1);
           EXPECT_EQ(m.cast->Count(), count - 1);
         } else {
           EXPECT_EQ(m.cast->ID2Index(kPlain), count - 1);
           EXPECT_EQ(m.cast->Start(kPlain), -1);
           ExpectName(*m.cast, kPlain, "again", t.faulted);
         }
       }},
      {"QvMCast::New(id, name) fresh", kEmpty | kLayers,
       [](Trial& t, Movie& m) {
         const std::int16_t count = m.cast->Count();
         Text name("seven");
         const bool failed = t.Failed(t([&] { return m.cast->New(7, name); }) != 1);
         EXPECT_EQ(m.cast->Count(), count + (failed ? 0 : 1));
         if (!failed) ExpectName(*m.cast, 7, "seven", t.faulted);
       }},
      {"QvMCast::New(name)", kAll,
       [](Trial& t, Movie& m) {
         const std::int16_t count = m.cast->Count(), next = m.cast->GetNewID();
         Text name("auto");
         const std::int16_t r = t([&] { return m.cast->New(name); });
         if (t.Failed(r == -1)) {
           EXPECT_EQ(m.cast->GetNewID(), next);
         } else {
           EXPECT_EQ(r, next);
           EXPECT_EQ(m.cast->GetNewID(), next + 1);
           EXPECT_EQ(m.cast->ID2Index(r), m.cast->Count() - 1);
           ExpectName(*m.cast, r, "auto", t.faulted);
         }
         // New(name) replaces a member that has the id already (kPlain is 0).
         EXPECT_LE(m.cast->Count(), count + 1);
       }},
      {"QvMCast::SetName", kFromPopulated,
       [](Trial& t, Movie& m) {
         Text name("renamed");
         EXPECT_EQ(t([&] { return m.cast->SetName(kPath, name); }), 1);
         ExpectName(*m.cast, kPath, "renamed", t.faulted);
       }},
      {"QvMCast::GetName", kFromPopulated,
       [](Trial& t, Movie& m) {
         unsigned char** h = nullptr;
         const char r = t([&] { return m.cast->GetName(kPath, &h); });
         // Out of memory is reported as a failure, with no handle.
         EXPECT_TRUE(t.faulted ? (r == 0 || r == 1) : r == 1);
         EXPECT_EQ(h == nullptr, t.faulted) << "a handle from a failed copy";
         EXPECT_STREQ(h ? reinterpret_cast<const char*>(*h) : "path", "path");
         QvFreeString(h);
       }},
  });
}

TEST(CastSweep, Registrations) {
  SweepOps({
      {"QvMCast::RegAFrame new member", kAll,
       [](Trial& t, Movie& m) {
         const std::int16_t count = m.cast->Count();
         // New(name) first deletes a member that has the id it hands out.
         const bool replaces = m.cast->ID2Index(m.cast->GetNewID()) >= 0;
         Text name("fresh");
         const std::int16_t r =
             t([&] { return m.cast->RegAFrame(-1, m.frame.get(), 5, name, m.frame.get()); });
         if (t.Failed(r == -1)) {
           EXPECT_EQ(m.cast->Count(), count - (replaces ? 1 : 0));
         } else {
           EXPECT_GE(m.cast->ID2Index(r), 0);
           if (!t.faulted) {
             ASSERT_NE(m.cast->AFrame(r), nullptr);
             EXPECT_EQ(m.cast->AFrame(r)->CountAFrame(), m.frame->CountAFrame());
             EXPECT_EQ(m.cast->Start(r), 5);
           }
         }
       }},
      Keeps(
          "RegAFrame existing member", kFromImages, kFramed,
          [](Movie& m) {
            Text name("framed");
            return m.cast->RegAFrame(kFramed, m.frame.get(), 5, name, m.frame.get());
          },
          [](Trial& t, Movie& m) {
            EXPECT_EQ(m.cast->Start(kFramed), 20) << "range kept";
            EXPECT_TRUE(t.faulted || m.cast->AFrame(kFramed)->CountAFrame() == 3);
          }),
      Keeps(
          "RegAFrame member with a path", kFromPopulated, kPath,
          [](Movie& m) {
            Text name("path");
            return m.cast->RegAFrame(kPath, m.frame.get(), 5, name, m.frame.get());
          },
          [](Trial&, Movie&) {}),
      {"QvMCast::RegOrgCTable existing member", kFromImages,
       [](Trial& t, Movie& m) {
         Text name("framed");
         const std::int16_t r =
             t([&] { return m.cast->RegOrgCTable(kFramed, &m.table, &m.pal, name); });
         EXPECT_TRUE(t.Failed(r == -1) || r == kFramed);
         EXPECT_TRUE(t.faulted || m.cast->CTable(kFramed, 20));
       }},
      NewMember("RegOrgCTable", kEmpty | kColour,
                [](Movie& m) {
                  Text name("swatch");
                  return m.cast->RegOrgCTable(-1, &m.table, &m.pal, name);
                }),
      Keeps(
          "RegDft", kFromPopulated, kPath,
          [](Movie& m) {
            QvMCastDft dft[5];
            for (int i = 0; i < 5; ++i) dft[i].pointB = tbPoint(i, -i);
            Text name("path");
            return m.cast->RegDft(kPath, 3, dft, 5, 0, name, nullptr);
          },
          [](Trial& t, Movie& m) {
            std::int16_t param = 0, count = 0;
            QvMCastDft* entries = nullptr;
            char flag = 0;
            if (m.cast->GetDft(kPath, &param, &entries, &count, &flag)) {
              EXPECT_EQ(count, 5);
              EXPECT_EQ(entries[4].pointB, tbPoint(4, -4));
            } else {
              EXPECT_TRUE(t.faulted) << "entries lost without a fault";
            }
          }),
      NewMember("RegDft", kEmpty | kLayers,
                [](Movie& m) {
                  QvMCastDft dft[2];
                  Text name("dft");
                  return m.cast->RegDft(-1, 1, dft, 2, 1, name, nullptr);
                }),
      {"QvMCast::RegScroll new member", kEmpty | kPopulated,
       [](Trial& t, Movie& m) {
         Text name("scroll");
         const std::int16_t r = t([&] { return m.cast->RegScroll(-1, 2 | 4, name); });
         EXPECT_TRUE(t.Failed(r < 0) || m.cast->IsScrollRight(r) == 1);
       }},
      Keeps(
          "RegScroll", kPopulated, kPlain,
          [](Movie& m) {
            Text name("plain");
            return m.cast->RegScroll(kPlain, 1, name);
          },
          [](Trial&, Movie& m) { EXPECT_EQ(m.cast->IsScrollLeft(kPlain), 1); }),
      Keeps(
          "RegAnc", kFromPopulated, kPath,
          [](Movie& m) {
            QvMCastAnc anc[8];
            for (int i = 0; i < 8; ++i) anc[i].point = tbPoint(i, 2 * i);
            Text name("path");
            return m.cast->RegAnc(kPath, anc, 8, 1, name);
          },
          [](Trial& t, Movie& m) {
            std::int16_t num = 0;
            EXPECT_EQ(m.cast->GetAncNum(kPath, &num), 1);
            const bool kept = m.cast->IsAnc(kPath);
            EXPECT_EQ(num, kept ? 8 : 1);
            EXPECT_TRUE(kept || t.faulted);
          }),
      NewMember("RegAnc", kEmpty | kLayers,
                [](Movie& m) {
                  QvMCastAnc anc[3];
                  Text name("anc");
                  return m.cast->RegAnc(-1, anc, 3, 2, name);
                }),
  });
}

TEST(CastSweep, AnchorsAndColour) {
  std::vector<Op> ops = {
      {"QvMCast::ResetAnc", kFromPopulated,
       [](Trial& t, Movie& m) {
         EXPECT_EQ(t([&] { return m.cast->ResetAnc(kPath); }), 1);
         double step = 0;
         m.cast->GetAncStep(kPath, &step);
         EXPECT_EQ(step, 1.0);
         std::int16_t num = 0;
         m.cast->GetAncNum(kPath, &num);
         if (m.cast->IsAnc(kPath)) {
           EXPECT_EQ(num, 20);
         } else {
           EXPECT_TRUE(t.faulted) << "path dropped without a fault";
         }
       }},
      {"QvMCast::InbetweenAnc", kFromPopulated,
       [](Trial& t, Movie& m) {
         t.Failed(t([&] { return m.cast->InbetweenAnc(kPath, 0); }) != 1);
         // A later in-betweening works on what is left.
         m.cast->SetAncSelectArea(kPath, 0, 5);
         EXPECT_TRUE(!m.cast->IsAnc(kPath) || m.cast->InbetweenAnc(kPath, 1) == 1);
       }},
      {"QvMCast::RegAColor new member", kEmpty | kColour,
       [](Trial& t, Movie& m) {
         Text name("fading");
         const std::int16_t r =
             t([&] { return m.cast->RegAColor(-1, m.fade.get(), 3, 100, name, m.fade.get()); });
         EXPECT_TRUE(t.Failed(r < 0) || !m.cast->AFade(r) || m.cast->Start(r) == 100);
       }},
  };
  for (char kind = 0; kind < 4; ++kind) {
    ops.push_back(Keeps(
        "RegAColor kind " + std::to_string(kind), kFromImages, kFramed,
        [kind](Movie& m) {
          QvMCastList* lists[4] = {m.cycle.get(), m.flash.get(), m.switcher.get(), m.fade.get()};
          Text name("framed");
          return m.cast->RegAColor(kFramed, m.Colour(kind), kind, 0, name, lists[int{kind}]);
        },
        [kind](Trial& t, Movie& m) {
          QvAColor* copy = kind == 0   ? m.cast->ACycle(kFramed)
                           : kind == 1 ? m.cast->AFlash(kFramed)
                           : kind == 2 ? m.cast->ASwitch(kFramed)
                                       : m.cast->AFade(kFramed);
          // A copy made without a fault has all the frames; one whose own
          // registrations failed may be partial.
          if (t.faulted) return;
          ASSERT_NE(copy, nullptr);
          EXPECT_EQ(copy->Count(), m.Colour(kind)->Count());
        }));
  }
  SweepOps(ops);
}

TEST(CastSweep, DrawingAndIcons) {
  auto icon = [](std::int16_t id, std::int16_t w, std::int16_t h, std::int16_t pixel) {
    return [=](Trial& t, Movie& m) {
      tbPicture* p = t([&] { return m.cast->Icon(id, w, h); });
      if (t.Failed(p == nullptr)) return;
      ASSERT_NE(p->Pic(), nullptr);
      EXPECT_EQ(p->Width(), w);
      EXPECT_TRUE(pixel < 0 || p->Pixel(w - 1, h - 1) == pixel);
    };
  };
  SweepOps({
      {"QvMCast::DrawPicture with colour animations", kFromColour,
       [](Trial& t, Movie& m) {
         Canvas canvas;
         t.Failed(
             t([&] { return m.cast->DrawPicture(kColoured, 14, &canvas.map, &canvas.area); }) != 1);
         // Drawing again succeeds.
         EXPECT_EQ(m.cast->DrawPicture(kColoured, 14, &canvas.map, &canvas.area), 1);
       }},
      {"QvMCast::DrawPicture", kFromImages,
       [](Trial& t, Movie& m) {
         Canvas canvas;
         t.Failed(
             t([&] { return m.cast->DrawPicture(kScroller, 45, &canvas.map, &canvas.area); }) != 1);
       }},
      {"QvMCast::CTable", kFromColour,
       [](Trial& t, Movie& m) {
         t.Failed(t([&] { return m.cast->CTable(kColoured, 12); }) == nullptr);
       }},
      {"QvMCast::PtInAFrame", kFromImages,
       [](Trial& t, Movie& m) {
         Canvas canvas;
         tbPoint p(32, 24);
         t([&] { m.cast->PtInAFrame(&p, kFramed, 22, &canvas.area, 0); });
       }},
      {"QvMCast::Icon frame", kFromImages, icon(kFramed, 16, 12, -1)},
      {"QvMCast::Icon swatch", kFromPopulated, icon(kTableOnly, 32, 32, 255)},
      {"QvMCast::Icon blank", kFromPopulated, icon(kPlain, 8, 8, -1)},
  });
}

// Duplicates the richest member (with colour copies from the colour level on)
// into the backup store or the same store.
Op Dup(bool sameStore) {
  return {sameStore ? "QvMCast::Dup within the store" : "QvMCast::Dup to another store",
          kFromPopulated, [sameStore](Trial& t, Movie& m) {
            const std::int16_t src = m.level >= kColour ? kColoured : kPath;
            QvMCast* dst = sameStore ? static_cast<QvMCast*>(m.cast.get()) : m.backup.get();
            const std::int16_t count = dst->Count();
            const bool replaces = dst->ID2Index(dst->GetNewID()) >= 0;
            Text name("copy");
            const std::int16_t r = t([&] { return m.cast->Dup(src, 100, name, dst, -1); });
            if (t.Failed(r == -1)) {
              EXPECT_EQ(dst->Count(), count - (replaces ? 1 : 0));
              return;
            }
            EXPECT_EQ(dst->Start(r), 100);
            EXPECT_EQ(dst->End(r) - dst->Start(r), m.cast->End(src) - m.cast->Start(src));
            if (t.faulted) return;
            EXPECT_EQ(dst->ActFlag(r), m.cast->ActFlag(src));
            ExpectName(*dst, r, "copy", false);
          }};
}

TEST(CastSweep, CopiesAndRemoval) {
  SweepOps({
      Dup(false),
      Dup(true),
      {"QvMCast::Dup onto an existing member", kFromImages,
       [](Trial& t, Movie& m) {
         Text name("onto");
         EXPECT_EQ(m.cast->Empty(kPlain), 1);
         EXPECT_EQ(t([&] { return m.cast->Dup(kScroller, 7, name, m.cast.get(), kPlain); }),
                   kPlain);
         EXPECT_EQ(m.cast->Start(kPlain), 0) << "range kept";
       }},
      {"QvMCast::Backup", kFromPopulated,
       [](Trial& t, Movie& m) {
         const std::int16_t src = m.level >= kColour ? kColoured : kPath;
         if (!t.Failed(t([&] { return m.cast->Backup(src, m.backup.get()); }) != 1)) {
           EXPECT_EQ(m.backup->Start(src), m.cast->Start(src));
           ExpectName(*m.backup, src, NameOf(*m.cast, src), t.faulted);
         }
         EXPECT_EQ(m.cast->Backup(src, m.backup.get()), 1) << "a later backup";
       }},
      {"QvMCast::Restore", kLayers,
       [](Trial& t, Movie& m) {
         // Edit the members the backup holds, then bring them back.
         m.cast->DelAFrame(kFramed);
         m.cast->SetStartEnd(kColoured, 200, 210);
         t.Failed(t([&] { return m.cast->Restore(m.backup.get()); }) != 1);
         if (!t.faulted) {
           EXPECT_NE(m.cast->AFrame(kFramed), nullptr);
           EXPECT_EQ(m.cast->Start(kColoured), m.backup->Start(kColoured));
         }
         EXPECT_EQ(m.cast->Restore(m.backup.get()), 1);
       }},
      {"QvMCast::Empty", kFromPopulated,
       [](Trial& t, Movie& m) {
         EXPECT_EQ(t([&] { return m.cast->Empty(kPath); }), 1);
         EXPECT_EQ(m.cast->ActFlag(kPath), 0u);
         EXPECT_EQ(m.cast->IsAnc(kPath), 0);
         EXPECT_EQ(m.cast->IsDft(kPath), 0);
         EXPECT_EQ(NameOf(*m.cast, kPath), "<none>");
       }},
      {"QvMCast::Del", kFromPopulated,
       [](Trial& t, Movie& m) {
         const std::int16_t id = m.level >= kColour ? kColoured : kPath;
         const std::int16_t count = m.cast->Count();
         EXPECT_EQ(t([&] { return m.cast->Del(id); }), 1);
         EXPECT_EQ(m.cast->Count(), count - 1);
         EXPECT_EQ(m.cast->ID2Index(id), -1);
         m.layers->DelCast(m.cast.get(), id);
       }},
      {"QvMCast::DelAll", kFromPopulated,
       [](Trial& t, Movie& m) {
         t([&] { m.cast->DelAll(); });
         EXPECT_EQ(m.cast->Count(), 0);
         EXPECT_EQ(m.cast->GetNewID(), 0);
         m.layers->DelAll();
       }},
      {"QvMCast::DelDft", kFromPopulated,
       [](Trial& t, Movie& m) {
         EXPECT_EQ(t([&] { return m.cast->DelDft(kPath); }), 1);
         EXPECT_EQ(m.cast->IsDft(kPath), 0);
       }},
      {"QvMCast destructor", kFromPopulated,
       [](Trial& t, Movie& m) {
         m.layers->DelAll();
         t([&] { m.cast.reset(new CastProbe); });
       }},
  });
}

}  // namespace
}  // namespace reliability
