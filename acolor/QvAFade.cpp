#include "acolor/QvAFade.h"

#include "acolor/QvAColorEntries.h"
#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"

// Loops compiled twice, for AVX2 and for the base instruction set, the one
// the processor has chosen when the library is loaded (x86-64 only).
#if defined(__x86_64__) && !defined(__EMSCRIPTEN__)
#define QV_CLONES_AVX2 __attribute__((target_clones("avx2", "default")))
#else
#define QV_CLONES_AVX2
#endif

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

// The truncated product D of BlendComponent for every difference k = s - g
// of two components (-255 to 255) at fraction f, kept to its low 16 bits,
// which is all that the 16-bit result uses: low[k + 255]. The same
// operations, since s16 - g16 is 257 k: the product of -257 k is exactly the
// negated product of 257 k and truncation toward zero keeps the sign, so the
// negative differences are the positive ones negated. In a loop the
// compiler vectorises (with AVX2 where the processor has it; IEEE
// operations give the same results in every width).
QV_CLONES_AVX2 void BlendSteps(std::uint16_t* low, double f) {
  std::int32_t up[256];
  for (int k = 0; k < 256; ++k) up[k] = static_cast<std::int32_t>(static_cast<double>(k * 257) * f);
  for (int k = 0; k < 256; ++k) {
    low[255 + k] = static_cast<std::uint16_t>(static_cast<std::uint32_t>(up[k]));
    low[255 - k] = static_cast<std::uint16_t>(0u - static_cast<std::uint32_t>(up[k]));
  }
}

// The blend of every source component 0 to 255 toward g, from the low 16
// bits of D: v = s16 - D on 16 bits, then v / 257.
QV_CLONES_AVX2 void BlendRow(unsigned char* out, const std::uint16_t* low, unsigned char g) {
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
  // The covered entries taken from the source as one block, then the flagged
  // ones blended in place, unless all are blended; the entries are
  // consecutive, so CTTable(0) + i is entry i.
  const int n = localFlagNum();
  const QvPal* pal = area;
  tbRGBColor* out = cTable->CTTable(0);
  int flagged = 0;
  for (int i = 0; i < 256; ++i)
    flagged += (pal->Flag(static_cast<unsigned char>(i)) == 1) & (i < n);
  if (flagged < kRowsFrom) {
    cTable->CopyEntries(0, src, 0, n);
    for (int i = 0; i < n; ++i) {
      if (pal->Flag(static_cast<unsigned char>(i)) != 1) continue;
      tbRGBColor* e = out + i;
      e->red = BlendComponent(e->red, color.red, f);
      e->green = BlendComponent(e->green, color.green, f);
      e->blue = BlendComponent(e->blue, color.blue, f);
    }
    return cTable;
  }
  // Each component depends only on itself, the target's component and f:
  // looked up in rows of the blend of every value.
  std::uint16_t low[511];
  BlendSteps(low, f);
  unsigned char red[256], green[256], blue[256];
  BlendRow(red, low, color.red);
  BlendRow(green, low, color.green);
  BlendRow(blue, low, color.blue);
  if (flagged == n && src != cTable) {
    // Every covered entry blended: read from the source, written into the
    // entries' colour bytes (all read before any is written, the rows are
    // bytes too).
    const tbRGBColor* in = src->CTTable(0);
    for (int i = 0; i < n; ++i) {
      const unsigned char r = red[in[i].red], g = green[in[i].green], b = blue[in[i].blue];
      out[i].red = r;
      out[i].green = g;
      out[i].blue = b;
    }
    return cTable;
  }
  cTable->CopyEntries(0, src, 0, n);
  for (int i = 0; i < n; ++i) {
    if (pal->Flag(static_cast<unsigned char>(i)) != 1) continue;
    tbRGBColor* e = out + i;
    const unsigned char r = red[e->red], g = green[e->green], b = blue[e->blue];
    e->red = r;
    e->green = g;
    e->blue = b;
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
