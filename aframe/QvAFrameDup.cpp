#include "aframe/QvAFrame.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "aframe/QvAFrameLocal.h"
#include "cast/QvMCast.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

using namespace qvaframe;

// ---------------------------------------------------------------------------
// Copies of whole animations
//
// The copies walk their source through its list rather than by successive
// frame indices: a source that is locked would otherwise yield its locked
// frame at every index, and the copy would never end. The source's lookup
// lock is left as it was, so that a copy made while the host works on a
// locked frame (the cast members are refreshed by copies after every change)
// does not disturb it. A locked target loses its lock: its frames are
// deleted first, and deleting the locked frame releases the lock.

namespace {

// Appends to dst a frame with f's settings (rectangle, anchor, interval,
// zoom, rotation, active flag) and leaves dst's lookup locked on it, for the
// caller to add what else it copies; -1 when the frame cannot be made.
std::int16_t CopySettings(QvAFrame* dst, const QvAFrameInfo* f) {
  const std::int16_t n =
      dst->Reg(-1, f->posX, f->posY, f->width, f->height, f->anchorX, f->anchorY, f->interval);
  if (n == -1) return -1;
  dst->LockA(n);
  dst->SetZoom(n, f->zoomX, f->zoomY);
  dst->SetRot(n, f->rotation);
  if (f->activeFlag != 0)
    dst->Activate(n);
  else
    dst->Deactivate(n);
  return n;
}

}  // namespace

char QvAFrame::Dup(QvAFrame* dst) {
  if (!dst) return 0;
  if (dst == this) return 1;  // an animation is already a copy of itself
  dst->SetMode(mode);
  dst->SetSpeed(speed);
  dst->LockUpdateMCast();
  dst->DelAll();
  for (const QvAFrameInfo* f = frameList; f; f = f->next) {
    const std::int16_t n = CopySettings(dst, f);
    if (n == -1) {
      dst->UnlockUpdateMCast();
      return 0;
    }
    // Only a buffer of the frame's present size is copied (see localSetSize).
    if (f->orgImage && f->orgWidth == f->width && f->orgHeight == f->height)
      dst->SetOrgImage(n, f->orgImage, f->width, f->height);
    if (f->image && f->mask)
      dst->SetImage(n, f->image, f->mask, f->imageWidth, f->imageHeight, f->imageOffsetX,
                    f->imageOffsetY);
    dst->Unlock();
  }
  dst->SetTop(0);
  dst->SetEnd(static_cast<std::int32_t>(dst->CountMFrame()) - 1);
  dst->UnlockUpdateMCast();
  return 1;
}

char QvAFrame::Backup(QvAFrame* dst) {
  if (!dst) return 0;
  if (dst == this) return 1;
  dst->LockUpdateMCast();
  dst->DelAll();
  for (const QvAFrameInfo* f = frameList; f; f = f->next) {
    const std::int16_t n = CopySettings(dst, f);
    if (n == -1) {
      dst->UnlockUpdateMCast();
      return 0;
    }
    dst->Unlock();
  }
  dst->UnlockUpdateMCast();
  return 1;
}

char QvAFrame::Restore(QvAFrame* src) {
  if (!src) return 0;
  if (src == this) return 1;
  LockUpdateMCast();
  DelAll();
  for (const QvAFrameInfo* f = src->frameList; f; f = f->next) {
    const std::int16_t n = CopySettings(this, f);
    if (n == -1) {
      UnlockUpdateMCast();
      return 0;
    }
    Unlock();
  }
  localResetRange();
  UnlockUpdateMCast();
  return 1;
}

// ---------------------------------------------------------------------------
// Persistence: the library reads and writes no files.

char QvAFrame::Load(int) { return 0; }
char QvAFrame::Load(char*) { return 0; }
char QvAFrame::Load(int, std::uint32_t) { return 0; }
char QvAFrame::Save(int, std::uint32_t) { return 0; }
char QvAFrame::Save(char*, std::uint32_t, std::uint32_t, std::uint32_t) { return 0; }
