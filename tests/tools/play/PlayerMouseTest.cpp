// Mouse handling: scrubbing on the timeline bar and hit-testing clicks on
// the picture, through synthetic SDL mouse events.

#include <gtest/gtest.h>

#include "PlayTestUtil.h"

namespace {

using namespace playtest;
using qvplay::Player;

class PlayerMouse : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    int status = 0;
    ASSERT_TRUE(player.Open(dir.ScenePath(), {}, &error, &status)) << error;
    int w = 0, h = 0;
    qvplay::WindowSizeFor(8, 4, 2, 10, &w, &h);
    player.SetWindowSize(w, h);
  }
  const qvplay::Layout& L() { return player.GetLayout(); }
  int BarY() { return L().barY + L().barHeight / 2; }
  void Click(int movieX, int movieY) {
    int x = 0, y = 0;
    CentreOf(L(), movieX, movieY, &x, &y);
    player.HandleEvent(Mouse(SDL_MOUSEBUTTONDOWN, x, y));
    player.HandleEvent(Mouse(SDL_MOUSEBUTTONUP, x, y));
  }
  std::int16_t Id(const std::string& name) { return player.GetScene()->MemberId(name); }

  FakeTicks ticks;
  SceneDir dir;
  Player player;
  qvplay::Frame frame;
};

TEST_F(PlayerMouse, LayoutOfTheWindow) {
  EXPECT_EQ(L().scale, 10);
  EXPECT_EQ(L().picX, 0);
  EXPECT_EQ(L().picY, 0);
  EXPECT_EQ(L().picWidth, 80);
  EXPECT_EQ(L().barY, 40);
  EXPECT_EQ(L().rows, 2);
  EXPECT_EQ(L().XOfIndex(0, 10), L().trackX);
  EXPECT_EQ(L().XOfIndex(9, 10), L().trackX + L().trackWidth - 1);
  for (int k = 0; k < 10; ++k) EXPECT_EQ(L().IndexAt(L().XOfIndex(k, 10), 10), k);
}

TEST_F(PlayerMouse, DraggingOnTheBarScrubsAndPlayingGoesOnAfter) {
  player.HandleEvent(Key(SDLK_SPACE));
  ASSERT_TRUE(player.Running());
  player.HandleEvent(Mouse(SDL_MOUSEBUTTONDOWN, L().XOfIndex(7, 10), BarY()));
  EXPECT_TRUE(player.Scrubbing());
  EXPECT_FALSE(player.Running());
  EXPECT_EQ(player.Index(), 7);
  player.HandleEvent(Mouse(SDL_MOUSEMOTION, L().XOfIndex(3, 10), BarY()));
  EXPECT_EQ(player.Index(), 3);
  qvplay::DrawView(&player, &frame);
  EXPECT_EQ(DifferingPixels(frame, L(), Reference(dir.ScenePath(), 3)), 0);
  // Past the ends of the track: the first and the last moment.
  player.HandleEvent(Mouse(SDL_MOUSEMOTION, -50, BarY()));
  EXPECT_EQ(player.Index(), 0);
  player.HandleEvent(Mouse(SDL_MOUSEMOTION, 5000, 0));
  EXPECT_EQ(player.Index(), 9);
  player.HandleEvent(Mouse(SDL_MOUSEBUTTONUP, L().XOfIndex(4, 10), BarY()));
  EXPECT_FALSE(player.Scrubbing());
  EXPECT_EQ(player.Index(), 4);
  EXPECT_TRUE(player.Running());
  ticks.Advance(100);  // 6 ticks: 3 moments on from 4
  player.Advance();
  EXPECT_EQ(player.Index(), 7);
}

TEST_F(PlayerMouse, ScrubbingWhilePausedStaysPaused) {
  player.HandleEvent(Mouse(SDL_MOUSEBUTTONDOWN, L().XOfIndex(5, 10), BarY()));
  player.HandleEvent(Mouse(SDL_MOUSEBUTTONUP, L().XOfIndex(5, 10), BarY()));
  EXPECT_EQ(player.Index(), 5);
  EXPECT_FALSE(player.Running());
  // Motion without a pressed button moves nothing.
  player.HandleEvent(Mouse(SDL_MOUSEMOTION, L().XOfIndex(2, 10), BarY()));
  EXPECT_EQ(player.Index(), 5);
}

TEST_F(PlayerMouse, ReleaseOutsideTheWindowEndsTheScrub) {
  player.HandleEvent(Key(SDLK_SPACE));
  player.HandleEvent(Mouse(SDL_MOUSEBUTTONDOWN, L().XOfIndex(6, 10), BarY()));
  SDL_Event motion = Mouse(SDL_MOUSEMOTION, L().XOfIndex(2, 10), BarY());
  motion.motion.state = 0;
  player.HandleEvent(motion);
  EXPECT_FALSE(player.Scrubbing());
  EXPECT_EQ(player.Index(), 6);
  EXPECT_TRUE(player.Running());
}

TEST_F(PlayerMouse, OtherButtonsDoNothing) {
  SDL_Event e = Mouse(SDL_MOUSEBUTTONDOWN, L().XOfIndex(6, 10), BarY());
  e.button.button = SDL_BUTTON_RIGHT;
  player.HandleEvent(e);
  EXPECT_FALSE(player.Scrubbing());
  EXPECT_EQ(player.Index(), 0);
}

TEST_F(PlayerMouse, ClickNamesTheTopmostMember) {
  player.GoTo(2);  // the sprite stands at (2, 1) to (3, 2)
  Click(2, 1);
  EXPECT_TRUE(player.LastHit().found);
  EXPECT_EQ(player.LastHit().name, "spr");
  EXPECT_EQ(player.LastHit().id, Id("spr"));
  EXPECT_EQ(player.LastHit().layer, 1);
  EXPECT_EQ(player.Message(), "spr (id " + std::to_string(Id("spr")) + ", layer 2)");
  qvplay::DrawView(&player, &frame);  // the name is shown in the window

  Click(3, 2);
  EXPECT_EQ(player.LastHit().name, "spr");
  Click(5, 1);
  EXPECT_EQ(player.LastHit().name, "back");
  EXPECT_EQ(player.LastHit().id, Id("back"));
  EXPECT_EQ(player.LastHit().layer, 0);
  Click(4, 3);
  EXPECT_EQ(player.LastHit().name, "back");

  // The hit test follows the moment: at 5 the sprite has moved on.
  player.GoTo(5);
  Click(2, 1);
  EXPECT_EQ(player.LastHit().name, "back");
  Click(5, 1);
  EXPECT_EQ(player.LastHit().name, "spr");
}

TEST_F(PlayerMouse, HiddenLayersAreNotHit) {
  player.GoTo(2);
  player.HandleEvent(Key(SDLK_2));
  Click(2, 1);
  EXPECT_EQ(player.LastHit().name, "back");
  player.HandleEvent(Key(SDLK_1));
  Click(2, 1);
  EXPECT_FALSE(player.LastHit().found);
  EXPECT_EQ(player.Message(), "nothing at 2, 1");
  player.HandleEvent(Key(SDLK_2));
  Click(2, 1);
  EXPECT_EQ(player.LastHit().name, "spr");
}

TEST_F(PlayerMouse, HitTestOutsideThePicture) {
  EXPECT_FALSE(player.HitTest(-1, 0).found);
  EXPECT_FALSE(player.HitTest(8, 0).found);
  EXPECT_FALSE(player.HitTest(0, 4).found);
  EXPECT_FALSE(player.HitTest(40000, -40000).found);
  EXPECT_TRUE(player.HitTest(7, 3).found);
}

}  // namespace
