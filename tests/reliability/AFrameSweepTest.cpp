// Allocation-failure sweeps of the frame animation's allocating operations.
// From the level with images on, the animation has cast members, so every
// change also passes fresh copies on to them.
#include <gtest/gtest.h>

#include "tests/reliability/Sweep.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

// Every member holding a copy of the animation has all its frames, unless a
// fault hit the passing on.
void ExpectCopies(Trial& t, Movie& m) {
  if (t.faulted || m.level < kImages) return;
  for (std::int16_t id : {kFramed, kScroller}) {
    QvAFrame* copy = m.cast->AFrame(id);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->CountAFrame(), m.frame->CountAFrame());
    EXPECT_EQ(copy->CountMFrame(), m.frame->CountMFrame());
  }
}

// A change that succeeds even when passing it on fails; the copies are
// checked.
Op Simple(const std::string& name, unsigned levels, std::function<char(Movie&)> call) {
  return {"QvAFrame::" + name, levels, [call](Trial& t, Movie& m) {
            EXPECT_EQ(t([&] { return call(m); }), 1);
            ExpectCopies(t, m);
          }};
}

// Whether frame i has an image, checking that image and mask go together.
bool HasImage(QvAFrame& a, std::int16_t i, std::int16_t* w = nullptr) {
  unsigned char *image = nullptr, *mask = nullptr;
  a.GetAImage(i, &image, &mask, w, nullptr, nullptr, nullptr);
  EXPECT_EQ(image == nullptr, mask == nullptr);
  return image != nullptr;
}

TEST(AFrameSweep, Registration) {
  SweepOps({
      {"QvAFrame::Reg", kAll,
       [](Trial& t, Movie& m) {
         const std::int16_t frames = m.frame->CountAFrame();
         const std::int32_t end = m.frame->End();
         const std::int16_t r = t([&] { return m.frame->Reg(1, 2, 2, 5, 5, 4, 4, 2); });
         if (t.Failed(r == -1)) {
           EXPECT_EQ(m.frame->CountAFrame(), frames);
           EXPECT_EQ(m.frame->End(), end);
         } else {
           EXPECT_EQ(r, frames < 1 ? frames : 1);
           EXPECT_EQ(m.frame->CountAFrame(), frames + 1);
         }
         ExpectCopies(t, m);
       }},
      {"QvAFrame::Reg from another animation", kAll,
       [](Trial& t, Movie& m) {
         auto src = m.Other(true);
         const std::int16_t frames = m.frame->CountAFrame();
         const std::int16_t r = t([&] { return m.frame->Reg(0, src.get(), 1); });
         if (t.Failed(r == -1)) {
           EXPECT_EQ(m.frame->CountAFrame(), frames);
         } else {
           EXPECT_EQ(r, 0);
           double zx = 0;
           m.frame->GetAFrame(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &zx,
                              nullptr, nullptr);
           EXPECT_EQ(zx, 2.0);
         }
         ExpectCopies(t, m);
       }},
  });
}

TEST(AFrameSweep, Images) {
  SweepOps({
      {"QvAFrame::SetOrgImage cut", kFromPopulated,
       [](Trial& t, Movie& m) {
         const char r = t([&] {
           return m.frame->SetOrgImage(1, m.picture.data(), Movie::kPicW, Movie::kPicW,
                                       Movie::kPicH);
         });
         unsigned char* org = nullptr;
         std::int16_t w = 0, h = 0;
         EXPECT_EQ(m.frame->GetOrgImage(1, &org, &w, &h), 1);
         if (t.Failed(r == 0)) {
           EXPECT_EQ(org, nullptr);
         } else {
           ASSERT_NE(org, nullptr);
           EXPECT_EQ(org[0], m.picture[8]);
         }
         ExpectCopies(t, m);
       }},
      {"QvAFrame::SetOrgImage copy", kFromPopulated,
       [](Trial& t, Movie& m) {
         std::vector<unsigned char> buf(8 * 6, 77);
         const bool failed =
             t.Failed(t([&] { return m.frame->SetOrgImage(1, buf.data(), 8, 6); }) != 1);
         unsigned char* org = nullptr;
         std::int16_t w = 0, h = 0;
         m.frame->GetOrgImage(1, &org, &w, &h);
         EXPECT_EQ(org == nullptr, failed);
       }},
      {"QvAFrame::SetImage transform", kFromPopulated,
       [](Trial& t, Movie& m) {
         const bool failed = t.Failed(t([&] {
                                        return m.frame->SetImage(2, m.picture.data(), Movie::kPicW,
                                                                 Movie::kPicW, Movie::kPicH);
                                      }) != 1);
         const bool image = HasImage(*m.frame, 2);
         EXPECT_TRUE(image || failed);
         ExpectCopies(t, m);
       }},
      {"QvAFrame::SetImage recompute", kFromImages,
       [](Trial& t, Movie& m) {
         m.frame->SetRot(0, 1.0);
         t.Failed(t([&] { return m.frame->SetImage(0, nullptr, 0, 0, 0); }) != 1);
       }},
      {"QvAFrame::SetImage ready image", kFromPopulated,
       [](Trial& t, Movie& m) {
         std::vector<unsigned char> pixels(5 * 4, 21), mask(5 * 4, 255);
         const bool failed =
             t.Failed(t([&] {
                        return m.frame->SetImage(1, pixels.data(), mask.data(), 5, 4, -2, -2);
                      }) != 1);
         std::int16_t w = 0;
         const bool image = HasImage(*m.frame, 1, &w);
         EXPECT_TRUE(failed || (image && w == 5));
       }},
      {"QvAFrame::GetIcon", kFromImages,
       [](Trial& t, Movie& m) {
         std::vector<unsigned char> dst(20 * 16, 9);
         t.Failed(t([&] { return m.frame->GetIcon(0, dst.data(), 20, 16, 16); }) != 1);
         // Asked again, the thumbnail is made or served from the cache.
         EXPECT_EQ(m.frame->GetIcon(0, dst.data(), 20, 16, 16), 1);
       }},
  });
}

TEST(AFrameSweep, Copies) {
  auto locksFree = [](FrameProbe& a) {
    EXPECT_EQ(a.UpdateLock(), 0) << "update lock left held";
    EXPECT_EQ(a.LookupLock(), 0) << "lookup lock left held";
    EXPECT_EQ(a.End(), a.CountMFrame() - 1);
  };
  SweepOps({
      {"QvAFrame::Dup into another animation", kAll,
       [&](Trial& t, Movie& m) {
         auto dst = m.Other(true);
         EXPECT_TRUE(t.Failed(t([&] { return m.frame->Dup(dst.get()); }) != 1) ||
                     dst->CountAFrame() == m.frame->CountAFrame());
         locksFree(*dst);
       }},
      {"QvAFrame::Dup into the animation with members", kAll,
       [](Trial& t, Movie& m) {
         auto src = m.Other(true);
         EXPECT_TRUE(t.Failed(t([&] { return src->Dup(m.frame.get()); }) != 1) ||
                     m.frame->CountAFrame() == 2);
         ExpectCopies(t, m);
       }},
      {"QvAFrame::Backup", kAll,
       [&](Trial& t, Movie& m) {
         auto dst = m.Other(false);
         EXPECT_TRUE(t.Failed(t([&] { return m.frame->Backup(dst.get()); }) != 1) ||
                     dst->CountAFrame() == m.frame->CountAFrame());
         locksFree(*dst);
       }},
      {"QvAFrame::Restore", kAll,
       [](Trial& t, Movie& m) {
         auto src = m.Other(false);
         EXPECT_TRUE(t.Failed(t([&] { return m.frame->Restore(src.get()); }) != 1) ||
                     m.frame->CountAFrame() == 2);
         ExpectCopies(t, m);
       }},
  });
}

TEST(AFrameSweep, Drawing) {
  std::vector<Op> ops;
  for (bool withPal : {false, true}) {
    for (bool master : {false, true}) {
      const std::string name = master ? "QvAFrame::DrawMPicture" : "QvAFrame::DrawAPicture";
      ops.push_back({name + (withPal ? " with a palette area" : ""), kFromImages,
                     [withPal, master](Trial& t, Movie& m) {
                       tbGWorld* world = nullptr;
                       tbRect bounds(0, 0, 20, 16);
                       ASSERT_EQ(tb.NewGWorld(&world, 8, &bounds, &m.table), 1);
                       Canvas canvas(48, 32);
                       QvPal* pal = withPal ? &m.pal : nullptr;
                       t.Failed(t([&] {
                                  return master ? m.frame->DrawMPicture(5, world, 10, 8, pal, 0, 0,
                                                                        0, 0, &canvas.map, -3, 20)
                                                : m.frame->DrawAPicture(1, world, 10, 8, pal,
                                                                        withPal ? 3 : -1, 3, 2, 1,
                                                                        &canvas.map, 4, 4);
                                }) != 1);
                       tb.DisposeGWorld(world);
                     }});
    }
  }
  SweepOps(ops);
}

// Changes that allocate only by passing fresh copies on to the members. The
// walk is the same for every change: UpdateMCast is swept on every level with
// members, the others on the first.
TEST(AFrameSweep, PassingOn) {
  SweepOps({
      Simple("Set", kImages, [](Movie& m) { return m.frame->Set(0, 1, 1, 7, 5, 3, 3); }),
      Simple("SetPos", kImages, [](Movie& m) { return m.frame->SetPos(1, 3, 2); }),
      Simple("SetSize", kImages, [](Movie& m) { return m.frame->SetSize(2, 4, 4); }),
      Simple("SetAnchor", kImages, [](Movie& m) { return m.frame->SetAnchor(0, 0, 0); }),
      Simple("SetInterval", kImages, [](Movie& m) { return m.frame->SetInterval(0, 9); }),
      Simple("SetZoom", kImages, [](Movie& m) { return m.frame->SetZoom(0, 0.5, 2.0); }),
      Simple("SetRot", kImages, [](Movie& m) { return m.frame->SetRot(1, -1.0); }),
      Simple("Del", kImages, [](Movie& m) { return m.frame->Del(1); }),
      Simple("DelAll", kImages, [](Movie& m) { return m.frame->DelAll(), char{1}; }),
      Simple("UpdateMCast", kFromImages, [](Movie& m) { return m.frame->UpdateMCast(), char{1}; }),
      Simple("UnlockUpdateMCast", kImages,
             [](Movie& m) {
               m.frame->LockUpdateMCast();
               return m.frame->UnlockUpdateMCast(), char{1};
             }),
      {"QvAFrame::DelFromMCast", kFromImages,
       [](Trial& t, Movie& m) {
         t([&] { m.frame->DelFromMCast(); });
         QvMCast* c = nullptr;
         std::int16_t id = 0;
         EXPECT_EQ(m.frame->Get(0, &c, &id), 0);
       }},
      {"QvAFrame destructor", kFromImages,
       [](Trial& t, Movie& m) {
         t([&] { m.frame.reset(); });
         // The members keep their copies (unless a fault took one).
         EXPECT_TRUE(t.faulted || m.cast->AFrame(kFramed));
       }},
  });
}

}  // namespace
}  // namespace reliability
