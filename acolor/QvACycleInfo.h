#pragma once

class QvMPlayer;

// One cycling range of a QvACycle: its range clock (top and end are the first
// and last palette index of the range) in a doubly linked list.
struct QvACycleInfo {
  QvMPlayer* player = nullptr;  // owned; null when making it failed
  QvACycleInfo* prev = nullptr;
  QvACycleInfo* next = nullptr;
};
