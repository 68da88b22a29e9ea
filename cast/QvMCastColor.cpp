#include "cast/QvMCast.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "acolor/QvAColor.h"
#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCastLocal.h"
#include "player/QvMCastList.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbToolBox.h"

using namespace qvcast;

// ---------------------------------------------------------------------------
// Colour animation copies

std::int16_t QvMCast::RegAColor(std::int16_t id, QvAColor* anim, char kind, std::int32_t startTime,
                                unsigned char* name, QvMCastList* list) {
  if (kind < 0 || kind > 3) {
    // An unknown kind touches nothing: no member is created, the id of an
    // existing member is given back.
    if (id < 0) return -1;
    return localSearch(id) ? id : -1;
  }
  const int k = kind;
  // The copy is made before the member is chosen and its old copy destroyed:
  // anim may be a member's own copy, and a member made for a negative id
  // replaces any member that had that id. An animation of another kind gives
  // none.
  QvAColor* copy = nullptr;
  if (anim) {
    switch (k) {
      case 0:
        copy = CopyColor<QvACycle>(anim);
        break;
      case 1:
        copy = CopyColor<QvAFlash>(anim);
        break;
      case 2:
        copy = CopyColor<QvASwitch>(anim);
        break;
      default:
        copy = CopyColor<QvAFade>(anim);
        break;
    }
  }
  std::unique_ptr<QvAColor> owned(copy);
  QvMCastList* animList = anim ? dynamic_cast<QvMCastList*>(anim) : nullptr;
  QvMCastInfo* info = localRegTarget(&id, name);
  if (!info) return -1;
  delete info->aColor[k];
  info->aColor[k] = owned.release();
  if (copy && info->start == -1) {
    info->start = startTime;
    info->end = Sub32(Add32(startTime, copy->Count()), 1);
  }
  localDeleteIcon(info);
  SetName(info, name);
  SetList(this, info, k, list, animList);
  return id;
}

char QvMCast::DelAColor(std::int16_t id, char kind) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelAColor(info, kind);
  return 1;
}

void QvMCast::DelAColor(QvMCastInfo* info, char kind) {
  // An unknown kind touches nothing.
  if (kind < 0 || kind > 3) return;
  const int k = kind;
  delete info->aColor[k];
  info->aColor[k] = nullptr;
  ResetActFlag(info);
  ResetShowFlag(info);
  localDeleteIcon(info);
  if (info->lists[k]) {
    info->lists[k]->Del(this, info->id);
    info->lists[k] = nullptr;
  }
}

QvAColor* QvMCast::ACycle(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? ACycle(info) : nullptr;
}

QvAColor* QvMCast::ACycle(QvMCastInfo* info) { return info->aColor[0]; }

QvAColor* QvMCast::AFlash(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? AFlash(info) : nullptr;
}

QvAColor* QvMCast::AFlash(QvMCastInfo* info) { return info->aColor[1]; }

QvAColor* QvMCast::ASwitch(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? ASwitch(info) : nullptr;
}

QvAColor* QvMCast::ASwitch(QvMCastInfo* info) { return info->aColor[2]; }

QvAColor* QvMCast::AFade(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? AFade(info) : nullptr;
}

QvAColor* QvMCast::AFade(QvMCastInfo* info) { return info->aColor[3]; }

char QvMCast::IsAColor(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsAColor(info) : 0;
}

char QvMCast::IsAColor(QvMCastInfo* info) {
  for (QvAColor* anim : info->aColor) {
    if (anim) return 1;
  }
  return 0;
}
