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
  for (std::int16_t at : {0, -1}) {
    SweepOp("QvMLayer::New at " + std::to_string(at), kAll, [at](Trial& t, Movie& m) {
      const std::int16_t count = m.layers->Count();
      const std::int16_t r = t([&] { return m.layers->New(at, 42); });
      const bool failed = t.Failed(r == -1);
      EXPECT_EQ(m.layers->Count(), count + (failed ? 0 : 1));
      EXPECT_EQ(m.layers->ID2Index(42), failed ? -1 : at == 0 ? 0 : count);
      EXPECT_EQ(r, failed ? -1 : at == 0 ? 0 : count);
    });
  }
  for (char fit : {-1, 0, 1, 2, 3}) {
    SweepOp("QvMLayer::RegCast fit " + std::to_string(fit), kFromPopulated,
            [fit](Trial& t, Movie& m) {
              CastProbe* c = m.cast.get();
              // The member overlaps the neighbours on layer 0 in the fuller
              // states, so that every fitting has work to do.
              c->SetStartEnd(kTableOnly, 15, 45);
              const char r = t([&] { return m.layers->RegCast(0, c, kTableOnly, fit); });
              const bool failed = t.Failed(r == 0);
              EXPECT_EQ(OnLayer(*m.layers, 0, c, kTableOnly), !failed);
              EXPECT_EQ(r, failed ? 0 : 1);
              if (failed) {
                EXPECT_EQ(c->Start(kTableOnly), 15) << "range changed on failure";
                EXPECT_EQ(c->End(kTableOnly), 45);
              }
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
    SweepOp("QvMLayer::DrawPicture at " + std::to_string(time), kLayers,
            [time](Trial& t, Movie& m) {
              Canvas c;
              t([&] { m.layers->DrawPicture(time, &c.map, &c.area); });
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
  SweepOp("QvMLayer::NewComment", kEmpty | kLayers, [](Trial& t, Movie& m) {
    const bool ok = t.Ok([&] { return m.layers->NewComment(64); });
    unsigned char* data = nullptr;
    std::uint16_t size = 0;
    m.layers->GetComment(&data, &size);
    EXPECT_EQ(data != nullptr, ok);
    EXPECT_EQ(size, ok ? 64 : 0);
  });
  SweepOp("QvMLayer::SetComment", kEmpty | kLayers, [](Trial& t, Movie& m) {
    const bool ok = t.Ok([&] { return m.layers->SetComment(Text("twelve bytes"), 13); });
    unsigned char* data = nullptr;
    std::uint16_t size = 0;
    m.layers->GetComment(&data, &size);
    EXPECT_EQ(data != nullptr, ok);
    EXPECT_TRUE(!ok || (size == 13 && std::memcmp(data, "twelve bytes", 13) == 0));
  });
  SweepOp("QvMLayer destructor", kLayers,
          [](Trial& t, Movie& m) { t([&] { m.layers.reset(new LayerProbe); }); });
}

}  // namespace
}  // namespace reliability
