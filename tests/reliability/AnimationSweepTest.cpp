// Allocation-failure sweeps of the colour and frame animations: areas, tables, frames, images,
// copies, drawing, and changes passed on to the members holding copies (images level on).
#include <gtest/gtest.h>

#include <type_traits>

#include "tests/reliability/Sweep.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

const char* const kKinds[4] = {"QvACycle", "QvAFlash", "QvASwitch", "QvAFade"};

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
}

TEST(AColorSweep, SwitchTables) {
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
  for (int kind : {0, 1, 3}) {
    SweepOp(std::string(kKinds[kind]) + "::Dup", kAreaLevels, [kind](Trial& t, Movie& m) {
      m.OnColour(kind, [&](auto& a) {
        std::remove_reference_t<decltype(*a)> other;
        t([&] { a->Dup(&other); });
        EXPECT_TRUE(t.faulted || !a->Area() ||
                    (other.Count() == a->Count() && other.Error() == a->Error()));
      });
    });
  }
  SweepOp("QvASwitch::Dup", kAreaLevels, [](Trial& t, Movie& m) {
    SwitchProbe other;
    tbColorTable table(m.table);
    other.RegCTable(-1, &table);
    t([&] { m.switcher->Dup(&other); });
    EXPECT_EQ(other.Count(), other.TableCount());
    EXPECT_EQ(other.End(), other.Count() - 1);
    EXPECT_TRUE(t.faulted || other.Count() == m.switcher->Count());
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
    const bool ok = !t.Failed(r == -1);
    EXPECT_EQ(r, !ok ? -1 : frames < 1 ? frames : 1);
    EXPECT_EQ(m.frame->CountAFrame(), frames + (ok ? 1 : 0));
    EXPECT_TRUE(ok || m.frame->End() == end);
  });
  SweepOp("QvAFrame::Reg from another animation", kAll, [](Trial& t, Movie& m) {
    auto src = Other(m, true);
    const std::int16_t frames = m.frame->CountAFrame();
    const std::int16_t r = t([&] { return m.frame->Reg(0, src.get(), 1); });
    const bool ok = !t.Failed(r == -1);
    double zx = 0;
    m.frame->GetAFrame(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &zx,
                       nullptr, nullptr);
    EXPECT_EQ(r, ok ? 0 : -1);
    EXPECT_EQ(m.frame->CountAFrame(), frames + (ok ? 1 : 0));
    EXPECT_TRUE(!ok || zx == 2.0);
  });
  for (bool cut : {true, false}) {  // cut from a larger picture, or copied at the frame's size
    SweepOp(cut ? "QvAFrame::SetOrgImage cut" : "QvAFrame::SetOrgImage copy", kFromPopulated,
            [cut](Trial& t, Movie& m) {
              std::vector<unsigned char> buf(8 * 6, 77);
              const bool ok = t.Ok([&] {
                return cut ? m.frame->SetOrgImage(1, m.picture.data(), 24, 24, Movie::kPicH)
                           : m.frame->SetOrgImage(1, buf.data(), 8, 6);
              });
              unsigned char* org = nullptr;
              std::int16_t w = 0, h = 0;
              EXPECT_EQ(m.frame->GetOrgImage(1, &org, &w, &h), 1);
              ASSERT_EQ(org != nullptr, ok);
              EXPECT_TRUE(!ok || org[0] == (cut ? m.picture[8] : 77));
            });
  }
  SweepOp("QvAFrame::SetImage transform", kFromPopulated, [](Trial& t, Movie& m) {
    const bool ok =
        t.Ok([&] { return m.frame->SetImage(2, m.picture.data(), 24, 24, Movie::kPicH); });
    EXPECT_TRUE(HasImage(*m.frame, 2) || !ok);
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
    // The thumbnail's buffer is the one allocation: a fault must fail it.
    const bool ok = t.Ok([&] { return m.frame->GetIcon(0, dst.data(), 20, 16, 16); });
    EXPECT_EQ(ok, !t.faulted);
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
  for (bool backup : {false, true}) {
    const char* name = backup ? "QvAFrame::Backup" : "QvAFrame::Dup into another animation";
    SweepOp(name, kAll, [&, backup](Trial& t, Movie& m) {
      auto dst = Other(m, !backup);
      EXPECT_TRUE(!t.Ok([&] {
        return backup ? m.frame->Backup(dst.get()) : m.frame->Dup(dst.get());
      }) || dst->CountAFrame() == m.frame->CountAFrame());
      settled(*dst);
    });
    name = backup ? "QvAFrame::Restore" : "QvAFrame::Dup into the animation with members";
    SweepOp(name, kAll, [backup](Trial& t, Movie& m) {
      auto src = Other(m, !backup);
      EXPECT_TRUE(!t.Ok([&] {
        return backup ? m.frame->Restore(src.get()) : src->Dup(m.frame.get());
      }) || m.frame->CountAFrame() == 2);
    });
  }
  for (bool withPal : {false, true}) {
    for (bool master : {false, true}) {
      const std::string name = master ? "QvAFrame::DrawMPicture" : "QvAFrame::DrawAPicture";
      SweepOp(name + (withPal ? " with a palette area" : ""), kFromImages, [=](Trial& t, Movie& m) {
        tbGWorld* world = nullptr;
        tbRect bounds(0, 0, 20, 16);
        ASSERT_EQ(qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, &m.table), 1);
        Screen c(48, 32);
        QvPal* pal = withPal ? &m.pal : nullptr;
        t.Ok([&] {
          return master ? m.frame->DrawMPicture(5, world, 10, 8, pal, 0, 0, 0, 0, &c.pixMap, -3, 20)
                        : m.frame->DrawAPicture(1, world, 10, 8, pal, withPal ? 3 : -1, 3, 2, 1,
                                                &c.pixMap, 4, 4);
        });
        qv::tb.DisposeGWorld(world);
      });
    }
  }
}

// Changes that allocate only by passing fresh copies on to the members: they
// succeed even when that fails. The walk is the same for every change:
// UpdateMCast is swept on every level with members, the others on the first;
// Set stands for the setters, which all end in that walk.
TEST(AFrameSweep, PassingOn) {
  struct Change {
    const char* name;
    std::function<char(QvAFrame&)> run;
  };
  const Change changes[] = {
      {"Set", [](QvAFrame& a) { return a.Set(0, 1, 1, 7, 5, 3, 3); }},
      {"Del", [](QvAFrame& a) { return a.Del(1); }},
      {"DelAll", [](QvAFrame& a) { return a.DelAll(), char{1}; }},
      {"UpdateMCast", [](QvAFrame& a) { return a.UpdateMCast(), char{1}; }},
      {"UnlockUpdateMCast",
       [](QvAFrame& a) { return a.LockUpdateMCast(), a.UnlockUpdateMCast(), char{1}; }},
  };
  for (const Change& c : changes) {
    const bool walk = std::string(c.name) == "UpdateMCast";
    SweepOp(std::string("QvAFrame::") + c.name, walk ? kFromImages : kImages,
            [&c](Trial& t, Movie& m) { EXPECT_EQ(t([&] { return c.run(*m.frame); }), 1); });
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
