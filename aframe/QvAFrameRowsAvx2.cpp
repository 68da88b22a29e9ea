// The row kernels for processors with AVX2, compiled for that instruction set
// whatever the build's baseline; Rows() takes them only where the processor
// has it.
#include "aframe/QvAFrameRows.h"

#include <cstdint>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define QV_AVX2_ROWS 1
#endif

namespace qvaframe {

#ifdef QV_AVX2_ROWS
namespace {

#define QV_AVX2 __attribute__((target("avx2")))

// A row's last pixels, fewer than a block, are done as the block that ends
// with the row: the pixels it repeats get what they already have (the
// kernels write d[i] = s[i] or leave d[i]; d never overlaps s or m). Rows
// shorter than a block are done by a block of 16 at each end, and below 16
// pixel by pixel.

QV_AVX2 inline void MaskedBlock32(const unsigned char* s, const unsigned char* m,
                                  unsigned char* d) {
  const __m256i mv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m));
  const __m256i clear = _mm256_cmpeq_epi8(mv, _mm256_setzero_si256());
  const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
  if (bits == 0xFFFFFFFFu) return;
  const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
  __m256i* dp = reinterpret_cast<__m256i*>(d);
  _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
}

QV_AVX2 inline void MaskedBlock16(const unsigned char* s, const unsigned char* m,
                                  unsigned char* d) {
  const __m128i mv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m));
  const __m128i clear = _mm_cmpeq_epi8(mv, _mm_setzero_si128());
  if (_mm_movemask_epi8(clear) == 0xFFFF) return;
  const __m128i sv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
  __m128i* dp = reinterpret_cast<__m128i*>(d);
  _mm_storeu_si128(dp, _mm_blendv_epi8(sv, _mm_loadu_si128(dp), clear));
}

// 64 mask bytes tested at a time while they are all set, then 32.
QV_AVX2 void MaskedAvx2(const unsigned char* s, const unsigned char* m, unsigned char* d, long w) {
  long i = 0;
  const __m256i zero = _mm256_setzero_si256();
  for (; i + 64 <= w; i += 64) {
    const __m256i m0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i m1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i + 32));
    const __m256i low = _mm256_min_epu8(m0, m1);
    if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, zero)) != 0) break;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i + 32),
                        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i + 32)));
  }
  for (; i + 32 <= w; i += 32) MaskedBlock32(s + i, m + i, d + i);
  if (i == w) return;
  if (w >= 32) {
    MaskedBlock32(s + w - 32, m + w - 32, d + w - 32);
  } else if (w >= 16) {
    MaskedBlock16(s, m, d);
    MaskedBlock16(s + w - 16, m + w - 16, d + w - 16);
  } else {
    for (; i < w; ++i)
      if (m[i] != 0) d[i] = s[i];
  }
}

// The area's bit set is looked up 32 pixels at a time: the byte v >> 3 by
// two in-lane shuffles (indices below and above 128), the bit by a third.
struct AreaTables {
  __m256i low, high, bit;
};

QV_AVX2 inline AreaTables MakeAreaTables(const unsigned char* area) {
  const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(area));
  const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(area + 16));
  return {_mm256_broadcastsi128_si256(lo), _mm256_broadcastsi128_si256(hi),
          _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8,
                           16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128)};
}

// 0xFF for each byte of sv whose bit in the area is clear.
QV_AVX2 inline __m256i Outside(const AreaTables& t, __m256i sv) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i byteIndex = _mm256_and_si256(_mm256_srli_epi16(sv, 3), _mm256_set1_epi8(0x0F));
  const __m256i upper = _mm256_cmpgt_epi8(zero, sv);  // v >= 128
  const __m256i bytes = _mm256_blendv_epi8(_mm256_shuffle_epi8(t.low, byteIndex),
                                           _mm256_shuffle_epi8(t.high, byteIndex), upper);
  const __m256i bit = _mm256_shuffle_epi8(t.bit, _mm256_and_si256(sv, _mm256_set1_epi8(0x07)));
  return _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bit), zero);
}

// Each block tells whether some pixel passed.
QV_AVX2 inline bool FilteredBlock32(const unsigned char* s, const unsigned char* m,
                                    unsigned char* d, const AreaTables& t) {
  const __m256i mv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m));
  const __m256i maskClear = _mm256_cmpeq_epi8(mv, _mm256_setzero_si256());
  if (static_cast<unsigned>(_mm256_movemask_epi8(maskClear)) == 0xFFFFFFFFu) return false;
  const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
  const __m256i clear = _mm256_or_si256(Outside(t, sv), maskClear);
  const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
  if (bits == 0xFFFFFFFFu) return false;
  __m256i* dp = reinterpret_cast<__m256i*>(d);
  _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
  return true;
}

QV_AVX2 inline bool FilteredBlock16(const unsigned char* s, const unsigned char* m,
                                    unsigned char* d, const AreaTables& t) {
  const __m128i mv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m));
  const __m128i maskClear = _mm_cmpeq_epi8(mv, _mm_setzero_si128());
  if (_mm_movemask_epi8(maskClear) == 0xFFFF) return false;
  const __m128i sv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
  const __m128i outside = _mm256_castsi256_si128(Outside(t, _mm256_castsi128_si256(sv)));
  const __m128i clear = _mm_or_si128(outside, maskClear);
  if (_mm_movemask_epi8(clear) == 0xFFFF) return false;
  __m128i* dp = reinterpret_cast<__m128i*>(d);
  _mm_storeu_si128(dp, _mm_blendv_epi8(sv, _mm_loadu_si128(dp), clear));
  return true;
}

QV_AVX2 bool FilteredAvx2(const unsigned char* s, const unsigned char* m, unsigned char* d, long w,
                          const unsigned char* area) {
  const AreaTables t = MakeAreaTables(area);
  bool any = false;
  long i = 0;
  for (; i + 32 <= w; i += 32) any |= FilteredBlock32(s + i, m + i, d + i, t);
  if (i == w) return any;
  if (w >= 32) return FilteredBlock32(s + w - 32, m + w - 32, d + w - 32, t) || any;
  if (w >= 16) {
    any = FilteredBlock16(s, m, d, t);
    return FilteredBlock16(s + w - 16, m + w - 16, d + w - 16, t) || any;
  }
  for (; i < w; ++i) {
    const unsigned char v = s[i];
    if (m[i] != 0 && ((area[v >> 3] >> (v & 7)) & 1)) {
      d[i] = v;
      any = true;
    }
  }
  return any;
}

QV_AVX2 void KeyedAvx2(const unsigned char* s, unsigned char* d, long w, unsigned char key) {
  long i = 0;
  const __m256i k = _mm256_set1_epi8(static_cast<char>(key));
  for (; i + 32 <= w; i += 32) {
    const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    const __m256i clear = _mm256_cmpeq_epi8(sv, k);
    const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
    if (bits == 0xFFFFFFFFu) continue;
    __m256i* dp = reinterpret_cast<__m256i*>(d + i);
    _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
  }
  for (; i < w; ++i)
    if (s[i] != key) d[i] = s[i];
}

// 0xFF in byte k for each bit k of a 4-bit set.
constexpr std::uint32_t kByteMasks[16] = {0x00000000u, 0x000000FFu, 0x0000FF00u, 0x0000FFFFu,
                                          0x00FF0000u, 0x00FF00FFu, 0x00FFFF00u, 0x00FFFFFFu,
                                          0xFF000000u, 0xFF0000FFu, 0xFF00FF00u, 0xFF00FFFFu,
                                          0xFFFF0000u, 0xFFFF00FFu, 0xFFFFFF00u, 0xFFFFFFFFu};

// Four pixels at a time: the fixed-point values in 64-bit lanes, whose low
// halves are the fractions and high halves the whole parts; the samples are
// read one by one (index 0 for pixels outside, then cleared).
QV_AVX2 int TransformAvx2(const TransformRow& r, unsigned char* image, unsigned char* mask, int n,
                          int* unclear) {
  int count = 0;
  int i = 0;
  __m256i fs, ft;
  {
    alignas(32) std::int64_t v[4];
    for (int k = 0; k < 4; ++k) v[k] = r.s + k * r.stepS;
    fs = _mm256_load_si256(reinterpret_cast<const __m256i*>(v));
    for (int k = 0; k < 4; ++k) v[k] = r.t + k * r.stepT;
    ft = _mm256_load_si256(reinterpret_cast<const __m256i*>(v));
  }
  const __m256i step4S = _mm256_set1_epi64x(4 * r.stepS);
  const __m256i step4T = _mm256_set1_epi64x(4 * r.stepT);
  const __m256i bias = _mm256_set1_epi32(static_cast<int>(0x80000000u));
  const __m256i loS = _mm256_set1_epi32(static_cast<int>(r.loS));
  const __m256i loT = _mm256_set1_epi32(static_cast<int>(r.loT));
  const __m256i spanS = _mm256_xor_si256(_mm256_set1_epi32(static_cast<int>(r.spanS)), bias);
  const __m256i spanT = _mm256_xor_si256(_mm256_set1_epi32(static_cast<int>(r.spanT)), bias);
  const __m256i width = _mm256_xor_si256(_mm256_set1_epi64x(r.width), bias);
  const __m256i height = _mm256_xor_si256(_mm256_set1_epi64x(r.height), bias);
  const __m256i widthMul = _mm256_set1_epi64x(r.width);
  for (; i + 4 <= n; i += 4) {
    // Clear: fraction - lo < span, unsigned, in the low half of each lane.
    const __m256i clearS =
        _mm256_cmpgt_epi32(spanS, _mm256_xor_si256(_mm256_sub_epi32(fs, loS), bias));
    const __m256i clearT =
        _mm256_cmpgt_epi32(spanT, _mm256_xor_si256(_mm256_sub_epi32(ft, loT), bias));
    // The low halves' answers spread over whole lanes, one bit per pixel.
    const unsigned clear = static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(
        _mm256_shuffle_epi32(_mm256_and_si256(clearS, clearT), _MM_SHUFFLE(2, 2, 0, 0)))));
    if (clear != 0xFu) {
      for (int k = 0; k < 4; ++k)
        if (!((clear >> k) & 1)) unclear[count++] = i + k;
    }
    // Whole parts as unsigned 32-bit numbers (negative ones very large).
    const __m256i qs = _mm256_srli_epi64(fs, 32);
    const __m256i qt = _mm256_srli_epi64(ft, 32);
    const __m256i inside = _mm256_shuffle_epi32(
        _mm256_and_si256(_mm256_cmpgt_epi32(width, _mm256_xor_si256(qs, bias)),
                         _mm256_cmpgt_epi32(height, _mm256_xor_si256(qt, bias))),
        _MM_SHUFFLE(2, 2, 0, 0));
    const __m256i index =
        _mm256_and_si256(_mm256_add_epi64(_mm256_mul_epu32(qt, widthMul), qs), inside);
    alignas(32) std::uint64_t at[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(at), index);
    const unsigned in = static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(inside)));
    const std::uint32_t keep = kByteMasks[in];
    const std::uint32_t samples = static_cast<std::uint32_t>(r.org[at[0]]) |
                                  static_cast<std::uint32_t>(r.org[at[1]]) << 8 |
                                  static_cast<std::uint32_t>(r.org[at[2]]) << 16 |
                                  static_cast<std::uint32_t>(r.org[at[3]]) << 24;
    const std::uint32_t bytes = samples & keep;
    std::memcpy(image + i, &bytes, 4);
    std::memcpy(mask + i, &keep, 4);
    fs = _mm256_add_epi64(fs, step4S);
    ft = _mm256_add_epi64(ft, step4T);
  }
  if (i < n) {
    alignas(32) std::int64_t vs[4], vt[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(vs), fs);
    _mm256_store_si256(reinterpret_cast<__m256i*>(vt), ft);
    TransformRow rest = r;
    rest.s = vs[0];
    rest.t = vt[0];
    const int tail = TransformPlain(rest, image + i, mask + i, n - i, unclear + count);
    for (int k = 0; k < tail; ++k) unclear[count + k] += i;
    count += tail;
  }
  return count;
}

const RowKernels kAvx2{MaskedAvx2, FilteredAvx2, KeyedAvx2, TransformAvx2, "avx2"};

}  // namespace

const RowKernels* Avx2Rows() { return __builtin_cpu_supports("avx2") ? &kAvx2 : nullptr; }
#else
const RowKernels* Avx2Rows() { return nullptr; }
#endif

}  // namespace qvaframe
