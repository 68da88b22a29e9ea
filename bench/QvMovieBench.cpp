// Throughput of the engine's hot paths. Run:
//   cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DQV_BUILD_BENCH=ON
//   cmake --build build-bench --target qvmovie_bench && build-bench/bench/qvmovie_bench
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "acolor/QvACycle.h"
#include "acolor/QvAFade.h"
#include "acolor/QvAFlash.h"
#include "acolor/QvASwitch.h"
#include "aframe/QvAFrame.h"
#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "toolbox/QvPal.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbGWorld.h"
#include "toolbox/tbToolBox.h"

#ifdef QV_BENCH_SDL2_GFX
#include <SDL.h>
#include <SDL2_rotozoom.h>
#endif

namespace {

constexpr std::int16_t kFrame = 256;

std::vector<unsigned char> Picture(int w, int h, unsigned seed) {
  std::vector<unsigned char> pixels(static_cast<std::size_t>(w) * h);
  std::mt19937 rng(seed);
  for (auto& p : pixels) p = static_cast<unsigned char>(1 + rng() % 254);
  return pixels;
}

// A frame animation of one opaque side x side frame anchored at its centre.
std::unique_ptr<QvAFrame> OpaqueFrame(const std::vector<unsigned char>& picture,
                                      std::int16_t side = kFrame) {
  auto anim = std::make_unique<QvAFrame>();
  anim->Reg(0, 0, 0, side, side, static_cast<std::int16_t>(side / 2),
            static_cast<std::int16_t>(side / 2), 1);
  anim->SetImage(0, const_cast<unsigned char*>(picture.data()), side, side, side);
  return anim;
}

struct World {
  explicit World(std::int16_t w, std::int16_t h) {
    tbRect bounds(0, 0, w, h);
    tbColorTable table(tbColorTable::kStandard);
    qv::tb.NewGWorld(&world, tbToolBox::kDepth8, &bounds, &table);
  }
  ~World() { qv::tb.DisposeGWorld(world); }
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  tbGWorld* world = nullptr;
};

void BM_Memcpy(benchmark::State& state) {
  const auto side = static_cast<int>(state.range(0));
  auto src = Picture(side, side, 1);
  std::vector<unsigned char> dst(src.size());
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), src.size());
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(src.size()));
}
BENCHMARK(BM_Memcpy)->Arg(256)->Arg(1024);

// The masked copy of an opaque frame into a buffer of exactly its size.
void BM_MaskedCopy(benchmark::State& state) {
  const auto side = static_cast<std::int16_t>(state.range(0));
  auto picture = Picture(side, side, 1);
  auto anim = OpaqueFrame(picture, side);
  std::vector<unsigned char> dst(picture.size());
  tbRect frameRect;
  const auto half = static_cast<std::int16_t>(side / 2);
  for (auto _ : state) {
    anim->DrawAImage(0, dst.data(), side, side, side, half, half, nullptr, -1, 0, 0, 0, &frameRect);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(picture.size()));
}
BENCHMARK(BM_MaskedCopy)->Arg(256)->Arg(1024);

// The same copy filtered by a palette area.
void BM_MaskedCopyPalette256(benchmark::State& state) {
  auto picture = Picture(kFrame, kFrame, 1);
  auto anim = OpaqueFrame(picture);
  std::vector<unsigned char> dst(picture.size());
  QvPal pal;
  pal.SetRange(0, 127, 1);
  tbRect frameRect;
  for (auto _ : state) {
    anim->DrawAImage(0, dst.data(), kFrame, kFrame, kFrame, kFrame / 2, kFrame / 2, &pal, -1, 0, 0,
                     0, &frameRect);
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(picture.size()));
}
BENCHMARK(BM_MaskedCopyPalette256);

#ifdef QV_BENCH_SDL2_GFX
// The peers of the masked copies: SDL2's blit of an 8-bit surface with a
// colour key (a quarter of the pixels transparent), plain and RLE-encoded,
// side x side into a surface of its size sharing its palette.
void BM_Sdl2ColorKeyBlit(benchmark::State& state) {
  const int side = static_cast<int>(state.range(0));
  const bool rle = state.range(1) != 0;
  auto picture = Picture(side, side, 1);
  for (std::size_t i = 0; i < picture.size(); i += 4) picture[i] = 0;
  SDL_Surface* src = SDL_CreateRGBSurfaceWithFormatFrom(picture.data(), side, side, 8, side,
                                                        SDL_PIXELFORMAT_INDEX8);
  SDL_Surface* dst = SDL_CreateRGBSurfaceWithFormat(0, side, side, 8, SDL_PIXELFORMAT_INDEX8);
  SDL_SetSurfacePalette(dst, src->format->palette);
  SDL_SetColorKey(src, SDL_TRUE, 0);
  if (rle) SDL_SetSurfaceRLE(src, 1);
  for (auto _ : state) {
    SDL_BlitSurface(src, nullptr, dst, nullptr);
    benchmark::ClobberMemory();
  }
  SDL_FreeSurface(dst);
  SDL_FreeSurface(src);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(picture.size()));
  state.SetLabel(rle ? "RLE" : "colour key");
}
BENCHMARK(BM_Sdl2ColorKeyBlit)->Args({256, 0})->Args({256, 1})->Args({1024, 0})->Args({1024, 1});
#endif

// Drawing through an off-screen world and a region into a pixel map, with
// scrolling and wrap-around.
void BM_DrawAPicture256(benchmark::State& state) {
  auto picture = Picture(kFrame, kFrame, 2);
  auto anim = OpaqueFrame(picture);
  World world(kFrame, kFrame);
  World dest(640, 480);
  const bool withPal = state.range(0) != 0;
  QvPal pal;
  pal.SetRange(0, 200, 1);
  for (auto _ : state) {
    anim->DrawAPicture(0, world.world, kFrame / 2, kFrame / 2, withPal ? &pal : nullptr, 0, 3, 17,
                       5, dest.world->PortPixMap(), 100, 100);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kFrame * kFrame);
  state.SetLabel("pixels");
}
BENCHMARK(BM_DrawAPicture256)->Arg(0)->Arg(1);

// The zoom-and-rotation transform of a side x side frame, zoomed 1.5 x 0.75
// and rotated 0.6 rad.
void BM_Transform(benchmark::State& state) {
  const auto side = static_cast<std::int16_t>(state.range(0));
  auto picture = Picture(side, side, 3);
  QvAFrame anim;
  anim.Reg(0, 0, 0, side, side, static_cast<std::int16_t>(side / 2),
           static_cast<std::int16_t>(side / 2), 1);
  anim.SetOrgImage(0, picture.data(), side, side, side);
  anim.SetZoom(0, 1.5, 0.75);
  anim.SetRot(0, 0.6);
  std::int16_t w = 0, h = 0;
  for (auto _ : state) {
    anim.SetImage(0, nullptr, 0, 0, 0);
    anim.GetAImage(0, nullptr, nullptr, &w, &h, nullptr, nullptr);
  }
  state.SetItemsProcessed(state.iterations() * w * h);
  state.SetLabel("output pixels");
}
BENCHMARK(BM_Transform)->Arg(64)->Arg(256)->Arg(1024);

#ifdef QV_BENCH_SDL2_GFX
// The peer: SDL2_gfx's rotozoomSurfaceXY of the same 8-bit picture with the
// same zoom and angle, without smoothing, to a new surface like SetImage.
void BM_TransformSdl2Gfx(benchmark::State& state) {
  const int side = static_cast<int>(state.range(0));
  auto picture = Picture(side, side, 3);
  SDL_Surface* src = SDL_CreateRGBSurfaceWithFormatFrom(picture.data(), side, side, 8, side,
                                                        SDL_PIXELFORMAT_INDEX8);
  std::int64_t pixels = 0;
  for (auto _ : state) {
    SDL_Surface* out = rotozoomSurfaceXY(src, 0.6 * 180.0 / M_PI, 1.5, 0.75, SMOOTHING_OFF);
    pixels += static_cast<std::int64_t>(out->w) * out->h;
    SDL_FreeSurface(out);
  }
  SDL_FreeSurface(src);
  state.SetItemsProcessed(pixels);
  state.SetLabel("output pixels");
}
BENCHMARK(BM_TransformSdl2Gfx)->Arg(64)->Arg(256)->Arg(1024);
#endif

tbColorTable Greys() {
  tbColorTable table(tbColorTable::kStandard);
  for (int i = 0; i < 256; ++i) {
    tbRGBColor c(static_cast<unsigned char>(i), static_cast<unsigned char>(i),
                 static_cast<unsigned char>(255 - i));
    table.SetCTTable(static_cast<std::int16_t>(i), &c);
  }
  return table;
}

QvPal Area(int first, int last) {
  QvPal pal;
  pal.SetRange(static_cast<unsigned char>(first), static_cast<unsigned char>(last), 1);
  return pal;
}

template <class Kind>
void ColourBench(benchmark::State& state, Kind& anim) {
  tbColorTable src = Greys();
  const std::int16_t frames = anim.Count();
  std::int16_t f = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(anim.CTable(f, &src));
    f = static_cast<std::int16_t>((f + 1) % frames);
  }
  state.SetItemsProcessed(state.iterations() * 256);
  state.SetLabel("entries");
}

void BM_CycleCTable(benchmark::State& state) {
  QvACycle anim;
  QvPal pal = Area(16, 255);
  anim.RegArea(&pal);
  anim.SetMode(QvMPlayer::kPlayLoop);
  ColourBench(state, anim);
}
BENCHMARK(BM_CycleCTable);

void BM_FadeCTable(benchmark::State& state) {
  QvAFade anim;
  QvPal pal = Area(0, 255);
  anim.RegArea(&pal);
  anim.RegColor(tbRGBColor(255, 128, 0));
  ColourBench(state, anim);
}
BENCHMARK(BM_FadeCTable);

void BM_FlashCTable(benchmark::State& state) {
  QvAFlash anim;
  QvPal pal = Area(0, 255);
  anim.RegArea(&pal);
  ColourBench(state, anim);
}
BENCHMARK(BM_FlashCTable);

void BM_SwitchCTable(benchmark::State& state) {
  QvASwitch anim;
  QvPal pal = Area(0, 255);
  anim.RegArea(&pal);
  tbColorTable a = Greys(), b(tbColorTable::kStandard);
  anim.RegCTable(0, &a);
  anim.RegCTable(1, &b);
  ColourBench(state, anim);
}
BENCHMARK(BM_SwitchCTable);

// A member with its own table and all four colour kinds attached.
struct ColourMember {
  ColourMember() {
    tbColorTable table = Greys();
    QvPal all = Area(0, 255);
    id = cast.RegOrgCTable(-1, &table, &all, nullptr);
    QvPal water = Area(32, 63), sky = Area(64, 95), lamp = Area(96, 99);
    cycle.RegArea(&water);
    cycle.SetMode(QvMPlayer::kPlayLoop);
    flash.RegArea(&lamp);
    sw.RegArea(&sky);
    tbColorTable t1 = Greys(), t2(tbColorTable::kStandard);
    sw.RegCTable(0, &t1);
    sw.RegCTable(1, &t2);
    fade.RegArea(&all);
    fade.SetCount(300);
    cast.RegAColor(id, &cycle, QvAColor::kCycle, 0, nullptr, &cycle);
    cast.RegAColor(id, &flash, QvAColor::kFlash, 0, nullptr, &flash);
    cast.RegAColor(id, &sw, QvAColor::kSwitch, 0, nullptr, &sw);
    cast.RegAColor(id, &fade, QvAColor::kFade, 0, nullptr, &fade);
    cast.SetStartEnd(id, 0, 1000);
  }
  QvACycle cycle;
  QvAFlash flash;
  QvASwitch sw;
  QvAFade fade;
  QvMCast cast;
  std::int16_t id = -1;
};

void BM_ChainCTable(benchmark::State& state) {
  ColourMember m;
  std::int32_t t = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(m.cast.CTable(m.id, t));
    t = (t + 1) % 1000;
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel("tables");
}
BENCHMARK(BM_ChainCTable);

// The member of the colour benchmarks: a 48 x 48 sprite of 4 frames with
// its own colour table, a looping colour cycle over indices 32 to 63 and a
// fade of 300 frames over every index, to attach or not.
struct ColourSprite {
  std::vector<unsigned char> sheet = Picture(192, 48, 4);
  QvAFrame walk;
  QvACycle cycle;
  QvAFade fade;
  tbColorTable table = Greys();
  ColourSprite() {
    for (std::int16_t f = 0; f < 4; ++f) {
      walk.Reg(-1, static_cast<std::int16_t>(f * 48), 0, 48, 48,
               static_cast<std::int16_t>(f * 48 + 24), 40, 2);
      walk.SetImage(f, sheet.data(), 192, 192, 48);
    }
    QvPal water = Area(32, 63), all = Area(0, 255);
    cycle.RegArea(&water);
    cycle.SetMode(QvMPlayer::kPlayLoop);
    fade.RegArea(&all);
    fade.SetCount(300);
  }
};

// One member drawn into a 640 x 480 pixel map: a 48 x 48 sprite of 4 frames
// with its own colour table; with (range(0) 1) a colour cycle and a fade
// attached; at one moment again and again (range(1) 0, a redraw) or at a
// moment further each time (1, the colours move on every drawing).
void BM_MemberDraw(benchmark::State& state) {
  const bool colours = state.range(0) != 0;
  const bool advancing = state.range(1) != 0;
  ColourSprite sprite;
  QvMCast cast;
  const std::int16_t id = cast.RegAFrame(-1, &sprite.walk, 0, nullptr, &sprite.walk);
  cast.RegOrgCTable(id, &sprite.table, nullptr, nullptr);
  if (colours) {
    cast.RegAColor(id, &sprite.cycle, 0, 0, nullptr, &sprite.cycle);
    cast.RegAColor(id, &sprite.fade, 3, 0, nullptr, &sprite.fade);
  }
  cast.SetStartEnd(id, 0, 999);
  World dest(640, 480);
  tbRect rect(0, 0, 640, 480);
  std::int32_t t = 7;
  for (auto _ : state) {
    benchmark::DoNotOptimize(cast.DrawPicture(id, t, dest.world->PortPixMap(), &rect));
    if (advancing) t = (t + 1) % 1000;
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel("members");
}
BENCHMARK(BM_MemberDraw)->Args({0, 0})->Args({1, 0})->Args({0, 1})->Args({1, 1});

// Puts the member on a path of 8 anchors at random places of a 640 x 480
// area.
void RandomPath(QvMCast* cast, std::int16_t id, std::mt19937* rng) {
  QvMCastAnc path[8];
  for (auto& a : path)
    a.point = tbPoint(static_cast<std::int32_t>((*rng)() % 640),
                      static_cast<std::int32_t>((*rng)() % 480));
  cast->RegAnc(id, path, 8, 3, nullptr);
}

// Draws the layers' moments one after another into a 640 x 480 map, each a
// moment further; reported per member too.
void DrawMoments(benchmark::State& state, QvMLayer* layers, int members) {
  World dest(640, 480);
  tbRect rect(0, 0, 640, 480);
  std::int32_t t = 0;
  for (auto _ : state) {
    layers->DrawPicture(t, dest.world->PortPixMap(), &rect);
    t = (t + 1) % 1000;
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["per_member"] = benchmark::Counter(
      static_cast<double>(members),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.SetLabel("moments");
}

// A 640 x 480 moment of 64 members on 8 layers, each the 48 x 48 sprite of
// BM_MemberDraw on a path, without (range(0) 0) or with (1) a colour cycle
// and a fade on every member; a moment further each time, so that every
// member's colours move on every drawing. Reported per member.
void BM_ColourMoment(benchmark::State& state) {
  ColourSprite sprite;
  QvMCast cast;
  QvMLayer layers;
  for (std::int16_t l = 0; l < 8; ++l) layers.New(-1, l);
  std::mt19937 rng(7);
  for (int i = 0; i < 64; ++i) {
    const std::int16_t id = cast.RegAFrame(-1, &sprite.walk, 0, nullptr, &sprite.walk);
    cast.RegOrgCTable(id, &sprite.table, nullptr, nullptr);
    RandomPath(&cast, id, &rng);
    if (state.range(0) != 0) {
      cast.RegAColor(id, &sprite.cycle, QvAColor::kCycle, 0, nullptr, &sprite.cycle);
      cast.RegAColor(id, &sprite.fade, QvAColor::kFade, 0, nullptr, &sprite.fade);
    }
    cast.SetStartEnd(id, 0, 999);
    layers.RegCast(static_cast<std::int16_t>(i % 8), &cast, id, -1);
  }
  DrawMoments(state, &layers, 64);
}
BENCHMARK(BM_ColourMoment)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// A 640 x 480 moment with n members on 8 layers: each a 48 x 48 sprite of 4
// frames, on a path, some scrolling, a quarter of them with a colour cycle.
// Reported per member too, to show how the cost grows with the cast.
// With a second argument of 12 the sprites are 12 x 12, so that even 4,096
// members (their private frame copies and worlds) stay in the caches.
void BM_LayerMoment(benchmark::State& state) {
  const int members = static_cast<int>(state.range(0));
  const auto side = static_cast<std::int16_t>(state.range(1));
  auto sheet = Picture(4 * side, side, 4);
  QvAFrame walk;
  for (std::int16_t f = 0; f < 4; ++f) {
    walk.Reg(-1, static_cast<std::int16_t>(f * side), 0, side, side,
             static_cast<std::int16_t>(f * side + side / 2),
             static_cast<std::int16_t>(side * 5 / 6), 2);
    walk.SetZoom(f, 1.25, 1.25);
    walk.SetRot(f, 0.1 * f);
    walk.SetImage(f, sheet.data(), static_cast<std::int16_t>(4 * side),
                  static_cast<std::int16_t>(4 * side), side);
  }
  QvACycle cycle;
  QvPal water = Area(32, 63);
  cycle.RegArea(&water);
  cycle.SetMode(QvMPlayer::kPlayLoop);
  tbColorTable table = Greys();
  QvPal area = Area(1, 255);
  QvMCast cast;
  QvMLayer layers;
  for (std::int16_t l = 0; l < 8; ++l) layers.New(-1, l);
  std::mt19937 rng(7);
  for (int i = 0; i < members; ++i) {
    std::int16_t id = cast.RegAFrame(-1, &walk, 0, nullptr, &walk);
    cast.RegOrgCTable(id, &table, &area, nullptr);
    RandomPath(&cast, id, &rng);
    if (i % 3 == 0) cast.RegScroll(id, 2, nullptr);
    if (i % 4 == 0) cast.RegAColor(id, &cycle, QvAColor::kCycle, 0, nullptr, &cycle);
    cast.SetStartEnd(id, 0, 999);
    layers.RegCast(static_cast<std::int16_t>(i % 8), &cast, id, -1);
  }
  DrawMoments(state, &layers, members);
}
BENCHMARK(BM_LayerMoment)
    ->ArgsProduct({{16, 64, 256, 1024, 4096}, {48, 12}})
    ->Unit(benchmark::kMicrosecond);

// Fitting one member by moving it on a layer of 1,000 members.
void BM_FitMove1000(benchmark::State& state) {
  QvMCast cast;
  QvMLayer layers;
  layers.New(0, 0);
  for (int i = 0; i < 1000; ++i) {
    std::int16_t id = cast.New(nullptr);
    cast.SetStartEnd(id, i * 20, i * 20 + 9);
    layers.RegCast(0, &cast, id, -1);
  }
  std::int16_t m = cast.New(nullptr);
  layers.RegCast(0, &cast, m, -1);
  for (auto _ : state) {
    cast.SetStartEnd(m, 10005, 10014);
    benchmark::DoNotOptimize(layers.FitCast(0, &cast, m, 0));
  }
  state.SetItemsProcessed(state.iterations() * 1000);
  state.SetLabel("neighbours");
}
BENCHMARK(BM_FitMove1000);

// Looking members up by id in a store of 10,000.
void BM_LookupById10000(benchmark::State& state) {
  QvMCast cast;
  for (int i = 0; i < 10000; ++i) cast.New(nullptr);
  std::mt19937 rng(11);
  for (auto _ : state) {
    auto id = static_cast<std::int16_t>(rng() % 10000);
    benchmark::DoNotOptimize(cast.Start(id));
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel("lookups");
}
BENCHMARK(BM_LookupById10000);

}  // namespace

BENCHMARK_MAIN();
