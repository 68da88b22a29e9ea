#include "acolor/QvAFade.h"

#include <cstring>

#include "acolor/QvAColorEntries.h"
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

// The blend's step 3 for every difference k = s - g of two components (-255
// to 255) at fraction f, kept to its low 16 bits, which is all that step 4
// uses: low[k + 255]. The same operations as BlendComponent, since s16 - g16
// is 257 k, in a loop the compiler vectorises (with AVX2 where the
// processor has it; IEEE operations give the same results in every width).
__attribute__((target_clones("avx2", "default"))) void BlendSteps(std::uint16_t* low, double f) {
  for (int k = -255; k <= 255; ++k) {
    const double d = static_cast<double>(k * 257) * f;
    low[k + 255] =
        static_cast<std::uint16_t>(static_cast<std::uint32_t>(static_cast<std::int32_t>(d)));
  }
}

// The blend of every source component 0 to 255 toward g, steps 4 and 5 on
// the low 16 bits of step 3.
__attribute__((target_clones("avx2", "default"))) void BlendRow(unsigned char* out,
                                                                const std::uint16_t* low,
                                                                unsigned char g) {
  const std::uint16_t* d = low + (255 - g);
  for (int s = 0; s < 256; ++s) {
    const auto v = static_cast<std::uint16_t>(static_cast<std::uint32_t>(s * 257) - d[s]);
    out[s] = static_cast<unsigned char>(v / 257);
  }
}

// From this many flagged entries on, the blends are looked up in rows made
// for the call rather than computed per entry.
constexpr int kRowsFrom = 64;
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
  // Entries 0 to n - 1 in one pass, each taken whole from the source and,
  // when flagged, blended in place; the entries are consecutive, so
  // CTTable(0) + i is entry i.
  const int n = localFlagNum();
  const QvPal* pal = area;
  tbRGBColor* out = cTable->CTTable(0);
  const tbRGBColor* in = src->CTTable(0);
  int flagged = 0;
  for (int i = 0; i < 256; ++i)
    flagged += (pal->Flag(static_cast<unsigned char>(i)) == 1) & (i < n);
  if (flagged >= kRowsFrom) {
    // Each component depends only on itself, the target's component and f:
    // looked up in rows of the blend of every value.
    std::uint16_t low[511];
    BlendSteps(low, f);
    unsigned char red[256], green[256], blue[256];
    BlendRow(red, low, color.red);
    BlendRow(green, low, color.green);
    BlendRow(blue, low, color.blue);
    for (int i = 0; i < n; ++i) {
      qvacolor::PutEntry(out + i, in + i);
      if (pal->Flag(static_cast<unsigned char>(i)) != 1) continue;
      // Red, green and blue are consecutive bytes: read and written as one
      // word with the byte after them kept.
      unsigned char* c = &out[i].red;
      std::uint32_t w;
      std::memcpy(&w, c, 4);
      w = (w & 0xFF000000u) | red[w & 0xFFu] |
          static_cast<std::uint32_t>(green[(w >> 8) & 0xFFu]) << 8 |
          static_cast<std::uint32_t>(blue[(w >> 16) & 0xFFu]) << 16;
      std::memcpy(c, &w, 4);
    }
    return cTable;
  }
  for (int i = 0; i < n; ++i) {
    qvacolor::PutEntry(out + i, in + i);
    if (pal->Flag(static_cast<unsigned char>(i)) != 1) continue;
    tbRGBColor* e = out + i;
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
