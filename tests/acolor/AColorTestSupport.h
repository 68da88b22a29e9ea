#pragma once

#include <cstdint>

#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbRGBColor.h"

namespace acolortest {

// A source table whose 256 entries are all different: entry i is
// (i, 255 - i, i * 7 mod 256).
inline tbColorTable DistinctTable() {
  tbColorTable t(static_cast<std::int16_t>(72));
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(255 - i),
                 static_cast<unsigned char>((i * 7) & 0xFF));
    t.SetCTTable(static_cast<std::int16_t>(i), &c);
  }
  return t;
}

// A table with every entry set to one colour.
inline tbColorTable UniformTable(unsigned char r, unsigned char g, unsigned char b) {
  tbColorTable t(static_cast<std::int16_t>(72));
  tbRGBColor c(r, g, b);
  for (int i = 0; i < 256; ++i) t.SetCTTable(static_cast<std::int16_t>(i), &c);
  return t;
}

// A table of greys: entry i is (i, i, i).
inline tbColorTable GreyTable() {
  tbColorTable t(static_cast<std::int16_t>(72));
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(i),
                 static_cast<unsigned char>(i));
    t.SetCTTable(static_cast<std::int16_t>(i), &c);
  }
  return t;
}

// An area of 256 indices flagging first to last inclusive.
inline QvPal RangePal(int first, int last) {
  QvPal p;
  p.SetRange(static_cast<unsigned char>(first), static_cast<unsigned char>(last), 1);
  return p;
}

inline tbRGBColor Entry(tbColorTable* t, int i) {
  return *t->CTTable(static_cast<std::int16_t>(i));
}

inline tbRGBColor Entry(tbColorTable& t, int i) { return *t.CTTable(static_cast<std::int16_t>(i)); }

// Switches fault injection off for the scope (also when a test fails early).
struct NoFailures {
  NoFailures() { QvFailAllocation(0); }
  ~NoFailures() { QvFailAllocation(0); }
};

}  // namespace acolortest
