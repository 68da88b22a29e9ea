#include "render/GifLzw.h"

#include <algorithm>
#include <cstring>

namespace qvrender {
namespace {

constexpr int kMaxBits = 12;
// The last code given out before the dictionary is cleared.
constexpr std::uint32_t kLastCode = 4094;

// Codes packed into bytes, least significant bit first, appended to out
// four bytes at a time (out is grown ahead and cut to size by Flush).
class BitWriter {
 public:
  explicit BitWriter(std::vector<unsigned char>* out) : out_(out), base_(out->size()) {
    Grow(base_);
  }
  void Put(std::uint32_t code, int bits) {
    acc_ |= static_cast<std::uint64_t>(code) << count_;
    count_ += bits;
    if (count_ >= 32) {
      if (end_ - at_ < 4) Grow(static_cast<std::size_t>(at_ - out_->data()));
      const auto word = static_cast<std::uint32_t>(acc_);
      at_[0] = static_cast<unsigned char>(word);
      at_[1] = static_cast<unsigned char>(word >> 8);
      at_[2] = static_cast<unsigned char>(word >> 16);
      at_[3] = static_cast<unsigned char>(word >> 24);
      at_ += 4;
      acc_ >>= 32;
      count_ -= 32;
    }
  }
  // Whole bytes written so far.
  std::size_t Bytes() const {
    return static_cast<std::size_t>(at_ - out_->data()) - base_ +
           static_cast<std::size_t>(count_ >> 3);
  }
  // Cuts out to the bytes written, with the last one partly filled when
  // partial; the writer is not used after.
  void Flush(bool partial = true) {
    out_->resize(static_cast<std::size_t>(at_ - out_->data()));
    for (; count_ >= (partial ? 1 : 8); count_ -= 8, acc_ >>= 8) {
      out_->push_back(static_cast<unsigned char>(acc_));
    }
  }

 private:
  // Makes room after the first size bytes of out.
  void Grow(std::size_t size) {
    out_->resize(std::max<std::size_t>(2 * size, size + 65536));
    at_ = out_->data() + size;
    end_ = out_->data() + out_->size();
  }

  std::vector<unsigned char>* out_;
  std::size_t base_;
  unsigned char* at_ = nullptr;
  unsigned char* end_ = nullptr;
  std::uint64_t acc_ = 0;
  int count_ = 0;
};

}  // namespace

GifLzw::GifLzw() : table_(kTableSize, kEmpty), chunk_(kChunk) {}

void GifLzw::Reset(std::uint32_t roots) {
  std::fill(table_.begin(), table_.end(), kEmpty);
  for (std::uint32_t c = 0; c < roots; ++c) {
    runSymbol_[c] = static_cast<std::uint16_t>(c + 1);
    runLength_[c] = 1;
    chain_[c].assign(1, static_cast<std::uint16_t>(c));
  }
}

bool GifLzw::Encode(const unsigned char* pixels, std::size_t count, int minCodeSize,
                    std::vector<unsigned char>* out, std::size_t limit, bool paced) {
  struct Whole {
    static const unsigned char* Get(void* at, std::size_t first, std::size_t, unsigned char*) {
      return static_cast<const unsigned char*>(at) + first;
    }
  };
  return Encode(&Whole::Get, const_cast<unsigned char*>(pixels), count, minCodeSize, out, limit,
                paced);
}

bool GifLzw::Encode(Source source, void* context, std::size_t count, int minCodeSize,
                    std::vector<unsigned char>* out, std::size_t limit, bool paced) {
  const std::size_t base = out->size();
  const std::uint32_t clear = 1u << minCodeSize;
  const std::uint32_t end = clear + 1;
  BitWriter bits(out);
  int width = minCodeSize + 1;
  std::uint32_t next = end + 1;
  std::uint32_t widen = 1u << width;
  // Writes a code, then widens the codes once the next one to be given out
  // no longer fits (the decoder widens at the same point, one code later in
  // its own dictionary).
  auto emit = [&](std::uint32_t code) {
    bits.Put(code, width);
    if (next >= widen && width < kMaxBits) widen = 1u << ++width;
  };
  Reset(clear);
  emit(clear);
  if (count == 0) {
    emit(end);
    bits.Flush();
    return out->size() - base <= limit;
  }
  // The pixels come in chunks: at[k] is pixel first + k, up to stop.
  std::size_t first = 0, stop = std::min(count, kChunk);
  const unsigned char* at = source(context, 0, stop, chunk_.data());
  std::uint32_t prefix = at[0];
  std::uint32_t* const table = table_.data();
  constexpr std::uint32_t mask = kTableSize - 1;
  std::size_t i = 1;
  while (i < count) {
    if (i == stop) {
      first = stop;
      stop = std::min(count, stop + kChunk);
      at = source(context, first, stop - first, chunk_.data());
    }
    const std::uint32_t pixel = at[i - first];
    // A run of one pixel value after a string of nothing but that value:
    // the longest such string the dictionary holds is found without hashing.
    if (runSymbol_[prefix] == pixel + 1) {
      const std::vector<std::uint16_t>& chain = chain_[pixel];
      const std::size_t have = runLength_[prefix];
      if (have < chain.size()) {
        const std::size_t most = std::min(chain.size() - have, stop - i);
        const unsigned char* const from = at + (i - first);
        std::size_t take = 1;
        // Eight pixels at a time while they all repeat the value.
        const std::uint64_t repeat = 0x0101010101010101u * pixel;
        for (; take + 8 <= most; take += 8) {
          std::uint64_t word;
          std::memcpy(&word, from + take, 8);
          if (word != repeat) break;
        }
        while (take < most && from[take] == pixel) ++take;
        prefix = chain[have + take - 1];
        i += take;
        continue;
      }
    }
    const std::uint32_t key = prefix << 8 | pixel;
    std::uint32_t slot = (key * 2654435761u) >> (32 - kTableBits);
    bool found = false;
    for (;;) {
      const std::uint32_t entry = table[slot];
      if (entry == kEmpty) break;
      if (entry >> 12 == key) {
        prefix = entry & 0xFFF;
        found = true;
        break;
      }
      slot = (slot + 1) & mask;
    }
    ++i;
    if (found) continue;
    emit(prefix);
    const std::size_t bytes = bits.Bytes();
    // Paced: a quarter over the limit's pace once a sixteenth is done.
    if (bytes > limit || (paced && i > count / 16 && 4 * bytes * count > 5 * limit * i)) {
      bits.Flush(false);
      return false;
    }
    if (next > kLastCode) {
      emit(clear);
      width = minCodeSize + 1;
      next = end + 1;
      widen = 1u << width;
      Reset(clear);
    } else {
      table[slot] = key << 12 | next;
      if (runSymbol_[prefix] == pixel + 1) {
        runSymbol_[next] = static_cast<std::uint16_t>(pixel + 1);
        runLength_[next] = static_cast<std::uint16_t>(runLength_[prefix] + 1);
        chain_[pixel].push_back(static_cast<std::uint16_t>(next));
      } else {
        runSymbol_[next] = 0;
      }
      ++next;
    }
    prefix = pixel;
  }
  emit(prefix);
  emit(end);
  bits.Flush();
  return out->size() - base <= limit;
}

}  // namespace qvrender
