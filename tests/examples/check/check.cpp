// Reads the examples' PNG files with libpng, independently of the library:
//   check-png decode FILE...   every file decodes and is a palette PNG
//   check-png differ A B       A and B have the same size and their colours
//                              (RGB, not indices) differ at some pixel
// Exit status 0 when the check holds, 1 when it does not, 2 on bad usage.
#include <png.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Rgb {
  png_uint_32 width = 0, height = 0;
  bool palette = false;
  std::vector<unsigned char> px;
};

bool Read(const char* path, Rgb* out) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path)) {
    std::fprintf(stderr, "%s: %s\n", path, image.message);
    return false;
  }
  out->palette = (image.format & PNG_FORMAT_FLAG_COLORMAP) != 0;
  image.format = PNG_FORMAT_RGB;
  out->width = image.width;
  out->height = image.height;
  out->px.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, out->px.data(), 0, nullptr)) {
    std::fprintf(stderr, "%s: %s\n", path, image.message);
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 3 && std::strcmp(argv[1], "decode") == 0) {
    for (int i = 2; i < argc; ++i) {
      Rgb p;
      if (!Read(argv[i], &p)) return 1;
      if (!p.palette) {
        std::fprintf(stderr, "%s: not a palette PNG\n", argv[i]);
        return 1;
      }
      std::printf("%s: %u x %u\n", argv[i], p.width, p.height);
    }
    return 0;
  }
  if (argc == 4 && std::strcmp(argv[1], "differ") == 0) {
    Rgb a, b;
    if (!Read(argv[2], &a) || !Read(argv[3], &b)) return 1;
    if (a.width != b.width || a.height != b.height) {
      std::fprintf(stderr, "%s and %s differ in size\n", argv[2], argv[3]);
      return 1;
    }
    if (a.px == b.px) {
      std::fprintf(stderr, "%s and %s show the same colours\n", argv[2], argv[3]);
      return 1;
    }
    return 0;
  }
  std::fprintf(stderr, "usage: check-png decode FILE... | differ A B\n");
  return 2;
}
