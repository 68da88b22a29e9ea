#include "tests/reliability/Movie.h"

#include <gtest/gtest.h>

#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "cast/QvMCastInfo.h"
#include "tests/reliability/Sweep.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbToolBox.h"

namespace reliability {

const char* LevelName(Level level) {
  switch (level) {
    case Level::kEmpty:
      return "empty";
    case Level::kPopulated:
      return "populated";
    case Level::kImages:
      return "images";
    case Level::kColour:
      return "colour";
    case Level::kLayers:
      return "layers";
  }
  return "?";
}

std::vector<Level> AllLevels() { return LevelsFrom(Level::kEmpty); }

std::vector<Level> LevelsFrom(Level from) {
  std::vector<Level> levels;
  for (int l = static_cast<int>(from); l <= static_cast<int>(Level::kLayers); ++l)
    levels.push_back(static_cast<Level>(l));
  return levels;
}

std::string Where(const std::string& operation, Level level, int k) {
  return operation + " [" + LevelName(level) + "] k=" + std::to_string(k);
}

Canvas::Canvas(std::int16_t w, std::int16_t h)
    : pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), 0),
      map(pixels.data(), w, tbRect(0, 0, w, h)),
      area(0, 0, w, h) {}

Movie::Movie()
    : cast(new CastProbe),
      backup(new CastProbe),
      frame(new FrameProbe),
      cycle(new CycleProbe),
      flash(new QvAFlash),
      switcher(new SwitchProbe),
      fade(new QvAFade),
      layers(new LayerProbe),
      table(static_cast<std::int16_t>(72)),
      picture(static_cast<std::size_t>(kPictureWidth) * kPictureHeight) {
  pal.SetRange(16, 31, 1);
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(255 - i),
                 static_cast<unsigned char>(i * 3));
    table.SetCTTable(static_cast<std::int16_t>(i), &c);
  }
  for (std::size_t i = 0; i < picture.size(); ++i)
    picture[i] = static_cast<unsigned char>(16 + (i * 7) % 40);
}

Movie::~Movie() = default;

namespace {

QvMCastList* ListOf(QvAFrame* a) { return a; }
QvMCastList* ListOf(QvACycle* a) { return a; }
QvMCastList* ListOf(QvAFlash* a) { return a; }
QvMCastList* ListOf(QvASwitch* a) { return a; }
QvMCastList* ListOf(QvAFade* a) { return a; }

void BuildPopulated(Movie& m) {
  CastProbe& c = *m.cast;
  Text plain("plain"), path("path"), tableOnly("table");
  ASSERT_EQ(c.New(kPlain, plain), 1);
  ASSERT_EQ(c.SetStartEnd(kPlain, 0, 9), 1);

  ASSERT_EQ(c.New(kPath, path), 1);
  QvMCastDft dft[3];
  for (int i = 0; i < 3; ++i) {
    dft[i].pointA = tbPoint(i, i + 1);
    dft[i].pointC = tbPoint(-i, 7);
    dft[i].flag = static_cast<char>(i);
  }
  ASSERT_EQ(c.SetStartEnd(kPath, 0, 19), 1);
  ASSERT_EQ(c.RegDft(kPath, 7, dft, 3, 1, path, nullptr), kPath);
  QvMCastAnc anc[6];
  for (int i = 0; i < 6; ++i) {
    anc[i].point = tbPoint(4 * i, 2 * i + 1);
    anc[i].flag = static_cast<char>(i % 3 == 0 ? 1 : 0);
  }
  ASSERT_EQ(c.RegAnc(kPath, anc, 6, 2, path), kPath);
  ASSERT_EQ(c.RegScroll(kPath, 1 | 4, path), kPath);
  ASSERT_EQ(c.SetAncSelectArea(kPath, 1, 4), 1);

  ASSERT_EQ(c.New(kTableOnly, tableOnly), 1);
  ASSERT_EQ(c.RegOrgCTable(kTableOnly, &m.table, &m.pal, tableOnly), kTableOnly);
  ASSERT_EQ(c.SetStartEnd(kTableOnly, 5, 14), 1);

  FrameProbe& f = *m.frame;
  ASSERT_EQ(f.Reg(-1, 0, 0, 8, 6, 4, 3, 4), 0);
  ASSERT_EQ(f.Reg(-1, 8, 0, 8, 6, 12, 3, 3), 1);
  ASSERT_EQ(f.Reg(-1, 2, 7, 10, 8, 6, 10, 5), 2);
  ASSERT_EQ(f.SetZoom(1, 1.5, 0.75), 1);
  ASSERT_EQ(f.SetRot(2, 0.5), 1);
  ASSERT_EQ(f.Activate(1), 1);

  ASSERT_EQ(m.cycle->RegArea(&m.pal), 1);
  m.cycle->SetMode(2);
  ASSERT_EQ(m.flash->RegArea(&m.pal), 1);
  ASSERT_EQ(m.switcher->RegArea(&m.pal), 1);
  ASSERT_EQ(m.switcher->RegCTable(-1, &m.table), 1);
  tbColorTable other(m.table);
  tbRGBColor red(255, 0, 0);
  for (int i = 16; i < 32; ++i) other.SetCTTable(static_cast<std::int16_t>(i), &red);
  ASSERT_EQ(m.switcher->RegCTable(-1, &other), 1);
  ASSERT_EQ(m.fade->RegArea(&m.pal), 1);
  m.fade->RegColor(65535, 0, 32768);
  m.fade->SetCount(10);

  ASSERT_EQ(m.layers->New(0, 10), 0);
  ASSERT_EQ(m.layers->New(1, 11), 1);
}

void BuildImages(Movie& m) {
  FrameProbe& f = *m.frame;
  for (std::int16_t i = 0; i < 3; ++i) {
    ASSERT_EQ(f.SetImage(i, m.picture.data(), Movie::kPictureWidth, Movie::kPictureWidth,
                         Movie::kPictureHeight),
              1);
  }
  CastProbe& c = *m.cast;
  Text framed("framed"), scroller("scroller");
  ASSERT_EQ(c.New(kFramed, framed), 1);
  ASSERT_EQ(c.RegAFrame(kFramed, &f, 20, framed, ListOf(&f)), kFramed);
  ASSERT_EQ(c.RegOrgCTable(kFramed, &m.table, &m.pal, framed), kFramed);

  ASSERT_EQ(c.New(kScroller, scroller), 1);
  ASSERT_EQ(c.RegAFrame(kScroller, &f, 40, scroller, ListOf(&f)), kScroller);
  ASSERT_EQ(c.RegOrgCTable(kScroller, &m.table, nullptr, scroller), kScroller);
  QvMCastAnc anc[4];
  for (int i = 0; i < 4; ++i) anc[i].point = tbPoint(10 + 3 * i, 8 + i);
  ASSERT_EQ(c.RegAnc(kScroller, anc, 4, 3, scroller), kScroller);
  ASSERT_EQ(c.RegScroll(kScroller, 2 | 8, scroller), kScroller);
}

void BuildColour(Movie& m) {
  CastProbe& c = *m.cast;
  Text coloured("coloured"), tableOnly("table");
  ASSERT_EQ(c.New(kColoured, coloured), 1);
  ASSERT_EQ(c.RegAFrame(kColoured, m.frame.get(), 10, coloured, ListOf(m.frame.get())), kColoured);
  ASSERT_EQ(c.RegOrgCTable(kColoured, &m.table, &m.pal, coloured), kColoured);
  ASSERT_EQ(c.RegAColor(kColoured, m.cycle.get(), 0, 10, coloured, ListOf(m.cycle.get())),
            kColoured);
  ASSERT_EQ(c.RegAColor(kColoured, m.flash.get(), 1, 10, coloured, ListOf(m.flash.get())),
            kColoured);
  ASSERT_EQ(c.RegAColor(kColoured, m.switcher.get(), 2, 10, coloured, ListOf(m.switcher.get())),
            kColoured);
  ASSERT_EQ(c.RegAColor(kColoured, m.fade.get(), 3, 10, coloured, ListOf(m.fade.get())), kColoured);
  ASSERT_EQ(c.RegAColor(kTableOnly, m.fade.get(), 3, 0, tableOnly, ListOf(m.fade.get())),
            kTableOnly);
}

void BuildLayers(Movie& m) {
  LayerProbe& l = *m.layers;
  CastProbe* c = m.cast.get();
  ASSERT_EQ(l.RegCast(0, c, kPlain, -1), 1);
  ASSERT_EQ(l.RegCast(0, c, kFramed, 0), 1);
  ASSERT_EQ(l.RegCast(0, c, kScroller, 0), 1);
  ASSERT_EQ(l.RegCast(1, c, kColoured, 3), 1);
  ASSERT_EQ(l.RegCast(1, c, kPath, -1), 1);
  ASSERT_EQ(c->Backup(kFramed, m.backup.get()), 1);
  ASSERT_EQ(c->Backup(kColoured, m.backup.get()), 1);
  Text note("a note on the movie");
  ASSERT_EQ(l.SetComment(note, 20), 1);
}

std::uint32_t MaskOf(const QvMCastInfo& r) {
  std::uint32_t mask = 0;
  for (int k = 0; k < 4; ++k)
    if (r.aColor[k]) mask |= 1u << k;
  if (r.aFrame) mask |= 0x010;
  if (r.dft || r.anc) mask |= 0x020;
  if (r.scroll & 1) mask |= 0x040;
  if (r.scroll & 2) mask |= 0x080;
  if (r.scroll & 4) mask |= 0x100;
  if (r.scroll & 8) mask |= 0x200;
  return mask;
}

bool ListHolds(QvMCastList* list, QvMCast* cast, std::int16_t id) {
  QvMCast* c = nullptr;
  std::int16_t i = 0;
  for (std::int16_t n = 0; list->Get(n, &c, &i); ++n) {
    if (c == cast && i == id) return true;
    if (n == 32767) break;
  }
  return false;
}

// A frame animation seen through its public interface only (member copies).
void VerifyFrameCopy(QvAFrame* a, const std::string& where) {
  const std::int16_t frames = a->CountAFrame();
  EXPECT_GE(frames, 0) << where;
  for (std::int16_t i = 0; i < frames; ++i) {
    unsigned char* image = nullptr;
    unsigned char* mask = nullptr;
    std::int16_t w = 0, h = 0, ox = 0, oy = 0;
    ASSERT_EQ(a->GetAImage(i, &image, &mask, &w, &h, &ox, &oy), 1) << where;
    EXPECT_EQ(image == nullptr, mask == nullptr) << where << ": image and mask of frame " << i;
    if (image) {
      EXPECT_GE(w, 1) << where;
      EXPECT_GE(h, 1) << where;
    }
  }
  if (frames > 0) {
    EXPECT_EQ(a->End(), a->CountMFrame() - 1) << where;
  }
}

void VerifyStore(CastProbe& store, Movie& m, const std::string& where) {
  EXPECT_EQ(store.Locked(), 0) << where << ": store left locked";
  int count = 0;
  QvMCastInfo* prev = nullptr;
  for (QvMCastInfo* r = store.Head(); r; r = r->next) {
    EXPECT_EQ(r->prev, prev) << where << ": broken member links";
    prev = r;
    ++count;
    ASSERT_LT(count, 10000) << where << ": member list does not end";
    const std::uint32_t mask = MaskOf(*r);
    EXPECT_EQ(r->actFlag & ~mask, 0u) << where << ": act flags beyond the mask of " << r->id;
    EXPECT_EQ(r->showFlag & ~mask, 0u) << where << ": show flags beyond the mask of " << r->id;
    if (r->dft) {
      EXPECT_GE(r->dftLast, 0) << where;
    }
    if (r->anc) {
      EXPECT_GE(r->ancLast, 0) << where;
    }
    if (!r->anc) {
      EXPECT_EQ(r->ancLast, 0) << where;
    }
    if (r->orgGWorld) {
      EXPECT_NE(r->orgGWorld->PortPixMap()->TopAddr(), nullptr) << where;
    }
    if (r->aFrame) VerifyFrameCopy(r->aFrame, where + " member " + std::to_string(r->id));
    if (r->aColor[0]) {
      EXPECT_NE(dynamic_cast<QvACycle*>(r->aColor[0]), nullptr) << where;
    }
    if (r->aColor[1]) {
      EXPECT_NE(dynamic_cast<QvAFlash*>(r->aColor[1]), nullptr) << where;
    }
    if (r->aColor[2]) {
      EXPECT_NE(dynamic_cast<QvASwitch*>(r->aColor[2]), nullptr) << where;
    }
    if (r->aColor[3]) {
      EXPECT_NE(dynamic_cast<QvAFade*>(r->aColor[3]), nullptr) << where;
    }
    // A back-reference names a live animation of this movie that lists the
    // member: otherwise destroying that animation would leave it dangling.
    for (int k = 0; k < 6; ++k) {
      QvMCastList* list = r->lists[k];
      if (!list) continue;
      QvMCastList* expected[6] = {ListOf(m.cycle.get()),    ListOf(m.flash.get()),
                                  ListOf(m.switcher.get()), ListOf(m.fade.get()),
                                  ListOf(m.frame.get()),    nullptr};
      if (k < 5) {
        EXPECT_EQ(list, expected[k]) << where << ": member " << r->id << " list " << k;
        if (list != expected[k]) continue;
      }
      if (!ListHolds(list, &store, r->id)) {
        ADD_FAILURE() << where << ": member " << r->id << " refers to list " << k
                      << " which does not hold it (the reference dangles once the animation"
                      << " is destroyed)";
        // Forget the reference so that the rest of the sweep can go on.
        r->lists[k] = nullptr;
      }
    }
  }
  EXPECT_EQ(store.Count(), count) << where;
}

// Every entry of an animation's list names a member that refers back to it.
void VerifyList(QvMCastList* list, int kind, Movie& m, const std::string& where) {
  QvMCast* c = nullptr;
  std::int16_t id = 0;
  for (std::int16_t n = 0; list->Get(n, &c, &id); ++n) {
    ASSERT_TRUE(c == m.cast.get() || c == m.backup.get()) << where << ": foreign store in list";
    CastProbe* store = static_cast<CastProbe*>(c);
    QvMCastInfo* r = store->Head();
    while (r && r->id != id) r = r->next;
    ASSERT_NE(r, nullptr) << where << ": list " << kind << " names absent member " << id;
    EXPECT_EQ(r->lists[kind], list)
        << where << ": member " << id << " does not refer to list " << kind;
    ASSERT_LT(n, 10000) << where;
  }
}

void VerifyFrame(FrameProbe& f, const std::string& where) {
  EXPECT_EQ(f.UpdateLock(), 0) << where << ": update lock left held";
  EXPECT_EQ(f.LookupLock(), 0) << where << ": lookup lock left held";
  int n = 0;
  QvAFrameInfo* prev = nullptr;
  for (QvAFrameInfo* r = f.Frames(); r; r = r->next) {
    EXPECT_EQ(r->prev, prev) << where << ": broken frame links";
    prev = r;
    EXPECT_EQ(r->image == nullptr, r->mask == nullptr) << where << ": frame " << n;
    ASSERT_LT(++n, 10000) << where;
  }
  EXPECT_EQ(f.CountAFrame(), n) << where;
  if (n > 0) {
    EXPECT_EQ(f.End(), f.CountMFrame() - 1) << where;
  }
}

}  // namespace

std::unique_ptr<Movie> MakeMovie(Level level) {
  QvFailAllocation(0);
  auto m = std::make_unique<Movie>();
  m->level = level;
  if (level >= Level::kPopulated) BuildPopulated(*m);
  if (level >= Level::kImages) BuildImages(*m);
  if (level >= Level::kColour) BuildColour(*m);
  if (level >= Level::kLayers) BuildLayers(*m);
  return m;
}

void Verify(Movie& m, const std::string& where) {
  if (m.cast) VerifyStore(*m.cast, m, where + " (cast)");
  if (m.backup) VerifyStore(*m.backup, m, where + " (backup)");
  if (m.frame) {
    VerifyFrame(*m.frame, where);
    VerifyList(ListOf(m.frame.get()), 4, m, where);
  }
  if (m.cycle) VerifyList(ListOf(m.cycle.get()), 0, m, where);
  if (m.flash) VerifyList(ListOf(m.flash.get()), 1, m, where);
  if (m.switcher) {
    VerifyList(ListOf(m.switcher.get()), 2, m, where);
    const std::int16_t n = m.switcher->TableCount();
    EXPECT_EQ(m.switcher->Count(), n) << where;
    EXPECT_EQ(m.switcher->Tables() == nullptr, n == 0) << where;
    EXPECT_EQ(m.switcher->End(), n - 1) << where;
  }
  if (m.fade) VerifyList(ListOf(m.fade.get()), 3, m, where);
  if (m.layers) {
    int n = 0;
    QvMLayerInfo* prev = nullptr;
    for (QvMLayerInfo* r = m.layers->Head(); r; r = r->next) {
      EXPECT_EQ(r->prev, prev) << where << ": broken layer links";
      EXPECT_NE(r->casts, nullptr) << where << ": layer without a cast list";
      prev = r;
      ASSERT_LT(++n, 10000) << where;
    }
    EXPECT_EQ(m.layers->Count(), n) << where;
    EXPECT_EQ(m.layers->Comment() == nullptr, m.layers->CommentSize() == 0) << where;
  }
}

void Exercise(Movie& m, const std::string& where) {
  QvFailAllocation(0);
  if (m.frame) m.frame->UpdateMCast();
  if (m.cycle) m.cycle->UpdateMCast();
  if (m.flash) m.flash->UpdateMCast();
  if (m.switcher) m.switcher->UpdateMCast();
  if (m.fade) m.fade->UpdateMCast();
  Canvas canvas(64, 48);
  for (CastProbe* store : {m.cast.get(), m.backup.get()}) {
    if (!store) continue;
    const std::int16_t count = store->Count();
    for (std::int16_t i = 0; i < count; ++i) {
      const std::int16_t id = store->Index2ID(i);
      const std::int32_t start = store->Start(id);
      store->DrawPicture(id, -1, &canvas.map, &canvas.area);
      store->DrawPicture(id, start + 3, &canvas.map, &canvas.area);
      store->CTable(id, start);
      tbPicture* icon = store->Icon(id, 12, 10);
      if (icon) {
        EXPECT_EQ(store->Icon(id, 12, 10), icon) << where << ": icon not cached";
      }
      unsigned char** name = nullptr;
      EXPECT_EQ(store->GetName(id, &name), 1) << where;
      QvFreeString(name);
      tbRect r;
      tbPoint p;
      store->GetAFrameArea(id, start, &canvas.area, 0, &r, &p);
    }
  }
  if (m.layers) {
    for (std::int32_t t : {0, 12, 25, 45}) m.layers->DrawPicture(t, &canvas.map, &canvas.area);
  }
  // New registrations and copies succeed on whatever the trial left.
  if (m.cast && m.frame) {
    Text late("late");
    const std::int16_t id = m.cast->RegAFrame(-1, m.frame.get(), 0, late, ListOf(m.frame.get()));
    EXPECT_GE(id, 0) << where << ": registration after the trial failed";
    if (m.cast->Count() > 0 && m.backup) {
      const std::int16_t first = m.cast->Index2ID(0);
      if (m.cast->Start(first) != -1) {
        EXPECT_EQ(m.cast->Backup(first, m.backup.get()), 1) << where << ": backup after the trial";
      }
      EXPECT_GE(m.cast->Dup(first, 60, late, m.backup.get(), -1), 0)
          << where << ": duplication after the trial";
    }
  }
}

void Destroy(std::unique_ptr<Movie> m, bool animationsFirst) {
  QvFailAllocation(0);
  if (animationsFirst) {
    m->frame.reset();
    m->cycle.reset();
    m->flash.reset();
    m->switcher.reset();
    m->fade.reset();
    m->layers.reset();
    m->backup.reset();
    m->cast.reset();
  } else {
    m->layers.reset();
    m->cast.reset();
    m->backup.reset();
    m->fade.reset();
    m->switcher.reset();
    m->flash.reset();
    m->cycle.reset();
    m->frame.reset();
  }
  m.reset();
}

void Finish(std::unique_ptr<Movie> m, int k, const std::string& where) {
  Verify(*m, where);
  Exercise(*m, where);
  Verify(*m, where + " after the later operations");
  Destroy(std::move(m), k % 2 == 0);
}

void SweepMovie(const std::string& operation, const std::vector<Level>& levels, const MovieOp& op) {
  for (Level level : levels) {
    const std::string name = operation + " [" + LevelName(level) + "]";
    Sweep(name, [&](int k) {
      std::unique_ptr<Movie> m = MakeMovie(level);
      if (::testing::Test::HasFatalFailure()) return 0;
      const std::string where = Where(operation, level, k);
      const int attempts = op(*m, k, where);
      Finish(std::move(m), k, where);
      return attempts;
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

}  // namespace reliability
