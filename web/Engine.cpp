// The engine's entry for the browser: the functions the page calls (C
// names, exported from the WebAssembly module). One movie at a time: the
// page hands over the pictures and the scene text, then samples the movie's
// clock on every animation frame and draws the current moment into an
// 8-bit picture with its colour table, which it turns into an ImageData.
//
// The clock is the library's QvMPlayer: its frames are the scene's moments
// (index 0 for "from"), its speed the moments per second of the scene's
// step, and its millisecond count the browser's, handed over through
// qvw_set_ms before each call (QvSetTickSource).

#include <emscripten/emscripten.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "cast/QvMCast.h"
#include "layer/QvMLayer.h"
#include "player/QvMPlayer.h"
#include "scene/GWorld.h"
#include "scene/SceneError.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbColorTable.h"
#include "toolbox/tbPixMap.h"
#include "toolbox/tbPoint.h"
#include "toolbox/tbRGBColor.h"
#include "web/PictureStore.h"

namespace {

constexpr int kMinSpeedLevel = -5;
constexpr int kMaxSpeedLevel = 5;

std::uint32_t gMs = 0;
std::uint32_t BrowserMs() { return gMs; }

struct Movie {
  std::unique_ptr<qvscene::Scene> scene;
  std::unique_ptr<qvscene::GWorld> world;
  QvMPlayer clock;
  int count = 1;
  int index = 0;
  int speedLevel = 0;
  std::int32_t shown = 0;        // the moment drawn last
  std::vector<char> layerShown;  // by layer index, from the bottom
  bool frameByFrame = false;     // playing shows every moment, late or not
  std::vector<unsigned char> pixels;
  std::uint32_t colors[256] = {};  // as an ImageData holds them: r, g, b, a bytes
  std::string hit;
};

std::unique_ptr<Movie> gMovie;
std::string gError;

std::int32_t TimeOf(const Movie& m, int index) {
  return static_cast<std::int32_t>(static_cast<std::int64_t>(m.scene->From()) +
                                   static_cast<std::int64_t>(index) * m.scene->Step());
}

int IndexOf(const Movie& m, std::int32_t t) {
  if (t <= m.scene->From()) return 0;
  const std::int64_t k = (static_cast<std::int64_t>(t) - m.scene->From()) / m.scene->Step();
  return static_cast<int>(std::min<std::int64_t>(k, m.count - 1));
}

// Moments per second at normal speed (one moment lasts step / 30 s), times
// 2^level.
std::int16_t SpeedOf(const Movie& m) {
  long long fps = std::max(1, (30 + m.scene->Step() / 2) / m.scene->Step());
  for (int i = 0; i < m.speedLevel; ++i) fps *= 2;
  for (int i = 0; i > m.speedLevel; --i) fps /= 2;
  return static_cast<std::int16_t>(std::clamp<long long>(fps, 1, 32767));
}

bool Running(Movie& m) { return m.clock.IsPlaying() && !m.clock.IsPausing(); }

bool LayerShown(const Movie& m, int layer) {
  return layer >= 0 && layer < static_cast<int>(m.layerShown.size()) &&
         m.layerShown[static_cast<std::size_t>(layer)];
}

}  // namespace

extern "C" {

/// Sets the millisecond count the clock reads (the browser's
/// performance.now(), wrapping at 2^32).
EMSCRIPTEN_KEEPALIVE void qvw_set_ms(double ms) {
  gMs = static_cast<std::uint32_t>(static_cast<std::uint64_t>(std::max(0.0, ms)));
}

/// Hands over a decoded picture under the file name the scene gives it:
/// data holds 768 bytes of palette (r, g, b) and width x height indices.
EMSCRIPTEN_KEEPALIVE void qvw_add_picture(const char* file, int width, int height,
                                          const unsigned char* data) {
  qvscene::Picture p;
  p.width = width;
  p.height = height;
  std::memcpy(p.palette, data, sizeof p.palette);
  p.paletteCount = 256;
  p.pixels.assign(data + sizeof p.palette,
                  data + sizeof p.palette + static_cast<std::size_t>(width) * height);
  qvweb::AddPicture(file, std::move(p));
}

/// Builds the movie from the scene text (the pictures handed over before).
/// 1 on success; 0 with the reason in qvw_error().
EMSCRIPTEN_KEEPALIVE int qvw_open(const char* name, const char* text) {
  QvSetTickSource(BrowserMs);
  gMovie.reset();
  auto m = std::make_unique<Movie>();
  try {
    m->scene = qvscene::LoadSceneText(name, text);
  } catch (const std::exception& e) {
    gError = e.what();
    qvweb::ClearPictures();
    return 0;
  }
  qvweb::ClearPictures();
  tbColorTable base = m->scene->BasePalette();
  m->world = std::make_unique<qvscene::GWorld>(m->scene->Width(), m->scene->Height(), &base);
  if (!m->world->Ok()) {
    gError = "cannot make an off-screen world";
    return 0;
  }
  m->pixels.resize(static_cast<std::size_t>(m->scene->Width()) * m->scene->Height());
  m->count = static_cast<int>(
      (static_cast<std::int64_t>(m->scene->To()) - m->scene->From()) / m->scene->Step() + 1);
  m->clock.SetMode(2);
  m->clock.SetTop(0);
  m->clock.SetEnd(m->count - 1);
  m->clock.SetSpeed(SpeedOf(*m));
  m->index = m->clock.SetCur(0);
  m->shown = m->scene->From();
  m->layerShown.assign(
      static_cast<std::size_t>(std::max<std::int16_t>(0, m->scene->Layers()->Count())), 1);
  gMovie = std::move(m);
  return 1;
}

/// The reason the last qvw_open failed.
EMSCRIPTEN_KEEPALIVE const char* qvw_error() { return gError.c_str(); }

/// Size of the movie in pixels (0 before a movie is open).
EMSCRIPTEN_KEEPALIVE int qvw_width() { return gMovie ? gMovie->scene->Width() : 0; }
EMSCRIPTEN_KEEPALIVE int qvw_height() { return gMovie ? gMovie->scene->Height() : 0; }
/// Number of moments (from, from + step, ... to).
EMSCRIPTEN_KEEPALIVE int qvw_count() { return gMovie ? gMovie->count : 0; }
/// Index of the clock's current moment.
EMSCRIPTEN_KEEPALIVE int qvw_index() { return gMovie ? gMovie->index : 0; }
/// Time of the moment at index on the movie's timeline.
EMSCRIPTEN_KEEPALIVE int qvw_time_of(int index) { return gMovie ? TimeOf(*gMovie, index) : 0; }
/// Index of the moment at or before time t.
EMSCRIPTEN_KEEPALIVE int qvw_index_of(int t) { return gMovie ? IndexOf(*gMovie, t) : 0; }
/// Moments per second of the clock.
EMSCRIPTEN_KEEPALIVE int qvw_speed() { return gMovie ? gMovie->clock.Speed() : 0; }
/// 0 once, 1 bounce, 2 loop.
EMSCRIPTEN_KEEPALIVE int qvw_mode() { return gMovie ? gMovie->clock.Mode() : 0; }
EMSCRIPTEN_KEEPALIVE int qvw_running() { return gMovie && Running(*gMovie) ? 1 : 0; }

/// Samples the clock; 1 when the current moment changed.
EMSCRIPTEN_KEEPALIVE int qvw_advance() {
  if (!gMovie) return 0;
  const int k =
      gMovie->frameByFrame && Running(*gMovie) ? gMovie->clock.Next() : gMovie->clock.Cur();
  if (k == gMovie->index) return 0;
  gMovie->index = k;
  return 1;
}

/// Plays on from the current moment (from the first when playing once
/// had reached the end).
EMSCRIPTEN_KEEPALIVE void qvw_play() {
  if (!gMovie) return;
  if (gMovie->clock.Mode() == 0 && gMovie->index >= gMovie->count - 1)
    gMovie->index = gMovie->clock.SetCur(0);
  gMovie->clock.Play(gMovie->clock.Speed());
}

/// Stops at the current moment.
EMSCRIPTEN_KEEPALIVE void qvw_pause() {
  if (gMovie) gMovie->clock.Pause();
}

/// Pauses and moves n moments (fitted by the clock's mode).
EMSCRIPTEN_KEEPALIVE void qvw_step(int n) {
  if (!gMovie) return;
  if (Running(*gMovie)) gMovie->clock.Pause();
  gMovie->clock.Step(static_cast<std::int16_t>(std::clamp(n, -32768, 32767)));
  gMovie->index = gMovie->clock.Cur();
}

/// Moves to the moment at index; playing or paused stays.
EMSCRIPTEN_KEEPALIVE void qvw_go_to(int index) {
  if (gMovie) gMovie->index = gMovie->clock.SetCur(index);
}

/// Doubles (faster > 0) or halves the speed, within 2^-5 to 2^5 times.
EMSCRIPTEN_KEEPALIVE void qvw_faster(int faster) {
  if (!gMovie) return;
  gMovie->speedLevel =
      std::clamp(gMovie->speedLevel + (faster > 0 ? 1 : -1), kMinSpeedLevel, kMaxSpeedLevel);
  gMovie->clock.SetSpeed(SpeedOf(*gMovie));
}

/// Once, bounce, loop in turn; gives the new mode.
EMSCRIPTEN_KEEPALIVE int qvw_cycle_mode() {
  if (!gMovie) return 0;
  const char mode = gMovie->clock.Mode();
  gMovie->clock.SetMode(mode >= 0 && mode < 2 ? static_cast<char>(mode + 1) : 0);
  return gMovie->clock.Mode();
}

/// Number of layers, from the bottom.
EMSCRIPTEN_KEEPALIVE int qvw_layer_count() {
  return gMovie ? static_cast<int>(gMovie->layerShown.size()) : 0;
}
/// 1 when layer index (from the bottom, 0 first) is drawn, else 0.
EMSCRIPTEN_KEEPALIVE int qvw_layer_shown(int index) {
  return gMovie && LayerShown(*gMovie, index) ? 1 : 0;
}
/// Hides a shown layer or shows a hidden one; gives 1 when it is now
/// shown, 0 when hidden, -1 when there is no such layer. The colours stay
/// the whole movie's: colour animations on a hidden layer still change them.
EMSCRIPTEN_KEEPALIVE int qvw_toggle_layer(int index) {
  if (!gMovie || index < 0 || index >= static_cast<int>(gMovie->layerShown.size())) return -1;
  char& shown = gMovie->layerShown[static_cast<std::size_t>(index)];
  shown = !shown;
  return shown;
}
/// Switches between real time (moments that are late are skipped) and
/// frame by frame (playing shows every moment in turn); gives 1 for frame
/// by frame.
EMSCRIPTEN_KEEPALIVE int qvw_frame_by_frame() {
  if (!gMovie) return 0;
  gMovie->frameByFrame = !gMovie->frameByFrame;
  return gMovie->frameByFrame ? 1 : 0;
}

/// 1 while playing frame by frame.
EMSCRIPTEN_KEEPALIVE int qvw_frame_by_frame_on() { return gMovie && gMovie->frameByFrame ? 1 : 0; }

/// Draws moment t (any time, not only the clock's moments) into
/// qvw_pixels() and its colour table into qvw_colors().
EMSCRIPTEN_KEEPALIVE void qvw_draw(int t) {
  if (!gMovie) return;
  Movie& m = *gMovie;
  tbPixMap* pm = m.world->PixMap();
  m.scene->DrawMoment(t, pm, [&m](int layer) { return LayerShown(m, layer); });
  const std::size_t w = static_cast<std::size_t>(m.scene->Width());
  for (std::int32_t y = 0; y < m.scene->Height(); ++y) {
    std::memcpy(m.pixels.data() + y * w,
                pm->TopAddr() + static_cast<std::ptrdiff_t>(y) * pm->Offset(), w);
  }
  tbColorTable table;
  m.scene->Palette(t, &table);
  for (int i = 0; i < 256; ++i) {
    const tbRGBColor* c = table.CTTable(static_cast<std::int16_t>(i));
    m.colors[i] = 0xff000000u | static_cast<std::uint32_t>(c->blue) << 16 |
                  static_cast<std::uint32_t>(c->green) << 8 | c->red;
  }
  m.shown = t;
}

/// The indices of the moment drawn last, width x height, rows from the top.
EMSCRIPTEN_KEEPALIVE const unsigned char* qvw_pixels() {
  return gMovie ? gMovie->pixels.data() : nullptr;
}
/// Its 256 colours, each as the four bytes r, g, b, 255.
EMSCRIPTEN_KEEPALIVE const std::uint32_t* qvw_colors() { return gMovie ? gMovie->colors : nullptr; }

/// Name of the topmost member whose frame covers movie pixel (x, y) in the
/// moment drawn last (layers from the top down, on each the member placed
/// last first); "" when none.
EMSCRIPTEN_KEEPALIVE const char* qvw_hit(int x, int y) {
  if (!gMovie) return "";
  Movie& m = *gMovie;
  m.hit.clear();
  std::int16_t id = -1;
  int layer = -1;
  if (m.scene->TopmostAt(x, y, m.shown, &id, &layer, [&m](int l) { return LayerShown(m, l); })) {
    m.hit = m.scene->MemberName(id);
    if (m.hit.empty()) m.hit = "member " + std::to_string(id);
  }
  return m.hit.c_str();
}

}  // extern "C"
