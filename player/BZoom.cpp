#include "player/BZoom.h"

#include <cmath>
#include <cstdint>

namespace {

// Truncates toward zero into 32 bits. Values the type cannot hold do not
// occur with sane divisors; for a zero divisor they saturate, and an
// undefined value gives 0.
std::int32_t Trunc32(double v) {
  if (std::isnan(v)) return 0;
  if (v >= 2147483647.0) return INT32_MAX;
  if (v <= -2147483648.0) return INT32_MIN;
  return static_cast<std::int32_t>(v);
}

std::int32_t Convert(std::int32_t v, float zoom, float offset, float scale) {
  return Trunc32(
      (static_cast<double>(v) / static_cast<double>(zoom) + static_cast<double>(offset)) /
      static_cast<double>(scale));
}

std::int32_t Convert2(std::int32_t v, float zoom, float scale) {
  return Trunc32(static_cast<double>(v) / static_cast<double>(zoom) / static_cast<double>(scale));
}

}  // namespace

BZoom::BZoom()
    : zoomX(1.0f), zoomY(1.0f), offsetX(0.0f), offsetY(0.0f), scaleX(1.0f), scaleY(1.0f) {}

BZoom::BZoom(float zoomX, float zoomY, float offsetX, float offsetY, float scaleX, float scaleY)
    : zoomX(zoomX),
      zoomY(zoomY),
      offsetX(offsetX),
      offsetY(offsetY),
      scaleX(scaleX),
      scaleY(scaleY) {}

BZoom::BZoom(const BZoom& other)
    : zoomX(other.zoomX),
      zoomY(other.zoomY),
      offsetX(other.offsetX),
      offsetY(other.offsetY),
      scaleX(other.scaleX),
      scaleY(other.scaleY) {}

BZoom& BZoom::operator=(const BZoom& other) {
  zoomX = other.zoomX;
  zoomY = other.zoomY;
  offsetX = other.offsetX;
  offsetY = other.offsetY;
  scaleX = other.scaleX;
  scaleY = other.scaleY;
  return *this;
}

BZoom BZoom::SetZoom(BZoom zoom) {
  BZoom before(*this);
  *this = zoom;
  return before;
}

void BZoom::GPtoLP(OsImgPoint& point) {
  const std::int32_t x = point.x;
  const std::int32_t y = point.y;
  point.x = Convert(x, zoomX, offsetX, scaleX);
  point.y = Convert(y, zoomY, offsetY, scaleY);
}

void BZoom::GPtoLP(OsImgRect& rect) {
  rect.left = Convert(rect.left, zoomX, offsetX, scaleX);
  rect.top = Convert(rect.top, zoomY, offsetY, scaleY);
  rect.right = Convert(rect.right, zoomX, offsetX, scaleX);
  rect.bottom = Convert(rect.bottom, zoomY, offsetY, scaleY);
}

void BZoom::GPtoLP(OsImgSize& size) {
  const std::int32_t w = size.width;
  const std::int32_t h = size.height;
  size.width = Convert(w, zoomX, offsetX, scaleX);
  size.height = Convert(h, zoomY, offsetY, scaleY);
}

void BZoom::GPtoLP2(OsImgPoint& point) {
  const std::int32_t x = point.x;
  const std::int32_t y = point.y;
  point.x = Convert2(x, zoomX, scaleX);
  point.y = Convert2(y, zoomY, scaleY);
}

void BZoom::GPtoLP2(OsImgRect& rect) {
  rect.left = Convert2(rect.left, zoomX, scaleX);
  rect.top = Convert2(rect.top, zoomY, scaleY);
  rect.right = Convert2(rect.right, zoomX, scaleX);
  rect.bottom = Convert2(rect.bottom, zoomY, scaleY);
}

void BZoom::GPtoLP2(OsImgSize& size) {
  const std::int32_t w = size.width;
  const std::int32_t h = size.height;
  size.width = Convert2(w, zoomX, scaleX);
  size.height = Convert2(h, zoomY, scaleY);
}
