// Allocation-failure sweeps of the layer store's allocating operations.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/reliability/Movie.h"
#include "tests/reliability/Sweep.h"

namespace reliability {
namespace {

bool OnLayer(QvMLayer& layers, std::int16_t index, QvMCast* cast, std::int16_t id) {
  QvMCast* c = nullptr;
  std::int16_t i = 0;
  for (std::int16_t n = 0; layers.Get(index, n, &c, &i); ++n)
    if (c == cast && i == id) return true;
  return false;
}

TEST(LayerSweep, New) {
  for (std::int16_t at : {0, -1}) {
    SweepMovie("QvMLayer::New at " + std::to_string(at), AllLevels(),
               [at](Movie& m, int k, const std::string& where) {
                 const std::int16_t count = m.layers->Count();
                 std::int16_t r = 0;
                 const int n = Inject(k, [&] { r = m.layers->New(at, 42); });
                 if (r == -1) {
                   EXPECT_TRUE(Faulted(k, n)) << where;
                   EXPECT_EQ(m.layers->Count(), count) << where;
                   EXPECT_EQ(m.layers->ID2Index(42), -1) << where;
                 } else {
                   EXPECT_EQ(r, at == 0 ? 0 : count) << where;
                   EXPECT_EQ(m.layers->Index2ID(r), 42) << where;
                   EXPECT_EQ(m.layers->Count(), count + 1) << where;
                 }
                 return n;
               });
  }
}

TEST(LayerSweep, RegCast) {
  for (char fit : {-1, 0, 1, 2, 3}) {
    SweepMovie("QvMLayer::RegCast fit " + std::to_string(fit), LevelsFrom(Level::kPopulated),
               [fit](Movie& m, int k, const std::string& where) {
                 CastProbe* c = m.cast.get();
                 // The member overlaps the neighbours on layer 0 in the fuller
                 // states, so that every fitting has work to do.
                 c->SetStartEnd(kTableOnly, 15, 45);
                 char r = 0;
                 const int n = Inject(k, [&] { r = m.layers->RegCast(0, c, kTableOnly, fit); });
                 if (r == 0) {
                   EXPECT_TRUE(Faulted(k, n)) << where;
                   EXPECT_FALSE(OnLayer(*m.layers, 0, c, kTableOnly)) << where;
                   EXPECT_EQ(c->Start(kTableOnly), 15) << where << ": range changed on failure";
                   EXPECT_EQ(c->End(kTableOnly), 45) << where;
                 } else {
                   EXPECT_EQ(r, 1) << where;
                   EXPECT_TRUE(OnLayer(*m.layers, 0, c, kTableOnly)) << where;
                   EXPECT_EQ(c->End(kTableOnly) - c->Start(kTableOnly) <= 30, true) << where;
                 }
                 return n;
               });
  }
  SweepMovie("QvMLayer::RegCast placed again", {Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.layers->RegCast(0, m.cast.get(), kFramed, 3); });
               EXPECT_EQ(r, 1) << where;
               return n;
             });
}

TEST(LayerSweep, FitCast) {
  for (char mode : {0, 3}) {
    SweepMovie("QvMLayer::FitCast mode " + std::to_string(mode), {Level::kLayers},
               [mode](Movie& m, int k, const std::string& where) {
                 CastProbe* c = m.cast.get();
                 c->SetStartEnd(kScroller, 5, 30);
                 char r = 0;
                 const int n = Inject(k, [&] { r = m.layers->FitCast(0, c, kScroller, mode); });
                 EXPECT_TRUE(r == 0 || r == 1) << where;
                 if (!Faulted(k, n)) {
                   EXPECT_EQ(r, 1) << where;
                 }
                 EXPECT_LE(c->Start(kScroller), c->End(kScroller)) << where;
                 return n;
               });
  }
}

TEST(LayerSweep, MoveAndCopy) {
  SweepMovie("QvMLayer::MoveCast", {Level::kLayers}, [](Movie& m, int k, const std::string& where) {
    CastProbe* c = m.cast.get();
    char r = 0;
    const int n = Inject(k, [&] { r = m.layers->MoveCast(0, c, kFramed, 1); });
    if (r == 0) {
      EXPECT_TRUE(Faulted(k, n)) << where;
      EXPECT_TRUE(OnLayer(*m.layers, 0, c, kFramed)) << where;
      EXPECT_FALSE(OnLayer(*m.layers, 1, c, kFramed)) << where;
    } else {
      EXPECT_FALSE(OnLayer(*m.layers, 0, c, kFramed)) << where;
      EXPECT_TRUE(OnLayer(*m.layers, 1, c, kFramed)) << where;
    }
    return n;
  });
  SweepMovie("QvMLayer::Copy to another layer", {Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.layers->Copy(0, m.layers.get(), 1); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               if (r == 1) {
                 EXPECT_TRUE(OnLayer(*m.layers, 1, m.cast.get(), kScroller)) << where;
               }
               return n;
             });
  SweepMovie("QvMLayer::Copy to another store", {Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               LayerProbe other;
               EXPECT_EQ(other.New(0, 1), 0) << where;
               char r = 0;
               const int n = Inject(k, [&] { r = m.layers->Copy(0, &other, 0); });
               EXPECT_TRUE(r == 1 || Faulted(k, n)) << where;
               QvMCast* c = nullptr;
               std::int16_t id = 0;
               std::int16_t copied = 0;
               while (other.Get(0, copied, &c, &id)) ++copied;
               EXPECT_EQ(copied == 3, r == 1) << where;
               return n;
             });
}

TEST(LayerSweep, Comment) {
  SweepMovie("QvMLayer::NewComment", {Level::kEmpty, Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               char r = 0;
               const int n = Inject(k, [&] { r = m.layers->NewComment(64); });
               unsigned char* data = nullptr;
               std::uint16_t size = 0;
               m.layers->GetComment(&data, &size);
               if (r == 0) {
                 EXPECT_TRUE(Faulted(k, n)) << where;
                 EXPECT_EQ(data, nullptr) << where;
                 EXPECT_EQ(size, 0) << where;
               } else {
                 EXPECT_NE(data, nullptr) << where;
                 EXPECT_EQ(size, 64) << where;
               }
               return n;
             });
  SweepMovie("QvMLayer::SetComment", {Level::kEmpty, Level::kLayers},
             [](Movie& m, int k, const std::string& where) {
               Text text("twelve bytes");
               char r = 0;
               const int n = Inject(k, [&] { r = m.layers->SetComment(text, 13); });
               unsigned char* data = nullptr;
               std::uint16_t size = 0;
               m.layers->GetComment(&data, &size);
               if (r == 0) {
                 EXPECT_TRUE(Faulted(k, n)) << where;
                 EXPECT_EQ(data, nullptr) << where;
               } else {
                 EXPECT_EQ(size, 13) << where;
                 EXPECT_EQ(std::memcmp(data, "twelve bytes", 13), 0) << where;
               }
               return n;
             });
}

TEST(LayerSweep, DrawPicture) {
  for (std::int32_t t : {12, 25}) {
    SweepMovie("QvMLayer::DrawPicture at " + std::to_string(t), {Level::kLayers},
               [t](Movie& m, int k, const std::string&) {
                 Canvas canvas(64, 48);
                 return Inject(k, [&] { m.layers->DrawPicture(t, &canvas.map, &canvas.area); });
               });
  }
}

TEST(LayerSweep, Destructor) {
  SweepMovie("QvMLayer destructor", {Level::kLayers}, [](Movie& m, int k, const std::string&) {
    return Inject(k, [&] { m.layers.reset(new LayerProbe); });
  });
}

}  // namespace
}  // namespace reliability
