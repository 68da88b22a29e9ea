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
#include "player/QvMCastList.h"
#include "toolbox/QvCanvas.h"
#include "toolbox/QvCanvasUtil.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbToolBox.h"

namespace {

// Attachment mask bits.
constexpr std::uint32_t kMaskFrame = 0x010;
constexpr std::uint32_t kMaskDftAnc = 0x020;
constexpr std::uint32_t kMaskLeft = 0x040;
constexpr std::uint32_t kMaskRight = 0x080;
constexpr std::uint32_t kMaskUp = 0x100;
constexpr std::uint32_t kMaskDown = 0x200;

// Scroll direction bits.
constexpr unsigned char kScrollLeft = 1;
constexpr unsigned char kScrollRight = 2;
constexpr unsigned char kScrollUp = 4;
constexpr unsigned char kScrollDown = 8;

// Index of the frame animation's and the Dft entries' reference lists.
constexpr int kFrameList = 4;
constexpr int kDftList = 5;

// The low 16 bits of a value, as a signed 16-bit number.
std::int16_t Low16(std::uint32_t v) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
}

// 32-bit sum and difference taken modulo 2^32.
std::int32_t Add32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
std::int32_t Sub32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// A 16-bit sum of two values taken as 16-bit numbers.
std::int16_t Sum16(std::int32_t a, std::int32_t b) {
  return Low16(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

// Truncates toward zero to a 32-bit integer. A value that has no 32-bit
// representation (NaN, infinities, out of range) gives the integer
// "indefinite" value INT32_MIN, as the processor's own conversion does.
std::int32_t Trunc32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(v);
}

// Elapsed time since start as a double: the 32-bit difference, wrapping.
double Elapsed(std::int32_t time, std::int32_t start) {
  return static_cast<double>(Sub32(time, start));
}

bool InRange(const QvMCastInfo* info, std::int32_t time) {
  return time >= info->start && time <= info->end;
}

// Copies the size and entries 0 to CTSize() of src into dst.
void CopyCTable(tbColorTable* dst, const tbColorTable* src) {
  dst->SetCTSize(src->CTSize());
  for (std::int16_t i = 0; i <= src->CTSize(); ++i) dst->SetCTTable(i, src->CTTable(i));
}

// Records list as the member's back-reference of one attachment and makes the
// member known to it. The list that was recorded before is told to forget the
// member, unless it is the new list or the list of the animation being
// registered (an animation that detaches itself passes a null list while it
// walks its own entries, and empties its list afterwards). When the list
// cannot take the member (no memory for its entry), the member keeps no
// back-reference: the list would never clear it, and the member's later
// removal would reach a list that may be gone. Neither is a member whose id
// is negative entered: a call made for it from the list (an animation passing
// a change on) would take the id as "make a new member" and never reach it,
// so the member would keep a reference to a list that forgets it.
void SetList(QvMCast* store, QvMCastInfo* info, int index, QvMCastList* list,
             QvMCastList* animList) {
  QvMCastList* old = info->lists[index];
  if (old && old != list && old != animList) old->Del(store, info->id);
  info->lists[index] = (list && info->id >= 0 && list->Reg(store, info->id)) ? list : nullptr;
}

// Makes a private copy of a colour animation of the given kind; null when the
// animation is not of that kind or the copy cannot be allocated.
template <class K>
QvAColor* CopyColor(QvAColor* anim) {
  K* src = dynamic_cast<K*>(anim);
  if (!src) return nullptr;
  K* copy = QvNew<K>();
  if (copy) src->Dup(copy);
  return copy;
}

}  // namespace

// ---------------------------------------------------------------------------
// Store

QvMCast::QvMCast() : head(nullptr), curInfo(nullptr), newID(0), lockFlag(0), workCTable() {}

QvMCast::~QvMCast() { DelAll(); }

void QvMCast::InbetweenAnc(tbPoint*, std::int16_t*, std::int16_t, tbPoint*, std::int16_t, char) {}

std::int16_t QvMCast::GetNewID() { return newID; }

std::int16_t QvMCast::Count() {
  std::uint16_t n = 0;
  for (QvMCastInfo* p = head; p; p = p->next) ++n;
  return static_cast<std::int16_t>(n);
}

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
  for (curInfo = head; curInfo; curInfo = curInfo->next) {
    if (curInfo->id == id) break;
  }
  return curInfo;
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
  QvMCastInfo* info = QvNew<QvMCastInfo>();
  if (!info) return 0;
  QvMCastInfo* tail = head;
  while (tail && tail->next) tail = tail->next;
  info->id = id;
  info->prev = tail;
  info->next = nullptr;
  localNew(info, name);
  if (tail) {
    tail->next = info;
  } else {
    head = info;
  }
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
  if (info->orgGWorld) {
    qv::tb.DisposeGWorld(info->orgGWorld);
    info->orgGWorld = nullptr;
  }
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
  if (!head) newID = 0;
  // The search result must not outlive its member: deleting the locked
  // member ends the lock.
  if (curInfo == info) {
    curInfo = nullptr;
    lockFlag = 0;
  }
  delete info;
}

void QvMCast::DelAll() {
  QvMCastInfo* p = head;
  while (p) {
    QvMCastInfo* next = p->next;
    localEmpty(p);
    if (curInfo == p) {
      curInfo = nullptr;
      lockFlag = 0;
    }
    delete p;
    p = next;
  }
  head = nullptr;
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
  if (info->orgGWorld) {
    qv::tb.DisposeGWorld(info->orgGWorld);
    info->orgGWorld = nullptr;
  }
  qv::tb.NewGWorld(&info->orgGWorld, 8, &bounds, info->orgCTable);
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

// ---------------------------------------------------------------------------
// Anchor motion paths

std::int16_t QvMCast::RegAnc(std::int16_t id, QvMCastAnc* anchors, std::int16_t count, char type,
                             unsigned char* name) {
  // The copy is made before the member is chosen (the anchors may be a
  // member's own). A count below 1 allocates nothing: the member then has no
  // path, so that no folding or lookup ever works on an empty path.
  std::unique_ptr<QvMCastAnc[]> copy;
  if (anchors) {
    copy.reset(QvNewArray<QvMCastAnc>(count));
    if (copy) {
      for (std::int16_t i = 0; i < count; ++i) {
        copy[i].point = anchors[i].point;
        copy[i].flag = anchors[i].flag;
      }
    }
  }
  QvMCastInfo* info = localRegTarget(&id, name);
  if (!info) return -1;
  delete[] info->anc;
  info->anc = copy.release();
  info->ancLast = info->anc ? static_cast<std::int16_t>(count - 1) : 0;
  if (type != 0) info->ancType = static_cast<signed char>(type);
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  localDeleteIcon(info);
  SetName(info, name);
  return id;
}

char QvMCast::DelAnc(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  DelAnc(info);
  return 1;
}

void QvMCast::DelAnc(QvMCastInfo* info) {
  delete[] info->anc;
  info->anc = nullptr;
  info->ancLast = 0;
  ResetActFlag(info);
  ResetShowFlag(info);
  localDeleteIcon(info);
}

char QvMCast::SetAnc(std::int16_t id, std::int16_t index, const tbPoint& point, char flag) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc || index < 0 || index > info->ancLast) return 0;
  info->anc[index].point = point;
  info->anc[index].flag = flag;
  return 1;
}

char QvMCast::OffsetAnc(std::int16_t id, std::int16_t dx, std::int16_t dy) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc) return 0;
  for (std::int32_t i = 0; i <= info->ancLast; ++i) {
    tbPoint& p = info->anc[i].point;
    p.x = Sum16(p.x, dx);
    p.y = Sum16(p.y, dy);
  }
  return 1;
}

char QvMCast::localGetAnc(QvMCastInfo* info, std::int16_t* index) {
  // The path is never empty (ancLast >= 0). Types 2 and 3 fold with the
  // period of the path in 32-bit arithmetic, which gives the same index as
  // repeated mirroring or wrapping and also ends for the index -32768.
  const std::int32_t last = info->ancLast;
  std::int32_t k = *index;
  char inside = 1;
  switch (info->ancType) {
    case 1:
      if (k < 0) {
        k = 0;
        inside = 0;
      } else if (k > last) {
        k = last;
        inside = 0;
      }
      break;
    case 2:
      if (last <= 0) {
        k = 0;
      } else if (k < 0 || k > last) {
        const std::int32_t period = 2 * last;
        k %= period;
        if (k < 0) k += period;
        if (k > last) k = period - k;
        inside = 0;
      }
      break;
    case 3:
      if (last <= 0) {
        k = 0;
      } else if (k < 0 || k > last) {
        const std::int32_t period = last + 1;
        k %= period;
        if (k < 0) k += period;
        inside = 0;
      }
      break;
    default:
      k = 0;
      break;
  }
  *index = static_cast<std::int16_t>(k);
  return inside;
}

char QvMCast::ResetAnc(std::int16_t id) {
  QvMCastInfo* info = localSearch(id);
  return info ? ResetAnc(info) : 0;
}

char QvMCast::ResetAnc(QvMCastInfo* info) {
  if (!info->anc) return 0;
  // The length of the range from the low 16 bits of its ends (1 while the
  // range is unset).
  const std::int16_t n = Sum16(Sub32(info->end, info->start), 1);
  // The re-sampled anchors are gathered into a new array, which becomes the
  // path (no path when the range is empty or the array cannot be made).
  QvMCastAnc* path = n > 0 ? QvNewArray<QvMCastAnc>(n) : nullptr;
  if (path) {
    for (std::int16_t i = 0; i < n; ++i) {
      std::int16_t k = Sum16(Trunc32(static_cast<double>(i) * info->ancStep), info->ancOffset);
      const char inside = localGetAnc(info, &k);
      path[i].point = info->anc[k].point;
      path[i].flag = inside ? info->anc[k].flag : 0;
    }
  }
  delete[] info->anc;
  info->anc = path;
  info->ancLast = path ? static_cast<std::int16_t>(n - 1) : 0;
  info->ancStep = 1.0;
  info->ancOffset = 0;
  localDeleteIcon(info);
  return 1;
}

char QvMCast::InbetweenAnc(std::int16_t id, char mode) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (!ResetAnc(info)) return 0;
  if (info->ancSelStart > info->ancLast || info->ancSelEnd < 0) return 0;
  return InbetweenAnc(info, mode);
}

char QvMCast::InbetweenAnc(QvMCastInfo* info, char mode) {
  if (!info->anc) return 0;
  std::int16_t lo = Low16(static_cast<std::uint32_t>(info->ancSelStart));
  if (lo < 0) lo = 0;
  std::int16_t hi = Low16(static_cast<std::uint32_t>(info->ancSelEnd));
  if (hi > info->ancLast) hi = info->ancLast;
  // A span whose low 16 bits do not form an ascending range inside the path
  // gives nothing to fill.
  if (hi < 0 || lo > hi) return 0;
  const std::int16_t outCount = static_cast<std::int16_t>(hi - lo + 1);
  std::int16_t between = 0;
  for (std::int32_t j = lo + 1; j < hi; ++j) {
    if (info->anc[j].flag == 1) ++between;
  }
  const std::int16_t keyCount = static_cast<std::int16_t>(2 + between);
  tbPoint* out = QvNewArray<tbPoint>(outCount);
  if (!out) return 0;
  tbPoint* keys = QvNewArray<tbPoint>(keyCount);
  std::int16_t* keyIndex = keys ? QvNewArray<std::int16_t>(keyCount) : nullptr;
  if (!keys || !keyIndex) {
    delete[] out;
    delete[] keys;
    return 0;
  }
  std::int16_t key = 0;
  keys[key] = info->anc[lo].point;
  keyIndex[key++] = lo;
  for (std::int32_t j = lo + 1; j < hi; ++j) {
    if (info->anc[j].flag == 1) {
      keys[key] = info->anc[j].point;
      keyIndex[key++] = static_cast<std::int16_t>(j);
    }
  }
  keys[key] = info->anc[hi].point;
  keyIndex[key] = hi;
  InbetweenAnc(keys, keyIndex, keyCount, out, outCount, mode);
  info->anc[lo].flag = 1;
  for (std::int32_t j = lo + 1; j < hi; ++j) {
    info->anc[j].point = out[j - lo];
    if (info->anc[j].flag == 0) info->anc[j].flag = 2;
  }
  info->anc[hi].flag = 1;
  delete[] out;
  delete[] keys;
  delete[] keyIndex;
  return 1;
}

char QvMCast::SetAncType(std::int16_t id, char type) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  SetAncType(info, type);
  return 1;
}

void QvMCast::SetAncType(QvMCastInfo* info, char type) {
  info->ancType = static_cast<signed char>(type);
}

char QvMCast::SetAncOffset(std::int16_t id, std::int16_t offset) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  // Wraps by the number of anchors (the arithmetic remainder of the repeated
  // 16-bit additions and subtractions).
  const std::int32_t n = static_cast<std::int32_t>(info->ancLast) + 1;
  std::int32_t k = offset;
  if (n > 0) {
    k %= n;
    if (k < 0) k += n;
  } else {
    k = 0;
  }
  info->ancOffset = static_cast<std::int16_t>(k);
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::SetAncOffset(std::int16_t id, tbPoint* point) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !point) return 0;
  info->ancOffset = 0;
  if (info->anc) {
    const std::int16_t px = Low16(static_cast<std::uint32_t>(point->x));
    const std::int16_t py = Low16(static_cast<std::uint32_t>(point->y));
    // Squared distances in 32-bit integers, wrapping as the original did.
    auto distance = [&](const tbPoint& a) {
      const std::int32_t dx = Low16(static_cast<std::uint32_t>(a.x)) - px;
      const std::int32_t dy = Low16(static_cast<std::uint32_t>(a.y)) - py;
      const std::uint32_t sq = static_cast<std::uint32_t>(dx) * static_cast<std::uint32_t>(dx) +
                               static_cast<std::uint32_t>(dy) * static_cast<std::uint32_t>(dy);
      return std::sqrt(static_cast<double>(static_cast<std::int32_t>(sq)));
    };
    double best = distance(info->anc[0].point);
    for (std::int16_t i = 1; i <= info->ancLast; ++i) {
      const double d = distance(info->anc[i].point);
      if (d < best) {
        best = d;
        info->ancOffset = i;
      }
    }
  }
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::GetAncOffset(std::int16_t id, std::int16_t* offset) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !offset) return 0;
  *offset = info->ancOffset;
  return 1;
}

char QvMCast::GetAncNum(std::int16_t id, std::int16_t* num) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !num) return 0;
  *num = Low16(static_cast<std::uint32_t>(info->ancLast) + 1u);
  return 1;
}

char QvMCast::SetAncStep(std::int16_t id, double step) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->ancStep = step;
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::GetAncStep(std::int16_t id, double* step) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !step) return 0;
  *step = info->ancStep;
  return 1;
}

char QvMCast::SetAncCount(std::int16_t id, double count) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->ancStep = (static_cast<double>(info->ancLast) + 1.0) / count;
  info->ancSelStart = -1;
  info->ancSelEnd = -1;
  return 1;
}

char QvMCast::GetAncCount(std::int16_t id, std::int16_t d, double* count) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !count) return 0;
  const std::int32_t product = (static_cast<std::int32_t>(info->ancLast) + 1) * d;
  *count = static_cast<double>(product) / info->ancStep;
  return 1;
}

char QvMCast::SetAncSelectArea(std::int16_t id, std::int32_t a, std::int32_t b) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->ancSelStart = a < b ? a : b;
  info->ancSelEnd = a < b ? b : a;
  return 1;
}

char QvMCast::GetAncSelectArea(std::int16_t id, std::int32_t* a, std::int32_t* b) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (a) *a = info->ancSelStart;
  if (b) *b = info->ancSelEnd;
  return 1;
}

char QvMCast::GetAnc(std::int16_t id, std::int16_t index, tbPoint* point, char* flag) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc || index < 0 || index > info->ancLast) return 0;
  if (point) *point = info->anc[index].point;
  if (flag) *flag = info->anc[index].flag;
  return 1;
}

char QvMCast::GetAnc(std::int16_t id, std::int32_t time, tbPoint* point, char* flag) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->anc || !InRange(info, time)) return 0;
  std::int16_t k = Sum16(Trunc32(Elapsed(time, info->start) * info->ancStep), info->ancOffset);
  localGetAnc(info, &k);
  if (point) *point = info->anc[k].point;
  if (flag) *flag = info->anc[k].flag;
  return 1;
}

// ---------------------------------------------------------------------------
// Scrolling

char QvMCast::SetScrStepH(std::int16_t id, double step) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->scrStepH = step;
  return 1;
}

char QvMCast::SetScrStepV(std::int16_t id, double step) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  info->scrStepV = step;
  return 1;
}

char QvMCast::GetScrStepH(std::int16_t id, double* step) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !step) return 0;
  *step = info->scrStepH;
  return 1;
}

char QvMCast::GetScrStepV(std::int16_t id, double* step) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !step) return 0;
  *step = info->scrStepV;
  return 1;
}

namespace {

// Width and height of the first image of a frame animation; 0 and 0 when it
// has none.
void FirstImageSize(QvAFrame* anim, std::int16_t* width, std::int16_t* height) {
  std::int16_t w = 0, h = 0;
  const std::int16_t first = 0;
  if (!anim->GetMImage(first, nullptr, nullptr, &w, &h, nullptr, nullptr)) w = h = 0;
  *width = w;
  *height = h;
}

}  // namespace

char QvMCast::SetScrCountH(std::int16_t id, double count) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (!info->aFrame) {
    info->scrStepH = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    info->scrStepH = static_cast<double>(w) / count;
  }
  return 1;
}

char QvMCast::SetScrCountV(std::int16_t id, double count) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return 0;
  if (!info->aFrame) {
    info->scrStepV = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    info->scrStepV = static_cast<double>(h) / count;
  }
  return 1;
}

char QvMCast::GetScrCountH(std::int16_t id, std::int16_t d, double* count) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !count) return 0;
  if (!info->aFrame) {
    *count = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    *count = static_cast<double>(static_cast<std::int32_t>(w) * d) / info->scrStepH;
  }
  return 1;
}

char QvMCast::GetScrCountV(std::int16_t id, std::int16_t d, double* count) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !count) return 0;
  if (!info->aFrame) {
    *count = 0.0;
  } else {
    std::int16_t w, h;
    FirstImageSize(info->aFrame, &w, &h);
    *count = static_cast<double>(static_cast<std::int32_t>(h) * d) / info->scrStepV;
  }
  return 1;
}

char QvMCast::GetScroll(std::int16_t id, std::int32_t time, std::int16_t* h, std::int16_t* v) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !InRange(info, time)) return 0;
  const double e = Elapsed(time, info->start);
  const unsigned char s = static_cast<unsigned char>(info->scroll);
  std::int16_t sh = 0, sv = 0;
  if (s & kScrollLeft) {
    sh = Low16(0u - static_cast<std::uint32_t>(Trunc32(e * info->scrStepH)));
  } else if (s & kScrollRight) {
    sh = Low16(static_cast<std::uint32_t>(Trunc32(e * info->scrStepH)));
  }
  if (s & kScrollUp) {
    sv = Low16(0u - static_cast<std::uint32_t>(Trunc32(e * info->scrStepV)));
  } else if (s & kScrollDown) {
    sv = Low16(static_cast<std::uint32_t>(Trunc32(e * info->scrStepV)));
  }
  if (h) *h = sh;
  if (v) *v = sv;
  return 1;
}

// ---------------------------------------------------------------------------
// Rendering and hit-testing

std::int32_t QvMCast::localFrameOf(std::int32_t time, std::int32_t start, std::int16_t speed) {
  const std::uint32_t product = static_cast<std::uint32_t>(Sub32(time, start)) *
                                static_cast<std::uint32_t>(static_cast<std::int32_t>(speed)) * 2u;
  return static_cast<std::int32_t>(product / 60u);
}

char QvMCast::DrawPicture(std::int16_t id, std::int32_t time, tbPixMap* dst, tbRect* area) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->aFrame || !dst || !area) return 0;
  const std::int32_t t = time == -1 ? info->start : time;
  if (!InRange(info, t)) return 0;

  const std::int16_t left = Low16(static_cast<std::uint32_t>(area->left));
  const std::int16_t top = Low16(static_cast<std::uint32_t>(area->top));
  const std::int16_t right = Low16(static_cast<std::uint32_t>(area->right));
  const std::int16_t bottom = Low16(static_cast<std::uint32_t>(area->bottom));
  tbPoint p;
  char flag = 0;
  if (!GetAnc(id, t, &p, &flag)) {
    p.x = Sum16(right, -left) / 2;
    p.y = Sum16(bottom, -top) / 2;
  }
  std::int16_t w = 0, h = 0, ox = 0, oy = 0;
  // An animation without frames has no area and nothing to draw.
  if (!info->aFrame->GetArea(&w, &h, &ox, &oy)) return 0;
  const std::int16_t x = Sum16(Sum16(left, -ox), Low16(static_cast<std::uint32_t>(p.x)));
  const std::int16_t y = Sum16(Sum16(top, -oy), Low16(static_cast<std::uint32_t>(p.y)));

  const char wrap = info->scroll != 0 ? 3 : 0;
  std::int16_t sh = 0, sv = 0;
  GetScroll(id, t, &sh, &sv);

  if (IsAColor(info)) {
    tbColorTable* ct = CTable(id, t);
    if (!ct) return 0;
    if (info->orgGWorld) {
      qv::tb.DisposeGWorld(info->orgGWorld);
      info->orgGWorld = nullptr;
    }
    tbRect bounds;
    qv::SetRect(&bounds, 0, 0, w, h);
    if (!qv::tb.NewGWorld(&info->orgGWorld, 8, &bounds, ct)) return 0;
  } else if (!info->orgGWorld) {
    return 0;
  }

  QvAFrame* anim = info->aFrame;
  anim->SetCur(localFrameOf(t, info->start, anim->Speed()));
  const std::int16_t f = Low16(static_cast<std::uint32_t>(anim->Cur()));
  return anim->DrawMPicture(f, info->orgGWorld, ox, oy, info->orgPal, info->fillIndex, wrap, sh, sv,
                            dst, x, y)
             ? 1
             : 0;
}

tbColorTable* QvMCast::CTable(std::int16_t id, std::int32_t time) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->orgCTable || !InRange(info, time)) return nullptr;
  CopyCTable(&workCTable, info->orgCTable);
  for (QvAColor* anim : info->aColor) {
    if (!anim) continue;
    anim->SetCur(localFrameOf(time, info->start, anim->Speed()));
    anim->CTable(&workCTable);
    // The output table is passed on whatever the computation gave: a failed
    // computation passes on the output held before.
    if (tbColorTable* result = anim->CTable()) CopyCTable(&workCTable, result);
  }
  return &workCTable;
}

char QvMCast::GetAFrameArea(std::int16_t id, std::int32_t time, tbRect* area, char mode,
                            tbRect* result, tbPoint* point) {
  QvMCastInfo* info = localSearch(id);
  if (!info || !info->aFrame || !InRange(info, time) || !area || !result || !point) return 0;
  QvAFrame* anim = info->aFrame;
  anim->SetCur(localFrameOf(time, info->start, anim->Speed()));
  const std::int16_t f = Low16(static_cast<std::uint32_t>(anim->Cur()));
  std::int16_t w = 0, h = 0, ox = 0, oy = 0;
  if (!anim->GetMImage(f, nullptr, nullptr, &w, &h, &ox, &oy)) return 0;

  const std::int16_t left = Low16(static_cast<std::uint32_t>(area->left));
  const std::int16_t top = Low16(static_cast<std::uint32_t>(area->top));
  const std::int16_t right = Low16(static_cast<std::uint32_t>(area->right));
  const std::int16_t bottom = Low16(static_cast<std::uint32_t>(area->bottom));
  char flag = 0;
  if (GetAnc(id, time, point, &flag)) {
    const std::int16_t ax = Low16(static_cast<std::uint32_t>(point->x));
    const std::int16_t ay = Low16(static_cast<std::uint32_t>(point->y));
    switch (mode) {
      case 0:
        point->x = Sum16(left, ax);
        point->y = Sum16(top, ay);
        break;
      case 1:
        point->x = Sum16(left, ax);
        point->y = Sum16(top, Sum16(ay, ay));
        break;
      case 2:
        point->x = Sum16(left, Sum16(ax, ax));
        point->y = Sum16(top, ay);
        break;
      default:
        break;
    }
  } else {
    point->x = Sum16(left, Sum16(right, -left) / 2);
    point->y = Sum16(top, Sum16(bottom, -top) / 2);
  }

  const std::int16_t px = Low16(static_cast<std::uint32_t>(point->x));
  const std::int16_t py = Low16(static_cast<std::uint32_t>(point->y));
  std::int16_t l, t;
  switch (mode) {
    case 0:
      l = Sum16(px, ox);
      t = Sum16(py, oy);
      qv::SetRect(result, l, t, Sum16(l, w), Sum16(t, h));
      break;
    case 1:
      l = Sum16(px, ox);
      t = Sum16(py, Sum16(oy, oy));
      qv::SetRect(result, l, t, Sum16(l, w), Sum16(t, Sum16(h, h)));
      break;
    case 2:
      l = Sum16(px, Sum16(ox, ox));
      t = Sum16(py, oy);
      qv::SetRect(result, l, t, Sum16(l, Sum16(w, w)), Sum16(t, h));
      break;
    default:
      break;
  }
  return 1;
}

char QvMCast::PtInAFrame(tbPoint* pt, std::int16_t id, std::int32_t time, tbRect* area, char mode) {
  if (!pt) return 0;
  tbRect r;
  tbPoint p;
  if (!GetAFrameArea(id, time, area, mode, &r, &p)) return 0;
  const std::int16_t x = Low16(static_cast<std::uint32_t>(pt->x));
  const std::int16_t y = Low16(static_cast<std::uint32_t>(pt->y));
  return (Low16(static_cast<std::uint32_t>(r.left)) <= x &&
          x < Low16(static_cast<std::uint32_t>(r.right)) &&
          Low16(static_cast<std::uint32_t>(r.top)) <= y &&
          y < Low16(static_cast<std::uint32_t>(r.bottom)))
             ? 1
             : 0;
}

tbPicture* QvMCast::Icon(std::int16_t id, std::int16_t width, std::int16_t height) {
  QvMCastInfo* info = localSearch(id);
  if (!info) return nullptr;
  if (info->iconWidth != width || info->iconHeight != height) localDeleteIcon(info);
  if (info->icon.Pic()) return &info->icon;

  QvCanvas canvas;
  if (info->orgCTable) canvas.UpdateCTable(info->orgCTable);
  if (!canvas.New(width, height)) return nullptr;
  canvas.Clear(0, 0, canvas.width, canvas.height, 0, nullptr, 0);
  canvas.localGetImg();
  unsigned char* image = canvas.image;
  const std::int16_t rowBytes = canvas.rowBytes;
  const std::int16_t cw = canvas.width;
  const std::int16_t ch = canvas.height;

  if (info->aFrame) {
    const std::int16_t first = 0;
    if (!info->aFrame->GetIcon(first, image, rowBytes, cw, ch)) return nullptr;
  } else if (info->orgCTable && image) {
    // A swatch of the palette: 2 by 2 blocks, the indices spread evenly over
    // 0 to 255.
    const std::int16_t cols = static_cast<std::int16_t>(Sum16(width, 1) / 2);
    const std::int16_t rows = static_cast<std::int16_t>(Sum16(height, 1) / 2);
    const std::int32_t blocks = static_cast<std::int32_t>(cols) * rows;
    const double scale = blocks != 0 ? 256.0 / static_cast<double>(blocks) : 0.0;
    for (std::int32_t y = 0; y < ch; ++y) {
      unsigned char* row = image + static_cast<std::ptrdiff_t>(y) * rowBytes;
      for (std::int32_t x = 0; x < cw; ++x) {
        const double v = static_cast<double>((y / 2) * cols + x / 2) * scale;
        row[x] = static_cast<unsigned char>(static_cast<std::uint32_t>(Trunc32(v)) & 0xFFu);
      }
    }
  }

  QvCanvasUtil util;
  util.GetPICT(&canvas, cw, ch, &info->icon, 0, 0, cw, ch, nullptr);
  info->iconWidth = cw;
  info->iconHeight = ch;
  return info->icon.Pic() ? &info->icon : nullptr;
}

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
