// The colour table of a moment of the movie: the table that goes with the
// pixels DrawPicture draws for that moment.
#include <cstdint>

#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "player/QvMCastList.h"
#include "toolbox/tbColorTable.h"

char QvMLayer::GetCTable(std::int32_t time, const tbColorTable* base, tbColorTable* out) {
  if (base == nullptr || out == nullptr) return 0;
  if (out != base) *out = *base;
  // The members in the order DrawPicture draws them, each laying its colours
  // over those of the members before it.
  for (QvMLayerInfo* layer = head; layer != nullptr; layer = layer->next) {
    QvMCast* cast = nullptr;
    std::int16_t castId = 0;
    for (std::int16_t i = 0; layer->casts->Get(i, &cast, &castId); ++i) {
      if (cast != nullptr) cast->GetCTable(castId, time, out);
      if (i == INT16_MAX) break;
    }
  }
  return 1;
}
