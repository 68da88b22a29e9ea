#pragma once

#include <cstdint>

#include "acolor/QvAColor.h"
#include "player/QvMCastList.h"
#include "toolbox/tbRGBColor.h"

// Colour fade: blends every colour of the area from the source colour toward
// one target colour, component by component, from frame 0 (the source) to the
// last frame (the target).
class QvAFade : public QvAColor, public QvMCastList {
 public:
  QvAFade();
  QvAFade(const QvAFade&) = delete;
  QvAFade& operator=(const QvAFade&) = delete;
  ~QvAFade() override;

  char RegArea(QvPal* pal) override;
  // Sets the target colour from 8-bit components.
  void RegColor(const tbRGBColor& c);
  // Sets the target colour from 16-bit components (v / 257 each).
  void RegColor(std::uint16_t red, std::uint16_t green, std::uint16_t blue);
  // Sets the number of frames; anything below 2 gives 2.
  void SetCount(std::int16_t n);
  std::int16_t Count() override;
  tbColorTable* CTable(tbColorTable* src) override;
  tbColorTable* CTable(std::int16_t frame, tbColorTable* src) override;
  using QvAColor::CTable;
  char Load(int file) override;
  char Save(int file) override;
  using QvAColor::Load;
  using QvAColor::Save;
  char Load(int file, std::uint32_t offset);

  // Copies mode, speed, area, target colour and count into other.
  void Dup(QvAFade* other);

  void UpdateMCast();
  void DelFromMCast();

 protected:
  using QvAColor::SetEnd;
  using QvAColor::SetTop;

  void localUpdateMCast(QvMCastList* list);

  tbRGBColor color;
  std::int16_t count;
  std::int16_t lastFrame;
};
