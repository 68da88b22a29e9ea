// The authoring loop: the player reloads the scene when the scene file or
// one of its pictures changes, keeps the current moment, and keeps the last
// good scene on screen when the new one has errors.

#include <gtest/gtest.h>

#include <algorithm>

#include "PlayTestUtil.h"

namespace {

using namespace playtest;
using qvplay::Player;

class PlayerReload : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    int status = 0;
    ASSERT_TRUE(player.Open(dir.ScenePath(), {}, &error, &status)) << error;
    int w = 0, h = 0;
    qvplay::WindowSizeFor(8, 4, 2, 5, &w, &h);
    player.SetWindowSize(w, h);
    player.GoTo(4);
    good = Reference(dir.ScenePath(), 4);
    ASSERT_EQ(Shown(good), 0);
  }
  // Pixels of the window that differ from picture.
  long Shown(const qvscene::Picture& picture) {
    qvplay::DrawView(&player, &frame);
    return DifferingPixels(frame, player.GetLayout(), picture);
  }
  int Line(const std::string& text, const std::string& marker) {
    const std::size_t at = text.find(marker);
    return 1 +
           static_cast<int>(std::count(text.begin(), text.begin() + static_cast<long>(at), '\n'));
  }

  FakeTicks ticks;
  SceneDir dir;
  Player player;
  qvplay::Frame frame;
  qvscene::Picture good;
};

TEST_F(PlayerReload, NothingChangedNothingReloaded) {
  EXPECT_FALSE(player.PollFiles());
  EXPECT_FALSE(player.PollFiles());
  EXPECT_EQ(Shown(good), 0);
}

TEST_F(PlayerReload, ARewrittenSceneIsShownAtTheSameMoment) {
  WriteFile(dir.ScenePath(), SceneText(2), 5);  // the sprite one row lower
  EXPECT_TRUE(player.PollFiles());
  EXPECT_TRUE(player.Error().empty());
  EXPECT_EQ(player.Index(), 4);
  const qvscene::Picture moved = Reference(dir.ScenePath(), 4);
  EXPECT_EQ(Shown(moved), 0);
  EXPECT_GT(Shown(good), 0);
  EXPECT_FALSE(player.PollFiles());  // once only
}

TEST_F(PlayerReload, AChangedPictureIsShown) {
  SavePicture(dir.Dir() / "spr.png", MakePicture(2, 2, {9, 9, 9, 9}), 5);
  EXPECT_TRUE(player.PollFiles());
  const qvscene::Picture changed = Reference(dir.ScenePath(), 4);
  EXPECT_EQ(changed.At(4, 1), 9);
  EXPECT_EQ(Shown(changed), 0);
}

TEST_F(PlayerReload, PlayingGoesOnAfterAReload) {
  player.HandleEvent(Key(SDLK_SPACE));
  WriteFile(dir.ScenePath(), SceneText(2), 5);
  player.PollFiles();
  EXPECT_TRUE(player.Running());
  EXPECT_EQ(player.Index(), 4);
  ticks.Advance(100);  // 6 ticks: 3 moments
  player.Advance();
  EXPECT_EQ(player.Index(), 7);
}

TEST_F(PlayerReload, AShorterSceneKeepsTheMomentWithinItsRange) {
  player.GoTo(8);
  WriteFile(dir.ScenePath(), SceneText(1, 5), 5);
  EXPECT_TRUE(player.PollFiles());
  EXPECT_EQ(player.MomentCount(), 6);
  EXPECT_EQ(player.Clock().End(), 5);
  EXPECT_EQ(player.Index(), 5);
  EXPECT_EQ(Shown(Reference(dir.ScenePath(), 5)), 0);
}

TEST_F(PlayerReload, LayerVisibilityStays) {
  player.HandleEvent(Key(SDLK_2));
  WriteFile(dir.ScenePath(), SceneText(2), 5);
  player.PollFiles();
  EXPECT_FALSE(player.LayerVisible(1));
  EXPECT_EQ(Shown(BackPicture()), 0);
}

TEST_F(PlayerReload, ABrokenSceneKeepsTheLastGoodOneAndShowsTheError) {
  std::string text = SceneText(2);
  text.replace(text.find("\"rect\": [0, 0, 2, 2]"), 20, "\"rect\": \"two\"");
  WriteFile(dir.ScenePath(), text, 5);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(player.PollFiles());
  const std::string err = testing::internal::GetCapturedStderr();
  const std::string where = dir.ScenePath() + ":" + std::to_string(Line(text, "\"two\"")) +
                            ": /members/1/frames/0/rect: expected an array";
  EXPECT_EQ(player.Error().rfind(where, 0), 0u) << player.Error();
  EXPECT_EQ(err, "qvmovie-play: " + player.Error() + "\n");
  EXPECT_EQ(player.Index(), 4);
  EXPECT_EQ(player.MomentCount(), 10);
  // The picture is the last good scene's, the error panel over it.
  EXPECT_EQ(PictureDiffers(&player, good), 0);
  EXPECT_GT(Shown(good), 0);
  const std::uint32_t panel = frame.At(0, 0);  // shaded red
  EXPECT_GT(static_cast<int>((panel >> 16) & 255), static_cast<int>((panel >> 8) & 255) + 40);
  player.HandleEvent(Key(SDLK_2));
  player.HandleEvent(Key(SDLK_2));
  EXPECT_EQ(PictureDiffers(&player, good), 0);
  EXPECT_FALSE(player.PollFiles());  // reported once

  // Fixed again: the new scene and no error.
  WriteFile(dir.ScenePath(), SceneText(2), 10);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(player.PollFiles());
  testing::internal::GetCapturedStderr();
  EXPECT_TRUE(player.Error().empty());
  EXPECT_EQ(Shown(Reference(dir.ScenePath(), 4)), 0);
}

TEST_F(PlayerReload, ErrorsOfJsonAndOfPicturesAreShownToo) {
  WriteFile(dir.ScenePath(), "{\n  \"output\": {\n", 5);
  testing::internal::CaptureStderr();
  player.PollFiles();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(player.Error().rfind(dir.ScenePath() + ":3", 0), 0u) << player.Error();
  EXPECT_EQ(PictureDiffers(&player, good), 0) << "still the last good scene";

  WriteFile(dir.ScenePath(), SceneText(), 10);
  player.PollFiles();
  ASSERT_TRUE(player.Error().empty());
  WriteFile(dir.Dir() / "spr.png", "not a picture", 15);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(player.PollFiles());
  testing::internal::GetCapturedStderr();
  EXPECT_NE(player.Error().find("/pictures/spr"), std::string::npos) << player.Error();
  EXPECT_EQ(PictureDiffers(&player, good), 0);
}

TEST_F(PlayerReload, ADeletedSceneFileIsAnErrorUntilItComesBack) {
  fs::remove(dir.ScenePath());
  testing::internal::CaptureStderr();
  EXPECT_TRUE(player.PollFiles());
  testing::internal::GetCapturedStderr();
  EXPECT_FALSE(player.Error().empty());
  EXPECT_EQ(PictureDiffers(&player, good), 0);
  WriteFile(dir.ScenePath(), SceneText(2), 5);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(player.PollFiles());
  testing::internal::GetCapturedStderr();
  EXPECT_TRUE(player.Error().empty());
  EXPECT_EQ(Shown(Reference(dir.ScenePath(), 4)), 0);
}

TEST_F(PlayerReload, RKeyReloadsAtOnce) {
  // Rewritten with the same stamp: only R notices.
  const auto stamp = fs::last_write_time(dir.ScenePath());
  WriteFile(dir.ScenePath(), SceneText(2));
  fs::last_write_time(dir.ScenePath(), stamp);
  player.HandleEvent(Key(SDLK_r));
  EXPECT_EQ(Shown(Reference(dir.ScenePath(), 4)), 0);
  EXPECT_EQ(player.Message(), "reloaded " + dir.ScenePath());
}

TEST_F(PlayerReload, ANewPictureNamedByTheSceneIsWatched) {
  std::string text = SceneText();
  text.replace(text.find("\"spr\": \"spr.png\""), 16, "\"spr\": \"spr.png\", \"b2\": \"b2.png\"");
  SavePicture(dir.Dir() / "b2.png", SpritePicture());
  WriteFile(dir.ScenePath(), text, 5);
  EXPECT_TRUE(player.PollFiles());
  ASSERT_EQ(player.WatchedFiles().size(), 4u);
  SavePicture(dir.Dir() / "b2.png", MakePicture(3, 3, {}), 10);
  EXPECT_TRUE(player.PollFiles());
}

}  // namespace
