/// \file BZoom.h
/// \brief BZoom, the conversion of zoomed view coordinates into picture
/// coordinates.
#pragma once

#include "toolbox/OsImgPoint.h"
#include "toolbox/OsImgRect.h"
#include "toolbox/OsImgSize.h"

/// Converts coordinates given on a zoomed view into the coordinates of the
/// picture behind it, in place: points, sizes and rectangles. A utility for
/// hosts; the engine itself does not use it.
///
/// Six divisors and offsets define the conversion: each value v is divided by
/// the zoom, the offset is added (GPtoLP() only), and the result is divided
/// by the scale. The whole expression is evaluated in double precision and
/// truncated toward zero (-2.7 gives -2); both results of a point are
/// computed from the values before the call. A zero zoom or scale gives the
/// most negative or most positive 32-bit value (or 0 for 0 / 0). Holds
/// nothing but the six values and owns nothing.
class BZoom {
 public:
  /// The identity: zoom 1, offset 0 and scale 1 on both axes.
  BZoom();
  /// All six values at once (a convenience for hosts).
  ///
  /// \param zoomX,zoomY Zoom divisors of the two axes.
  /// \param offsetX,offsetY Offsets added after the zoom, in picture pixels
  ///        before the scale.
  /// \param scaleX,scaleY Second divisors of the two axes.
  BZoom(float zoomX, float zoomY, float offsetX, float offsetY, float scaleX, float scaleY);
  /// Copies the six values.
  ///
  /// \param other The conversion to copy.
  BZoom(const BZoom& other);
  /// Copies the six values.
  ///
  /// \param other The conversion to copy.
  /// \return This object.
  BZoom& operator=(const BZoom& other);

  /// Replaces all six values.
  ///
  /// \param zoom The new values.
  /// \return A BZoom holding the six values as they were before the call.
  BZoom SetZoom(BZoom zoom);

  /// Converts a point: x becomes trunc((x / zoomX + offsetX) / scaleX), y
  /// likewise with the vertical values.
  ///
  /// \param point The point, converted in place.
  virtual void GPtoLP(OsImgPoint& point);
  /// Converts a rectangle: left and right as x, top and bottom as y, with
  /// the offsets (see GPtoLP(OsImgPoint&)).
  ///
  /// \param rect The rectangle, converted in place.
  virtual void GPtoLP(OsImgRect& rect);
  /// Converts a size exactly as a point, offsets included: width as x,
  /// height as y.
  ///
  /// \param size The size, converted in place.
  virtual void GPtoLP(OsImgSize& size);
  /// Converts a point without the offsets: x becomes trunc(x / zoomX /
  /// scaleX), y likewise.
  ///
  /// \param point The point, converted in place.
  virtual void GPtoLP2(OsImgPoint& point);
  /// Converts a rectangle without the offsets: left and right as x, top and
  /// bottom as y.
  ///
  /// \param rect The rectangle, converted in place.
  virtual void GPtoLP2(OsImgRect& rect);
  /// Converts a size without the offsets: width as x, height as y.
  ///
  /// \param size The size, converted in place.
  virtual void GPtoLP2(OsImgSize& size);

  /// \return The horizontal zoom divisor (1 by default).
  float ZoomX() const { return zoomX; }
  /// \return The vertical zoom divisor (1 by default).
  float ZoomY() const { return zoomY; }
  /// \return The horizontal offset (0 by default).
  float OffsetX() const { return offsetX; }
  /// \return The vertical offset (0 by default).
  float OffsetY() const { return offsetY; }
  /// \return The second horizontal divisor (1 by default).
  float ScaleX() const { return scaleX; }
  /// \return The second vertical divisor (1 by default).
  float ScaleY() const { return scaleY; }

 protected:
  float zoomX;    ///< Horizontal zoom divisor.
  float zoomY;    ///< Vertical zoom divisor.
  float offsetX;  ///< Horizontal offset, added after the zoom.
  float offsetY;  ///< Vertical offset, added after the zoom.
  float scaleX;   ///< Second horizontal divisor.
  float scaleY;   ///< Second vertical divisor.
};
