#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbRGBColor.h"

namespace acolortest {

using V = std::vector<std::int32_t>;
using P = std::vector<const void*>;

inline unsigned char B(int v) { return static_cast<unsigned char>(v); }

// A table whose entry i is (r(i), g(i), b(i)), each taken to 8 bits.
template <class F>
tbColorTable Table(F rgb) {
  tbColorTable t(tbColorTable::kStandard);
  for (int i = 0; i < 256; ++i) {
    const V c = rgb(i);
    tbRGBColor e(B(c[0]), B(c[1]), B(c[2]));
    t.SetCTTable(static_cast<std::int16_t>(i), &e);
  }
  return t;
}
// All 256 entries different: entry i is (i, 255 - i, i * 7 mod 256).
inline tbColorTable DistinctTable() {
  return Table([](int i) { return V{i, 255 - i, i * 7}; });
}
inline tbColorTable UniformTable(int r, int g, int b) {
  return Table([=](int) { return V{r, g, b}; });
}
inline tbColorTable GreyTable() {
  return Table([](int i) { return V{i, i, i}; });
}

// An area of 256 indices flagging first to last inclusive.
inline QvPal RangePal(int first, int last) {
  QvPal p;
  p.SetRange(B(first), B(last), 1);
  return p;
}

// A random area: runs of flagged indices of random lengths, covering a
// random count of indices (256 half of the time).
inline QvPal RandomPal(std::mt19937& rng) {
  QvPal p;
  for (int i = 0; i < 256;) {
    const int run = static_cast<int>(rng() % 24) + 1;
    if (rng() % 2) p.SetRange(B(i), B(i + run > 256 ? 255 : i + run - 1), 1);
    i += run;
  }
  if (rng() % 2) p.SetFlagNum(static_cast<std::int16_t>(rng() % 257));
  return p;
}
// A table of random colours.
inline tbColorTable RandomTable(std::mt19937& rng) {
  return Table([&](int) { return V{int(rng()), int(rng()), int(rng())}; });
}

inline tbRGBColor Entry(tbColorTable* t, int i) {
  return *t->CTTable(static_cast<std::int16_t>(i));
}
inline tbRGBColor Entry(tbColorTable& t, int i) { return Entry(&t, i); }

// Fills every entry of an animation's output table with one marker colour.
template <class A>
void Mark(A& a, tbRGBColor m) {
  for (int i = 0; i < 256; ++i) a.SetColor(static_cast<std::int16_t>(i), &m);
}

// Switches fault injection off for the scope (also when a test fails early).
struct NoFailures {
  NoFailures() { QvFailAllocation(0); }
  ~NoFailures() { QvFailAllocation(0); }
};

}  // namespace acolortest
