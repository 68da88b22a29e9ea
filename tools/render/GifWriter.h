#pragma once

#include <string>

#include "scene/Picture.h"

struct GifFileType;

namespace qvrender {

using qvscene::Picture;
using qvscene::RgbPicture;

// Writes an animated GIF the way that survives every viewer: GIF89a, no
// global colour table, every frame full size with its own 256-entry local
// colour table, disposal "do not dispose", a NETSCAPE2.0 loop extension, and
// delays in centiseconds given by the caller.
class GifWriter {
 public:
  GifWriter() = default;
  ~GifWriter();
  GifWriter(const GifWriter&) = delete;
  GifWriter& operator=(const GifWriter&) = delete;

  // loops: 0 repeats for ever.
  bool Open(const std::string& path, int width, int height, int loops, std::string* error);
  // frame must have the size given to Open; delay in 1/100 s (0 to 65535).
  bool AddFrame(const Picture& frame, int delay, std::string* error);
  bool Close(std::string* error);

 private:
  GifFileType* gif_ = nullptr;
  std::string path_;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace qvrender
