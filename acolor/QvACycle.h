/// \file QvACycle.h
/// \brief QvACycle, colour cycling.
#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "acolor/QvACycleInfo.h"
#include "player/QvMCastList.h"

/// Colour cycling: rotates colours within the palette area. Every maximal
/// run of consecutive palette indices in the area is one range; frame n
/// moves the colours of each range n places toward the higher indices,
/// wrapping from the top of the range to its bottom. How n is fitted into a
/// range of L indices follows the animation's mode: kPlayLoop wraps (the
/// colours turn round and round, period L), kPlayBounce moves them back and
/// forth, kPlayOnce stops after L - 1 places.
///
/// Example: a range 10 to 13 holding colours W X Y Z shows at frames 0 to 3
/// W X Y Z, Z W X Y, Y Z W X, X Y Z W; at frame 5 it shows Z W X Y in
/// kPlayLoop and kPlayBounce and X Y Z W in kPlayOnce.
///
/// The animation has no frames until an area is registered, then 32767
/// (frames 0 to 32766). Kind code QvAColor::kCycle. Also the list of the
/// cast members that hold copies of it (QvMCastList).
class QvACycle : public QvAColor, public QvMCastList {
 public:
  /// An animation without area and without frames (range 0 to -1).
  QvACycle();
  QvACycle(const QvACycle&) = delete;
  QvACycle& operator=(const QvACycle&) = delete;
  /// Detaches the cast members (DelFromMCast()) and frees the ranges.
  ~QvACycle() override;

  /// Sets the mode of the animation and of every range, then passes the
  /// change on (UpdateMCast()). Ranges made later take the mode current when
  /// they are made.
  ///
  /// \param m QvMPlayer::kPlayOnce, kPlayBounce or kPlayLoop.
  void SetMode(char m) override;
  /// Registers the palette area (see QvAColor::RegArea()), rebuilds the
  /// cycling ranges from it (one per run of flagged indices below
  /// FlagNum()), sets the number of frames to 32767 and passes the change on
  /// (UpdateMCast()).
  ///
  /// \param pal The area, read only and still the caller's; null registers
  ///        an empty area (no ranges: frames then copy the source).
  /// \return 1 on success, also when a range's record or clock cannot be
  ///         allocated (that range then stays still); 0 when the area object
  ///         cannot be allocated, nothing changed. Allocates two objects per
  ///         range.
  char RegArea(QvPal* pal) override;
  /// \return The number of frames: 0 before the first successful RegArea(),
  ///         32767 after it.
  std::int16_t Count() override;
  /// Computes the table of the current frame: a running clock is sampled
  /// first (as Cur() does), then CTable(cur, src) is computed.
  ///
  /// \param src The source table (read only, the caller's).
  /// \return As CTable(std::int16_t, tbColorTable*).
  tbColorTable* CTable(tbColorTable* src) override;
  /// Computes the rotation of a frame: all 256 source entries are copied, then the colours of each
  /// range are moved by `frame` places as fitted by the mode.
  ///
  /// \param frame The frame, 0 to Count() - 1 (32766).
  /// \param src The source table (read only, the caller's).
  /// \return The output table (owned by the animation, valid until the next
  ///         computation); null, with the output table unchanged, when Error()
  ///         is not 0, `frame` is out of range or `src` is null. Allocates
  ///         nothing.
  tbColorTable* CTable(std::int16_t frame, tbColorTable* src) override;
  using QvAColor::CTable;
  /// Not supported: the library reads no files.
  ///
  /// \param file Ignored.
  /// \return Always 0.
  char Load(int file) override;
  /// Not supported: the library writes no files.
  ///
  /// \param file Ignored.
  /// \return Always 0.
  char Save(int file) override;
  using QvAColor::Load;
  using QvAColor::Save;
  /// Not supported: the library reads no files.
  ///
  /// \param file Ignored.
  /// \param offset Ignored.
  /// \return Always 0.
  char Load(int file, std::uint32_t offset);

  /// Copies the settings into another cycling animation through its own
  /// operations: mode, speed and area (which rebuilds its ranges and renews
  /// its own cast members' copies). Clock position, run state, error bits
  /// and cast members are not copied.
  ///
  /// \param other The animation to set, the caller's; null or this
  ///        animation itself does nothing.
  void Dup(QvACycle* other);

  /// Passes a change on: every cast member in this animation's list
  /// receives a fresh copy (Dup()) in place of its old one, keeping its name
  /// and start time (QvMCast::RegAColor() with kind QvAColor::kCycle). Each
  /// setting operation of the animation ends with this call; hosts call it
  /// themselves only after changing the clock (SetSpeed()) to renew the
  /// members' copies. Allocates one copy per member; a member whose copy
  /// cannot be allocated is left without a colour animation of this kind.
  void UpdateMCast();
  /// Detaches the animation: every cast member in its list receives a last
  /// copy that no longer follows the animation, and the list is emptied. The
  /// destructor calls it, so members keep drawing with their last copies.
  void DelFromMCast();

 protected:
  /// The range follows the number of frames; hosts cannot set it.
  using QvAColor::SetEnd;
  /// The range follows the number of frames; hosts cannot set it.
  using QvAColor::SetTop;

  /// Registers this animation again on every member in its list.
  ///
  /// \param list The list the members stay attached to (this animation), or
  ///        null for a last, detached copy.
  void localUpdateMCast(QvMCastList* list);
  /// Appends one cycling range.
  ///
  /// \param top First palette index of the range.
  /// \param end Last palette index of the range.
  /// \return 1 when the record was made (its clock may still be missing); 0
  ///         when it could not be allocated.
  char localRegArea(std::int16_t top, std::int16_t end);
  /// Deletes every range with its clock.
  void localDelArea();

  /// First range, in increasing index order; owned, null when none.
  QvACycleInfo* head;
  /// The range under visit while the list is walked.
  QvACycleInfo* cursor;
  /// The number of frames (Count()).
  std::int16_t count;

  friend class QvMCast;
  /// CTable(frame, src). With outsideHeld the output table already holds
  /// src's entries outside the ranges (it was computed last from the same,
  /// unchanged source); the whole copy of src is then made only if some
  /// range is not one rotated block, and *rangesOnly (when not null) tells
  /// whether the ranges alone were written.
  tbColorTable* localRotate(std::int16_t frame, tbColorTable* src, bool outsideHeld,
                            bool* rangesOnly);
  /// CTable(src) with outsideHeld, as localRotate.
  tbColorTable* localRotateHeld(tbColorTable* src, bool* rangesOnly);
  /// Copies the entries of every range from src to dst. Only after a
  /// computation that wrote the ranges alone: each range then lies inside
  /// the table (CopyEntries ignores one that does not).
  void localCopyRanges(tbColorTable* dst, const tbColorTable* src);
};
