// Reading and writing indexed PNG pictures; pictures of other kinds are
// refused with a reason.

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>

#include "ToolTestUtil.h"

namespace {

using namespace tooltest;

// Writes a palette PNG of the given bit depth (1, 2, 4 or 8), all pixels 1.
void WritePalettePng(const std::string& path, int depth) {
  png_image image;
  std::memset(&image, 0, sizeof image);
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

TEST(PngIO, IndexedPictureRoundTripsWithItsWholePalette) {
  TempDir dir;
  qvscene::Picture p = MakePicture(3, 2, {0, 1, 2, 253, 254, 255});
  SavePicture(dir / "p.png", p);
  qvscene::Picture q;
  std::string error;
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "p.png", &q, &error)) << error;
  EXPECT_EQ(3, q.width);
  EXPECT_EQ(2, q.height);
  EXPECT_EQ(256, q.paletteCount);
  EXPECT_TRUE(p.pixels == q.pixels);
  EXPECT_EQ(0, std::memcmp(p.palette, q.palette, sizeof p.palette));
}

TEST(PngIO, ShortPaletteLeavesTheOtherEntriesBlack) {
  TempDir dir;
  WritePalettePng(dir / "short.png", 8);
  qvscene::Picture q;
  std::string error;
  ASSERT_TRUE(qvscene::ReadIndexedPng(dir / "short.png", &q, &error)) << error;
  EXPECT_EQ(2, q.paletteCount);
  EXPECT_EQ(255, q.palette[1][0]);
  EXPECT_EQ(0, q.palette[2][0]);
  EXPECT_EQ(1, q.At(3, 1));
}

TEST(PngIO, RefusesPalettesOfFewerBits) {
  TempDir dir;
  WritePalettePng(dir / "four.png", 4);
  qvscene::Picture q;
  std::string error;
  EXPECT_FALSE(qvscene::ReadIndexedPng(dir / "four.png", &q, &error));
  EXPECT_NE(std::string::npos, error.find("not an 8-bit indexed PNG (it is indexed, 4 bits"))
      << error;
}

TEST(PngIO, RefusesRgbMissingAndNonPngFiles) {
  TempDir dir;
  qvscene::RgbPicture rgb;
  rgb.width = 1;
  rgb.height = 1;
  rgb.pixels = {1, 2, 3};
  std::string error;
  ASSERT_TRUE(qvscene::WriteRgbPng(dir / "rgb.png", rgb, &error)) << error;
  qvscene::Picture q;
  EXPECT_FALSE(qvscene::ReadIndexedPng(dir / "rgb.png", &q, &error));
  EXPECT_NE(std::string::npos, error.find("(it is RGB, 8 bits")) << error;
  EXPECT_FALSE(qvscene::ReadIndexedPng(dir / "none.png", &q, &error));
  EXPECT_NE(std::string::npos, error.find("cannot open")) << error;
  WriteText(dir / "text.png", "hello, not a picture");
  EXPECT_FALSE(qvscene::ReadIndexedPng(dir / "text.png", &q, &error));
  EXPECT_NE(std::string::npos, error.find("is not a PNG file")) << error;
  // A PNG cut short is reported, not read past its end.
  SavePicture(dir / "whole.png", MakePicture(64, 64, {}));
  std::ifstream in(dir / "whole.png", std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  WriteText(dir / "cut.png", bytes.substr(0, bytes.size() / 2));
  EXPECT_FALSE(qvscene::ReadIndexedPng(dir / "cut.png", &q, &error));
  EXPECT_NE(std::string::npos, error.find("not a valid PNG")) << error;
}

}  // namespace
