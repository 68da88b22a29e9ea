#include "acolor/QvAColor.h"

#include "cast/QvMCast.h"
#include "player/QvMCastList.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbRGBColor.h"
#include "toolbox/tbToolBox.h"

QvAColor::QvAColor() : QvMPlayer(), cTable(nullptr), area(nullptr), errorFlags(0) {
  cTable = QvNew<tbColorTable>(tbColorTable::kStandard);
  if (!cTable) localAddError(static_cast<char>(noCTableError));
  localAddError(static_cast<char>(noAreaError));
}

QvAColor::~QvAColor() {
  delete cTable;
  cTable = nullptr;
  delete area;
  area = nullptr;
}

char QvAColor::RegArea(QvPal* pal) {
  ++changeCount;
  if (!area) {
    area = QvNew<QvPal>();
    if (!area) {
      localAddError(static_cast<char>(noAreaError));
      return 0;
    }
  }
  localSubError(static_cast<char>(noAreaError));
  // A null pal leaves an empty area of 256 indices.
  area->GetFlags(pal);
  return 1;
}

std::int16_t QvAColor::Count() { return 0; }

tbColorTable* QvAColor::CTable(tbColorTable*) { return cTable; }

tbColorTable* QvAColor::CTable(std::int16_t, tbColorTable*) { return cTable; }

char QvAColor::Load(int) { return 0; }

char QvAColor::Save(int) { return 0; }

char QvAColor::Load(char*) { return 0; }

char QvAColor::Save(char*, std::uint32_t, std::uint32_t) { return 0; }

tbColorTable* QvAColor::CTable() { return cTable; }

void QvAColor::SetColor(std::int16_t index, tbRGBColor* color) {
  ++changeCount;
  if (!cTable || !color) return;
  cTable->SetCTTable(index, color);
}

QvPal* QvAColor::Area() { return area; }

char QvAColor::AreaFlag(unsigned char index) { return area ? area->Flag(index) : 0; }

std::uint32_t QvAColor::AreaNum() {
  if (!area) return 0;
  // FlagNum is a 16-bit count; widened with its sign like the original long.
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(area->FlagNum()));
}

char QvAColor::Error() { return static_cast<char>(errorFlags); }

void QvAColor::localAddError(char bit) {
  const unsigned char b = static_cast<unsigned char>(bit);
  if ((errorFlags & b) == 0) errorFlags = static_cast<unsigned char>(errorFlags + b);
}

void QvAColor::localSubError(char bit) {
  const unsigned char b = static_cast<unsigned char>(bit);
  if ((errorFlags & b) != 0) errorFlags = static_cast<unsigned char>(errorFlags - b);
}

std::int16_t QvAColor::localFlagNum() {
  if (!area) return 0;
  std::int16_t n = area->FlagNum();
  // Flag takes an 8-bit index and the output table has 256 entries.
  if (n < 0) n = 0;
  if (n > 256) n = 256;
  return n;
}

void QvAColor::localRegToMCast(QvMCastList* own, char kind, QvMCastList* list) {
  ++changeCount;
  if (!own) return;
  for (std::int32_t i = 0; i <= 0x7FFF; ++i) {
    QvMCast* store = nullptr;
    std::int16_t id = 0;
    if (own->Get(static_cast<std::int16_t>(i), &store, &id) != 1) break;
    if (!store) continue;
    unsigned char** handle = nullptr;
    store->GetName(id, &handle);
    unsigned char* name = handle ? *handle : nullptr;
    const std::int32_t start = store->Start(id);
    store->RegAColor(id, this, kind, start, name, list);
    if (handle) QvFreeString(handle);
  }
}
