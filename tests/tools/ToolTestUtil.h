// Helpers shared by the tests of the command-line tools: temporary
// directories, running a program, small indexed pictures, and the tiny scene
// of 8 x 4 pixels whose every pixel and colour the tests know.
#pragma once

#include <png.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "scene/Picture.h"
#include "scene/PngIO.h"

namespace tooltest {

namespace fs = std::filesystem;

// A fresh directory, removed with everything in it at the end of the test.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (fs::temp_directory_path() / "qvtools-XXXXXX").string();
    if (mkdtemp(pattern.data())) path_ = pattern;
  }
  ~TempDir() {
    std::error_code ec;
    if (!path_.empty()) fs::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& Path() const { return path_; }
  // True when a temporary output (.partial-XXXXXX) was left behind.
  bool HasPartial() const {
    for (const auto& e : fs::directory_iterator(path_)) {
      if (e.path().filename().string().find(".partial") != std::string::npos) return true;
    }
    return false;
  }

 private:
  std::string path_;
};

using qvscene::Picture;

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// Several numbers as one value, so that a group of them is compared at once.
template <class... T>
std::vector<long long> Ints(T... v) {
  return {static_cast<long long>(v)...};
}

inline std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Runs a command line through the shell: its exit status and what it wrote
// (both streams).
struct RunResult {
  int exitCode = -1;
  std::string text;
};
inline RunResult RunCommand(const std::string& command, const TempDir& scratch) {
  const std::string out = scratch / ".output";
  const int status = std::system((command + " >" + out + " 2>&1").c_str());
  RunResult r{WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(out)};
  fs::remove(out);
  return r;
}

// Moves the modification time of path seconds into the future (a new stamp
// each time, however fast the test runs); 0 leaves it.
inline void Restamp(const std::string& path, int seconds) {
  if (seconds)
    fs::last_write_time(path, fs::file_time_type::clock::now() + std::chrono::seconds(seconds));
}

inline void WriteText(const std::string& path, const std::string& text, int seconds = 0) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
  Restamp(path, seconds);
}

// A picture whose palette entry i is (i, 255 - i, 7i mod 256) and whose
// pixels are given row by row (the rest 0).
inline Picture MakePicture(int w, int h, const std::vector<int>& pixels) {
  Picture p;
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

inline void SavePicture(const std::string& path, const Picture& p, int seconds = 0) {
  std::string error;
  if (!qvscene::WriteIndexedPng(path, p, &error)) throw std::runtime_error(error);
  Restamp(path, seconds);
}

// An 8-bit indexed PNG; throws when it cannot be read.
inline Picture ReadPng(const std::string& path) {
  Picture p;
  std::string error;
  if (!qvscene::ReadIndexedPng(path, &p, &error)) throw std::runtime_error(error);
  return p;
}

// Any PNG decoded to 8-bit RGB by libpng itself (palettes expanded); 0 x 0
// when it cannot be read.
struct RgbImage {
  int width = 0, height = 0;
  std::vector<unsigned char> pixels;  // r, g, b
  const unsigned char* At(int x, int y) const {
    return &pixels[(static_cast<std::size_t>(y) * width + x) * 3];
  }
};
inline RgbImage ReadRgb(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  RgbImage out;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return out;
  image.format = PNG_FORMAT_RGB;
  out.pixels.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, out.pixels.data(), 0, nullptr)) return {};
  out.width = static_cast<int>(image.width);
  out.height = static_cast<int>(image.height);
  return out;
}

// The colours of an indexed picture, red, green, blue for each pixel.
inline std::vector<unsigned char> ToRgb(const Picture& p) {
  std::vector<unsigned char> rgb;
  for (unsigned char i : p.pixels) rgb.insert(rgb.end(), p.palette[i], p.palette[i] + 3);
  return rgb;
}

// A GIF as python (a Python with Pillow) decodes it: every frame composed,
// in red, green, blue, with its duration in ms; the loop count (-1: none).
struct PillowGif {
  std::vector<std::vector<unsigned char>> frames;
  std::vector<int> durations;
  int loop = -1, width = 0;
};
inline PillowGif DecodeWithPillow(const std::string& python, const std::string& gif,
                                  const TempDir& dir) {
  WriteText(dir / "frames.py",
            "import sys\n"
            "from PIL import Image, ImageSequence\n"
            "im = Image.open(sys.argv[1])\n"
            "out = open(sys.argv[2], 'wb')\n"
            "d = []\n"
            "for f in ImageSequence.Iterator(im):\n"
            "    out.write(f.convert('RGB').tobytes())\n"
            "    d.append(str(f.info.get('duration', 0)))\n"
            "print(im.size[0], im.size[1], im.info.get('loop', -1), ' '.join(d))\n");
  const RunResult r =
      RunCommand(python + " " + dir / "frames.py " + gif + " " + dir / "frames.raw", dir);
  PillowGif d;
  if (r.exitCode != 0) throw std::runtime_error(r.text);
  std::istringstream info(r.text);
  int height = 0;
  info >> d.width >> height >> d.loop;
  for (int ms; info >> ms;) d.durations.push_back(ms);
  const std::string raw = Slurp(dir / "frames.raw");
  const std::size_t size = static_cast<std::size_t>(d.width) * height * 3;
  for (std::size_t at = 0; size && at + size <= raw.size(); at += size)
    d.frames.emplace_back(raw.begin() + static_cast<std::ptrdiff_t>(at),
                          raw.begin() + static_cast<std::ptrdiff_t>(at + size));
  return d;
}

// pal.png: 8 x 4 as below; spr.png: 2 x 2 with the pixels 3 5 / 6 0.
inline const Picture& TinyPicture() {
  static const Picture p = MakePicture(8, 4, {1, 2, 3, 4, 5, 6, 7, 1,  //
                                              4, 5, 6, 7, 4, 5, 6, 7,  //
                                              8, 8, 9, 9, 4, 4, 5, 5,  //
                                              7, 6, 5, 4, 3, 2, 1, 0});
  return p;
}

inline void WriteTinyPictures(const TempDir& dir) {
  SavePicture(dir / "pal.png", TinyPicture());
  SavePicture(dir / "spr.png", MakePicture(2, 2, {3, 5, 6, 0}));
}

// The tiny scene, moments 0 to 5: one member showing pal.png whole, its
// indices 4 to 7 cycling. One key a line, so that tests can find the line
// of each.
inline const char* TinySceneText() {
  return R"({
  "output": {
    "width": 8,
    "height": 4,
    "to": 5,
    "palette": "pal"},
  "pictures": {
    "pal": "pal.png",
    "spr": "spr.png"},
  "members": [
    {"name": "m",
      "picture": "pal",
      "frames": [{
        "rect": [0, 0, 8, 4],
        "zoom": 1.0}],
      "colors": [{
        "kind": "cycle",
        "area": [[4, 7]]}]}],
  "layers": [{
    "members": ["m"]}]
}
)";
}

// Line (from 1) of the first occurrence of marker in text, 0 when absent.
inline int LineOfText(const std::string& text, const std::string& marker) {
  const std::size_t at = text.find(marker);
  if (at == std::string::npos) return 0;
  return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<long>(at), '\n'));
}

// text with the first occurrence of from replaced by to (which must occur).
inline std::string Replace(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  if (at == std::string::npos) throw std::logic_error("not in the text: " + from);
  return text.replace(at, from.size(), to);
}

// text (the tiny scene or one made from it) with members, JSON objects
// separated by commas, created before m.
inline std::string AddMembers(const std::string& text, const std::string& members) {
  return Replace(text, "    {\"name\": \"m\",", "    " + members + ",\n    {\"name\": \"m\",");
}

}  // namespace tooltest
