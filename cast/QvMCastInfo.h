/// \file
/// QvMCastInfo, the record of one cast member of a QvMCast store.
#pragma once

#include <cstdint>

#include "toolbox/tbPicture.h"

class QvAColor;
class QvAFrame;
class QvMCastList;
class tbColorTable;
class tbGWorld;
class QvPal;
struct QvMCastDft;
struct QvMCastAnc;

/// \brief One cast member of a QvMCast store.
///
/// Allocated, owned and freed by the store; the fields are set by the
/// store's operations, and a host reads them only through those operations
/// (or in a class derived from QvMCast). Every pointer field below except
/// `lists`, `prev` and `next` is owned by the member and freed when the
/// attachment is removed or the member is deleted.
struct QvMCastInfo {
  /// A fresh record with the values below.
  QvMCastInfo() = default;
  /// Records are not copied.
  QvMCastInfo(const QvMCastInfo&) = delete;
  /// Records are not copied.
  QvMCastInfo& operator=(const QvMCastInfo&) = delete;

  /// The cast id.
  std::int16_t id = 0;
  /// Name handle made by tbToolBox::NewString, owned; null for none.
  unsigned char** name = nullptr;
  /// Host act flags, kept a subset of the attachment mask
  /// (QvMCast::kAttachCycle ...).
  std::uint32_t actFlag = 0;
  /// Host show flags, kept a subset of the attachment mask.
  std::uint32_t showFlag = 0;
  /// Colour animation copies by kind: 0 cycle, 1 flash, 2 switch, 3 fade.
  QvAColor* aColor[4] = {nullptr, nullptr, nullptr, nullptr};
  /// Frame animation copy.
  QvAFrame* aFrame = nullptr;
  /// Own colour table (256 entries).
  tbColorTable* orgCTable = nullptr;
  /// 8-bit off-screen world the frame is drawn into (area size of the frame
  /// animation, own colour table). The drawing may go straight from the
  /// frame to the target and write these pixels later: a subclass
  /// reads them after QvMCast::localSettleOrgGWorld and disposes the world
  /// with QvMCast::localDisposeOrgGWorld.
  tbGWorld* orgGWorld = nullptr;
  /// Palette area: the indices drawn; null for all.
  QvPal* orgPal = nullptr;
  /// First palette index outside orgPal: background of the frame drawing.
  std::int16_t fillIndex = 0;
  /// Host value registered with the Dft entries.
  std::int16_t dftParam = 0;
  /// Dft entries: dftLast + 1 records.
  QvMCastDft* dft = nullptr;
  /// Number of Dft entries minus one.
  std::int16_t dftLast = 0;
  /// Host flag registered with the Dft entries.
  char dftFlag = 0;
  /// Anchor path: ancLast + 1 records.
  QvMCastAnc* anc = nullptr;
  /// Number of anchors minus one; 0 without a path.
  std::int16_t ancLast = 0;
  /// Anchor index offset, 0 .. ancLast.
  std::int16_t ancOffset = 0;
  /// Anchors advanced per unit of movie time.
  double ancStep = 5.0;
  /// Folding of indices outside the path: QvMCast::kAncClamp (1),
  /// kAncReflect (2), kAncWrap (3).
  signed char ancType = 3;
  /// First index of the selected span of anchors; −1 for none.
  std::int32_t ancSelStart = -1;
  /// Last index of the selected span of anchors; −1 for none.
  std::int32_t ancSelEnd = -1;
  /// Scroll directions: QvMCast::kScrollLeft (1), kScrollRight (2),
  /// kScrollUp (4), kScrollDown (8).
  char scroll = 0;
  /// Horizontal scroll distance in pixels per unit of movie time.
  double scrStepH = 5.0;
  /// Vertical scroll distance in pixels per unit of movie time.
  double scrStepV = 5.0;
  /// Cached icon.
  tbPicture icon;
  /// Width the cached icon was made for.
  std::int16_t iconWidth = 0;
  /// Height the cached icon was made for.
  std::int16_t iconHeight = 0;
  /// First moment on the movie's timeline (movie time); −1 = not set.
  std::int32_t start = -1;
  /// Last moment, included; −1 = not set.
  std::int32_t end = -1;
  /// Reference lists of the animations the copies came from (not owned):
  /// 0 to 3 the colour kinds, 4 the frame animation, 5 the Dft entries.
  QvMCastList* lists[6] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  /// Previous member in creation order; null for the first.
  QvMCastInfo* prev = nullptr;
  /// Next member in creation order; null for the last.
  QvMCastInfo* next = nullptr;
};
