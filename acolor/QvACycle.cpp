#include "acolor/QvACycle.h"

#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"

namespace {
// Number of frames once an area is registered.
constexpr std::int16_t kCycleFrames = 0x7FFF;
}  // namespace

QvACycle::QvACycle() : QvAColor(), QvMCastList(), head(nullptr), cursor(nullptr), count(0) {
  SetTop(0);
  SetEnd(-1);
}

QvACycle::~QvACycle() {
  DelFromMCast();
  localDelArea();
}

void QvACycle::SetMode(char m) {
  QvAColor::SetMode(m);
  for (cursor = head; cursor; cursor = cursor->next) {
    if (cursor->player) cursor->player->SetMode(mode);
  }
  UpdateMCast();
}

char QvACycle::RegArea(QvPal* pal) {
  if (!QvAColor::RegArea(pal)) return 0;
  localDelArea();

  // Every maximal run of flagged indices is one range; a run reaching the
  // last covered index is closed after the scan.
  bool inRange = false;
  std::int16_t first = 0;
  std::int16_t last = 0;
  for (std::int16_t i = 0; i < localFlagNum(); ++i) {
    if (area->Flag(static_cast<unsigned char>(i)) == 1) {
      if (!inRange) {
        first = i;
        inRange = true;
      }
      last = i;
    } else if (inRange) {
      localRegArea(first, last);
      inRange = false;
    }
  }
  if (inRange) localRegArea(first, last);

  count = kCycleFrames;
  SetTop(0);
  SetEnd(Count() - 1);
  UpdateMCast();
  return 1;
}

std::int16_t QvACycle::Count() { return count; }

tbColorTable* QvACycle::CTable(tbColorTable* src) {
  if (runFlag) localGetCur();
  return CTable(static_cast<std::int16_t>(cur), src);
}

tbColorTable* QvACycle::CTable(std::int16_t frame, tbColorTable* src) {
  return localRotate(frame, src, false, nullptr);
}

tbColorTable* QvACycle::localRotateHeld(tbColorTable* src, bool* rangesOnly) {
  if (runFlag) localGetCur();
  return localRotate(static_cast<std::int16_t>(cur), src, true, rangesOnly);
}

tbColorTable* QvACycle::localRotate(std::int16_t frame, tbColorTable* src, bool outsideHeld,
                                    bool* rangesOnly) {
  ++changeCount;
  if (rangesOnly) *rangesOnly = false;
  if (errorFlags != 0 || frame < 0 || frame >= Count() || !src || !cTable) return nullptr;

  // A range rotated by p - top: entries top.. land on p to end, the rest on
  // top to p - 1; two blocks.
  struct Block {
    std::int32_t p, top, end;
  };
  auto rotate = [&](const Block& b) {
    cTable->CopyEntries(b.p, src, b.top, b.end - b.p + 1);
    cTable->CopyEntries(b.top, src, b.top + (b.end - b.p + 1), b.p - b.top);
  };
  // All 256 source entries are copied first. When the output holds them
  // outside the ranges already, the copy waits until a range is not one
  // block; the blocks written until then are written again over it, which
  // ends in the same table.
  constexpr int kHeld = 128;  // the most runs an area of 256 indices has
  Block held[kHeld];
  int blocks = 0;
  bool copied = false;
  auto copyAll = [&] {
    cTable->CopyEntries(0, src, 0, 256);
    for (int i = 0; i < blocks; ++i) rotate(held[i]);
    copied = true;
  };
  if (!outsideHeld || src == cTable) copyAll();

  for (cursor = head; cursor; cursor = cursor->next) {
    QvMPlayer* player = cursor->player;
    if (!player) continue;
    player->SetCur(player->Top() + frame);
    std::int32_t p = player->Cur();
    const std::int32_t top = player->Top();
    const std::int32_t end = player->End();
    if (src != cTable && 0 <= top && top <= p && p <= end && end <= 255) {
      const Block b{p, top, end};
      if (!copied && blocks == kHeld) copyAll();
      if (!copied) held[blocks++] = b;
      rotate(b);
      continue;
    }
    if (!copied) copyAll();
    // Otherwise entry by entry, wrapping past the end to the top.
    for (std::int32_t i = top; i <= end; ++i) {
      if (p > end) p = top;
      cTable->SetCTTable(static_cast<std::int16_t>(p), src->CTTable(static_cast<std::int16_t>(i)));
      ++p;
    }
  }
  if (rangesOnly) *rangesOnly = !copied;
  return cTable;
}

void QvACycle::localCopyRanges(tbColorTable* dst, const tbColorTable* src) {
  for (QvACycleInfo* r = head; r; r = r->next) {
    if (!r->player) continue;
    const std::int32_t top = r->player->Top();
    dst->CopyEntries(top, src, top, r->player->End() - top + 1);
  }
}

char QvACycle::Load(int) { return 0; }

char QvACycle::Save(int) { return 0; }

char QvACycle::Load(int, std::uint32_t) { return 0; }

void QvACycle::Dup(QvACycle* other) {
  // Nothing to copy into, or a copy into itself: nothing to do.
  if (!other || other == this) return;
  other->SetMode(mode);
  other->SetSpeed(speed);
  other->RegArea(area);
}

void QvACycle::UpdateMCast() { localUpdateMCast(this); }

void QvACycle::DelFromMCast() {
  localUpdateMCast(nullptr);
  QvMCastList::DelAll();
}

void QvACycle::localUpdateMCast(QvMCastList* list) { localRegToMCast(this, kCycle, list); }

char QvACycle::localRegArea(std::int16_t top, std::int16_t end) {
  QvACycleInfo* info = QvNew<QvACycleInfo>();
  if (!info) return 0;

  QvACycleInfo* last = nullptr;
  if (head) {
    for (cursor = head; cursor->next; cursor = cursor->next) {
    }
    last = cursor;
  }
  info->prev = last;
  info->next = nullptr;

  info->player = QvNew<QvMPlayer>();
  if (info->player) {
    info->player->SetTop(top);
    info->player->SetEnd(end);
    info->player->SetMode(mode);
  }

  if (last) {
    last->next = info;
  } else {
    head = info;
  }
  return 1;
}

void QvACycle::localDelArea() {
  cursor = head;
  while (cursor) {
    QvACycleInfo* next = cursor->next;
    delete cursor->player;
    delete cursor;
    cursor = next;
  }
  head = nullptr;
}
