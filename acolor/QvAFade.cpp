#include "acolor/QvAFade.h"

#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"

namespace {
// One component of the blend: from s toward g by the fraction f, on the
// 16-bit scale, truncated toward the source and back down to 8 bits.
unsigned char BlendComponent(unsigned char s, unsigned char g, double f) {
  const std::int32_t s16 = static_cast<std::int32_t>(s) * 257;
  const std::int32_t g16 = static_cast<std::int32_t>(g) * 257;
  const double d = static_cast<double>(s16 - g16) * f;
  const std::int32_t D = static_cast<std::int32_t>(d);
  const std::uint16_t v =
      static_cast<std::uint16_t>(static_cast<std::uint32_t>(s16) - static_cast<std::uint32_t>(D));
  return static_cast<unsigned char>(v / 257);
}

// The blend of every source component 0 to 255 toward g: the same
// operations as BlendComponent, in a loop the compiler vectorises.
void BlendRow(unsigned char* out, unsigned char g, double f) {
  for (int s = 0; s < 256; ++s) out[s] = BlendComponent(static_cast<unsigned char>(s), g, f);
}

// From this many flagged entries on, the blends are looked up in rows made
// for the call (768 blends) rather than computed per entry (3 each).
constexpr int kRowsFrom = 96;
}  // namespace

QvAFade::QvAFade() : QvAColor(), QvMCastList(), color(), count(30), lastFrame(29) {
  color.red = 0;
  color.green = 0;
  color.blue = 0;
  SetTop(0);
  SetEnd(29);
}

QvAFade::~QvAFade() { DelFromMCast(); }

char QvAFade::RegArea(QvPal* pal) {
  if (!QvAColor::RegArea(pal)) return 0;
  UpdateMCast();
  return 1;
}

void QvAFade::RegColor(const tbRGBColor& c) {
  color.red = c.red;
  color.green = c.green;
  color.blue = c.blue;
  UpdateMCast();
}

void QvAFade::RegColor(std::uint16_t red, std::uint16_t green, std::uint16_t blue) {
  color.red = static_cast<unsigned char>(red / 257);
  color.green = static_cast<unsigned char>(green / 257);
  color.blue = static_cast<unsigned char>(blue / 257);
  UpdateMCast();
}

void QvAFade::SetCount(std::int16_t n) {
  const std::int16_t frames = n > 1 ? n : static_cast<std::int16_t>(2);
  count = frames;
  lastFrame = static_cast<std::int16_t>(frames - 1);
  SetTop(0);
  SetEnd(Count() - 1);
  UpdateMCast();
}

std::int16_t QvAFade::Count() { return count; }

tbColorTable* QvAFade::CTable(tbColorTable* src) {
  if (runFlag) localGetCur();
  return CTable(static_cast<std::int16_t>(cur), src);
}

tbColorTable* QvAFade::CTable(std::int16_t frame, tbColorTable* src) {
  ++changeCount;
  if (errorFlags != 0 || frame < 0 || frame >= Count() || !src || !cTable || !area) return nullptr;

  const double f = static_cast<double>(frame) / static_cast<double>(lastFrame);
  // The covered entries taken from the source as one block, then the
  // flagged ones blended in place: each component depends only on itself,
  // the target's component and f.
  const std::int16_t n = localFlagNum();
  cTable->CopyEntries(0, src, 0, n);
  int flagged = 0;
  for (std::int16_t i = 0; i < n; ++i) flagged += area->Flag(static_cast<unsigned char>(i)) == 1;
  if (flagged >= kRowsFrom) {
    unsigned char red[256], green[256], blue[256];
    BlendRow(red, color.red, f);
    BlendRow(green, color.green, f);
    BlendRow(blue, color.blue, f);
    for (std::int16_t i = 0; i < n; ++i) {
      if (area->Flag(static_cast<unsigned char>(i)) != 1) continue;
      tbRGBColor* e = cTable->CTTable(i);
      e->red = red[e->red];
      e->green = green[e->green];
      e->blue = blue[e->blue];
    }
    return cTable;
  }
  for (std::int16_t i = 0; i < n; ++i) {
    if (area->Flag(static_cast<unsigned char>(i)) != 1) continue;
    tbRGBColor* e = cTable->CTTable(i);
    e->red = BlendComponent(e->red, color.red, f);
    e->green = BlendComponent(e->green, color.green, f);
    e->blue = BlendComponent(e->blue, color.blue, f);
  }
  return cTable;
}

char QvAFade::Load(int) { return 0; }

char QvAFade::Save(int) { return 0; }

char QvAFade::Load(int, std::uint32_t) { return 0; }

void QvAFade::Dup(QvAFade* other) {
  // Nothing to copy into, or a copy into itself: nothing to do.
  if (!other || other == this) return;
  other->SetMode(mode);
  other->SetSpeed(speed);
  other->RegArea(area);
  other->RegColor(color);
  other->SetCount(Count());
}

void QvAFade::UpdateMCast() { localUpdateMCast(this); }

void QvAFade::DelFromMCast() {
  localUpdateMCast(nullptr);
  QvMCastList::DelAll();
}

void QvAFade::localUpdateMCast(QvMCastList* list) { localRegToMCast(this, kFade, list); }
