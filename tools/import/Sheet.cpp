#include "import/Sheet.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "import/FormatError.h"

namespace qvimport {
namespace {

std::uint32_t Pack(const unsigned char* rgb) {
  return (static_cast<std::uint32_t>(rgb[0]) << 16) | (static_cast<std::uint32_t>(rgb[1]) << 8) |
         rgb[2];
}

}  // namespace

void ColorIndexer::Add(const unsigned char* rgb, std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i) ++counts_[Pack(rgb + 3 * i)];
}

bool ColorIndexer::Choose() {
  std::vector<std::pair<std::uint64_t, std::uint32_t>> byCount;
  byCount.reserve(counts_.size());
  for (const auto& c : counts_) byCount.emplace_back(c.second, c.first);
  // Most frequent first; equal counts by colour, so the result is stable.
  std::sort(byCount.begin(), byCount.end(), [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second < b.second;
  });
  palette_.clear();
  index_.clear();
  for (std::size_t i = 0; i < byCount.size() && i < 256; ++i) palette_.push_back(byCount[i].second);
  // Exact colours in colour order, so that the same colours give the same table.
  std::sort(palette_.begin(), palette_.end());
  for (std::size_t i = 0; i < palette_.size(); ++i)
    index_[palette_[i]] = static_cast<unsigned char>(i);
  return counts_.size() <= 256;
}

unsigned char ColorIndexer::Index(const unsigned char* rgb) {
  const std::uint32_t c = Pack(rgb);
  auto it = index_.find(c);
  if (it != index_.end()) return it->second;
  long best = -1;
  unsigned char bestIndex = 0;
  for (std::size_t i = 0; i < palette_.size(); ++i) {
    const long dr = static_cast<long>((palette_[i] >> 16) & 255) - rgb[0];
    const long dg = static_cast<long>((palette_[i] >> 8) & 255) - rgb[1];
    const long db = static_cast<long>(palette_[i] & 255) - rgb[2];
    const long d = dr * dr + dg * dg + db * db;
    if (best < 0 || d < best) {
      best = d;
      bestIndex = static_cast<unsigned char>(i);
    }
  }
  index_[c] = bestIndex;
  return bestIndex;
}

void ColorIndexer::FillPalette(qvscene::Picture* picture) const {
  std::memset(picture->palette, 0, sizeof picture->palette);
  for (std::size_t i = 0; i < palette_.size(); ++i) {
    picture->palette[i][0] = static_cast<unsigned char>(palette_[i] >> 16);
    picture->palette[i][1] = static_cast<unsigned char>(palette_[i] >> 8);
    picture->palette[i][2] = static_cast<unsigned char>(palette_[i]);
  }
  picture->paletteCount = static_cast<int>(palette_.size());
}

int SheetColumns(int frames, int width, int height) {
  if (frames < 1 || width < 1 || height < 1) return 0;
  const int maxColumns = std::min(frames, 32767 / width);
  if (maxColumns < 1) return 0;
  // About square: columns * width near rows * height.
  int columns =
      static_cast<int>(std::ceil(std::sqrt(static_cast<double>(frames) * height / width)));
  columns = std::max(1, std::min(columns, maxColumns));
  const int rows = (frames + columns - 1) / columns;
  if (static_cast<long long>(rows) * height > 32767) {
    columns = maxColumns;
    if (static_cast<long long>((frames + columns - 1) / columns) * height > 32767) return 0;
  }
  return columns;
}

qvscene::Picture GifSheet(const GifAnimation& anim, bool* reduced) {
  const int n = static_cast<int>(anim.frames.size());
  const int columns = SheetColumns(n, anim.width, anim.height);
  if (columns == 0) {
    throw FormatError("image block " + std::to_string(n),
                      anim.frames.empty() ? 0 : anim.frames.back().offset,
                      "the frames do not fit one picture of at most 32767 x 32767 pixels");
  }
  const int rows = (n + columns - 1) / columns;
  const std::size_t screen = static_cast<std::size_t>(anim.width) * anim.height;
  ColorIndexer indexer;
  for (const GifFrame& f : anim.frames) indexer.Add(f.rgb.data(), screen);
  *reduced = !indexer.Choose();
  qvscene::Picture sheet;
  sheet.width = columns * anim.width;
  sheet.height = rows * anim.height;
  sheet.pixels.assign(static_cast<std::size_t>(sheet.width) * sheet.height, 0);
  indexer.FillPalette(&sheet);
  for (int k = 0; k < n; ++k) {
    const int x0 = (k % columns) * anim.width;
    const int y0 = (k / columns) * anim.height;
    const unsigned char* rgb = anim.frames[static_cast<std::size_t>(k)].rgb.data();
    for (int y = 0; y < anim.height; ++y) {
      unsigned char* out = sheet.Row(y0 + y) + x0;
      for (int x = 0; x < anim.width; ++x) {
        out[x] = indexer.Index(rgb + (static_cast<std::size_t>(y) * anim.width + x) * 3);
      }
    }
  }
  return sheet;
}

}  // namespace qvimport
