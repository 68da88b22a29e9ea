// The GIF compressor against the textbook algorithm (a map for the
// dictionary, one bit at a time): the same code stream, and the same point
// of giving up under a limit, with and without pacing.

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

#include "render/GifLzw.h"

namespace {

struct Plain {
  std::vector<unsigned char> out;
  bool ok = true;
};

// Clears at the start and when code 4095 would be given out; gives up
// when the whole bytes written pass limit, or, paced, run a quarter over
// the limit's share of the pixels done once a sixteenth is done.
Plain PlainLzw(const std::vector<unsigned char>& px, int m, std::size_t limit, bool paced) {
  Plain r;
  std::size_t bitCount = 0;
  const int clear = 1 << m, end = clear + 1;
  int width = m + 1, next = end + 1;
  std::map<std::pair<int, int>, int> dict;
  auto put = [&](int code) {
    for (int b = 0; b < width; ++b, ++bitCount) {
      if (bitCount % 8 == 0) r.out.push_back(0);
      r.out.back() |= static_cast<unsigned char>((code >> b & 1) << bitCount % 8);
    }
    if (next >= 1 << width && width < 12) ++width;
  };
  put(clear);
  int prefix = px[0];
  for (std::size_t i = 1; i < px.size(); ++i) {
    const auto at = dict.find({prefix, px[i]});
    if (at != dict.end()) {
      prefix = at->second;
      continue;
    }
    put(prefix);
    const std::size_t bytes = bitCount / 8;
    if (bytes > limit ||
        (paced && i + 1 > px.size() / 16 && 4 * bytes * px.size() > 5 * limit * (i + 1))) {
      r.out.resize(bytes);
      r.ok = false;
      return r;
    }
    if (next > 4094) {
      put(clear);
      width = m + 1, next = end + 1;
      dict.clear();
    } else {
      dict[{prefix, px[i]}] = next++;
    }
    prefix = px[i];
  }
  put(prefix);
  put(end);
  r.ok = r.out.size() <= limit;
  return r;
}

TEST(GifLzw, StreamsAndGivingUpMatchTheTextbookCompressor) {
  std::mt19937 rng(7);
  qvrender::GifLzw lzw;
  for (int m = 2; m <= 8; m += 3) {
    // Noise, then runs of up to 3000 (past the chunks the pixels come in),
    // then short runs.
    std::vector<unsigned char> px;
    for (int k = 0; k < 9000; ++k) px.push_back(static_cast<unsigned char>(rng() % (1u << m)));
    while (px.size() < 60000) {
      const auto v = static_cast<unsigned char>(rng() % (1u << m));
      px.insert(px.end(), rng() % (px.size() < 40000 ? 3000 : 6) + 1, v);
    }
    const std::size_t whole = PlainLzw(px, m, SIZE_MAX, false).out.size();
    for (std::size_t limit : {SIZE_MAX, whole, whole - 1, whole / 2, whole * 5 / 6, whole / 20}) {
      for (bool paced : {false, true}) {
        SCOPED_TRACE(testing::Message() << "m " << m << " limit " << limit << " paced " << paced);
        const Plain want = PlainLzw(px, m, limit, paced);
        std::vector<unsigned char> got = {42};  // the stream is appended
        EXPECT_EQ(want.ok, lzw.Encode(px.data(), px.size(), m, &got, limit, paced));
        EXPECT_EQ(42, got[0]);
        EXPECT_TRUE(std::equal(want.out.begin(), want.out.end(), got.begin() + 1, got.end()));
      }
    }
  }
}

}  // namespace
