#pragma once

#include <cstdint>
#include <vector>

#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbRGBColor.h"

namespace acolortest {

using V = std::vector<std::int32_t>;
using P = std::vector<const void*>;

// A table whose entry i is colour(i).
template <class F>
tbColorTable Table(F colour) {
  tbColorTable t(static_cast<std::int16_t>(72));
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c = colour(i);
    t.SetCTTable(static_cast<std::int16_t>(i), &c);
  }
  return t;
}

inline unsigned char B(int v) { return static_cast<unsigned char>(v); }

// All 256 entries different: entry i is (i, 255 - i, i * 7 mod 256).
inline tbColorTable DistinctTable() {
  return Table([](int i) { return tbRGBColor(B(i), B(255 - i), B(i * 7)); });
}
inline tbColorTable UniformTable(int r, int g, int b) {
  return Table([=](int) { return tbRGBColor(B(r), B(g), B(b)); });
}
inline tbColorTable GreyTable() {
  return Table([](int i) { return tbRGBColor(B(i), B(i), B(i)); });
}

// An area of 256 indices flagging first to last inclusive.
inline QvPal RangePal(int first, int last) {
  QvPal p;
  p.SetRange(B(first), B(last), 1);
  return p;
}

inline tbRGBColor Entry(tbColorTable* t, int i) {
  return *t->CTTable(static_cast<std::int16_t>(i));
}
inline tbRGBColor Entry(tbColorTable& t, int i) { return Entry(&t, i); }

// Fills every entry of an animation's output table with one marker colour.
template <class A>
void Mark(A& a, const tbRGBColor& marker) {
  tbRGBColor m = marker;
  for (int i = 0; i < 256; ++i) a.SetColor(static_cast<std::int16_t>(i), &m);
}

// Switches fault injection off for the scope (also when a test fails early).
struct NoFailures {
  NoFailures() { QvFailAllocation(0); }
  ~NoFailures() { QvFailAllocation(0); }
};

}  // namespace acolortest
