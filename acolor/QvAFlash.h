#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "player/QvMCastList.h"

// Colour flash: paints the whole area pure red at frame 0, pure green at
// frame 1 and pure blue at frame 2.
class QvAFlash : public QvAColor, public QvMCastList {
 public:
  QvAFlash();
  QvAFlash(const QvAFlash&) = delete;
  QvAFlash& operator=(const QvAFlash&) = delete;
  ~QvAFlash() override;

  char RegArea(QvPal* pal) override;
  // Always 3.
  std::int16_t Count() override;
  tbColorTable* CTable(tbColorTable* src) override;
  tbColorTable* CTable(std::int16_t frame, tbColorTable* src) override;
  using QvAColor::CTable;
  char Load(int file) override;
  char Save(int file) override;
  using QvAColor::Load;
  using QvAColor::Save;
  char Load(int file, std::uint32_t offset);

  // Copies mode, speed and area into other.
  void Dup(QvAFlash* other);

  void UpdateMCast();
  void DelFromMCast();

 protected:
  using QvAColor::SetEnd;
  using QvAColor::SetTop;

  void localUpdateMCast(QvMCastList* list);

  std::int16_t count;
};
