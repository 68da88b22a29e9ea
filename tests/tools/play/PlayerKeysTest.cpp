// The player's clock and keys: playing in real time and frame by frame,
// stepping, jumping, speed, modes, layers and the window's own keys, all
// driven through SDL key events with a settable millisecond clock.

#include <gtest/gtest.h>

#include "PlayTestUtil.h"

namespace {

using namespace playtest;
using qvplay::Player;

class PlayerKeys : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    int status = 0;
    ASSERT_TRUE(player.Open(dir.ScenePath(), {}, &error, &status)) << error;
    int w = 0, h = 0;
    qvplay::WindowSizeFor(8, 4, 2, 10, &w, &h);
    player.SetWindowSize(w, h);
  }
  bool Press(SDL_Keycode sym, bool repeat = false) { return player.HandleEvent(Key(sym, repeat)); }
  // Differing pixels between the window and the scene reader's moment t.
  long Differs(std::int32_t t) {
    qvplay::DrawView(&player, &frame);
    return DifferingPixels(frame, player.GetLayout(), Reference(dir.ScenePath(), t));
  }

  FakeTicks ticks;  // 100000 ms: tick 5999
  SceneDir dir;
  Player player;
  qvplay::Frame frame;
};

TEST_F(PlayerKeys, OpensStoppedAtTheFirstMomentWithTheScenesRange) {
  EXPECT_EQ(player.MomentCount(), 10);
  EXPECT_EQ(player.Index(), 0);
  EXPECT_EQ(player.Moment(), 0);
  EXPECT_EQ(player.Clock().Top(), 0);
  EXPECT_EQ(player.Clock().End(), 9);
  EXPECT_EQ(player.Clock().Mode(), 2);    // loop
  EXPECT_EQ(player.Clock().Speed(), 30);  // one moment of 1/30 s
  EXPECT_FALSE(player.Running());
  EXPECT_EQ(player.LayerCount(), 2);
  EXPECT_EQ(Differs(0), 0);
}

TEST_F(PlayerKeys, SpacePlaysInRealTimeAndPausesAgain) {
  EXPECT_TRUE(Press(SDLK_SPACE));
  EXPECT_TRUE(player.Running());
  ticks.Advance(500);  // tick 6029: 30 ticks, 15 moments, looped to 5
  EXPECT_TRUE(player.Advance());
  EXPECT_EQ(player.Index(), 5);
  EXPECT_EQ(Differs(5), 0);

  EXPECT_TRUE(Press(SDLK_SPACE));
  EXPECT_FALSE(player.Running());
  EXPECT_TRUE(player.Clock().IsPausing());
  ticks.Advance(500);
  EXPECT_FALSE(player.Advance());
  EXPECT_EQ(player.Index(), 5);
  // Playing goes on from the paused moment.
  Press(SDLK_SPACE);
  ticks.Advance(100);  // tick 6065 - 6059 = 6 ticks: 3 moments
  player.Advance();
  EXPECT_EQ(player.Index(), 8);
}

TEST_F(PlayerKeys, HeldSpaceDoesNotToggleAgain) {
  Press(SDLK_SPACE);
  Press(SDLK_SPACE, true);
  EXPECT_TRUE(player.Running());
}

TEST_F(PlayerKeys, RealTimeSkipsMomentsAndFrameByFrameShowsEach) {
  Press(SDLK_SPACE);
  ticks.Advance(300);  // 18 ticks: 9 moments
  player.Advance();
  EXPECT_EQ(player.Index(), 9);

  Press(SDLK_HOME);
  Press(SDLK_f);
  EXPECT_TRUE(player.FrameByFrame());
  ticks.Advance(300);
  player.Advance();
  EXPECT_EQ(player.Index(), 1);  // late: one moment on, not nine
  EXPECT_FALSE(player.Advance());
  ticks.Advance(34);
  player.Advance();
  EXPECT_EQ(player.Index(), 2);
  EXPECT_EQ(Differs(2), 0);

  Press(SDLK_f);
  EXPECT_FALSE(player.FrameByFrame());
}

TEST_F(PlayerKeys, ArrowsStepOneMomentAndPause) {
  Press(SDLK_RIGHT);
  Press(SDLK_RIGHT, true);  // held keys repeat
  Press(SDLK_RIGHT);
  EXPECT_EQ(player.Index(), 3);
  EXPECT_EQ(Differs(3), 0);
  EXPECT_GT(Differs(2), 0);  // the sprite has moved
  Press(SDLK_LEFT);
  EXPECT_EQ(player.Index(), 2);
  Press(SDLK_LEFT);
  Press(SDLK_LEFT);
  Press(SDLK_LEFT);  // looping: before the first comes the last
  EXPECT_EQ(player.Index(), 9);
  EXPECT_EQ(player.Moment(), 9);

  Press(SDLK_SPACE);
  ASSERT_TRUE(player.Running());
  Press(SDLK_RIGHT);
  EXPECT_FALSE(player.Running());
  EXPECT_EQ(player.Index(), 0);
}

TEST_F(PlayerKeys, HomeAndEndJumpWithoutChangingTheRunState) {
  Press(SDLK_END);
  EXPECT_EQ(player.Index(), 9);
  EXPECT_EQ(Differs(9), 0);
  Press(SDLK_HOME);
  EXPECT_EQ(player.Index(), 0);
  Press(SDLK_SPACE);
  Press(SDLK_END);
  EXPECT_TRUE(player.Running());
  EXPECT_EQ(player.Index(), 9);
}

TEST_F(PlayerKeys, PlusAndMinusDoubleAndHalveTheSpeed) {
  Press(SDLK_PLUS);
  EXPECT_EQ(player.Clock().Speed(), 60);
  Press(SDLK_KP_PLUS);
  EXPECT_EQ(player.Clock().Speed(), 120);
  Press(SDLK_MINUS);
  Press(SDLK_KP_MINUS);
  Press(SDLK_MINUS);
  EXPECT_EQ(player.Clock().Speed(), 15);
  EXPECT_EQ(player.SpeedLevel(), -1);
  for (int i = 0; i < 10; ++i) Press(SDLK_MINUS);
  EXPECT_EQ(player.Clock().Speed(), 1);  // never 0
  for (int i = 0; i < 20; ++i) Press(SDLK_EQUALS);
  EXPECT_EQ(player.Clock().Speed(), 960);

  // At double speed half a second passes 30 moments.
  while (player.SpeedLevel() > 1) Press(SDLK_MINUS);
  Press(SDLK_SPACE);
  ticks.Advance(500);
  player.Advance();
  EXPECT_EQ(player.Index(), 0);  // 30 moments: three times round
  ticks.Advance(100);            // tick 6035, 36 ticks: 36 moments
  player.Advance();
  EXPECT_EQ(player.Index(), 6);
}

TEST_F(PlayerKeys, MCyclesOnceBounceLoop) {
  Press(SDLK_m);
  EXPECT_EQ(player.Clock().Mode(), 0);
  Press(SDLK_m, true);  // a held key does not cycle on
  EXPECT_EQ(player.Clock().Mode(), 0);
  Press(SDLK_m);
  EXPECT_EQ(player.Clock().Mode(), 1);
  Press(SDLK_m);
  EXPECT_EQ(player.Clock().Mode(), 2);
}

TEST_F(PlayerKeys, PlayingOnceStopsAtTheLastMomentAndStartsOverOnSpace) {
  Press(SDLK_m);  // once
  Press(SDLK_SPACE);
  ticks.Advance(1000);
  player.Advance();
  EXPECT_EQ(player.Index(), 9);
  EXPECT_FALSE(player.Running());
  EXPECT_FALSE(player.Clock().IsPlaying());
  Press(SDLK_SPACE);
  EXPECT_TRUE(player.Running());
  EXPECT_EQ(player.Index(), 0);
}

TEST_F(PlayerKeys, BounceComesBackFromTheLastMoment) {
  Press(SDLK_m);
  Press(SDLK_m);  // bounce
  Press(SDLK_SPACE);
  ticks.Advance(200);  // tick 6011: 12 ticks, 6 moments
  player.Advance();
  EXPECT_EQ(player.Index(), 6);
  ticks.Advance(200);  // tick 6023: 12 moments, reflected at 9 to 6
  player.Advance();
  EXPECT_EQ(player.Index(), 6);
  EXPECT_FALSE(player.Clock().IsForward());
}

TEST_F(PlayerKeys, DigitsToggleLayers) {
  const qvscene::Picture back = BackPicture();
  Press(SDLK_RIGHT);
  Press(SDLK_2);
  EXPECT_FALSE(player.LayerVisible(1));
  EXPECT_TRUE(player.LayerVisible(0));
  // Only the backdrop is left: the sprite's pixels show the back picture.
  qvplay::DrawView(&player, &frame);
  const qvplay::Layout& l = player.GetLayout();
  EXPECT_EQ(DifferingPixels(frame, l, back), 0);
  EXPECT_EQ(player.Message(), "layer 2 (id 20) hidden");

  Press(SDLK_2, true);  // held: no change
  EXPECT_FALSE(player.LayerVisible(1));
  Press(SDLK_2);
  EXPECT_TRUE(player.LayerVisible(1));
  EXPECT_EQ(Differs(1), 0);

  // Without the backdrop the background index 0 shows round the sprite.
  Press(SDLK_1);
  qvplay::DrawView(&player, &frame);
  int x = 0, y = 0;
  CentreOf(l, 0, 0, &x, &y);
  EXPECT_EQ(frame.At(x, y), ColorOf(back, 0));
  CentreOf(l, 1, 1, &x, &y);
  EXPECT_EQ(frame.At(x, y), ColorOf(back, 3));  // the sprite's first pixel
  CentreOf(l, 2, 2, &x, &y);
  EXPECT_EQ(frame.At(x, y), ColorOf(back, 0));  // its transparent one

  Press(SDLK_5);
  EXPECT_EQ(player.Message(), "no layer 5");
  Press(SDLK_0);
  EXPECT_EQ(player.Message(), "no layer 10");
  EXPECT_EQ(player.LayerCount(), 2);
}

TEST_F(PlayerKeys, DrawingTheVisibleLayersMatchesTheLayerStore) {
  // With every layer on, the player's own walk over the layers draws what
  // the scene reader draws.
  for (int k = 0; k < player.MomentCount(); ++k) {
    player.GoTo(k);
    EXPECT_EQ(Differs(k), 0) << "moment " << k;
  }
}

TEST_F(PlayerKeys, HelpOverlayAndQuit) {
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
  SDL_Event quit{};
  quit.type = SDL_QUIT;
  EXPECT_FALSE(player.HandleEvent(quit));
  SDL_Event other{};
  other.type = SDL_USEREVENT;
  EXPECT_TRUE(player.HandleEvent(other));
}

TEST_F(PlayerKeys, ResizingTheWindowChangesTheScale) {
  SDL_Event e{};
  e.type = SDL_WINDOWEVENT;
  e.window.event = SDL_WINDOWEVENT_SIZE_CHANGED;
  e.window.data1 = 100;
  e.window.data2 = 200;
  player.HandleEvent(e);
  const qvplay::Layout& l = player.GetLayout();
  EXPECT_EQ(l.windowWidth, 100);
  EXPECT_EQ(l.scale, 12);
  EXPECT_EQ(l.picX, 2);
  EXPECT_EQ(Differs(0), 0);
}

TEST(PlayerTime, MomentsFollowFromAndStep) {
  SceneDir dir;
  std::string text = SceneText();
  const std::size_t at = text.find("\"to\": 9");
  text.replace(at, 7, "\"from\": 10, \"to\": 40, \"step\": 3");
  WriteFile(dir.ScenePath(), text);
  Player player;
  std::string error;
  int status = 0;
  ASSERT_TRUE(player.Open(dir.ScenePath(), {}, &error, &status)) << error;
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

TEST(PlayerOpen, BadScenesGiveTheReadersMessageAndStatus2) {
  SceneDir dir;
  std::string text = SceneText();
  text.replace(text.find("\"rect\": [0, 0, 2, 2]"), 20, "\"rect\": \"two\"");
  WriteFile(dir.ScenePath(), text);
  Player player;
  std::string error;
  int status = 0;
  EXPECT_FALSE(player.Open(dir.ScenePath(), {}, &error, &status));
  EXPECT_EQ(status, 2);
  EXPECT_NE(error.find("scene.json:10: /members/1/frames/0/rect: expected an array"),
            std::string::npos)
      << error;

  EXPECT_FALSE(player.Open(dir.Dir() / "none.json", {}, &error, &status));
  EXPECT_EQ(status, 2);
  EXPECT_NE(error.find("none.json"), std::string::npos);
}

TEST(PlayerOpen, PicturesFromAnotherDirectory) {
  SceneDir dir;
  TempDir other;
  WriteFile(other / "scene.json", SceneText());
  Player player;
  std::string error;
  int status = 0;
  qvscene::LoadOptions options;
  options.pictureDir = dir.Dir().Path();
  ASSERT_TRUE(player.Open(other / "scene.json", options, &error, &status)) << error;
  ASSERT_EQ(player.WatchedFiles().size(), 3u);
  EXPECT_EQ(player.WatchedFiles()[0], other / "scene.json");
  EXPECT_EQ(player.WatchedFiles()[1], dir.Dir() / "back.png");
  EXPECT_EQ(player.WatchedFiles()[2], dir.Dir() / "spr.png");
}

}  // namespace
