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

// One cast member of a QvMCast store. Allocated and owned by the store; the
// fields are set by the store's operations.
struct QvMCastInfo {
  QvMCastInfo() = default;
  QvMCastInfo(const QvMCastInfo&) = delete;
  QvMCastInfo& operator=(const QvMCastInfo&) = delete;

  std::int16_t id = 0;
  // Name handle made by tbToolBox::NewString, owned; null for none.
  unsigned char** name = nullptr;
  // Host flags, each kept a subset of the attachment mask.
  std::uint32_t actFlag = 0;
  std::uint32_t showFlag = 0;
  // Colour animation copies by kind: 0 cycle, 1 flash, 2 switch, 3 fade.
  QvAColor* aColor[4] = {nullptr, nullptr, nullptr, nullptr};
  // Frame animation copy, owned.
  QvAFrame* aFrame = nullptr;
  // Own colour table, off-screen world and palette area, owned.
  tbColorTable* orgCTable = nullptr;
  tbGWorld* orgGWorld = nullptr;
  QvPal* orgPal = nullptr;
  // First palette index outside orgPal: background of the frame drawing.
  std::int16_t fillIndex = 0;
  // Dft entries: dftLast + 1 records, owned.
  std::int16_t dftParam = 0;
  QvMCastDft* dft = nullptr;
  std::int16_t dftLast = 0;
  char dftFlag = 0;
  // Anchor path: ancLast + 1 records, owned.
  QvMCastAnc* anc = nullptr;
  std::int16_t ancLast = 0;
  std::int16_t ancOffset = 0;
  // Anchors advanced per unit of time.
  double ancStep = 5.0;
  // Folding of indices outside the path: 1 clamp, 2 reflect, 3 wrap.
  signed char ancType = 3;
  // Selected span of anchor indices; -1, -1 for none.
  std::int32_t ancSelStart = -1;
  std::int32_t ancSelEnd = -1;
  // Scroll directions: 1 left, 2 right, 4 up, 8 down.
  char scroll = 0;
  // Scroll distances per unit of time.
  double scrStepH = 5.0;
  double scrStepV = 5.0;
  // Cached icon and the size it was made for.
  tbPicture icon;
  std::int16_t iconWidth = 0;
  std::int16_t iconHeight = 0;
  // Time range on the movie's timeline, end inclusive; -1 = not set.
  std::int32_t start = -1;
  std::int32_t end = -1;
  // Reference lists of the animations the copies came from (not owned):
  // 0 to 3 the colour kinds, 4 the frame animation, 5 the Dft entries.
  QvMCastList* lists[6] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  QvMCastInfo* prev = nullptr;
  QvMCastInfo* next = nullptr;
};
