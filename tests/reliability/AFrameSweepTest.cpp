// Allocation-failure sweeps of the frame animation's allocating operations.
// From the level with images on, the animation has cast members, so every
// change also passes fresh copies on to them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/reliability/Movie.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

// Every member holding a copy of the animation has all its frames, unless a
// fault hit the passing on.
void ExpectCopies(Movie& m, bool faulted, const std::string& where) {
  if (faulted || m.level < Level::kImages) return;
  for (std::int16_t id : {kFramed, kScroller}) {
    QvAFrame* copy = m.cast->AFrame(id);
    ASSERT_NE(copy, nullptr) << where;
    EXPECT_EQ(copy->CountAFrame(), m.frame->CountAFrame()) << where;
    EXPECT_EQ(copy->CountMFrame(), m.frame->CountMFrame()) << where;
  }
}

// A second animation with two frames, made outside the injection.
std::unique_ptr<FrameProbe> Other(Movie& m, bool images) {
  auto a = std::make_unique<FrameProbe>();
  a->Reg(-1, 1, 1, 6, 5, 3, 3, 2);
  a->Reg(-1, 4, 2, 9, 7, 8, 5, 6);
  a->SetZoom(1, 2.0, 1.0);
  a->Activate(0);
  if (images) {
    for (std::int16_t i = 0; i < 2; ++i)
      a->SetImage(i, m.picture.data(), Movie::kPictureWidth, Movie::kPictureWidth,
                  Movie::kPictureHeight);
  }
  return a;
}

TEST(AFrameSweep, Reg) {
  SweepMovie("QvAFrame::Reg", AllLevels(), [](Movie& m, int k, const std::string& where) {
    const std::int16_t frames = m.frame->CountAFrame();
    const std::int32_t end = m.frame->End();
    std::int16_t r = 0;
    const int n = Inject(k, [&] { r = m.frame->Reg(1, 2, 2, 5, 5, 4, 4, 2); });
    if (r == -1) {
      EXPECT_TRUE(Faulted(k, n)) << where;
      EXPECT_EQ(m.frame->CountAFrame(), frames) << where;
      EXPECT_EQ(m.frame->End(), end) << where;
    } else {
      EXPECT_EQ(r, frames < 1 ? frames : 1) << where;
      EXPECT_EQ(m.frame->CountAFrame(), frames + 1) << where;
    }
    ExpectCopies(m, Faulted(k, n), where);
    return n;
  });
  SweepMovie("QvAFrame::Reg from another animation", AllLevels(),
             [](Movie& m, int k, const std::string& where) {
               auto src = Other(m, true);
               const std::int16_t frames = m.frame->CountAFrame();
               std::int16_t r = 0;
               const int n = Inject(k, [&] { r = m.frame->Reg(0, src.get(), 1); });
               if (r == -1) {
                 EXPECT_TRUE(Faulted(k, n)) << where;
                 EXPECT_EQ(m.frame->CountAFrame(), frames) << where;
               } else {
                 EXPECT_EQ(r, 0) << where;
                 double zx = 0;
                 m.frame->GetAFrame(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, &zx, nullptr, nullptr);
                 EXPECT_EQ(zx, 2.0) << where;
               }
               EXPECT_EQ(m.frame->UpdateLock(), 0) << where;
               ExpectCopies(m, Faulted(k, n), where);
               return n;
             });
}

TEST(AFrameSweep, Images) {
  SweepMovie("QvAFrame::SetOrgImage cut", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] {
                 r = m.frame->SetOrgImage(1, m.picture.data(), Movie::kPictureWidth,
                                          Movie::kPictureWidth, Movie::kPictureHeight);
               });
               unsigned char* org = nullptr;
               std::int16_t w = 0, h = 0;
               EXPECT_EQ(m.frame->GetOrgImage(1, &org, &w, &h), 1) << where;
               if (r == 0) {
                 EXPECT_TRUE(Faulted(k, n)) << where;
                 EXPECT_EQ(org, nullptr) << where;
               } else {
                 EXPECT_NE(org, nullptr) << where;
                 if (org) {
                   EXPECT_EQ(org[0], m.picture[8]) << where;
                 }
               }
               ExpectCopies(m, Faulted(k, n), where);
               return n;
             });
  SweepMovie("QvAFrame::SetOrgImage copy", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               std::vector<unsigned char> buf(8 * 6, 77);
               char r = 0;
               const int n = Inject(k, [&] { r = m.frame->SetOrgImage(1, buf.data(), 8, 6); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               unsigned char* org = nullptr;
               std::int16_t w = 0, h = 0;
               m.frame->GetOrgImage(1, &org, &w, &h);
               EXPECT_EQ(org != nullptr, r == 1) << where;
               return n;
             });
  SweepMovie("QvAFrame::SetImage transform", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] {
                 r = m.frame->SetImage(2, m.picture.data(), Movie::kPictureWidth,
                                       Movie::kPictureWidth, Movie::kPictureHeight);
               });
               unsigned char* image = nullptr;
               unsigned char* mask = nullptr;
               m.frame->GetAImage(2, &image, &mask, nullptr, nullptr, nullptr, nullptr);
               EXPECT_EQ(image == nullptr, mask == nullptr) << where;
               if (r == 1) {
                 EXPECT_NE(image, nullptr) << where;
               } else {
                 EXPECT_TRUE(Faulted(k, n)) << where;
               }
               ExpectCopies(m, Faulted(k, n), where);
               return n;
             });
  SweepMovie("QvAFrame::SetImage recompute", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               m.frame->SetRot(0, 1.0);
               char r = 0;
               const int n = Inject(k, [&] { r = m.frame->SetImage(0, nullptr, 0, 0, 0); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               return n;
             });
  SweepMovie("QvAFrame::SetImage ready image", LevelsFrom(Level::kPopulated),
             [](Movie& m, int k, const std::string& where) {
               std::vector<unsigned char> image(5 * 4, 21), mask(5 * 4, 255);
               char r = 0;
               const int n = Inject(
                   k, [&] { r = m.frame->SetImage(1, image.data(), mask.data(), 5, 4, -2, -2); });
               unsigned char* got = nullptr;
               unsigned char* gotMask = nullptr;
               std::int16_t w = 0;
               m.frame->GetAImage(1, &got, &gotMask, &w, nullptr, nullptr, nullptr);
               EXPECT_EQ(got == nullptr, gotMask == nullptr) << where;
               if (r == 1) {
                 EXPECT_NE(got, nullptr) << where;
                 EXPECT_EQ(w, 5) << where;
               } else {
                 EXPECT_TRUE(Faulted(k, n)) << where;
               }
               return n;
             });
  SweepMovie("QvAFrame::GetIcon", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               std::vector<unsigned char> dst(20 * 16, 9);
               char r = 0;
               const int n = Inject(k, [&] { r = m.frame->GetIcon(0, dst.data(), 20, 16, 16); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               // Asked again, the thumbnail is made or served from the cache.
               EXPECT_EQ(m.frame->GetIcon(0, dst.data(), 20, 16, 16), 1) << where;
               return n;
             });
}

TEST(AFrameSweep, Copies) {
  SweepMovie("QvAFrame::Dup into another animation", AllLevels(),
             [](Movie& m, int k, const std::string& where) {
               auto dst = Other(m, true);
               char r = 0;
               const int n = Inject(k, [&] { r = m.frame->Dup(dst.get()); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               if (r == 1) {
                 EXPECT_EQ(dst->CountAFrame(), m.frame->CountAFrame()) << where;
               }
               EXPECT_EQ(dst->UpdateLock(), 0) << where << ": update lock left held";
               EXPECT_EQ(dst->LookupLock(), 0) << where << ": lookup lock left held";
               EXPECT_EQ(dst->End(), dst->CountMFrame() - 1) << where;
               return n;
             });
  SweepMovie("QvAFrame::Dup into the animation with members", AllLevels(),
             [](Movie& m, int k, const std::string& where) {
               auto src = Other(m, true);
               char r = 0;
               const int n = Inject(k, [&] { r = src->Dup(m.frame.get()); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               if (r == 1) {
                 EXPECT_EQ(m.frame->CountAFrame(), 2) << where;
               }
               ExpectCopies(m, Faulted(k, n), where);
               return n;
             });
  SweepMovie("QvAFrame::Backup", AllLevels(), [](Movie& m, int k, const std::string& where) {
    auto dst = Other(m, false);
    char r = 0;
    const int n = Inject(k, [&] { r = m.frame->Backup(dst.get()); });
    EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
    if (r == 1) {
      EXPECT_EQ(dst->CountAFrame(), m.frame->CountAFrame()) << where;
    }
    EXPECT_EQ(dst->UpdateLock(), 0) << where;
    return n;
  });
  SweepMovie("QvAFrame::Restore", AllLevels(), [](Movie& m, int k, const std::string& where) {
    auto src = Other(m, false);
    char r = 0;
    const int n = Inject(k, [&] { r = m.frame->Restore(src.get()); });
    EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
    if (r == 1) {
      EXPECT_EQ(m.frame->CountAFrame(), 2) << where;
    }
    ExpectCopies(m, Faulted(k, n), where);
    return n;
  });
}

TEST(AFrameSweep, Drawing) {
  for (bool withPal : {false, true}) {
    const std::string suffix = withPal ? " with a palette area" : "";
    SweepMovie("QvAFrame::DrawAPicture" + suffix, LevelsFrom(Level::kImages),
               [withPal](Movie& m, int k, const std::string& where) {
                 tbGWorld* world = nullptr;
                 tbRect bounds(0, 0, 20, 16);
                 EXPECT_EQ(tb.NewGWorld(&world, 8, &bounds, &m.table), 1) << where;
                 Canvas canvas(48, 32);
                 char r = 0;
                 const int n = Inject(k, [&] {
                   r = m.frame->DrawAPicture(1, world, 10, 8, withPal ? &m.pal : nullptr,
                                             withPal ? 3 : -1, 3, 2, 1, &canvas.map, 4, 4);
                 });
                 EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
                 tb.DisposeGWorld(world);
                 return n;
               });
    SweepMovie("QvAFrame::DrawMPicture" + suffix, LevelsFrom(Level::kImages),
               [withPal](Movie& m, int k, const std::string& where) {
                 tbGWorld* world = nullptr;
                 tbRect bounds(0, 0, 20, 16);
                 EXPECT_EQ(tb.NewGWorld(&world, 8, &bounds, &m.table), 1) << where;
                 Canvas canvas(48, 32);
                 char r = 0;
                 const int n = Inject(k, [&] {
                   r = m.frame->DrawMPicture(5, world, 10, 8, withPal ? &m.pal : nullptr, 0, 0, 0,
                                             0, &canvas.map, -3, 20);
                 });
                 EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
                 tb.DisposeGWorld(world);
                 return n;
               });
  }
}

// Changes that allocate only by passing fresh copies on to the members.
TEST(AFrameSweep, PassingOn) {
  struct Change {
    const char* name;
    std::function<char(QvAFrame&)> run;
  };
  const std::vector<Change> changes = {
      {"Set", [](QvAFrame& a) { return a.Set(0, 1, 1, 7, 5, 3, 3); }},
      {"SetPos", [](QvAFrame& a) { return a.SetPos(1, 3, 2); }},
      {"SetSize", [](QvAFrame& a) { return a.SetSize(2, 4, 4); }},
      {"SetAnchor", [](QvAFrame& a) { return a.SetAnchor(0, 0, 0); }},
      {"SetInterval", [](QvAFrame& a) { return a.SetInterval(0, 9); }},
      {"SetZoom", [](QvAFrame& a) { return a.SetZoom(0, 0.5, 2.0); }},
      {"SetRot", [](QvAFrame& a) { return a.SetRot(1, -1.0); }},
      {"Del", [](QvAFrame& a) { return a.Del(1); }},
      {"DelAll",
       [](QvAFrame& a) {
         a.DelAll();
         return char{1};
       }},
      {"UpdateMCast",
       [](QvAFrame& a) {
         a.UpdateMCast();
         return char{1};
       }},
      {"UnlockUpdateMCast",
       [](QvAFrame& a) {
         a.LockUpdateMCast();
         a.UnlockUpdateMCast();
         return char{1};
       }},
  };
  // The walk is the same for every change: UpdateMCast is swept on every
  // level with members, the others on the first.
  for (const Change& c : changes) {
    const bool walk = std::string(c.name) == "UpdateMCast";
    SweepMovie(std::string("QvAFrame::") + c.name,
               walk ? LevelsFrom(Level::kImages) : std::vector<Level>{Level::kImages},
               [&c](Movie& m, int k, const std::string& where) {
                 char r = 0;
                 const int n = Inject(k, [&] { r = c.run(*m.frame); });
                 EXPECT_EQ(r, 1) << where;
                 ExpectCopies(m, Faulted(k, n), where);
                 return n;
               });
  }
  SweepMovie("QvAFrame::DelFromMCast", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               const int n = Inject(k, [&] { m.frame->DelFromMCast(); });
               QvMCast* c = nullptr;
               std::int16_t id = 0;
               EXPECT_EQ(m.frame->Get(0, &c, &id), 0) << where;
               return n;
             });
  SweepMovie("QvAFrame destructor", LevelsFrom(Level::kImages),
             [](Movie& m, int k, const std::string& where) {
               const int n = Inject(k, [&] { m.frame.reset(); });
               // The members keep their copies (unless a fault took one).
               if (!Faulted(k, n)) {
                 EXPECT_NE(m.cast->AFrame(kFramed), nullptr) << where;
               }
               return n;
             });
}

}  // namespace
}  // namespace reliability
