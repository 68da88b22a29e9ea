// qvmovie-demo-assets: draws the indexed pictures of the example scenes
// (examples/demo.json and examples/falls.json) into a directory; the copies
// in examples/ were made by it, and a test checks that it still makes the
// same bytes. Everything is computed here; all pictures of the demo share
// one 256-colour palette, laid out as follows:
//
//     0        transparent key of the sprites (black)
//     1 - 15   the walking figure: outline, skin, shirt, trousers, hair, greys
//    16 - 47   sky, top to horizon (faded at dusk)
//    48 - 63   far mountains, 63 snow
//    64 - 79   hills
//    80 - 91   water, one ring of blues (cycled)
//    92 - 95   foam and sand
//    96 - 103  letters of the sign (switched between colour tables)
//   104 - 107  lamp of the lighthouse (flashed)
//   108 - 115  lighthouse and rock
//   116 - 120  sun
//   124 - 126  moon
//   136 - 138  sign board and pole

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "scene/PngIO.h"

namespace {

using qvscene::Picture;

constexpr double kPi = 3.14159265358979323846;

struct Rgb {
  int r, g, b;
};

Rgb Mix(Rgb a, Rgb b, double t) {
  return {static_cast<int>(std::lround(a.r + (b.r - a.r) * t)),
          static_cast<int>(std::lround(a.g + (b.g - a.g) * t)),
          static_cast<int>(std::lround(a.b + (b.b - a.b) * t))};
}

void SetColor(Picture* p, int i, Rgb c) {
  p->palette[i][0] = static_cast<unsigned char>(c.r);
  p->palette[i][1] = static_cast<unsigned char>(c.g);
  p->palette[i][2] = static_cast<unsigned char>(c.b);
}

void MakePalette(Picture* p) {
  const Rgb fixed[] = {{0, 0, 0},     {24, 18, 28},    {240, 192, 150}, {200, 142, 110},
                       {206, 52, 62}, {146, 30, 44},   {52, 74, 156},   {32, 42, 104},
                       {96, 54, 30},  {44, 32, 30},    {250, 250, 250}, {16, 16, 20},
                       {80, 80, 92},  {122, 122, 134}, {172, 172, 184}, {212, 212, 222}};
  for (int i = 0; i < 16; ++i) SetColor(p, i, fixed[i]);
  for (int i = 0; i < 32; ++i) SetColor(p, 16 + i, Mix({28, 52, 132}, {176, 214, 240}, i / 31.0));
  for (int i = 0; i < 15; ++i) SetColor(p, 48 + i, Mix({58, 64, 112}, {132, 140, 184}, i / 14.0));
  SetColor(p, 63, {236, 240, 250});
  for (int i = 0; i < 16; ++i) SetColor(p, 64 + i, Mix({18, 70, 34}, {120, 186, 74}, i / 15.0));
  for (int i = 0; i < 12; ++i) {
    const double t = (1.0 - std::cos(2.0 * kPi * i / 12.0)) / 2.0;
    SetColor(p, 80 + i, Mix({18, 58, 124}, {96, 170, 226}, t));
  }
  SetColor(p, 92, {226, 240, 250});
  SetColor(p, 93, {186, 214, 236});
  SetColor(p, 94, {222, 200, 140});
  SetColor(p, 95, {186, 162, 106});
  for (int i = 0; i < 8; ++i) SetColor(p, 96 + i, Mix({255, 120, 200}, {200, 40, 140}, i / 7.0));
  const Rgb lamp[] = {{255, 244, 160}, {255, 226, 110}, {250, 200, 70}, {255, 255, 220}};
  for (int i = 0; i < 4; ++i) SetColor(p, 104 + i, lamp[i]);
  const Rgb house[] = {{242, 242, 238}, {204, 44, 44}, {150, 30, 34}, {108, 104, 100},
                       {72, 68, 66},    {64, 42, 30},  {44, 46, 70},  {180, 176, 168}};
  for (int i = 0; i < 8; ++i) SetColor(p, 108 + i, house[i]);
  const Rgb sun[] = {
      {255, 250, 200}, {255, 230, 90}, {255, 200, 60}, {250, 160, 40}, {240, 120, 30}};
  for (int i = 0; i < 5; ++i) SetColor(p, 116 + i, sun[i]);
  const Rgb moon[] = {{244, 242, 222}, {206, 204, 190}, {160, 160, 150}};
  for (int i = 0; i < 3; ++i) SetColor(p, 124 + i, moon[i]);
  const Rgb board[] = {{40, 36, 52}, {96, 90, 110}, {70, 52, 40}};
  for (int i = 0; i < 3; ++i) SetColor(p, 136 + i, board[i]);
  p->paletteCount = 256;
}

Picture NewPicture(int w, int h, unsigned char fill) {
  Picture p;
  p.width = w;
  p.height = h;
  p.pixels.assign(static_cast<std::size_t>(w) * h, fill);
  MakePalette(&p);
  return p;
}

void Put(Picture* p, int x, int y, int c) {
  if (x < 0 || y < 0 || x >= p->width || y >= p->height) return;
  p->Row(y)[x] = static_cast<unsigned char>(c);
}

void Disc(Picture* p, double cx, double cy, double r, int c) {
  for (int y = static_cast<int>(cy - r - 1); y <= cy + r + 1; ++y) {
    for (int x = static_cast<int>(cx - r - 1); x <= cx + r + 1; ++x) {
      if ((x + 0.5 - cx) * (x + 0.5 - cx) + (y + 0.5 - cy) * (y + 0.5 - cy) <= r * r)
        Put(p, x, y, c);
    }
  }
}

// A thick line from (x0, y0) to (x1, y1).
void Line(Picture* p, double x0, double y0, double x1, double y1, double width, int c) {
  const double len = std::hypot(x1 - x0, y1 - y0);
  const int steps = static_cast<int>(len * 3) + 1;
  for (int i = 0; i <= steps; ++i) {
    const double t = static_cast<double>(i) / steps;
    Disc(p, x0 + (x1 - x0) * t, y0 + (y1 - y0) * t, width / 2, c);
  }
}

// Ordered 4 x 4 dither threshold in [0, 1).
double Bayer(int x, int y) {
  static const int m[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
  return (m[y & 3][x & 3] + 0.5) / 16.0;
}

// Index first + v * (count - 1), dithered between neighbours.
int Shade(int first, int count, double v, int x, int y) {
  if (v < 0) v = 0;
  if (v > 1) v = 1;
  const double f = v * (count - 1);
  int i = static_cast<int>(f);
  if (f - i > Bayer(x, y) && i < count - 1) ++i;
  return first + i;
}

Picture Sky() {
  Picture p = NewPicture(320, 200, 47);
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 320; ++x) Put(&p, x, y, Shade(16, 32, y / 150.0, x, y));
  }
  return p;
}

// A ridge that repeats every 320 pixels, so that the picture wraps.
double Ridge(double x, const double* amp, const int* periods, const double* phase, int n) {
  double h = 0;
  for (int i = 0; i < n; ++i) h += amp[i] * std::sin(2 * kPi * x / periods[i] + phase[i]);
  return h;
}

Picture Mountains() {
  Picture p = NewPicture(320, 90, 0);
  const double amp[] = {20, 12, 6, 2};
  const int per[] = {320, 160, 64, 32};
  const double ph[] = {0.3, 1.7, 0.9, 2.2};
  for (int x = 0; x < 320; ++x) {
    const double top = 44 - Ridge(x, amp, per, ph, 4);
    const double slope = Ridge(x + 1, amp, per, ph, 4) - Ridge(x - 1, amp, per, ph, 4);
    for (int y = 0; y < 90; ++y) {
      if (y < top) continue;
      const double depth = (y - top) / 60.0;
      if (top < 26 && y < top + (26 - top) * 0.7 + 2) {
        Put(&p, x, y, slope > 0 ? 63 : 62);  // snow, shaded away from the light
        continue;
      }
      Put(&p, x, y, Shade(48, 15, 0.85 - depth * 0.6 + slope * 0.08, x, y));
    }
  }
  return p;
}

Picture Hills() {
  Picture p = NewPicture(320, 76, 0);
  const double amp[] = {8, 5, 3};
  const int per[] = {320, 80, 40};
  const double ph[] = {1.1, 0.4, 2.9};
  for (int x = 0; x < 320; ++x) {
    const double top = 32 - Ridge(x, amp, per, ph, 3);
    for (int y = 0; y < 76; ++y) {
      if (y < top) continue;
      Put(&p, x, y, Shade(64, 16, 0.95 - (y - top) / 50.0, x, y));
    }
  }
  // Small trees, every 40 pixels so that the picture still wraps.
  for (int k = 0; k < 8; ++k) {
    const int x = 20 + k * 40 + (k % 3) * 7;
    const int base = static_cast<int>(32 - Ridge(x, amp, per, ph, 3)) + 3;
    for (int i = 0; i < 14; ++i) {
      const int half = i / 3 + 1;
      for (int dx = -half; dx <= half; ++dx) Put(&p, x + dx, base - 14 + i, dx < 0 ? 65 : 67);
    }
    Put(&p, x, base, 8);
    Put(&p, x, base + 1, 8);
  }
  return p;
}

Picture Water() {
  Picture p = NewPicture(320, 36, 80);
  for (int y = 0; y < 36; ++y) {
    for (int x = 0; x < 320; ++x) {
      // Bands that lean and wave, so that cycling the ring of blues makes
      // them roll toward the shore.
      const double wave = 3.0 * std::sin(2 * kPi * x / 40.0 + y * 0.35);
      const int band = static_cast<int>(std::floor((y * 2.0 + wave) / 2.0));
      Put(&p, x, y, 80 + ((band % 12) + 12) % 12);
    }
  }
  for (int x = 0; x < 320; ++x) {
    Put(&p, x, 0, (x / 3) % 4 == 0 ? 93 : 92);
    if ((x / 5) % 3 == 0) Put(&p, x, 1, 93);
  }
  return p;
}

// The walking figure: four poses side by side, 32 x 48 each, feet at row 46.
Picture Walker() {
  Picture p = NewPicture(128, 48, 0);
  const double swing[4] = {0.45, 0.15, -0.45, -0.15};
  for (int pose = 0; pose < 4; ++pose) {
    const double ox = pose * 32 + 16;
    const double a = swing[pose];
    const double bob = (pose % 2) ? -1 : 0;
    const double hipY = 30 + bob;
    // Back leg and arm first, in darker colours.
    Line(&p, ox, hipY, ox - 9 * std::sin(a), 45, 4.2, 1);
    Line(&p, ox, hipY, ox - 9 * std::sin(a), 45, 2.6, 7);
    const double arm = 11 * std::sin(a * 1.4);
    Line(&p, ox, 17 + bob, ox + arm, 28 + bob, 3.6, 1);
    Line(&p, ox, 17 + bob, ox + arm, 28 + bob, 2.2, 5);
    // Body.
    for (int y = 15; y <= 31; ++y) {
      for (int x = -4; x <= 4; ++x) {
        const bool edge = x == -4 || x == 4 || y == 15;
        Put(&p, static_cast<int>(ox) + x, y + static_cast<int>(bob),
            edge ? 1 : (y > 28 ? 6 : (x > 2 ? 5 : 4)));
      }
    }
    // Front leg and arm.
    Line(&p, ox, hipY, ox + 9 * std::sin(a), 45, 4.2, 1);
    Line(&p, ox, hipY, ox + 9 * std::sin(a), 45, 2.6, 6);
    Line(&p, ox + 9 * std::sin(a) - 1, 45.5, ox + 9 * std::sin(a) + 3, 45.5, 2.4, 9);
    Line(&p, ox - 9 * std::sin(a) - 1, 45.5, ox - 9 * std::sin(a) + 3, 45.5, 2.4, 9);
    Line(&p, ox, 17 + bob, ox - arm, 28 + bob, 3.6, 1);
    Line(&p, ox, 17 + bob, ox - arm, 28 + bob, 2.2, 5);
    Disc(&p, ox - arm, 28.5 + bob, 1.6, 2);
    // Head with hair and an eye, looking right.
    Disc(&p, ox + 1, 9 + bob, 6.5, 1);
    Disc(&p, ox + 1, 9 + bob, 5.5, 2);
    for (int y = 2; y <= 7; ++y) {
      for (int x = -5; x <= 2; ++x) {
        if ((x + 0.5) * (x + 0.5) + (y - 9 + 0.5) * (y - 9 + 0.5) <= 36 &&
            y < 6 + (x < -2 ? 4 : 0)) {
          Put(&p, static_cast<int>(ox) + 1 + x, y + static_cast<int>(bob), 8);
        }
      }
    }
    Put(&p, static_cast<int>(ox) + 4, 8 + static_cast<int>(bob), 11);
    Put(&p, static_cast<int>(ox) + 6, 11 + static_cast<int>(bob), 3);
  }
  return p;
}

Picture Lighthouse() {
  Picture p = NewPicture(40, 100, 0);
  // Rock.
  for (int y = 84; y < 100; ++y) {
    for (int x = 0; x < 40; ++x) {
      const double r = std::hypot((x - 20) / 20.0, (y - 100) / 16.0);
      if (r <= 1.0) Put(&p, x, y, (x + y) % 5 == 0 ? 112 : (x < 20 ? 111 : 112));
    }
  }
  // Tapered tower with red stripes.
  for (int y = 26; y < 88; ++y) {
    const double half = 6 + (y - 26) * 4.0 / 62.0;
    for (int x = static_cast<int>(20 - half); x <= static_cast<int>(20 + half); ++x) {
      const bool stripe = ((y - 26) / 10) % 2 == 1;
      const bool shade = x > 20 + half * 0.4;
      Put(&p, x, y, stripe ? (shade ? 110 : 109) : (shade ? 115 : 108));
    }
  }
  Put(&p, 20, 80, 113);
  for (int y = 78; y < 88; ++y) {
    for (int x = 18; x <= 22; ++x) Put(&p, x, y, 113);
  }
  for (int y = 50; y < 55; ++y) Put(&p, 20, y, 114), Put(&p, 21, y, 114);
  // Gallery, lamp room and roof.
  for (int x = 11; x <= 29; ++x) Put(&p, x, 25, 112), Put(&p, x, 24, 111);
  for (int y = 13; y < 24; ++y) {
    for (int x = 14; x <= 26; ++x) {
      const bool frame = x == 14 || x == 26 || x == 20;
      Put(&p, x, y, frame ? 112 : 104 + ((x + y) % 3 == 0 ? 3 : (y < 17 ? 1 : (y > 20 ? 2 : 0))));
    }
  }
  for (int y = 5; y < 13; ++y) {
    const int half = (y - 5) + 1;
    for (int x = 20 - half; x <= 20 + half; ++x) Put(&p, x, y, x > 20 ? 110 : 109);
  }
  Put(&p, 20, 3, 112);
  Put(&p, 20, 4, 112);
  return p;
}

// 5 x 7 letters of the sign.
const char* Glyph(char c) {
  switch (c) {
    case 'Q':
      return ".###.#...##...##...##.#.##..#..##.#";
    case 'V':
      return "#...##...##...##...##...#.#.#..#...";
    case 'M':
      return "#...###.###.#.##...##...##...##...#";
    case 'O':
      return ".###.#...##...##...##...##...#.###.";
    case 'I':
      return "#####..#....#....#....#....#..#####";
    case 'E':
      return "######....#....####.#....#....#####";
    default:
      return "...................................";
  }
}

Picture Sign() {
  Picture p = NewPicture(100, 64, 0);
  // Pole and board.
  for (int y = 28; y < 64; ++y) Put(&p, 48, y, 138), Put(&p, 49, y, 138), Put(&p, 50, y, 136);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 100; ++x) {
      const bool edge = x < 2 || x > 97 || y < 2 || y > 27;
      Put(&p, x, y, edge ? 137 : 136);
    }
  }
  const char* text = "QVMOVIE";
  for (int k = 0; k < 7; ++k) {
    const char* g = Glyph(text[k]);
    for (int gy = 0; gy < 7; ++gy) {
      for (int gx = 0; gx < 5; ++gx) {
        if (g[gy * 5 + gx] != '#') continue;
        for (int dy = 0; dy < 2; ++dy) {
          for (int dx = 0; dx < 2; ++dx) {
            const int y = 8 + gy * 2 + dy;
            Put(&p, 8 + k * 12 + gx * 2 + dx, y, 96 + (y - 8) / 2);
          }
        }
      }
    }
  }
  return p;
}

Picture Sun() {
  Picture p = NewPicture(48, 48, 0);
  for (int k = 0; k < 8; ++k) {
    const double a = k * kPi / 4;
    Line(&p, 24 + 13 * std::cos(a), 24 + 13 * std::sin(a), 24 + 21 * std::cos(a),
         24 + 21 * std::sin(a), 3.2, k % 2 ? 119 : 118);
  }
  Disc(&p, 24, 24, 13, 119);
  Disc(&p, 24, 24, 11.5, 117);
  Disc(&p, 22, 22, 7, 116);
  return p;
}

Picture Moon() {
  Picture p = NewPicture(32, 32, 0);
  Disc(&p, 16, 16, 12, 125);
  Disc(&p, 15, 15, 11, 124);
  Disc(&p, 22, 11, 9.5, 0);
  Put(&p, 10, 19, 126);
  Put(&p, 11, 19, 126);
  Put(&p, 9, 13, 126);
  return p;
}

// The falls scene (examples/falls.json): one picture, still but for its
// colours, in the manner of the colour-cycling landscapes of 8-bit paint
// programs. Its own palette:
//
//     0        black
//     1 - 24   sky, top to horizon
//    25 - 31   far mountains
//    32 - 47   falling water and foam (cycled fast: the water falls)
//    48 - 59   ripples of the pool, one ring of blues (cycled: they spread)
//    72 - 87   flames (cycled: they rise)
//    88 - 95   stars (cycled slowly: they twinkle)
//    96 - 111  rock of the cliff
//   112 - 119  grass and bushes of the banks
//   120 - 123  logs of the fire
void MakeFallsPalette(Picture* p) {
  for (int i = 0; i < 256; ++i) SetColor(p, i, {0, 0, 0});
  for (int i = 0; i < 24; ++i) {
    const double t = i / 23.0;
    SetColor(p, 1 + i,
             t < 0.6 ? Mix({12, 14, 44}, {84, 56, 120}, t / 0.6)
                     : Mix({84, 56, 120}, {236, 132, 86}, (t - 0.6) / 0.4));
  }
  for (int i = 0; i < 7; ++i) SetColor(p, 25 + i, Mix({40, 30, 72}, {92, 62, 108}, i / 6.0));
  // Streaks of light and dark water, so that their motion shows.
  const int water[16] = {250, 226, 196, 160, 124, 104, 132, 182,
                         238, 204, 150, 112, 92,  120, 170, 214};
  for (int i = 0; i < 16; ++i) {
    const int v = water[i];
    SetColor(p, 32 + i, {v * 3 / 4, v * 7 / 8, std::min(255, v + 20)});
  }
  for (int i = 0; i < 12; ++i) {
    const double t = (1.0 - std::cos(2.0 * kPi * i / 12.0)) / 2.0;
    SetColor(p, 48 + i, Mix({14, 36, 86}, {70, 130, 190}, t));
  }
  const Rgb flame[16] = {{255, 250, 210}, {255, 236, 130}, {255, 212, 80}, {252, 176, 48},
                         {246, 136, 32},  {228, 96, 24},   {190, 60, 20},  {130, 34, 18},
                         {204, 72, 22},   {244, 128, 30},  {255, 196, 64}, {255, 230, 120},
                         {250, 160, 40},  {220, 84, 22},   {160, 44, 18},  {240, 116, 28}};
  for (int i = 0; i < 16; ++i) SetColor(p, 72 + i, flame[i]);
  const int star[8] = {0, 40, 100, 170, 255, 170, 100, 40};
  for (int i = 0; i < 8; ++i)
    SetColor(p, 88 + i, Mix({40, 44, 92}, {255, 255, 240}, star[i] / 255.0));
  for (int i = 0; i < 16; ++i) SetColor(p, 96 + i, Mix({34, 28, 38}, {138, 116, 112}, i / 15.0));
  for (int i = 0; i < 8; ++i) SetColor(p, 112 + i, Mix({10, 30, 24}, {58, 96, 52}, i / 7.0));
  const Rgb logs[4] = {{40, 24, 16}, {72, 44, 26}, {104, 66, 38}, {150, 96, 52}};
  for (int i = 0; i < 4; ++i) SetColor(p, 120 + i, logs[i]);
  p->paletteCount = 256;
}

// A fixed pseudo-random number in [0, 1) for a pixel.
double Noise(int x, int y) {
  std::uint32_t h =
      static_cast<std::uint32_t>(x) * 374761393u + static_cast<std::uint32_t>(y) * 668265263u;
  h = (h ^ (h >> 13)) * 1274126177u;
  h = (h ^ (h >> 16)) * 2246822519u;
  return ((h ^ (h >> 13)) & 0xffffu) / 65536.0;
}

int Wrap(int v, int n) { return ((v % n) + n) % n; }

Picture Falls() {
  Picture p;
  p.width = 320;
  p.height = 200;
  p.pixels.assign(320 * 200, 0);
  MakeFallsPalette(&p);
  const double fallX0 = 138, fallX1 = 176, fallTop = 58, poolTop = 150;
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 320; ++x) {
      // Sky with stars, then the far mountains.
      int c = Shade(1, 24, y / 120.0, x, y);
      if (y < 80 && Noise(x, y) < 0.012) c = 88 + static_cast<int>(Noise(y, x) * 8);
      const double far = 92 - 14 * std::sin(x / 37.0 + 0.8) - 7 * std::sin(x / 13.0);
      if (y >= far) c = Shade(25, 7, (y - far) / 40.0, x, y);
      // The cliff, its top edge rough, the water cut into it.
      const double cliffTop = 54 + 6 * std::sin(x / 17.0) + 3 * std::sin(x / 5.3) +
                              (x < 100 ? (100 - x) * 0.9 : 0) + (x > 215 ? (x - 215) * 1.1 : 0);
      if (y >= cliffTop && x > 30 && x < 300) {
        const double light = 0.75 - (y - cliffTop) / 160.0 + 0.25 * std::sin(x / 9.0 + y / 23.0) +
                             (Noise(x / 3, y / 2) - 0.5) * 0.35;
        c = Shade(96, 16, light, x, y);
      }
      const double wobble = 1.5 * std::sin(y / 11.0);
      if (y >= fallTop && y < poolTop + 4 && x >= fallX0 + wobble - (y - fallTop) * 0.08 &&
          x <= fallX1 + wobble + (y - fallTop) * 0.08) {
        // Falling water: farther down, each colour spans more rows, so the
        // water speeds up as it falls; each column starts at its own place.
        const double t = (y - fallTop) / (poolTop - fallTop);
        const double s = (poolTop - fallTop) / 2.0 * std::log(1.0 + 2.0 * t);
        c = 32 + Wrap(static_cast<int>(s) + static_cast<int>(Noise(x, 7) * 16), 16);
      }
      // The pool: rings around the foot of the falls, banks to the sides.
      const double bankL = 70 - (y - poolTop) * 1.2 + 4 * std::sin(y / 3.0);
      const double bankR = 232 + (y - poolTop) * 1.5 + 3 * std::sin(y / 4.0);
      if (y >= poolTop) {
        if (x < bankL || x > bankR) {
          c = Shade(112, 8, 0.8 - (y - poolTop) / 70.0 + (Noise(x, y) - 0.5) * 0.5, x, y);
        } else {
          const double dx = x - (fallX0 + fallX1) / 2, dy = (y - poolTop + 2) * 3.2;
          const double d = std::sqrt(dx * dx + dy * dy);
          c = 48 + Wrap(static_cast<int>(d / 2.5), 12);
          if (d < 26 + 6 * Noise(x, y)) c = 32 + static_cast<int>(Noise(x, y) * 16);  // foam
        }
      }
      Put(&p, x, y, c);
    }
  }
  // The campfire on the right bank: logs, then flames whose colours rise.
  const double fx = 272, base = 176;
  for (int k = -1; k <= 1; k += 2)
    Line(&p, fx - 12 * k, base + 4, fx + 10 * k, base - 2, 4, 121 + (k > 0));
  Line(&p, fx - 3, base + 5, fx + 4, base - 4, 3.5, 123);
  for (int y = static_cast<int>(base - 34); y < base; ++y) {
    const double t = (base - y) / 34.0;  // 0 at the logs, 1 at the tip
    const double half = 10 * std::pow(std::sin(kPi * (0.15 + 0.85 * t)), 0.7) * (1.0 - 0.35 * t);
    for (int x = static_cast<int>(fx - half); x <= fx + half; ++x) {
      const double edge = std::fabs(x - fx) / (half + 0.01);
      if (edge > 0.75 && Noise(x, y) < edge - 0.5) continue;
      Put(&p, x, y,
          72 + Wrap(static_cast<int>(base - y) / 2 + static_cast<int>(Noise(x, 3) * 6) +
                        static_cast<int>(edge * 4),
                    16));
    }
  }
  return p;
}

bool Save(const std::string& dir, const char* name, const Picture& p) {
  std::string error;
  const std::string path = dir + "/" + name;
  if (!qvscene::WriteIndexedPng(path, p, &error)) {
    std::fprintf(stderr, "qvmovie-demo-assets: %s\n", error.c_str());
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
    std::fprintf(argc == 2 ? stdout : stderr,
                 "Usage: qvmovie-demo-assets DIR\n"
                 "Writes the indexed PNG pictures of the example scenes (demo.json,\n"
                 "falls.json) into DIR: the pictures committed in examples/.\n");
    return argc == 2 ? 0 : 2;
  }
  const std::string dir = argv[1];
  if (mkdir(dir.c_str(), 0777) != 0) {
    struct stat st;
    if (stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
      std::fprintf(stderr, "qvmovie-demo-assets: cannot create directory '%s'\n", dir.c_str());
      return 1;
    }
  }
  const bool ok = Save(dir, "sky.png", Sky()) && Save(dir, "mountains.png", Mountains()) &&
                  Save(dir, "hills.png", Hills()) && Save(dir, "water.png", Water()) &&
                  Save(dir, "walker.png", Walker()) && Save(dir, "lighthouse.png", Lighthouse()) &&
                  Save(dir, "sign.png", Sign()) && Save(dir, "sun.png", Sun()) &&
                  Save(dir, "moon.png", Moon()) && Save(dir, "falls.png", Falls());
  return ok ? 0 : 1;
}
