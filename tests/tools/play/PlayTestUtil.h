// Helpers of the player's tests: a small scene with its pictures in a fresh
// directory, synthetic SDL events, a settable millisecond clock, and the
// fixture of an opened player compared with moments drawn by the scene reader.
#pragma once

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "../ToolTestUtil.h"
#include "play/Frame.h"
#include "play/Player.h"
#include "play/View.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPixMap.h"

namespace playtest {

using namespace tooltest;

// "back" (pal.png, the tiny scene's picture) fills the picture on layer 1
// (id 10); "spr" (spr.png: 3 5 / 6 0, 0 transparent) walks on layer 2 (id
// 20) along y = row from x = 0, one pixel per unit, and stays at x = 6 from
// time 6 on. Moments 0 to `to`, step 1.
inline std::string SceneText(int row = 1, int to = 9) {
  const std::string y = std::to_string(row);
  return R"({"output": {"width": 8, "height": 4, "to": )" + std::to_string(to) +
         R"(, "palette": "back"},
  "pictures": {"back": "pal.png", "spr": "spr.png"},
  "members": [
    {"name": "back", "picture": "back", "frames": [{"rect": [0, 0, 8, 4]}]},
    {"name": "spr", "picture": "spr", "transparent": 0,
      "frames": [{"rect": [0, 0, 2, 2], "anchor": [0, 0]}],
      "path": {"points": [[0, )" +
         y + "], [6, " + y + R"(]], "between": 5, "type": "clamp"}}],
  "layers": [{"id": 10, "members": ["back"]}, {"id": 20, "members": ["spr"]}]}
)";
}

// Writes the scene and its pictures into dir; the scene file's path.
inline std::string WriteScene(const TempDir& dir) {
  WriteTinyPictures(dir);
  WriteText(dir / "scene.json", SceneText());
  return dir / "scene.json";
}

// Moment t of the scene file as the scene reader draws it.
inline Picture Reference(const std::string& scenePath, std::int32_t t) {
  Picture p;
  EXPECT_TRUE(qvscene::LoadScene(scenePath)->Render(t, &p));
  return p;
}

// A millisecond clock that the tests set, installed for the object's
// lifetime; it starts at 100000 ms, tick 5999 of the 1/60 s clock.
class FakeTicks {
 public:
  FakeTicks() {
    now_ = 100000;
    previous_ = QvSetTickSource(&Now);
  }
  ~FakeTicks() { QvSetTickSource(previous_); }
  void Advance(std::uint32_t ms) { now_ += ms; }

 private:
  static std::uint32_t Now() { return now_; }
  static inline std::uint32_t now_ = 0;
  QvTickSource previous_ = nullptr;
};

inline SDL_Event Key(SDL_Keycode sym, bool repeat = false) {
  SDL_Event e{};
  e.type = SDL_KEYDOWN;
  e.key.state = SDL_PRESSED;
  e.key.repeat = repeat ? 1 : 0;
  e.key.keysym.sym = sym;
  return e;
}

inline SDL_Event Mouse(Uint32 type, int x, int y, int button = SDL_BUTTON_LEFT) {
  SDL_Event e{};
  e.type = type;
  if (type == SDL_MOUSEMOTION) {
    e.motion.x = x;
    e.motion.y = y;
    e.motion.state = button ? SDL_BUTTON(button) : 0;  // 0: no button held
  } else {
    e.button.button = static_cast<Uint8>(button);
    e.button.state = type == SDL_MOUSEBUTTONDOWN ? SDL_PRESSED : SDL_RELEASED;
    e.button.x = x;
    e.button.y = y;
  }
  return e;
}

inline std::uint32_t ColorOf(const Picture& p, int index) {
  return qvplay::Rgb(p.palette[index][0], p.palette[index][1], p.palette[index][2]);
}

// An opened player on the scene, its window sized for scale 10 (80 x 40
// picture above a bar with two rows), and the view it draws.
class PlayerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    int status = 0;
    ASSERT_TRUE(player.Open(WriteScene(dir), {}, &error, &status)) << error;
    Resize(10, 2);
  }
  void Resize(int scale, int rows) {
    int w = 0, h = 0;
    qvplay::WindowSizeFor(8, 4, rows, scale, &w, &h);
    player.SetWindowSize(w, h);
  }
  bool Press(SDL_Keycode sym, bool repeat = false) { return player.HandleEvent(Key(sym, repeat)); }
  const qvplay::Layout& L() { return player.GetLayout(); }
  // Window pixels of the picture area that differ from picture enlarged.
  long Shown(const Picture& ref) {
    qvplay::DrawView(&player, &frame);
    long wrong = 0;
    for (int y = 0; y < L().picHeight; ++y) {
      for (int x = 0; x < L().picWidth; ++x) {
        const std::uint32_t want = ColorOf(ref, ref.At(x / L().scale, y / L().scale));
        wrong += frame.At(L().picX + x, L().picY + y) != want;
      }
    }
    return wrong;
  }
  std::string Scene() const { return dir / "scene.json"; }
  long Differs(std::int32_t t) { return Shown(Reference(Scene(), t)); }
  // Movie pixels of the player's 8-bit picture and colours (before the
  // window's panels are laid over it) that differ from ref.
  long PictureDiffers(const Picture& ref) {
    player.UpdatePicture();
    tbPixMap* pm = player.PixMap();
    long wrong = 0;
    for (int y = 0; y < ref.height; ++y) {
      const unsigned char* row = pm->TopAddr() + static_cast<std::ptrdiff_t>(y) * pm->Offset();
      for (int x = 0; x < ref.width; ++x)
        wrong += player.Colors()[row[x]] != ColorOf(ref, ref.At(x, y));
    }
    return wrong;
  }

  FakeTicks ticks;
  TempDir dir;
  qvplay::Player player;
  qvplay::Frame frame;
};

}  // namespace playtest
