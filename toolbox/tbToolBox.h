/// \file tbToolBox.h
/// \brief The graphics toolbox (tbToolBox), its one object qv::tb, and
/// QvFreeString().
#pragma once

#include <cstdint>

class tbColorTable;
class tbGWorld;
class tbPixMap;
class tbRect;
class tbRegion;

/// The graphics toolbox: makes and frees 8-bit off-screen worlds, copies
/// pixels through a mask region, and makes string handles. The library uses
/// the one object qv::tb; hosts may use it too, or make their own (the class
/// holds no state).
class tbToolBox {
 public:
  /// The mode of CopyBits(): copy the source pixels unchanged.
  static constexpr std::uint32_t kSrcCopy = 0x00CC0020;
  /// The depth of NewGWorld(): 8 bits per pixel, the only depth there is.
  static constexpr std::int16_t kDepth8 = 8;

  /// Makes a toolbox; it holds nothing.
  tbToolBox() = default;
  /// Destroys the toolbox; worlds it made stay valid.
  virtual ~tbToolBox();

  /// Makes an 8-bit off-screen world.
  ///
  /// \param world Receives the new world, or null on failure. The caller owns
  ///        the world and frees it with DisposeGWorld().
  /// \param depth Bits per pixel; must be kDepth8.
  /// \param bounds The world's bounds: left and top must be 0, right (the
  ///        width) and bottom (the height) 1 to 32767 pixels. Read only.
  /// \param table Colour table copied into the world (read only); null gives
  ///        a table of 256 black entries.
  /// \return 1 on success, with every pixel 0 and rows exactly the width
  ///         apart; 0 when `world` is null, the depth or the bounds are not
  ///         as above, or memory is short. Allocates the world and its pixel
  ///         buffer (two attempts for QvFailAllocation()).
  std::int16_t NewGWorld(tbGWorld** world, std::int16_t depth, tbRect* bounds, tbColorTable* table);
  /// Frees a world made by NewGWorld() with its pixel buffer.
  ///
  /// \param world The world; null is allowed and does nothing.
  void DisposeGWorld(tbGWorld* world);

  /// Copies a rectangle of pixels from one pixel map to another, through an
  /// optional mask region. Nothing is reported; a copy that cannot be made
  /// copies nothing.
  ///
  /// \param src Source pixel map (read only).
  /// \param dst Destination pixel map; may share its buffer with `src`, in
  ///        which case the copy behaves as if the source were read first.
  /// \param srcRect Source rectangle, in `src`'s bounds coordinates.
  /// \param dstRect Destination rectangle, in `dst`'s bounds coordinates.
  ///        The rectangles should have the same size; when they differ, the
  ///        smaller width and height are used. No scaling. Both are clipped
  ///        to their pixel maps' bounds, each moving the other along.
  /// \param mode Must be kSrcCopy; any other mode copies nothing.
  /// \param region Mask in destination coordinates: only pixels inside it
  ///        are written. Null masks nothing; a region object whose region
  ///        was never created (BRegion::New()) lets nothing through.
  ///
  /// Null pixel maps, rectangles or buffers copy nothing. Allocates nothing
  /// that the fault injection counts.
  void CopyBits(tbPixMap* src, tbPixMap* dst, tbRect* srcRect, tbRect* dstRect, std::uint32_t mode,
                tbRegion* region);

  /// Makes a string handle: a handle pointing to a block that holds a copy of
  /// a NUL-terminated string.
  ///
  /// \param text The string, read only.
  /// \return The handle; the caller owns it and frees it with QvFreeString()
  ///         (which frees the block with qv::GlobalFree() and the handle with
  ///         `operator delete`). Null when `text` is null or an allocation
  ///         fails (two attempts: handle and block).
  unsigned char** NewString(unsigned char* text);
};

/// Frees a string handle made by tbToolBox::NewString(), as handed out by the
/// library's name queries: the block and the handle.
///
/// \param handle The handle; null is allowed and does nothing.
void QvFreeString(unsigned char** handle);

namespace qv {
/// The library's one toolbox object, used by every part of the engine.
extern tbToolBox tb;
}  // namespace qv
