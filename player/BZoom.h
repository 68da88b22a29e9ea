#pragma once

#include "toolbox/OsImgPoint.h"
#include "toolbox/OsImgRect.h"
#include "toolbox/OsImgSize.h"

// Converts coordinates on a zoomed view into coordinates of the picture
// behind it.
class BZoom {
 public:
  BZoom();
  // Convenience: all six values at once.
  BZoom(float zoomX, float zoomY, float offsetX, float offsetY, float scaleX, float scaleY);
  BZoom(const BZoom& other);
  BZoom& operator=(const BZoom& other);

  // Takes all six values of zoom; returns the values held before the call.
  BZoom SetZoom(BZoom zoom);

  // x -> trunc((x / zoomX + offsetX) / scaleX), y likewise.
  virtual void GPtoLP(OsImgPoint& point);
  virtual void GPtoLP(OsImgRect& rect);
  virtual void GPtoLP(OsImgSize& size);
  // x -> trunc(x / zoomX / scaleX), y likewise (no offsets).
  virtual void GPtoLP2(OsImgPoint& point);
  virtual void GPtoLP2(OsImgRect& rect);
  virtual void GPtoLP2(OsImgSize& size);

  // Read access to the six values.
  float ZoomX() const { return zoomX; }
  float ZoomY() const { return zoomY; }
  float OffsetX() const { return offsetX; }
  float OffsetY() const { return offsetY; }
  float ScaleX() const { return scaleX; }
  float ScaleY() const { return scaleY; }

 protected:
  float zoomX;
  float zoomY;
  float offsetX;
  float offsetY;
  float scaleX;
  float scaleY;
};
