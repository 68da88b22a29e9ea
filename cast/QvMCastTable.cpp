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
// Store

QvMCast::QvMCast() : head(nullptr), curInfo(nullptr), newID(0), lockFlag(0), workCTable() {}

QvMCast::~QvMCast() { DelAll(); }

void QvMCast::InbetweenAnc(tbPoint*, std::int16_t*, std::int16_t, tbPoint*, std::int16_t, char) {}

std::int16_t QvMCast::GetNewID() { return newID; }

std::int16_t QvMCast::Count() { return Low16(memberCount); }

std::int16_t QvMCast::ID2Index(std::int16_t id) {
  std::int16_t index = 0;
  for (QvMCastInfo* p = head; p; p = p->next, ++index) {
    if (p->id == id) return index;
  }
  return -1;
}

std::int16_t QvMCast::Index2ID(std::int16_t index) {
  if (index < 0) return -1;
  std::int16_t i = 0;
  for (QvMCastInfo* p = head; p; p = p->next, ++i) {
    if (i == index) return p->id;
  }
  return -1;
}

QvMCastInfo* QvMCast::localSearch(std::int16_t id) {
  if (lockFlag == 1) return curInfo;
  curInfo = localFind(id);
  return curInfo;
}

// ---------------------------------------------------------------------------
// Lookup index

namespace {

// Stores below this many members are searched by walking the list.
constexpr std::uint32_t kIndexFrom = 16;

// Fibonacci hashing of the 16-bit id into count buckets (a power of two):
// the top bits of the id times 2^16 / phi, so that ids that differ in any
// bits spread; from 65,536 buckets on, the id itself.
std::uint32_t BucketOf(std::int16_t id, std::uint32_t count) {
  const std::uint32_t key = static_cast<std::uint16_t>(id);
  if (count >= 65536u) return key;
  const int bits = __builtin_ctz(count);
  return ((key * 40503u) & 0xFFFFu) >> (16 - bits);
}

}  // namespace

QvMCastInfo* QvMCast::localFind(std::int16_t id) const {
  if (!idBuckets) {
    QvMCastInfo* p = head;
    while (p && p->id != id) p = p->next;
    return p;
  }
  // Several records can share an id (made while the store was locked); the
  // first of them in the list is the one made first.
  QvMCastInfo* best = nullptr;
  for (QvMCastInfo* p = idBuckets[BucketOf(id, idBucketCount)]; p; p = Indexed(p)->idNext) {
    if (p->id == id && (!best || Indexed(p)->serial < Indexed(best)->serial)) best = p;
  }
  return best;
}

void QvMCast::localIndexAdd(QvMCastInfo* info) {
  if (!idBuckets) return;
  QvMCastInfo*& bucket = idBuckets[BucketOf(info->id, idBucketCount)];
  Indexed(info)->idNext = bucket;
  bucket = info;
}

void QvMCast::localIndexRemove(QvMCastInfo* info) {
  if (!idBuckets) return;
  QvMCastInfo** link = &idBuckets[BucketOf(info->id, idBucketCount)];
  while (*link && *link != info) link = &Indexed(*link)->idNext;
  if (*link) *link = Indexed(info)->idNext;
  Indexed(info)->idNext = nullptr;
}

void QvMCast::localIndexGrow() {
  if (memberCount < kIndexFrom || memberCount <= idBucketCount) return;
  std::uint32_t count = idBucketCount ? idBucketCount : kIndexFrom;
  while (count < memberCount) count *= 2;
  count *= 2;
  QvMCastInfo** buckets = QvNewArray<QvMCastInfo*>(static_cast<long>(count));
  // No memory: the present table (or the walk) goes on serving lookups.
  if (!buckets) return;
  for (std::uint32_t i = 0; i < count; ++i) buckets[i] = nullptr;
  delete[] idBuckets;
  idBuckets = buckets;
  idBucketCount = count;
  for (QvMCastInfo* p = head; p; p = p->next) localIndexAdd(p);
}

void QvMCast::localIndexClear() {
  delete[] idBuckets;
  idBuckets = nullptr;
  idBucketCount = 0;
}

void QvMCast::Lock(std::int16_t id) {
  Unlock();
  localSearch(id);
  lockFlag = 1;
}

void QvMCast::Unlock() { lockFlag = 0; }

// ---------------------------------------------------------------------------
// Members

char QvMCast::New(std::int16_t id, unsigned char* name) {
  Del(id);
  IndexedInfo* made = QvNew<IndexedInfo>();
  if (!made) return 0;
  made->serial = idSerial++;
  QvMCastInfo* info = made;
  info->id = id;
  info->prev = tail;
  info->next = nullptr;
  localNew(info, name);
  if (tail) {
    tail->next = info;
  } else {
    head = info;
  }
  tail = info;
  ++memberCount;
  localIndexAdd(info);
  localIndexGrow();
  return 1;
}

std::int16_t QvMCast::New(unsigned char* name) {
  std::int16_t id = newID;
  if (!New(id, name)) return -1;
  newID = Low16(static_cast<std::uint32_t>(id) + 1u);
  return id;
}

void QvMCast::localNew(QvMCastInfo* info, unsigned char* name) {
  info->name = name ? qv::tb.NewString(name) : nullptr;
  info->actFlag = 0;
  info->showFlag = 0;
  for (QvAColor*& a : info->aColor) a = nullptr;
  info->aFrame = nullptr;
  info->orgCTable = nullptr;
  info->orgGWorld = nullptr;
  info->orgPal = nullptr;
  info->fillIndex = 0;
  info->dftParam = 0;
  info->dft = nullptr;
  info->dftLast = 0;
  info->dftFlag = 0;
  info->anc = nullptr;
  info->ancLast = 0;
  info->ancOffset = 0;
  info->ancStep = 5.0;
  info->ancType = 3;
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  info->scroll = 0;
  info->scrStepH = 5.0;
  info->scrStepV = 5.0;
  info->iconWidth = 0;
  info->iconHeight = 0;
  info->start = -1;
  info->end = -1;
  for (QvMCastList*& l : info->lists) l = nullptr;
}

void QvMCast::localDeleteIcon(QvMCastInfo* info) {
  // Every registration and removal of an attachment comes here: colour
  // tables computed before are not reused either.
  ForgetColours(info);
  if (info->icon.Pic()) {
    info->icon.Dispose();
    info->iconWidth = 0;
    info->iconHeight = 0;
  }
}

char QvMCast::Empty(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  localEmpty(info);
  return 1;
}

void QvMCast::localEmpty(QvMCastInfo* info) {
  for (char kind = 0; kind < 4; ++kind) DelAColor(info, kind);
  DelAFrame(info);
  DelOrgCTable(info);
  DelDft(info);
  DelAnc(info);
  DelScroll(info, 0);
  localDisposeOrgGWorld(info);
  QvFreeString(info->name);
  info->name = nullptr;
}

char QvMCast::Del(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  localDel(info);
  return 1;
}

void QvMCast::localDel(QvMCastInfo* info) {
  localEmpty(info);
  if (info->prev) {
    info->prev->next = info->next;
  } else {
    head = info->next;
  }
  if (info->next) info->next->prev = info->prev;
  if (tail == info) tail = info->prev;
  --memberCount;
  localIndexRemove(info);
  if (!head) {
    newID = 0;
    localIndexClear();
  }
  // The search result must not outlive its member: deleting the locked
  // member ends the lock.
  if (curInfo == info) {
    curInfo = nullptr;
    lockFlag = 0;
  }
  delete Indexed(info);
}

void QvMCast::DelAll() {
  localIndexClear();
  QvMCastInfo* p = head;
  while (p) {
    QvMCastInfo* next = p->next;
    localEmpty(p);
    if (curInfo == p) {
      curInfo = nullptr;
      lockFlag = 0;
    }
    delete Indexed(p);
    p = next;
  }
  head = nullptr;
  tail = nullptr;
  memberCount = 0;
  newID = 0;
  // No record is left for the search result to refer to.
  curInfo = nullptr;
}

// ---------------------------------------------------------------------------
// Name

char QvMCast::SetName(std::int16_t id, unsigned char* name) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetName(info, name);
  return 1;
}

void QvMCast::SetName(QvMCastInfo* info, unsigned char* name) {
  // The new handle is made before the old one is freed, so that a name may be
  // set from the member's own name text.
  unsigned char** handle = name ? qv::tb.NewString(name) : nullptr;
  QvFreeString(info->name);
  info->name = handle;
}

char QvMCast::GetName(std::int16_t id, unsigned char*** out) {
  if (!out) return 0;
  *out = nullptr;
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (info->name) {
    *out = qv::tb.NewString(*info->name);
    // A name that cannot be copied is reported as a failure.
    if (!*out) return 0;
  }
  return 1;
}

// ---------------------------------------------------------------------------
// Flags

std::uint32_t QvMCast::ActFlag(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? ActFlag(info) : 0;
}

std::uint32_t QvMCast::ActFlag(QvMCastInfo* info) {
  std::uint32_t mask = 0;
  for (int kind = 0; kind < 4; ++kind) {
    if (info->aColor[kind]) mask |= 1u << kind;
  }
  if (info->aFrame) mask |= kMaskFrame;
  if (info->dft || info->anc) mask |= kMaskDftAnc;
  const unsigned char s = static_cast<unsigned char>(info->scroll);
  if (s & kScrollLeft) mask |= kMaskLeft;
  if (s & kScrollRight) mask |= kMaskRight;
  if (s & kScrollUp) mask |= kMaskUp;
  if (s & kScrollDown) mask |= kMaskDown;
  return mask;
}

char QvMCast::SetActFlag(std::int16_t id, std::uint32_t flags) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetActFlag(info, flags);
  return 1;
}

void QvMCast::SetActFlag(QvMCastInfo* info, std::uint32_t flags) {
  info->actFlag = ActFlag(info) & flags;
}

char QvMCast::ResetActFlag(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  ResetActFlag(info);
  return 1;
}

void QvMCast::ResetActFlag(QvMCastInfo* info) { info->actFlag &= ActFlag(info); }

char QvMCast::GetActFlag(std::int16_t id, std::uint32_t* flags) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !flags) return 0;
  *flags = info->actFlag;
  return 1;
}

char QvMCast::SetShowFlag(std::int16_t id, std::uint32_t flags) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetShowFlag(info, flags);
  return 1;
}

void QvMCast::SetShowFlag(QvMCastInfo* info, std::uint32_t flags) {
  info->showFlag = ActFlag(info) & flags;
}

char QvMCast::ResetShowFlag(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  ResetShowFlag(info);
  return 1;
}

void QvMCast::ResetShowFlag(QvMCastInfo* info) { info->showFlag &= ActFlag(info); }

char QvMCast::GetShowFlag(std::int16_t id, std::uint32_t* flags) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !flags) return 0;
  *flags = info->showFlag;
  return 1;
}

// ---------------------------------------------------------------------------
// Time range

std::int32_t QvMCast::Start(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? info->start : -1;
}

std::int32_t QvMCast::End(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? info->end : -1;
}

std::int32_t QvMCast::End() {
  std::int32_t greatest = 0;
  for (QvMCastInfo* p = head; p; p = p->next) {
    if (p->end > greatest) greatest = p->end;
  }
  return greatest;
}

char QvMCast::SetStartEnd(std::int16_t id, std::int32_t start, std::int32_t end) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetStartEnd(info, start, end);
  return 1;
}

void QvMCast::SetStartEnd(QvMCastInfo* info, std::int32_t start, std::int32_t end) {
  const std::int32_t oldLength = Add32(Sub32(info->end, info->start), 1);
  info->start = start;
  info->end = end;
  const std::int32_t newLength = Add32(Sub32(end, start), 1);
  if (newLength == oldLength) return;
  const double ratio =
      newLength == 0 ? 0.0 : static_cast<double>(oldLength) / static_cast<double>(newLength);
  if (info->dft) info->ancStep *= ratio;
  info->scrStepH *= ratio;
  info->scrStepV *= ratio;
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
}

char QvMCast::SetStart(std::int16_t id, std::int32_t start) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetStartEnd(info, start, info->end);
  return 1;
}

char QvMCast::SetEnd(std::int16_t id, std::int32_t end) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (info->start == -1 && info->end == -1) info->start = 0;
  SetStartEnd(info, info->start, end);
  return 1;
}
