// API fuzzer: the input bytes decode into a sequence of calls on two cast
// stores, two layer stores, two frame animations and one colour animation of
// each kind, with the objects destroyed and made anew in any order, drawing
// into pixel maps, fitting, locks, copies, and allocation failures injected
// into single calls. The harness keeps to what a host must do (buffers as
// large as the sizes it passes, references removed from the layers before
// their cast store goes); anything else the library must survive.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "cast/QvMCastAnc.h"
#include "cast/QvMCastDft.h"
#include "layer/QvMLayer.h"
#include "player/QvMCastList.h"
#include "toolbox/QvPal.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbPicture.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbRect.h"
#include "toolbox/tbToolBox.h"

namespace {

std::uint32_t fakeMilliseconds = 0;
std::uint32_t FakeClock() { return fakeMilliseconds; }

// Reads the input; past its end every read gives 0.
class Bytes {
 public:
  Bytes(const std::uint8_t* d, std::size_t n) : data(d), size(n) {}
  bool More() const { return pos < size; }
  std::uint8_t U8() { return pos < size ? data[pos++] : 0; }
  std::uint16_t U16() { return static_cast<std::uint16_t>(U8() | (U8() << 8)); }
  std::uint32_t U32() { return static_cast<std::uint32_t>(U16()) | (std::uint32_t{U16()} << 16); }
  bool Bit() { return U8() & 1; }
  // Mostly small values, sometimes negative, rarely anything at all (large
  // sizes make large buffers, which slow the search down).
  std::int16_t Small() {
    const std::uint8_t b = U8();
    if (b < 6) return static_cast<std::int16_t>(U16());
    if (b < 72) return static_cast<std::int16_t>(static_cast<int>(b & 31) - 16);
    return static_cast<std::int16_t>(b & 31);
  }
  // A size of a frame or an image: like Small, but never so large that the
  // buffers made for it slow the search down.
  std::int16_t Size() {
    const std::uint8_t b = U8();
    if (b < 4) return static_cast<std::int16_t>(static_cast<int>(U16() % 801) - 400);
    if (b < 40) return static_cast<std::int16_t>(static_cast<int>(b & 7) - 4);
    return static_cast<std::int16_t>(b & 31);
  }
  // A place or anchor of a frame: like Small, but the far values stay within
  // a few thousand pixels, since the animation's area spans them and every
  // member showing it makes a world of that area.
  std::int16_t Coord() {
    const std::uint8_t b = U8();
    if (b < 6) return static_cast<std::int16_t>(static_cast<int>(U16() % 4097) - 2048);
    if (b < 72) return static_cast<std::int16_t>(static_cast<int>(b & 31) - 16);
    return static_cast<std::int16_t>(b & 31);
  }
  // A cast id: mostly 0 to 5, sometimes negative (a new member) or far off.
  std::int16_t Id() {
    const std::uint8_t b = U8();
    if (b < 200) return static_cast<std::int16_t>(b % 6);
    if (b < 240) return -1;
    return static_cast<std::int16_t>(U16());
  }
  std::int32_t Time() {
    const std::uint8_t b = U8();
    if (b < 220) return static_cast<std::int32_t>(b % 80) - 5;
    if (b < 240) return -1;
    return static_cast<std::int32_t>(U32());
  }
  // A zoom factor: the transformed image grows with it, so it stays modest.
  double Zoom() {
    static const double values[] = {1.0,  0.5, 2.0,  1.5, 0.25, 3.0, -1.0, 0.0,
                                    1e-9, 6.0, -0.5, 0.7, 1.25, 8.0, 1.0,  0.1};
    return values[U8() % 16];
  }
  double Real() {
    static const double values[] = {0.0,
                                    1.0,
                                    -1.0,
                                    0.5,
                                    2.0,
                                    1.5,
                                    0.25,
                                    3.0,
                                    -0.75,
                                    1e-9,
                                    40.0,
                                    0.7,
                                    1.25,
                                    -2.0,
                                    0.1,
                                    6.0,
                                    0.0,
                                    1.0,
                                    2.5,
                                    0.33,
                                    4.0,
                                    -0.5,
                                    0.9,
                                    1.1,
                                    1e300,
                                    -1e300,
                                    3.14159265358979,
                                    1.5707963267949,
                                    0.0,
                                    1.0,
                                    8.0,
                                    0.125};
    return values[U8() % 32];
  }

 private:
  const std::uint8_t* data;
  std::size_t size;
  std::size_t pos = 0;
};

unsigned char kNames[4][8] = {"alpha", "", "b", "member"};

struct World {
  std::unique_ptr<QvMCast> casts[2];
  std::unique_ptr<QvMLayer> layers[2];
  std::unique_ptr<QvAFrame> frames[2];
  std::unique_ptr<QvACycle> cycle;
  std::unique_ptr<QvAFlash> flash;
  std::unique_ptr<QvASwitch> switcher;
  std::unique_ptr<QvAFade> fade;
  QvMCastList dftList;  // destroyed after everything that refers to it
  int updateLocks[2] = {0, 0};

  static constexpr std::int16_t kPicW = 32, kPicH = 24;
  unsigned char picture[kPicW * kPicH];
  static constexpr std::int16_t kMapW = 48, kMapH = 40;
  unsigned char pixels[kMapW * kMapH];
  tbPixMap map;
  QvPal pals[3];
  tbColorTable table{tbColorTable::kStandard};

  World() : map(pixels, kMapW, tbRect(0, 0, kMapW, kMapH)) {
    for (int i = 0; i < kPicW * kPicH; ++i) picture[i] = static_cast<unsigned char>((i * 37) >> 3);
    std::memset(pixels, 0, sizeof pixels);
    pals[0].SetRange(0, 255, 1);
    pals[1].SetRange(10, 20, 1);
    pals[1].SetRange(30, 31, 1);
    pals[1].SetFlag(200, 1);
    pals[2].SetFlagNum(40);
    pals[2].SetRange(5, 39, 1);
    for (int i = 0; i < 256; ++i) {
      tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(i * 5),
                   static_cast<unsigned char>(255 - i));
      table.SetCTTable(static_cast<std::int16_t>(i), &c);
    }
    for (auto& c : casts) c.reset(new QvMCast);
    for (auto& l : layers) l.reset(new QvMLayer);
    for (auto& f : frames) f.reset(new QvAFrame);
    cycle.reset(new QvACycle);
    flash.reset(new QvAFlash);
    switcher.reset(new QvASwitch);
    fade.reset(new QvAFade);
  }

  QvMCast* Cast(Bytes& in) { return casts[in.U8() & 1].get(); }
  QvMLayer* Layers(Bytes& in) { return layers[in.U8() & 1].get(); }
  int FrameIndex(Bytes& in) { return in.U8() & 1; }
  unsigned char* Name(Bytes& in) {
    const std::uint8_t b = in.U8() % 5;
    return b == 4 ? nullptr : kNames[b];
  }
  QvPal* Pal(Bytes& in) {
    const std::uint8_t b = in.U8() % 4;
    return b == 3 ? nullptr : &pals[b];
  }
  QvAColor* Colour(int kind) {
    switch (kind) {
      case 0:
        return cycle.get();
      case 1:
        return flash.get();
      case 2:
        return switcher.get();
      default:
        return fade.get();
    }
  }
  // Calls f with the colour animation of the kind as its own class.
  template <class F>
  void WithKind(int kind, F f) {
    switch (kind) {
      case 0:
        return f(*cycle);
      case 1:
        return f(*flash);
      case 2:
        return f(*switcher);
      default:
        return f(*fade);
    }
  }
  QvMCastList* ColourList(int kind) {
    switch (kind) {
      case 0:
        return cycle.get();
      case 1:
        return flash.get();
      case 2:
        return switcher.get();
      default:
        return fade.get();
    }
  }
  tbRect Area(Bytes& in) {
    if (in.U8() < 200) return tbRect(0, 0, kMapW, kMapH);
    return tbRect(in.Small(), in.Small(), in.Small(), in.Small());
  }

  // The host removes a cast store's references from the layers before it
  // destroys the store.
  void ForgetCast(QvMCast* cast) {
    for (auto& l : layers) {
      if (!l) continue;
      for (std::int16_t i = 0; i < l->Count(); ++i) {
        for (int guard = 0; guard < 1000; ++guard) {
          QvMCast* c = nullptr;
          std::int16_t id = 0;
          bool found = false;
          for (std::int16_t n = 0; l->Get(i, n, &c, &id); ++n) {
            if (c == cast) {
              found = true;
              break;
            }
          }
          if (!found) break;
          l->DelCast(i, cast, id);
        }
      }
    }
  }

  void Destroy(std::uint8_t order) {
    QvFailAllocation(0);
    if (order & 1) {
      for (auto& f : frames) f.reset();
      cycle.reset();
      flash.reset();
      switcher.reset();
      fade.reset();
    }
    if (order & 2) {
      for (auto& l : layers) l.reset();
    }
    for (auto& c : casts) {
      if (c) ForgetCast(c.get());
      c.reset();
    }
    for (auto& l : layers) l.reset();
    for (auto& f : frames) f.reset();
    cycle.reset();
    flash.reset();
    switcher.reset();
    fade.reset();
  }
};

void CastOp(World& w, Bytes& in, std::uint8_t op, int nested = 0, QvMCast* locked = nullptr) {
  QvMCast* c = locked ? locked : w.Cast(in);
  const std::int16_t id = in.Id();
  switch (op % 28) {
    case 0:
      c->New(id, w.Name(in));
      break;
    case 1:
      c->New(w.Name(in));
      break;
    case 2:
      c->Del(id);
      break;
    case 3:
      c->Empty(id);
      break;
    case 4:
      if (in.U8() < 32) c->DelAll();
      break;
    case 5: {
      c->SetName(id, w.Name(in));
      unsigned char** h = nullptr;
      c->GetName(in.Id(), &h);
      QvFreeString(h);
      break;
    }
    case 6: {
      const std::int32_t s = in.Time(), e = in.Time();
      switch (in.U8() % 3) {
        case 0:
          c->SetStartEnd(id, s, e);
          break;
        case 1:
          c->SetStart(id, s);
          break;
        default:
          c->SetEnd(id, e);
      }
      c->Start(id);
      c->End(id);
      c->End();
      break;
    }
    case 7: {
      const int f = w.FrameIndex(in);
      const std::uint8_t how = in.U8();
      QvAFrame* anim = (how & 3) == 3 ? nullptr : w.frames[f].get();
      // A null list with the animation itself is how an animation detaches
      // itself; its list keeps the member, so a host never passes one.
      QvMCastList* list = (how & 4) && !anim ? nullptr : w.frames[f].get();
      if ((how & 0x18) == 0x18) {
        // A copy that a member holds, registered like any animation.
        anim = w.casts[f]->AFrame(in.Id());
        list = nullptr;
      }
      c->RegAFrame(id, anim, in.Time(), w.Name(in), list);
      break;
    }
    case 8: {
      const std::uint8_t how = in.U8();
      c->RegOrgCTable(id, (how & 1) ? nullptr : &w.table, w.Pal(in), w.Name(in));
      break;
    }
    case 9: {
      const std::int16_t count = static_cast<std::int16_t>(static_cast<int>(in.U8() % 8) - 1);
      QvMCastDft entries[6];
      for (auto& e : entries) e.pointA = tbPoint(in.Small(), in.Small());
      c->RegDft(id, in.Small(), count == 7 ? nullptr : entries, count > 6 ? 6 : count,
                static_cast<char>(in.U8()), w.Name(in), in.Bit() ? &w.dftList : nullptr);
      break;
    }
    case 10:
      c->RegScroll(id, static_cast<char>(in.U8() & 15), w.Name(in));
      break;
    case 11: {
      std::int16_t count = static_cast<std::int16_t>(static_cast<int>(in.U8() % 11) - 1);
      QvMCastAnc anc[9];
      for (auto& a : anc) {
        a.point = tbPoint(in.Small(), in.Small());
        a.flag = static_cast<char>(in.U8() % 4);
      }
      if (count > 9) count = 9;
      c->RegAnc(id, in.Bit() ? anc : nullptr, count, static_cast<char>(in.U8() % 5), w.Name(in));
      break;
    }
    case 12: {
      tbPoint p(in.Small(), in.Small());
      char flag = 0;
      switch (in.U8() % 14) {
        case 0:
          c->SetAnc(id, in.Small(), p, static_cast<char>(in.U8() % 3));
          break;
        case 1:
          c->OffsetAnc(id, in.Small(), in.Small());
          break;
        case 2:
          c->ResetAnc(id);
          break;
        case 3:
          c->InbetweenAnc(id, static_cast<char>(in.U8()));
          break;
        case 4:
          c->SetAncType(id, static_cast<char>(in.U8() % 5));
          break;
        case 5:
          c->SetAncOffset(id, in.Small());
          break;
        case 6:
          c->SetAncOffset(id, &p);
          break;
        case 7:
          c->SetAncStep(id, in.Real());
          break;
        case 8:
          c->SetAncCount(id, in.Real());
          break;
        case 9:
          c->SetAncSelectArea(id, in.Time(), in.Time());
          break;
        case 10:
          c->GetAnc(id, static_cast<std::int16_t>(in.Small()), &p, &flag);
          break;
        case 11:
          c->GetAnc(id, static_cast<std::int32_t>(in.Time()), &p, &flag);
          break;
        case 12: {
          double d = 0;
          std::int16_t n = 0;
          c->GetAncCount(id, in.Small(), &d);
          c->GetAncNum(id, &n);
          c->GetAncOffset(id, &n);
          c->GetAncStep(id, &d);
          std::int32_t a = 0, b = 0;
          c->GetAncSelectArea(id, &a, &b);
          break;
        }
        default:
          c->DelAnc(id);
      }
      break;
    }
    case 13: {
      double d = 0;
      std::int16_t h = 0, v = 0;
      switch (in.U8() % 6) {
        case 0:
          c->SetScrStepH(id, in.Real());
          break;
        case 1:
          c->SetScrStepV(id, in.Real());
          break;
        case 2:
          c->SetScrCountH(id, in.Real());
          break;
        case 3:
          c->SetScrCountV(id, in.Real());
          break;
        case 4:
          c->GetScrCountH(id, in.Small(), &d);
          c->GetScrCountV(id, in.Small(), &d);
          c->GetScrStepH(id, &d);
          c->GetScrStepV(id, &d);
          break;
        default:
          c->GetScroll(id, in.Time(), &h, &v);
      }
      break;
    }
    case 14: {
      const std::uint8_t how = in.U8();
      const char kind = static_cast<char>(static_cast<int>(how % 6) - 1);
      // Sometimes an animation of another kind, which gives no copy; the list
      // is the one of the kind's own animation, as a host passes it.
      const int from = (how >> 3) & 3;
      QvAColor* anim = (how & 0x80) ? nullptr : w.Colour(from);
      QvMCastList* list =
          ((how & 0x40) && from != kind) || kind < 0 || kind > 3 ? nullptr : w.ColourList(kind);
      c->RegAColor(id, anim, kind, in.Time(), w.Name(in), list);
      break;
    }
    case 15:
      switch (in.U8() % 6) {
        case 0:
          c->DelAColor(id, static_cast<char>(static_cast<int>(in.U8() % 6) - 1));
          break;
        case 1:
          c->DelAFrame(id);
          break;
        case 2:
          c->DelOrgCTable(id);
          break;
        case 3:
          c->DelDft(id);
          break;
        case 4:
          c->DelScroll(id, static_cast<char>(in.U8() & 15));
          break;
        default: {
          std::int16_t param = 0, count = 0;
          QvMCastDft* entries = nullptr;
          char flag = 0, dirs = 0;
          if (c->GetDft(id, &param, &entries, &count, &flag) && count > 0) {
            volatile char last = entries[count - 1].flag;
            (void)last;
          }
          c->IsScroll(id, &dirs);
          c->IsDft(id);
          c->IsAnc(id);
          c->IsAColor(id);
          c->ACycle(id);
          c->AFlash(id);
          c->ASwitch(id);
          c->AFade(id);
          c->IsScrollLeft(id);
          c->IsScrollDown(id);
        }
      }
      break;
    case 16:
    case 17: {
      tbRect area = w.Area(in);
      c->DrawPicture(id, in.Time(), &w.map, &area);
      break;
    }
    case 18: {
      tbRect area = w.Area(in);
      tbRect result;
      tbPoint pt(in.Small(), in.Small());
      const std::int32_t t = in.Time();
      const char mode = static_cast<char>(in.U8() % 4);
      tbColorTable* ct = c->CTable(id, t);
      if (ct) {
        volatile unsigned char r = ct->CTTable(255)->red;
        (void)r;
      }
      c->GetAFrameArea(id, t, &area, mode, &result, &pt);
      c->PtInAFrame(&pt, id, t, &area, mode);
      break;
    }
    case 19: {
      const std::int16_t iw = static_cast<std::int16_t>(static_cast<int>(in.U8() % 70) - 3);
      const std::int16_t ih = static_cast<std::int16_t>(static_cast<int>(in.U8() % 70) - 3);
      tbPicture* p = c->Icon(id, iw, ih);
      if (p && p->Pic()) {
        volatile unsigned char px = p->Pixel(static_cast<std::int16_t>(p->Width() - 1),
                                             static_cast<std::int16_t>(p->Height() - 1));
        (void)px;
      }
      break;
    }
    case 20:
      c->Dup(id, in.Time(), w.Name(in), w.Cast(in), in.Id());
      break;
    case 21:
      c->Backup(id, w.Cast(in));
      break;
    case 22:
      c->Restore(w.Cast(in));
      break;
    case 23:
      // The lock is a lookup shortcut for a run of calls on one member; the
      // host unlocks again before it turns to anything else (an animation
      // that passes itself on meanwhile would reach the locked member).
      c->Lock(id);
      if (nested < 2) {
        const std::uint8_t sub = in.U8();
        if (sub % 28 != 26) CastOp(w, in, sub, nested + 1, c);
      }
      c->Unlock();
      break;
    case 24: {
      std::uint32_t f = 0;
      c->SetActFlag(id, in.U32());
      c->SetShowFlag(id, in.U32());
      c->GetActFlag(id, &f);
      c->GetShowFlag(id, &f);
      c->ResetActFlag(id);
      c->ResetShowFlag(id);
      c->ActFlag(id);
      break;
    }
    case 25:
      c->Count();
      c->ID2Index(id);
      c->Index2ID(in.Small());
      c->GetNewID();
      c->AFrame(id);
      break;
    case 26: {
      // The store is destroyed and made anew.
      const int i = (c == w.casts[0].get()) ? 0 : 1;
      if (in.U8() < 24 && !locked) {
        w.ForgetCast(c);
        w.casts[i].reset(new QvMCast);
      }
      break;
    }
    default:
      c->Load(0);
      c->Save(0);
      c->Save(0, id);
      c->SaveEnd(0);
      c->SaveTerm(0);
  }
}

void LayerOp(World& w, Bytes& in, std::uint8_t op) {
  QvMLayer* l = w.Layers(in);
  const std::int16_t index = static_cast<std::int16_t>(static_cast<int>(in.U8() % 6) - 1);
  switch (op % 12) {
    case 0:
      l->New(index, in.Small());
      break;
    case 1:
      switch (in.U8() % 4) {
        case 0:
          l->Del(index);
          break;
        case 1:
          l->Empty(index);
          break;
        case 2:
          if (in.U8() < 40) l->DelAll();
          break;
        default:
          l->ID2Index(in.Small());
          l->Index2ID(index);
          l->Count();
      }
      break;
    case 2:
    case 3:
      l->RegCast(index, w.Cast(in), in.Id(), static_cast<char>(static_cast<int>(in.U8() % 7) - 2));
      break;
    case 4:
      if (in.Bit()) {
        l->DelCast(index, w.Cast(in), in.Id());
      } else {
        l->DelCast(w.Cast(in), in.Id());
      }
      break;
    case 5:
      l->MoveCast(index, w.Cast(in), in.Id(), static_cast<std::int16_t>(in.U8() % 5));
      break;
    case 6:
      l->Copy(index, w.Layers(in), static_cast<std::int16_t>(static_cast<int>(in.U8() % 5) - 1));
      break;
    case 7:
      l->FitCast(index, w.Cast(in), in.Id(), static_cast<char>(static_cast<int>(in.U8() % 7) - 2));
      break;
    case 8: {
      QvMCast* c = nullptr;
      std::int16_t id = 0;
      l->Get(index, in.Small(), &c, &id);
      int n = 0;
      for (char ok = l->GetFirst(&c, &id); ok && n < 200; ok = l->GetNext(&c, &id)) ++n;
      l->End();
      break;
    }
    case 9: {
      tbRect area = w.Area(in);
      l->DrawPicture(in.Time(), &w.map, &area);
      break;
    }
    case 10: {
      unsigned char data[64];
      std::memset(data, in.U8(), sizeof data);
      unsigned char* got = nullptr;
      std::uint16_t size = 0;
      switch (in.U8() % 3) {
        case 0:
          l->NewComment(static_cast<std::uint16_t>(in.U8() % 80));
          break;
        case 1:
          l->SetComment(in.Bit() ? data : nullptr, static_cast<std::uint16_t>(in.U8() % 64));
          break;
        default:
          l->DelComment();
      }
      l->GetComment(&got, &size);
      if (got && size) {
        volatile unsigned char last = got[size - 1];
        (void)last;
      }
      break;
    }
    default: {
      const int i = (l == w.layers[0].get()) ? 0 : 1;
      if (in.U8() < 40) w.layers[i].reset(new QvMLayer);
      l = nullptr;
    }
  }
}

void FrameOp(World& w, Bytes& in, std::uint8_t op) {
  const int fi = w.FrameIndex(in);
  QvAFrame* f = w.frames[fi].get();
  const std::int16_t index = static_cast<std::int16_t>(static_cast<int>(in.U8() % 6) - 1);
  switch (op % 16) {
    case 0:
    case 1:
      f->Reg(index, in.Coord(), in.Coord(), in.Size(), in.Size(), in.Coord(), in.Coord(),
             in.Small());
      break;
    case 2:
      f->Reg(index, w.frames[in.U8() & 1].get(), in.Small());
      break;
    case 3:
      switch (in.U8() % 9) {
        case 0:
          f->Set(index, in.Coord(), in.Coord(), in.Size(), in.Size(), in.Coord(), in.Coord());
          break;
        case 1:
          f->SetPos(index, in.Coord(), in.Coord());
          break;
        case 2:
          f->SetSize(index, in.Size(), in.Size());
          break;
        case 3:
          f->SetAnchor(index, in.Coord(), in.Coord());
          break;
        case 4:
          f->SetInterval(index, in.Small());
          break;
        case 5:
          f->SetZoom(index, in.Zoom(), in.Zoom());
          break;
        case 6:
          f->SetRot(index, in.Real());
          break;
        case 7:
          f->Activate(index);
          break;
        default:
          f->Deactivate(index);
      }
      break;
    case 4:
      switch (in.U8() % 5) {
        case 0:
          f->LockA(index);
          break;
        case 1:
          f->LockM(in.Small());
          break;
        case 2:
          f->Unlock();
          break;
        case 3:
          if (w.updateLocks[fi] < 100) {
            f->LockUpdateMCast();
            ++w.updateLocks[fi];
          }
          break;
        default:
          f->UnlockUpdateMCast();
          if (w.updateLocks[fi] > 0) --w.updateLocks[fi];
      }
      break;
    case 5:
      if (in.U8() < 200) {
        f->Del(index);
      } else {
        f->DelAll();
      }
      break;
    case 6:
    case 7: {
      const std::int16_t sw = static_cast<std::int16_t>(in.U8() % (World::kPicW + 1));
      const std::int16_t sh = static_cast<std::int16_t>(in.U8() % (World::kPicH + 1));
      switch (in.U8() % 4) {
        case 0:
          f->SetOrgImage(index, w.picture, World::kPicW, sw, sh);
          break;
        case 1: {
          // The exact-size form reads width x height bytes.
          const std::int16_t fw = in.Size(), fh = in.Size();
          std::vector<unsigned char> buf(static_cast<std::size_t>(fw > 0 && fh > 0 ? fw * fh : 1),
                                         in.U8());
          f->SetOrgImage(index, buf.data(), fw, fh);
          break;
        }
        case 2:
          f->SetImage(index, in.Bit() ? w.picture : nullptr, World::kPicW, sw, sh);
          break;
        default: {
          const std::int16_t iw = in.Size(), ih = in.Size();
          const std::size_t n = static_cast<std::size_t>(iw > 0 && ih > 0 ? iw * ih : 1);
          std::vector<unsigned char> image(n, in.U8()), mask(n);
          for (std::size_t i = 0; i < n; ++i) mask[i] = (i % 3) ? 255 : 0;
          f->SetImage(index, image.data(), mask.data(), iw, ih, in.Coord(), in.Coord());
        }
      }
      break;
    }
    case 8: {
      std::int16_t a = 0, b = 0, cc = 0, d = 0, e = 0, g = 0, h = 0;
      double x = 0, y = 0, z = 0;
      unsigned char* image = nullptr;
      unsigned char* mask = nullptr;
      switch (in.U8() % 7) {
        case 0:
          f->GetAFrame(index, &a, &b, &cc, &d, &e, &g, &h, &x, &y, &z);
          break;
        case 1:
          f->GetMFrame(in.Small(), &a, &b, &cc, &d, &e, &g, &h, &x, &y, &z);
          break;
        case 2:
          f->GetMFrame(&a, &b, &cc, &d, &e, &g, &h, &x, &y, &z);
          break;
        case 3:
          if (f->GetOrgImage(index, &image, &a, &b) && image && a > 0 && b > 0) {
            volatile unsigned char last = image[a * b - 1];
            (void)last;
          }
          break;
        case 4:
          if (f->GetAImage(index, &image, &mask, &a, &b, &cc, &d) && image && a > 0 && b > 0) {
            volatile unsigned char last = image[a * b - 1] ^ mask[a * b - 1];
            (void)last;
          }
          break;
        case 5:
          f->GetMImage(in.Small(), &image, &mask, &a, &b, &cc, &d);
          f->GetMImage(&image, &mask, &a, &b, &cc, &d);
          break;
        default:
          f->GetArea(&a, &b, &cc, &d);
          f->CountAFrame();
          f->CountMFrame();
          f->IsActive(index);
      }
      break;
    }
    case 9: {
      const std::int16_t iw = static_cast<std::int16_t>(static_cast<int>(in.U8() % 26) - 1);
      const std::int16_t ih = static_cast<std::int16_t>(static_cast<int>(in.U8() % 26) - 1);
      const std::int16_t row = static_cast<std::int16_t>(iw > 0 ? iw + (in.U8() & 3) : 4);
      std::vector<unsigned char> dst(static_cast<std::size_t>(row) *
                                     static_cast<std::size_t>(ih > 0 ? ih : 1));
      f->GetIcon(index, dst.data(), row, iw, ih);
      break;
    }
    case 10:
    case 11: {
      // Into a buffer, by index or clock position.
      const std::int16_t dw = static_cast<std::int16_t>(in.U8() % (World::kMapW + 1));
      const std::int16_t dh = static_cast<std::int16_t>(in.U8() % (World::kMapH + 1));
      QvPal* pal = w.Pal(in);
      const std::int16_t fill = static_cast<std::int16_t>(static_cast<int>(in.U8()) - 1);
      const char wrap = static_cast<char>(in.U8() % 9);
      tbRect frameRect;
      const std::int16_t x = in.Small(), y = in.Small(), sx = in.Small(), sy = in.Small();
      switch (in.U8() % 3) {
        case 0:
          f->DrawAImage(index, w.pixels, World::kMapW, dw, dh, x, y, pal, fill, wrap, sx, sy,
                        &frameRect);
          break;
        case 1:
          f->DrawMImage(in.Small(), w.pixels, World::kMapW, dw, dh, x, y, pal, fill, wrap, sx, sy,
                        &frameRect);
          break;
        default:
          f->DrawMImage(w.pixels, World::kMapW, dw, dh, x, y, pal, fill, wrap, sx, sy, &frameRect);
      }
      break;
    }
    case 12: {
      // Into an off-screen world, then masked into the pixel map.
      tbGWorld* world = nullptr;
      tbRect bounds(0, 0, 1 + in.U8() % 40, 1 + in.U8() % 30);
      if (!qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, &w.table)) break;
      QvPal* pal = w.Pal(in);
      const std::int16_t fill = static_cast<std::int16_t>(static_cast<int>(in.U8()) - 1);
      const char wrap = static_cast<char>(in.U8() % 5);
      const std::int16_t x = in.Small(), y = in.Small(), sx = in.Small(), sy = in.Small();
      const std::int16_t dx = in.Small(), dy = in.Small();
      if (in.Bit()) {
        f->DrawAPicture(index, world, x, y, pal, fill, wrap, sx, sy, &w.map, dx, dy);
      } else {
        f->DrawMPicture(in.Small(), world, x, y, pal, fill, wrap, sx, sy, &w.map, dx, dy);
      }
      qv::tb.DisposeGWorld(world);
      break;
    }
    case 13: {
      QvAFrame* other = w.frames[in.U8() & 1].get();
      switch (in.U8() % 3) {
        case 0:
          f->Dup(other);
          break;
        case 1:
          f->Backup(other);
          break;
        default:
          f->Restore(other);
      }
      break;
    }
    case 14:
      switch (in.U8() % 10) {
        case 0:
          f->UpdateMCast();
          break;
        case 1:
          f->DelFromMCast();
          break;
        case 2:
          f->SetSpeed(in.Small());
          break;
        case 3:
          f->SetMode(static_cast<char>(in.U8() % 4));
          break;
        case 4:
          f->Play(in.Small());
          break;
        case 5:
          f->Pause();
          break;
        case 6:
          f->Stop();
          break;
        case 7:
          f->Step(in.Small());
          break;
        case 8:
          f->SetCur(in.Time());
          break;
        default:
          f->Cur();
          f->Next();
      }
      break;
    default:
      if (in.U8() < 40) {
        w.frames[fi].reset(new QvAFrame);
        w.updateLocks[fi] = 0;
      }
  }
}

void ColourOp(World& w, Bytes& in, std::uint8_t op) {
  const int kind = in.U8() % 4;
  QvAColor* a = w.Colour(kind);
  tbColorTable src(w.table);
  switch (op % 10) {
    case 0:
      a->RegArea(w.Pal(in));
      break;
    case 1:
      switch (kind) {
        case 0:
          w.cycle->SetMode(static_cast<char>(in.U8() % 4));
          break;
        case 1:
          w.flash->SetSpeed(in.Small());
          break;
        case 2: {
          tbColorTable t(w.table);
          t.SetCTSize(static_cast<std::int16_t>(in.U8()));
          w.switcher->RegCTable(in.Small(), in.Bit() ? &t : nullptr);
          break;
        }
        default:
          if (in.Bit()) {
            w.fade->RegColor(tbRGBColor(in.U8(), in.U8(), in.U8()));
          } else {
            w.fade->RegColor(in.U16(), in.U16(), in.U16());
          }
          w.fade->SetCount(in.Small());
      }
      break;
    case 2:
      w.switcher->DelCTable(in.Small());
      break;
    case 3: {
      tbColorTable* t = a->CTable(in.Small(), &src);
      if (t) {
        volatile unsigned char r = t->CTTable(255)->red;
        (void)r;
      }
      a->CTable(&src);
      a->AreaFlag(in.U8());
      a->AreaNum();
      a->Error();
      break;
    }
    case 4: {
      tbRGBColor c(in.U8(), in.U8(), in.U8());
      a->SetColor(in.Small(), &c);
      a->SetCur(in.Time());
      a->Count();
      break;
    }
    case 5:
      // A copy into a fresh animation and into the host's own.
      w.WithKind(kind, [&](auto& anim) {
        std::remove_reference_t<decltype(anim)> other;
        anim.Dup(&other);
        if (in.Bit()) other.Dup(&anim);
      });
      break;
    case 6:
      w.WithKind(kind, [](auto& anim) { anim.UpdateMCast(); });
      break;
    case 7:
      w.WithKind(kind, [](auto& anim) { anim.DelFromMCast(); });
      break;
    case 8:
      a->SetMode(static_cast<char>(in.U8() % 4));
      a->SetSpeed(in.Small());
      if (in.Bit()) a->Play(in.Small());
      break;
    default:
      if (in.U8() < 40) {
        switch (kind) {
          case 0:
            w.cycle.reset(new QvACycle);
            break;
          case 1:
            w.flash.reset(new QvAFlash);
            break;
          case 2:
            w.switcher.reset(new QvASwitch);
            break;
          default:
            w.fade.reset(new QvAFade);
        }
      }
  }
}

// QV_FUZZ_TRACE=1 in the environment prints the decoded calls' opcodes;
// QV_FUZZ_FAULTS=0 leaves out the injected allocation failures.
const bool trace = std::getenv("QV_FUZZ_TRACE") != nullptr;
const bool faults = [] {
  const char* v = std::getenv("QV_FUZZ_FAULTS");
  return !v || std::strcmp(v, "0") != 0;
}();

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QvFailAllocation(0);
  fakeMilliseconds = 0;
  QvSetTickSource(FakeClock);
  Bytes in(data, size);
  const std::uint8_t destroyOrder = in.U8();
  {
    World w;
    for (int steps = 0; in.More() && steps < 256; ++steps) {
      const std::uint8_t op = in.U8();
      const std::uint8_t arg = in.U8();
      if (trace) {
        static const char* const groups[] = {"cast",  "cast",   "cast",  "layer", "frame",
                                             "frame", "colour", "clock", "fault"};
        std::fprintf(stderr, "%s %d\n", groups[op % 9], arg);
      }
      switch (op % 9) {
        case 0:
        case 1:
        case 2:
          CastOp(w, in, arg);
          break;
        case 3:
          LayerOp(w, in, arg);
          break;
        case 4:
        case 5:
          FrameOp(w, in, arg);
          break;
        case 6:
          ColourOp(w, in, arg);
          break;
        case 7:
          fakeMilliseconds += static_cast<std::uint32_t>(arg) * 17u;
          break;
        default:
          // The allocation numbered arg (counted from here) fails, within
          // the next few calls.
          if (faults) QvFailAllocation(arg % 64 + 1);
          continue;
      }
      QvFailAllocation(0);
    }
    w.Destroy(destroyOrder);
  }
  QvFailAllocation(0);
  QvSetTickSource(nullptr);
  return 0;
}
