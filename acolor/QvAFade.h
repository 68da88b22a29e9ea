/// \file QvAFade.h
/// \brief QvAFade, colour fade.
#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "player/QvMCastList.h"
#include "toolbox/tbRGBColor.h"

/// Colour fade: blends every colour of the palette area from the source
/// table's colour toward one target colour in a fixed number of frames:
/// frame 0 shows the source colours, the last frame (Count() - 1) the target,
/// and the frames between a straight-line blend of each component, computed
/// on the 16-bit scale (c * 257) with the fraction frame / (Count() - 1) and
/// truncated (from 255 toward 0 in 30 frames: 255, 246, 237, 228, ...).
/// Entries at and above the area's FlagNum() are not written.
///
/// A new fade has 30 frames and a black target; it computes as soon as an
/// area is registered. Kind code QvAColor::kFade. Also the list of the cast
/// members that hold copies of it (QvMCastList).
class QvAFade : public QvAColor, public QvMCastList {
 public:
  /// A fade of 30 frames (range 0 to 29) toward black, without area.
  QvAFade();
  QvAFade(const QvAFade&) = delete;
  QvAFade& operator=(const QvAFade&) = delete;
  /// Detaches the cast members (DelFromMCast()).
  ~QvAFade() override;

  /// Registers the palette area (see QvAColor::RegArea()) and passes the
  /// change on to the cast members (UpdateMCast()).
  ///
  /// \param pal The area, read only and still the caller's; null registers
  ///        an empty area.
  /// \return 1 on success; 0 when the area object cannot be allocated,
  ///         nothing changed.
  char RegArea(QvPal* pal) override;
  /// Sets the target colour and passes the change on (UpdateMCast()).
  ///
  /// \param c The colour, 8-bit components copied unchanged.
  void RegColor(const tbRGBColor& c);
  /// Sets the target colour from 16-bit components and passes the change
  /// on (UpdateMCast()).
  ///
  /// \param red,green,blue 0 to 65535 each; the component becomes v / 257,
  ///        truncated (65535 gives 255, 32896 gives 128).
  void RegColor(std::uint16_t red, std::uint16_t green, std::uint16_t blue);
  /// Sets the number of frames, sets the range to 0 to Count() - 1 and
  /// passes the change on (UpdateMCast()).
  ///
  /// \param n The number of frames; anything below 2 gives 2.
  void SetCount(std::int16_t n);
  /// \return The number of frames (30 unless set with SetCount()).
  std::int16_t Count() override;
  /// Computes the table of the current frame: a running clock is sampled
  /// first (as Cur() does), then CTable(cur, src) is computed.
  ///
  /// \param src The source table (read only, the caller's).
  /// \return As CTable(std::int16_t, tbColorTable*).
  tbColorTable* CTable(tbColorTable* src) override;
  /// Computes the blend of a frame (see the class description); entries outside the area keep the
  /// source colour.
  ///
  /// \param frame The frame, 0 to Count() - 1.
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

  /// Copies the settings into another fade through its own operations: mode,
  /// speed, area, target colour and number of frames. Clock position, run
  /// state, error bits and cast members are not copied.
  ///
  /// \param other The animation to set, the caller's; null or this
  ///        animation itself does nothing.
  void Dup(QvAFade* other);

  /// Passes a change on: every cast member in this animation's list
  /// receives a fresh copy (Dup()) in place of its old one, keeping its name
  /// and start time (QvMCast::RegAColor() with kind QvAColor::kFade). Each
  /// setting operation of the animation ends with this call; hosts call it
  /// themselves only after changing the clock (SetMode(), SetSpeed()) to renew the
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

  /// The target colour.
  tbRGBColor color;
  /// The number of frames (Count()), at least 2.
  std::int16_t count;
  /// `count` - 1: the frame of the target colour and the divisor of the
  /// blend fraction.
  std::int16_t lastFrame;
};
