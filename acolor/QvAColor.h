#pragma once

#include <cstdint>

#include "player/QvMPlayer.h"

class QvMCastList;
class QvPal;
class tbColorTable;
class tbRGBColor;

// Base of the colour animations: a playback clock that gives the current
// frame, the output colour table every computation fills, the animation's own
// copy of its palette area and the error bits. Each kind computes, for a frame
// and a source table, a table in which the entries of its area are changed and
// every other entry is the source's.
class QvAColor : public QvMPlayer {
 public:
  // Error bits of Error(); 0 means ready.
  static constexpr unsigned char noCTableError = 0x01;  // no output table
  static constexpr unsigned char noAreaError = 0x10;    // no palette area

  QvAColor();
  QvAColor(const QvAColor&) = delete;
  QvAColor& operator=(const QvAColor&) = delete;
  ~QvAColor() override;

  // Copies the flags of pal into the animation's own area (made on first
  // use). A null pal registers an empty area of 256 indices. 0 when the area
  // object cannot be made.
  virtual char RegArea(QvPal* pal);
  // Number of frames; 0 in the base.
  virtual std::int16_t Count();
  // The table of the current frame, and of a given frame. The base computes
  // nothing and returns the output table.
  virtual tbColorTable* CTable(tbColorTable* src);
  virtual tbColorTable* CTable(std::int16_t frame, tbColorTable* src);
  virtual char Load(int file);
  virtual char Save(int file);

  // The output table: the result of the last computation.
  tbColorTable* CTable();
  // Copies color into entry index of the output table.
  void SetColor(std::int16_t index, tbRGBColor* color);
  // The animation's own area; null before the first successful RegArea.
  QvPal* Area();
  // 1 when the palette index is in the area; 0 also when there is no area.
  char AreaFlag(unsigned char index);
  // How many indices the area covers; 0 when there is no area.
  std::uint32_t AreaNum();
  char Error();
  // No persistence: both report failure and do nothing.
  char Load(char* path);
  char Save(char* path, std::uint32_t offset, std::uint32_t size);

 protected:
  void localAddError(char bit);
  void localSubError(char bit);
  // The number of palette indices a frame computation visits: the area's
  // FlagNum() kept within 0 to 256 (0 without an area).
  std::int16_t localFlagNum();
  // Hands every member named in own a fresh copy of this animation (kind
  // code kind), passing list on to the cast store with each registration.
  void localRegToMCast(QvMCastList* own, char kind, QvMCastList* list);

  tbColorTable* cTable;
  QvPal* area;
  unsigned char errorFlags;

  // Counts the changes of the animation's settings and output table (every
  // change passed on, area, SetColor, every computation), so that a cast
  // member holding a copy knows when the tables it computed from the copy
  // may differ.
  std::uint32_t changeCount = 0;
  friend class QvMCast;
};
