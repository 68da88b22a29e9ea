#pragma once

#include <cstdint>

// A region of pixels: any union of rectangles. Created empty by New(), shaped
// by RectRegion, CopyRegion and OffsetRegion, freed by Dispose() or the
// destructor.
class BRegion {
 public:
  BRegion() = default;
  BRegion(const BRegion&) = delete;
  BRegion& operator=(const BRegion&) = delete;
  virtual ~BRegion();

  // Creates the (empty) region; gives its handle, null on failure. A region
  // that exists already is kept.
  void* New();
  void* Handle() const { return region; }
  // The region becomes the rectangle (empty when right <= left or
  // bottom <= top). Nothing happens before New().
  void RectRegion(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);
  void OffsetRegion(std::int32_t dx, std::int32_t dy);
  // This region becomes a copy of src's (empty when src has none).
  void CopyRegion(BRegion* src);
  void Dispose();

  bool IsEmpty() const;
  bool Contains(std::int32_t x, std::int32_t y) const;
  // The bounding box; all zero when empty.
  void Bounds(std::int32_t* left, std::int32_t* top, std::int32_t* right,
              std::int32_t* bottom) const;
  // Number of rectangles the region is made of.
  int RectCount() const;

 protected:
  void* region = nullptr;  // pixman region, owned
};
