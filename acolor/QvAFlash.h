/// \file QvAFlash.h
/// \brief QvAFlash, colour flash.
#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "player/QvMCastList.h"

/// Colour flash: paints the whole palette area in one pure colour: red
/// (255, 0, 0) at frame 0, green (0, 255, 0) at frame 1, blue (0, 0, 255) at
/// frame 2, whatever the source colours. It has exactly three frames; played
/// in QvMPlayer::kPlayLoop it flashes red, green, blue, red, ... at the
/// clock's speed. Entries at and above the area's FlagNum() are not written.
/// Kind code QvAColor::kFlash. Also the list of the cast members that hold
/// copies of it (QvMCastList).
class QvAFlash : public QvAColor, public QvMCastList {
 public:
  /// A flash of three frames (range 0 to 2), without area.
  QvAFlash();
  QvAFlash(const QvAFlash&) = delete;
  QvAFlash& operator=(const QvAFlash&) = delete;
  /// Detaches the cast members (DelFromMCast()).
  ~QvAFlash() override;

  /// Registers the palette area (see QvAColor::RegArea()) and passes the
  /// change on to the cast members (UpdateMCast()).
  ///
  /// \param pal The area, read only and still the caller's; null registers
  ///        an empty area.
  /// \return 1 on success; 0 when the area object cannot be allocated,
  ///         nothing changed.
  char RegArea(QvPal* pal) override;
  /// \return The number of frames: always 3.
  std::int16_t Count() override;
  /// Computes the table of the current frame: a running clock is sampled
  /// first (as Cur() does), then CTable(cur, src) is computed.
  ///
  /// \param src The source table (read only, the caller's).
  /// \return As CTable(std::int16_t, tbColorTable*).
  tbColorTable* CTable(tbColorTable* src) override;
  /// Computes the flash of a frame: area entries take the frame's pure colour, the others the
  /// source colour.
  ///
  /// \param frame The frame, 0 to 2.
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

  /// Copies the settings into another flash through its own operations:
  /// mode, speed and area. Clock position, run state, error bits and cast
  /// members are not copied.
  ///
  /// \param other The animation to set, the caller's; null or this
  ///        animation itself does nothing.
  void Dup(QvAFlash* other);

  /// Passes a change on: every cast member in this animation's list
  /// receives a fresh copy (Dup()) in place of its old one, keeping its name
  /// and start time (QvMCast::RegAColor() with kind QvAColor::kFlash). Each
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

  /// The number of frames: 3.
  std::int16_t count;
};
