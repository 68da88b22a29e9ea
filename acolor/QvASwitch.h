#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "player/QvMCastList.h"

class tbColorTable;

// Colour-table switching: an ordered sequence of whole colour tables, one per
// frame; frame n gives the area the colours of the n-th table. The switch
// keeps its own copies of the tables.
class QvASwitch : public QvAColor, public QvMCastList {
 public:
  QvASwitch();
  QvASwitch(const QvASwitch&) = delete;
  QvASwitch& operator=(const QvASwitch&) = delete;
  ~QvASwitch() override;

  char RegArea(QvPal* pal) override;
  // Inserts a copy of table at position index (appends when index is
  // negative or beyond the end). 0 when memory is short or table is null.
  char RegCTable(std::int16_t index, tbColorTable* table);
  // Deletes the table at position index, or every table when index is
  // negative. 0 when index is not below Count() or memory is short.
  char DelCTable(std::int16_t index);
  std::int16_t Count() override;
  tbColorTable* CTable(tbColorTable* src) override;
  tbColorTable* CTable(std::int16_t frame, tbColorTable* src) override;
  using QvAColor::CTable;
  char Load(int file) override;
  char Save(int file) override;
  using QvAColor::Load;
  using QvAColor::Save;
  char Load(int file, std::uint32_t offset);

  // Copies mode, speed, area and every table, in order, into other.
  void Dup(QvASwitch* other);

  void UpdateMCast();
  void DelFromMCast();

 protected:
  using QvAColor::SetEnd;
  using QvAColor::SetTop;

  void localUpdateMCast(QvMCastList* list);

  tbColorTable* tables;
  std::int16_t count;
};
