#pragma once

#include <cstdint>

class QvMCast;

// One reference to a cast member: its cast store and its cast id, linked into
// a QvMCastList.
struct QvMCastID {
  QvMCast* cast = nullptr;  // not owned
  std::int16_t id = 0;
  QvMCastID* prev = nullptr;
  QvMCastID* next = nullptr;
};
