/// \file QvACycleInfo.h
/// \brief QvACycleInfo, one cycling range of a QvACycle.
#pragma once

class QvMPlayer;

/// One cycling range of a QvACycle, in a doubly linked list owned by the
/// animation: its range clock, whose `top` and `end` are the first and last
/// palette index of the range and whose mode is the animation's. Hosts never
/// see this record.
struct QvACycleInfo {
  QvMPlayer* player = nullptr;   ///< The range clock, owned; null when making it failed.
  QvACycleInfo* prev = nullptr;  ///< The previous range; null for the first.
  QvACycleInfo* next = nullptr;  ///< The next range; null for the last.
};
