#include "tests/reliability/Sweep.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "cast/QvMCastInfo.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbToolBox.h"

namespace reliability {
namespace {

// A runaway sweep (an operation that allocates without end) stops here.
constexpr int kMaxFaults = 200000;

// Builds the movie up to the level, with fault injection off.
void Build(Movie& m, unsigned level) {
  if (level < kPopulated) return;
  CastProbe& c = *m.cast;
  FrameProbe& f = *m.frame;
  ASSERT_EQ(c.New(kPlain, Text("plain")), 1);
  ASSERT_EQ(c.SetStartEnd(kPlain, 0, 9), 1);
  ASSERT_EQ(c.New(kPath, Text("path")), 1);
  QvMCastDft dft[3];
  QvMCastAnc anc[6];
  for (int i = 0; i < 6; ++i) {
    if (i < 3) dft[i].pointA = tbPoint(i, i + 1), dft[i].pointC = tbPoint(-i, 7);
    if (i < 3) dft[i].flag = static_cast<char>(i);
    anc[i].point = tbPoint(4 * i, 2 * i + 1);
    anc[i].flag = static_cast<char>(i % 3 == 0 ? 1 : 0);
  }
  ASSERT_EQ(c.SetStartEnd(kPath, 0, 19), 1);
  ASSERT_EQ(c.RegDft(kPath, 7, dft, 3, 1, Text("path"), &m.dftList), kPath);
  ASSERT_EQ(c.RegAnc(kPath, anc, 6, QvMCast::kAncReflect, Text("path")), kPath);
  ASSERT_EQ(c.RegScroll(kPath, QvMCast::kScrollLeft | QvMCast::kScrollUp, Text("path")), kPath);
  ASSERT_EQ(c.SetAncSelectArea(kPath, 1, 4), 1);
  ASSERT_EQ(c.New(kTableOnly, Text("table")), 1);
  ASSERT_EQ(c.RegOrgCTable(kTableOnly, &m.table, &m.pal, Text("table")), kTableOnly);
  ASSERT_EQ(c.SetStartEnd(kTableOnly, 5, 14), 1);
  ASSERT_EQ(f.Reg(-1, 0, 0, 8, 6, 4, 3, 4), 0);
  ASSERT_EQ(f.Reg(-1, 8, 0, 8, 6, 12, 3, 3), 1);
  ASSERT_EQ(f.Reg(-1, 2, 7, 10, 8, 6, 10, 5), 2);
  ASSERT_EQ(f.SetZoom(1, 1.5, 0.75), 1);
  ASSERT_EQ(f.SetRot(2, 0.5), 1);
  ASSERT_EQ(f.Activate(1), 1);
  for (int kind = 0; kind < 4; ++kind) ASSERT_EQ(m.Colour(kind)->RegArea(&m.pal), 1);
  m.cycle->SetMode(QvMPlayer::kPlayLoop);
  ASSERT_EQ(m.switcher->RegCTable(-1, &m.table), 1);
  tbColorTable other(m.table);
  tbRGBColor red(255, 0, 0);
  for (int i = 16; i < 32; ++i) other.SetCTTable(static_cast<std::int16_t>(i), &red);
  ASSERT_EQ(m.switcher->RegCTable(-1, &other), 1);
  m.fade->RegColor(65535, 0, 32768);
  m.fade->SetCount(10);
  ASSERT_EQ(m.layers->New(0, 10), 0);
  ASSERT_EQ(m.layers->New(1, 11), 1);
  if (level < kImages) return;

  for (std::int16_t i = 0; i < 3; ++i)
    ASSERT_EQ(f.SetImage(i, m.picture.data(), Movie::kPicW, Movie::kPicW, Movie::kPicH), 1);
  ASSERT_EQ(c.New(kFramed, Text("framed")), 1);
  ASSERT_EQ(c.RegAFrame(kFramed, &f, 20, Text("framed"), &f), kFramed);
  ASSERT_EQ(c.RegOrgCTable(kFramed, &m.table, &m.pal, Text("framed")), kFramed);
  ASSERT_EQ(c.New(kScroller, Text("scroller")), 1);
  ASSERT_EQ(c.RegAFrame(kScroller, &f, 40, Text("scroller"), &f), kScroller);
  ASSERT_EQ(c.RegOrgCTable(kScroller, &m.table, nullptr, Text("scroller")), kScroller);
  for (int i = 0; i < 4; ++i) anc[i].point = tbPoint(10 + 3 * i, 8 + i), anc[i].flag = 0;
  ASSERT_EQ(c.RegAnc(kScroller, anc, 4, QvMCast::kAncWrap, Text("scroller")), kScroller);
  ASSERT_EQ(c.RegScroll(kScroller, QvMCast::kScrollRight | QvMCast::kScrollDown, Text("scroller")),
            kScroller);
  if (level < kColour) return;

  ASSERT_EQ(c.New(kColoured, Text("coloured")), 1);
  ASSERT_EQ(c.RegAFrame(kColoured, &f, 10, Text("coloured"), &f), kColoured);
  ASSERT_EQ(c.RegOrgCTable(kColoured, &m.table, &m.pal, Text("coloured")), kColoured);
  for (char kind = 0; kind < 4; ++kind) {
    ASSERT_EQ(
        c.RegAColor(kColoured, m.Colour(kind), kind, 10, Text("coloured"), m.ColourList(kind)),
        kColoured);
  }
  ASSERT_EQ(c.RegAColor(kTableOnly, m.fade.get(), QvAColor::kFade, 0, Text("table"), m.fade.get()),
            kTableOnly);
  if (level < kLayers) return;

  ASSERT_EQ(m.layers->RegCast(0, &c, kPlain, -1), 1);
  ASSERT_EQ(m.layers->RegCast(0, &c, kFramed, 0), 1);
  ASSERT_EQ(m.layers->RegCast(0, &c, kScroller, 0), 1);
  ASSERT_EQ(m.layers->RegCast(1, &c, kColoured, 3), 1);
  ASSERT_EQ(m.layers->RegCast(1, &c, kPath, -1), 1);
  ASSERT_EQ(c.Backup(kFramed, m.backup.get()), 1);
  ASSERT_EQ(c.Backup(kColoured, m.backup.get()), 1);
  ASSERT_EQ(m.layers->SetComment(Text("a note on the movie"), 20), 1);
}

std::uint32_t MaskOf(const QvMCastInfo& r) {
  std::uint32_t mask = (r.aFrame ? 0x010u : 0u) | (r.dft || r.anc ? 0x020u : 0u);
  for (int k = 0; k < 4; ++k) {
    if (r.aColor[k]) mask |= 1u << k;
    if (r.scroll & (1 << k)) mask |= 0x040u << k;
  }
  return mask;
}

// Walks a doubly linked list, checking the back links and its end; calls f on
// each record and gives the number of records.
template <class R, class F>
int Walk(R* head, F&& f) {
  int n = 0;
  for (R *r = head, *prev = nullptr; r; prev = r, r = r->next) {
    EXPECT_EQ(r->prev, prev) << "broken links";
    EXPECT_LT(++n, 10000) << "list does not end";
    if (n >= 10000) break;
    f(*r);
  }
  return n;
}

// A frame animation seen through its public interface (member copies too).
void VerifyFrames(QvAFrame& a) {
  const std::int16_t frames = a.CountAFrame();
  EXPECT_GE(frames, 0);
  for (std::int16_t i = 0; i < frames; ++i) {
    unsigned char *image = nullptr, *mask = nullptr;
    std::int16_t w = 0, h = 0, ox = 0, oy = 0;
    ASSERT_EQ(a.GetAImage(i, &image, &mask, &w, &h, &ox, &oy), 1);
    EXPECT_EQ(image == nullptr, mask == nullptr) << "image and mask of frame " << i;
    EXPECT_TRUE(!image || (w >= 1 && h >= 1));
  }
  EXPECT_TRUE(frames == 0 || a.End() == a.CountMFrame() - 1);
}

void VerifyStore(CastProbe& store, Movie& m) {
  EXPECT_EQ(store.LockFlag(), 0) << "store left locked";
  const QvMCastList* expected[5] = {m.cycle.get(), m.flash.get(), m.switcher.get(), m.fade.get(),
                                    m.frame.get()};
  const int count = Walk(store.Head(), [&](QvMCastInfo& r) {
    SCOPED_TRACE("member " + std::to_string(r.id));
    const std::uint32_t mask = MaskOf(r);
    EXPECT_EQ(r.actFlag & ~mask, 0u) << "act flags beyond the mask";
    EXPECT_EQ(r.showFlag & ~mask, 0u) << "show flags beyond the mask";
    EXPECT_TRUE(!r.dft || r.dftLast >= 0);
    EXPECT_TRUE(r.anc ? r.ancLast >= 0 : r.ancLast == 0);
    EXPECT_TRUE(!r.orgGWorld || r.orgGWorld->PortPixMap()->TopAddr());
    if (r.aFrame) VerifyFrames(*r.aFrame);
    EXPECT_TRUE(!r.aColor[0] || dynamic_cast<QvACycle*>(r.aColor[0]));
    EXPECT_TRUE(!r.aColor[1] || dynamic_cast<QvAFlash*>(r.aColor[1]));
    EXPECT_TRUE(!r.aColor[2] || dynamic_cast<QvASwitch*>(r.aColor[2]));
    EXPECT_TRUE(!r.aColor[3] || dynamic_cast<QvAFade*>(r.aColor[3]));
    // A back-reference names a live animation of this movie that lists the
    // member: otherwise destroying that animation would leave it dangling.
    for (int k = 0; k < 6; ++k) {
      QvMCastList* list = r.lists[k];
      if (!list) continue;
      if (k < 5 && list != expected[k]) {
        ADD_FAILURE() << "list " << k << " is not the movie's";
      } else if (!casttest::ListSize(*list, &store, r.id)) {
        ADD_FAILURE() << "refers to list " << k << " which does not hold it (the reference"
                      << " dangles once the animation is destroyed)";
        r.lists[k] = nullptr;  // so that the rest of the sweep can go on
      }
    }
  });
  EXPECT_EQ(store.Count(), count);
}

// Every entry of an animation's list names a member that refers back to it;
// when `complete`, with a copy as long as the animation.
void VerifyList(QvMCastList* list, int kind, Movie& m, bool complete) {
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  for (std::int16_t n = 0; n < 10000 && list->Get(n, &c, &id); ++n) {
    ASSERT_TRUE(c == m.cast.get() || c == m.backup.get()) << "foreign store in list";
    QvMCastInfo* r = static_cast<CastProbe*>(c)->Rec(id);
    ASSERT_NE(r, nullptr) << "list " << kind << " names absent member " << id;
    EXPECT_EQ(r->lists[kind], list) << "member " << id << " does not refer to list " << kind;
    if (!complete) continue;
    SCOPED_TRACE("copy of animation " + std::to_string(kind) + " on member " + std::to_string(id));
    if (kind == 4) {
      ASSERT_NE(r->aFrame, nullptr);
      EXPECT_EQ(r->aFrame->CountAFrame(), m.frame->CountAFrame());
      EXPECT_EQ(r->aFrame->CountMFrame(), m.frame->CountMFrame());
    } else {
      ASSERT_NE(r->aColor[kind], nullptr);
      EXPECT_EQ(r->aColor[kind]->Count(), m.Colour(kind)->Count());
    }
  }
}

void Verify(Movie& m, bool complete) {
  for (CastProbe* store : {m.cast.get(), m.backup.get()})
    if (store) VerifyStore(*store, m);
  for (int kind = 0; kind < 4; ++kind)
    if (m.Colour(kind)) VerifyList(m.ColourList(kind), kind, m, complete);
  if (m.frame) {
    FrameProbe& f = *m.frame;
    VerifyList(&f, 4, m, complete);
    VerifyFrames(f);
    EXPECT_EQ(f.UpdateLock(), 0) << "update lock left held";
    EXPECT_EQ(f.LookupLock(), 0) << "lookup lock left held";
    EXPECT_EQ(f.CountAFrame(), Walk(f.Frames(), [](QvAFrameInfo&) {}));
  }
  if (m.switcher) {
    const std::int16_t n = m.switcher->TableCount();
    EXPECT_EQ(m.switcher->Count(), n);
    EXPECT_EQ(m.switcher->Tables() == nullptr, n == 0);
    EXPECT_EQ(m.switcher->End(), n - 1);
  }
  if (m.layers) {
    const int n = Walk(m.layers->Head(), [](QvMLayerInfo& r) {
      EXPECT_NE(r.casts, nullptr) << "layer without a cast list";
    });
    EXPECT_EQ(m.layers->Count(), n);
    EXPECT_EQ(m.layers->Comment() == nullptr, m.layers->CommentSize() == 0);
  }
}

// Later operations that must work: every animation passes itself on again,
// every member is drawn, iconised and asked for its colours and name, the
// layers are drawn, and a member is registered, duplicated and backed up.
void Exercise(Movie& m) {
  QvFailAllocation(0);
  if (m.frame) m.frame->UpdateMCast();
  for (int kind = 0; kind < 4; ++kind) m.OnColour(kind, [](auto& a) { a->UpdateMCast(); });
  Screen canvas(64, 48);
  for (CastProbe* store : {m.cast.get(), m.backup.get()}) {
    if (!store) continue;
    for (std::int16_t i = 0, count = store->Count(); i < count; ++i) {
      const std::int16_t id = store->Index2ID(i);
      const std::int32_t start = store->Start(id);
      store->DrawPicture(id, -1, &canvas.pixMap, &canvas.area);
      store->DrawPicture(id, start + 3, &canvas.pixMap, &canvas.area);
      store->CTable(id, start);
      tbPicture* icon = store->Icon(id, 12, 10);
      EXPECT_TRUE(!icon || store->Icon(id, 12, 10) == icon) << "icon not cached";
      unsigned char** name = nullptr;
      EXPECT_EQ(store->GetName(id, &name), 1);
      QvFreeString(name);
      tbRect r;
      tbPoint p;
      store->GetAFrameArea(id, start, &canvas.area, 0, &r, &p);
    }
  }
  if (m.layers)
    for (std::int32_t t : {0, 12, 25, 45}) m.layers->DrawPicture(t, &canvas.pixMap, &canvas.area);
  if (m.cast && m.frame) {
    unsigned char* late = Text("late");
    EXPECT_GE(m.cast->RegAFrame(-1, m.frame.get(), 0, late, m.frame.get()), 0)
        << "registration after the trial failed";
    if (m.cast->Count() > 0 && m.backup) {
      const std::int16_t first = m.cast->Index2ID(0);
      EXPECT_TRUE(m.cast->Start(first) == -1 || m.cast->Backup(first, m.backup.get()) == 1)
          << "backup after the trial";
      EXPECT_GE(m.cast->Dup(first, 60, late, m.backup.get(), -1), 0) << "dup after the trial";
    }
  }
}

// Grows the test framework's stack of traces (kept between tests) to the
// depth the trials use, before any allocations are counted.
bool WarmTraces(int depth) {
  SCOPED_TRACE("");
  return depth <= 1 || WarmTraces(depth - 1);
}

const char* const kLevelNames[] = {"empty", "populated", "images", "colour", "layers"};

}  // namespace

bool Trial::Failed(bool failed) const {
  EXPECT_TRUE(!failed || faulted) << "failure result without a fault";
  return failed;
}

void Sweep(const std::string& operation, const std::function<void(Trial&)>& trial) {
  [[maybe_unused]] static const bool warm = WarmTraces(4);
  QvFailAllocation(0);
  int faults = 0;
  for (int k = 0; k <= kMaxFaults; ++k) {
    const ::testing::TestResult* result =
        ::testing::UnitTest::GetInstance()->current_test_info()->result();
    const int reports = result->total_part_count();
    const long before = LiveAllocations();
    Trial t{k};
    {
      SCOPED_TRACE(operation + " k=" + std::to_string(k));
      trial(t);
    }
    QvFailAllocation(0);
    // A failure reported by the trial keeps its message: no leak check then.
    if (before >= 0 && result->total_part_count() == reports) {
      EXPECT_EQ(LiveAllocations(), before) << operation << ": leaked with fault " << k;
    }
    if (::testing::Test::HasFatalFailure()) {
      ADD_FAILURE() << operation << ": stopped at allocation " << k;
      break;
    }
    if (k > 0 && t.attempts < k) break;
    faults = k;
  }
  EXPECT_LT(faults, kMaxFaults) << operation << " never stops allocating";
  std::printf("[ sweep    ] %-60s %6d faults\n", operation.c_str(), faults);
}

void SweepOp(const std::string& name, unsigned levels,
             const std::function<void(Trial&, Movie&)>& body) {
  for (int i = 0; i < 5; ++i) {
    const unsigned level = 1u << i;
    if (!(levels & level)) continue;
    Sweep(name + " [" + kLevelNames[i] + "]", [&](Trial& t) {
      QvFailAllocation(0);
      auto m = std::make_unique<Movie>();
      m->level = static_cast<Level>(level);
      Build(*m, level);
      if (::testing::Test::HasFatalFailure()) return;
      body(t, *m);
      Verify(*m, !t.faulted);  // an operation without a fault passes changes on
      Exercise(*m);
      SCOPED_TRACE("after the later operations");
      Verify(*m, true);
      // Destroys everything: the animations first (they detach from the
      // members) or the layer and cast stores first.
      if (t.k % 2 == 0) {
        m->frame.reset();
        for (int kind = 0; kind < 4; ++kind) m->OnColour(kind, [](auto& a) { a.reset(); });
      }
      m.reset();
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

Movie::Movie() {
  pal.SetRange(16, 31, 1);
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(255 - i),
                 static_cast<unsigned char>(i * 3));
    table.SetCTTable(static_cast<std::int16_t>(i), &c);
  }
  for (std::size_t i = 0; i < picture.size(); ++i)
    picture[i] = static_cast<unsigned char>(16 + (i * 7) % 40);
}

QvAColor* Movie::Colour(int kind) const {
  QvAColor* anims[4] = {cycle.get(), flash.get(), switcher.get(), fade.get()};
  return anims[kind];
}

QvMCastList* Movie::ColourList(int kind) const {
  QvMCastList* lists[4] = {cycle.get(), flash.get(), switcher.get(), fade.get()};
  return lists[kind];
}

}  // namespace reliability
