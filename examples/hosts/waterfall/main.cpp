// Waterfall: a still picture animated by colour cycling and a fade.
//
// The picture holds a cliff, a sky and a waterfall. The water's rows use the
// colour indices 16..31 in turn; a colour cycle turns those sixteen colours
// one place per frame toward the higher indices, so the stripes move down.
// A fade darkens sky and water toward a night blue over the movie. The
// pixels never change: each moment differs only in its colour table.
#include <png.h>
#include <qvmovie/QvMovie.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr std::int16_t kWidth = 160;
constexpr std::int16_t kHeight = 120;
constexpr std::int32_t kLength = 90;  // movie time 0..89, 3 seconds

// Colour indices of the picture.
constexpr unsigned char kRock = 2;    // 2..5: rock shades
constexpr unsigned char kWater = 16;  // 16..31: water, cycled
constexpr unsigned char kSky = 40;    // 40..47: sky, top to bottom
constexpr unsigned char kGrass = 50;

// Writes an 8-bit picture with its colour table as a palette PNG.
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

// The scene, drawn procedurally.
std::vector<unsigned char> Scene() {
  std::vector<unsigned char> px(static_cast<std::size_t>(kWidth) * kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      unsigned char c = static_cast<unsigned char>(kSky + y * 8 / kHeight);
      const bool cliff = y > 30 + (x * 7) % 11 - 5 && (x < 60 || x > 100);
      if (cliff) c = static_cast<unsigned char>(kRock + ((x / 3 + y / 5) % 4));
      if (x >= 60 && x <= 100 && y > 25) {
        // The fall: rows of the sixteen water colours, slanted a little so
        // that the stripes curve over the edge.
        c = static_cast<unsigned char>(kWater + (y + (x - 80) * (x - 80) / 60) % 16);
      }
      if (y > 105) c = kGrass;
      px[static_cast<std::size_t>(y) * kWidth + x] = c;
    }
  }
  return px;
}

void SetColour(tbColorTable* t, int i, int r, int g, int b) {
  tbRGBColor c(static_cast<unsigned char>(r), static_cast<unsigned char>(g),
               static_cast<unsigned char>(b));
  t->SetCTTable(static_cast<std::int16_t>(i), &c);
}

tbColorTable BasePalette() {
  tbColorTable t;
  for (int i = 0; i < 256; ++i) SetColour(&t, i, 0, 0, 0);
  for (int i = 0; i < 4; ++i) SetColour(&t, kRock + i, 90 + 20 * i, 80 + 18 * i, 70 + 15 * i);
  for (int i = 0; i < 16; ++i) {
    // A bright crest every sixteen rows, deep blue between.
    const int light = i < 3 ? 255 - 40 * i : 60 + 6 * i;
    SetColour(&t, kWater + i, light / 2, light * 3 / 4, 255);
  }
  for (int i = 0; i < 8; ++i) SetColour(&t, kSky + i, 120 + 10 * i, 170 + 8 * i, 255);
  SetColour(&t, kGrass, 40, 140, 50);
  return t;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string out = argc > 1 ? argv[1] : ".";
  std::vector<unsigned char> scene = Scene();
  tbColorTable base = BasePalette();

  // One frame: the whole picture, anchored at its centre, shown for the
  // whole movie.
  QvAFrame still;
  still.Reg(QvAFrame::kAppend, 0, 0, kWidth, kHeight, kWidth / 2, kHeight / 2, kLength);
  if (!still.SetImage(0, scene.data(), kWidth, kWidth, kHeight)) return 1;

  QvMCast cast;
  const char* name = "waterfall";
  const std::int16_t id = cast.RegAFrame(QvMCast::kNewId, &still, 0, name, &still);
  if (id < 0 || cast.RegOrgCTable(id, &base, nullptr, name) != id) return 1;

  // The cycle: the water's sixteen indices, looping, at the
  // default 30 frames per second, so one place per unit of movie time.
  QvPal water;
  water.SetRange(kWater, kWater + 15, 1);
  QvACycle cycle;
  cycle.SetMode(QvMPlayer::kPlayLoop);
  cycle.RegArea(&water);
  // The fade: sky and water toward night blue over the whole movie, then
  // holding there (QvMPlayer::kPlayOnce, the default).
  QvPal dusk;
  dusk.SetRange(kWater, kWater + 15, 1);
  dusk.SetRange(kSky, kSky + 7, 1);
  QvAFade fade;
  fade.RegArea(&dusk);
  fade.RegColor(tbRGBColor(10, 10, 50));
  fade.SetCount(kLength);
  // On the member the kinds chain in the order cycle, flash, switch, fade:
  // the fade darkens the cycled colours.
  if (cast.RegAColor(id, &cycle, QvAColor::kCycle, 0, name, &cycle) != id) return 1;
  if (cast.RegAColor(id, &fade, QvAColor::kFade, 0, name, &fade) != id) return 1;

  QvMLayer layers;
  layers.New(0, 1);
  layers.RegCast(0, &cast, id, QvMLayer::kFitNone);

  std::vector<unsigned char> pixels(static_cast<std::size_t>(kWidth) * kHeight);
  tbRect bounds(0, 0, kWidth, kHeight);
  tbPixMap pixMap(pixels.data(), kWidth, bounds);
  tbColorTable colours;
  int written = 0;
  for (std::int32_t t = 0; t < kLength; t += 10) {
    layers.DrawPicture(t, &pixMap, &bounds);
    layers.GetCTable(t, &base, &colours);  // the colours of the same moment
    char file[32];
    std::snprintf(file, sizeof file, "/waterfall-%02d.png", static_cast<int>(t / 10));
    if (!WritePng(out + file, pixels.data(), kWidth, kHeight, colours)) {
      std::fprintf(stderr, "cannot write %s%s\n", out.c_str(), file);
      return 1;
    }
    ++written;
  }
  std::printf("%d pictures written to %s\n", written, out.c_str());
  return 0;
}
