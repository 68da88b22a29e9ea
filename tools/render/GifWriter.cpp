#include "render/GifWriter.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace qvrender {
namespace {

constexpr unsigned char kExtension = 0x21;
constexpr unsigned char kGraphicControl = 0xF9;
constexpr unsigned char kApplication = 0xFF;
constexpr unsigned char kImage = 0x2C;
constexpr unsigned char kTrailer = 0x3B;
constexpr int kDisposeNone = 1;  // "do not dispose": the next frame draws over this one

void Put16(std::vector<unsigned char>* out, int v) {
  out->push_back(static_cast<unsigned char>(v & 0xFF));
  out->push_back(static_cast<unsigned char>((v >> 8) & 0xFF));
}

// Bits of the smallest power-of-two table holding n colours (1 to 8).
int TableBits(int n) {
  int bits = 1;
  while ((1 << bits) < n) ++bits;
  return bits;
}

// Data bytes per pixel of a frame, for the choice between the global and
// a local table before a frame is compressed.
constexpr double kBytesPerPixel = 0.15;

// Bits of the first n codes of a cycle of the compressor, roots of m bits.
double CycleBits(int m, double n) {
  double bits = 0, next = (1 << m) + 2;
  for (int w = m + 1; n > 0; ++w) {
    const double span = w < 12 ? std::min(n, (1 << w) - next) : n;
    bits += span * w;
    n -= span;
    next += span;
  }
  return bits;
}

// Bits of a stream of n codes, roots of m bits, cleared whenever full.
double StreamBits(int m, double n) {
  const double cycle = 4095 - ((1 << m) + 2);
  const double full = std::floor(n / cycle);
  return full * CycleBits(m, cycle) + CycleBits(m, n - full * cycle);
}

// Tells, sixteen pixels at a time, whether their colours surely stay: the
// same indices as shown, none of them an entry whose colour changed. The
// entries that changed are checked as ranges, up to four; with more (or
// without SSE2) no stretch is sure, and the pixels are compared one by one.
class SureSame {
 public:
  static constexpr int kRanges = 4;
  // usable false: no stretch is sure.
  SureSame(const std::uint32_t* colour, const std::uint32_t* shown, bool usable) {
#ifdef __SSE2__
    usable_ = usable;
    for (int i = 0; i < 256 && usable_;) {
      if (colour[i] == shown[i]) {
        ++i;
        continue;
      }
      int j = i;
      while (j + 1 < 256 && colour[j + 1] != shown[j + 1]) ++j;
      usable_ = ranges_ < kRanges;
      if (usable_) {
        low_[ranges_] = _mm_set1_epi8(static_cast<char>(i));
        span_[ranges_] = _mm_set1_epi8(static_cast<char>(j - i));
        ++ranges_;
      }
      i = j + 1;
    }
#else
    (void)colour, (void)shown, (void)usable;
#endif
  }
  // Whether the 16 pixels from now, shown as those from was, keep their
  // colours.
  bool Same(const unsigned char* now, const unsigned char* was) const {
#ifdef __SSE2__
    if (!usable_) return false;
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(now));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(was));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(a, b)) != 0xFFFF) return false;
    // a - low at most span (unsigned, wrapping): inside the range.
    __m128i inside = _mm_setzero_si128();
    for (int r = 0; r < ranges_; ++r) {
      const __m128i beyond = _mm_subs_epu8(_mm_sub_epi8(a, low_[r]), span_[r]);
      inside = _mm_or_si128(inside, _mm_cmpeq_epi8(beyond, _mm_setzero_si128()));
    }
    return _mm_movemask_epi8(inside) == 0;
#else
    (void)now, (void)was;
    return false;
#endif
  }

 private:
#ifdef __SSE2__
  bool usable_ = false;
  int ranges_ = 0;
  __m128i low_[kRanges], span_[kRanges];
#endif
};

// Fills the pixels of the opaque way: every pixel its colour.
void FillOpaque(GifWriter::Frame* frame) {
  GifWriter::Candidate& opaque = frame->opaque;
  opaque.pixels.resize(static_cast<std::size_t>(frame->width) *
                       static_cast<std::size_t>(frame->height));
  unsigned char* out = opaque.pixels.data();
  for (int y = frame->top; y < frame->top + frame->height; ++y) {
    const unsigned char* src = frame->picture->Row(y) + frame->left;
    for (int x = 0; x < frame->width; ++x) *out++ = opaque.byIndex[src[x]];
  }
}

// Fills the pixels of runs with the opaque way's values and, for the
// transparent ones, hole (a value the opaque way does not use): pixels
// whose colour stays keep it where their stretch (in the order the pixels
// are written) has one colour, which the changing pixels (changing[v] for
// opaque value v) show too, so that it may join them in runs and costs no
// entry of its own; every other stretch becomes transparent. kept[v] tells
// whether opaque value v remains.
void FillRuns(GifWriter::Frame* frame, unsigned char hole, const bool* changing, bool* kept) {
  const std::size_t count =
      static_cast<std::size_t>(frame->width) * static_cast<std::size_t>(frame->height);
  const unsigned char* const own = frame->opaque.pixels.data();
  const unsigned char* const mask = frame->mask.data();
  frame->runs.pixels.resize(count);
  unsigned char* data = frame->runs.pixels.data();
  for (std::size_t k = 0; k < count;) {
    if (mask[k]) {
      kept[own[k]] = true;
      data[k] = own[k];
      ++k;
      continue;
    }
    // The stretch: up to the next pixel that changes, eight at a time.
    std::size_t end = k + 1;
    while (end + 8 <= count) {
      std::uint64_t word;
      std::memcpy(&word, mask + end, 8);
      if (word) break;
      end += 8;
    }
    while (end < count && !mask[end]) ++end;
    unsigned other = 0;
    for (std::size_t j = k + 1; j < end; ++j) other |= own[j] ^ own[k];
    const bool keep = !other && changing[own[k]];
    if (keep) kept[own[k]] = true;
    std::memset(data + k, keep ? own[k] : hole, end - k);
    k = end;
  }
}

}  // namespace

GifWriter::~GifWriter() {
  if (file_) std::fclose(file_);
}

bool GifWriter::Write(const std::vector<unsigned char>& bytes, std::string* error) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
    *error = "cannot write '" + path_ + "': " + std::strerror(errno);
    return false;
  }
  return true;
}

bool GifWriter::Open(const std::string& path, int width, int height, int loops,
                     std::string* error) {
  file_ = std::fopen(path.c_str(), "wb");
  if (!file_) {
    *error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  path_ = path;
  width_ = width;
  height_ = height;
  loops_ = loops;
  first_ = true;
  shown_.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
  global_ = !wholeFrames_;
  globalHeld_ = 0;
  globalIndex_.clear();
  return true;
}

bool GifWriter::WriteHead(std::string* error) {
  std::vector<unsigned char> head = {'G', 'I', 'F', '8', '9', 'a'};
  Put16(&head, width_);
  Put16(&head, height_);
  // 8 bits of colour resolution, a global table of 256 colours or none,
  // background 0, square pixels.
  head.insert(head.end(), {static_cast<unsigned char>(global_ ? 0xF7 : 0x70), 0, 0});
  if (global_) head.resize(head.size() + 3 * 256, 0);  // filled in on Close
  // NETSCAPE2.0 application extension: sub-block 1 holds the loop count.
  head.insert(head.end(), {kExtension, kApplication, 11, 'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E',
                           '2', '.', '0', 3, 1});
  Put16(&head, loops_);
  head.push_back(0);
  return Write(head, error);
}

void GifWriter::AdmitColours(const std::vector<std::uint32_t>& colours) {
  if (!global_) return;
  int missing = 0;
  for (std::uint32_t c : colours) missing += globalIndex_.count(c) == 0;
  if (missing == 0 || missing > 256 - globalHeld_) return;
  for (std::uint32_t c : colours) {
    if (globalIndex_.emplace(c, globalHeld_).second) globalColour_[globalHeld_++] = c;
  }
}

void GifWriter::PlanTable(Candidate* c, std::size_t count) {
  const int slots = static_cast<int>(c->colours.size()) + c->transparent;
  c->bits = TableBits(slots);
  c->codeSize = std::max(2, c->bits);
  c->global = false;
  for (int s = 0; s < slots; ++s) c->value[s] = s;
  if (!global_) return;
  int index[257];
  bool taken[256] = {};
  int most = 0;
  for (std::size_t s = 0; s < c->colours.size(); ++s) {
    const auto at = globalIndex_.find(c->colours[s]);
    if (at == globalIndex_.end()) return;
    index[s] = at->second;
    taken[at->second] = true;
    most = std::max(most, at->second);
  }
  if (c->transparent) {
    const int t = static_cast<int>(std::find(taken, taken + 256, false) - taken);
    if (t == 256) return;
    index[c->colours.size()] = t;
    most = std::max(most, t);
  }
  // The global table saves the local one but may widen the codes: compare
  // the local table with the bits the wider codes would add to the data
  // expected.
  const int codeSize = std::max(2, TableBits(most + 1));
  const double codes = static_cast<double>(count) * kBytesPerPixel * 8 / 11;
  const double extra = (StreamBits(codeSize, codes) - StreamBits(c->codeSize, codes)) / 8;
  if (extra >= static_cast<double>(c->TableBytes())) return;
  std::copy(index, index + slots, c->value);
  c->global = true;
  c->codeSize = codeSize;
}

void GifWriter::Encode(GifLzw* lzw, Frame* frame, Candidate* c, std::size_t limit) {
  c->codes.clear();
  const std::size_t count =
      static_cast<std::size_t>(frame->width) * static_cast<std::size_t>(frame->height);
  bool ok;
  if (c == &frame->clear) {
    // clear: every pixel whose colour stays is transparent, and the table
    // holds only the colours of the others. Made a chunk at a time, as far
    // as the compressor gets.
    struct Clear {
      static const unsigned char* Get(void* context, std::size_t first, std::size_t n,
                                      unsigned char* out) {
        const Frame& f = *static_cast<const Frame*>(context);
        const auto t = static_cast<unsigned char>(f.clear.Transparent());
        const auto w = static_cast<std::size_t>(f.width);
        const unsigned char* const byIndex = f.clear.byIndex;
        const unsigned char* mask = f.mask.data() + first;
        // Row by row: from column x of row y, as many pixels as are left.
        std::size_t y = first / w, x = first % w;
        for (unsigned char* at = out; n > 0; ++y, x = 0) {
          const unsigned char* row = f.picture->Row(f.top + static_cast<std::int32_t>(y)) + f.left;
          const std::size_t end = std::min(w, x + n);
          // Without a branch: mask bytes are 0 or 1, in no predictable order.
          for (std::size_t i = x; i < end; ++i) {
            const unsigned keep = 0u - *mask++;
            *at++ = static_cast<unsigned char>(t ^ ((byIndex[row[i]] ^ t) & keep));
          }
          n -= end - x;
        }
        return out;
      }
    };
    ok = lzw->Encode(&Clear::Get, frame, count, c->codeSize, &c->codes, limit, limit != SIZE_MAX);
  } else {
    ok = lzw->Encode(c->pixels.data(), count, c->codeSize, &c->codes, limit, limit != SIZE_MAX);
  }
  if (!ok) c->codes.clear();
}

bool GifWriter::Prepare(const Picture& frame, int delay, Frame* out, std::string* error) {
  if (!file_ || frame.width != width_ || frame.height != height_) {
    *error = "internal error: frame does not fit the GIF";
    return false;
  }
  std::uint32_t colour[256];
  for (int i = 0; i < 256; ++i) {
    colour[i] = static_cast<std::uint32_t>(frame.palette[i][0]) << 16 |
                static_cast<std::uint32_t>(frame.palette[i][1]) << 8 | frame.palette[i][2];
  }
  const std::size_t w = static_cast<std::size_t>(width_);
  const std::uint32_t* const shownColour = shownColour_;
  const bool whole = first_ || wholeFrames_;
  const SureSame sure(colour, shownColour, !whole);
  // The rectangle where the colours differ from those shown.
  int left = 0, right = width_ - 1, top = 0, bottom = height_ - 1;
  if (!whole) {
    left = width_, right = -1, top = height_, bottom = -1;
    for (int y = 0; y < height_; ++y) {
      const unsigned char* now = frame.Row(y);
      const unsigned char* was = shown_.data() + y * w;
      int x0 = 0;
      while (x0 + 16 <= width_ && sure.Same(now + x0, was + x0)) x0 += 16;
      while (x0 < width_ && colour[now[x0]] == shownColour[was[x0]]) ++x0;
      if (x0 == width_) continue;
      int x1 = width_ - 1;
      while (x1 >= 15 && sure.Same(now + x1 - 15, was + x1 - 15)) x1 -= 16;
      while (colour[now[x1]] == shownColour[was[x1]]) --x1;
      left = std::min(left, x0);
      right = std::max(right, x1);
      if (top > y) top = y;
      bottom = y;
    }
    if (right < 0) left = right = top = bottom = 0;  // nothing changed: one transparent pixel
  }
  const int rw = right - left + 1, rh = bottom - top + 1;
  const std::size_t count = static_cast<std::size_t>(rw) * static_cast<std::size_t>(rh);

  out->first = first_;
  out->delay = delay;
  out->left = left;
  out->top = top;
  out->width = rw;
  out->height = rh;
  Candidate& opaque = out->opaque;
  Candidate& runs = out->runs;
  Candidate& clear = out->clear;
  opaque.used = true;
  runs.used = clear.used = false;
  opaque.coded = runs.coded = clear.coded = false;
  out->picture = &frame;
  out->mask.resize(count);
  if (wholeFrames_) {
    opaque.colours.assign(colour, colour + 256);
    for (int i = 0; i < 256; ++i) opaque.byIndex[i] = static_cast<unsigned char>(i);
    opaque.bits = opaque.codeSize = 8;
  } else {
    // Which pixels change colour, and the palette entries the rectangle
    // uses, in all its pixels and in those that change.
    // used[c] for entry c in a pixel that keeps its colour, used[256 + c]
    // in one that changes (the first frame: all of them).
    bool used[512] = {};
    const unsigned kept = whole ? 256 : 0;
    unsigned char* mask = out->mask.data();
    for (int y = top; y <= bottom; ++y) {
      const unsigned char* now = frame.Row(y) + left;
      const unsigned char* was = shown_.data() + y * w + left;
      for (int x = 0; x < rw;) {
        if (x + 16 <= rw && sure.Same(now + x, was + x)) {
          std::memset(mask + x, 0, 16);
          for (const int end = x + 16; x < end; ++x) used[now[x]] = true;
          continue;
        }
        for (const int end = std::min(rw, x + 16); x < end; ++x) {
          const unsigned c = now[x];
          const unsigned differs = (colour[c] != shownColour[was[x]]) | kept >> 8;
          used[c | differs << 8] = true;
          mask[x] = static_cast<unsigned char>(differs);
        }
      }
      mask += rw;
    }
    bool usedAll[256], usedChanged[256];
    for (int i = 0; i < 256; ++i) {
      usedChanged[i] = used[256 + i];
      usedAll[i] = used[i] || usedChanged[i];
    }
    // Each distinct colour gets one slot, and each palette entry the pixel
    // value of its slot.
    int slot[256];
    auto assign = [&](const bool* used, Candidate* c) {
      c->colours.clear();
      for (int i = 0; i < 256; ++i) {
        if (!used[i]) continue;
        const auto at = std::find(c->colours.begin(), c->colours.end(), colour[i]);
        slot[i] = static_cast<int>(at - c->colours.begin());
        if (at == c->colours.end()) c->colours.push_back(colour[i]);
      }
    };
    auto values = [&](const bool* used, Candidate* c) {
      for (int i = 0; i < 256; ++i) {
        c->byIndex[i] = static_cast<unsigned char>(used[i] ? c->value[slot[i]] : 0);
      }
    };
    assign(usedAll, &opaque);
    AdmitColours(opaque.colours);
    PlanTable(&opaque, count);
    values(usedAll, &opaque);
    // Two ways with a transparent index, when the colours leave room for
    // it (see Finish).
    FillOpaque(out);
    if (!whole && opaque.colours.size() < 256) {
      // runs: its table holds just the colours it keeps.
      bool taken[257] = {}, changing[256] = {}, kept[256] = {};
      for (std::size_t c = 0; c < opaque.colours.size(); ++c) taken[opaque.value[c]] = true;
      for (int i = 0; i < 256; ++i) changing[opaque.byIndex[i]] |= usedChanged[i];
      const auto hole = static_cast<unsigned char>(std::find(taken, taken + 257, false) - taken);
      FillRuns(out, hole, changing, kept);
      runs.colours.clear();
      for (std::size_t c = 0; c < opaque.colours.size(); ++c) {
        if (kept[opaque.value[c]]) runs.colours.push_back(opaque.colours[c]);
      }
      runs.transparent = runs.used = true;
      PlanTable(&runs, count);
      // Each opaque value (and the hole) becomes runs' value, often itself.
      unsigned char value[256];
      value[hole] = static_cast<unsigned char>(runs.Transparent());
      bool same = value[hole] == hole;
      for (std::size_t c = 0, r = 0; c < opaque.colours.size(); ++c) {
        const int v = opaque.value[c];
        if (!kept[v]) continue;
        value[v] = static_cast<unsigned char>(runs.value[r++]);
        same = same && value[v] == v;
      }
      if (!same) {
        for (unsigned char& p : runs.pixels) p = value[p];
      }
    }
    if (!whole) {
      assign(usedChanged, &clear);
      if (clear.colours.size() < 256) {
        clear.transparent = clear.used = true;
        PlanTable(&clear, count);
        values(usedChanged, &clear);
      }
    }
  }
  if (wholeFrames_) FillOpaque(out);
  // The way Finish tries first, compressed here without a limit.
  Candidate* const first = runs.used ? &runs : clear.used ? &clear : &opaque;
  Encode(&prepareLzw_, out, first, SIZE_MAX);
  first->coded = true;
  shown_.assign(frame.pixels.begin(), frame.pixels.end());
  std::copy(colour, colour + 256, shownColour_);
  first_ = false;
  return true;
}

bool GifWriter::Finish(Frame* frame, std::string* error) {
  if (frame->first && !WriteHead(error)) return false;
  Candidate& opaque = frame->opaque;
  Candidate& runs = frame->runs;
  Candidate& clear = frame->clear;
  // The transparent encodings first, then each other one only as far as it
  // can still be the smallest.
  const Candidate* best = nullptr;
  Candidate* const order[3] = {&runs, &clear, &opaque};
  for (int k = 0; k < 3; ++k) {
    Candidate* c = order[k];
    if (!c->used) continue;
    std::size_t limit = SIZE_MAX;
    if (best) {
      const std::size_t most = best->Bytes();
      if (most <= c->TableBytes() + 3) continue;
      limit = most - c->TableBytes() - 3;
    }
    if (!c->coded) Encode(&lzw_, frame, c, limit);
    if (c->codes.empty()) continue;
    if (!best || c->Bytes() < best->Bytes()) best = c;
  }

  std::vector<unsigned char>& b = bytes_;
  b.clear();
  const int transparent = best->Transparent();
  b.insert(b.end(), {kExtension, kGraphicControl, 4,
                     static_cast<unsigned char>(kDisposeNone << 2 | (transparent >= 0))});
  Put16(&b, std::clamp(frame->delay, 0, 65535));
  b.push_back(static_cast<unsigned char>(transparent >= 0 ? transparent : 0xFF));
  b.push_back(0);
  b.push_back(kImage);
  Put16(&b, frame->left);
  Put16(&b, frame->top);
  Put16(&b, frame->width);
  Put16(&b, frame->height);
  if (best->global) {
    b.push_back(0);
  } else {
    b.push_back(static_cast<unsigned char>(0x80 | (best->bits - 1)));
    for (std::size_t i = 0; i < (1u << best->bits); ++i) {
      const std::uint32_t c = i < best->colours.size() ? best->colours[i] : 0;
      b.insert(b.end(), {static_cast<unsigned char>(c >> 16), static_cast<unsigned char>(c >> 8),
                         static_cast<unsigned char>(c)});
    }
  }
  b.push_back(static_cast<unsigned char>(best->codeSize));
  const std::vector<unsigned char>& codes = best->codes;
  for (std::size_t at = 0; at < codes.size(); at += 255) {
    const std::size_t n = std::min<std::size_t>(255, codes.size() - at);
    b.push_back(static_cast<unsigned char>(n));
    b.insert(b.end(), codes.begin() + static_cast<std::ptrdiff_t>(at),
             codes.begin() + static_cast<std::ptrdiff_t>(at + n));
  }
  b.push_back(0);
  return Write(b, error);
}

bool GifWriter::AddFrame(const Picture& frame, int delay, std::string* error) {
  return Prepare(frame, delay, &frame_, error) && Finish(&frame_, error);
}

bool GifWriter::Close(std::string* error) {
  if (!file_) return true;
  bool ok = !first_ || WriteHead(error);
  std::vector<unsigned char> bytes = {kTrailer};
  ok = ok && Write(bytes, error);
  if (ok && global_) {
    // The global table, now complete, over its place in the head.
    bytes.clear();
    for (const std::uint32_t c : globalColour_) {
      bytes.insert(bytes.end(),
                   {static_cast<unsigned char>(c >> 16), static_cast<unsigned char>(c >> 8),
                    static_cast<unsigned char>(c)});
    }
    ok = std::fseek(file_, 13, SEEK_SET) == 0 &&
         std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size();
    if (!ok) *error = "cannot write '" + path_ + "': " + std::strerror(errno);
  }
  if (std::fclose(file_) != 0 && ok) {
    *error = "cannot write '" + path_ + "': " + std::strerror(errno);
    ok = false;
  }
  file_ = nullptr;
  return ok;
}

}  // namespace qvrender
