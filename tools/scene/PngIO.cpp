#include "scene/PngIO.h"

#include <png.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "scene/SafeFile.h"

namespace qvscene {
namespace {

struct FileCloser {
  void operator()(std::FILE* f) const {
    if (f) std::fclose(f);
  }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// libpng reports errors through a longjmp; the message is kept here.
struct ErrorSink {
  char message[256] = {};
};

void OnError(png_structp png, png_const_charp msg) {
  auto* sink = static_cast<ErrorSink*>(png_get_error_ptr(png));
  if (sink) std::snprintf(sink->message, sizeof sink->message, "%s", msg);
  png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

const char* ColorTypeName(int type) {
  switch (type) {
    case PNG_COLOR_TYPE_GRAY:
      return "greyscale";
    case PNG_COLOR_TYPE_GRAY_ALPHA:
      return "greyscale with alpha";
    case PNG_COLOR_TYPE_RGB:
      return "RGB";
    case PNG_COLOR_TYPE_RGB_ALPHA:
      return "RGBA";
    case PNG_COLOR_TYPE_PALETTE:
      return "indexed";
    default:
      return "unknown";
  }
}

// Reading state kept outside the setjmp frame so that nothing with a
// destructor lives across the longjmp.
struct ReadState {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~ReadState() { png_destroy_read_struct(&png, info ? &info : nullptr, nullptr); }
};

struct WriteState {
  png_structp png = nullptr;
  png_infop info = nullptr;
  ~WriteState() { png_destroy_write_struct(&png, info ? &info : nullptr); }
};

}  // namespace

bool ReadIndexedPng(const std::string& path, Picture* picture, std::string* error,
                    std::uint64_t maxPixels) {
  std::string reason;
  const int fd = OpenInput(path, kMaxPictureBytes, &reason);
  if (fd < 0) {
    const bool open = reason.compare(0, 13, "cannot open: ") == 0;
    *error = open ? "cannot open '" + path + "': " + reason.substr(13)
                  : "cannot read '" + path + "': " + reason;
    return false;
  }
  FilePtr file(fdopen(fd, "rb"));
  if (!file) {
    close(fd);
    *error = "cannot open '" + path + "': " + std::strerror(errno);
    return false;
  }
  unsigned char signature[8] = {};
  if (std::fread(signature, 1, 8, file.get()) != 8 || png_sig_cmp(signature, 0, 8) != 0) {
    *error = "'" + path + "' is not a PNG file";
    return false;
  }
  ErrorSink sink;
  ReadState st;
  st.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &sink, OnError, OnWarning);
  if (!st.png) {
    *error = "out of memory reading '" + path + "'";
    return false;
  }
  st.info = png_create_info_struct(st.png);
  if (!st.info) {
    *error = "out of memory reading '" + path + "'";
    return false;
  }
  Picture result;
  std::vector<png_bytep> rows;
  int colorType = 0;
  int bitDepth = 0;
  if (setjmp(png_jmpbuf(st.png))) {
    *error = "'" + path + "' is not a valid PNG file: " + sink.message;
    return false;
  }
  png_init_io(st.png, file.get());
  png_set_sig_bytes(st.png, 8);
  png_read_info(st.png, st.info);
  colorType = png_get_color_type(st.png, st.info);
  bitDepth = png_get_bit_depth(st.png, st.info);
  if (colorType != PNG_COLOR_TYPE_PALETTE || bitDepth != 8) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "not an 8-bit indexed PNG (it is %s, %d bits per sample)",
                  ColorTypeName(colorType), bitDepth);
    *error = "'" + path + "' is " + buf;
    return false;
  }
  const png_uint_32 w = png_get_image_width(st.png, st.info);
  const png_uint_32 h = png_get_image_height(st.png, st.info);
  if (w < 1 || h < 1 || w > 32767 || h > 32767) {
    *error = "'" + path + "' is too large (at most 32767 x 32767 pixels)";
    return false;
  }
  if (static_cast<std::uint64_t>(w) * h > maxPixels) {
    *error = "'" + path + "' is " + std::to_string(w) + " x " + std::to_string(h) +
             " pixels, more than the memory limit leaves room for (" + Megabytes(maxPixels) + ")";
    return false;
  }
  png_colorp palette = nullptr;
  int count = 0;
  if (png_get_PLTE(st.png, st.info, &palette, &count) != PNG_INFO_PLTE) count = 0;
  if (count > 256) count = 256;
  for (int i = 0; i < count; ++i) {
    result.palette[i][0] = palette[i].red;
    result.palette[i][1] = palette[i].green;
    result.palette[i][2] = palette[i].blue;
  }
  result.paletteCount = count;
  png_set_interlace_handling(st.png);
  png_read_update_info(st.png, st.info);
  result.width = static_cast<std::int32_t>(w);
  result.height = static_cast<std::int32_t>(h);
  result.pixels.assign(static_cast<std::size_t>(w) * h, 0);
  rows.resize(h);
  for (png_uint_32 y = 0; y < h; ++y) rows[y] = result.Row(static_cast<std::int32_t>(y));
  png_read_image(st.png, rows.data());
  png_read_end(st.png, nullptr);
  *picture = std::move(result);
  return true;
}

bool WriteIndexedPng(const std::string& path, const Picture& picture, std::string* error) {
  FilePtr file(std::fopen(path.c_str(), "wb"));
  if (!file) {
    *error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  ErrorSink sink;
  WriteState st;
  st.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &sink, OnError, OnWarning);
  if (!st.png || !(st.info = png_create_info_struct(st.png))) {
    *error = "out of memory writing '" + path + "'";
    return false;
  }
  std::vector<png_bytep> rows(static_cast<std::size_t>(picture.height));
  png_color palette[256];
  if (setjmp(png_jmpbuf(st.png))) {
    *error = "cannot write '" + path + "': " + sink.message;
    return false;
  }
  png_init_io(st.png, file.get());
  png_set_IHDR(st.png, st.info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_PALETTE,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  for (int i = 0; i < 256; ++i) {
    palette[i].red = picture.palette[i][0];
    palette[i].green = picture.palette[i][1];
    palette[i].blue = picture.palette[i][2];
  }
  png_set_PLTE(st.png, st.info, palette, 256);
  png_write_info(st.png, st.info);
  for (std::int32_t y = 0; y < picture.height; ++y) {
    rows[static_cast<std::size_t>(y)] = const_cast<png_bytep>(picture.Row(y));
  }
  png_write_image(st.png, rows.data());
  png_write_end(st.png, nullptr);
  if (std::fflush(file.get()) != 0 || std::ferror(file.get())) {
    *error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  return true;
}

bool WriteRgbPng(const std::string& path, const RgbPicture& picture, std::string* error) {
  FilePtr file(std::fopen(path.c_str(), "wb"));
  if (!file) {
    *error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  ErrorSink sink;
  WriteState st;
  st.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &sink, OnError, OnWarning);
  if (!st.png || !(st.info = png_create_info_struct(st.png))) {
    *error = "out of memory writing '" + path + "'";
    return false;
  }
  std::vector<png_bytep> rows(static_cast<std::size_t>(picture.height));
  if (setjmp(png_jmpbuf(st.png))) {
    *error = "cannot write '" + path + "': " + sink.message;
    return false;
  }
  png_init_io(st.png, file.get());
  png_set_IHDR(st.png, st.info, static_cast<png_uint_32>(picture.width),
               static_cast<png_uint_32>(picture.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(st.png, st.info);
  const std::size_t stride = static_cast<std::size_t>(picture.width) * 3;
  for (std::int32_t y = 0; y < picture.height; ++y) {
    rows[static_cast<std::size_t>(y)] =
        const_cast<png_bytep>(picture.pixels.data() + stride * static_cast<std::size_t>(y));
  }
  png_write_image(st.png, rows.data());
  png_write_end(st.png, nullptr);
  if (std::fflush(file.get()) != 0 || std::ferror(file.get())) {
    *error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace qvscene
