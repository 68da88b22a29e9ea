/// \file
/// QvMCastAnc, one anchor of a cast member's motion path.
#pragma once

#include "toolbox/tbPoint.h"

/// \brief One anchor of a cast member's motion path (QvMCast::RegAnc).
///
/// The host fills an array of these and passes it to QvMCast::RegAnc, which
/// copies it; the caller keeps owning its array.
struct QvMCastAnc {
  /// A plain anchor.
  static constexpr char kPlain = 0;
  /// A key point: the in-betweening (QvMCast::InbetweenAnc) passes it to the
  /// hook and keeps it.
  static constexpr char kKey = 1;
  /// An anchor placed by in-betweening.
  static constexpr char kInbetween = 2;

  /// Position in pixels relative to the top-left corner of the area the
  /// member is drawn in; the coordinates are used as signed 16-bit values.
  tbPoint point;
  /// kPlain, kKey or kInbetween; the host may store other values.
  char flag = kPlain;
};
