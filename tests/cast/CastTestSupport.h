#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "acolor/QvAFade.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "player/QvMCastList.h"
#include "tests/acolor/AColorTestSupport.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbToolBox.h"

namespace casttest {

using acolortest::GreyTable;   // entry i is (i, i, i)
using acolortest::NoFailures;  // fault injection off for the test and after it
using acolortest::RangePal;    // a palette area holding the indices first to last

// Calls f with the k-th allocation made failing; injection is off afterwards.
template <class F>
auto FailAt(int k, F f) -> decltype(f()) {
  NoFailures off;
  QvFailAllocation(k);
  return f();
}

// Several numbers compared at once: EXPECT_EQ((Vals{a, b}), (Vals{1, 2})).
struct Vals {
  template <class... T>
  Vals(T... v) : v{static_cast<double>(v)...} {}
  bool operator==(const Vals& o) const { return v == o.v; }
  friend std::ostream& operator<<(std::ostream& os, const Vals& x) {
    for (double d : x.v) os << d << " ";
    return os;
  }
  std::vector<double> v;
};

inline std::int16_t S(int v) { return static_cast<std::int16_t>(v); }
inline unsigned char* Txt(const char* s) {
  return reinterpret_cast<unsigned char*>(const_cast<char*>(s));
}

// The member's name, "<none>" without one, "<absent>" when GetName fails.
inline std::string NameOf(QvMCast& cast, std::int16_t id) {
  unsigned char** h = nullptr;
  if (!cast.GetName(id, &h)) return "<absent>";
  std::string s = h ? reinterpret_cast<const char*>(*h) : "<none>";
  QvFreeString(h);
  return s;
}

// The number of pairs in a list; with cast given, whether (cast, id) is among them.
inline int ListSize(QvMCastList& list, QvMCast* cast = nullptr, std::int16_t id = 0) {
  QvMCast* c = nullptr;
  std::int16_t i = 0;
  int n = 0, found = 0;
  for (; list.Get(S(n), &c, &i); ++n) found += c == cast && i == id;
  return cast ? found : n;
}

// A cast store that lets tests look at its records and private helpers.
class CastProbe : public QvMCast {
 public:
  QvMCastInfo* Rec(std::int16_t id) {
    for (QvMCastInfo* p = head; p; p = p->next)
      if (p->id == id) return p;
    return nullptr;
  }
  QvMCastInfo* Head() { return head; }
  QvMCastInfo* CurInfo() { return curInfo; }
  char LockFlag() { return lockFlag; }
  tbColorTable& Work() { return workCTable; }
  char Fold(std::int16_t id, std::int16_t* k) { return localGetAnc(Rec(id), k); }
  void Settle(std::int16_t id) { localSettleOrgGWorld(Rec(id)); }
  // The ids in list order; {-99} when the links disagree either way.
  std::vector<std::int16_t> Ids() {
    std::vector<std::int16_t> ids;
    QvMCastInfo* prev = nullptr;
    for (QvMCastInfo* p = head; p; prev = p, p = p->next) {
      if (p->prev != prev) return {-99};
      ids.push_back(p->id);
    }
    return ids;
  }
};

// The usual test: fault injection off and one store to work on.
struct CastTest : testing::Test {
  NoFailures guard;
  CastProbe cast;
};

// Pixel (x, y) of frame f of the test animations: 10 11 12 13 / 20 21 22 23, plus 100 f.
inline unsigned char FramePixel(int f, int x, int y) {
  return static_cast<unsigned char>(10 * (y + 1) + x + 100 * f);
}

// A frame animation with one frame per interval, each a w x h image anchored at
// (ax, ay) with a full mask.
inline std::unique_ptr<QvAFrame> MakeAnim(std::initializer_list<int> intervals, int w = 4,
                                          int h = 2, int ax = 2, int ay = 1) {
  auto anim = std::make_unique<QvAFrame>();
  int f = 0;
  for (int interval : intervals) {
    EXPECT_EQ(anim->Reg(S(f), S(0), S(0), S(w), S(h), S(ax), S(ay), S(interval)), f);
    std::vector<unsigned char> image(static_cast<size_t>(w * h)), mask(image.size(), 255);
    for (int i = 0; i < w * h; ++i) image[static_cast<size_t>(i)] = FramePixel(f, i % w, i / w);
    EXPECT_EQ(anim->SetImage(S(f), image.data(), mask.data(), S(w), S(h), S(-ax), S(-ay)), 1);
    ++f;
  }
  return anim;
}

// A fade of the indices 1 to 3 toward red over 30 frames.
inline std::unique_ptr<QvAFade> MakeFade() {
  auto fade = std::make_unique<QvAFade>();
  QvPal pal = RangePal(1, 3);
  fade->RegArea(&pal);
  fade->RegColor(tbRGBColor(255, 0, 0));
  return fade;
}

// An 8-bit host pixel buffer with its pixel map and its whole area.
struct Screen {
  Screen(int w, int h, unsigned char fill = 0)
      : width(w),
        pixels(static_cast<size_t>(w * h), fill),
        pixMap(pixels.data(), S(w), {0, 0, w, h}),
        area(0, 0, w, h) {}
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  unsigned char At(int x, int y) const { return pixels[static_cast<size_t>(y * width + x)]; }
  int CountNot(unsigned char v) const {
    return static_cast<int>(pixels.size()) -
           static_cast<int>(std::count(pixels.begin(), pixels.end(), v));
  }
  void Fill(unsigned char v) { std::fill(pixels.begin(), pixels.end(), v); }
  int width;
  std::vector<unsigned char> pixels;
  tbPixMap pixMap;
  tbRect area;
};

}  // namespace casttest
