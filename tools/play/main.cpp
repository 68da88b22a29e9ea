// qvmovie-play: plays a scene file in a window, in real time or moment by
// moment, and reloads it when it changes on disk.

#define SDL_MAIN_HANDLED
#include <SDL.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "play/Frame.h"
#include "play/Player.h"
#include "play/View.h"
#include "scene/Outputs.h"
#include "scene/PngIO.h"
#include "scene/SceneReader.h"

namespace {

constexpr int kExitOk = 0;
constexpr int kExitRender = 1;
constexpr int kExitUsage = 2;

const char kUsage[] =
    "Usage: qvmovie-play SCENE [--at T] [--paused] [--overlay] [--scale N]\n"
    "                    [--pictures DIR] [--frames N] [--screenshot OUT.png] [--stats]\n"
    "\n"
    "Plays the movie that the scene file SCENE describes in a window, at the\n"
    "engine's own speed, and reloads it whenever the scene file or one of its\n"
    "pictures changes (keeping the current moment; a scene with errors keeps the\n"
    "last good one on screen and shows the error).\n"
    "\n"
    "  --at T              start at moment T (rounded down to the scene's step)\n"
    "  --paused            start paused\n"
    "  --overlay           start with the overlay shown (moment, fps, draw time)\n"
    "  --scale N           open the window N times the movie's size (1 to 8);\n"
    "                      default: as large as fits the screen, at most 4\n"
    "  --pictures DIR      resolve relative picture file names against DIR\n"
    "                      instead of the scene file's directory\n"
    "  --frames N          play N moments as fast as possible, then quit\n"
    "  --screenshot FILE   write the last window content as an RGB PNG on quitting\n"
    "  --stats             print the drawing time per moment on quitting\n"
    "  -h, --help          this text\n"
    "\n"
    "Keys: space play/pause, left/right one moment, Home/End first/last moment,\n"
    "+/- speed, M once/bounce/loop, F frame by frame, 1-9 and 0 toggle layers,\n"
    "O overlay (moment, fps, draw time), H help, R reload, Q or Esc quit.\n"
    "Click on the picture to name the member there; drag on the timeline bar to\n"
    "scrub. Exit status: 0 success, 1 failure (no window system, writing failed),\n"
    "2 bad usage or bad input. Without a window system (no DISPLAY nor\n"
    "WAYLAND_DISPLAY) only --frames with --screenshot runs, drawing off screen.\n";

const char kNoWindowSystem[] =
    "no window system to show the movie in (neither DISPLAY nor WAYLAND_DISPLAY is set);\n"
    "  run it in a desktop session, or render the scene with qvmovie-render instead\n"
    "  (--frames N --screenshot OUT.png draws without a screen)";

// True when an X server or a Wayland compositor is named in the environment,
// or the console can be drawn on directly (a Linux virtual terminal).
bool HasWindowSystem() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    const char* value = std::getenv(name);
    if (value && *value) return true;
  }
  return isatty(STDIN_FILENO) && access("/dev/dri/card0", R_OK | W_OK) == 0;
}

struct Usage {
  std::string message;
};

struct Options {
  std::string scene;
  std::string pictures;
  std::string screenshot;
  bool atGiven = false;
  std::int32_t at = 0;
  long frames = 0;
  int scale = 0;
  bool paused = false;
  bool overlay = false;
  bool stats = false;
  bool help = false;
};

bool ParseInteger(const std::string& text, long long low, long long high, long long* out) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  const long long v = std::strtoll(text.c_str(), &end, 10);
  if (errno != 0 || *end != 0 || v < low || v > high) return false;
  *out = v;
  return true;
}

Options ParseArgs(int argc, char** argv) {
  Options o;
  auto value = [&](int& i, const std::string& name) -> std::string {
    if (i + 1 >= argc) throw Usage{name + " needs a value"};
    return argv[++i];
  };
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    long long v = 0;
    if (a == "-h" || a == "--help") {
      o.help = true;
    } else if (a == "--at") {
      const std::string t = value(i, a);
      if (!ParseInteger(t, -1000000, 1000000, &v)) {
        throw Usage{"--at: '" + t + "' is not a time (an integer)"};
      }
      o.atGiven = true;
      o.at = static_cast<std::int32_t>(v);
    } else if (a == "--frames") {
      const std::string n = value(i, a);
      if (!ParseInteger(n, 1, 100000000, &v)) {
        throw Usage{"--frames: '" + n + "' is not a whole number from 1 to 100000000"};
      }
      o.frames = static_cast<long>(v);
    } else if (a == "--screenshot") {
      if (!o.screenshot.empty()) throw Usage{"--screenshot given twice"};
      o.screenshot = value(i, a);
    } else if (a == "--scale") {
      const std::string n = value(i, a);
      if (!ParseInteger(n, 1, 8, &v)) {
        throw Usage{"--scale: '" + n + "' is not a whole number from 1 to 8"};
      }
      o.scale = static_cast<int>(v);
    } else if (a == "--pictures") {
      o.pictures = value(i, a);
    } else if (a == "--paused") {
      o.paused = true;
    } else if (a == "--overlay") {
      o.overlay = true;
    } else if (a == "--stats") {
      o.stats = true;
    } else if (a.size() > 1 && a[0] == '-') {
      throw Usage{"unknown option '" + a + "'"};
    } else if (o.scene.empty()) {
      o.scene = a;
    } else {
      throw Usage{"more than one scene file given ('" + o.scene + "' and '" + a + "')"};
    }
  }
  if (o.help) return o;
  if (o.scene.empty()) throw Usage{"no scene file given"};
  return o;
}

int Fail(int code, const std::string& message) {
  std::fprintf(stderr, "qvmovie-play: %s\n", message.c_str());
  return code;
}

// Writes 0xAARRGGBB pixels as an RGB PNG, as the render tool writes its
// outputs: a regular file only, through a temporary file.
bool WriteScreenshot(const std::string& path, int width, int height,
                     const std::vector<std::uint32_t>& pixels, std::string* error) {
  qvscene::Outputs output;
  if (!output.Add(path, error) || !output.Create(error)) return false;
  qvscene::RgbPicture picture;
  picture.width = width;
  picture.height = height;
  picture.pixels.reserve(pixels.size() * 3);
  for (std::uint32_t p : pixels) {
    picture.pixels.push_back(static_cast<unsigned char>(p >> 16));
    picture.pixels.push_back(static_cast<unsigned char>(p >> 8));
    picture.pixels.push_back(static_cast<unsigned char>(p));
  }
  if (!qvscene::WriteRgbPng(output.Temp(0), picture, error)) {
    *error = output.Explain(*error);
    return false;
  }
  return output.Commit(error);
}

// The SDL window with its renderer and the texture the frames go through.
class Window {
 public:
  ~Window() {
    if (texture_) SDL_DestroyTexture(texture_);
    if (renderer_) SDL_DestroyRenderer(renderer_);
    if (window_) SDL_DestroyWindow(window_);
  }

  bool Open(const std::string& title, int width, int height, std::string* error) {
    window_ = SDL_CreateWindow(title.c_str(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, width,
                               height, SDL_WINDOW_RESIZABLE);
    if (!window_) {
      *error = std::string("cannot open a window: ") + SDL_GetError();
      return false;
    }
    renderer_ = SDL_CreateRenderer(window_, -1, 0);
    if (!renderer_) renderer_ = SDL_CreateRenderer(window_, -1, SDL_RENDERER_SOFTWARE);
    if (!renderer_) {
      *error = std::string("cannot draw into the window: ") + SDL_GetError();
      return false;
    }
    return true;
  }

  void OutputSize(int* width, int* height) {
    if (SDL_GetRendererOutputSize(renderer_, width, height) != 0) {
      SDL_GetWindowSize(window_, width, height);
    }
  }

  // Shows the frame; with readBack, also reads what the window now holds.
  bool Present(const qvplay::Frame& frame, std::vector<std::uint32_t>* readBack,
               std::string* error) {
    if (frame.Width() <= 0 || frame.Height() <= 0) return true;
    if (!texture_ || textureWidth_ != frame.Width() || textureHeight_ != frame.Height()) {
      if (texture_) SDL_DestroyTexture(texture_);
      texture_ = SDL_CreateTexture(renderer_, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING,
                                   frame.Width(), frame.Height());
      if (!texture_) {
        *error = std::string("cannot make a texture: ") + SDL_GetError();
        return false;
      }
      textureWidth_ = frame.Width();
      textureHeight_ = frame.Height();
    }
    SDL_UpdateTexture(texture_, nullptr, frame.Data(),
                      frame.Width() * static_cast<int>(sizeof(std::uint32_t)));
    SDL_RenderClear(renderer_);
    SDL_RenderCopy(renderer_, texture_, nullptr, nullptr);
    if (readBack) {
      readBack->assign(static_cast<std::size_t>(frame.Width()) * frame.Height(), 0);
      if (SDL_RenderReadPixels(renderer_, nullptr, SDL_PIXELFORMAT_ARGB8888, readBack->data(),
                               frame.Width() * static_cast<int>(sizeof(std::uint32_t))) != 0) {
        *error = std::string("cannot read the window's pixels: ") + SDL_GetError();
        return false;
      }
    }
    SDL_RenderPresent(renderer_);
    return true;
  }

 private:
  SDL_Window* window_ = nullptr;
  SDL_Renderer* renderer_ = nullptr;
  SDL_Texture* texture_ = nullptr;
  int textureWidth_ = 0, textureHeight_ = 0;
};

int Run(const Options& o) {
  qvscene::LoadOptions load;
  load.pictureDir = o.pictures;
  qvplay::Player player;
  std::string error;
  int status = 0;
  if (!player.Open(o.scene, load, &error, &status)) return Fail(status, error);
  qvscene::Scene* scene = player.GetScene();
  if (o.atGiven && (o.at < scene->From() || o.at > scene->To())) {
    return Fail(kExitUsage, "--at: moment " + std::to_string(o.at) + " lies outside the scene (" +
                                std::to_string(scene->From()) + " to " +
                                std::to_string(scene->To()) + ")");
  }
  if (o.atGiven) player.GoTo(player.IndexOf(o.at));
  if (o.overlay) player.SetOverlay(true);

  // Without a window system SDL falls back to drawing off screen, where a
  // player would run unseen until killed: only the headless run (--frames
  // with --screenshot) or an explicitly chosen SDL_VIDEODRIVER may go on.
  const bool headless = o.frames > 0 && !o.screenshot.empty();
  const char* chosenDriver = std::getenv("SDL_VIDEODRIVER");
  const bool driverChosen = chosenDriver && *chosenDriver;
  if (!headless && !driverChosen && !HasWindowSystem()) return Fail(kExitRender, kNoWindowSystem);
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    return Fail(kExitRender, std::string("cannot open a window: ") + SDL_GetError());
  }
  struct SdlQuit {
    ~SdlQuit() { SDL_Quit(); }
  } sdlQuit;
  const char* driver = SDL_GetCurrentVideoDriver();
  if (!headless && !driverChosen && driver &&
      (std::strcmp(driver, "offscreen") == 0 || std::strcmp(driver, "dummy") == 0)) {
    const char* display = std::getenv("DISPLAY");
    return Fail(kExitRender, std::string("cannot reach the window system (DISPLAY='") +
                                 (display ? display : "") +
                                 "'): SDL found no video driver but the off-screen one");
  }

  const int rows = static_cast<int>(player.Members().size());
  int scale = o.scale;
  if (scale == 0) {
    SDL_Rect usable{0, 0, 1024, 768};
    SDL_GetDisplayUsableBounds(0, &usable);
    scale = 1;
    for (int s = 4; s > 1; --s) {
      int w = 0, h = 0;
      qvplay::WindowSizeFor(scene->Width(), scene->Height(), rows, s, &w, &h);
      if (w <= usable.w - 32 && h <= usable.h - 64) {
        scale = s;
        break;
      }
    }
  }
  int width = 0, height = 0;
  qvplay::WindowSizeFor(scene->Width(), scene->Height(), rows, scale, &width, &height);
  const std::size_t slash = o.scene.find_last_of('/');
  Window window;
  if (!window.Open("qvmovie-play - " + o.scene.substr(slash == std::string::npos ? 0 : slash + 1),
                   width, height, &error)) {
    return Fail(kExitRender, error);
  }
  window.OutputSize(&width, &height);
  player.SetWindowSize(width, height);

  qvplay::Frame frame;
  std::vector<std::uint32_t> shot;
  int shotWidth = 0, shotHeight = 0;
  const bool wantShot = !o.screenshot.empty();
  auto present = [&]() -> bool {
    qvplay::DrawView(&player, &frame);
    if (!window.Present(frame, wantShot ? &shot : nullptr, &error)) return false;
    shotWidth = frame.Width();
    shotHeight = frame.Height();
    player.MarkShown();
    return true;
  };
  auto pump = [&]() -> bool {
    SDL_Event event;
    bool go = true;
    while (SDL_PollEvent(&event)) {
      if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) {
        int w = 0, h = 0;
        window.OutputSize(&w, &h);
        player.SetWindowSize(w, h);
        continue;
      }
      if (!player.HandleEvent(event)) go = false;
    }
    return go;
  };

  const auto started = std::chrono::steady_clock::now();
  long shown = 0;
  if (o.frames > 0) {
    // As fast as possible: one step of the clock per moment.
    for (long i = 0; i < o.frames; ++i) {
      if (!pump()) break;
      if (i > 0) player.StepBy(1);
      if (!present()) return Fail(kExitRender, error);
      ++shown;
    }
  } else {
    if (!o.paused) player.Play();
    auto lastPoll = std::chrono::steady_clock::now();
    while (pump()) {
      player.Advance();
      const auto now = std::chrono::steady_clock::now();
      if (now - lastPoll >= std::chrono::milliseconds(250)) {
        lastPoll = now;
        player.PollFiles();
        // The overlay's figures change once a second or so.
        if (player.ShowOverlay()) player.RequestRedraw();
      }
      if (player.NeedsRedraw()) {
        if (!present()) return Fail(kExitRender, error);
        ++shown;
      } else {
        SDL_WaitEventTimeout(nullptr, 2);
      }
    }
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

  if (o.stats) {
    const double mean = player.DrawnMoments()
                            ? player.TotalDrawMs() / static_cast<double>(player.DrawnMoments())
                            : 0.0;
    std::fprintf(stderr,
                 "qvmovie-play: %lld moments drawn, %.3f ms per moment (max %.3f); %ld frames "
                 "shown in %.2f s (%.1f per second)\n",
                 player.DrawnMoments(), mean, player.MaxDrawMs(), shown, seconds,
                 seconds > 0 ? static_cast<double>(shown) / seconds : 0.0);
  }
  if (wantShot) {
    if (shot.empty()) return Fail(kExitRender, "no window content to write");
    if (!WriteScreenshot(o.screenshot, shotWidth, shotHeight, shot, &error)) {
      return Fail(kExitRender, error);
    }
  }
  return kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  try {
    options = ParseArgs(argc, argv);
  } catch (const Usage& u) {
    std::fprintf(stderr, "qvmovie-play: %s\nTry 'qvmovie-play --help'.\n", u.message.c_str());
    return kExitUsage;
  }
  if (options.help) {
    std::fputs(kUsage, stdout);
    return kExitOk;
  }
  try {
    return Run(options);
  } catch (const std::exception& e) {
    return Fail(kExitRender, e.what());
  }
}
