// The player driven through SDL events with a settable millisecond clock:
// playing in real time and frame by frame, the keys, scrubbing and clicking
// with the mouse, and reloading when the scene or its pictures change.

#include <functional>

#include "PlayTestUtil.h"

namespace {

using namespace playtest;

// Presses key (none when 0), lets ms pass and advances the clock (none when
// 0), then expects the index, the run state and the window showing the
// scene reader's moment.
struct Step {
  SDL_Keycode key;
  std::uint32_t ms;
  int index;
  bool running;
  bool repeat = false;
};

class Player : public PlayerTest {
 protected:
  void Run(const std::vector<Step>& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const Step& s = steps[i];
      SCOPED_TRACE("step " + std::to_string(i));
      if (s.key) Press(s.key, s.repeat);
      if (s.ms) ticks.Advance(s.ms), player.Advance();
      EXPECT_EQ(s.index, player.Index());
      EXPECT_EQ(s.running, player.Running());
      EXPECT_EQ(0, Differs(player.Index()));
    }
  }
  int BarY() { return L().barY + L().barHeight / 2; }
  int BarX(int index) { return L().XOfIndex(index, 10); }
  void Mouse(Uint32 type, int x, int y, int button = SDL_BUTTON_LEFT) {
    player.HandleEvent(playtest::Mouse(type, x, y, button));
  }
  // Clicks the centre of movie pixel (x, y); the name of the member hit.
  std::string Click(int x, int y) {
    x = L().picX + x * L().scale + L().scale / 2;
    y = L().picY + y * L().scale + L().scale / 2;
    Mouse(SDL_MOUSEBUTTONDOWN, x, y);
    Mouse(SDL_MOUSEBUTTONUP, x, y);
    return player.LastHit().found ? player.LastHit().name : "";
  }
  std::int16_t Id(const std::string& name) { return player.GetScene()->MemberId(name); }
  // Polls the files with the player's error output captured.
  bool Poll(std::string* err = nullptr) {
    testing::internal::CaptureStderr();
    const bool changed = player.PollFiles();
    const std::string text = testing::internal::GetCapturedStderr();
    if (err) *err = text;
    return changed;
  }
};

TEST_F(Player, OpensStoppedAtTheFirstMomentAndDrawsWhatTheReaderDraws) {
  EXPECT_EQ(player.MomentCount(), 10);
  EXPECT_EQ(player.Moment(), 0);
  EXPECT_EQ(player.Clock().Top(), 0);
  EXPECT_EQ(player.Clock().End(), 9);
  EXPECT_EQ(player.Clock().Mode(), 2);    // loop
  EXPECT_EQ(player.Clock().Speed(), 30);  // one moment of 1/30 s
  EXPECT_EQ(player.LayerCount(), 2);
  EXPECT_EQ(L().scale, 10);
  EXPECT_EQ(L().picWidth, 80);
  EXPECT_EQ(L().barY, 40);
  Run({{0, 0, 0, false}});
  // The player's own walk over the visible layers draws what the reader draws.
  for (int k = 1; k < player.MomentCount(); ++k) {
    player.GoTo(k);
    EXPECT_EQ(Differs(k), 0) << "moment " << k;
  }
  EXPECT_GT(Differs(2), 0);  // the sprite has moved
}

TEST_F(Player, SpacePlaysInRealTimeArrowsStepAndPauseHomeAndEndJump) {
  Run({{SDLK_SPACE, 0, 0, true},
       {SDLK_SPACE, 0, 0, true, true},  // held: no toggle
       {0, 500, 5, true},               // tick 6029: 30 ticks, 15 moments, looped to 5
       {SDLK_SPACE, 0, 5, false},
       {0, 500, 5, false},
       {SDLK_SPACE, 0, 5, true},  // on from the paused moment
       {0, 100, 8, true},         // tick 6065 - 6059 = 6 ticks: 3 moments
       {SDLK_RIGHT, 0, 9, false},
       {SDLK_RIGHT, 0, 0, false},        // looping: after the last the first
       {SDLK_RIGHT, 0, 1, false, true},  // held arrows repeat
       {SDLK_LEFT, 0, 0, false},
       {SDLK_LEFT, 0, 9, false},
       {SDLK_HOME, 0, 0, false},
       {SDLK_END, 0, 9, false},
       {SDLK_SPACE, 0, 9, true},
       {SDLK_HOME, 0, 0, true},  // jumps keep the run state
       {SDLK_END, 0, 9, true}});
  EXPECT_TRUE(player.Clock().IsPlaying());
  Press(SDLK_SPACE);
  EXPECT_TRUE(player.Clock().IsPausing());
}

TEST_F(Player, RealTimeSkipsMomentsAndFrameByFrameShowsEach) {
  Run({{SDLK_SPACE, 300, 9, true},  // 18 ticks: 9 moments
       {SDLK_HOME, 0, 0, true},
       {SDLK_f, 300, 1, true},  // late: one moment on, not nine
       {0, 0, 1, true}});
  EXPECT_TRUE(player.FrameByFrame());
  EXPECT_FALSE(player.Advance());
  Run({{0, 34, 2, true}});
  Press(SDLK_f);
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
  Run({{SDLK_SPACE, 500, 0, true}, {0, 100, 6, true}});  // tick 6035, 36 ticks: 36 moments
}

TEST_F(Player, MCyclesOnceBounceAndLoop) {
  const int modes[] = {0, 0, 1, 2};  // a held key does not cycle on
  for (int i = 0; i < 4; ++i) {
    Press(SDLK_m, i == 1);
    EXPECT_EQ(player.Clock().Mode(), modes[i]) << i;
  }
  // Once: stops at the last moment, and Space starts over.
  Press(SDLK_m);
  Run({{SDLK_SPACE, 1000, 9, false}, {SDLK_SPACE, 0, 0, true}});
  EXPECT_EQ(player.Clock().Mode(), 0);
}

TEST_F(Player, BounceComesBackFromTheLastMoment) {
  Press(SDLK_m);
  Press(SDLK_m);
  Run({{SDLK_SPACE, 200, 6, true},  // tick 6011: 12 ticks, 6 moments
       {0, 200, 6, true}});         // tick 6023: 12 moments, reflected at 9 to 6
  EXPECT_FALSE(player.Clock().IsForward());
}

TEST_F(Player, DigitsToggleLayers) {
  const qvscene::Picture back = BackPicture();
  player.GoTo(1);
  Press(SDLK_2);
  EXPECT_FALSE(player.LayerVisible(1));
  EXPECT_TRUE(player.LayerVisible(0));
  EXPECT_EQ(Shown(back), 0);  // only the backdrop
  EXPECT_EQ(player.Message(), "layer 2 (id 20) hidden");
  Press(SDLK_2, true);  // held: no change
  EXPECT_FALSE(player.LayerVisible(1));
  Press(SDLK_2);
  EXPECT_EQ(Differs(1), 0);
  // Without the backdrop the background index 0 shows round the sprite.
  Press(SDLK_1);
  EXPECT_EQ(ShownAt(0, 0), ColorOf(back, 0));
  EXPECT_EQ(ShownAt(1, 1), ColorOf(back, 3));  // the sprite's first pixel
  EXPECT_EQ(ShownAt(2, 2), ColorOf(back, 0));  // its transparent one
  Press(SDLK_5);
  EXPECT_EQ(player.Message(), "no layer 5");
  Press(SDLK_0);
  EXPECT_EQ(player.Message(), "no layer 10");
  EXPECT_EQ(player.LayerCount(), 2);
}

TEST_F(Player, HelpOverlayQuitAndResize) {
  Press(SDLK_h);
  EXPECT_TRUE(player.ShowHelp());
  EXPECT_TRUE(Press(SDLK_ESCAPE));  // closes the help first
  EXPECT_FALSE(player.ShowHelp());
  Press(SDLK_o);
  EXPECT_TRUE(player.ShowOverlay());
  Press(SDLK_o);
  EXPECT_FALSE(player.ShowOverlay());
  EXPECT_FALSE(Press(SDLK_ESCAPE));
  EXPECT_FALSE(Press(SDLK_q));
  SDL_Event e{};
  e.type = SDL_QUIT;
  EXPECT_FALSE(player.HandleEvent(e));
  e.type = SDL_USEREVENT;
  EXPECT_TRUE(player.HandleEvent(e));
  e.type = SDL_WINDOWEVENT;
  e.window.event = SDL_WINDOWEVENT_SIZE_CHANGED;
  e.window.data1 = 100;
  e.window.data2 = 200;
  player.HandleEvent(e);
  EXPECT_EQ(L().windowWidth, 100);
  EXPECT_EQ(L().scale, 12);
  EXPECT_EQ(L().picX, 2);
  EXPECT_EQ(Differs(0), 0);
}

TEST_F(Player, MomentsFollowFromAndStep) {
  WriteText(dir.ScenePath(),
            Replace(SceneText(), "\"to\": 9", "\"from\": 10, \"to\": 40, \"step\": 3"), 5);
  ASSERT_TRUE(Poll());
  EXPECT_EQ(player.MomentCount(), 11);
  EXPECT_EQ(player.Moment(), 10);
  EXPECT_EQ(player.TimeOf(2), 16);
  EXPECT_EQ(player.IndexOf(17), 2);
  EXPECT_EQ(player.IndexOf(5), 0);
  EXPECT_EQ(player.IndexOf(1000), 10);
  EXPECT_EQ(player.BaseSpeed(), 10);  // a moment lasts 3/30 s
  EXPECT_EQ(player.Clock().Speed(), 10);
  player.GoTo(10);
  EXPECT_EQ(player.Moment(), 40);
}

TEST_F(Player, OpeningBadScenesGivesTheReadersMessageAndStatus2) {
  const std::string text = Replace(SceneText(), "\"rect\": [0, 0, 2, 2]", "\"rect\": \"two\"");
  WriteText(dir.ScenePath(), text);
  qvplay::Player other;
  std::string error;
  int status = 0;
  EXPECT_FALSE(other.Open(dir.ScenePath(), {}, &error, &status));
  EXPECT_EQ(status, 2);
  EXPECT_NE(error.find("scene.json:10: /members/1/frames/0/rect: expected an array"),
            std::string::npos)
      << error;
  status = 0;
  EXPECT_FALSE(other.Open(dir.dir / "none.json", {}, &error, &status));
  EXPECT_EQ(status, 2);
  EXPECT_NE(error.find("none.json"), std::string::npos);
  // Pictures from another directory are found there, and watched.
  TempDir elsewhere;
  WriteText(elsewhere / "scene.json", SceneText());
  qvscene::LoadOptions options;
  options.pictureDir = dir.dir.Path();
  ASSERT_TRUE(other.Open(elsewhere / "scene.json", options, &error, &status)) << error;
  EXPECT_EQ(other.WatchedFiles(),
            (std::vector<std::string>{elsewhere / "scene.json", dir.dir / "back.png",
                                      dir.dir / "spr.png"}));
}

TEST_F(Player, DraggingOnTheBarScrubsAndPlayingGoesOnAfter) {
  for (int k = 0; k < 10; ++k) EXPECT_EQ(L().IndexAt(BarX(k), 10), k);
  EXPECT_EQ(BarX(0), L().trackX);
  EXPECT_EQ(BarX(9), L().trackX + L().trackWidth - 1);
  Press(SDLK_SPACE);
  Mouse(SDL_MOUSEBUTTONDOWN, BarX(7), BarY());
  EXPECT_TRUE(player.Scrubbing());
  Run({{0, 0, 7, false}});
  Mouse(SDL_MOUSEMOTION, BarX(3), BarY());
  Run({{0, 0, 3, false}});
  Mouse(SDL_MOUSEMOTION, -50, BarY());  // past the ends of the track
  EXPECT_EQ(player.Index(), 0);
  Mouse(SDL_MOUSEMOTION, 5000, 0);
  EXPECT_EQ(player.Index(), 9);
  Mouse(SDL_MOUSEBUTTONUP, BarX(4), BarY());
  EXPECT_FALSE(player.Scrubbing());
  Run({{0, 0, 4, true}, {0, 100, 7, true}});  // 6 ticks: 3 moments on from 4
  // A release outside the window (motion without the button) ends the scrub.
  Mouse(SDL_MOUSEBUTTONDOWN, BarX(6), BarY());
  Mouse(SDL_MOUSEMOTION, BarX(2), BarY(), 0);
  EXPECT_FALSE(player.Scrubbing());
  Run({{0, 0, 6, true}});
}

TEST_F(Player, ScrubbingWhilePausedStaysPausedAndOtherButtonsDoNothing) {
  Mouse(SDL_MOUSEBUTTONDOWN, BarX(6), BarY(), SDL_BUTTON_RIGHT);
  EXPECT_FALSE(player.Scrubbing());
  Mouse(SDL_MOUSEBUTTONDOWN, BarX(5), BarY());
  Mouse(SDL_MOUSEBUTTONUP, BarX(5), BarY());
  Mouse(SDL_MOUSEMOTION, BarX(2), BarY());  // no button pressed: nothing moves
  Run({{0, 0, 5, false}});
}

TEST_F(Player, ClickNamesTheTopmostMemberOfTheVisibleLayersAtTheMoment) {
  player.GoTo(2);  // the sprite stands at (2, 1) to (3, 2)
  EXPECT_EQ(Click(2, 1), "spr");
  EXPECT_EQ(player.LastHit().id, Id("spr"));
  EXPECT_EQ(player.LastHit().layer, 1);
  EXPECT_EQ(player.Message(), "spr (id " + std::to_string(Id("spr")) + ", layer 2)");
  EXPECT_EQ(Click(3, 2), "spr");
  EXPECT_EQ(Click(5, 1), "back");
  EXPECT_EQ(player.LastHit().id, Id("back"));
  EXPECT_EQ(player.LastHit().layer, 0);
  EXPECT_EQ(Click(4, 3), "back");
  player.GoTo(5);  // the sprite has moved on
  EXPECT_EQ(Click(2, 1), "back");
  EXPECT_EQ(Click(5, 1), "spr");
  const std::pair<int, int> outside[] = {{-1, 0}, {8, 0}, {0, 4}, {40000, -40000}};
  for (const auto& p : outside)
    EXPECT_FALSE(player.HitTest(p.first, p.second).found) << p.first << "," << p.second;
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
  const qvscene::Picture good = Reference(dir.ScenePath(), 4);
  EXPECT_FALSE(player.PollFiles());             // nothing changed
  WriteText(dir.ScenePath(), SceneText(2), 5);  // the sprite one row lower
  Press(SDLK_SPACE);
  EXPECT_TRUE(Poll());
  EXPECT_TRUE(player.Error().empty());
  EXPECT_GT(Shown(good), 0);
  Run({{0, 0, 4, true}, {0, 100, 7, true}});  // 6 ticks: 3 moments
  EXPECT_FALSE(player.PollFiles());           // once only
  // A changed picture.
  Press(SDLK_SPACE);
  SavePicture(dir.dir / "spr.png", MakePicture(2, 2, {9, 9, 9, 9}), 10);
  EXPECT_TRUE(Poll());
  EXPECT_EQ(Reference(dir.ScenePath(), 7).At(6, 2), 9);
  Run({{0, 0, 7, false}});
  // A shorter scene keeps the moment within its range; hidden layers stay hidden.
  Press(SDLK_2);
  WriteText(dir.ScenePath(), SceneText(1, 5), 15);
  EXPECT_TRUE(Poll());
  EXPECT_EQ(player.MomentCount(), 6);
  EXPECT_EQ(player.Clock().End(), 5);
  EXPECT_EQ(player.Index(), 5);
  EXPECT_FALSE(player.LayerVisible(1));
  EXPECT_EQ(Shown(BackPicture()), 0);
  // A new picture named by the scene is watched.
  SavePicture(dir.dir / "b2.png", SpritePicture());
  WriteText(dir.ScenePath(), Replace(SceneText(), "\"spr.png\"", "\"spr.png\", \"b2\": \"b2.png\""),
            20);
  EXPECT_TRUE(Poll());
  EXPECT_EQ(player.WatchedFiles().size(), 4u);
  SavePicture(dir.dir / "b2.png", MakePicture(3, 3, {}), 25);
  EXPECT_TRUE(Poll());
}

TEST_F(Player, BrokenScenesKeepTheLastGoodOneAndShowTheirError) {
  player.GoTo(4);
  const qvscene::Picture good = Reference(dir.ScenePath(), 4);
  const std::string text = Replace(SceneText(2), "\"rect\": [0, 0, 2, 2]", "\"rect\": \"two\"");
  WriteText(dir.ScenePath(), text, 5);
  std::string err;
  EXPECT_TRUE(Poll(&err));
  const std::string where = dir.ScenePath() + ":" + std::to_string(LineOfText(text, "\"two\"")) +
                            ": /members/1/frames/0/rect: expected an array";
  EXPECT_EQ(player.Error().rfind(where, 0), 0u) << player.Error();
  EXPECT_EQ(err, "qvmovie-play: " + player.Error() + "\n");
  EXPECT_EQ(player.Index(), 4);
  EXPECT_EQ(player.MomentCount(), 10);
  // The picture is the last good scene's, with a shaded red panel over it.
  EXPECT_EQ(PictureDiffers(good), 0);
  EXPECT_GT(Shown(good), 0);
  const std::uint32_t panel = frame.At(0, 0);
  EXPECT_GT(static_cast<int>((panel >> 16) & 255), static_cast<int>((panel >> 8) & 255) + 40);
  Press(SDLK_2);
  Press(SDLK_2);
  EXPECT_EQ(PictureDiffers(good), 0);
  EXPECT_FALSE(player.PollFiles());  // reported once
  // Broken JSON, a broken picture and a deleted scene file: each an error
  // until fixed, the last good scene shown meanwhile.
  const std::function<void(int)> breakages[] = {
      [&](int s) { WriteText(dir.ScenePath(), "{\n  \"output\": {\n", s); },
      [&](int s) { WriteText(dir.dir / "spr.png", "not a picture", s); },
      [&](int) { fs::remove(dir.ScenePath()); },
  };
  const std::string errors[] = {dir.ScenePath() + ":3", "/pictures/spr", dir.ScenePath()};
  int stamp = 10;
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    WriteText(dir.ScenePath(), SceneText(2), stamp += 5);  // fixed: the new scene and no error
    SavePicture(dir.dir / "spr.png", SpritePicture(), stamp);
    EXPECT_TRUE(Poll());
    EXPECT_TRUE(player.Error().empty());
    const qvscene::Picture fixed = Reference(dir.ScenePath(), 4);
    EXPECT_EQ(Shown(fixed), 0);
    breakages[i](stamp += 5);
    EXPECT_TRUE(Poll());
    EXPECT_NE(player.Error().find(errors[i]), std::string::npos) << player.Error();
    EXPECT_EQ(PictureDiffers(fixed), 0);
  }
}

TEST_F(Player, RKeyReloadsAtOnce) {
  const auto stamp = fs::last_write_time(dir.ScenePath());  // the same stamp: only R notices
  WriteText(dir.ScenePath(), SceneText(2));
  fs::last_write_time(dir.ScenePath(), stamp);
  player.GoTo(4);
  Press(SDLK_r);
  EXPECT_EQ(Differs(4), 0);
  EXPECT_EQ(player.Message(), "reloaded " + dir.ScenePath());
}

}  // namespace
