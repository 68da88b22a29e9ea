/// \file QvASwitch.h
/// \brief QvASwitch, colour-table switching.
#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "player/QvMCastList.h"

class tbColorTable;

/// Colour-table switching: an ordered sequence of whole colour tables, one
/// per frame; frame n gives the palette area the colours of the n-th table,
/// and every other entry below the area's FlagNum() the source colour.
/// Entries at and above FlagNum() are not written; area indices above a
/// table's CTSize() take the source colour. The switch keeps its own copies
/// of the tables.
///
/// The animation has no frames until a table is registered; with n tables
/// its frames are 0 to n - 1. Kind code QvAColor::kSwitch. Also the list of
/// the cast members that hold copies of it (QvMCastList).
class QvASwitch : public QvAColor, public QvMCastList {
 public:
  /// A switch without tables and without frames (range 0 to -1), without area.
  QvASwitch();
  QvASwitch(const QvASwitch&) = delete;
  QvASwitch& operator=(const QvASwitch&) = delete;
  /// Detaches the cast members (DelFromMCast()) and frees the tables.
  ~QvASwitch() override;

  /// Registers the palette area (see QvAColor::RegArea()) and passes the
  /// change on to the cast members (UpdateMCast()).
  ///
  /// \param pal The area, read only and still the caller's; null registers
  ///        an empty area.
  /// \return 1 on success; 0 when the area object cannot be allocated,
  ///         nothing changed.
  char RegArea(QvPal* pal) override;
  /// Inserts a copy of a table; the tables from that position on move one
  /// up. Sets the range to 0 to Count() - 1 and passes the change on
  /// (UpdateMCast()).
  ///
  /// \param index Position of the new table, 0 to Count(); a negative value
  ///        or one beyond Count() appends.
  /// \param table The table, read only and still the caller's; later
  ///        changes to it do not reach the switch.
  /// \return 1 on success; 0 when `table` is null, there are 32767 tables
  ///         already, or the new array of tables cannot be allocated (one
  ///         attempt), nothing changed.
  char RegCTable(std::int16_t index, tbColorTable* table);
  /// Deletes one table (the later ones move one down) or all of them. Sets
  /// the range to 0 to Count() - 1 and passes the change on (UpdateMCast()).
  ///
  /// \param index Position of the table to delete; negative deletes every
  ///        table (also when there is none).
  /// \return 1 on success; 0 when `index` is not below Count(), or when the
  ///         new array cannot be allocated (one attempt when one table of
  ///         several is deleted), nothing changed.
  char DelCTable(std::int16_t index);
  /// \return The number of frames: the number of registered tables.
  std::int16_t Count() override;
  /// Computes the table of the current frame: a running clock is sampled
  /// first (as Cur() does), then CTable(cur, src) is computed.
  ///
  /// \param src The source table (read only, the caller's).
  /// \return As CTable(std::int16_t, tbColorTable*).
  tbColorTable* CTable(tbColorTable* src) override;
  /// Computes the switch of a frame: area entries take the entries of table `frame`, the others the
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

  /// Copies the settings into another switch through its own operations:
  /// mode, speed, area, and copies of all tables in order (its former tables
  /// are deleted). Clock position, run state, error bits and cast members are
  /// not copied.
  ///
  /// \param other The animation to set, the caller's; null or this
  ///        animation itself does nothing.
  void Dup(QvASwitch* other);

  /// Passes a change on: every cast member in this animation's list
  /// receives a fresh copy (Dup()) in place of its old one, keeping its name
  /// and start time (QvMCast::RegAColor() with kind QvAColor::kSwitch). Each
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

  /// The registered tables, an array of `count` tables; owned, null when
  /// there is none.
  tbColorTable* tables;
  /// The number of tables (Count()).
  std::int16_t count;
};
