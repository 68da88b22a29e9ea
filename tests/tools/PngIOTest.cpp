// Reading and writing indexed PNG pictures; pictures of other kinds are
// refused with a reason.

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>

#include "ToolTestUtil.h"

namespace {

using namespace tooltest;

// Writes a 4 x 2 palette PNG of the given bit depth with a palette of two
// entries (black, red), all pixels 1.
void WritePalettePng(const std::string& path, int depth) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(nullptr, f);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, f);
  png_set_IHDR(png, info, 4, 2, depth, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_color palette[2] = {{0, 0, 0}, {255, 0, 0}};
  png_set_PLTE(png, info, palette, 2);
  png_write_info(png, info);
  png_set_packing(png);
  unsigned char row[4] = {1, 1, 1, 1};
  png_write_row(png, row);
  png_write_row(png, row);
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(f);
}

TEST(PngIO, IndexedPicturesRoundTripAndShortPalettesLeaveTheRestBlack) {
  TempDir dir;
  const qvscene::Picture p = MakePicture(3, 2, {0, 1, 2, 253, 254, 255});
  SavePicture(dir / "p.png", p);
  qvscene::Picture q;
  std::string error;
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "p.png", &q, &error)) << error;
  EXPECT_EQ(3, q.width);
  EXPECT_EQ(2, q.height);
  EXPECT_EQ(256, q.paletteCount);
  EXPECT_TRUE(p.pixels == q.pixels);
  EXPECT_EQ(0, std::memcmp(p.palette, q.palette, sizeof p.palette));

  WritePalettePng(dir / "short.png", 8);
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "short.png", &q, &error)) << error;
  EXPECT_EQ(2, q.paletteCount);
  EXPECT_EQ(255, q.palette[1][0]);
  EXPECT_EQ(0, q.palette[2][0]);
  EXPECT_EQ(1, q.At(3, 1));
}

TEST(PngIO, OtherFilesAreRefusedWithTheirReason) {
  TempDir dir;
  WritePalettePng(dir / "four.png", 4);
  qvscene::RgbPicture rgb;
  rgb.width = rgb.height = 1;
  rgb.pixels = {1, 2, 3};
  std::string error;
  ASSERT_TRUE(qvscene::WriteRgbPng(dir / "rgb.png", rgb, &error)) << error;
  WriteText(dir / "text.png", "hello, not a picture");
  // A PNG cut short is reported, not read past its end.
  SavePicture(dir / "whole.png", MakePicture(64, 64, {}));
  const std::string bytes = Slurp(dir / "whole.png");
  WriteText(dir / "cut.png", bytes.substr(0, bytes.size() / 2));
  const std::pair<const char*, const char*> cases[] = {
      {"four.png", "not an 8-bit indexed PNG (it is indexed, 4 bits"},
      {"rgb.png", "(it is RGB, 8 bits"},
      {"none.png", "cannot open"},
      {"text.png", "is not a PNG file"},
      {"cut.png", "not a valid PNG"},
  };
  for (const auto& c : cases) {
    qvscene::Picture q;
    error.clear();
    EXPECT_FALSE(qvscene::ReadIndexedPng(dir / c.first, &q, &error)) << c.first;
    EXPECT_NE(std::string::npos, error.find(c.second)) << c.first << ": " << error;
  }
}

}  // namespace
