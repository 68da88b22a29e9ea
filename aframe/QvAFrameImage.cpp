#include "aframe/QvAFrame.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "aframe/QvAFrameLocal.h"
#include "aframe/QvAFrameTransform.h"
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
  // The bytes of the image and mask held now (-1: none).
  const long heldBytes =
      f->image && f->mask ? static_cast<long>(f->imageWidth) * f->imageHeight : -1;
  localFramesChanged();
  f->imageWidth = imageWidth;
  f->imageHeight = imageHeight;
  f->imageOffsetX = Sub16(minX, cx);
  f->imageOffsetY = Sub16(minY, cy);

  localDeleteIcon(f);
  // Sizes that wrapped around 16 bits: the frame keeps no transformed image,
  // so the stored sizes never describe a buffer of another size.
  if (imageWidth < 1 || imageHeight < 1) {
    localDeleteImage(f);
    return 0;
  }
  if (static_cast<long>(imageWidth) * imageHeight == heldBytes) {
    // Buffers of the size are kept (every byte is written below) instead of
    // being freed and made anew; the two allocations that would make them
    // are still counted, so that a failing one ends the same way: neither
    // buffer, and 0.
    if (QvAllocationFails() || QvAllocationFails()) {
      localDeleteImage(f);
      return 0;
    }
  } else {
    localDeleteImage(f);
    unsigned char* made = NewBuffer(imageWidth, imageHeight);
    if (!made) return 0;
    unsigned char* madeMask = NewBuffer(imageWidth, imageHeight);
    if (!madeMask) {
      qv::GlobalFree(made);
      return 0;
    }
    f->image = made;
    f->mask = madeMask;
  }
  unsigned char* image = f->image;
  unsigned char* mask = f->mask;

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
    InverseMap map;
    map.org = f->orgImage;
    map.width = width;
    map.height = height;
    map.ax = ax;
    map.ay = ay;
    map.bx = bx;
    map.by = by;
    map.originX = minX - px[0];
    map.originY = minY - py[0];
    InverseMapExact(map, image, mask, imageWidth, imageHeight);
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
  localFramesChanged();
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
  if (image || mask) {
    // The bytes handed out may change unseen from now on.
    localSettleWorld();
    imagesLent = true;
  }
  if (image) *image = f->image;
  if (mask) *mask = f->mask;
  if (imageWidth) *imageWidth = f->imageWidth;
  if (imageHeight) *imageHeight = f->imageHeight;
  if (imageOffsetX) *imageOffsetX = f->imageOffsetX;
  if (imageOffsetY) *imageOffsetY = f->imageOffsetY;
}

char QvAFrame::HasAImage(std::int16_t index) {
  const QvAFrameInfo* f = localSearchA(index);
  return f && f->image && f->mask ? 1 : 0;
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
  if (!areaKnown) {
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
    areaAnchorX = Sub16(0, minX);
    areaAnchorY = Sub16(0, minY);
    areaWidth = Add16(Sub16(maxX, minX), 1);
    areaHeight = Add16(Sub16(maxY, minY), 1);
    areaKnown = true;
  }
  if (anchorX) *anchorX = areaAnchorX;
  if (anchorY) *anchorY = areaAnchorY;
  if (width) *width = areaWidth;
  if (height) *height = areaHeight;
  return 1;
}
