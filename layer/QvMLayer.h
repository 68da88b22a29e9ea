#pragma once

#include <cstdint>

#include "layer/QvMLayerInfo.h"

class QvMCast;
class QvMCastList;
class tbPixMap;
class tbRect;

// The layer store: an ordered table of layers (timeline tracks) holding
// references to cast members, which it places, moves and fits in time, and
// draws at a moment of the movie. It owns its layers and their reference
// lists, never the cast stores they name.
class QvMLayer {
 public:
  QvMLayer();
  QvMLayer(const QvMLayer&) = delete;
  QvMLayer& operator=(const QvMLayer&) = delete;
  virtual ~QvMLayer();

  // ---- Layer table ----
  std::int16_t Count();
  std::int16_t ID2Index(std::int16_t id);
  std::int16_t Index2ID(std::int16_t index);
  // Inserts a layer before the one at index, or appends it when there is
  // none; the new layer's index, -1 when memory is short.
  std::int16_t New(std::int16_t index, std::int16_t id);
  char Empty(std::int16_t index);
  char Del(std::int16_t index);
  void DelAll();

  // ---- Cast placement ----
  // Places the reference on the layer and fits it with mode fit (-1: none).
  char RegCast(std::int16_t index, QvMCast* cast, std::int16_t castId, char fit);
  char DelCast(std::int16_t index, QvMCast* cast, std::int16_t castId);
  // Removes the reference from every layer.
  void DelCast(QvMCast* cast, std::int16_t castId);
  char MoveCast(std::int16_t from, QvMCast* cast, std::int16_t castId, std::int16_t to);
  // Adds every reference of layer index to layer targetIndex of target.
  char Copy(std::int16_t index, QvMLayer* target, std::int16_t targetIndex);
  char Get(std::int16_t index, std::int16_t castIndex, QvMCast** cast, std::int16_t* castId);
  // One walk over every reference, from the last layer to the first.
  char GetFirst(QvMCast** cast, std::int16_t* castId);
  char GetNext(QvMCast** cast, std::int16_t* castId);
  // The greatest end time of all placed members; 0 when there is none.
  std::int32_t End();

  // ---- Fitting ----
  // mode -1 none, 0 move, 1 trim the start, 2 trim the end, 3 all three.
  // 1 when the member's range changed (always 1 for -1 and unknown modes).
  char FitCast(std::int16_t index, QvMCast* cast, std::int16_t castId, char mode);

  // ---- Drawing and comment ----
  void DrawPicture(std::int32_t time, tbPixMap* pixMap, tbRect* rect);
  char NewComment(std::uint16_t size);
  char SetComment(unsigned char* data, std::uint16_t size);
  void DelComment();
  // The store's own block (null when none); the caller must not free it.
  void GetComment(unsigned char** data, std::uint16_t* size);

  // The layer store has no file format: both give 0.
  char Load(int file);
  char Save(int file);

 protected:
  QvMLayerInfo* localSearch(std::int16_t index);
  char localFitCastStart(QvMCastList* list, QvMCast* cast, std::int16_t castId);
  char localFitCastEnd(QvMCastList* list, QvMCast* cast, std::int16_t castId);
  char localFitCastMove(QvMCastList* list, QvMCast* cast, std::int16_t castId);

  QvMLayerInfo* head;
  QvMLayerInfo* found;
  QvMLayerInfo* iter;
  std::int16_t newLayer;
  unsigned char* comment;
  std::uint16_t commentSize;
};
