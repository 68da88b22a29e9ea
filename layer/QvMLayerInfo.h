/// \file
/// QvMLayerInfo, one layer of a QvMLayer store.
#pragma once

#include <cstdint>

class QvMCastList;

/// \brief One layer of a layer store: its host-given id and the references
/// to the cast members placed on it. Allocated, owned and freed by the
/// QvMLayer.
struct QvMLayerInfo {
  /// The host's id of the layer; not checked for uniqueness.
  std::int16_t id = 0;
  /// References to the members on the layer in placement order; owned by
  /// the layer.
  QvMCastList* casts = nullptr;
  /// Previous layer; null for the first.
  QvMLayerInfo* prev = nullptr;
  /// Next layer; null for the last.
  QvMLayerInfo* next = nullptr;
};
