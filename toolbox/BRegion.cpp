#include "toolbox/BRegion.h"

#include <pixman.h>

#include "toolbox/QvPlatform.h"

namespace {

pixman_region32_t* Rgn(void* region) { return static_cast<pixman_region32_t*>(region); }

void MakeEmpty(pixman_region32_t* r) {
  pixman_region32_fini(r);
  pixman_region32_init(r);
}

}  // namespace

BRegion::~BRegion() { Dispose(); }

void* BRegion::New() {
  if (region) return region;
  pixman_region32_t* r = QvNew<pixman_region32_t>();
  if (!r) return nullptr;
  pixman_region32_init(r);
  region = r;
  return region;
}

void BRegion::RectRegion(std::int32_t left, std::int32_t top, std::int32_t right,
                         std::int32_t bottom) {
  if (!region) return;
  pixman_region32_t* r = Rgn(region);
  MakeEmpty(r);
  if (right <= left || bottom <= top) return;
  // Unsigned differences: the width of any non-empty rectangle fits.
  const unsigned int w = static_cast<std::uint32_t>(right) - static_cast<std::uint32_t>(left);
  const unsigned int h = static_cast<std::uint32_t>(bottom) - static_cast<std::uint32_t>(top);
  pixman_region32_fini(r);
  pixman_region32_init_rect(r, left, top, w, h);
}

void BRegion::OffsetRegion(std::int32_t dx, std::int32_t dy) {
  if (!region) return;
  pixman_region32_translate(Rgn(region), dx, dy);
}

void BRegion::CopyRegion(BRegion* src) {
  if (!region || src == this) return;
  pixman_region32_t* r = Rgn(region);
  if (!src || !src->region) {
    MakeEmpty(r);
    return;
  }
  if (!pixman_region32_copy(r, Rgn(src->region))) MakeEmpty(r);
}

void BRegion::Dispose() {
  if (!region) return;
  pixman_region32_t* r = Rgn(region);
  pixman_region32_fini(r);
  delete r;
  region = nullptr;
}

bool BRegion::IsEmpty() const { return !region || !pixman_region32_not_empty(Rgn(region)); }

bool BRegion::Contains(std::int32_t x, std::int32_t y) const {
  return region && pixman_region32_contains_point(Rgn(region), x, y, nullptr);
}

void BRegion::Bounds(std::int32_t* left, std::int32_t* top, std::int32_t* right,
                     std::int32_t* bottom) const {
  std::int32_t l = 0, t = 0, r = 0, b = 0;
  if (!IsEmpty()) {
    const pixman_box32_t* e = pixman_region32_extents(Rgn(region));
    l = e->x1;
    t = e->y1;
    r = e->x2;
    b = e->y2;
  }
  if (left) *left = l;
  if (top) *top = t;
  if (right) *right = r;
  if (bottom) *bottom = b;
}

int BRegion::RectCount() const { return region ? pixman_region32_n_rects(Rgn(region)) : 0; }
