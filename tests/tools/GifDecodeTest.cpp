// The render tool's GIFs decoded by another program (Python's Pillow) and
// compared, frame by frame and colour by colour, with the same moments
// written directly by the tool as indexed PNG files (--png-at), on a scene
// made to stress the frame differences (colour tables that
// change where the indices do not, members that appear and vanish, frames
// identical to the one before).

#include <gtest/gtest.h>

#include <regex>

#include "ToolTestUtil.h"
#include "scene/MovieTime.h"
#include "scene/SceneReader.h"

namespace {

using namespace tooltest;

// Renders scene to a GIF and, in the same run, each of its moments to a
// PNG; decodes the GIF and expects every frame to show its moment's
// colours. Returns the GIF's path.
std::string ExpectGifShowsEveryMoment(const std::string& scene, const std::string& args,
                                      const std::vector<std::int32_t>& times, const TempDir& dir) {
  const std::string gif = dir / "out.gif";
  // At most 60 outputs a run.
  for (std::size_t first = 0; first < times.size(); first += 60) {
    std::string command = std::string(QV_RENDER_TOOL) + " " + scene + " --quiet " + args;
    if (first == 0) command += " -o " + gif;
    for (std::size_t k = first; k < std::min(times.size(), first + 60); ++k) {
      command +=
          " --png-at " + std::to_string(times[k]) + " " + dir / ("m" + std::to_string(k) + ".png");
    }
    const RunResult r = RunCommand(command, dir);
    EXPECT_EQ(0, r.exitCode) << r.text;
  }
  const PillowGif decoded = DecodeWithPillow(QV_PYTHON3, gif, dir);
  const auto& frames = decoded.frames;
  EXPECT_EQ(times.size(), frames.size());
  for (std::size_t k = 0; k < std::min(times.size(), frames.size()); ++k) {
    const Picture moment = ReadPng(dir / ("m" + std::to_string(k) + ".png"));
    EXPECT_EQ(moment.width, decoded.width);
    EXPECT_TRUE(ToRgb(moment) == frames[k]) << "moment " << times[k];
  }
  return gif;
}

// The frames of a GIF as gifsicle --info lists them: "WxH" for each.
std::vector<std::string> FrameSizes(const std::string& gif, const TempDir& dir) {
  const std::string info = RunCommand("gifsicle --info " + gif, dir).text;
  const std::regex image(R"(\+ image #\d+ (\d+x\d+))");
  std::vector<std::string> sizes;
  for (std::sregex_iterator m(info.begin(), info.end(), image), end; m != end; ++m)
    sizes.push_back((*m)[1]);
  return sizes;
}

// On the tiny pictures: the background member cycles indices 4 to 7 (its
// pixels keep their indices and change colour) up to moment 5, when an
// identical member without colours takes its place; a sprite appears at 2
// and vanishes after 5; a colour-only member flashes entry 10, which no
// pixel shows, up to 4; from 10 on a switch changes entry 3, shown at (2, 0)
// and (4, 3), every other moment. Moments 6 to 10 are identical.
TEST(GifDecode, StressedFrameDifferencesDecodeToTheMoments) {
  if (!*QV_PYTHON3) GTEST_SKIP() << "Python with Pillow (python3-pil) is needed";
  TempDir dir;
  WriteTinyPictures(dir);
  const std::string text = R"({
  "output": {"width": 8, "height": 4, "to": 13, "palette": "pal", "background": 9},
  "pictures": {"pal": "pal.png", "spr": "spr.png"},
  "members": [
    {"name": "m", "picture": "pal", "frames": [{"rect": [0, 0, 8, 4]}], "end": 5,
     "colors": [{"kind": "cycle", "area": [[4, 7]]}]},
    {"name": "still", "picture": "pal", "frames": [{"rect": [0, 0, 8, 4]}], "start": 6},
    {"name": "s", "picture": "spr", "transparent": 0, "frames": [{"rect": [0, 0, 2, 2]}],
     "start": 2, "end": 5, "path": {"points": [[1, 1], [7, 3]], "between": 2, "type": "reflect"}},
    {"name": "lamp", "colorTable": "pal", "start": 0, "end": 4,
     "colors": [{"kind": "flash", "area": [10]}]},
    {"name": "sw", "colorTable": "pal", "start": 10,
     "colors": [{"kind": "switch", "area": [3], "tables": [{}, {"entries": [[3, "#123456"]]}]}]}],
  "layers": [{"members": ["m", "still", "lamp", "sw"]}, {"members": ["s"]}]
})";
  WriteText(dir / "stress.json", text);
  std::vector<std::int32_t> times;
  for (std::int32_t t = 0; t <= 13; ++t) times.push_back(t);
  const std::string gif = ExpectGifShowsEveryMoment(dir / "stress.json", "", times, dir);
  // Frames after the first hold only what changed: a single pixel where
  // nothing did, the columns of entry 3 where only it did.
  const std::vector<std::string> sizes = FrameSizes(gif, dir);
  const std::vector<std::string> expected = {"8x4", "1x1", "1x1", "1x1",
                                             "1x1", "3x4", "3x4", "3x4"};
  ASSERT_EQ(14u, sizes.size());
  EXPECT_EQ(expected, std::vector<std::string>(sizes.begin() + 6, sizes.end()));
  EXPECT_EQ("8x4", sizes[0]);
}

}  // namespace
