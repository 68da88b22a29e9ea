// qvmovie-play: its command line, and the player driven through SDL events
// with a settable millisecond clock.

#include <SDL.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <functional>
#include <tuple>

#include "../ToolTestUtil.h"
#include "play/Frame.h"
#include "play/Player.h"
#include "play/View.h"
#include "scene/SceneReader.h"
#include "toolbox/QvPlatform.h"
#include "toolbox/tbPixMap.h"

namespace {

using namespace tooltest;
using qvplay::Frame;
using qvplay::Rgb;

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
  return Rgb(p.palette[index][0], p.palette[index][1], p.palette[index][2]);
}

// An event (none when its type is 0), then ms passing and the clock
// advancing (none when 0); afterwards the index, the run and scrub states
// and the window showing the scene reader's moment are checked.
struct Step {
  SDL_Event event;
  std::uint32_t ms;
  int index;
  bool running, scrubbing = false;
};

// An opened player on the scene, its window sized for scale 10 (80 x 40
// picture above a bar with two rows), the view it draws, and helpers.
class Player : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    int status = 0;
    now = 100000;  // ms: tick 5999 of the 1/60 s clock
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

  void Run(const std::vector<Step>& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const Step& s = steps[i];
      SCOPED_TRACE("step " + std::to_string(i));
      if (s.event.type) player.HandleEvent(s.event);
      if (s.ms) now += s.ms, player.Advance();
      EXPECT_EQ(s.index, player.Index());
      EXPECT_EQ(s.running, player.Running());
      EXPECT_EQ(s.scrubbing, player.Scrubbing());
      EXPECT_EQ(0, Differs(player.Index()));
    }
  }
  // A mouse event over moment k on the timeline bar.
  SDL_Event Bar(Uint32 type, int k, int button = SDL_BUTTON_LEFT) {
    return Mouse(type, L().XOfIndex(k, 10), L().barY + L().barHeight / 2, button);
  }
  // Clicks the centre of movie pixel (x, y); the name of the member hit.
  std::string Click(int x, int y) {
    x = L().picX + x * L().scale + L().scale / 2;
    y = L().picY + y * L().scale + L().scale / 2;
    player.HandleEvent(Mouse(SDL_MOUSEBUTTONDOWN, x, y));
    player.HandleEvent(Mouse(SDL_MOUSEBUTTONUP, x, y));
    return player.LastHit().found ? player.LastHit().name : "";
  }
  // Polls the files; what the player wrote on stderr goes to err.
  bool Poll() {
    testing::internal::CaptureStderr();
    const bool changed = player.PollFiles();
    err = testing::internal::GetCapturedStderr();
    return changed;
  }

  // A millisecond clock that the tests set, installed for the test's lifetime.
  static inline std::uint32_t now = 0;
  const QvTickSource previousTicks = QvSetTickSource([] { return now; });
  ~Player() override { QvSetTickSource(previousTicks); }
  TempDir dir;
  std::string err;
  qvplay::Player player;
  Frame frame;
};

const SDL_Event kNone{};
Step S(const SDL_Event& event, std::uint32_t ms, int index, bool running, bool scrubbing = false) {
  return {event, ms, index, running, scrubbing};
}

TEST_F(Player, OpensStoppedAtTheFirstMomentAndDrawsWhatTheReaderDraws) {
  QvMPlayer& c = player.Clock();  // a loop at 30 moments a second
  EXPECT_EQ(Ints(10, 0, 0, 9, 2, 30, 2, false),
            Ints(player.MomentCount(), player.Moment(), c.Top(), c.End(), c.Mode(), c.Speed(),
                 player.LayerCount(), player.Running()));
  // Draw time and shown moments are counted.
  EXPECT_EQ(player.DrawnMoments(), 0);
  for (int k = 0; k < 6; ++k) {
    if (k < 5) player.GoTo(k);  // the same picture presented again is not a new moment
    qvplay::DrawView(&player, &frame);
    player.MarkShown();
  }
  EXPECT_EQ(player.DrawnMoments(), 5);
  EXPECT_EQ(player.ShownFps(), 5.0);
  EXPECT_GE(player.DrawMs(), 0.0);
  EXPECT_GE(player.MaxDrawMs(), player.DrawMs());
  EXPECT_FALSE(player.NeedsRedraw());
  // The player's own walk over the visible layers draws what the reader draws.
  for (int k = 0; k < player.MomentCount(); ++k) {
    player.GoTo(k);
    EXPECT_EQ(Differs(k), 0) << "moment " << k;
  }
  EXPECT_GT(Differs(2), 0);  // the sprite moves
}

TEST_F(Player, SpacePlaysInRealTimeArrowsStepAndPauseHomeAndEndJump) {
  // A held Space does not toggle; 500 ms on from tick 5999 are 30 ticks, 15
  // moments, looped to 5; paused time passes nothing; 100 ms are 3 moments
  // (tick 6065 - 6059). Arrows pause and step, looping, held ones repeating;
  // Home and End jump and keep the run state.
  Run({S(Key(SDLK_SPACE), 0, 0, true), S(Key(SDLK_SPACE, true), 0, 0, true), S(kNone, 500, 5, true),
       S(Key(SDLK_SPACE), 0, 5, false), S(kNone, 500, 5, false), S(Key(SDLK_SPACE), 0, 5, true),
       S(kNone, 100, 8, true), S(Key(SDLK_RIGHT), 0, 9, false), S(Key(SDLK_RIGHT), 0, 0, false),
       S(Key(SDLK_RIGHT, true), 0, 1, false), S(Key(SDLK_LEFT), 0, 0, false),
       S(Key(SDLK_LEFT), 0, 9, false), S(Key(SDLK_HOME), 0, 0, false),
       S(Key(SDLK_END), 0, 9, false), S(Key(SDLK_SPACE), 0, 9, true), S(Key(SDLK_HOME), 0, 0, true),
       S(Key(SDLK_END), 0, 9, true)});
  player.HandleEvent(Key(SDLK_SPACE));
  EXPECT_TRUE(player.Clock().IsPlaying() && player.Clock().IsPausing());
}

TEST_F(Player, RealTimeSkipsMomentsAndFrameByFrameShowsEach) {
  // 300 ms are 18 ticks: 9 moments, or one moment on frame by frame.
  Run({S(Key(SDLK_SPACE), 300, 9, true), S(Key(SDLK_HOME), 0, 0, true),
       S(Key(SDLK_f), 300, 1, true)});
  EXPECT_TRUE(player.FrameByFrame());
  EXPECT_FALSE(player.Advance());
  Run({S(kNone, 34, 2, true), S(Key(SDLK_f), 0, 2, true)});
  EXPECT_FALSE(player.FrameByFrame());
}

TEST_F(Player, PlusAndMinusDoubleAndHalveTheSpeedWithinLimits) {
  const std::pair<SDL_Keycode, int> keys[] = {{SDLK_PLUS, 60},  {SDLK_KP_PLUS, 120},
                                              {SDLK_MINUS, 60}, {SDLK_KP_MINUS, 30},
                                              {SDLK_MINUS, 15}, {SDLK_EQUALS, 30}};
  for (const auto& k : keys) {
    Press(k.first);
    EXPECT_EQ(player.Clock().Speed(), k.second) << k.first;
  }
  for (int i = 0; i < 10; ++i) Press(SDLK_MINUS);
  EXPECT_EQ(player.Clock().Speed(), 1);  // never 0
  for (int i = 0; i < 20; ++i) Press(SDLK_EQUALS);
  EXPECT_EQ(player.Clock().Speed(), 960);
  while (player.SpeedLevel() > 1) Press(SDLK_MINUS);
  // At double speed half a second passes 30 moments, three times round.
  Run({S(Key(SDLK_SPACE), 500, 0, true), S(kNone, 100, 6, true)});  // tick 6035: 36 moments
}

TEST_F(Player, MCyclesOnceBounceAndLoop) {
  const int modes[] = {0, 0, 1, 2, 0};  // a held key does not cycle on
  for (int i = 0; i < 5; ++i) {
    Press(SDLK_m, i == 1);
    EXPECT_EQ(player.Clock().Mode(), modes[i]) << i;
  }
  // Once stops at the last moment, and Space starts over.
  Run({S(Key(SDLK_SPACE), 1000, 9, false), S(Key(SDLK_SPACE), 0, 0, true)});
  // Bounce comes back from the last moment: 200 ms are 12 ticks, 6 moments,
  // and 12 moments are reflected at 9 to 6.
  Run({S(Key(SDLK_m), 0, 0, true), S(kNone, 200, 6, true), S(kNone, 200, 6, true)});
  EXPECT_FALSE(player.Clock().IsForward());
}

TEST_F(Player, DigitsToggleLayers) {
  player.GoTo(1);
  Press(SDLK_2);
  EXPECT_TRUE(player.LayerVisible(0) && !player.LayerVisible(1));
  EXPECT_EQ(Shown(TinyPicture()), 0);  // only the backdrop
  EXPECT_EQ(player.Message(), "layer 2 (id 20) hidden");
  Press(SDLK_2, true);  // held: no change
  EXPECT_FALSE(player.LayerVisible(1));
  Press(SDLK_2);
  EXPECT_EQ(Differs(1), 0);
  // Without the backdrop the background index 0 shows round the sprite.
  Press(SDLK_1);
  EXPECT_EQ(Shown(MakePicture(8, 4, {0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 5, 0, 0, 0, 0, 0, 0, 6})), 0);
  Press(SDLK_5);
  EXPECT_EQ(player.Message(), "no layer 5");
  Press(SDLK_0);
  EXPECT_EQ(player.Message(), "no layer 10");
}

// Help and overlay are drawn over the picture only, never over the bar.
TEST_F(Player, HelpOverlayQuitAndResize) {
  Resize(80, 2);  // room for the help's lines
  qvplay::DrawView(&player, &frame);
  const Frame plain = frame;
  // Window pixels from row y0 on that differ from the plain view.
  auto changed = [&](int y0) {
    qvplay::DrawView(&player, &frame);
    long n = 0;
    for (int y = y0; y < frame.Height(); ++y) {
      for (int x = 0; x < frame.Width(); ++x) n += frame.At(x, y) != plain.At(x, y);
    }
    return n;
  };
  // Handles the event; then whether the player goes on, shows the help, the overlay.
  auto expect = [&](const SDL_Event& event, bool goesOn, bool help, bool overlay) {
    const bool on = player.HandleEvent(event);
    EXPECT_EQ(Ints(goesOn, help, overlay), Ints(on, player.ShowHelp(), player.ShowOverlay()))
        << event.type;
  };
  expect(Key(SDLK_h), true, true, false);
  EXPECT_GT(changed(0), 100);
  EXPECT_EQ(changed(L().barY), 0);
  expect(Key(SDLK_ESCAPE), true, false, false);  // closes the help first
  expect(Key(SDLK_o), true, false, true);
  EXPECT_GT(changed(0), 100);
  expect(Key(SDLK_o), true, false, false);
  expect(Key(SDLK_ESCAPE), false, false, false);
  expect(Key(SDLK_q), false, false, false);
  SDL_Event e{};
  e.type = SDL_QUIT;
  expect(e, false, false, false);
  e.type = SDL_USEREVENT;
  expect(e, true, false, false);
  e.type = SDL_WINDOWEVENT;
  e.window.event = SDL_WINDOWEVENT_SIZE_CHANGED;
  e.window.data1 = 100;
  e.window.data2 = 200;
  expect(e, true, false, false);
  EXPECT_EQ(Ints(100, 12, 2), Ints(L().windowWidth, L().scale, L().picX));
  EXPECT_EQ(Differs(0), 0);
}

TEST_F(Player, DraggingOnTheBarScrubsAndPlayingGoesOnAfter) {
  const int y = L().barY + L().barHeight / 2;
  // Scrubbing pauses; past the ends of the track are the first and last
  // moments; the release plays on (100 ms: 3 moments), and so does a release
  // outside the window (motion without the button). Other buttons do
  // nothing; a scrub while paused stays paused; motion without a button
  // moves nothing.
  Run({S(Key(SDLK_SPACE), 0, 0, true), S(Bar(SDL_MOUSEBUTTONDOWN, 7), 0, 7, false, true),
       S(Bar(SDL_MOUSEMOTION, 3), 0, 3, false, true),
       S(Mouse(SDL_MOUSEMOTION, -50, y), 0, 0, false, true),
       S(Mouse(SDL_MOUSEMOTION, 5000, 0), 0, 9, false, true),
       S(Bar(SDL_MOUSEBUTTONUP, 4), 0, 4, true), S(kNone, 100, 7, true),
       S(Bar(SDL_MOUSEBUTTONDOWN, 6), 0, 6, false, true), S(Bar(SDL_MOUSEMOTION, 2, 0), 0, 6, true),
       S(Key(SDLK_SPACE), 0, 6, false),
       S(Bar(SDL_MOUSEBUTTONDOWN, 3, SDL_BUTTON_RIGHT), 0, 6, false),
       S(Bar(SDL_MOUSEBUTTONDOWN, 5), 0, 5, false, true), S(Bar(SDL_MOUSEBUTTONUP, 5), 0, 5, false),
       S(Bar(SDL_MOUSEMOTION, 2), 0, 5, false)});
}

TEST_F(Player, ClickNamesTheTopmostMemberOfTheVisibleLayersAtTheMoment) {
  const std::int16_t spr = player.GetScene()->MemberId("spr");
  player.GoTo(2);  // the sprite stands at (2, 1) to (3, 2)
  EXPECT_EQ(Click(2, 1), "spr");
  EXPECT_EQ(player.Message(), "spr (id " + std::to_string(spr) + ", layer 2)");
  // The moment, a pixel, who is there and on which layer.
  const std::tuple<int, int, int, const char*, int> clicks[] = {
      {2, 2, 1, "spr", 1},  {2, 5, 1, "back", 0}, {2, 3, 2, "spr", 1},
      {2, 4, 3, "back", 0}, {5, 2, 1, "back", 0}, {5, 5, 1, "spr", 1}};
  for (const auto& [t, x, y, name, layer] : clicks) {
    player.GoTo(t);
    EXPECT_EQ(Click(x, y), name) << t << ": " << x << "," << y;
    EXPECT_EQ(Ints(player.GetScene()->MemberId(name), layer),
              Ints(player.LastHit().id, player.LastHit().layer));
  }
  const std::pair<int, int> outside[] = {{-1, 0}, {8, 0}, {0, 4}, {40000, -40000}};
  for (const auto& p : outside) EXPECT_FALSE(player.HitTest(p.first, p.second).found) << p.first;
  EXPECT_TRUE(player.HitTest(7, 3).found);
  player.GoTo(2);
  Press(SDLK_2);
  EXPECT_EQ(Click(2, 1), "back");
  Press(SDLK_1);
  EXPECT_EQ(Click(2, 1), "");
  EXPECT_EQ(player.Message(), "nothing at 2, 1");
  Press(SDLK_2);
  EXPECT_EQ(Click(2, 1), "spr");
}

TEST_F(Player, ChangedFilesAreReloadedAtTheSameMomentWithTheSameLayersAndRunState) {
  player.GoTo(4);
  const Picture good = Reference(Scene(), 4);
  EXPECT_FALSE(player.PollFiles());     // nothing changed
  WriteText(Scene(), SceneText(2), 5);  // the sprite one row lower
  Press(SDLK_SPACE);
  EXPECT_TRUE(Poll());
  EXPECT_TRUE(player.Error().empty());
  EXPECT_GT(Shown(good), 0);
  Run({S(kNone, 0, 4, true), S(kNone, 100, 7, true)});  // 6 ticks: 3 moments
  EXPECT_FALSE(player.PollFiles());                     // once only
  Press(SDLK_SPACE);
  SavePicture(dir / "spr.png", MakePicture(2, 2, {9, 9, 9, 9}), 10);  // a changed picture
  EXPECT_TRUE(Poll());
  EXPECT_EQ(Reference(Scene(), 7).At(6, 2), 9);
  Run({S(kNone, 0, 7, false)});
  // A shorter scene keeps the moment in its range; hidden layers stay hidden.
  Press(SDLK_2);
  WriteText(Scene(), SceneText(1, 5), 15);
  EXPECT_TRUE(Poll());
  EXPECT_EQ(Ints(6, 5, 5), Ints(player.MomentCount(), player.Clock().End(), player.Index()));
  EXPECT_FALSE(player.LayerVisible(1));
  EXPECT_EQ(Shown(TinyPicture()), 0);
  // A new picture named by the scene is watched.
  SavePicture(dir / "b2.png", MakePicture(2, 2, {}));
  WriteText(Scene(), Replace(SceneText(), "\"spr.png\"", "\"spr.png\", \"b2\": \"b2.png\""), 20);
  EXPECT_TRUE(Poll());
  EXPECT_EQ(player.WatchedFiles().size(), 4u);
  SavePicture(dir / "b2.png", MakePicture(3, 3, {}), 25);
  EXPECT_TRUE(Poll());
  // R reloads at once, even a file rewritten with the same stamp.
  const auto stamp = fs::last_write_time(Scene());
  WriteText(Scene(), SceneText(2));
  fs::last_write_time(Scene(), stamp);
  player.GoTo(4);
  Press(SDLK_2);
  Press(SDLK_r);
  EXPECT_EQ(Differs(4), 0);
  EXPECT_EQ(player.Message(), "reloaded " + Scene());
  // Opening finds the pictures in the directory given and watches them.
  TempDir elsewhere;
  WriteText(elsewhere / "scene.json", SceneText());
  qvscene::LoadOptions options;
  options.pictureDir = dir.Path();
  std::string error;
  int status = 0;
  ASSERT_TRUE(player.Open(elsewhere / "scene.json", options, &error, &status)) << error;
  EXPECT_EQ(player.WatchedFiles(),
            (std::vector<std::string>{elsewhere / "scene.json", dir / "pal.png", dir / "spr.png"}));
}

TEST_F(Player, BrokenScenesKeepTheLastGoodOneAndShowTheirErrorUntilFixed) {
  player.GoTo(4);
  const std::string bad = Replace(SceneText(2), "[0, 0, 2, 2]", "\"two\"");
  const std::string spr = "/pictures/spr: cannot read '" + dir / "spr.png";
  const auto Fifo = [](const std::string& path) {
    fs::remove(path);
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
  };
  // Broken rectangles, JSON and pictures, and a deleted scene file.
  const std::pair<std::function<void(int)>, std::string> breakages[] = {
      {[&](int s) { WriteText(Scene(), bad, s); },
       Scene() + ":" + std::to_string(LineOfText(bad, "two")) +
           ": /members/1/frames/0/rect: expected an array"},
      {[&](int s) { WriteText(Scene(), "{\n  \"output\": {\n", s); }, Scene() + ":3"},
      {[&](int s) { WriteText(dir / "spr.png", "not a picture", s); }, "/pictures/spr"},
      {[&](int) { fs::remove(Scene()); }, Scene()},
      // Numbers out of range, too deep a nesting, too much memory, and files
      // that are not regular files: none may block or end the player.
      {[&](int s) { WriteText(Scene(), Replace(SceneText(), "\"to\": 9", "\"to\": 1e400"), s); },
       Scene() + ":1: /output/to: number out of range: 1e400"},
      {[&](int s) { WriteText(Scene(), std::string(5000, '[') + std::string(5000, ']'), s); },
       "nested more than"},
      {[&](int s) {
         WriteText(Scene(),
                   Replace(SceneText(), "\"rect\": [0, 0, 8, 4]",
                           "\"rect\": [0, 0, 2000, 2000], \"zoom\": 8"),
                   s);
         SavePicture(dir / "pal.png", MakePicture(2000, 2000, {}), s);
       },
       "/members/0/frames/0/zoom: the image of this frame"},
      {[&](int) { Fifo(Scene()); }, Scene() + ": not a regular file but a FIFO"},
      {[&](int) { Fifo(dir / "spr.png"); }, spr + "': not a regular file but a FIFO"},
      {[&](int) {
         fs::remove(dir / "spr.png");
         fs::create_directory(dir / "spr.png");
       },
       spr + "': not a regular file but a directory"}};
  int stamp = 0;
  for (const auto& [breakFiles, error] : breakages) {
    SCOPED_TRACE(error);
    const Picture good = Reference(Scene(), 4);
    breakFiles(stamp += 5);
    EXPECT_TRUE(Poll());
    EXPECT_TRUE(Contains(player.Error(), error)) << player.Error();
    EXPECT_EQ(err, "qvmovie-play: " + player.Error() + "\n");
    EXPECT_FALSE(player.PollFiles());  // reported once
    EXPECT_EQ(Ints(4, 10), Ints(player.Index(), player.MomentCount()));
    // The picture is the last good scene's, with a shaded red panel over it.
    EXPECT_EQ(PictureDiffers(good), 0);
    EXPECT_GT(Shown(good), 0);
    EXPECT_GT(frame.At(0, 0) >> 16 & 255, (frame.At(0, 0) >> 8 & 255) + 40);
    Press(SDLK_2);
    Press(SDLK_2);
    EXPECT_EQ(PictureDiffers(good), 0);
    // Fixed: the new scene, the sprite on the other row, and no error.
    stamp += 5;
    for (const char* name : {"scene.json", "spr.png"}) fs::remove_all(dir / name);
    WriteText(Scene(), SceneText(stamp % 20 == 10 ? 2 : 1), stamp);
    WriteTinyPictures(dir);
    for (const char* name : {"pal.png", "spr.png"}) Restamp(dir / name, stamp);
    EXPECT_TRUE(Poll());
    EXPECT_TRUE(player.Error().empty());
    EXPECT_EQ(Differs(4), 0);
  }
}

std::string Play(const std::string& args) { return std::string(QV_PLAY_TOOL) + " " + args; }
std::string Render(const std::string& args) { return std::string(QV_RENDER_TOOL) + " " + args; }

TEST(PlayTool, HelpAndBadUsage) {
  TempDir scratch;
  EXPECT_EQ(RunCommand(Play("--help"), scratch).exitCode, 0);
  const std::string tryHelp = "\nTry 'qvmovie-play --help'.\n";
  const std::pair<const char*, std::string> cases[] = {
      {"", "qvmovie-play: no scene file given" + tryHelp},
      {"a.json --bogus", "qvmovie-play: unknown option '--bogus'" + tryHelp},
      {"a.json --at x", "qvmovie-play: --at: 'x' is not a time (an integer)" + tryHelp},
      {"a.json --frames 0", "--frames: '0'"},
      {"a.json b.json", ""},
      {"a.json --scale 9", ""},
      {"a.json --screenshot", ""}};
  for (const auto& [args, message] : cases) {
    const RunResult r = RunCommand(Play(args), scratch);
    EXPECT_EQ(r.exitCode, 2) << args;
    EXPECT_TRUE(Contains(r.text, message)) << r.text;
  }
}

TEST(PlayTool, BadScenesAndMomentsGiveTheRenderToolsMessageAndExitTwo) {
  TempDir dir, scratch;
  const std::string good = WriteScene(dir), bad = dir / "bad.json", none = dir / "none.json";
  WriteText(bad, Replace(SceneText(), "\"transparent\": 0", "\"transparent\": 300"));
  for (const std::string& scene : {bad, none}) {
    const RunResult play = RunCommand(Play(scene), scratch);
    const RunResult render =
        RunCommand(Render(scene + " --png-at 0 " + scratch / "o.png"), scratch);
    EXPECT_EQ(Ints(2, 2), Ints(play.exitCode, render.exitCode));
    EXPECT_TRUE(Contains(play.text, scene == bad ? "/members/1/transparent" : "none.json"))
        << play.text;
    // The same message after the program's name.
    EXPECT_EQ("qvmovie-play" + render.text.substr(std::strlen("qvmovie-render")), play.text);
  }
  const RunResult r = RunCommand(Play(good + " --at 10"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.text, "qvmovie-play: --at: moment 10 lies outside the scene (0 to 9)\n");
}

TEST(PlayTool, NoDisplayIsAFailureOfItsOwn) {
  TempDir dir;
  const RunResult r = RunCommand(
      "env -u DISPLAY -u WAYLAND_DISPLAY SDL_VIDEODRIVER=x11 " + Play(WriteScene(dir)), dir);
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(r.text.rfind("qvmovie-play: cannot open a window: ", 0), 0u) << r.text;
}

TEST_F(Player, TheTimelineShowsTheCurrentMomentAndTheMemberRanges) {
  Resize(20, 2);
  qvplay::DrawView(&player, &frame);
  ASSERT_EQ(frame.Width(), 160);
  const int cursorY = L().rowsY + 1, row1Y = L().rowsY + qvplay::kRowHeight + 1;
  EXPECT_EQ(frame.At(L().XOfIndex(0, 10), cursorY), Rgb(255, 255, 255));
  // Both members span the whole movie; the middle of each row is coloured.
  const std::uint32_t row0 = frame.At(80, cursorY), row1 = frame.At(80, row1Y);
  EXPECT_NE(row0, row1);
  EXPECT_NE(row0, frame.At(80, L().barY));
  player.GoTo(9);
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(Ints(Rgb(255, 255, 255), row0),
            Ints(frame.At(L().XOfIndex(9, 10), cursorY), frame.At(L().XOfIndex(0, 10), cursorY)));
  Press(SDLK_1);  // a hidden layer's members are greyed
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(Ints(Rgb(80, 80, 88), row1), Ints(frame.At(80, cursorY), frame.At(80, row1Y)));
}

}  // namespace
