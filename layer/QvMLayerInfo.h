#pragma once

#include <cstdint>

class QvMCastList;

// One layer of a layer store: its host-given id and the references to the
// cast members placed on it.
struct QvMLayerInfo {
  std::int16_t id = 0;
  QvMCastList* casts = nullptr;  // owned by the layer
  QvMLayerInfo* prev = nullptr;
  QvMLayerInfo* next = nullptr;
};
