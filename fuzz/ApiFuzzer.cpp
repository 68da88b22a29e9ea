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
    // clang-format off
    static const double values[] = {
        0.0, 1.0, -1.0, 0.5, 2.0, 1.5, 0.25, 3.0, -0.75, 1e-9, 40.0, 0.7, 1.25, -2.0, 0.1, 6.0,
        0.0, 1.0, 2.5, 0.33, 4.0, -0.5, 0.9, 1.1, 1e300, -1e300, 3.14159265358979,
        1.5707963267949, 0.0, 1.0, 8.0, 0.125};
    // clang-format on
    return values[U8() % 32];
  }

 private:
  const std::uint8_t* data;
  std::size_t size;
  std::size_t pos = 0;
};

// Calls the (k mod count)-th of the functions.
template <class... F>
void Pick(unsigned k, F&&... f) {
  unsigned i = 0;
  k %= sizeof...(F);
  ((i++ == k ? (void)f() : (void)0), ...);
}

// Reads the last byte of a buffer the library handed out, so that the
// sanitizer sees whether all of it is there.
template <class T>
void Touch(const T* p, long n) {
  if (p && n > 0) {
    volatile T last = p[n - 1];
    (void)last;
  }
}

template <class T>
void Renew(std::unique_ptr<T>& p) {
  p.reset(new T);
}

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
    pals[1].SetRange(10, 20, 1), pals[1].SetRange(30, 31, 1), pals[1].SetFlag(200, 1);
    pals[2].SetFlagNum(40), pals[2].SetRange(5, 39, 1);
    for (int i = 0; i < 256; ++i) {
      tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(i * 5),
                   static_cast<unsigned char>(255 - i));
      table.SetCTTable(static_cast<std::int16_t>(i), &c);
    }
    for (auto& c : casts) Renew(c);
    for (auto& l : layers) Renew(l);
    for (auto& f : frames) Renew(f);
    for (int k = 0; k < 4; ++k) WithKind(k, [](auto& p) { Renew(p); });
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
  // Calls f with the owner of the colour animation of the kind (0 to 3).
  template <class F>
  void WithKind(int kind, F f) {
    if (kind == 0) return f(cycle);
    if (kind == 1) return f(flash);
    if (kind == 2) return f(switcher);
    return f(fade);
  }
  QvAColor* Colour(int kind) {
    QvAColor* a = nullptr;
    WithKind(kind, [&](auto& p) { a = p.get(); });
    return a;
  }
  QvMCastList* ColourList(int kind) {
    QvMCastList* l = nullptr;
    WithKind(kind, [&](auto& p) { l = p.get(); });
    return l;
  }
  void ResetColours() {
    for (int k = 0; k < 4; ++k) WithKind(k, [](auto& p) { p.reset(); });
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
          for (std::int16_t n = 0; !found && l->Get(i, n, &c, &id); ++n) found = c == cast;
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
      ResetColours();
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
    ResetColours();
  }
};

void CastOp(World& w, Bytes& in, std::uint8_t op, int nested = 0, QvMCast* locked = nullptr) {
  QvMCast* c = locked ? locked : w.Cast(in);
  const std::int16_t id = in.Id();
  auto draw = [&] {
    tbRect area = w.Area(in);
    c->DrawPicture(id, in.Time(), &w.map, &area);
  };
  Pick(
      op,                               //
      [&] { c->New(id, w.Name(in)); },  //
      [&] { c->New(w.Name(in)); },      //
      [&] { c->Del(id); },              //
      [&] { c->Empty(id); },            //
      [&] {
        if (in.U8() < 32) c->DelAll();
      },
      [&] {
        c->SetName(id, w.Name(in));
        unsigned char** h = nullptr;
        c->GetName(in.Id(), &h);
        QvFreeString(h);
      },
      [&] {
        const std::int32_t s = in.Time(), e = in.Time();
        Pick(
            in.U8(), [&] { c->SetStartEnd(id, s, e); }, [&] { c->SetStart(id, s); },
            [&] { c->SetEnd(id, e); });
        c->Start(id), c->End(id), c->End();
      },
      [&] {
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
      },
      [&] {
        const std::uint8_t how = in.U8();
        c->RegOrgCTable(id, (how & 1) ? nullptr : &w.table, w.Pal(in), w.Name(in));
      },
      [&] {
        const std::int16_t count = static_cast<std::int16_t>(static_cast<int>(in.U8() % 8) - 1);
        QvMCastDft entries[6];
        for (auto& e : entries) e.pointA = tbPoint(in.Small(), in.Small());
        c->RegDft(id, in.Small(), count == 7 ? nullptr : entries, count > 6 ? 6 : count,
                  static_cast<char>(in.U8()), w.Name(in), in.Bit() ? &w.dftList : nullptr);
      },
      [&] { c->RegScroll(id, static_cast<char>(in.U8() & 15), w.Name(in)); },
      [&] {
        std::int16_t count = static_cast<std::int16_t>(static_cast<int>(in.U8() % 11) - 1);
        QvMCastAnc anc[9];
        for (auto& a : anc) {
          a.point = tbPoint(in.Small(), in.Small());
          a.flag = static_cast<char>(in.U8() % 4);
        }
        if (count > 9) count = 9;
        c->RegAnc(id, in.Bit() ? anc : nullptr, count, static_cast<char>(in.U8() % 5), w.Name(in));
      },
      [&] {
        tbPoint p(in.Small(), in.Small());
        char flag = 0;
        double d = 0;
        std::int16_t n = 0;
        std::int32_t a = 0, b = 0;
        Pick(
            in.U8(), [&] { c->SetAnc(id, in.Small(), p, static_cast<char>(in.U8() % 3)); },
            [&] { c->OffsetAnc(id, in.Small(), in.Small()); },  //
            [&] { c->ResetAnc(id); },                           //
            [&] { c->InbetweenAnc(id, static_cast<char>(in.U8())); },
            [&] { c->SetAncType(id, static_cast<char>(in.U8() % 5)); },
            [&] { c->SetAncOffset(id, in.Small()); },  //
            [&] { c->SetAncOffset(id, &p); },          //
            [&] { c->SetAncStep(id, in.Real()); },     //
            [&] { c->SetAncCount(id, in.Real()); },    //
            [&] { c->SetAncSelectArea(id, in.Time(), in.Time()); },
            [&] { c->GetAnc(id, static_cast<std::int16_t>(in.Small()), &p, &flag); },
            [&] { c->GetAnc(id, static_cast<std::int32_t>(in.Time()), &p, &flag); },
            [&] {
              c->GetAncCount(id, in.Small(), &d), c->GetAncNum(id, &n), c->GetAncOffset(id, &n);
              c->GetAncStep(id, &d), c->GetAncSelectArea(id, &a, &b);
            },
            [&] { c->DelAnc(id); });
      },
      [&] {
        double d = 0;
        std::int16_t h = 0, v = 0;
        Pick(
            in.U8(), [&] { c->SetScrStepH(id, in.Real()); }, [&] { c->SetScrStepV(id, in.Real()); },
            [&] { c->SetScrCountH(id, in.Real()); }, [&] { c->SetScrCountV(id, in.Real()); },
            [&] {
              c->GetScrCountH(id, in.Small(), &d), c->GetScrCountV(id, in.Small(), &d);
              c->GetScrStepH(id, &d), c->GetScrStepV(id, &d);
            },
            [&] { c->GetScroll(id, in.Time(), &h, &v); });
      },
      [&] {
        const std::uint8_t how = in.U8();
        const char kind = static_cast<char>(static_cast<int>(how % 6) - 1);
        // Sometimes an animation of another kind, which gives no copy; the list
        // is the one of the kind's own animation, as a host passes it.
        const int from = (how >> 3) & 3;
        QvAColor* anim = (how & 0x80) ? nullptr : w.Colour(from);
        QvMCastList* list =
            ((how & 0x40) && from != kind) || kind < 0 || kind > 3 ? nullptr : w.ColourList(kind);
        c->RegAColor(id, anim, kind, in.Time(), w.Name(in), list);
      },
      [&] {
        Pick(
            in.U8(),
            [&] { c->DelAColor(id, static_cast<char>(static_cast<int>(in.U8() % 6) - 1)); },
            [&] { c->DelAFrame(id); }, [&] { c->DelOrgCTable(id); }, [&] { c->DelDft(id); },
            [&] { c->DelScroll(id, static_cast<char>(in.U8() & 15)); },
            [&] {
              std::int16_t param = 0, count = 0;
              QvMCastDft* entries = nullptr;
              char flag = 0, dirs = 0;
              if (c->GetDft(id, &param, &entries, &count, &flag) && count > 0)
                Touch(&entries[count - 1].flag, 1);
              c->IsScroll(id, &dirs), c->IsDft(id), c->IsAnc(id), c->IsAColor(id), c->ACycle(id);
              c->AFlash(id), c->ASwitch(id), c->AFade(id), c->IsScrollLeft(id), c->IsScrollDown(id);
            });
      },
      draw, draw,
      [&] {
        tbRect area = w.Area(in);
        tbRect result;
        tbPoint pt(in.Small(), in.Small());
        const std::int32_t t = in.Time();
        const char mode = static_cast<char>(in.U8() % 4);
        if (tbColorTable* ct = c->CTable(id, t)) Touch(&ct->CTTable(255)->red, 1);
        c->GetAFrameArea(id, t, &area, mode, &result, &pt);
        c->PtInAFrame(&pt, id, t, &area, mode);
      },
      [&] {
        const std::int16_t iw = static_cast<std::int16_t>(static_cast<int>(in.U8() % 70) - 3);
        const std::int16_t ih = static_cast<std::int16_t>(static_cast<int>(in.U8() % 70) - 3);
        tbPicture* p = c->Icon(id, iw, ih);
        if (p && p->Pic()) {
          volatile unsigned char px = p->Pixel(static_cast<std::int16_t>(p->Width() - 1),
                                               static_cast<std::int16_t>(p->Height() - 1));
          (void)px;
        }
      },
      [&] { c->Dup(id, in.Time(), w.Name(in), w.Cast(in), in.Id()); },
      [&] { c->Backup(id, w.Cast(in)); },  //
      [&] { c->Restore(w.Cast(in)); },
      [&] {
        // The lock is a lookup shortcut for a run of calls on one member; the
        // host unlocks again before it turns to anything else (an animation
        // that passes itself on meanwhile would reach the locked member).
        c->Lock(id);
        if (nested < 2) {
          const std::uint8_t sub = in.U8();
          if (sub % 28 != 26) CastOp(w, in, sub, nested + 1, c);
        }
        c->Unlock();
      },
      [&] {
        std::uint32_t f = 0;
        c->SetActFlag(id, in.U32()), c->SetShowFlag(id, in.U32()), c->GetActFlag(id, &f);
        c->GetShowFlag(id, &f), c->ResetActFlag(id), c->ResetShowFlag(id), c->ActFlag(id);
      },
      [&] { c->Count(), c->ID2Index(id), c->Index2ID(in.Small()), c->GetNewID(), c->AFrame(id); },
      [&] {
        // The store is destroyed and made anew.
        const int i = (c == w.casts[0].get()) ? 0 : 1;
        if (in.U8() < 24 && !locked) {
          w.ForgetCast(c);
          Renew(w.casts[i]);
        }
      },
      [&] { c->Load(0), c->Save(0), c->Save(0, id), c->SaveEnd(0), c->SaveTerm(0); });
}

void LayerOp(World& w, Bytes& in, std::uint8_t op) {
  QvMLayer* l = w.Layers(in);
  const std::int16_t index = static_cast<std::int16_t>(static_cast<int>(in.U8() % 6) - 1);
  auto kind = [&] { return static_cast<char>(static_cast<int>(in.U8() % 7) - 2); };
  auto reg = [&] { l->RegCast(index, w.Cast(in), in.Id(), kind()); };
  Pick(
      op, [&] { l->New(index, in.Small()); },
      [&] {
        Pick(
            in.U8(), [&] { l->Del(index); }, [&] { l->Empty(index); },
            [&] {
              if (in.U8() < 40) l->DelAll();
            },
            [&] { l->ID2Index(in.Small()), l->Index2ID(index), l->Count(); });
      },
      reg, reg,
      [&] {
        in.Bit() ? (void)l->DelCast(index, w.Cast(in), in.Id()) : l->DelCast(w.Cast(in), in.Id());
      },
      [&] { l->MoveCast(index, w.Cast(in), in.Id(), static_cast<std::int16_t>(in.U8() % 5)); },
      [&] {
        l->Copy(index, w.Layers(in), static_cast<std::int16_t>(static_cast<int>(in.U8() % 5) - 1));
      },
      [&] { l->FitCast(index, w.Cast(in), in.Id(), kind()); },
      [&] {
        QvMCast* c = nullptr;
        std::int16_t id = 0;
        l->Get(index, in.Small(), &c, &id);
        int n = 0;
        for (char ok = l->GetFirst(&c, &id); ok && n < 200; ok = l->GetNext(&c, &id)) ++n;
        l->End();
      },
      [&] {
        tbRect area = w.Area(in);
        l->DrawPicture(in.Time(), &w.map, &area);
      },
      [&] {
        unsigned char data[64];
        std::memset(data, in.U8(), sizeof data);
        unsigned char* got = nullptr;
        std::uint16_t size = 0;
        Pick(
            in.U8(), [&] { l->NewComment(static_cast<std::uint16_t>(in.U8() % 80)); },
            [&] {
              l->SetComment(in.Bit() ? data : nullptr, static_cast<std::uint16_t>(in.U8() % 64));
            },
            [&] { l->DelComment(); });
        l->GetComment(&got, &size);
        Touch(got, size);
      },
      [&] {
        const int i = (l == w.layers[0].get()) ? 0 : 1;
        if (in.U8() < 40) Renew(w.layers[i]);
      });
}

void FrameOp(World& w, Bytes& in, std::uint8_t op) {
  const int fi = w.FrameIndex(in);
  QvAFrame* f = w.frames[fi].get();
  const std::int16_t index = static_cast<std::int16_t>(static_cast<int>(in.U8() % 6) - 1);
  auto reg = [&] {
    f->Reg(index, in.Coord(), in.Coord(), in.Size(), in.Size(), in.Coord(), in.Coord(), in.Small());
  };
  auto image = [&] {
    const std::int16_t sw = static_cast<std::int16_t>(in.U8() % (World::kPicW + 1));
    const std::int16_t sh = static_cast<std::int16_t>(in.U8() % (World::kPicH + 1));
    Pick(
        in.U8(), [&] { f->SetOrgImage(index, w.picture, World::kPicW, sw, sh); },
        [&] {
          // The exact-size form reads width x height bytes.
          const std::int16_t fw = in.Size(), fh = in.Size();
          std::vector<unsigned char> buf(static_cast<std::size_t>(fw > 0 && fh > 0 ? fw * fh : 1),
                                         in.U8());
          f->SetOrgImage(index, buf.data(), fw, fh);
        },
        [&] { f->SetImage(index, in.Bit() ? w.picture : nullptr, World::kPicW, sw, sh); },
        [&] {
          const std::int16_t iw = in.Size(), ih = in.Size();
          const std::size_t n = static_cast<std::size_t>(iw > 0 && ih > 0 ? iw * ih : 1);
          std::vector<unsigned char> image(n, in.U8()), mask(n);
          for (std::size_t i = 0; i < n; ++i) mask[i] = (i % 3) ? 255 : 0;
          f->SetImage(index, image.data(), mask.data(), iw, ih, in.Coord(), in.Coord());
        });
  };
  auto drawInto = [&] {
    // Into a buffer, by index or clock position.
    const std::int16_t dw = static_cast<std::int16_t>(in.U8() % (World::kMapW + 1));
    const std::int16_t dh = static_cast<std::int16_t>(in.U8() % (World::kMapH + 1));
    QvPal* pal = w.Pal(in);
    const std::int16_t fill = static_cast<std::int16_t>(static_cast<int>(in.U8()) - 1);
    const char wrap = static_cast<char>(in.U8() % 9);
    tbRect frameRect;
    const std::int16_t x = in.Small(), y = in.Small(), sx = in.Small(), sy = in.Small();
    unsigned char* px = w.pixels;
    const std::int16_t row = World::kMapW;
    Pick(
        in.U8(),
        [&] { f->DrawAImage(index, px, row, dw, dh, x, y, pal, fill, wrap, sx, sy, &frameRect); },
        [&] {
          f->DrawMImage(in.Small(), px, row, dw, dh, x, y, pal, fill, wrap, sx, sy, &frameRect);
        },
        [&] { f->DrawMImage(px, row, dw, dh, x, y, pal, fill, wrap, sx, sy, &frameRect); });
  };
  std::int16_t a = 0, b = 0, cc = 0, d = 0, e = 0, g = 0, h = 0;
  double x = 0, y = 0, z = 0;
  unsigned char* img = nullptr;
  unsigned char* mask = nullptr;
  Pick(
      op, reg, reg, [&] { f->Reg(index, w.frames[in.U8() & 1].get(), in.Small()); },
      [&] {
        Pick(
            in.U8(),
            [&] {
              f->Set(index, in.Coord(), in.Coord(), in.Size(), in.Size(), in.Coord(), in.Coord());
            },
            [&] { f->SetPos(index, in.Coord(), in.Coord()); },
            [&] { f->SetSize(index, in.Size(), in.Size()); },
            [&] { f->SetAnchor(index, in.Coord(), in.Coord()); },
            [&] { f->SetInterval(index, in.Small()); },
            [&] { f->SetZoom(index, in.Zoom(), in.Zoom()); }, [&] { f->SetRot(index, in.Real()); },
            [&] { f->Activate(index); }, [&] { f->Deactivate(index); });
      },
      [&] {
        Pick(
            in.U8(), [&] { f->LockA(index); }, [&] { f->LockM(in.Small()); }, [&] { f->Unlock(); },
            [&] {
              if (w.updateLocks[fi] < 100) f->LockUpdateMCast(), ++w.updateLocks[fi];
            },
            [&] {
              f->UnlockUpdateMCast();
              if (w.updateLocks[fi] > 0) --w.updateLocks[fi];
            });
      },
      [&] { in.U8() < 200 ? (void)f->Del(index) : f->DelAll(); }, image, image,
      [&] {
        Pick(
            in.U8(), [&] { f->GetAFrame(index, &a, &b, &cc, &d, &e, &g, &h, &x, &y, &z); },
            [&] { f->GetMFrame(in.Small(), &a, &b, &cc, &d, &e, &g, &h, &x, &y, &z); },
            [&] { f->GetMFrame(&a, &b, &cc, &d, &e, &g, &h, &x, &y, &z); },
            [&] {
              if (f->GetOrgImage(index, &img, &a, &b) && a > 0 && b > 0) Touch(img, a * b);
            },
            [&] {
              if (f->GetAImage(index, &img, &mask, &a, &b, &cc, &d) && img && a > 0 && b > 0)
                Touch(img, a * b), Touch(mask, a * b);
            },
            [&] {
              f->GetMImage(in.Small(), &img, &mask, &a, &b, &cc, &d),
                  f->GetMImage(&img, &mask, &a, &b, &cc, &d);
            },
            [&] {
              f->GetArea(&a, &b, &cc, &d), f->CountAFrame(), f->CountMFrame(), f->IsActive(index);
            });
      },
      [&] {
        const std::int16_t iw = static_cast<std::int16_t>(static_cast<int>(in.U8() % 26) - 1);
        const std::int16_t ih = static_cast<std::int16_t>(static_cast<int>(in.U8() % 26) - 1);
        const std::int16_t row = static_cast<std::int16_t>(iw > 0 ? iw + (in.U8() & 3) : 4);
        std::vector<unsigned char> dst(static_cast<std::size_t>(row) *
                                       static_cast<std::size_t>(ih > 0 ? ih : 1));
        f->GetIcon(index, dst.data(), row, iw, ih);
      },
      drawInto, drawInto,
      [&] {
        // Into an off-screen world, then masked into the pixel map.
        tbGWorld* world = nullptr;
        tbRect bounds(0, 0, 1 + in.U8() % 40, 1 + in.U8() % 30);
        if (!qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, &w.table)) return;
        QvPal* pal = w.Pal(in);
        const std::int16_t fill = static_cast<std::int16_t>(static_cast<int>(in.U8()) - 1);
        const char wrap = static_cast<char>(in.U8() % 5);
        const std::int16_t x = in.Small(), y = in.Small(), sx = in.Small(), sy = in.Small();
        const std::int16_t dx = in.Small(), dy = in.Small();
        in.Bit()
            ? f->DrawAPicture(index, world, x, y, pal, fill, wrap, sx, sy, &w.map, dx, dy)
            : f->DrawMPicture(in.Small(), world, x, y, pal, fill, wrap, sx, sy, &w.map, dx, dy);
        qv::tb.DisposeGWorld(world);
      },
      [&] {
        QvAFrame* other = w.frames[in.U8() & 1].get();
        Pick(
            in.U8(), [&] { f->Dup(other); }, [&] { f->Backup(other); }, [&] { f->Restore(other); });
      },
      [&] {
        Pick(
            in.U8(), [&] { f->UpdateMCast(); }, [&] { f->DelFromMCast(); },
            [&] { f->SetSpeed(in.Small()); }, [&] { f->SetMode(static_cast<char>(in.U8() % 4)); },
            [&] { f->Play(in.Small()); }, [&] { f->Pause(); }, [&] { f->Stop(); },
            [&] { f->Step(in.Small()); }, [&] { f->SetCur(in.Time()); },
            [&] { f->Cur(), f->Next(); });
      },
      [&] {
        if (in.U8() < 40) Renew(w.frames[fi]), w.updateLocks[fi] = 0;
      });
}

void ColourOp(World& w, Bytes& in, std::uint8_t op) {
  const int kind = in.U8() % 4;
  QvAColor* a = w.Colour(kind);
  tbColorTable src(w.table);
  Pick(
      op, [&] { a->RegArea(w.Pal(in)); },
      [&] {
        Pick(
            kind, [&] { w.cycle->SetMode(static_cast<char>(in.U8() % 4)); },
            [&] { w.flash->SetSpeed(in.Small()); },
            [&] {
              tbColorTable t(w.table);
              t.SetCTSize(static_cast<std::int16_t>(in.U8()));
              w.switcher->RegCTable(in.Small(), in.Bit() ? &t : nullptr);
            },
            [&] {
              in.Bit() ? w.fade->RegColor(tbRGBColor(in.U8(), in.U8(), in.U8()))
                       : w.fade->RegColor(in.U16(), in.U16(), in.U16());
              w.fade->SetCount(in.Small());
            });
      },
      [&] { w.switcher->DelCTable(in.Small()); },
      [&] {
        if (tbColorTable* t = a->CTable(in.Small(), &src)) Touch(&t->CTTable(255)->red, 1);
        a->CTable(&src), a->AreaFlag(in.U8()), a->AreaNum(), a->Error();
      },
      [&] {
        tbRGBColor c(in.U8(), in.U8(), in.U8());
        a->SetColor(in.Small(), &c);
        a->SetCur(in.Time()), a->Count();
      },
      [&] {
        // A copy into a fresh animation and into the host's own.
        w.WithKind(kind, [&](auto& p) {
          std::remove_reference_t<decltype(*p)> other;
          p->Dup(&other);
          if (in.Bit()) other.Dup(p.get());
        });
      },
      [&] { w.WithKind(kind, [](auto& p) { p->UpdateMCast(); }); },
      [&] { w.WithKind(kind, [](auto& p) { p->DelFromMCast(); }); },
      [&] {
        a->SetMode(static_cast<char>(in.U8() % 4));
        a->SetSpeed(in.Small());
        if (in.Bit()) a->Play(in.Small());
      },
      [&] {
        if (in.U8() < 40) w.WithKind(kind, [](auto& p) { Renew(p); });
      });
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
      if (op % 9 == 8) {
        // The allocation numbered arg (counted from here) fails, within the
        // next few calls.
        if (faults) QvFailAllocation(arg % 64 + 1);
        continue;
      }
      auto cast = [&] { CastOp(w, in, arg); };
      auto frame = [&] { FrameOp(w, in, arg); };
      Pick(
          op % 9, cast, cast, cast, [&] { LayerOp(w, in, arg); }, frame, frame,
          [&] { ColourOp(w, in, arg); },
          [&] { fakeMilliseconds += static_cast<std::uint32_t>(arg) * 17u; });
      QvFailAllocation(0);
    }
    w.Destroy(destroyOrder);
  }
  QvFailAllocation(0);
  QvSetTickSource(nullptr);
  return 0;
}
