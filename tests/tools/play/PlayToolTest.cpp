// The qvmovie-play program's command line: messages and exit statuses as
// the render tool gives them, without needing a display.

#include <gtest/gtest.h>

#include "PlayTestUtil.h"

namespace {

using namespace playtest;

std::string Play(const std::string& args) { return std::string(QV_PLAY_TOOL) + " " + args; }
std::string Render(const std::string& args) { return std::string(QV_RENDER_TOOL) + " " + args; }

// The message without the program's name in front.
std::string Body(const std::string& err, const std::string& program) {
  const std::string prefix = program + ": ";
  return err.rfind(prefix, 0) == 0 ? err.substr(prefix.size()) : err;
}

TEST(PlayTool, HelpAndBadUsage) {
  TempDir scratch;
  RunResult r = RunCommand(Play("--help"), scratch);
  EXPECT_EQ(r.exitCode, 0);

  r = RunCommand(Play(""), scratch);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err, "qvmovie-play: no scene file given\nTry 'qvmovie-play --help'.\n");

  r = RunCommand(Play("a.json --bogus"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err, "qvmovie-play: unknown option '--bogus'\nTry 'qvmovie-play --help'.\n");

  r = RunCommand(Play("a.json b.json"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  r = RunCommand(Play("a.json --frames 0"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find("--frames: '0'"), std::string::npos);
  r = RunCommand(Play("a.json --scale 9"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  r = RunCommand(Play("a.json --at x"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err,
            "qvmovie-play: --at: 'x' is not a time (an integer)\nTry 'qvmovie-play --help'.\n");
  r = RunCommand(Play("a.json --screenshot"), scratch);
  EXPECT_EQ(r.exitCode, 2);
}

TEST(PlayTool, BadScenesGiveTheRenderToolsMessage) {
  SceneDir dir;
  TempDir scratch;
  std::string text = SceneText();
  text.replace(text.find("\"transparent\": 0"), 16, "\"transparent\": 300");
  WriteFile(dir.ScenePath(), text);
  const RunResult play = RunCommand(Play(dir.ScenePath()), scratch);
  const RunResult render =
      RunCommand(Render(dir.ScenePath() + " --png-at 0 " + (scratch / "o.png")), scratch);
  EXPECT_EQ(play.exitCode, 2);
  EXPECT_EQ(render.exitCode, 2);
  EXPECT_NE(play.err.find("/members/1/transparent"), std::string::npos) << play.err;
  EXPECT_EQ(Body(play.err, "qvmovie-play"), Body(render.err, "qvmovie-render"));

  const RunResult missingPlay = RunCommand(Play(dir.Dir() / "none.json"), scratch);
  const RunResult missingRender =
      RunCommand(Render((dir.Dir() / "none.json") + " --png-at 0 " + (scratch / "o.png")), scratch);
  EXPECT_EQ(missingPlay.exitCode, 2);
  EXPECT_EQ(Body(missingPlay.err, "qvmovie-play"), Body(missingRender.err, "qvmovie-render"));
}

TEST(PlayTool, StartMomentMustLieInTheScene) {
  SceneDir dir;
  TempDir scratch;
  const RunResult r = RunCommand(Play(dir.ScenePath() + " --at 10"), scratch);
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_EQ(r.err, "qvmovie-play: --at: moment 10 lies outside the scene (0 to 9)\n");
}

TEST(PlayTool, NoDisplayIsAFailureOfItsOwn) {
  SceneDir dir;
  TempDir scratch;
  const RunResult r = RunCommand(
      "env -u DISPLAY -u WAYLAND_DISPLAY SDL_VIDEODRIVER=x11 " + Play(dir.ScenePath()), scratch);
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(r.err.rfind("qvmovie-play: cannot open a window: ", 0), 0u) << r.err;
}

}  // namespace
