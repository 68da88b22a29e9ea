#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qvrender {

// The LZW compressor of GIF image data, reusable from frame to frame (its
// dictionary is kept between calls, so that no call allocates once it has
// grown).
class GifLzw {
 public:
  GifLzw();

  // Compresses count pixels (each below 1 << minCodeSize, minCodeSize 2 to
  // 8) and appends the code stream, packed least significant bit first and
  // not yet cut into sub-blocks, to out. The stream starts with a clear
  // code, clears again when the dictionary is full (4095 codes, as most
  // encoders do) and ends with the end-of-information code. Runs of one
  // value are matched without hashing, with the same result. count 0 writes
  // only the clear and end codes. Returns false, leaving out with a
  // partial stream, as soon as the stream grows past limit bytes, or, when
  // paced, once a sixteenth of the pixels is done, as soon as the stream is a
  // quarter longer than its share of the limit (the share of the pixels
  // done): a stream that far behind is most unlikely to end below it.
  bool Encode(const unsigned char* pixels, std::size_t count, int minCodeSize,
              std::vector<unsigned char>* out, std::size_t limit = SIZE_MAX, bool paced = false);

  // Gives the pixels first to first + n - 1 (n at most kChunk): a pointer to
  // them, which may be buffer (room for kChunk pixels) after filling it.
  // Valid until the next call.
  using Source = const unsigned char* (*)(void* context, std::size_t first, std::size_t n,
                                          unsigned char* buffer);
  static constexpr std::size_t kChunk = 16384;
  // The same with the pixels asked for a chunk at a time, as far as they
  // are needed (a stream given up on asks for no more).
  bool Encode(Source source, void* context, std::size_t count, int minCodeSize,
              std::vector<unsigned char>* out, std::size_t limit = SIZE_MAX, bool paced = false);

 private:
  // Empties the dictionary down to its roots 0 to roots - 1.
  void Reset(std::uint32_t roots);

  // The dictionary by open addressing: key (prefix << 8 | pixel) << 12 |
  // code, or kEmpty.
  static constexpr int kTableBits = 13;
  static constexpr std::uint32_t kTableSize = 1u << kTableBits;
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFu;
  std::vector<std::uint32_t> table_;
  // Codes whose string repeats one value c: runSymbol_ is c + 1 (0 for the
  // other codes), runLength_ the number of repeats, and chain_[c][n - 1]
  // the code of c repeated n times, for every n up to the longest.
  std::uint16_t runSymbol_[4096] = {};
  std::uint16_t runLength_[4096] = {};
  std::vector<std::uint16_t> chain_[256];
  std::vector<unsigned char> chunk_;
};

// Bytes a code stream of n bytes takes in a GIF file, with its code size
// byte, the length byte of every sub-block of up to 255 bytes and the
// terminating empty sub-block.
inline std::size_t GifDataSize(std::size_t n) { return 1 + n + (n + 254) / 255 + 1; }

}  // namespace qvrender
