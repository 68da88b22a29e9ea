#include "toolbox/tbToolBox.h"

#include <pixman.h>

#include <algorithm>
#include <cstring>

#include "toolbox/QvCopyLocal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"

namespace qv {
tbToolBox tb;
}  // namespace qv

namespace {

// Releases a pixman region on every way out.
struct RegionGuard {
  pixman_region32_t r;
  RegionGuard() { pixman_region32_init(&r); }
  ~RegionGuard() { pixman_region32_fini(&r); }
};

}  // namespace

tbToolBox::~tbToolBox() = default;

std::int16_t tbToolBox::NewGWorld(tbGWorld** world, std::int16_t depth, tbRect* bounds,
                                  tbColorTable* table) {
  if (!world) return 0;
  *world = nullptr;
  if (depth != kDepth8 || !bounds || bounds->left != 0 || bounds->top != 0) return 0;
  const std::int32_t w = bounds->right;
  const std::int32_t h = bounds->bottom;
  if (w < 1 || h < 1 || w > 32767 || h > 32767) return 0;

  // tbGWorld can only be made here; its allocation is counted like any other.
  if (QvAllocationFails()) return 0;
  tbGWorld* made = new (std::nothrow) tbGWorld;
  if (!made) return 0;
  void* pixels =
      qv::GlobalAlloc(qv::kGlobalFixed, static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
  if (!pixels) {
    delete made;
    return 0;
  }
  made->bounds = tbRect(0, 0, w, h);
  made->pixMap =
      tbPixMap(static_cast<unsigned char*>(pixels), static_cast<std::int16_t>(w), made->bounds);
  if (table) made->cTable = *table;
  *world = made;
  return 1;
}

void tbToolBox::DisposeGWorld(tbGWorld* world) { delete world; }

void tbToolBox::CopyBits(tbPixMap* src, tbPixMap* dst, tbRect* srcRect, tbRect* dstRect,
                         std::uint32_t mode, tbRegion* region) {
  if (!src || !dst || !srcRect || !dstRect || mode != kSrcCopy) return;
  if (!src->TopAddr() || !dst->TopAddr()) return;
  if (region && !region->Handle()) return;  // a region never created lets nothing through

  const tbRect& sb = src->Bounds();
  const tbRect& db = dst->Bounds();
  QvCopyBlock block;
  if (!QvClipCopy(*srcRect, *dstRect, sb, db, &block)) return;
  const std::int64_t sx = block.sx, sy = block.sy, dx = block.dx, dy = block.dy;
  const std::int64_t w = block.w, h = block.h;

  // The destination rectangle now lies inside the destination bounds, so it
  // fits the region's 32-bit coordinates.
  RegionGuard area;
  pixman_region32_fini(&area.r);
  pixman_region32_init_rect(&area.r, static_cast<int>(dx), static_cast<int>(dy),
                            static_cast<unsigned int>(w), static_cast<unsigned int>(h));
  if (region) {
    if (!pixman_region32_intersect(&area.r, &area.r,
                                   static_cast<pixman_region32_t*>(region->Handle()))) {
      return;
    }
  }
  int n = 0;
  const pixman_box32_t* boxes = pixman_region32_rectangles(&area.r, &n);
  if (n <= 0 || !boxes) return;

  // Offsets that take a destination position to its source position.
  const std::int64_t offX = sx - dx;
  const std::int64_t offY = sy - dy;
  unsigned char* const srcBase = src->TopAddr();
  unsigned char* const dstBase = dst->TopAddr();
  const std::int64_t srcRow = src->Offset();
  const std::int64_t dstRow = dst->Offset();

  // When source and destination share a buffer, rows and spans are visited
  // so that no source pixel is overwritten before it has been read: bottom
  // up when the copy moves down, right to left when it moves right.
  const bool shared = srcBase == dstBase;
  const std::int64_t shiftY = (dy - db.top) - (sy - sb.top);
  const std::int64_t shiftX = (dx - db.left) - (sx - sb.left);
  const bool upward = shared && shiftY > 0;
  const bool leftward = shared && shiftX > 0;

  // The rectangles come in bands of equal top and bottom, sorted by top.
  int bandStart = upward ? n : 0;
  while (upward ? bandStart > 0 : bandStart < n) {
    int first, last;  // band [first, last)
    if (upward) {
      last = bandStart;
      first = last - 1;
      while (first > 0 && boxes[first - 1].y1 == boxes[last - 1].y1) --first;
      bandStart = first;
    } else {
      first = bandStart;
      last = first + 1;
      while (last < n && boxes[last].y1 == boxes[first].y1) ++last;
      bandStart = last;
    }
    const std::int64_t y1 = boxes[first].y1, y2 = boxes[first].y2;
    for (std::int64_t i = 0; i < y2 - y1; ++i) {
      const std::int64_t y = upward ? y2 - 1 - i : y1 + i;
      for (int k = 0; k < last - first; ++k) {
        const pixman_box32_t& b = boxes[leftward ? last - 1 - k : first + k];
        const std::int64_t x = b.x1;
        const std::size_t len = static_cast<std::size_t>(static_cast<std::int64_t>(b.x2) - x);
        unsigned char* to = dstBase + (y - db.top) * dstRow + (x - db.left);
        const unsigned char* from = srcBase + (y + offY - sb.top) * srcRow + (x + offX - sb.left);
        std::memmove(to, from, len);
      }
    }
  }
}

unsigned char** tbToolBox::NewString(unsigned char* text) {
  if (!text) return nullptr;
  const std::size_t len = std::strlen(reinterpret_cast<const char*>(text));
  unsigned char** handle = QvNew<unsigned char*>();
  if (!handle) return nullptr;
  void* block = qv::GlobalAlloc(qv::kGlobalFixed, len + 1);
  if (!block) {
    delete handle;
    return nullptr;
  }
  std::memcpy(block, text, len + 1);
  *handle = static_cast<unsigned char*>(block);
  return handle;
}

void QvFreeString(unsigned char** handle) {
  if (!handle) return;
  qv::GlobalFree(*handle);
  delete handle;
}
