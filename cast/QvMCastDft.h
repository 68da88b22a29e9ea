/// \file
/// QvMCastDft, one Dft entry of a cast member.
#pragma once

#include "toolbox/tbPoint.h"

/// \brief One Dft entry of a cast member: three points and a flag, host data
/// that the cast store stores, copies and hands back without interpreting it
/// (QvMCast::RegDft, QvMCast::GetDft). A new entry's points are (0, 0).
struct QvMCastDft {
  /// First point.
  tbPoint pointA;
  /// Second point.
  tbPoint pointB;
  /// Third point.
  tbPoint pointC;
  /// The host's flag.
  char flag = 0;
};
