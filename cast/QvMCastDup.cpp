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
// Duplication, backup and restore

std::int16_t QvMCast::Dup(std::int16_t srcId, std::int32_t start, unsigned char* name, QvMCast* dst,
                          std::int16_t dstId) {
  QvMCastInfo* src = localSearch(srcId);
  if (!src || !dst) return -1;
  if (dstId < 0) {
    // Creating the member in this store would replace the source when the
    // source holds the id the counter hands out next: refused, nothing made.
    if (dst == this && localSearch(newID) == src) return -1;
    dstId = dst->New(name);
    if (dstId < 0) return -1;
  }
  dst->Lock(dstId);
  if (dst->Start(dstId) == -1) dst->SetStart(dstId, start);
  if (dst->End(dstId) == -1) dst->SetEnd(dstId, Add32(start, Sub32(src->end, src->start)));
  for (char kind = 0; kind < 4; ++kind) {
    if (src->aColor[static_cast<int>(kind)]) {
      dst->RegAColor(dstId, src->aColor[static_cast<int>(kind)], kind, start, name,
                     src->lists[static_cast<int>(kind)]);
    }
  }
  if (src->aFrame) dst->RegAFrame(dstId, src->aFrame, start, name, src->lists[kFrameList]);
  if (src->orgCTable && src->aFrame) {
    dst->RegOrgCTable(dstId, src->orgCTable, src->orgPal, name);
  }
  if (src->dft) {
    dst->RegDft(dstId, src->dftParam, src->dft,
                Low16(static_cast<std::uint32_t>(src->dftLast) + 1u), src->dftFlag, name,
                src->lists[kDftList]);
  }
  if (src->anc) {
    dst->RegAnc(dstId, src->anc, Low16(static_cast<std::uint32_t>(src->ancLast) + 1u), src->ancType,
                name);
    dst->SetAncOffset(dstId, src->ancOffset);
    dst->SetAncStep(dstId, src->ancStep);
  }
  if (src->scroll != 0) {
    const unsigned char s = static_cast<unsigned char>(src->scroll);
    dst->RegScroll(dstId, src->scroll, name);
    if (s & (kScrollLeft | kScrollRight)) dst->SetScrStepH(dstId, src->scrStepH);
    if (s & (kScrollUp | kScrollDown)) dst->SetScrStepV(dstId, src->scrStepV);
  }
  dst->Unlock();
  return dstId;
}

char QvMCast::Backup(std::int16_t id, QvMCast* dst) {
  if (!dst) return 0;
  const std::int32_t s = Start(id);
  if (s == -1) return 0;
  unsigned char** h = nullptr;
  if (!GetName(id, &h)) return 0;
  if (!dst->New(id, nullptr) || Dup(id, s, h ? *h : nullptr, dst, id) == -1) {
    QvFreeString(h);
    return 0;
  }
  QvFreeString(h);
  return 1;
}

char QvMCast::Restore(QvMCast* src) {
  if (!src) return 0;
  const std::int16_t count = src->Count();
  for (std::int16_t i = 0; i < count; ++i) {
    const std::int16_t id = src->Index2ID(i);
    const std::int32_t s = src->Start(id);
    if (s == -1) return 0;
    unsigned char** h = nullptr;
    if (!src->GetName(id, &h)) return 0;
    if (!New(id, nullptr) || src->Dup(id, s, h ? *h : nullptr, this, id) == -1) {
      QvFreeString(h);
      return 0;
    }
    QvFreeString(h);
  }
  return 1;
}

char QvMCast::Load(int) { return 0; }
char QvMCast::Load(char*) { return 0; }
char QvMCast::Save(int) { return 0; }
char QvMCast::Save(int, std::int16_t) { return 0; }
char QvMCast::Save(char*, std::uint32_t, std::uint32_t) { return 0; }
char QvMCast::SaveEnd(int) { return 0; }
char QvMCast::SaveTerm(int) { return 0; }
char QvMCast::Save(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadAnc(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadDft(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadOrgCTable(int, QvMCastInfo*) { return 0; }
char QvMCast::LoadScroll(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveAnc(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveDft(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveOrgCTable(int, QvMCastInfo*) { return 0; }
char QvMCast::SaveScroll(int, QvMCastInfo*) { return 0; }
