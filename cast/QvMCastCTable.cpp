// The colour table of one member at a moment, laid over a table: the part of
// the movie's colour table that the member's colour animations change.
#include <cstdint>

#include "acolor/QvAColor.h"
#include "cast/QvMCast.h"
#include "toolbox/tbColorTable.h"

char QvMCast::GetCTable(std::int16_t id, std::int32_t time, tbColorTable* inOut) {
  if (inOut == nullptr || !IsAColor(id)) return 0;
  QvAColor* const anims[4] = {ACycle(id), AFlash(id), ASwitch(id), AFade(id)};
  bool inArea[256] = {};
  for (QvAColor* anim : anims) {
    if (anim == nullptr) continue;
    for (int k = 0; k < 256; ++k) {
      if (anim->AreaFlag(static_cast<unsigned char>(k))) inArea[k] = true;
    }
  }
  const tbColorTable* table = CTable(id, time);
  if (table == nullptr) return 0;  // no own colour table, or not on the timeline at time
  for (int k = 0; k < 256; ++k) {
    if (inArea[k]) {
      const auto index = static_cast<std::int16_t>(k);
      inOut->SetCTTable(index, table->CTTable(index));
    }
  }
  return 1;
}
