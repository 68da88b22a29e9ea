#include "acolor/QvAFlash.h"

#include "acolor/QvAColorEntries.h"
#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbRGBColor.h"

QvAFlash::QvAFlash() : QvAColor(), QvMCastList(), count(3) {
  SetTop(0);
  SetEnd(2);
}

QvAFlash::~QvAFlash() { DelFromMCast(); }

char QvAFlash::RegArea(QvPal* pal) {
  if (!QvAColor::RegArea(pal)) return 0;
  UpdateMCast();
  return 1;
}

std::int16_t QvAFlash::Count() { return count; }

tbColorTable* QvAFlash::CTable(tbColorTable* src) {
  if (runFlag) localGetCur();
  return CTable(static_cast<std::int16_t>(cur), src);
}

tbColorTable* QvAFlash::CTable(std::int16_t frame, tbColorTable* src) {
  ++changeCount;
  if (errorFlags != 0 || frame < 0 || frame >= Count() || !src || !cTable || !area) return nullptr;

  // Built fresh from black: red for frame 0, green for 1, blue for 2.
  tbRGBColor flash;
  flash.red = 0;
  flash.green = 0;
  flash.blue = 0;
  switch (frame) {
    case 0:
      flash.red = 255;
      flash.SetGreen(0);
      flash.SetBlue(0);
      break;
    case 1:
      flash.SetGreen(65535);
      flash.SetBlue(0);
      break;
    default:
      flash.SetGreen(0);
      flash.SetBlue(65535);
      break;
  }

  // Entries 0 to n - 1 in one pass, each a whole-entry store; the entries
  // are consecutive, so CTTable(0) + i is entry i.
  const int n = localFlagNum();
  const QvPal* pal = area;
  tbRGBColor* out = cTable->CTTable(0);
  const tbRGBColor* in = src->CTTable(0);
  for (int i = 0; i < n; ++i) {
    qvacolor::PutEntry(out + i, pal->Flag(static_cast<unsigned char>(i)) == 1 ? &flash : in + i);
  }
  return cTable;
}

char QvAFlash::Load(int) { return 0; }

char QvAFlash::Save(int) { return 0; }

char QvAFlash::Load(int, std::uint32_t) { return 0; }

void QvAFlash::Dup(QvAFlash* other) {
  // Nothing to copy into, or a copy into itself: nothing to do.
  if (!other || other == this) return;
  other->SetMode(mode);
  other->SetSpeed(speed);
  other->RegArea(area);
}

void QvAFlash::UpdateMCast() { localUpdateMCast(this); }

void QvAFlash::DelFromMCast() {
  localUpdateMCast(nullptr);
  QvMCastList::DelAll();
}

void QvAFlash::localUpdateMCast(QvMCastList* list) { localRegToMCast(this, kFlash, list); }
