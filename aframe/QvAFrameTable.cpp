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
// Construction and destruction

QvAFrame::QvAFrame()
    : QvMCastList(),
      QvMPlayer(),
      frameList(nullptr),
      curFrame(nullptr),
      lockFlag(0),
      updateLock(0) {}

void QvAFrame::localFramesChanged() {
  localSettleWorld();
  areaKnown = false;
  seekKnown = false;
}

QvAFrame::~QvAFrame() {
  // The members that use the animation keep their last copy and forget it.
  DelFromMCast();
  // The reference list is empty now, so nothing is passed on.
  DelAll();
}

// ---------------------------------------------------------------------------
// Lookups

QvAFrameInfo* QvAFrame::localSearchA(std::int16_t index) {
  if (lockFlag) return curFrame;
  QvAFrameInfo* r = nullptr;
  if (index >= 0) {
    std::int16_t n = 0;
    for (r = frameList; r; r = r->next) {
      if (n == index) break;
      n = Add16(n, 1);
    }
  }
  curFrame = r;
  return r;
}

QvAFrameInfo* QvAFrame::localSearchM(std::int16_t position) {
  if (lockFlag) return curFrame;
  // The walk stops at the first frame whose summed intervals pass the
  // position. For a position at or after the last one, the frames before the
  // last stop cannot pass it either, so the walk goes on from there; the
  // playing of an animation asks for rising positions, and this way touches
  // no frame record but the one it finds.
  std::uint16_t sum = 0;
  QvAFrameInfo* r = frameList;
  if (seekKnown && position >= seekPosition) {
    r = seekFrame;
    sum = seekEnd;
    if (static_cast<std::int16_t>(sum) > position) {
      curFrame = r;
      return r;
    }
    r = r->next;
  }
  for (; r; r = r->next) {
    sum = static_cast<std::uint16_t>(sum + static_cast<std::uint16_t>(r->interval));
    if (static_cast<std::int16_t>(sum) > position) break;
  }
  seekKnown = r != nullptr;
  seekFrame = r;
  seekPosition = position;
  seekEnd = sum;
  curFrame = r;
  return r;
}

void QvAFrame::LockA(std::int16_t index) {
  Unlock();
  localSearchA(index);
  lockFlag = 1;
}

void QvAFrame::LockM(std::int16_t position) {
  Unlock();
  localSearchM(position);
  lockFlag = 1;
}

void QvAFrame::Unlock() { lockFlag = 0; }

// ---------------------------------------------------------------------------
// Batching of changes

void QvAFrame::LockUpdateMCast() {
  // The count is 8 bits; it saturates instead of wrapping to a negative
  // value, which would switch the passing-on off for good.
  if (updateLock < 127) ++updateLock;
}

void QvAFrame::UnlockUpdateMCast() {
  if (updateLock <= 0) return;
  --updateLock;
  if (updateLock == 0) UpdateMCast();
}

void QvAFrame::UpdateMCast() {
  if (updateLock != 0) return;
  localUpdateMCast(this);
}

void QvAFrame::DelFromMCast() {
  localUpdateMCast(nullptr);
  QvMCastList::DelAll();
}

void QvAFrame::localUpdateMCast(QvMCastList* list) {
  for (std::int16_t i = 0;; i = Add16(i, 1)) {
    QvMCast* store = nullptr;
    std::int16_t id = 0;
    if (Get(i, &store, &id) != 1) break;
    if (!store) continue;
    unsigned char** handle = nullptr;
    store->GetName(id, &handle);
    unsigned char* name = handle ? *handle : nullptr;
    const std::int32_t start = store->Start(id);
    store->RegAFrame(id, this, start, name, list);
    QvFreeString(handle);
  }
}

// ---------------------------------------------------------------------------
// Record helpers

void QvAFrame::localResetRange() {
  SetTop(0);
  SetEnd(static_cast<std::int32_t>(CountMFrame()) - 1);
}

void QvAFrame::localDeleteIcon(QvAFrameInfo* info) {
  if (info && info->icon) {
    qv::GlobalFree(info->icon);
    info->icon = nullptr;
  }
}

void QvAFrame::localDeleteOrgImage(QvAFrameInfo* info) {
  if (info->orgImage) {
    qv::GlobalFree(info->orgImage);
    info->orgImage = nullptr;
  }
  info->orgWidth = 0;
  info->orgHeight = 0;
}

void QvAFrame::localDeleteImage(QvAFrameInfo* info) {
  if (info->image) {
    qv::GlobalFree(info->image);
    info->image = nullptr;
  }
  if (info->mask) {
    qv::GlobalFree(info->mask);
    info->mask = nullptr;
  }
}

void QvAFrame::localFreeFrame(QvAFrameInfo* info) {
  localDeleteOrgImage(info);
  localDeleteImage(info);
  localDeleteIcon(info);
  // Deleting the frame found last (and so the locked frame) releases the
  // lock, so that no lookup ever yields a record that no longer exists.
  if (curFrame == info) {
    curFrame = nullptr;
    lockFlag = 0;
  }
  delete info;
}

QvAFrameInfo* QvAFrame::localRegFrame(std::int16_t index, std::int16_t posX, std::int16_t posY,
                                      std::int16_t width, std::int16_t height, std::int16_t anchorX,
                                      std::int16_t anchorY, std::int16_t interval,
                                      std::int16_t* indexOut) {
  QvAFrameInfo* r = localSearchA(index);
  QvAFrameInfo* info = QvNew<QvAFrameInfo>();
  if (!info) return nullptr;
  info->posX = posX;
  info->posY = posY;
  info->width = width;
  info->height = height;
  info->anchorX = anchorX;
  info->anchorY = anchorY;
  info->interval = interval;

  localFramesChanged();
  if (r) {
    info->prev = r->prev;
    info->next = r;
    if (r->prev)
      r->prev->next = info;
    else
      frameList = info;
    r->prev = info;
    *indexOut = index;
  } else {
    std::int16_t n = 0;
    QvAFrameInfo* last = nullptr;
    for (QvAFrameInfo* p = frameList; p; p = p->next) {
      last = p;
      n = Add16(n, 1);
    }
    if (last) {
      last->next = info;
      info->prev = last;
    } else {
      frameList = info;
    }
    *indexOut = n;
  }
  return info;
}

// ---------------------------------------------------------------------------
// Registration

std::int16_t QvAFrame::Reg(std::int16_t index, std::int16_t posX, std::int16_t posY,
                           std::int16_t width, std::int16_t height, std::int16_t anchorX,
                           std::int16_t anchorY, std::int16_t interval) {
  std::int16_t n = -1;
  if (!localRegFrame(index, posX, posY, width, height, anchorX, anchorY, interval, &n)) return -1;
  localResetRange();
  UpdateMCast();
  return n;
}

std::int16_t QvAFrame::Reg(std::int16_t index, QvAFrame* src, std::int16_t srcIndex) {
  if (!src) return -1;
  std::int16_t posX, posY, width, height, anchorX, anchorY, interval;
  double zoomX, zoomY, rotation;
  if (!src->GetAFrame(srcIndex, &posX, &posY, &width, &height, &anchorX, &anchorY, &interval,
                      &zoomX, &zoomY, &rotation))
    return -1;
  LockUpdateMCast();
  std::int16_t n = -1;
  QvAFrameInfo* info =
      localRegFrame(index, posX, posY, width, height, anchorX, anchorY, interval, &n);
  if (info) {
    localResetRange();
    // Zoom and rotation go to the new record itself: while this animation is
    // locked, a lookup by n would yield the locked frame instead.
    info->zoomX = zoomX;
    info->zoomY = zoomY;
    info->rotation = rotation;
  } else {
    n = -1;
  }
  UnlockUpdateMCast();
  return n;
}

// ---------------------------------------------------------------------------
// Setters

void QvAFrame::localSetPos(std::int16_t posX, std::int16_t posY) {
  curFrame->posX = posX;
  curFrame->posY = posY;
  localDeleteIcon(curFrame);
}

void QvAFrame::localSetSize(std::int16_t width, std::int16_t height) {
  curFrame->width = width;
  curFrame->height = height;
  localDeleteIcon(curFrame);
  // An untransformed image made for another size would be read or written
  // beyond its end by the transform and the copies; it is released.
  if (curFrame->orgImage && (curFrame->orgWidth != width || curFrame->orgHeight != height))
    localDeleteOrgImage(curFrame);
}

void QvAFrame::localSetAnchor(std::int16_t anchorX, std::int16_t anchorY) {
  curFrame->anchorX = anchorX;
  curFrame->anchorY = anchorY;
  localDeleteIcon(curFrame);
}

char QvAFrame::Set(std::int16_t index, std::int16_t posX, std::int16_t posY, std::int16_t width,
                   std::int16_t height, std::int16_t anchorX, std::int16_t anchorY) {
  if (!localSearchA(index)) return 0;
  localSetPos(posX, posY);
  localSetSize(width, height);
  localSetAnchor(anchorX, anchorY);
  UpdateMCast();
  return 1;
}

char QvAFrame::SetPos(std::int16_t index, std::int16_t posX, std::int16_t posY) {
  if (!localSearchA(index)) return 0;
  localSetPos(posX, posY);
  UpdateMCast();
  return 1;
}

char QvAFrame::SetSize(std::int16_t index, std::int16_t width, std::int16_t height) {
  if (!localSearchA(index)) return 0;
  localSetSize(width, height);
  UpdateMCast();
  return 1;
}

char QvAFrame::SetAnchor(std::int16_t index, std::int16_t anchorX, std::int16_t anchorY) {
  if (!localSearchA(index)) return 0;
  localSetAnchor(anchorX, anchorY);
  UpdateMCast();
  return 1;
}

char QvAFrame::SetInterval(std::int16_t index, std::int16_t interval) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  f->interval = interval < 0 ? 0 : interval;
  localFramesChanged();
  localResetRange();
  UpdateMCast();
  return 1;
}

char QvAFrame::SetZoom(std::int16_t index, double zoomX, double zoomY) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  f->zoomX = zoomX;
  f->zoomY = zoomY;
  localDeleteIcon(f);
  UpdateMCast();
  return 1;
}

char QvAFrame::SetRot(std::int16_t index, double rotation) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  f->rotation = rotation;
  localDeleteIcon(f);
  UpdateMCast();
  return 1;
}

char QvAFrame::Activate(std::int16_t index) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  f->activeFlag = 1;
  return 1;
}

char QvAFrame::Deactivate(std::int16_t index) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  f->activeFlag = 0;
  return 1;
}

// ---------------------------------------------------------------------------
// Queries

char QvAFrame::IsActive(std::int16_t index) {
  QvAFrameInfo* f = localSearchA(index);
  return f ? static_cast<char>(f->activeFlag) : 0;
}

std::int16_t QvAFrame::CountAFrame() {
  std::int16_t n = 0;
  for (QvAFrameInfo* p = frameList; p; p = p->next) n = Add16(n, 1);
  return n;
}

std::int16_t QvAFrame::CountMFrame() {
  std::int16_t sum = 0;
  for (QvAFrameInfo* p = frameList; p; p = p->next) sum = Add16(sum, p->interval);
  return sum;
}

void QvAFrame::localGetFrame(std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                             std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                             std::int16_t* interval, double* zoomX, double* zoomY,
                             double* rotation) {
  const QvAFrameInfo* f = curFrame;
  if (posX) *posX = f->posX;
  if (posY) *posY = f->posY;
  if (width) *width = f->width;
  if (height) *height = f->height;
  if (anchorX) *anchorX = f->anchorX;
  if (anchorY) *anchorY = f->anchorY;
  if (interval) *interval = f->interval;
  if (zoomX) *zoomX = f->zoomX;
  if (zoomY) *zoomY = f->zoomY;
  if (rotation) *rotation = f->rotation;
}

char QvAFrame::GetAFrame(std::int16_t index, std::int16_t* posX, std::int16_t* posY,
                         std::int16_t* width, std::int16_t* height, std::int16_t* anchorX,
                         std::int16_t* anchorY, std::int16_t* interval, double* zoomX,
                         double* zoomY, double* rotation) {
  if (!localSearchA(index)) return 0;
  localGetFrame(posX, posY, width, height, anchorX, anchorY, interval, zoomX, zoomY, rotation);
  return 1;
}

char QvAFrame::GetMFrame(std::int16_t position, std::int16_t* posX, std::int16_t* posY,
                         std::int16_t* width, std::int16_t* height, std::int16_t* anchorX,
                         std::int16_t* anchorY, std::int16_t* interval, double* zoomX,
                         double* zoomY, double* rotation) {
  if (!localSearchM(position)) return 0;
  localGetFrame(posX, posY, width, height, anchorX, anchorY, interval, zoomX, zoomY, rotation);
  return 1;
}

char QvAFrame::GetMFrame(std::int16_t* posX, std::int16_t* posY, std::int16_t* width,
                         std::int16_t* height, std::int16_t* anchorX, std::int16_t* anchorY,
                         std::int16_t* interval, double* zoomX, double* zoomY, double* rotation) {
  if (runFlag) localGetCur();
  return GetMFrame(Low16(cur), posX, posY, width, height, anchorX, anchorY, interval, zoomX, zoomY,
                   rotation);
}

// ---------------------------------------------------------------------------
// Deletion

char QvAFrame::Del(std::int16_t index) {
  QvAFrameInfo* r = localSearchA(index);
  if (!r) return 0;
  if (r->prev)
    r->prev->next = r->next;
  else
    frameList = r->next;
  if (r->next) r->next->prev = r->prev;
  localFramesChanged();
  localFreeFrame(r);
  localResetRange();
  UpdateMCast();
  return 1;
}

void QvAFrame::DelAll() {
  QvAFrameInfo* p = frameList;
  frameList = nullptr;
  localFramesChanged();
  while (p) {
    QvAFrameInfo* next = p->next;
    localFreeFrame(p);
    p = next;
  }
  localResetRange();
  UpdateMCast();
}
