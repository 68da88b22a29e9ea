// Walk: a sprite walking along an anchor path, on layers with fitting.
//
// Layer 0 holds a landscape, layer 1 two walkers. The small walker crosses
// from left to right during moments 0..59; the big one, a zoomed copy of
// the same animation, is asked for moments 30..89 on the same layer, and
// fitting moves it to 60..119, after the small one. It walks back from
// right to left.
#include <png.h>
#include <qvmovie/QvMovie.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr std::int16_t kWidth = 200;
constexpr std::int16_t kHeight = 100;
constexpr std::int16_t kGroundY = 85;  // where the feet go
constexpr std::int16_t kFrameW = 16;
constexpr std::int16_t kFrameH = 24;

// Colour indices.
constexpr unsigned char kClear = 0;  // transparent in the walker's pictures
constexpr unsigned char kSky = 40;
constexpr unsigned char kHill = 45;
constexpr unsigned char kGround = 50;
constexpr unsigned char kShirt = 60;
constexpr unsigned char kSkin = 61;
constexpr unsigned char kLegs = 62;

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

// Sky, a line of hills and the ground.
std::vector<unsigned char> Landscape() {
  std::vector<unsigned char> px(static_cast<std::size_t>(kWidth) * kHeight);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const int hill = 60 - ((x * 37) % 23 + (x / 40) * 3);
      unsigned char c = y > kGroundY ? kGround : y > hill ? kHill : kSky;
      px[static_cast<std::size_t>(y) * kWidth + x] = c;
    }
  }
  return px;
}

// Four walking poses side by side, 16 x 24 each, on the transparent index:
// head, shirt, and two legs that swing apart and together.
std::vector<unsigned char> WalkSheet() {
  const int w = 4 * kFrameW;
  std::vector<unsigned char> px(static_cast<std::size_t>(w) * kFrameH, kClear);
  auto put = [&](int x, int y, unsigned char c) { px[static_cast<std::size_t>(y) * w + x] = c; };
  const int swing[4] = {0, 2, 4, 2};  // how far the feet are from the middle
  for (int k = 0; k < 4; ++k) {
    const int left = k * kFrameW;
    for (int y = 1; y < 6; ++y)
      for (int x = 6; x < 10; ++x) put(left + x, y, kSkin);
    for (int y = 6; y < 15; ++y)
      for (int x = 4; x < 12; ++x) put(left + x, y, kShirt);
    for (int y = 15; y < kFrameH; ++y) {
      const int spread = swing[k] * (y - 15) / (kFrameH - 16);
      put(left + 7 - spread, y, kLegs);
      put(left + 8 + spread, y, kLegs);
    }
  }
  return px;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string out = argc > 1 ? argv[1] : ".";
  tbColorTable base;
  SetColour(&base, kClear, 0, 0, 0);
  SetColour(&base, kSky, 150, 200, 250);
  SetColour(&base, kHill, 90, 150, 90);
  SetColour(&base, kGround, 120, 90, 50);
  SetColour(&base, kShirt, 200, 40, 40);
  SetColour(&base, kSkin, 240, 200, 160);
  SetColour(&base, kLegs, 40, 40, 120);
  QvPal opaque;  // every index but kClear: kClear is the walkers' background
  opaque.SetRange(0, 255, 1);
  opaque.SetFlag(kClear, 0);

  QvMCast cast;

  // The landscape: one frame for the whole movie, centred in the area.
  std::vector<unsigned char> land = Landscape();
  QvAFrame still;
  still.Reg(QvAFrame::kAppend, 0, 0, kWidth, kHeight, kWidth / 2, kHeight / 2, 1);
  still.SetImage(0, land.data(), kWidth, kWidth, kHeight);
  const std::int16_t landId = cast.RegAFrame(QvMCast::kNewId, &still, 0, "landscape", &still);
  cast.RegOrgCTable(landId, &base, nullptr, "landscape");
  cast.SetStartEnd(landId, 0, 119);

  // The walk cycle: four frames of 3 clock frames each, anchored between
  // the feet, looping. The mode is set before the animation is
  // attached, so the members' copies carry it.
  std::vector<unsigned char> sheet = WalkSheet();
  QvAFrame walk;
  walk.SetMode(QvMPlayer::kPlayLoop);
  for (std::int16_t k = 0; k < 4; ++k) {
    const std::int16_t left = static_cast<std::int16_t>(k * kFrameW);
    walk.Reg(QvAFrame::kAppend, left, 0, kFrameW, kFrameH,
             static_cast<std::int16_t>(left + kFrameW / 2), kFrameH - 1, 3);
    walk.SetImage(k, sheet.data(), 4 * kFrameW, 4 * kFrameW, kFrameH);
  }

  // The giant: a copy of the walk, zoomed about the anchor. Setters store
  // the zoom; SetImage with a null source makes each image again. The
  // update lock batches the refreshes of members into one.
  QvAFrame giant;
  walk.Dup(&giant);
  giant.LockUpdateMCast();
  for (std::int16_t k = 0; k < giant.CountAFrame(); ++k) {
    giant.SetZoom(k, 2.0, 2.0);
    giant.SetImage(k, nullptr, 0, 0, 0);
  }
  giant.UnlockUpdateMCast();

  // A path of 19 anchors along the ground, left to right, relative to the
  // top-left corner of the drawing area.
  QvMCastAnc path[19];
  for (int i = 0; i < 19; ++i) path[i].point = tbPoint(10 + 10 * i, kGroundY);
  QvMCastAnc back[19];
  for (int i = 0; i < 19; ++i) back[i] = path[18 - i];

  const std::int16_t smallId = cast.RegAFrame(QvMCast::kNewId, &walk, 0, "walker", &walk);
  cast.RegOrgCTable(smallId, &base, &opaque, "walker");
  cast.SetStartEnd(smallId, 0, 59);
  // The whole path in 60 units, stopping at its ends.
  cast.RegAnc(smallId, path, 19, QvMCast::kAncClamp, "walker");
  cast.SetAncCount(smallId, 60.0);

  const std::int16_t bigId = cast.RegAFrame(QvMCast::kNewId, &giant, 30, "giant", &giant);
  cast.RegOrgCTable(bigId, &base, &opaque, "giant");
  cast.SetStartEnd(bigId, 30, 89);  // asked for 30..89: overlaps the walker
  cast.RegAnc(bigId, back, 19, QvMCast::kAncClamp, "giant");
  cast.SetAncCount(bigId, 60.0);

  QvMLayer layers;
  layers.New(0, 0);  // index 0, the landscape
  layers.New(1, 1);  // index 1, the walkers, drawn over it
  layers.RegCast(0, &cast, landId, QvMLayer::kFitNone);
  layers.RegCast(1, &cast, smallId, QvMLayer::kFitNone);
  layers.RegCast(1, &cast, bigId, QvMLayer::kFitMove);  // into free time
  std::printf("walker %d..%d, giant moved to %d..%d, movie ends at %d\n",
              static_cast<int>(cast.Start(smallId)), static_cast<int>(cast.End(smallId)),
              static_cast<int>(cast.Start(bigId)), static_cast<int>(cast.End(bigId)),
              static_cast<int>(layers.End()));

  std::vector<unsigned char> pixels(static_cast<std::size_t>(kWidth) * kHeight);
  tbRect bounds(0, 0, kWidth, kHeight);
  tbPixMap pixMap(pixels.data(), kWidth, bounds);
  tbColorTable colours;
  for (std::int32_t t = 0; t <= layers.End(); t += 10) {
    layers.DrawPicture(t, &pixMap, &bounds);
    layers.GetCTable(t, &base, &colours);
    char file[32];
    std::snprintf(file, sizeof file, "/walk-%02d.png", static_cast<int>(t / 10));
    if (!WritePng(out + file, pixels.data(), kWidth, kHeight, colours)) {
      std::fprintf(stderr, "cannot write %s%s\n", out.c_str(), file);
      return 1;
    }
  }
  return 0;
}
