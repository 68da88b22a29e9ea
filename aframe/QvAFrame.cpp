#include "aframe/QvAFrame.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#include <immintrin.h>
#endif

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "cast/QvMCast.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/QvRgn.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbRegion.h"
#include "toolbox/tbToolBox.h"

namespace {

// Low 16 bits of a 32-bit value, as a signed 16-bit number.
inline std::int16_t Low16(std::uint32_t v) { return static_cast<std::int16_t>(v); }
inline std::int16_t Low16(std::int32_t v) { return Low16(static_cast<std::uint32_t>(v)); }

// 16-bit wrapping sum and difference.
inline std::int16_t Add16(std::int32_t a, std::int32_t b) {
  return Low16(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
inline std::int16_t Sub16(std::int32_t a, std::int32_t b) {
  return Low16(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// Truncation toward zero of a double to a 32-bit integer. A value that does
// not fit (or NaN) gives the integer indefinite value 0x80000000, as the
// processor's truncating conversion does, instead of undefined behaviour.
inline std::int32_t Trunc(double d) {
  if (!(d > -2147483649.0 && d < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(d);
}

inline unsigned char* NewBuffer(std::int16_t width, std::int16_t height) {
  if (width < 1 || height < 1) return nullptr;
  return static_cast<unsigned char*>(
      qv::GlobalAlloc(0, static_cast<std::size_t>(width) * static_cast<std::size_t>(height)));
}

}  // namespace

// ---------------------------------------------------------------------------
// Construction and destruction

QvAFrame::QvAFrame()
    : QvMCastList(),
      QvMPlayer(),
      frameList(nullptr),
      curFrame(nullptr),
      lockFlag(0),
      updateLock(0) {}

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
  std::uint16_t sum = 0;
  QvAFrameInfo* r;
  for (r = frameList; r; r = r->next) {
    sum = static_cast<std::uint16_t>(sum + static_cast<std::uint16_t>(r->interval));
    if (static_cast<std::int16_t>(sum) > position) break;
  }
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
  localFreeFrame(r);
  localResetRange();
  UpdateMCast();
  return 1;
}

void QvAFrame::DelAll() {
  QvAFrameInfo* p = frameList;
  frameList = nullptr;
  while (p) {
    QvAFrameInfo* next = p->next;
    localFreeFrame(p);
    p = next;
  }
  localResetRange();
  UpdateMCast();
}

// ---------------------------------------------------------------------------
// Images

char QvAFrame::SetOrgImage(std::int16_t index, unsigned char* src, std::int16_t srcRowBytes,
                           std::int16_t srcWidth, std::int16_t srcHeight) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  if (f->width < 1 || f->height < 1) return 0;
  // A source must exist and hold rows at least as long as its width.
  if (!src || (srcWidth > 0 && srcRowBytes < srcWidth)) return 0;

  localDeleteOrgImage(f);
  unsigned char* buf = NewBuffer(f->width, f->height);
  if (!buf) return 0;
  const int w = f->width, h = f->height;
  std::memset(buf, 0, static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
  f->orgImage = buf;
  f->orgWidth = f->width;
  f->orgHeight = f->height;

  // The part of the frame's rectangle inside the source: frame columns
  // u0 .. u1 - 1 and rows v0 .. v1 - 1.
  const int u0 = f->posX < 0 ? -f->posX : 0;
  const int v0 = f->posY < 0 ? -f->posY : 0;
  const int u1 = std::min(w, static_cast<int>(srcWidth) - f->posX);
  const int v1 = std::min(h, static_cast<int>(srcHeight) - f->posY);
  if (u1 > u0 && v1 > v0) {
    for (int v = v0; v < v1; ++v) {
      const unsigned char* s =
          src + static_cast<std::ptrdiff_t>(f->posY + v) * srcRowBytes + (f->posX + u0);
      std::memcpy(buf + static_cast<std::ptrdiff_t>(v) * w + u0, s,
                  static_cast<std::size_t>(u1 - u0));
    }
  }
  UpdateMCast();
  return 1;
}

char QvAFrame::SetOrgImage(std::int16_t index, unsigned char* src, std::int16_t width,
                           std::int16_t height) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  if (width != f->width || height != f->height || width < 1 || height < 1) return 0;
  if (!src) return 0;
  // An existing buffer is reused only when it was made for this size.
  if (f->orgImage && (f->orgWidth != width || f->orgHeight != height)) localDeleteOrgImage(f);
  if (!f->orgImage) {
    unsigned char* buf = NewBuffer(width, height);
    if (!buf) return 0;
    f->orgImage = buf;
    f->orgWidth = width;
    f->orgHeight = height;
  }
  std::memcpy(f->orgImage, src, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  UpdateMCast();
  return 1;
}

void QvAFrame::localZoom(std::int16_t* x, std::int16_t* y, std::int16_t cx, std::int16_t cy,
                         double zoomX, double zoomY) {
  if (zoomX != 1.0) *x = Add16(Trunc(static_cast<double>(*x - cx) * zoomX), cx);
  if (zoomY != 1.0) *y = Add16(Trunc(static_cast<double>(*y - cy) * zoomY), cy);
}

void QvAFrame::localRot(std::int16_t* x, std::int16_t* y, std::int16_t cx, std::int16_t cy,
                        double rotation) {
  if (rotation == 0.0) return;
  const double dx = *x - cx;
  const double dy = *y - cy;
  const double c = std::cos(rotation);
  const double s = std::sin(rotation);
  // Each product is truncated by itself before the sums.
  *x = Low16(static_cast<std::uint32_t>(cx) + static_cast<std::uint32_t>(Trunc(dx * c)) +
             static_cast<std::uint32_t>(Trunc(dy * s)));
  *y = Low16(static_cast<std::uint32_t>(cy) + static_cast<std::uint32_t>(Trunc(dy * c)) -
             static_cast<std::uint32_t>(Trunc(dx * s)));
}

void QvAFrame::localGetArea(std::int16_t* min, std::int16_t* size, std::int16_t a, std::int16_t b,
                            std::int16_t c, std::int16_t d) {
  std::int16_t lo = a, hi = a;
  for (std::int16_t v : {b, c, d}) {
    if (v < lo) lo = v;
    if (v > hi) hi = v;
  }
  *min = lo;
  *size = Add16(Sub16(hi, lo), 1);
}

char QvAFrame::SetImage(std::int16_t index, unsigned char* src, std::int16_t srcRowBytes,
                        std::int16_t srcWidth, std::int16_t srcHeight) {
  if (src && !SetOrgImage(index, src, srcRowBytes, srcWidth, srcHeight)) return 0;
  QvAFrameInfo* f = localSearchA(index);
  if (!f || !f->orgImage) return 0;
  const std::int16_t width = f->width, height = f->height;
  // The buffer always has the frame's size (see localSetSize); checked anyway
  // so that the mapping below never reads beyond it.
  if (f->orgWidth != width || f->orgHeight != height || width < 1 || height < 1) return 0;

  // The corners P0 .. P3 in frame coordinates, zoomed then rotated about the
  // anchor point.
  const std::int16_t cx = Sub16(f->anchorX, f->posX);
  const std::int16_t cy = Sub16(f->anchorY, f->posY);
  std::int16_t px[4] = {0, Sub16(width, 1), Sub16(width, 1), 0};
  std::int16_t py[4] = {0, 0, Sub16(height, 1), Sub16(height, 1)};
  for (int k = 0; k < 4; ++k) {
    localZoom(&px[k], &py[k], cx, cy, f->zoomX, f->zoomY);
    localRot(&px[k], &py[k], cx, cy, f->rotation);
  }
  std::int16_t minX, minY, imageWidth, imageHeight;
  localGetArea(&minX, &imageWidth, px[0], px[1], px[2], px[3]);
  localGetArea(&minY, &imageHeight, py[0], py[1], py[2], py[3]);
  f->imageWidth = imageWidth;
  f->imageHeight = imageHeight;
  f->imageOffsetX = Sub16(minX, cx);
  f->imageOffsetY = Sub16(minY, cy);

  localDeleteImage(f);
  localDeleteIcon(f);
  // Sizes that wrapped around 16 bits: the frame keeps no transformed image,
  // so the stored sizes never describe a buffer of another size.
  if (imageWidth < 1 || imageHeight < 1) return 0;
  unsigned char* image = NewBuffer(imageWidth, imageHeight);
  if (!image) return 0;
  unsigned char* mask = NewBuffer(imageWidth, imageHeight);
  if (!mask) {
    qv::GlobalFree(image);
    return 0;
  }
  f->image = image;
  f->mask = mask;

  // Inverse mapping: each pixel of the transformed image is expressed as
  // P0 + s * A + t * B and sampled from the untransformed image.
  const int ax = px[1] - px[0], ay = py[1] - py[0];
  const int bx = px[3] - px[0], by = py[3] - py[0];
  const double d = static_cast<double>(by) * ax - static_cast<double>(bx) * ay;
  const std::size_t bytes =
      static_cast<std::size_t>(imageWidth) * static_cast<std::size_t>(imageHeight);
  if (d == 0.0) {
    std::memset(image, 0, bytes);
    std::memset(mask, 0, bytes);
  } else {
    const unsigned char* org = f->orgImage;
    unsigned char* out = image;
    unsigned char* outMask = mask;
    for (int j = 0; j < imageHeight; ++j) {
      const double pyd = static_cast<double>(j + minY - py[0]);
      for (int i = 0; i < imageWidth; ++i, ++out, ++outMask) {
        const double pxd = static_cast<double>(i + minX - px[0]);
        const double t = (pyd * ax - pxd * ay) / d;
        double s;
        if (ax != 0)
          s = (pxd - t * bx) / ax;
        else if (ay != 0)
          s = (pyd - t * by) / ay;
        else
          s = 0.0;
        unsigned char value = 0, m = 0;
        if (!(s < 0.0 || s > 1.0 || t < 0.0 || t > 1.0)) {
          const int sx = s == 1.0 ? width - 1 : Trunc(s * width);
          const int sy = t == 1.0 ? height - 1 : Trunc(t * height);
          if (sx >= 0 && sx < width && sy >= 0 && sy < height) {
            value = org[static_cast<std::ptrdiff_t>(sy) * width + sx];
            m = 255;
          }
        }
        *out = value;
        *outMask = m;
      }
    }
  }
  UpdateMCast();
  return 1;
}

char QvAFrame::SetImage(std::int16_t index, unsigned char* image, unsigned char* mask,
                        std::int16_t imageWidth, std::int16_t imageHeight,
                        std::int16_t imageOffsetX, std::int16_t imageOffsetY) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  if (imageWidth < 1 || imageHeight < 1) return 0;
  if (!image || !mask) return 0;
  f->imageWidth = imageWidth;
  f->imageHeight = imageHeight;
  f->imageOffsetX = imageOffsetX;
  f->imageOffsetY = imageOffsetY;
  localDeleteImage(f);
  localDeleteIcon(f);
  unsigned char* newImage = NewBuffer(imageWidth, imageHeight);
  if (!newImage) return 0;
  unsigned char* newMask = NewBuffer(imageWidth, imageHeight);
  if (!newMask) {
    qv::GlobalFree(newImage);
    return 0;
  }
  const std::size_t bytes =
      static_cast<std::size_t>(imageWidth) * static_cast<std::size_t>(imageHeight);
  std::memcpy(newImage, image, bytes);
  std::memcpy(newMask, mask, bytes);
  f->image = newImage;
  f->mask = newMask;
  UpdateMCast();
  return 1;
}

char QvAFrame::GetOrgImage(std::int16_t index, unsigned char** orgImage, std::int16_t* width,
                           std::int16_t* height) {
  if (!orgImage || !width || !height) return 0;
  QvAFrameInfo* f = localSearchA(index);
  if (!f) return 0;
  *orgImage = f->orgImage;
  *width = f->width;
  *height = f->height;
  return 1;
}

void QvAFrame::localGetImage(unsigned char** image, unsigned char** mask, std::int16_t* imageWidth,
                             std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                             std::int16_t* imageOffsetY) {
  const QvAFrameInfo* f = curFrame;
  if (image) *image = f->image;
  if (mask) *mask = f->mask;
  if (imageWidth) *imageWidth = f->imageWidth;
  if (imageHeight) *imageHeight = f->imageHeight;
  if (imageOffsetX) *imageOffsetX = f->imageOffsetX;
  if (imageOffsetY) *imageOffsetY = f->imageOffsetY;
}

char QvAFrame::GetAImage(std::int16_t index, unsigned char** image, unsigned char** mask,
                         std::int16_t* imageWidth, std::int16_t* imageHeight,
                         std::int16_t* imageOffsetX, std::int16_t* imageOffsetY) {
  if (!localSearchA(index)) return 0;
  localGetImage(image, mask, imageWidth, imageHeight, imageOffsetX, imageOffsetY);
  return 1;
}

char QvAFrame::GetMImage(std::int16_t position, unsigned char** image, unsigned char** mask,
                         std::int16_t* imageWidth, std::int16_t* imageHeight,
                         std::int16_t* imageOffsetX, std::int16_t* imageOffsetY) {
  if (!localSearchM(position)) return 0;
  localGetImage(image, mask, imageWidth, imageHeight, imageOffsetX, imageOffsetY);
  return 1;
}

char QvAFrame::GetMImage(unsigned char** image, unsigned char** mask, std::int16_t* imageWidth,
                         std::int16_t* imageHeight, std::int16_t* imageOffsetX,
                         std::int16_t* imageOffsetY) {
  if (runFlag) localGetCur();
  return GetMImage(Low16(cur), image, mask, imageWidth, imageHeight, imageOffsetX, imageOffsetY);
}

char QvAFrame::GetIcon(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
                       std::int16_t iconWidth, std::int16_t iconHeight) {
  QvAFrameInfo* f = localSearchA(index);
  if (!f || !f->image || !f->mask) return 0;
  // A thumbnail needs a size of at least 1 x 1, a frame of at least 1 x 1 (its
  // size is the divisor of the scale), and a target with rows at least as
  // long as the thumbnail.
  if (iconWidth < 1 || iconHeight < 1 || f->width < 1 || f->height < 1) return 0;
  if (!dst || dstRowBytes < iconWidth) return 0;

  if (f->icon && (f->iconWidth != iconWidth || f->iconHeight != iconHeight)) localDeleteIcon(f);
  if (!f->icon) {
    unsigned char* icon = NewBuffer(iconWidth, iconHeight);
    if (!icon) return 0;
    f->icon = icon;
    f->iconWidth = iconWidth;
    f->iconHeight = iconHeight;

    const double rx = static_cast<double>(f->width) / iconWidth;
    const double ry = static_cast<double>(f->height) / iconHeight;
    const double r = rx >= ry ? rx : ry;
    const std::int16_t x0 =
        Sub16(-static_cast<std::int32_t>(f->imageOffsetX), Trunc(r * iconWidth * 0.5));
    const std::int16_t y0 =
        Sub16(-static_cast<std::int32_t>(f->imageOffsetY), Trunc(r * iconHeight * 0.5));
    const int iw = f->imageWidth, ih = f->imageHeight;
    for (int j = 0; j < iconHeight; ++j) {
      unsigned char* row = icon + static_cast<std::ptrdiff_t>(j) * iconWidth;
      const int sy = Add16(Trunc(j * r), y0);
      if (sy < 0 || sy >= ih) {
        std::memset(row, 0, static_cast<std::size_t>(iconWidth));
        continue;
      }
      const unsigned char* src = f->image + static_cast<std::ptrdiff_t>(sy) * iw;
      for (int i = 0; i < iconWidth; ++i) {
        const int sx = Add16(Trunc(i * r), x0);
        row[i] = (sx >= 0 && sx < iw) ? src[sx] : 0;
      }
    }
  }
  for (int j = 0; j < iconHeight; ++j)
    std::memcpy(dst + static_cast<std::ptrdiff_t>(j) * dstRowBytes,
                f->icon + static_cast<std::ptrdiff_t>(j) * iconWidth,
                static_cast<std::size_t>(iconWidth));
  return 1;
}

char QvAFrame::GetArea(std::int16_t* width, std::int16_t* height, std::int16_t* anchorX,
                       std::int16_t* anchorY) {
  // The frames are walked through the list itself rather than by index, so
  // that a lookup lock cannot make the walk repeat the locked frame forever.
  const QvAFrameInfo* f = frameList;
  if (!f) return 0;
  std::int16_t minX = f->imageOffsetX;
  std::int16_t minY = f->imageOffsetY;
  std::int16_t maxX = Sub16(Add16(f->imageOffsetX, f->imageWidth), 1);
  std::int16_t maxY = Sub16(Add16(f->imageOffsetY, f->imageHeight), 1);
  for (f = f->next; f; f = f->next) {
    const std::int16_t x1 = Sub16(Add16(f->imageOffsetX, f->imageWidth), 1);
    const std::int16_t y1 = Sub16(Add16(f->imageOffsetY, f->imageHeight), 1);
    if (f->imageOffsetX < minX) minX = f->imageOffsetX;
    if (f->imageOffsetY < minY) minY = f->imageOffsetY;
    if (x1 > maxX) maxX = x1;
    if (y1 > maxY) maxY = y1;
  }
  if (minX > 0) minX = 0;
  if (minY > 0) minY = 0;
  if (maxX < 0) maxX = 0;
  if (maxY < 0) maxY = 0;
  if (anchorX) *anchorX = Sub16(0, minX);
  if (anchorY) *anchorY = Sub16(0, minY);
  if (width) *width = Add16(Sub16(maxX, minX), 1);
  if (height) *height = Add16(Sub16(maxY, minY), 1);
  return 1;
}

// ---------------------------------------------------------------------------
// Drawing

namespace {

// Copies the pixels of one row whose mask byte is not 0. Sixteen mask bytes
// are tested at a time: a run that is wholly opaque is copied as one block,
// a wholly transparent one is skipped, and a mixed one is blended so that
// the target keeps its byte wherever the mask is 0.
#if defined(__x86_64__) && defined(__GNUC__)
#define QV_HAVE_AVX2_ROWS 1
// The same row copy for processors with AVX2 (chosen once at run time): 64
// mask bytes tested at a time, then 32.
__attribute__((target("avx2"))) void CopyMaskedRowAvx2(const unsigned char* s,
                                                       const unsigned char* m, unsigned char* d,
                                                       long w) {
  long i = 0;
  const __m256i zero = _mm256_setzero_si256();
  for (; i + 64 <= w; i += 64) {
    const __m256i m0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i m1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i + 32));
    const __m256i low = _mm256_min_epu8(m0, m1);
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, zero)) != 0) break;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i + 32),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i + 32)));
  }
  for (; i + 32 <= w; i += 32) {
    const __m256i mv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i clear = _mm256_cmpeq_epi8(mv, zero);
    const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
    if (bits == 0xFFFFFFFFu) continue;
    const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    __m256i* dp = reinterpret_cast<__m256i*>(d + i);
    _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
  }
  for (; i < w; ++i)
    if (m[i] != 0) d[i] = s[i];
}
#endif

void CopyMaskedRow(const unsigned char* s, const unsigned char* m, unsigned char* d, long w) {
  long i = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  // Opaque stretches first, 64 pixels at a time: the smallest of the 64 mask
  // bytes is 0 only when one of them is.
  for (; i + 64 <= w; i += 64) {
    const __m128i* mp = reinterpret_cast<const __m128i*>(m + i);
    const __m128i low =
        _mm_min_epu8(_mm_min_epu8(_mm_loadu_si128(mp), _mm_loadu_si128(mp + 1)),
                     _mm_min_epu8(_mm_loadu_si128(mp + 2), _mm_loadu_si128(mp + 3)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(low, zero)) != 0) break;
    const __m128i* sp = reinterpret_cast<const __m128i*>(s + i);
    __m128i* dp = reinterpret_cast<__m128i*>(d + i);
    _mm_storeu_si128(dp, _mm_loadu_si128(sp));
    _mm_storeu_si128(dp + 1, _mm_loadu_si128(sp + 1));
    _mm_storeu_si128(dp + 2, _mm_loadu_si128(sp + 2));
    _mm_storeu_si128(dp + 3, _mm_loadu_si128(sp + 3));
  }
  for (; i + 16 <= w; i += 16) {
    const __m128i mv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m + i));
    const __m128i clear = _mm_cmpeq_epi8(mv, zero);
    const int bits = _mm_movemask_epi8(clear);
    if (bits == 0xFFFF) continue;
    const __m128i sv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    if (bits == 0) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), sv);
    } else {
      const __m128i dv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d + i));
      const __m128i out = _mm_or_si128(_mm_and_si128(clear, dv), _mm_andnot_si128(clear, sv));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), out);
    }
  }
#endif
  for (; i < w; ++i)
    if (m[i] != 0) d[i] = s[i];
}

}  // namespace

void QvAFrame::localDrawImage(unsigned char* image, unsigned char* mask, std::int16_t imageRowBytes,
                              unsigned char* dst, std::int16_t dstRowBytes, std::int16_t left,
                              std::int16_t top, std::int16_t right, std::int16_t bottom,
                              std::int16_t clipLeft, std::int16_t clipTop, std::int16_t clipRight,
                              std::int16_t clipBottom, QvPal* pal) {
  if (!image || !mask || !dst) return;
  // Clipping, once per copy, in int so that no difference wraps around: a
  // rectangle whose right or bottom edge wrapped past 16 bits comes out empty.
  const int x0 = left < clipLeft ? clipLeft : left;
  const int y0 = top < clipTop ? clipTop : top;
  const int x1 = right > clipRight ? clipRight : right;
  const int y1 = bottom > clipBottom ? clipBottom : bottom;
  const int w = x1 - x0;
  const int h = y1 - y0;
  if (w <= 0 || h <= 0) return;
  // The rectangle must not be wider than the image rows, and the clip must
  // not start before the target's first pixel.
  if (right - left > imageRowBytes || x0 < 0 || y0 < 0) return;
  const int skipX = x0 - left;
  const int skipY = y0 - top;

  const unsigned char* s = image + static_cast<std::ptrdiff_t>(skipY) * imageRowBytes + skipX;
  const unsigned char* m = mask + static_cast<std::ptrdiff_t>(skipY) * imageRowBytes + skipX;
  unsigned char* d = dst + static_cast<std::ptrdiff_t>(y0) * dstRowBytes + x0;
  if (pal) {
    // The area's answer for each colour index, asked once per copy; a pixel
    // passes when its colour is in the area and its mask byte is not 0.
    unsigned char inArea[256];
    for (int c = 0; c < 256; ++c) inArea[c] = pal->Flag(static_cast<unsigned char>(c)) == 1;
    for (int row = 0; row < h; ++row) {
      for (int i = 0; i < w; ++i) {
        const unsigned char v = s[i];
        // All ones when the pixel passes, else 0: a select without a branch.
        const unsigned char keep = static_cast<unsigned char>(-(inArea[v] & (m[i] != 0)));
        d[i] = static_cast<unsigned char>((v & keep) | (d[i] & ~keep));
      }
      s += imageRowBytes;
      m += imageRowBytes;
      d += dstRowBytes;
    }
    return;
  }
#ifdef QV_HAVE_AVX2_ROWS
  // QV_ROW_COPY=sse2 in the environment keeps to the baseline rows (so that
  // both can be tested on one machine).
  static const bool avx2 =
      __builtin_cpu_supports("avx2") &&
      !(std::getenv("QV_ROW_COPY") && std::strcmp(std::getenv("QV_ROW_COPY"), "sse2") == 0);
  auto* copyRow = avx2 ? CopyMaskedRowAvx2 : CopyMaskedRow;
#else
  auto* copyRow = CopyMaskedRow;
#endif
  if (w == imageRowBytes && w == dstRowBytes) {
    // Rows back to back in the image and in the target: one long row.
    copyRow(s, m, d, static_cast<long>(w) * h);
    return;
  }
  for (int row = 0; row < h; ++row) {
    copyRow(s, m, d, w);
    s += imageRowBytes;
    m += imageRowBytes;
    d += dstRowBytes;
  }
}

void QvAFrame::localDrawImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                              std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                              std::int16_t fill, char wrap, std::int16_t scrollX,
                              std::int16_t scrollY, tbRect* frameRect) {
  QvAFrameInfo* f = curFrame;
  if (!f || !f->image || !f->mask || !dst) {
    if (frameRect) qv::SetRect(frameRect, 0, 0, 0, 0);
    return;
  }
  const std::int16_t iw = f->imageWidth, ih = f->imageHeight;
  const std::int16_t left = Add16(x, f->imageOffsetX);
  const std::int16_t top = Add16(y, f->imageOffsetY);
  const std::int16_t right = Add16(left, iw);
  const std::int16_t bottom = Add16(top, ih);
  if (frameRect) qv::SetRect(frameRect, left, top, right, bottom);

  // The target is dstHeight rows of dstWidth pixels, rows dstRowBytes apart;
  // a description that cannot be right (negative sizes, rows shorter than
  // the width) draws nothing.
  if (dstWidth < 0 || dstHeight < 0 || dstRowBytes < dstWidth) return;
  if (iw < 1 || ih < 1) return;

  const std::int16_t clipLeft = left > 0 ? left : 0;
  const std::int16_t clipTop = top > 0 ? top : 0;
  const std::int16_t clipRight = right < dstWidth ? right : dstWidth;
  const std::int16_t clipBottom = bottom < dstHeight ? bottom : dstHeight;

  // The scroll brought into 0 .. size - 1, as repeated adding or
  // subtracting of the size would.
  int sx = scrollX % iw;
  if (sx < 0) sx += iw;
  int sy = scrollY % ih;
  if (sy < 0) sy += ih;

  if (fill != -1) {
    const unsigned char v = static_cast<unsigned char>(fill);
    for (int row = 0; row < dstHeight; ++row)
      std::memset(dst + static_cast<std::ptrdiff_t>(row) * dstRowBytes, v,
                  static_cast<std::size_t>(dstWidth));
  }

  auto copy = [&](int dx, int dy) {
    localDrawImage(f->image, f->mask, iw, dst, dstRowBytes, Add16(left, dx), Add16(top, dy),
                   Add16(right, dx), Add16(bottom, dy), clipLeft, clipTop, clipRight, clipBottom,
                   pal);
  };
  copy(sx, sy);
  if (wrap & 1) copy(sx - iw, sy);
  if (wrap & 2) copy(sx, sy - ih);
  if (wrap == 3) copy(sx - iw, sy - ih);
}

char QvAFrame::localDrawPicture(tbGWorld* world, std::int16_t x, std::int16_t y, QvPal* pal,
                                std::int16_t fill, char wrap, std::int16_t scrollX,
                                std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                                std::int16_t destY) {
  if (!world) return 0;
  tbPixMap* pm = world->PortPixMap();
  unsigned char* base = pm->TopAddr();
  const std::int16_t rowBytes = pm->Offset();
  const std::int16_t w = Sub16(world->bounds.right, world->bounds.left);
  const std::int16_t h = Sub16(world->bounds.bottom, world->bounds.top);

  tbRect frame;
  localDrawImage(base, rowBytes, w, h, x, y, pal, fill, wrap, scrollX, scrollY, &frame);

  tbRegion region;
  QvRgn colorRegion;
  if (pal) {
    colorRegion.ColorToRgn(base, rowBytes, w, h, static_cast<unsigned char>(fill), 1);
    if (!region.New()) return 0;
    region.CopyRegion(&colorRegion);
  } else {
    if (!region.New()) return 0;
    region.RectRegion(frame.left, frame.top, frame.right, frame.bottom);
  }
  region.OffsetRegion(destX, destY);
  tbRect target(destX, destY, Add16(destX, w), Add16(destY, h));
  qv::tb.CopyBits(pm, destPixMap, &world->bounds, &target, 0x00CC0020, &region);
  region.Dispose();
  return 1;
}

char QvAFrame::DrawAImage(std::int16_t index, unsigned char* dst, std::int16_t dstRowBytes,
                          std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x,
                          std::int16_t y, QvPal* pal, std::int16_t fill, char wrap,
                          std::int16_t scrollX, std::int16_t scrollY, tbRect* frameRect) {
  if (!localSearchA(index)) return 0;
  localDrawImage(dst, dstRowBytes, dstWidth, dstHeight, x, y, pal, fill, wrap, scrollX, scrollY,
                 frameRect);
  return 1;
}

char QvAFrame::DrawMImage(std::int16_t position, unsigned char* dst, std::int16_t dstRowBytes,
                          std::int16_t dstWidth, std::int16_t dstHeight, std::int16_t x,
                          std::int16_t y, QvPal* pal, std::int16_t fill, char wrap,
                          std::int16_t scrollX, std::int16_t scrollY, tbRect* frameRect) {
  if (!localSearchM(position)) return 0;
  localDrawImage(dst, dstRowBytes, dstWidth, dstHeight, x, y, pal, fill, wrap, scrollX, scrollY,
                 frameRect);
  return 1;
}

char QvAFrame::DrawMImage(unsigned char* dst, std::int16_t dstRowBytes, std::int16_t dstWidth,
                          std::int16_t dstHeight, std::int16_t x, std::int16_t y, QvPal* pal,
                          std::int16_t fill, char wrap, std::int16_t scrollX, std::int16_t scrollY,
                          tbRect* frameRect) {
  if (runFlag) localGetCur();
  return DrawMImage(Low16(cur), dst, dstRowBytes, dstWidth, dstHeight, x, y, pal, fill, wrap,
                    scrollX, scrollY, frameRect);
}

char QvAFrame::DrawAPicture(std::int16_t index, tbGWorld* world, std::int16_t x, std::int16_t y,
                            QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                            std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                            std::int16_t destY) {
  if (!localSearchA(index)) return 0;
  return localDrawPicture(world, x, y, pal, fill, wrap, scrollX, scrollY, destPixMap, destX, destY);
}

char QvAFrame::DrawMPicture(std::int16_t position, tbGWorld* world, std::int16_t x, std::int16_t y,
                            QvPal* pal, std::int16_t fill, char wrap, std::int16_t scrollX,
                            std::int16_t scrollY, tbPixMap* destPixMap, std::int16_t destX,
                            std::int16_t destY) {
  if (!localSearchM(position)) return 0;
  return localDrawPicture(world, x, y, pal, fill, wrap, scrollX, scrollY, destPixMap, destX, destY);
}

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

char QvAFrame::Dup(QvAFrame* dst) {
  if (!dst) return 0;
  if (dst == this) return 1;  // an animation is already a copy of itself
  dst->SetMode(mode);
  dst->SetSpeed(speed);
  dst->LockUpdateMCast();
  dst->DelAll();
  for (const QvAFrameInfo* f = frameList; f; f = f->next) {
    const std::int16_t n =
        dst->Reg(-1, f->posX, f->posY, f->width, f->height, f->anchorX, f->anchorY, f->interval);
    if (n == -1) {
      dst->UnlockUpdateMCast();
      return 0;
    }
    dst->LockA(n);
    dst->SetZoom(n, f->zoomX, f->zoomY);
    dst->SetRot(n, f->rotation);
    if (f->activeFlag != 0)
      dst->Activate(n);
    else
      dst->Deactivate(n);
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
    const std::int16_t n =
        dst->Reg(-1, f->posX, f->posY, f->width, f->height, f->anchorX, f->anchorY, f->interval);
    if (n == -1) {
      dst->UnlockUpdateMCast();
      return 0;
    }
    dst->LockA(n);
    dst->SetZoom(n, f->zoomX, f->zoomY);
    dst->SetRot(n, f->rotation);
    if (f->activeFlag != 0)
      dst->Activate(n);
    else
      dst->Deactivate(n);
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
    const std::int16_t n =
        Reg(-1, f->posX, f->posY, f->width, f->height, f->anchorX, f->anchorY, f->interval);
    if (n == -1) {
      UnlockUpdateMCast();
      return 0;
    }
    LockA(n);
    SetZoom(n, f->zoomX, f->zoomY);
    SetRot(n, f->rotation);
    if (f->activeFlag != 0)
      Activate(n);
    else
      Deactivate(n);
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
