// Helpers of the player's tests: a small scene with its pictures in a fresh
// directory, synthetic SDL events, a settable millisecond clock and a
// comparison of the player's window with a moment drawn by the scene reader.
#pragma once

#include <SDL.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "play/Frame.h"
#include "play/Player.h"
#include "play/View.h"
#include "scene/Picture.h"
#include "scene/PngIO.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPixMap.h"

namespace playtest {

namespace fs = std::filesystem;

// A fresh directory, removed with everything in it at the end of the test.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (fs::temp_directory_path() / "qvplay-XXXXXX").string();
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back(0);
    const char* made = mkdtemp(buf.data());
    path_ = made ? made : "";
  }
  ~TempDir() {
    std::error_code ec;
    if (!path_.empty()) fs::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Writes text to path and moves its modification time seconds into the
// future (a different stamp each time, however fast the test runs).
inline void WriteFile(const std::string& path, const std::string& text, int seconds = 0) {
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
  }
  if (seconds) {
    fs::last_write_time(path, fs::file_time_type::clock::now() + std::chrono::seconds(seconds));
  }
}

// A picture with palette entry i = (i, 255 - i, 7i mod 256).
inline qvscene::Picture MakePicture(int w, int h, const std::vector<int>& pixels) {
  qvscene::Picture p;
  p.width = w;
  p.height = h;
  for (int v : pixels) p.pixels.push_back(static_cast<unsigned char>(v));
  p.pixels.resize(static_cast<std::size_t>(w) * h, 0);
  for (int i = 0; i < 256; ++i) {
    p.palette[i][0] = static_cast<unsigned char>(i);
    p.palette[i][1] = static_cast<unsigned char>(255 - i);
    p.palette[i][2] = static_cast<unsigned char>((i * 7) & 255);
  }
  p.paletteCount = 256;
  return p;
}

inline void SavePicture(const std::string& path, const qvscene::Picture& p, int seconds = 0) {
  std::string error;
  ASSERT_TRUE(qvscene::WriteIndexedPng(path, p, &error)) << error;
  if (seconds) {
    fs::last_write_time(path, fs::file_time_type::clock::now() + std::chrono::seconds(seconds));
  }
}

// back.png: 8 x 4, every pixel index 20 except a column of 40 at x = 7.
inline qvscene::Picture BackPicture() {
  std::vector<int> pixels(32, 20);
  for (int y = 0; y < 4; ++y) pixels[static_cast<std::size_t>(y * 8 + 7)] = 40;
  return MakePicture(8, 4, pixels);
}
// spr.png: 2 x 2 with the pixels 3 5 / 6 0 (0 is transparent).
inline qvscene::Picture SpritePicture() { return MakePicture(2, 2, {3, 5, 6, 0}); }

// The scene: "back" fills the picture on layer 1; "spr" walks on layer 2
// along y = 1 from x = 0, one pixel per unit of time, and stays at x = 6
// from time 6 on. Ten moments, 0 to 9, step 1. The sprite's row is a
// parameter so that tests can move it.
inline std::string SceneText(int spriteRow = 1, int to = 9) {
  return R"({
  "output": {"width": 8, "height": 4, "to": )" +
         std::to_string(to) + R"(, "palette": "back"},
  "pictures": {"back": "back.png", "spr": "spr.png"},
  "members": [
    {"name": "back", "picture": "back", "frames": [{"rect": [0, 0, 8, 4]}]},
    {
      "name": "spr",
      "picture": "spr",
      "transparent": 0,
      "frames": [{"rect": [0, 0, 2, 2], "anchor": [0, 0]}],
      "path": {"points": [[0, )" +
         std::to_string(spriteRow) + R"(], [6, )" + std::to_string(spriteRow) + R"(]],
               "between": 5, "type": "clamp"}
    }
  ],
  "layers": [{"id": 10, "members": ["back"]}, {"id": 20, "members": ["spr"]}]
}
)";
}

// The scene and its pictures in a fresh directory.
class SceneDir {
 public:
  SceneDir() {
    SavePicture(dir_ / "back.png", BackPicture());
    SavePicture(dir_ / "spr.png", SpritePicture());
    WriteFile(ScenePath(), SceneText());
  }
  std::string ScenePath() const { return dir_ / "scene.json"; }
  const TempDir& Dir() const { return dir_; }

 private:
  TempDir dir_;
};

// Moment t of the scene file as the scene reader draws it.
inline qvscene::Picture Reference(const std::string& scenePath, std::int32_t t) {
  auto scene = qvscene::LoadScene(scenePath);
  qvscene::Picture p;
  EXPECT_TRUE(scene->Render(t, &p));
  return p;
}

// A millisecond clock that the tests set; installed for the lifetime of
// the object.
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

inline SDL_Event Mouse(Uint32 type, int x, int y) {
  SDL_Event e{};
  e.type = type;
  if (type == SDL_MOUSEMOTION) {
    e.motion.x = x;
    e.motion.y = y;
    e.motion.state = SDL_BUTTON_LMASK;
  } else {
    e.button.button = SDL_BUTTON_LEFT;
    e.button.state = type == SDL_MOUSEBUTTONDOWN ? SDL_PRESSED : SDL_RELEASED;
    e.button.x = x;
    e.button.y = y;
  }
  return e;
}

inline std::uint32_t ColorOf(const qvscene::Picture& p, int index) {
  return qvplay::Rgb(p.palette[index][0], p.palette[index][1], p.palette[index][2]);
}

// Window position of the centre of movie pixel (x, y).
inline void CentreOf(const qvplay::Layout& l, int x, int y, int* wx, int* wy) {
  *wx = l.picX + x * l.scale + l.scale / 2;
  *wy = l.picY + y * l.scale + l.scale / 2;
}

// Number of window pixels of the picture area that differ from the
// reference moment enlarged by the layout's scale.
inline long DifferingPixels(const qvplay::Frame& frame, const qvplay::Layout& l,
                            const qvscene::Picture& ref) {
  long wrong = 0;
  for (int y = 0; y < l.picHeight; ++y) {
    for (int x = 0; x < l.picWidth; ++x) {
      const int index = ref.At(x / l.scale, y / l.scale);
      if (frame.At(l.picX + x, l.picY + y) != ColorOf(ref, index)) ++wrong;
    }
  }
  return wrong;
}

// Number of movie pixels of the player's current picture (its 8-bit
// picture and the moment's colours, before the window's panels are laid
// over it) that differ from the reference moment.
inline long PictureDiffers(qvplay::Player* player, const qvscene::Picture& ref) {
  player->UpdatePicture();
  tbPixMap* pm = player->PixMap();
  long wrong = 0;
  for (int y = 0; y < ref.height; ++y) {
    const unsigned char* row = pm->TopAddr() + static_cast<std::ptrdiff_t>(y) * pm->Offset();
    for (int x = 0; x < ref.width; ++x) {
      if (player->Colors()[row[x]] != ColorOf(ref, ref.At(x, y))) ++wrong;
    }
  }
  return wrong;
}

struct RunResult {
  int exitCode = -1;
  std::string err;
};

// Runs a command line through the shell, capturing its error output.
inline RunResult RunCommand(const std::string& command, const TempDir& scratch) {
  const std::string err = scratch / ".stderr";
  const int status = std::system((command + " >/dev/null 2>" + err).c_str());
  RunResult r;
  r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  std::ifstream in(err);
  std::stringstream s;
  s << in.rdbuf();
  r.err = s.str();
  return r;
}

}  // namespace playtest
