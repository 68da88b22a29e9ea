// The row kernels for processors with AVX2, compiled for that instruction set
// whatever the build's baseline; Rows() takes them only where the processor
// has it.
#include "aframe/QvAFrameRows.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define QV_AVX2_ROWS 1
#endif

namespace qvaframe {

#ifdef QV_AVX2_ROWS
namespace {

#define QV_AVX2 __attribute__((target("avx2")))

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
  for (; i + 32 <= w; i += 32) {
    const __m256i mv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i clear = _mm256_cmpeq_epi8(mv, zero);
    const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
    if (bits == 0xFFFFFFFFu) continue;
    const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    __m256i* dp = reinterpret_cast<__m256i*>(d + i);
    _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
  }
  for (; i < w; ++i)
    if (m[i] != 0) d[i] = s[i];
}

// The area's bit set is looked up 32 pixels at a time: the byte v >> 3 by
// two in-lane shuffles (indices below and above 128), the bit by a third.
QV_AVX2 void FilteredAvx2(const unsigned char* s, const unsigned char* m, unsigned char* d, long w,
                          const unsigned char* area) {
  long i = 0;
  const __m256i zero = _mm256_setzero_si256();
  const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(area));
  const __m128i hi = _mm_loadu_si128(reinterpret_cast<const __m128i*>(area + 16));
  const __m256i lowTable = _mm256_broadcastsi128_si256(lo);
  const __m256i highTable = _mm256_broadcastsi128_si256(hi);
  const __m256i bitTable =
      _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16,
                       32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128);
  const __m256i low4 = _mm256_set1_epi8(0x0F);
  const __m256i low3 = _mm256_set1_epi8(0x07);
  for (; i + 32 <= w; i += 32) {
    const __m256i mv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(m + i));
    const __m256i maskClear = _mm256_cmpeq_epi8(mv, zero);
    if (static_cast<unsigned>(_mm256_movemask_epi8(maskClear)) == 0xFFFFFFFFu) continue;
    const __m256i sv = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i));
    const __m256i byteIndex = _mm256_and_si256(_mm256_srli_epi16(sv, 3), low4);
    const __m256i upper = _mm256_cmpgt_epi8(zero, sv);  // v >= 128
    const __m256i bytes = _mm256_blendv_epi8(_mm256_shuffle_epi8(lowTable, byteIndex),
                                             _mm256_shuffle_epi8(highTable, byteIndex), upper);
    const __m256i bit = _mm256_shuffle_epi8(bitTable, _mm256_and_si256(sv, low3));
    const __m256i outside = _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bit), zero);
    const __m256i clear = _mm256_or_si256(outside, maskClear);
    const unsigned bits = static_cast<unsigned>(_mm256_movemask_epi8(clear));
    if (bits == 0xFFFFFFFFu) continue;
    __m256i* dp = reinterpret_cast<__m256i*>(d + i);
    _mm256_storeu_si256(dp, bits == 0 ? sv : _mm256_blendv_epi8(sv, _mm256_loadu_si256(dp), clear));
  }
  for (; i < w; ++i) {
    const unsigned char v = s[i];
    if (m[i] != 0 && ((area[v >> 3] >> (v & 7)) & 1)) d[i] = v;
  }
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

const RowKernels kAvx2{MaskedAvx2, FilteredAvx2, KeyedAvx2, "avx2"};

}  // namespace

const RowKernels* Avx2Rows() { return __builtin_cpu_supports("avx2") ? &kAvx2 : nullptr; }
#else
const RowKernels* Avx2Rows() { return nullptr; }
#endif

}  // namespace qvaframe
