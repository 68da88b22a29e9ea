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
// Attachments

QvMCastInfo* QvMCast::localRegTarget(std::int16_t* id, unsigned char* name) {
  if (*id < 0) {
    const std::int16_t created = New(name);
    if (created < 0) return nullptr;
    *id = created;
  }
  return localSearch(*id);
}

std::int16_t QvMCast::RegAFrame(std::int16_t id, QvAFrame* anim, std::int32_t startTime,
                                unsigned char* name, QvMCastList* list) {
  // The copy is made before the member is chosen and its old copy destroyed:
  // anim may be a member's own copy, and a member made for a negative id
  // replaces any member that had that id.
  std::unique_ptr<QvAFrame> copy;
  if (anim) {
    copy.reset(QvNew<QvAFrame>());
    if (copy) anim->Dup(copy.get());
  }
  QvMCastList* animList = anim;
  QvMCastInfo* info = localRegTarget(&id, name);
  if (!info) return -1;
  delete info->aFrame;
  info->aFrame = copy.release();
  if (info->aFrame && info->start == -1) {
    info->start = startTime;
    info->end = Sub32(Add32(startTime, info->aFrame->CountMFrame()), 1);
  }
  localDeleteIcon(info);
  localNewOrgGWorld(info);
  SetName(info, name);
  SetList(this, info, kFrameList, list, animList);
  return id;
}

std::int16_t QvMCast::RegOrgCTable(std::int16_t id, tbColorTable* table, QvPal* pal,
                                   unsigned char* name) {
  // The copies are made before the member is chosen and its old table and
  // area destroyed: they may be a member's own, and a member made for a
  // negative id replaces any member that had that id.
  std::unique_ptr<tbColorTable> newTable;
  bool failed = false;
  if (table) {
    newTable.reset(QvNew<tbColorTable>(static_cast<std::int16_t>(72)));
    if (newTable) {
      for (std::int16_t i = 0; i <= 255; ++i) newTable->SetCTTable(i, table->CTTable(i));
    } else {
      failed = true;
    }
  }
  std::unique_ptr<QvPal> newPal;
  if (pal && !failed) {
    newPal.reset(QvNew<QvPal>());
    if (newPal) {
      newPal->GetFlags(pal);
    } else {
      failed = true;
    }
  }
  QvMCastInfo* info = localRegTarget(&id, nullptr);
  if (!info) return -1;
  if (failed) {
    // The old table and area are gone; a table copied before the area
    // failed stays.
    DelOrgCTable(info);
    info->orgCTable = newTable.release();
    return -1;
  }
  delete info->orgCTable;
  delete info->orgPal;
  info->orgCTable = newTable.release();
  info->orgPal = newPal.release();
  if (info->orgPal) {
    info->fillIndex = 0;
    for (int i = 0; i <= 255; ++i) {
      if (info->orgPal->Flag(static_cast<unsigned char>(i)) == 0) {
        info->fillIndex = static_cast<std::int16_t>(i);
        break;
      }
    }
  }
  localDeleteIcon(info);
  localNewOrgGWorld(info);
  SetName(info, name);
  return id;
}

void QvMCast::localNewOrgGWorld(QvMCastInfo* info) {
  if (!info->aFrame || !info->orgCTable) return;
  std::int16_t w = 0, h = 0, x = 0, y = 0;
  // An animation without frames has no area: the world made earlier stays.
  if (!info->aFrame->GetArea(&w, &h, &x, &y)) return;
  tbRect bounds;
  qv::SetRect(&bounds, 0, 0, w, h);
  localDisposeOrgGWorld(info);
  ForgetColours(info);
  qv::tb.NewGWorld(&info->orgGWorld, 8, &bounds, info->orgCTable);
}

void QvMCast::localSettleOrgGWorld(QvMCastInfo* info) {
  if (info->aFrame) info->aFrame->localSettleWorld();
}

void QvMCast::localDisposeOrgGWorld(QvMCastInfo* info) {
  if (!info->orgGWorld) return;
  if (info->aFrame) info->aFrame->localForgetWorld(info->orgGWorld);
  qv::tb.DisposeGWorld(info->orgGWorld);
  info->orgGWorld = nullptr;
}

std::int16_t QvMCast::RegDft(std::int16_t id, std::int16_t param, QvMCastDft* entries,
                             std::int16_t count, char flag, unsigned char* name,
                             QvMCastList* list) {
  // The copy is made before the member is chosen: the entries may be a
  // member's own, and a member made for a negative id replaces any member
  // that had that id. A count below 1 allocates nothing: the member then has
  // no entries.
  std::unique_ptr<QvMCastDft[]> copy;
  if (entries) {
    copy.reset(QvNewArray<QvMCastDft>(count));
    if (copy) {
      for (std::int16_t i = 0; i < count; ++i) {
        copy[i].pointA = entries[i].pointA;
        copy[i].pointB = entries[i].pointB;
        copy[i].pointC = entries[i].pointC;
        copy[i].flag = entries[i].flag;
      }
    }
  }
  QvMCastInfo* info = localRegTarget(&id, name);
  if (!info) return -1;
  delete[] info->dft;
  info->dft = copy.release();
  info->dftLast = info->dft ? static_cast<std::int16_t>(count - 1) : 0;
  info->dftParam = param;
  info->dftFlag = flag;
  localDeleteIcon(info);
  SetName(info, name);
  SetList(this, info, kDftList, list, nullptr);
  return id;
}

std::int16_t QvMCast::RegScroll(std::int16_t id, char dirs, unsigned char* name) {
  QvMCastInfo* info = localRegTarget(&id, name);
  if (!info) return -1;
  const unsigned char d = static_cast<unsigned char>(dirs);
  unsigned char s = static_cast<unsigned char>(info->scroll);
  if (d == 0) {
    s = 0;
  } else {
    if (d & kScrollLeft) s &= static_cast<unsigned char>(~kScrollRight);
    if (d & kScrollRight) s &= static_cast<unsigned char>(~kScrollLeft);
    if (d & kScrollUp) s &= static_cast<unsigned char>(~kScrollDown);
    if (d & kScrollDown) s &= static_cast<unsigned char>(~kScrollUp);
    s |= d;
  }
  info->scroll = static_cast<char>(s);
  localDeleteIcon(info);
  SetName(info, name);
  return id;
}

char QvMCast::DelAFrame(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelAFrame(info);
  return 1;
}

void QvMCast::DelAFrame(QvMCastInfo* info) {
  delete info->aFrame;
  info->aFrame = nullptr;
  ResetActFlag(info);
  ResetShowFlag(info);
  localDeleteIcon(info);
  if (info->lists[kFrameList]) {
    info->lists[kFrameList]->Del(this, info->id);
    info->lists[kFrameList] = nullptr;
  }
}

char QvMCast::DelOrgCTable(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelOrgCTable(info);
  return 1;
}

void QvMCast::DelOrgCTable(QvMCastInfo* info) {
  delete info->orgCTable;
  info->orgCTable = nullptr;
  delete info->orgPal;
  info->orgPal = nullptr;
  localDeleteIcon(info);
}

char QvMCast::DelDft(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelDft(info);
  return 1;
}

void QvMCast::DelDft(QvMCastInfo* info) {
  delete[] info->dft;
  info->dft = nullptr;
  info->dftLast = 0;
  ResetAnc(info);
  SetAncType(info, 1);
  ResetActFlag(info);
  ResetShowFlag(info);
  localDeleteIcon(info);
  if (info->lists[kDftList]) {
    info->lists[kDftList]->Del(this, info->id);
    info->lists[kDftList] = nullptr;
  }
}

char QvMCast::DelScroll(std::int16_t id, char dirs) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelScroll(info, dirs);
  return 1;
}

void QvMCast::DelScroll(QvMCastInfo* info, char dirs) {
  const unsigned char d = static_cast<unsigned char>(dirs);
  if (d == 0) {
    info->scroll = 0;
  } else {
    const unsigned char clear = d & (kScrollLeft | kScrollRight | kScrollUp | kScrollDown);
    info->scroll = static_cast<char>(static_cast<unsigned char>(info->scroll) &
                                     static_cast<unsigned char>(~clear));
  }
  ResetActFlag(info);
  ResetShowFlag(info);
  localDeleteIcon(info);
}

QvAFrame* QvMCast::AFrame(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? AFrame(info) : nullptr;
}

QvAFrame* QvMCast::AFrame(QvMCastInfo* info) { return info->aFrame; }

char QvMCast::IsDft(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsDft(info) : 0;
}

char QvMCast::IsDft(QvMCastInfo* info) { return info->dft ? 1 : 0; }

char QvMCast::IsAnc(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsAnc(info) : 0;
}

char QvMCast::IsAnc(QvMCastInfo* info) { return info->anc ? 1 : 0; }

char QvMCast::IsScroll(std::int16_t id, char* dirs) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsScroll(info, dirs) : 0;
}

char QvMCast::IsScroll(QvMCastInfo* info, char* dirs) {
  if (info->scroll == 0) return 0;
  if (dirs) *dirs = info->scroll;
  return 1;
}

char QvMCast::IsScrollLeft(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsScrollLeft(info) : 0;
}

char QvMCast::IsScrollLeft(QvMCastInfo* info) {
  return (static_cast<unsigned char>(info->scroll) & kScrollLeft) ? 1 : 0;
}

char QvMCast::IsScrollRight(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsScrollRight(info) : 0;
}

char QvMCast::IsScrollRight(QvMCastInfo* info) {
  return (static_cast<unsigned char>(info->scroll) & kScrollRight) ? 1 : 0;
}

char QvMCast::IsScrollUp(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsScrollUp(info) : 0;
}

char QvMCast::IsScrollUp(QvMCastInfo* info) {
  return (static_cast<unsigned char>(info->scroll) & kScrollUp) ? 1 : 0;
}

char QvMCast::IsScrollDown(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? IsScrollDown(info) : 0;
}

char QvMCast::IsScrollDown(QvMCastInfo* info) {
  return (static_cast<unsigned char>(info->scroll) & kScrollDown) ? 1 : 0;
}

char QvMCast::GetDft(std::int16_t id, std::int16_t* param, QvMCastDft** entries,
                     std::int16_t* count, char* flag) {
  QvMCastInfo* info = localSearch(id);
  return info ? GetDft(info, param, entries, count, flag) : 0;
}

char QvMCast::GetDft(QvMCastInfo* info, std::int16_t* param, QvMCastDft** entries,
                     std::int16_t* count, char* flag) {
  if (!info->dft) return 0;
  if (param) *param = info->dftParam;
  if (entries) *entries = info->dft;
  if (count) *count = Low16(static_cast<std::uint32_t>(info->dftLast) + 1u);
  if (flag) *flag = info->dftFlag;
  return 1;
}
