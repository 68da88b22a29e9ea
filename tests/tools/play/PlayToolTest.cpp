// The qvmovie-play program's command line: messages and exit statuses as the
// render tool gives them, without needing a display.

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
  EXPECT_EQ(RunCommand(Play("--help"), scratch).exitCode, 0);
  const std::string tryHelp = "\nTry 'qvmovie-play --help'.\n";
  const std::pair<const char*, std::string> cases[] = {
      {"", "qvmovie-play: no scene file given" + tryHelp},
      {"a.json --bogus", "qvmovie-play: unknown option '--bogus'" + tryHelp},
      {"a.json --at x", "qvmovie-play: --at: 'x' is not a time (an integer)" + tryHelp},
      {"a.json --frames 0", "--frames: '0'"},
      {"a.json b.json", ""},
      {"a.json --scale 9", ""},
      {"a.json --screenshot", ""},
  };
  for (const auto& c : cases) {
    const RunResult r = RunCommand(Play(c.first), scratch);
    EXPECT_EQ(r.exitCode, 2) << c.first;
    if (c.second.rfind("qvmovie-play: ", 0) == 0)
      EXPECT_EQ(r.err, c.second);
    else
      EXPECT_NE(r.err.find(c.second), std::string::npos) << r.err;
  }
}

TEST(PlayTool, BadScenesAndMomentsGiveTheRenderToolsMessageAndExitTwo) {
  SceneDir dir;
  TempDir scratch;
  const std::string bad = dir.dir / "bad.json", none = dir.dir / "none.json";
  WriteText(bad, Replace(SceneText(), "\"transparent\": 0", "\"transparent\": 300"));
  for (const std::string& scene : {bad, none}) {
    const RunResult play = RunCommand(Play(scene), scratch);
    const RunResult render =
        RunCommand(Render(scene + " --png-at 0 " + scratch / "o.png"), scratch);
    EXPECT_EQ(play.exitCode, 2);
    EXPECT_EQ(render.exitCode, 2);
    EXPECT_NE(play.err.find(scene == bad ? "/members/1/transparent" : "none.json"),
              std::string::npos)
        << play.err;
    EXPECT_EQ(Body(play.err, "qvmovie-play"), Body(render.err, "qvmovie-render"));
  }
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
