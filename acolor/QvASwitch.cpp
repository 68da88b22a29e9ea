#include "acolor/QvASwitch.h"

#include "acolor/QvAColorEntries.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"

namespace {
// Gives dst the size of src, then copies the entries 0 to that size.
void CopyTable(tbColorTable* dst, tbColorTable* src) {
  dst->SetCTSize(src->CTSize());
  dst->CopyEntries(0, src, 0, dst->CTSize() + 1);
}
}  // namespace

QvASwitch::QvASwitch() : QvAColor(), QvMCastList(), tables(nullptr), count(0) {
  SetTop(0);
  SetEnd(-1);
}

QvASwitch::~QvASwitch() {
  DelFromMCast();
  DelCTable(-1);
}

char QvASwitch::RegArea(QvPal* pal) {
  if (!QvAColor::RegArea(pal)) return 0;
  UpdateMCast();
  return 1;
}

char QvASwitch::RegCTable(std::int16_t index, tbColorTable* table) {
  // The number of tables is a 16-bit count.
  if (!table || count >= 0x7FFF) return 0;
  tbColorTable* fresh = QvNewArray<tbColorTable>(static_cast<long>(count) + 1);
  if (!fresh) return 0;

  const std::int32_t pos = (index >= 0 && index <= count) ? index : count;
  std::int32_t old = 0;
  for (std::int32_t j = 0; j <= count; ++j) {
    if (j == pos) {
      CopyTable(&fresh[j], table);
    } else {
      CopyTable(&fresh[j], &tables[old]);
      ++old;
    }
  }

  delete[] tables;
  tables = fresh;
  count = static_cast<std::int16_t>(count + 1);
  SetTop(0);
  SetEnd(Count() - 1);
  UpdateMCast();
  return 1;
}

char QvASwitch::DelCTable(std::int16_t index) {
  if (index >= count) return 0;

  if (index < 0 || count <= 1) {
    delete[] tables;
    tables = nullptr;
    count = 0;
  } else {
    tbColorTable* fresh = QvNewArray<tbColorTable>(static_cast<long>(count) - 1);
    if (!fresh) return 0;
    std::int32_t k = 0;
    for (std::int32_t j = 0; j < count; ++j) {
      if (j == index) continue;
      CopyTable(&fresh[k], &tables[j]);
      ++k;
    }
    delete[] tables;
    tables = fresh;
    count = static_cast<std::int16_t>(count - 1);
  }

  SetTop(0);
  SetEnd(Count() - 1);
  UpdateMCast();
  return 1;
}

std::int16_t QvASwitch::Count() { return count; }

tbColorTable* QvASwitch::CTable(tbColorTable* src) {
  if (runFlag) localGetCur();
  return CTable(static_cast<std::int16_t>(cur), src);
}

tbColorTable* QvASwitch::CTable(std::int16_t frame, tbColorTable* src) {
  ++changeCount;
  if (errorFlags != 0 || frame < 0 || frame >= Count() || !src || !cTable || !area || !tables) {
    return nullptr;
  }

  tbColorTable* table = &tables[frame];
  // Entries 0 to n - 1 in one pass, each a whole-entry store; the entries
  // are consecutive, so CTTable(0) + i is entry i. A table smaller than the
  // area leaves the indices above its size to the source's colours.
  const int n = localFlagNum();
  const int size = table->CTSize();
  const QvPal* pal = area;
  tbRGBColor* out = cTable->CTTable(0);
  const tbRGBColor* in = src->CTTable(0);
  const tbRGBColor* own = table->CTTable(0);
  for (int i = 0; i < n; ++i) {
    const bool flagged = pal->Flag(static_cast<unsigned char>(i)) == 1 && i <= size;
    qvacolor::PutEntry(out + i, flagged ? own + i : in + i);
  }
  return cTable;
}

char QvASwitch::Load(int) { return 0; }

char QvASwitch::Save(int) { return 0; }

char QvASwitch::Load(int, std::uint32_t) { return 0; }

void QvASwitch::Dup(QvASwitch* other) {
  // Nothing to copy into, or a copy into itself: nothing to do.
  if (!other || other == this) return;
  other->SetMode(mode);
  other->SetSpeed(speed);
  other->RegArea(area);
  other->DelCTable(-1);
  for (std::int16_t j = 0; j < count; ++j) other->RegCTable(j, &tables[j]);
}

void QvASwitch::UpdateMCast() { localUpdateMCast(this); }

void QvASwitch::DelFromMCast() {
  localUpdateMCast(nullptr);
  QvMCastList::DelAll();
}

void QvASwitch::localUpdateMCast(QvMCastList* list) { localRegToMCast(this, kSwitch, list); }
