#pragma once

#include <cstdint>

#include "toolbox/tbRGBColor.h"

// A colour table of 256 entries. CTSize() is the highest entry index in use
// (255 for a new table); it is kept within 0 to 255. Entry indices outside
// 0 to 255 are wrapped to their low 8 bits, so no access leaves the table.
class tbColorTable {
 public:
  tbColorTable();
  explicit tbColorTable(std::int16_t kind);
  tbColorTable(const tbColorTable&) = default;
  tbColorTable& operator=(const tbColorTable&) = default;
  virtual ~tbColorTable();

  std::int16_t CTSize() const { return size; }
  void SetCTSize(std::int16_t highest);
  tbRGBColor* CTTable(std::int16_t i) { return &entries[static_cast<unsigned char>(i)]; }
  const tbRGBColor* CTTable(std::int16_t i) const {
    return &entries[static_cast<unsigned char>(i)];
  }
  void SetCTTable(std::int16_t i, const tbRGBColor* color);

  bool operator==(const tbColorTable& o) const;
  bool operator!=(const tbColorTable& o) const { return !(*this == o); }

 private:
  std::int16_t size = 255;
  tbRGBColor entries[256];
};
