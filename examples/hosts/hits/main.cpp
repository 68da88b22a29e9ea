// Hits: which member is under a point, and icons of the members.
//
// A disc and a square on layer 0 and a triangle on layer 1 overlap. The
// program finds, for every pixel, the topmost member whose shape covers it,
// flashes the member under a chosen point, and writes the members' icons.
#include <png.h>
#include <qvmovie/QvMovie.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr std::int16_t kWidth = 160;
constexpr std::int16_t kHeight = 120;
constexpr std::int16_t kSize = 48;  // each shape's picture

constexpr unsigned char kClear = 0;  // transparent in the shapes' pictures
constexpr unsigned char kPaper = 1;  // the background of the scene
constexpr unsigned char kDisc = 20, kSquare = 21, kTriangle = 22;

bool WritePng(const std::string& path, const unsigned char* pixels, int width, int height,
              const tbColorTable& table) {
  png_color colours[256];
  for (int i = 0; i < 256; ++i) {
    const tbRGBColor* c = table.CTTable(static_cast<std::int16_t>(i));
    colours[i] = {c->red, c->green, c->blue};
  }
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_RGB_COLORMAP;
  image.colormap_entries = 256;
  return png_image_write_to_file(&image, path.c_str(), 0, pixels, width, colours) != 0;
}

void SetColour(tbColorTable* t, int i, int r, int g, int b) {
  tbRGBColor c(static_cast<unsigned char>(r), static_cast<unsigned char>(g),
               static_cast<unsigned char>(b));
  t->SetCTTable(static_cast<std::int16_t>(i), &c);
}

// A shape of one colour on the transparent index, kSize x kSize.
std::vector<unsigned char> Shape(unsigned char colour) {
  std::vector<unsigned char> px(static_cast<std::size_t>(kSize) * kSize, kClear);
  const int c = kSize / 2;
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) {
      bool in = false;
      if (colour == kDisc) in = (x - c) * (x - c) + (y - c) * (y - c) < (c - 2) * (c - 2);
      if (colour == kSquare) in = x >= 6 && x < kSize - 6 && y >= 6 && y < kSize - 6;
      if (colour == kTriangle) in = y >= 4 && 2 * (x - c) <= y - 4 && 2 * (c - x) <= y - 4;
      if (in) px[static_cast<std::size_t>(y) * kSize + x] = colour;
    }
  }
  return px;
}

// One member placed at point (x, y) of the area, made from its own frame
// animation; the animation lives as long as the program.
struct Shaped {
  QvAFrame anim;
  std::int16_t id = -1;
};

}  // namespace

int main(int argc, char** argv) {
  const std::string out = argc > 1 ? argv[1] : ".";
  tbColorTable base;
  SetColour(&base, kClear, 0, 0, 0);
  SetColour(&base, kPaper, 235, 230, 215);
  SetColour(&base, kDisc, 210, 60, 50);
  SetColour(&base, kSquare, 60, 160, 70);
  SetColour(&base, kTriangle, 60, 90, 200);
  QvPal opaque;  // kClear is each shape's background, never drawn
  opaque.SetRange(0, 255, 1);
  opaque.SetFlag(kClear, 0);

  QvMCast cast;
  const unsigned char colours[3] = {kDisc, kSquare, kTriangle};
  const tbPoint places[3] = {tbPoint(55, 55), tbPoint(90, 65), tbPoint(105, 50)};
  Shaped shapes[3];
  for (int i = 0; i < 3; ++i) {
    std::vector<unsigned char> px = Shape(colours[i]);
    QvAFrame& a = shapes[i].anim;
    a.Reg(QvAFrame::kAppend, 0, 0, kSize, kSize, kSize / 2, kSize / 2, 10);
    a.SetImage(0, px.data(), kSize, kSize, kSize);
    const std::int16_t id = cast.RegAFrame(QvMCast::kNewId, &a, 0, "shape", &a);
    cast.RegOrgCTable(id, &base, &opaque, "shape");
    // A path of one anchor: the member stands there.
    QvMCastAnc at;
    at.point = places[i];
    cast.RegAnc(id, &at, 1, QvMCast::kAncClamp, "shape");
    shapes[i].id = id;
  }

  QvMLayer layers;
  layers.New(0, 0);
  layers.New(1, 1);
  layers.RegCast(0, &cast, shapes[0].id, QvMLayer::kFitNone);
  layers.RegCast(0, &cast, shapes[1].id, QvMLayer::kFitNone);
  layers.RegCast(1, &cast, shapes[2].id, QvMLayer::kFitNone);
  // The members in drawing order; the topmost is the last.
  const std::int16_t order[3] = {shapes[0].id, shapes[1].id, shapes[2].id};

  tbRect area(0, 0, kWidth, kHeight);
  const std::int32_t moment = 0;
  // The topmost member whose shape covers point p at the moment, or -1.
  auto hit = [&](tbPoint p) -> std::int16_t {
    for (int i = 2; i >= 0; --i) {
      const std::int16_t id = order[i];
      if (!cast.PtInAFrame(&p, id, moment, &area, QvMCast::kPixelsSquare)) continue;
      // Inside the rectangle of the image shown at this moment (GetAFrameArea
      // puts the member's copy of the animation on the moment's frame); on
      // the shape where the image's mask is set and its pixel is not the
      // transparent index.
      tbRect r;
      tbPoint anchor;
      cast.GetAFrameArea(id, moment, &area, QvMCast::kPixelsSquare, &r, &anchor);
      unsigned char* image = nullptr;
      unsigned char* mask = nullptr;
      std::int16_t w = 0;
      cast.AFrame(id)->GetMImage(&image, &mask, &w, nullptr, nullptr, nullptr);
      const std::size_t at = static_cast<std::size_t>(p.y - r.top) * w + (p.x - r.left);
      if (image && mask[at] != 0 && image[at] != kClear) return id;
    }
    return -1;
  };

  // The hit map.
  std::vector<unsigned char> map(static_cast<std::size_t>(kWidth) * kHeight, kClear);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const std::int16_t id = hit(tbPoint(x, y));
      for (int i = 0; i < 3; ++i)
        if (id == order[i]) map[static_cast<std::size_t>(y) * kWidth + x] = colours[i];
    }
  }
  if (!WritePng(out + "/hits.png", map.data(), kWidth, kHeight, base)) return 1;

  // The member under (100, 60) flashes red, green, blue, one colour per
  // unit of movie time, over and over.
  const tbPoint click(100, 60);
  const std::int16_t chosen = hit(click);
  if (chosen < 0) return 1;
  int chosenIndex = 0;
  while (order[chosenIndex] != chosen) ++chosenIndex;
  QvPal own;
  own.SetRange(colours[chosenIndex], colours[chosenIndex], 1);
  QvAFlash flash;
  flash.SetMode(QvMPlayer::kPlayLoop);
  flash.RegArea(&own);
  cast.RegAColor(chosen, &flash, QvAColor::kFlash, 0, "chosen", &flash);
  std::printf("member %d is under (100, 60)\n", static_cast<int>(chosen));

  std::vector<unsigned char> pixels(static_cast<std::size_t>(kWidth) * kHeight);
  tbPixMap pixMap(pixels.data(), kWidth, area);
  tbColorTable table;
  for (std::int32_t t = 0; t < 3; ++t) {
    std::fill(pixels.begin(), pixels.end(), kPaper);  // drawing clears nothing
    layers.DrawPicture(t, &pixMap, &area);
    layers.GetCTable(t, &base, &table);
    const std::string file = out + "/scene-" + std::to_string(t) + ".png";
    if (!WritePng(file, pixels.data(), kWidth, kHeight, table)) return 1;
  }

  // Icons, 32 x 32, side by side. They belong to the members: no disposing.
  std::vector<unsigned char> strip(static_cast<std::size_t>(3 * 32) * 32, kClear);
  for (int i = 0; i < 3; ++i) {
    tbPicture* icon = cast.Icon(order[i], 32, 32);
    if (!icon || !icon->Pic()) return 1;
    for (int y = 0; y < 32; ++y)
      for (int x = 0; x < 32; ++x)
        strip[static_cast<std::size_t>(y) * 96 + i * 32 + x] =
            icon->Pixel(static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
  }
  return WritePng(out + "/icons.png", strip.data(), 96, 32, base) ? 0 : 1;
}
