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

// A second animation with two frames (with images when asked).
std::unique_ptr<FrameProbe> Other(Movie& m, bool images) {
  auto a = std::make_unique<FrameProbe>();
  a->Reg(-1, 1, 1, 6, 5, 3, 3, 2);
  a->Reg(-1, 4, 2, 9, 7, 8, 5, 6);
  a->SetZoom(1, 2.0, 1.0);
  a->Activate(0);
  for (std::int16_t i = 0; images && i < 2; ++i)
    a->SetImage(i, m.picture.data(), Movie::kPicW, Movie::kPicW, Movie::kPicH);
  return a;
}

// Whether frame i has an image, checking that image and mask go together.
bool HasImage(QvAFrame& a, std::int16_t i, std::int16_t* w = nullptr) {
  unsigned char *image = nullptr, *mask = nullptr;
  a.GetAImage(i, &image, &mask, w, nullptr, nullptr, nullptr);
  EXPECT_EQ(image == nullptr, mask == nullptr);
  return image != nullptr;
}

TEST(AFrameSweep, RegistrationAndImages) {
  SweepOp("QvAFrame::Reg", kAll, [](Trial& t, Movie& m) {
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
  });
  SweepOp("QvAFrame::Reg from another animation", kAll, [](Trial& t, Movie& m) {
    auto src = Other(m, true);
    const std::int16_t frames = m.frame->CountAFrame();
    const std::int16_t r = t([&] { return m.frame->Reg(0, src.get(), 1); });
    double zx = 0;
    m.frame->GetAFrame(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &zx,
                       nullptr, nullptr);
    if (t.Failed(r == -1)) {
      EXPECT_EQ(m.frame->CountAFrame(), frames);
    } else {
      EXPECT_EQ(r, 0);
      EXPECT_EQ(zx, 2.0);
    }
    ExpectCopies(t, m);
  });
  SweepOp("QvAFrame::SetOrgImage cut", kFromPopulated, [](Trial& t, Movie& m) {
    const bool ok =
        t.Ok([&] { return m.frame->SetOrgImage(1, m.picture.data(), 24, 24, Movie::kPicH); });
    unsigned char* org = nullptr;
    std::int16_t w = 0, h = 0;
    EXPECT_EQ(m.frame->GetOrgImage(1, &org, &w, &h), 1);
    ASSERT_EQ(org != nullptr, ok);
    EXPECT_TRUE(!ok || org[0] == m.picture[8]);
    ExpectCopies(t, m);
  });
  SweepOp("QvAFrame::SetOrgImage copy", kFromPopulated, [](Trial& t, Movie& m) {
    std::vector<unsigned char> buf(8 * 6, 77);
    const bool ok = t.Ok([&] { return m.frame->SetOrgImage(1, buf.data(), 8, 6); });
    unsigned char* org = nullptr;
    std::int16_t w = 0, h = 0;
    m.frame->GetOrgImage(1, &org, &w, &h);
    EXPECT_EQ(org != nullptr, ok);
  });
  SweepOp("QvAFrame::SetImage transform", kFromPopulated, [](Trial& t, Movie& m) {
    const bool ok =
        t.Ok([&] { return m.frame->SetImage(2, m.picture.data(), 24, 24, Movie::kPicH); });
    EXPECT_TRUE(HasImage(*m.frame, 2) || !ok);
    ExpectCopies(t, m);
  });
  SweepOp("QvAFrame::SetImage recompute", kFromImages, [](Trial& t, Movie& m) {
    m.frame->SetRot(0, 1.0);
    t.Ok([&] { return m.frame->SetImage(0, nullptr, 0, 0, 0); });
  });
  SweepOp("QvAFrame::SetImage ready image", kFromPopulated, [](Trial& t, Movie& m) {
    std::vector<unsigned char> pixels(5 * 4, 21), mask(5 * 4, 255);
    const bool ok =
        t.Ok([&] { return m.frame->SetImage(1, pixels.data(), mask.data(), 5, 4, -2, -2); });
    std::int16_t w = 0;
    const bool image = HasImage(*m.frame, 1, &w);
    EXPECT_TRUE(!ok || (image && w == 5));
  });
  SweepOp("QvAFrame::GetIcon", kFromImages, [](Trial& t, Movie& m) {
    std::vector<unsigned char> dst(20 * 16, 9);
    t.Ok([&] { return m.frame->GetIcon(0, dst.data(), 20, 16, 16); });
    // Asked again, the thumbnail is made or served from the cache.
    EXPECT_EQ(m.frame->GetIcon(0, dst.data(), 20, 16, 16), 1);
  });
}

TEST(AFrameSweep, CopiesAndDrawing) {
  auto settled = [](FrameProbe& a) {
    EXPECT_EQ(a.UpdateLock(), 0) << "update lock left held";
    EXPECT_EQ(a.LookupLock(), 0) << "lookup lock left held";
    EXPECT_EQ(a.End(), a.CountMFrame() - 1);
  };
  // Into another animation (with or without images), and from another
  // animation into the one with members.
  SweepOp("QvAFrame::Dup into another animation", kAll, [&](Trial& t, Movie& m) {
    auto dst = Other(m, true);
    EXPECT_TRUE(!t.Ok([&] { return m.frame->Dup(dst.get()); }) ||
                dst->CountAFrame() == m.frame->CountAFrame());
    settled(*dst);
  });
  SweepOp("QvAFrame::Backup", kAll, [&](Trial& t, Movie& m) {
    auto dst = Other(m, false);
    EXPECT_TRUE(!t.Ok([&] { return m.frame->Backup(dst.get()); }) ||
                dst->CountAFrame() == m.frame->CountAFrame());
    settled(*dst);
  });
  SweepOp("QvAFrame::Dup into the animation with members", kAll, [](Trial& t, Movie& m) {
    auto src = Other(m, true);
    EXPECT_TRUE(!t.Ok([&] { return src->Dup(m.frame.get()); }) || m.frame->CountAFrame() == 2);
    ExpectCopies(t, m);
  });
  SweepOp("QvAFrame::Restore", kAll, [](Trial& t, Movie& m) {
    auto src = Other(m, false);
    EXPECT_TRUE(!t.Ok([&] { return m.frame->Restore(src.get()); }) || m.frame->CountAFrame() == 2);
    ExpectCopies(t, m);
  });
  for (bool withPal : {false, true}) {
    for (bool master : {false, true}) {
      const std::string name = master ? "QvAFrame::DrawMPicture" : "QvAFrame::DrawAPicture";
      SweepOp(name + (withPal ? " with a palette area" : ""), kFromImages, [=](Trial& t, Movie& m) {
        tbGWorld* world = nullptr;
        tbRect bounds(0, 0, 20, 16);
        ASSERT_EQ(tb.NewGWorld(&world, 8, &bounds, &m.table), 1);
        Canvas c(48, 32);
        QvPal* pal = withPal ? &m.pal : nullptr;
        t.Ok([&] {
          return master ? m.frame->DrawMPicture(5, world, 10, 8, pal, 0, 0, 0, 0, &c.map, -3, 20)
                        : m.frame->DrawAPicture(1, world, 10, 8, pal, withPal ? 3 : -1, 3, 2, 1,
                                                &c.map, 4, 4);
        });
        tb.DisposeGWorld(world);
      });
    }
  }
}

// Changes that allocate only by passing fresh copies on to the members: they
// succeed even when that fails. The walk is the same for every change:
// UpdateMCast is swept on every level with members, the others on the first.
TEST(AFrameSweep, PassingOn) {
  struct Change {
    const char* name;
    std::function<char(QvAFrame&)> run;
  };
  const Change changes[] = {
      {"Set", [](QvAFrame& a) { return a.Set(0, 1, 1, 7, 5, 3, 3); }},
      {"SetPos", [](QvAFrame& a) { return a.SetPos(1, 3, 2); }},
      {"SetSize", [](QvAFrame& a) { return a.SetSize(2, 4, 4); }},
      {"SetAnchor", [](QvAFrame& a) { return a.SetAnchor(0, 0, 0); }},
      {"SetInterval", [](QvAFrame& a) { return a.SetInterval(0, 9); }},
      {"SetZoom", [](QvAFrame& a) { return a.SetZoom(0, 0.5, 2.0); }},
      {"SetRot", [](QvAFrame& a) { return a.SetRot(1, -1.0); }},
      {"Del", [](QvAFrame& a) { return a.Del(1); }},
      {"DelAll", [](QvAFrame& a) { return a.DelAll(), char{1}; }},
      {"UpdateMCast", [](QvAFrame& a) { return a.UpdateMCast(), char{1}; }},
      {"UnlockUpdateMCast",
       [](QvAFrame& a) { return a.LockUpdateMCast(), a.UnlockUpdateMCast(), char{1}; }},
  };
  for (const Change& c : changes) {
    const bool walk = std::string(c.name) == "UpdateMCast";
    SweepOp(std::string("QvAFrame::") + c.name, walk ? kFromImages : kImages,
            [&c](Trial& t, Movie& m) {
              EXPECT_EQ(t([&] { return c.run(*m.frame); }), 1);
              ExpectCopies(t, m);
            });
  }
  SweepOp("QvAFrame::DelFromMCast", kFromImages, [](Trial& t, Movie& m) {
    t([&] { m.frame->DelFromMCast(); });
    QvMCast* c = nullptr;
    std::int16_t id = 0;
    EXPECT_EQ(m.frame->Get(0, &c, &id), 0);
  });
  SweepOp("QvAFrame destructor", kFromImages, [](Trial& t, Movie& m) {
    t([&] { m.frame.reset(); });
    // The members keep their copies (unless a fault took one).
    EXPECT_TRUE(t.faulted || m.cast->AFrame(kFramed));
  });
}

}  // namespace
}  // namespace reliability
