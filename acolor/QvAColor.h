/// \file QvAColor.h
/// \brief QvAColor, the base of the colour animations, and the colour
/// animation kind codes.
#pragma once

#include <cstdint>

#include "player/QvMPlayer.h"

class QvMCastList;
class QvPal;
class tbColorTable;
class tbRGBColor;

/// Base of the colour animations: a colour animation changes the colours of
/// a palette area over time. Given a frame number and a source colour table,
/// each kind computes a table in which the entries of its area are changed
/// and every other entry is the source's:
/// - QvACycle turns the colours of each run of the area (kind kCycle),
/// - QvAFlash paints the area red, green, blue (kind kFlash),
/// - QvASwitch gives the area the colours of one of its tables (kind
///   kSwitch),
/// - QvAFade blends the area toward one colour (kind kFade).
///
/// The base holds what they share: the playback clock (QvMPlayer) that gives
/// the current frame, the output table every computation fills, the
/// animation's own copy of its palette area, and the error bits.
///
/// Typical use: make a kind, register its area with RegArea() and its own
/// settings, choose a mode and speed, then either compute tables yourself
/// (CTable(frame, src)) or attach it to a cast member with
/// QvMCast::RegAColor(id, anim, kind, start, name, anim). A member draws with
/// a private copy of the animation made by Dup(); each kind's setting
/// operations pass every change on to the members that hold copies (the
/// kind's UpdateMCast()), and destroying the animation leaves the members
/// their last copies. QvMLayer::GetCTable() gives the colour table that goes
/// with a drawn moment.
///
/// Frames of a colour animation are clock frames (see QvMPlayer); the range
/// of the clock is always 0 to Count() - 1, set by the kind itself.
/// Computations allocate nothing; only registering does.
class QvAColor : public QvMPlayer {
 public:
  /// Error bit of Error(): the output table could not be made at
  /// construction. Never clears; such an animation computes no table.
  static constexpr unsigned char noCTableError = 0x01;
  /// Error bit of Error(): no palette area is registered (set from
  /// construction until the first successful RegArea()).
  static constexpr unsigned char noAreaError = 0x10;

  /// Kind code of a colour cycling animation (QvACycle), as passed to
  /// QvMCast::RegAColor() and QvMCast::DelAColor().
  static constexpr char kCycle = 0;
  /// Kind code of a colour flash animation (QvAFlash).
  static constexpr char kFlash = 1;
  /// Kind code of a colour-table switching animation (QvASwitch).
  static constexpr char kSwitch = 2;
  /// Kind code of a colour fade animation (QvAFade).
  static constexpr char kFade = 3;

  /// A clock as QvMPlayer() makes it, an output table of 256 black entries,
  /// no area: Error() is noAreaError, or noAreaError | noCTableError when
  /// the output table could not be allocated (one attempt).
  QvAColor();
  QvAColor(const QvAColor&) = delete;
  QvAColor& operator=(const QvAColor&) = delete;
  /// Frees the output table and the area.
  ~QvAColor() override;

  /// Registers the palette area: copies the flags of `pal` into the
  /// animation's own area, made on first use. Later changes to `pal` do not
  /// reach the animation; a second call copies the new flags again. The
  /// kinds override it to rebuild their state and pass the change on to
  /// their cast members.
  ///
  /// \param pal The area, read only and still the caller's; null registers
  ///        an empty area of 256 indices.
  /// \return 1 on success (noAreaError cleared); 0 when the area object
  ///         cannot be allocated (one attempt on the first call only), with
  ///         noAreaError set and nothing else changed.
  virtual char RegArea(QvPal* pal);
  /// \return The number of frames of the animation; 0 in the base.
  virtual std::int16_t Count();
  /// Computes the table of the current frame: a running clock is sampled
  /// first (as Cur() does), then CTable(cur, src) is computed. The base
  /// computes nothing.
  ///
  /// \param src The source table (read only, the caller's).
  /// \return As CTable(std::int16_t, tbColorTable*); the base returns the
  ///         output table unchanged.
  virtual tbColorTable* CTable(tbColorTable* src);
  /// Computes the table of a frame: the output table receives the source's
  /// entries with the animation's area changed as its kind says. The base
  /// computes nothing.
  ///
  /// \param frame The frame, 0 to Count() - 1.
  /// \param src The source table (read only, the caller's).
  /// \return The output table (owned by the animation: read it until the
  ///         next computation or the animation's destruction, never delete
  ///         it); null, with the output table unchanged, when an error bit is
  ///         set, `frame` is negative or not below Count(), or `src` is
  ///         null. The base returns the output table unchanged.
  virtual tbColorTable* CTable(std::int16_t frame, tbColorTable* src);
  /// Not supported: the library reads no files.
  ///
  /// \param file Ignored.
  /// \return Always 0.
  virtual char Load(int file);
  /// Not supported: the library writes no files.
  ///
  /// \param file Ignored.
  /// \return Always 0.
  virtual char Save(int file);

  /// \return The output table, holding the result of the last computation;
  ///         owned by the animation, null when it could not be made.
  tbColorTable* CTable();
  /// Copies a colour into one entry of the output table (it is overwritten
  /// by the next computation).
  ///
  /// \param index Entry index; only its low 8 bits are used.
  /// \param color The colour, read only; null does nothing.
  void SetColor(std::int16_t index, tbRGBColor* color);
  /// \return The animation's own copy of its area, owned by the animation
  ///         (do not delete it; change it only through RegArea()); null
  ///         before the first successful RegArea().
  QvPal* Area();
  /// \param index A palette index.
  /// \return 1 when the index is in the area; 0 when it is not or there is
  ///         no area.
  char AreaFlag(unsigned char index);
  /// \return How many indices the area covers (its QvPal::FlagNum()); 0
  ///         when there is no area.
  std::uint32_t AreaNum();
  /// \return The error bits: 0 when ready, otherwise noCTableError and/or
  ///         noAreaError.
  char Error();
  /// Not supported: the library reads no files.
  ///
  /// \param path Ignored.
  /// \return Always 0.
  char Load(char* path);
  /// Not supported: the library writes no files.
  ///
  /// \param path Ignored.
  /// \param offset Ignored.
  /// \param size Ignored.
  /// \return Always 0.
  char Save(char* path, std::uint32_t offset, std::uint32_t size);

 protected:
  /// Sets an error bit unless it is set already.
  ///
  /// \param bit One of the error bits.
  void localAddError(char bit);
  /// Clears an error bit when it is set.
  ///
  /// \param bit One of the error bits.
  void localSubError(char bit);
  /// \return The number of palette indices a frame computation visits: the
  ///         area's FlagNum() kept within 0 to 256 (0 without an area).
  std::int16_t localFlagNum();
  /// Hands every member named in a list a fresh copy of this animation
  /// through QvMCast::RegAColor(), keeping each member's name and start
  /// time.
  ///
  /// \param own The list of members to visit (the animation's own).
  /// \param kind The kind code (kCycle, kFlash, kSwitch or kFade).
  /// \param list Passed to the cast store with each registration: the
  ///        animation's own list to keep the members attached, null to give
  ///        them a last, detached copy.
  void localRegToMCast(QvMCastList* own, char kind, QvMCastList* list);

  /// The output table, owned; null when making it failed.
  tbColorTable* cTable;
  /// The animation's own copy of its palette area, owned; null before the
  /// first successful RegArea().
  QvPal* area;
  /// The error bits; 0 when ready.
  unsigned char errorFlags;

  /// Counts the changes of the animation's settings and output table (every
  /// change passed on, area, SetColor, every computation), so that a cast
  /// member holding a copy knows when the tables it computed from the copy
  /// may differ.
  std::uint32_t changeCount = 0;
  friend class QvMCast;
};
