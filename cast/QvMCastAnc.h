#pragma once

#include "toolbox/tbPoint.h"

// One anchor of a cast member's motion path.
struct QvMCastAnc {
  // Position relative to the top-left corner of the drawing area; the
  // coordinates are used as signed 16-bit values.
  tbPoint point;
  // 0 a plain anchor, 1 a key point, 2 filled by in-betweening; the host may
  // store other values.
  char flag = 0;
};
