#pragma once

#include "toolbox/tbPoint.h"

// One Dft entry of a cast member: three points and a flag. The cast store
// stores, copies and hands these back without interpreting them.
struct QvMCastDft {
  tbPoint pointA;
  tbPoint pointB;
  tbPoint pointC;
  char flag = 0;
};
