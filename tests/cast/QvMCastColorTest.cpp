// Colour animation copies on members, and how changes of the host's
// animations reach the members that hold copies of them.
#include <cstring>

#include "acolor/QvACycle.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "cast/QvMCastLocal.h"
#include "tests/cast/CastTestSupport.h"
#include "toolbox/tbGWorld.h"

using namespace casttest;
using QvMCastColor = CastTest;

TEST_F(QvMCastColor, RegistrationAndRemovalByKind) {
  QvACycle cycle;
  QvAFlash flash, flash2;
  QvASwitch sw;
  QvAFade fade;
  EXPECT_EQ(cast.RegAColor(S(-1), &fade, QvAColor::kFade, 100, Txt("fade"), nullptr), 0);
  ASSERT_NE(dynamic_cast<QvAFade*>(cast.AFade(S(0))), nullptr);
  EXPECT_NE(cast.AFade(S(0)), &fade);
  EXPECT_EQ(NameOf(cast, S(0)), "fade");
  cast.RegAColor(S(0), &cycle, QvAColor::kCycle, 500, nullptr, nullptr);
  cast.RegAColor(S(0), &flash, QvAColor::kFlash, 500, nullptr, nullptr);
  cast.RegAColor(S(0), &sw, QvAColor::kSwitch, 500, nullptr, nullptr);
  EXPECT_EQ((Vals{cast.Start(S(0)), cast.End(S(0)), cast.ActFlag(S(0))}), (Vals{100, 129, 0x00F}));
  // Kind 1 again replaces only the flash copy.
  QvAColor *cycleCopy = cast.ACycle(S(0)), *fadeCopy = cast.AFade(S(0));
  flash2.SetSpeed(S(12));
  cast.RegAColor(S(0), &flash2, QvAColor::kFlash, 0, nullptr, nullptr);
  EXPECT_TRUE(cast.ACycle(S(0)) == cycleCopy && cast.AFade(S(0)) == fadeCopy);
  EXPECT_EQ(cast.AFlash(S(0))->Speed(), 12);

  // An animation of another kind than the one named gives no copy and no
  // range; unknown kinds touch nothing and create no member.
  cast.New(nullptr);
  EXPECT_EQ((Vals{cast.RegAColor(S(1), &fade, QvAColor::kSwitch, 0, Txt("n"), nullptr),
                  cast.IsAColor(S(1)), cast.Start(S(1))}),
            (Vals{1, 0, -1}));
  cast.SetActFlag(S(0), 0x008u);
  cast.SetName(S(0), Txt("kept"));
  for (char kind : {4, -1, 100})
    EXPECT_EQ(
        (Vals{cast.RegAColor(S(0), &fade, kind, 7, nullptr, &fade), cast.DelAColor(S(0), kind)}),
        (Vals{0, 1}));
  EXPECT_EQ((Vals{cast.RegAColor(S(-1), &fade, 4, 0, nullptr, nullptr), cast.Count(),
                  cast.AFade(S(0)) == fadeCopy, cast.Rec(S(0))->actFlag, ListSize(fade)}),
            (Vals{-1, 2, 1, 0x008, 0}));
  EXPECT_EQ(NameOf(cast, S(0)), "kept");

  // IsAColor and DelAColor on a member with a frame animation.
  auto anim = MakeAnim({3});
  tbColorTable table = GreyTable();
  cast.RegAFrame(S(1), anim.get(), 0, nullptr, nullptr);
  cast.RegOrgCTable(S(1), &table, nullptr, nullptr);
  EXPECT_EQ(cast.IsAColor(S(1)), 0);
  cast.RegAColor(S(1), &flash, QvAColor::kFlash, 0, nullptr, &flash);
  cast.SetActFlag(S(1), 0xFFFFFFFFu);
  EXPECT_EQ((Vals{cast.IsAColor(S(1)), ListSize(flash), cast.DelAColor(S(1), QvAColor::kFlash),
                  cast.IsAColor(S(1)), ListSize(flash), cast.Rec(S(1))->actFlag}),
            (Vals{1, 1, 1, 0, 0, 0x010}));
  EXPECT_EQ(cast.Rec(S(1))->lists[1], nullptr);
  // Removing a kind that is not there still trims the flags and the icon.
  ASSERT_NE(cast.Icon(S(1), S(8), S(8)), nullptr);
  cast.Rec(S(1))->actFlag = 0x3FFu;
  EXPECT_EQ((Vals{cast.DelAColor(S(1), QvAColor::kSwitch), cast.Rec(S(1))->actFlag}),
            (Vals{1, 0x010}));
  EXPECT_EQ(cast.Rec(S(1))->icon.Pic(), nullptr);
  // A null animation removes the copy, keeps the flags, records the list.
  cast.RegAColor(S(1), &flash, QvAColor::kFlash, 0, nullptr, nullptr);
  cast.SetActFlag(S(1), 0x002u);
  EXPECT_EQ((Vals{cast.RegAColor(S(1), nullptr, QvAColor::kFlash, 0, nullptr, &flash),
                  cast.AFlash(S(1)) == nullptr, cast.Rec(S(1))->actFlag, ListSize(flash)}),
            (Vals{1, 1, 0x002, 1}));
}

TEST_F(QvMCastColor, FailedCopyLeavesTheKindEmpty) {
  QvAFade fade;
  cast.New(nullptr);
  auto reg = [&] { return cast.RegAColor(S(0), &fade, QvAColor::kFade, 5, nullptr, &fade); };
  EXPECT_EQ(FailAt(1, reg), 0);
  EXPECT_EQ((Vals{cast.AFade(S(0)) == nullptr, cast.Start(S(0)), ListSize(fade)}),
            (Vals{1, -1, 1}));
  EXPECT_EQ(
      FailAt(1,
             [&] { return cast.RegAColor(S(-1), nullptr, QvAColor::kFade, 5, nullptr, nullptr); }),
      -1);
}

TEST_F(QvMCastColor, ChangesReachTheCopies) {
  auto fade = MakeFade();
  fade->UpdateMCast();  // no members: nothing happens
  cast.RegAColor(S(-1), fade.get(), QvAColor::kFade, 0, Txt("a"), fade.get());
  cast.RegAColor(S(-1), fade.get(), QvAColor::kFade, 0, nullptr, fade.get());
  fade->SetSpeed(S(15));  // does not pass itself on
  EXPECT_EQ((Vals{cast.AFade(S(0))->Speed(), cast.AFade(S(1))->Speed()}), (Vals{30, 30}));
  fade->UpdateMCast();
  EXPECT_EQ((Vals{cast.AFade(S(0))->Speed(), cast.AFade(S(1))->Speed(), ListSize(*fade)}),
            (Vals{15, 15, 2}));
  // SetCount passes itself on; names and ranges stay.
  fade->SetCount(S(10));
  EXPECT_EQ((Vals{cast.AFade(S(0))->Count(), cast.AFade(S(1))->Count(), cast.End(S(0))}),
            (Vals{10, 10, 29}));
  EXPECT_EQ(NameOf(cast, S(0)) + NameOf(cast, S(1)), "a<none>");
  // DelFromMCast detaches the members; they keep their last copies.
  fade->DelFromMCast();
  EXPECT_EQ(ListSize(*fade), 0);
  fade->SetCount(S(20));
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ((Vals{cast.AFade(S(i))->Count(), cast.Rec(S(i))->lists[3] == nullptr}),
              (Vals{10, 1}));
  EXPECT_EQ(NameOf(cast, S(0)), "a");

  // Frame animations: Activate and Deactivate do not pass themselves on,
  // SetPos does, and locks batch the changes into one pass.
  auto anim = MakeAnim({2, 2});
  cast.RegAFrame(S(0), anim.get(), 0, Txt("named"), anim.get());
  cast.RegAFrame(S(1), anim.get(), 0, nullptr, anim.get());
  QvAFrame* before = cast.AFrame(S(0));
  std::int16_t x = -1;
  auto posX = [&](int i) {
    cast.AFrame(S(i))->GetAFrame(S(0), &x, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    return x;
  };
  anim->Deactivate(S(0));
  anim->Activate(S(1));
  EXPECT_EQ((Vals{cast.AFrame(S(0)) == before, cast.AFrame(S(0))->IsActive(S(1))}), (Vals{1, 0}));
  anim->LockUpdateMCast();
  anim->LockUpdateMCast();
  anim->SetPos(S(0), S(7), S(0));
  anim->UnlockUpdateMCast();
  EXPECT_EQ(posX(0), 0);
  anim->UnlockUpdateMCast();
  EXPECT_EQ((Vals{posX(0), posX(1), cast.AFrame(S(0))->IsActive(S(1))}), (Vals{7, 7, 1}));
  EXPECT_EQ(NameOf(cast, S(0)) + NameOf(cast, S(1)), "named<none>");
  QvAFrame* current = cast.AFrame(S(0));
  anim->UnlockUpdateMCast();  // unmatched: does nothing
  EXPECT_EQ(cast.AFrame(S(0)), current);
}

// Stores, members and animations destroyed or changed in every order: no list
// keeps a dangling reference, and a member whose animations are gone still
// draws from its copies. Steps: s, b destroy the store and its backup;
// a, f, y the frame, fade and cycle animations; d deletes all members, e
// empties them; u changes every animation still alive.
TEST_F(QvMCastColor, DestructionInEveryOrder) {
  tbColorTable table = GreyTable();
  Screen screen(16, 16);
  for (std::string order : {"dau", "afyd", "subu", "bfuau", "fsu", "eu", "sbu"}) {
    SCOPED_TRACE(order);
    QvMCastList dftList;
    auto store = std::make_unique<CastProbe>(), backup = std::make_unique<CastProbe>();
    auto anim = MakeAnim({3});
    auto fade = MakeFade();
    auto cycle = std::make_unique<QvACycle>();
    QvMCastDft dft[1];
    store->RegAFrame(S(-1), anim.get(), 0, Txt("m"), anim.get());
    store->RegAColor(S(0), fade.get(), QvAColor::kFade, 0, Txt("m"), fade.get());
    store->RegAColor(S(0), cycle.get(), QvAColor::kCycle, 0, Txt("m"), cycle.get());
    store->RegDft(S(0), S(0), dft, S(1), 0, Txt("m"), &dftList);
    store->RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
    store->RegOrgCTable(S(0), &table, nullptr, nullptr);
    bool kept = true;
    ASSERT_EQ((Vals{store->Backup(S(0), backup.get()), ListSize(*anim)}), (Vals{1, 3}));
    for (char step : order) {
      if (step == 's') store.reset();
      if (step == 'b') backup.reset();
      if (step == 'a') anim.reset();
      if (step == 'f') fade.reset();
      if (step == 'y') cycle.reset();
      if (step == 'd') store->DelAll(), backup->DelAll();
      if (step == 'e') store->Empty(S(0)), store->Empty(S(1)), backup->Empty(S(0));
      if (step == 'u' && anim) anim->SetInterval(S(0), S(5));
      if (step == 'u' && fade) fade->SetCount(S(4));
      if (step == 'u' && cycle) cycle->SetMode(QvMPlayer::kPlayLoop);
      QvAFrame* copy = backup && step == 'u' && anim ? backup->AFrame(S(0)) : nullptr;
      EXPECT_EQ(copy ? copy->CountMFrame() : 5, 5);
      const bool none = (!store && !backup) || step == 'd' || step == 'e';
      kept = kept && !none;
      if (store && kept) {
        EXPECT_EQ(
            (Vals{store->DrawPicture(S(0), 1, &screen.pixMap, &screen.area), screen.At(8, 8)}),
            (Vals{1, FramePixel(0, 2, 1)}));
      }
      EXPECT_EQ(none ? (anim ? ListSize(*anim) : 0) + (fade ? ListSize(*fade) : 0) +
                           (cycle ? ListSize(*cycle) : 0) + ListSize(dftList)
                     : 0,
                0);
    }
  }
}

namespace {

// A store whose members never reuse a colour table or a world: it forgets
// what their tables were computed from before every call, drops the world of
// a member with colour animations before a drawing that makes a new one, and
// has its members' copies hand out their images, so that it takes the plain
// path and draws every member through its world.
struct PlainStore : CastProbe {
  void Lend(std::int16_t id) {
    unsigned char* image = nullptr;
    if (QvAFrame* copy = AFrame(id))
      copy->GetAImage(0, &image, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  void Forget() {
    for (QvMCastInfo* p = head; p; p = p->next) qvcast::ForgetColours(p);
  }
  void BeforeDraw(std::int16_t id, std::int32_t time) {
    QvMCastInfo* r = Rec(id);
    if (!r || !r->aFrame || !IsAColor(r) || !r->orgCTable || !r->orgGWorld) return;
    const std::int32_t t = time == -1 ? r->start : time;
    std::int16_t w, h, x, y;
    if (t < r->start || t > r->end || !r->aFrame->GetArea(&w, &h, &x, &y)) return;
    localDisposeOrgGWorld(r);
  }
};

}  // namespace

// Drawing members with colour animations reuses their colour tables and
// worlds while nothing changed, and a member goes straight from its frame
// to the target, its world written later;
// against a store that computes everything anew through the worlds, over
// random draws at random places, table requests, changes of the host's
// animations (passed on), of the copies themselves (settings, clocks, output
// entries, frames added, removed, given new images or losing them, images
// handed out and written into), of own tables, areas, ranges and frame
// animations, and failing allocations: the same pixels, results, tables,
// worlds, copies and allocation attempts.
TEST(QvMCastColourReuse, MatchesComputingEveryTableAnew) {
  NoFailures guard;
  std::mt19937 rng(2113);
  QvACycle cycle;
  QvAFlash flash;
  QvASwitch sw;
  QvAFade fade;
  QvPal low = RangePal(1, 9), high = RangePal(5, 40);
  cycle.RegArea(&low);
  flash.RegArea(&high);
  sw.RegArea(&low);
  tbColorTable grey = GreyTable(), other(S(72));
  sw.RegCTable(0, &grey);
  sw.RegCTable(1, &other);
  fade.RegArea(&high);
  fade.RegColor(tbRGBColor(255, 0, 0));
  QvAColor* anims[4] = {&cycle, &flash, &sw, &fade};
  QvMCastList* lists[4] = {&cycle, &flash, &sw, &fade};
  auto anim = MakeAnim({1, 2, 1}, 6, 5, 2, 2);
  auto anim2 = MakeAnim({1}, 9, 3, 0, 0);
  // Frames 1 and 2 without an image: nothing fills the world then.
  auto anim3 = MakeAnim({1}, 5, 4, 1, 1);
  anim3->Reg(S(1), 0, 0, S(5), S(4), S(1), S(1), S(2));
  QvAFrame* frames[3] = {anim.get(), anim2.get(), anim3.get()};
  // The fill colour is the first index outside the area: 31, 0 and 0 (all
  // 256 inside).
  QvPal head = RangePal(0, 30), all = RangePal(0, 255);
  QvPal* areas[4] = {&head, &low, &all, nullptr};
  CastProbe a;
  PlainStore b;
  Screen sa(40, 30), sb(40, 30);
  for (CastProbe* s : {&a, static_cast<CastProbe*>(&b)}) {
    // Members 0 and 2 never have colour animations; member 3 has a cycle
    // alone, whose ranges are all that moves.
    for (int m = 0; m < 4; ++m) {
      s->RegAFrame(S(-1), anim.get(), 0, nullptr, anim.get());
      s->RegOrgCTable(S(m), &grey, areas[m], nullptr);
      for (int k = 0; k < 4; ++k)
        if (m == 3 ? k == 0 : m == 1 && k != 2)
          s->RegAColor(S(m), anims[k], static_cast<char>(k), 0, nullptr, lists[k]);
      s->SetStartEnd(S(m), 0, 90);
      if (m % 2 == 0) s->RegScroll(S(m), S(m + 1), nullptr);
    }
  }
  for (int m = 0; m < 4; ++m) b.Lend(S(m));
  for (int step = 0; step < 3000; ++step) {
    const auto id = S(static_cast<int>(rng() % 4));
    const std::int32_t t = static_cast<std::int32_t>(rng() % 100) - 3;
    const unsigned op = rng() % 100;
    const unsigned arg = rng();
    SCOPED_TRACE(step);
    b.Forget();
    auto both = [&](auto f) { f(a), f(b); };
    if (op < 40) {
      const int fail = op < 8 ? static_cast<int>(arg % 4 + 1) : 0;
      // The member's area, as far as 20 pixels off the screen.
      const int x0 = static_cast<int>(arg % 61) - 20, y0 = static_cast<int>(arg / 61 % 51) - 20;
      tbRect place(x0, y0, x0 + static_cast<int>(arg / 4096 % 9), y0 + 4);
      // The attempts are counted before FailAt switches the injection off.
      int attempts[2] = {0, 0};
      auto draw = [&](CastProbe& s, Screen& screen, int* counted) {
        return FailAt(fail, [&] {
          const char r = s.DrawPicture(id, t, &screen.pixMap, &place);
          *counted = QvAllocationCount();
          return r;
        });
      };
      const char ra = draw(a, sa, &attempts[0]);
      b.BeforeDraw(id, t);
      const char rb = draw(b, sb, &attempts[1]);
      ASSERT_EQ((Vals{ra, attempts[0]}), (Vals{rb, attempts[1]}));
    } else if (op < 50) {
      // The other store's table made here as the chain is defined: the own
      // table, then each kind's computation on the colours so far, its
      // output copied on.
      tbColorTable* ta = a.CTable(id, t);
      QvMCastInfo* r = b.Rec(id);
      const bool made = r->orgCTable && t >= r->start && t <= r->end;
      ASSERT_EQ(ta != nullptr, made);
      if (made) {
        tbColorTable& work = b.Work();
        work = *r->orgCTable;
        for (QvAColor* copy : r->aColor) {
          if (!copy) continue;
          copy->SetCur(static_cast<std::int32_t>(static_cast<std::uint32_t>(t - r->start) *
                                                 static_cast<std::uint32_t>(copy->Speed()) * 2u /
                                                 60u));
          copy->CTable(&work);
          if (copy->CTable()) work = *copy->CTable();
        }
      }
    } else if (op < 56) {
      const int k = static_cast<int>(arg % 4);
      if (k == 0) cycle.SetMode(static_cast<char>(arg / 4 % 3));
      if (k == 1) flash.RegArea(arg / 4 % 2 ? &low : &high);
      if (k == 2) sw.RegCTable(-1, arg / 4 % 2 ? &grey : &other);
      if (k == 3) fade.SetCount(S(static_cast<int>(arg / 4 % 40)));
    } else if (op < 64) {
      const int k = static_cast<int>(arg % 4);
      const int what = static_cast<int>(arg / 4 % 3);
      tbRGBColor c(static_cast<unsigned char>(arg >> 8), 7, 9);
      tbColorTable src = GreyTable();
      both([&](CastProbe& s) {
        QvAColor* copy = s.Rec(id) ? s.Rec(id)->aColor[k] : nullptr;
        if (!copy) return;
        if (what == 0) copy->SetColor(S(static_cast<int>(arg >> 16) % 256), &c);
        if (what == 1) copy->SetSpeed(S(static_cast<int>(arg >> 16) % 70));
        if (what == 2) copy->CTable(S(static_cast<int>(arg >> 16) % 4), &src);
      });
    } else if (op < 70) {
      both([&](CastProbe& s) {
        s.RegOrgCTable(id, arg % 2 ? &grey : &other, areas[arg / 2 % 4], nullptr);
      });
    } else if (op < 78) {
      const int k = static_cast<int>(arg % 4);
      both([&](CastProbe& s) {
        if (arg / 4 % 2 || id % 2 == 0)
          s.DelAColor(id, static_cast<char>(k));
        else
          s.RegAColor(id, anims[k], static_cast<char>(k), 0, nullptr, lists[k]);
      });
    } else if (op < 83) {
      both([&](CastProbe& s) {
        s.SetStartEnd(id, static_cast<std::int32_t>(arg % 20),
                      60 + static_cast<std::int32_t>(arg % 50));
      });
    } else if (op < 95) {
      // The copy's frames: one without an image added, one removed, one
      // given new pixels, one losing its image, or (rarely) the pixels
      // handed out and written into.
      const auto k = S(static_cast<int>(arg / 8 % 3));
      std::vector<unsigned char> image(20, static_cast<unsigned char>(arg >> 16 & 31)), mask(20, 1);
      for (std::size_t i = 0; i < 20; i += 3) mask[i] = 0;
      std::vector<unsigned char> sheet(200);
      for (std::size_t i = 0; i < sheet.size(); ++i)
        sheet[i] = static_cast<unsigned char>((arg >> 16) + i % 23);
      unsigned char* lent[2] = {nullptr, nullptr};
      int n = 0;
      both([&](CastProbe& s) {
        QvAFrame* copy = s.AFrame(id);
        if (!copy) return;
        switch (arg % 8) {
          case 0:
            copy->Reg(k, 0, 0, S(5), S(4), S(1), S(1), S(1));
            break;
          case 1:
          case 2:
            copy->Del(k);
            break;
          case 3:
          case 4:
            copy->SetImage(k, image.data(), mask.data(), S(5), S(4), S(-2), S(-1));
            break;
          case 5:
            // Every frame cut from a picture of 20 x 10, zoomed and turned.
            for (std::int16_t i = 0; i < copy->CountAFrame(); ++i) {
              copy->SetZoom(i, 1.5, 0.75);
              copy->SetRot(i, 0.3);
              copy->SetImage(i, sheet.data(), S(20), S(20), S(10));
            }
            break;
          case 6:
            FailAt(1, [&] {
              return copy->SetImage(k, image.data(), mask.data(), S(5), S(4), S(0), S(0));
            });
            break;
          default:
            if (arg >> 8 & 15) break;
            if (copy->GetAImage(k, &lent[n], nullptr, nullptr, nullptr, nullptr, nullptr) &&
                lent[n])
              lent[n][0] = static_cast<unsigned char>(arg >> 24);
        }
        ++n;
      });
    } else {
      both([&](CastProbe& s) { s.RegAFrame(id, frames[arg % 3], 0, nullptr, frames[arg % 3]); });
      b.Lend(id);
    }
    // Everything either store can show agrees.
    ASSERT_EQ(sa.pixels, sb.pixels);
    ASSERT_TRUE(a.Work() == b.Work());
    for (int m = 0; m < 4; ++m) {
      QvMCastInfo *ra = a.Rec(S(m)), *rb = b.Rec(S(m));
      ASSERT_EQ(ra->orgGWorld == nullptr, rb->orgGWorld == nullptr);
      // The worlds' pixels are compared now and then (more often in the
      // first half), so that they stay unwritten across several steps.
      const bool compare = step % (step < 1500 ? 10 : 50) == 0;
      if (compare) a.Settle(S(m));
      if (ra->orgGWorld && compare) {
        ASSERT_TRUE(*ra->orgGWorld->CTable() == *rb->orgGWorld->CTable());
        tbPixMap *pa = ra->orgGWorld->PortPixMap(), *pb = rb->orgGWorld->PortPixMap();
        ASSERT_EQ(pa->Bounds().right * pa->Bounds().bottom,
                  pb->Bounds().right * pb->Bounds().bottom);
        ASSERT_EQ(0, std::memcmp(pa->TopAddr(), pb->TopAddr(),
                                 static_cast<std::size_t>(pa->Offset() * pa->Height())));
      }
      for (int k = 0; k < 4; ++k) {
        QvAColor *ca = ra->aColor[k], *cb = rb->aColor[k];
        ASSERT_EQ(ca == nullptr, cb == nullptr);
        if (!ca) continue;
        ASSERT_EQ((Vals{ca->Cur(), ca->Speed(), ca->CTable() != nullptr}),
                  (Vals{cb->Cur(), cb->Speed(), cb->CTable() != nullptr}));
        if (ca->CTable()) {
          ASSERT_TRUE(*ca->CTable() == *cb->CTable());
        }
      }
    }
  }
}
