/// \file BRegion.h
/// \brief BRegion, a region of pixels: any union of rectangles.
#pragma once

#include <cstdint>

/// A region of pixels: any union of rectangles, with pixel (x, y) covering
/// the unit square from (x, y) to (x + 1, y + 1). A new object holds no
/// region until New() creates it (empty); RectRegion(), CopyRegion() and
/// OffsetRegion() then shape it, and Dispose() or the destructor frees it.
/// The object owns its region. Coordinates are signed 32-bit pixels.
class BRegion {
 public:
  /// An object without a region (Handle() is null).
  BRegion() = default;
  BRegion(const BRegion&) = delete;
  BRegion& operator=(const BRegion&) = delete;
  /// Frees the region (Dispose()).
  virtual ~BRegion();

  /// Creates the region, empty. A region that exists already is kept as it
  /// is.
  ///
  /// \return The region's handle (also Handle()); null when memory is short
  ///         (one allocation attempt when a region is made).
  void* New();
  /// \return The region's handle: an opaque pointer owned by this object;
  ///         null before New() and after Dispose().
  void* Handle() const { return region; }
  /// The region becomes one rectangle.
  ///
  /// \param left,top Inclusive corner, in pixels.
  /// \param right,bottom Exclusive corner, in pixels. When right <= left or
  ///        bottom <= top the region becomes empty.
  ///
  /// Does nothing before New().
  void RectRegion(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);
  /// Moves the region.
  ///
  /// \param dx,dy Distance in pixels, added to every coordinate.
  ///
  /// Does nothing before New().
  void OffsetRegion(std::int32_t dx, std::int32_t dy);
  /// This region becomes a copy of another's.
  ///
  /// \param src The region to copy (read only); null or a `src` without a
  ///        region gives an empty region. Copying into itself does nothing.
  ///
  /// Does nothing before New(). When memory is short the region becomes
  /// empty.
  void CopyRegion(BRegion* src);
  /// Frees the region; Handle() becomes null. Safe to call again.
  void Dispose();

  /// \return true when the region covers no pixel, or does not exist.
  bool IsEmpty() const;
  /// \param x,y A pixel.
  /// \return true when the region covers that pixel.
  bool Contains(std::int32_t x, std::int32_t y) const;
  /// The bounding box of the region.
  ///
  /// \param left,top Receive the inclusive corner (each may be null).
  /// \param right,bottom Receive the exclusive corner (each may be null).
  ///
  /// All four are 0 when the region is empty or does not exist.
  void Bounds(std::int32_t* left, std::int32_t* top, std::int32_t* right,
              std::int32_t* bottom) const;
  /// \return The number of rectangles the region is made of; 0 when empty or
  ///         absent.
  int RectCount() const;

 protected:
  /// The region (an opaque handle), owned; null when none was created.
  void* region = nullptr;
};
