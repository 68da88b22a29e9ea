// Allocation-failure sweeps of the layer store's allocating operations.
#include <gtest/gtest.h>

#include <cstring>

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

TEST(LayerSweep, Operations) {
  std::vector<Op> ops;
  for (std::int16_t at : {0, -1}) {
    ops.push_back({"QvMLayer::New at " + std::to_string(at), kAll, [at](Trial& t, Movie& m) {
                     const std::int16_t count = m.layers->Count();
                     const std::int16_t r = t([&] { return m.layers->New(at, 42); });
                     if (t.Failed(r == -1)) {
                       EXPECT_EQ(m.layers->Count(), count);
                       EXPECT_EQ(m.layers->ID2Index(42), -1);
                     } else {
                       EXPECT_EQ(r, at == 0 ? 0 : count);
                       EXPECT_EQ(m.layers->Index2ID(r), 42);
                       EXPECT_EQ(m.layers->Count(), count + 1);
                     }
                   }});
  }
  for (char fit : {-1, 0, 1, 2, 3}) {
    ops.push_back(
        {"QvMLayer::RegCast fit " + std::to_string(fit), kFromPopulated, [fit](Trial& t, Movie& m) {
           CastProbe* c = m.cast.get();
           // The member overlaps the neighbours on layer 0 in the
           // fuller states, so that every fitting has work to do.
           c->SetStartEnd(kTableOnly, 15, 45);
           const char r = t([&] { return m.layers->RegCast(0, c, kTableOnly, fit); });
           const bool failed = t.Failed(r == 0);
           EXPECT_EQ(OnLayer(*m.layers, 0, c, kTableOnly), !failed);
           if (failed) {
             EXPECT_EQ(c->Start(kTableOnly), 15) << "range changed on failure";
             EXPECT_EQ(c->End(kTableOnly), 45);
           } else {
             EXPECT_EQ(r, 1);
             EXPECT_LE(c->End(kTableOnly) - c->Start(kTableOnly), 30);
           }
         }});
  }
  for (char mode : {0, 3}) {
    ops.push_back(
        {"QvMLayer::FitCast mode " + std::to_string(mode), kLayers, [mode](Trial& t, Movie& m) {
           CastProbe* c = m.cast.get();
           c->SetStartEnd(kScroller, 5, 30);
           const char r = t([&] { return m.layers->FitCast(0, c, kScroller, mode); });
           EXPECT_TRUE(r == 1 || (r == 0 && t.faulted));
           EXPECT_LE(c->Start(kScroller), c->End(kScroller));
         }});
  }
  for (std::int32_t time : {12, 25}) {
    ops.push_back(
        {"QvMLayer::DrawPicture at " + std::to_string(time), kLayers, [time](Trial& t, Movie& m) {
           Canvas canvas;
           t([&] { m.layers->DrawPicture(time, &canvas.map, &canvas.area); });
         }});
  }
  SweepOps(ops);
}

TEST(LayerSweep, PlacementsAndComments) {
  SweepOps({
      {"QvMLayer::RegCast placed again", kLayers,
       [](Trial& t, Movie& m) {
         EXPECT_EQ(t([&] { return m.layers->RegCast(0, m.cast.get(), kFramed, 3); }), 1);
       }},
      {"QvMLayer::MoveCast", kLayers,
       [](Trial& t, Movie& m) {
         CastProbe* c = m.cast.get();
         const bool failed = t.Failed(t([&] { return m.layers->MoveCast(0, c, kFramed, 1); }) == 0);
         EXPECT_EQ(OnLayer(*m.layers, 0, c, kFramed), failed);
         EXPECT_EQ(OnLayer(*m.layers, 1, c, kFramed), !failed);
       }},
      {"QvMLayer::Copy to another layer", kLayers,
       [](Trial& t, Movie& m) {
         EXPECT_TRUE(t.Failed(t([&] { return m.layers->Copy(0, m.layers.get(), 1); }) != 1) ||
                     OnLayer(*m.layers, 1, m.cast.get(), kScroller));
       }},
      {"QvMLayer::Copy to another store", kLayers,
       [](Trial& t, Movie& m) {
         LayerProbe other;
         EXPECT_EQ(other.New(0, 1), 0);
         const bool failed = t.Failed(t([&] { return m.layers->Copy(0, &other, 0); }) != 1);
         QvMCast* c = nullptr;
         std::int16_t id = 0, copied = 0;
         while (other.Get(0, copied, &c, &id)) ++copied;
         EXPECT_EQ(copied == 3, !failed);
       }},
      {"QvMLayer::NewComment", kEmpty | kLayers,
       [](Trial& t, Movie& m) {
         const bool failed = t.Failed(t([&] { return m.layers->NewComment(64); }) == 0);
         unsigned char* data = nullptr;
         std::uint16_t size = 0;
         m.layers->GetComment(&data, &size);
         EXPECT_EQ(data == nullptr, failed);
         EXPECT_EQ(size, failed ? 0 : 64);
       }},
      {"QvMLayer::SetComment", kEmpty | kLayers,
       [](Trial& t, Movie& m) {
         Text text("twelve bytes");
         const bool failed = t.Failed(t([&] { return m.layers->SetComment(text, 13); }) == 0);
         unsigned char* data = nullptr;
         std::uint16_t size = 0;
         m.layers->GetComment(&data, &size);
         if (failed) {
           EXPECT_EQ(data, nullptr);
         } else {
           EXPECT_EQ(size, 13);
           EXPECT_EQ(std::memcmp(data, "twelve bytes", 13), 0);
         }
       }},
      {"QvMLayer destructor", kLayers,
       [](Trial& t, Movie& m) { t([&] { m.layers.reset(new LayerProbe); }); }},
  });
}

}  // namespace
}  // namespace reliability
