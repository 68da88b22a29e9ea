#include "render/GifWriter.h"

#include <gif_lib.h>

#include <vector>

namespace qvrender {
namespace {

std::string GifError(int code) {
  const char* text = GifErrorString(code);
  return text ? text : "unknown GIF error";
}

}  // namespace

GifWriter::~GifWriter() {
  if (gif_) {
    int error = 0;
    EGifCloseFile(gif_, &error);
  }
}

bool GifWriter::Open(const std::string& path, int width, int height, int loops,
                     std::string* error) {
  int code = 0;
  gif_ = EGifOpenFileName(path.c_str(), false, &code);
  if (!gif_) {
    *error = "cannot write '" + path + "': " + GifError(code);
    return false;
  }
  path_ = path;
  width_ = width;
  height_ = height;
  EGifSetGifVersion(gif_, true);
  if (EGifPutScreenDesc(gif_, width, height, 8, 0, nullptr) == GIF_ERROR) {
    *error = "cannot write '" + path + "': " + GifError(gif_->Error);
    return false;
  }
  // NETSCAPE2.0 application extension: sub-block 1 holds the loop count.
  unsigned char app[] = {'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0'};
  unsigned char loop[] = {1, static_cast<unsigned char>(loops & 0xFF),
                          static_cast<unsigned char>((loops >> 8) & 0xFF)};
  if (EGifPutExtensionLeader(gif_, APPLICATION_EXT_FUNC_CODE) == GIF_ERROR ||
      EGifPutExtensionBlock(gif_, sizeof app, app) == GIF_ERROR ||
      EGifPutExtensionBlock(gif_, sizeof loop, loop) == GIF_ERROR ||
      EGifPutExtensionTrailer(gif_) == GIF_ERROR) {
    *error = "cannot write '" + path + "': " + GifError(gif_->Error);
    return false;
  }
  return true;
}

bool GifWriter::AddFrame(const Picture& frame, int delay, std::string* error) {
  if (!gif_ || frame.width != width_ || frame.height != height_) {
    *error = "internal error: frame does not fit the GIF";
    return false;
  }
  GraphicsControlBlock gcb;
  gcb.DisposalMode = DISPOSE_DO_NOT;
  gcb.UserInputFlag = false;
  gcb.DelayTime = delay < 0 ? 0 : (delay > 65535 ? 65535 : delay);
  gcb.TransparentColor = NO_TRANSPARENT_COLOR;
  GifByteType ext[4];
  EGifGCBToExtension(&gcb, ext);
  if (EGifPutExtension(gif_, GRAPHICS_EXT_FUNC_CODE, 4, ext) == GIF_ERROR) {
    *error = "cannot write '" + path_ + "': " + GifError(gif_->Error);
    return false;
  }
  GifColorType colors[256];
  for (int i = 0; i < 256; ++i) {
    colors[i].Red = frame.palette[i][0];
    colors[i].Green = frame.palette[i][1];
    colors[i].Blue = frame.palette[i][2];
  }
  ColorMapObject* map = GifMakeMapObject(256, colors);
  if (!map) {
    *error = "out of memory writing '" + path_ + "'";
    return false;
  }
  const bool ok = EGifPutImageDesc(gif_, 0, 0, width_, height_, false, map) != GIF_ERROR;
  GifFreeMapObject(map);
  if (!ok) {
    *error = "cannot write '" + path_ + "': " + GifError(gif_->Error);
    return false;
  }
  std::vector<GifPixelType> row(static_cast<std::size_t>(width_));
  for (int y = 0; y < height_; ++y) {
    const unsigned char* src = frame.Row(y);
    row.assign(src, src + width_);
    if (EGifPutLine(gif_, row.data(), width_) == GIF_ERROR) {
      *error = "cannot write '" + path_ + "': " + GifError(gif_->Error);
      return false;
    }
  }
  return true;
}

bool GifWriter::Close(std::string* error) {
  if (!gif_) return true;
  int code = 0;
  const int result = EGifCloseFile(gif_, &code);
  gif_ = nullptr;
  if (result == GIF_ERROR) {
    *error = "cannot write '" + path_ + "': " + GifError(code);
    return false;
  }
  return true;
}

}  // namespace qvrender
