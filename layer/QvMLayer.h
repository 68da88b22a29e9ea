/// \file
/// The layer store QvMLayer: the movie's timeline tracks, the placement and
/// fitting of cast members on them, and the drawing of a moment with its
/// colour table.
#pragma once

#include <cstdint>

#include "layer/QvMLayerInfo.h"

class QvMCast;
class QvMCastList;
class tbColorTable;
class tbPixMap;
class tbRect;

/// \brief The layer store: an ordered table of layers (timeline tracks)
/// holding references to cast members, which it places, moves and fits in
/// time, and draws at a moment of the movie.
///
/// Layers are addressed by index (their place, from 0 at the first layer);
/// each also carries a 16-bit id the host gives it. A reference is the pair
/// (cast store, cast id): the layer store never owns a cast store, never
/// checks that a referenced member exists and is not told when one is
/// deleted; remove the references with DelCast first. A cast store must
/// outlive every reference to it.
///
/// Drawing a moment: DrawPicture draws the indices, GetCTable gives the
/// colour table that goes with them; both visit layer 0 first and, on each
/// layer, the members in placement order. Times are movie time (two ticks
/// per unit, see QvMCast).
///
/// New, RegCast, MoveCast, Copy, NewComment and SetComment allocate, and so
/// does a move fitting (a temporary list of free intervals); each reports a
/// shortage by its failure result (a move fitting then leaves the member
/// where it is).
///
/// `char` results are 1 for success and 0 for failure; an operation that
/// takes a layer index fails when there is no such layer. The store owns its
/// layers, their reference lists and its comment block, and frees them in
/// DelAll and its destructor. It is used from one thread.
class QvMLayer {
 public:
  /// \name Fitting modes (RegCast, FitCast)
  //@{
  /// No fitting.
  static constexpr char kFitNone = -1;
  /// Move the member whole into free time, earlier or later.
  static constexpr char kFitMove = 0;
  /// Trim the start past the neighbours that end inside the member.
  static constexpr char kFitTrimStart = 1;
  /// Trim the end before the neighbours that start inside the member.
  static constexpr char kFitTrimEnd = 2;
  /// Trim the end, then the start, then move, each on the result before.
  static constexpr char kFitAll = 3;
  //@}

  /// An empty store without a comment.
  QvMLayer();
  /// A store owns its layers; it cannot be copied.
  QvMLayer(const QvMLayer&) = delete;
  /// A store owns its layers; it cannot be copied.
  QvMLayer& operator=(const QvMLayer&) = delete;
  /// Frees every layer with its references (not the cast stores) and the
  /// comment.
  virtual ~QvMLayer();

  /// \name Layer table
  //@{
  /// The number of layers.
  std::int16_t Count();
  /// The index of the first layer with that id; −1 when there is none.
  std::int16_t ID2Index(std::int16_t id);
  /// The id of the layer at index; −1 when there is none.
  std::int16_t Index2ID(std::int16_t index);
  /// Inserts a layer before the one at index (which then moves up by one),
  /// or appends it when there is none there.
  /// \param index place of the new layer.
  /// \param id the host's id for the layer, not checked for uniqueness.
  /// \return the new layer's index; −1 when memory is short (nothing
  ///   changed).
  std::int16_t New(std::int16_t index, std::int16_t id);
  /// Removes every reference from the layer. \return 1; 0 without layer.
  char Empty(std::int16_t index);
  /// Deletes the layer and its references; the layers after it move down
  /// by one. Restart a GetFirst walk afterwards. \return 1; 0 without layer.
  char Del(std::int16_t index);
  /// Deletes every layer.
  void DelAll();
  //@}

  /// \name Cast placement
  //@{
  /// Places the reference at the end of the layer (a reference already there
  /// keeps its place) and fits the member's range against the others on that
  /// layer with mode fit.
  /// \param index the layer.
  /// \param cast not owned; must outlive the reference.
  /// \param castId the member's id in cast.
  /// \param fit kFitNone, kFitMove, kFitTrimStart, kFitTrimEnd or
  ///   kFitAll.
  /// \return 1; 0 without layer, with a null cast, or when memory is short.
  char RegCast(std::int16_t index, QvMCast* cast, std::int16_t castId, char fit);
  /// Removes the reference from the layer. \return 1; 0 when it was not
  /// there or there is no layer.
  char DelCast(std::int16_t index, QvMCast* cast, std::int16_t castId);
  /// Removes the reference from every layer. Call it before deleting the
  /// member or its cast store.
  void DelCast(QvMCast* cast, std::int16_t castId);
  /// Places the reference on layer to with kFitMove, then removes it from
  /// layer from (so from == to removes it).
  /// \return 1; 0 when either step fails (a placement on to stays).
  char MoveCast(std::int16_t from, QvMCast* cast, std::int16_t castId, std::int16_t to);
  /// Adds every reference of layer index, in order, to layer targetIndex of
  /// target (this store too), without fitting.
  /// \return 1 (also for an empty layer); 0 without layer or when a
  ///   placement fails (those before it stay).
  char Copy(std::int16_t index, QvMLayer* target, std::int16_t targetIndex);
  /// The reference at castIndex (placement order, from 0) of layer index.
  /// \return 1; 0 when either does not exist.
  char Get(std::int16_t index, std::int16_t castIndex, QvMCast** cast, std::int16_t* castId);
  /// Starts one walk over every reference, from the last layer to the first
  /// and on each layer in placement order, and gives the first.
  /// \return 1; 0 when there is none. Do not fit (RegCast, MoveCast,
  ///   FitCast) during a walk: fitting moves the same cursors.
  char GetFirst(QvMCast** cast, std::int16_t* castId);
  /// The next reference of the walk GetFirst started. \return 1; 0 at the
  ///   end.
  char GetNext(QvMCast** cast, std::int16_t* castId);
  /// The end of the movie: the greatest end time (QvMCast::End(id)) of all
  /// placed members; 0 when there is none or all ends are below 0.
  std::int32_t End();
  //@}

  /// \name Fitting
  //@{
  /// Fits the member's range against the others on the layer; only the
  /// member's range changes (through its cast store), never a neighbour's.
  /// \param index the layer whose other members are the neighbours.
  /// \param cast, castId the member (its cast store is not owned).
  /// \param mode kFitNone, kFitMove, kFitTrimStart, kFitTrimEnd or
  ///   kFitAll.
  /// \return 1 when the range changed; 0 when it did not, there is no
  ///   layer or cast is null. Always 1 for kFitNone, and 1 for an unknown
  ///   mode on an existing layer (nothing changes). A member moved earlier
  ///   can get a start below 0.
  char FitCast(std::int16_t index, QvMCast* cast, std::int16_t castId, char mode);
  //@}

  /// \name Drawing and comment
  //@{
  /// Draws moment time of the movie into pixMap: QvMCast::DrawPicture of
  /// every reference, layer 0 first, on each layer in placement order, so
  /// later layers draw over earlier ones. A member draws only at moments
  /// inside its range; pixels no member covers keep their value. Indices
  /// only: take the colours from GetCTable with the same time.
  /// \param time movie time; −1 draws each member at its own start.
  /// \param pixMap 8-bit pixel map drawn into (not owned).
  /// \param rect the rectangle members move in (anchor paths are relative to
  ///   its top-left corner).
  void DrawPicture(std::int32_t time, tbPixMap* pixMap, tbRect* rect);
  /// The colour table of moment time, the one that goes with DrawPicture's
  /// pixels: base, overlaid member by member in drawing order (layer 0
  /// first, on each layer in placement order) by QvMCast::GetCTable: the
  /// entries inside the palette areas of each member's colour animations
  /// take the colours those animations give at time. Members outside their
  /// range, or without colour animations, change nothing.
  /// \param time movie time (−1 is not replaced by the members' starts).
  /// \param base the table to start from, typically the movie's palette;
  ///   may be out itself.
  /// \param out receives the result (not owned).
  /// \return 1; 0 when base or out is null.
  /// Moves the clocks of the members' colour animation copies to time.
  char GetCTable(std::int32_t time, const tbColorTable* base, tbColorTable* out);
  /// Replaces the comment by a new block of size bytes whose content is not
  /// set; size 0 leaves no comment.
  /// \return 1; 0 when the block cannot be allocated (the old comment is
  ///   gone then).
  char NewComment(std::uint16_t size);
  /// Replaces the comment by a copy of size bytes of data (data not owned;
  /// null leaves the new block unset).
  /// \return 1; 0 when the block cannot be allocated.
  char SetComment(unsigned char* data, std::uint16_t size);
  /// Frees the comment.
  void DelComment();
  /// The store's own comment block (null when none) and its size in bytes.
  /// The caller must not free the block; it is valid until the next
  /// NewComment, SetComment, DelComment or the store's destruction.
  void GetComment(unsigned char** data, std::uint16_t* size);

  /// No file format: returns 0 and does nothing.
  char Load(int file);
  /// No file format: returns 0 and does nothing.
  char Save(int file);
  //@}

 protected:
  /// The layer at index, also kept in found; null when there is none.
  QvMLayerInfo* localSearch(std::int16_t index);
  /// Trims the member's start past the neighbours on list that end inside
  /// it; 1 when the range changed.
  char localFitCastStart(QvMCastList* list, QvMCast* cast, std::int16_t castId);
  /// Trims the member's end before the neighbours on list that start inside
  /// it; 1 when the range changed.
  char localFitCastEnd(QvMCastList* list, QvMCast* cast, std::int16_t castId);
  /// Moves the member whole into free time on list; 1 when it moved.
  char localFitCastMove(QvMCastList* list, QvMCast* cast, std::int16_t castId);

  /// First layer (index 0); null when there is none.
  QvMLayerInfo* head;
  /// The layer found by the last localSearch.
  QvMLayerInfo* found;
  /// The layer of the running GetFirst/GetNext walk.
  QvMLayerInfo* iter;
  /// 1 when the walk starts on the reference list of the layer at iter.
  std::int16_t newLayer;
  /// The comment block (qv::GlobalAlloc), owned; null when none.
  unsigned char* comment;
  /// The comment's size in bytes; 0 when none.
  std::uint16_t commentSize;
};
