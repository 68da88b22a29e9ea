#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "acolor/QvACycleInfo.h"
#include "player/QvMCastList.h"

// Colour cycling: every maximal run of consecutive palette indices in the
// area is one range; frame n turns the colours of each range n places toward
// the higher indices, fitted into the range by the animation's mode (stop,
// bounce or wrap) through one range clock per range.
class QvACycle : public QvAColor, public QvMCastList {
 public:
  QvACycle();
  QvACycle(const QvACycle&) = delete;
  QvACycle& operator=(const QvACycle&) = delete;
  ~QvACycle() override;

  // Sets the mode of the animation and of every range clock.
  void SetMode(char m) override;
  // Registers the area and rebuilds the ranges from it.
  char RegArea(QvPal* pal) override;
  // 0 before the first successful RegArea, 32767 after it.
  std::int16_t Count() override;
  tbColorTable* CTable(tbColorTable* src) override;
  tbColorTable* CTable(std::int16_t frame, tbColorTable* src) override;
  using QvAColor::CTable;
  char Load(int file) override;
  char Save(int file) override;
  using QvAColor::Load;
  using QvAColor::Save;
  char Load(int file, std::uint32_t offset);

  // Copies mode, speed and area into other; other rebuilds its own ranges.
  void Dup(QvACycle* other);

  // Hands every cast member in the list a fresh copy of this animation.
  void UpdateMCast();
  // Gives every member a last copy, then forgets them all.
  void DelFromMCast();

 protected:
  // The range is derived from the number of frames only.
  using QvAColor::SetEnd;
  using QvAColor::SetTop;

  void localUpdateMCast(QvMCastList* list);
  // Appends one cycling range from palette index top to end.
  char localRegArea(std::int16_t top, std::int16_t end);
  // Deletes every range with its clock.
  void localDelArea();

  QvACycleInfo* head;
  QvACycleInfo* cursor;
  std::int16_t count;
};
