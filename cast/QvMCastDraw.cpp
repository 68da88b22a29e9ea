#include "cast/QvMCast.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "acolor/QvAColor.h"
#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCastLocal.h"
#include "player/QvMCastList.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbToolBox.h"

using namespace qvcast;

// ---------------------------------------------------------------------------
// Rendering and hit-testing

std::int32_t QvMCast::localFrameOf(std::int32_t time, std::int32_t start, std::int16_t speed) {
  const std::uint32_t product = static_cast<std::uint32_t>(Sub32(time, start)) *
                                static_cast<std::uint32_t>(static_cast<std::int32_t>(speed)) * 2u;
  return static_cast<std::int32_t>(product / 60u);
}

char QvMCast::DrawPicture(std::int16_t id, std::int32_t time, tbPixMap* dst, tbRect* area) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->aFrame || !dst || !area) return 0;
  const std::int32_t t = time == -1 ? info->start : time;
  if (!InRange(info, t)) return 0;

  const std::int16_t left = Low16(static_cast<std::uint32_t>(area->left));
  const std::int16_t top = Low16(static_cast<std::uint32_t>(area->top));
  const std::int16_t right = Low16(static_cast<std::uint32_t>(area->right));
  const std::int16_t bottom = Low16(static_cast<std::uint32_t>(area->bottom));
  tbPoint p;
  char flag = 0;
  if (!localAncAt(info, t, &p, &flag)) {
    p.x = Sum16(right, -left) / 2;
    p.y = Sum16(bottom, -top) / 2;
  }
  std::int16_t w = 0, h = 0, ox = 0, oy = 0;
  // An animation without frames has no area and nothing to draw.
  if (!info->aFrame->GetArea(&w, &h, &ox, &oy)) return 0;
  const std::int16_t x = Sum16(Sum16(left, -ox), Low16(static_cast<std::uint32_t>(p.x)));
  const std::int16_t y = Sum16(Sum16(top, -oy), Low16(static_cast<std::uint32_t>(p.y)));

  const char wrap = info->scroll != 0 ? 3 : 0;
  std::int16_t sh = 0, sv = 0;
  localScrollAt(info, t, &sh, &sv);

  QvAFrame* anim = info->aFrame;
  // The world's pixels are made 0 by the frame's drawing itself, which may
  // leave them for later.
  bool zeroFirst = false;
  if (IsAColor(info)) {
    tbColorTable* ct = localCTable(info, t);
    if (!ct) return 0;
    IndexedInfo* node = Indexed(info);
    tbGWorld* world = info->orgGWorld;
    if (world && world->bounds.left == 0 && world->bounds.top == 0 && world->bounds.right == w &&
        world->bounds.bottom == h) {
      // The world of the last drawing has the size: it is made new in place,
      // its pixels 0 and its colour table ct, unless it holds that table
      // already. The two allocations a new world would attempt (the world,
      // its pixels) are still counted, so that a failing one ends the same
      // way: no world, and 0.
      if (QvAllocationFails() || QvAllocationFails()) {
        localDisposeOrgGWorld(info);
        node->worldKey.valid = false;
        return 0;
      }
      zeroFirst = true;
      if (!node->worldKey.complete || !node->worldKey.Same(node->copiesKey)) {
        if (node->worldRanges)
          node->worldRanges->localCopyRanges(world->CTable(), ct);
        else
          *world->CTable() = *ct;
        node->worldKey = node->copiesKey;
      }
    } else {
      localDisposeOrgGWorld(info);
      node->worldKey.valid = false;
      tbRect bounds;
      qv::SetRect(&bounds, 0, 0, w, h);
      if (!qv::tb.NewGWorld(&info->orgGWorld, 8, &bounds, ct)) return 0;
      node->worldKey = node->copiesKey;
    }
  } else if (!info->orgGWorld) {
    return 0;
  }

  anim->SetCur(localFrameOf(t, info->start, anim->Speed()));
  const std::int16_t f = Low16(static_cast<std::uint32_t>(anim->Cur()));
  return anim->localDrawMember(f, info->orgGWorld, zeroFirst, ox, oy, info->orgPal, info->fillIndex,
                               wrap, sh, sv, dst, x, y)
             ? 1
             : 0;
}

tbColorTable* QvMCast::CTable(std::int16_t id, std::int32_t time) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return nullptr;
  tbColorTable* table = localCTable(info, time);
  if (!table) return nullptr;
  // The result is always workCTable; the caller may write into it.
  if (table != &workCTable) workCTable = *table;
  return &workCTable;
}

tbColorTable* QvMCast::localCTable(QvMCastInfo* info, std::int32_t time) {
  if (!info->orgCTable || !InRange(info, time)) return nullptr;
  // The clocks are set first; each kind reads only its own.
  IndexedInfo* node = Indexed(info);
  node->worldRanges = nullptr;
  ColourKey key;
  key.valid = true;
  QvAColor* last = nullptr;
  for (int k = 0; k < 4; ++k) {
    QvAColor* anim = info->aColor[k];
    key.anim[k] = anim;
    if (!anim) continue;
    key.frame[k] = anim->SetCur(localFrameOf(time, info->start, anim->Speed()));
    key.change[k] = anim->changeCount;
    // A running clock moves on while the table is computed.
    if (anim->IsPlaying() && !anim->IsPausing()) key.valid = false;
    last = anim;
  }
  // The copies hold the outputs of this very computation (nothing has
  // changed them since, and their clocks stand on the same frames): the
  // chain would end in the last kind's output table, copied whole.
  if (last && key.Same(node->copiesKey) && last->CTable() && last->CTable()->CTSize() == 255) {
    return last->CTable();
  }
  bool complete = true;
  // The colours so far: a whole table (the own one, an output) is read
  // where it lies rather than copied into workCTable, which receives a
  // table of another size only.
  tbColorTable* sofar = info->orgCTable;
  if (sofar->CTSize() != 255) {
    CopyCTable(&workCTable, sofar);
    sofar = &workCTable;
  }
  // A cycle reads the own table itself (it comes first, and the own table
  // has 256 entries). While its copy and the own table stand as they were
  // at the last computation, all but the frames, its output still holds the
  // own table's entries outside its ranges, and it rewrites its ranges
  // alone; a world that held that result then takes those entries alone.
  const ColourKey& before = node->copiesKey;
  const bool worldHeld = node->worldKey.complete && node->worldKey.Same(before);
  bool rangesOnly = false;
  constexpr int kCycle = QvAColor::kCycle;
  // The store makes the copy of each kind itself: a cycle's is a QvACycle.
  auto* cycle = static_cast<QvACycle*>(info->aColor[kCycle]);
  // (Registering or removing any copy makes the last key invalid.)
  const bool cycleHeld = cycle && key.valid && before.valid && before.complete &&
                         before.change[kCycle] == key.change[kCycle] && sofar == info->orgCTable;
  for (QvAColor* anim : info->aColor) {
    if (!anim) continue;
    const bool held = anim == cycle && cycleHeld;
    if (!(held ? cycle->localRotateHeld(sofar, &rangesOnly) : anim->CTable(sofar)))
      complete = false;
    // The output table is passed on whatever the computation gave: a failed
    // computation passes on the output held before.
    tbColorTable* result = anim->CTable();
    if (!result) continue;
    if (result->CTSize() == 255) {
      sofar = result;
    } else {
      if (sofar != &workCTable) workCTable = *sofar;
      CopyCTable(&workCTable, result);
      sofar = &workCTable;
    }
  }
  if (rangesOnly && worldHeld && sofar == cycle->CTable()) node->worldRanges = cycle;
  for (int k = 0; k < 4; ++k) key.change[k] = key.anim[k] ? key.anim[k]->changeCount : 0;
  key.complete = complete;
  node->copiesKey = key;
  return sofar;
}

char QvMCast::GetAFrameArea(std::int16_t id, std::int32_t time, tbRect* area, char mode,
                            tbRect* result, tbPoint* point) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->aFrame || !InRange(info, time) || !area || !result || !point) return 0;
  QvAFrame* anim = info->aFrame;
  anim->SetCur(localFrameOf(time, info->start, anim->Speed()));
  const std::int16_t f = Low16(static_cast<std::uint32_t>(anim->Cur()));
  std::int16_t w = 0, h = 0, ox = 0, oy = 0;
  if (!anim->GetMImage(f, nullptr, nullptr, &w, &h, &ox, &oy)) return 0;

  const std::int16_t left = Low16(static_cast<std::uint32_t>(area->left));
  const std::int16_t top = Low16(static_cast<std::uint32_t>(area->top));
  const std::int16_t right = Low16(static_cast<std::uint32_t>(area->right));
  const std::int16_t bottom = Low16(static_cast<std::uint32_t>(area->bottom));
  char flag = 0;
  if (localAncAt(info, time, point, &flag)) {
    const std::int16_t ax = Low16(static_cast<std::uint32_t>(point->x));
    const std::int16_t ay = Low16(static_cast<std::uint32_t>(point->y));
    switch (mode) {
      case 0:
        point->x = Sum16(left, ax);
        point->y = Sum16(top, ay);
        break;
      case 1:
        point->x = Sum16(left, ax);
        point->y = Sum16(top, Sum16(ay, ay));
        break;
      case 2:
        point->x = Sum16(left, Sum16(ax, ax));
        point->y = Sum16(top, ay);
        break;
      default:
        break;
    }
  } else {
    point->x = Sum16(left, Sum16(right, -left) / 2);
    point->y = Sum16(top, Sum16(bottom, -top) / 2);
  }

  const std::int16_t px = Low16(static_cast<std::uint32_t>(point->x));
  const std::int16_t py = Low16(static_cast<std::uint32_t>(point->y));
  std::int16_t l, t;
  switch (mode) {
    case 0:
      l = Sum16(px, ox);
      t = Sum16(py, oy);
      qv::SetRect(result, l, t, Sum16(l, w), Sum16(t, h));
      break;
    case 1:
      l = Sum16(px, ox);
      t = Sum16(py, Sum16(oy, oy));
      qv::SetRect(result, l, t, Sum16(l, w), Sum16(t, Sum16(h, h)));
      break;
    case 2:
      l = Sum16(px, Sum16(ox, ox));
      t = Sum16(py, oy);
      qv::SetRect(result, l, t, Sum16(l, Sum16(w, w)), Sum16(t, h));
      break;
    default:
      break;
  }
  return 1;
}

char QvMCast::PtInAFrame(tbPoint* pt, std::int16_t id, std::int32_t time, tbRect* area, char mode) {
  if (!pt) return 0;
  tbRect r;
  tbPoint p;
  if (!GetAFrameArea(id, time, area, mode, &r, &p)) return 0;
  const std::int16_t x = Low16(static_cast<std::uint32_t>(pt->x));
  const std::int16_t y = Low16(static_cast<std::uint32_t>(pt->y));
  return (Low16(static_cast<std::uint32_t>(r.left)) <= x &&
          x < Low16(static_cast<std::uint32_t>(r.right)) &&
          Low16(static_cast<std::uint32_t>(r.top)) <= y &&
          y < Low16(static_cast<std::uint32_t>(r.bottom)))
             ? 1
             : 0;
}

tbPicture* QvMCast::Icon(std::int16_t id, std::int16_t width, std::int16_t height) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return nullptr;
  if (info->iconWidth != width || info->iconHeight != height) localDeleteIcon(info);
  if (info->icon.Pic()) return &info->icon;

  QvCanvas canvas;
  if (info->orgCTable) canvas.UpdateCTable(info->orgCTable);
  if (!canvas.New(width, height)) return nullptr;
  canvas.Clear(0, 0, canvas.width, canvas.height, 0, nullptr, 0);
  canvas.localGetImg();
  unsigned char* image = canvas.image;
  const std::int16_t rowBytes = canvas.rowBytes;
  const std::int16_t cw = canvas.width;
  const std::int16_t ch = canvas.height;

  if (info->aFrame) {
    const std::int16_t first = 0;
    if (!info->aFrame->GetIcon(first, image, rowBytes, cw, ch)) return nullptr;
  } else if (info->orgCTable && image) {
    // A swatch of the palette: 2 by 2 blocks, the indices spread evenly over
    // 0 to 255.
    const std::int16_t cols = static_cast<std::int16_t>(Sum16(width, 1) / 2);
    const std::int16_t rows = static_cast<std::int16_t>(Sum16(height, 1) / 2);
    const std::int32_t blocks = static_cast<std::int32_t>(cols) * rows;
    const double scale = blocks != 0 ? 256.0 / static_cast<double>(blocks) : 0.0;
    for (std::int32_t y = 0; y < ch; ++y) {
      unsigned char* row = image + static_cast<std::ptrdiff_t>(y) * rowBytes;
      for (std::int32_t x = 0; x < cw; ++x) {
        const double v = static_cast<double>((y / 2) * cols + x / 2) * scale;
        row[x] = static_cast<unsigned char>(static_cast<std::uint32_t>(Trunc32(v)) & 0xFFu);
      }
    }
  }

  QvCanvasUtil util;
  util.GetPICT(&canvas, cw, ch, &info->icon, 0, 0, cw, ch, nullptr);
  info->iconWidth = cw;
  info->iconHeight = ch;
  return info->icon.Pic() ? &info->icon : nullptr;
}
