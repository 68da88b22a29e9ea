// Helpers shared by the tests of the command-line tools: temporary
// directories, running a tool, decoding its GIF output, and writing small
// scenes with their pictures.
#pragma once

#include <gif_lib.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
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
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back(0);
    const char* made = mkdtemp(buf.data());
    path_ = made ? made : "";
  }
  ~TempDir() {
    std::error_code ec;
    if (!path_.empty()) fs::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  const std::string& Path() const { return path_; }
  // Names of the files in the directory, sorted.
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(path_))
      names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::string path_;
};

struct RunResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

// Runs a command line through the shell, capturing both output streams.
inline RunResult RunCommand(const std::string& command, const TempDir& scratch) {
  const std::string out = scratch / ".stdout";
  const std::string err = scratch / ".stderr";
  const int status = std::system((command + " >" + out + " 2>" + err).c_str());
  RunResult r;
  r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  auto slurp = [](const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  };
  r.out = slurp(out);
  r.err = slurp(err);
  fs::remove(out);
  fs::remove(err);
  return r;
}

inline RunResult RunRender(const std::string& args, const TempDir& scratch) {
  return RunCommand(std::string(QV_RENDER_TOOL) + " " + args, scratch);
}

inline void WriteText(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

struct GifCloser {
  void operator()(GifFileType* g) const {
    int error = 0;
    DGifCloseFile(g, &error);
  }
};
using GifPtr = std::unique_ptr<GifFileType, GifCloser>;

// Reads a whole GIF; null when it cannot be read.
inline GifPtr ReadGif(const std::string& path) {
  int error = 0;
  GifFileType* g = DGifOpenFileName(path.c_str(), &error);
  if (!g) return nullptr;
  GifPtr gif(g);
  if (DGifSlurp(g) != GIF_OK) return nullptr;
  return gif;
}

// Frame k of a decoded GIF as an indexed picture with its local palette.
inline qvscene::Picture GifFrame(GifFileType* gif, int k) {
  const SavedImage& image = gif->SavedImages[k];
  qvscene::Picture p;
  p.width = image.ImageDesc.Width;
  p.height = image.ImageDesc.Height;
  p.pixels.assign(image.RasterBits,
                  image.RasterBits + static_cast<std::size_t>(p.width) * p.height);
  const ColorMapObject* map = image.ImageDesc.ColorMap;
  if (map) {
    p.paletteCount = map->ColorCount;
    for (int i = 0; i < map->ColorCount && i < 256; ++i) {
      p.palette[i][0] = map->Colors[i].Red;
      p.palette[i][1] = map->Colors[i].Green;
      p.palette[i][2] = map->Colors[i].Blue;
    }
  }
  return p;
}

// A picture whose palette entry i is (i, 255 - i, (i * 7) & 255) and whose
// pixels are given row by row.
inline qvscene::Picture MakePicture(int w, int h, const std::vector<int>& pixels) {
  qvscene::Picture p;
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

inline void SavePicture(const std::string& path, const qvscene::Picture& p) {
  std::string error;
  if (!qvscene::WriteIndexedPng(path, p, &error)) throw std::runtime_error(error);
}

}  // namespace tooltest
