#include "toolbox/tbColorTable.h"

tbColorTable::tbColorTable() = default;

// The kind is accepted for compatibility; every table starts with 256 black
// entries.
tbColorTable::tbColorTable(std::int16_t /*kind*/) {}

tbColorTable::~tbColorTable() = default;

void tbColorTable::SetCTSize(std::int16_t highest) {
  if (highest < 0) highest = 0;
  if (highest > 255) highest = 255;
  size = highest;
}

bool tbColorTable::operator==(const tbColorTable& o) const {
  if (size != o.size) return false;
  for (int i = 0; i < 256; ++i) {
    if (entries[i] != o.entries[i]) return false;
  }
  return true;
}
