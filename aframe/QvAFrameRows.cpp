#include "aframe/QvAFrameRows.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <cstdlib>
#include <cstring>

namespace qvaframe {

namespace {

bool InArea(const unsigned char* area, unsigned char v) { return (area[v >> 3] >> (v & 7)) & 1; }

void MaskedPlain(const unsigned char* s, const unsigned char* m, unsigned char* d, long w) {
  for (long i = 0; i < w; ++i)
    if (m[i] != 0) d[i] = s[i];
}

bool FilteredPlain(const unsigned char* s, const unsigned char* m, unsigned char* d, long w,
                   const unsigned char* area) {
  bool any = false;
  for (long i = 0; i < w; ++i) {
    if (m[i] != 0 && InArea(area, s[i])) {
      d[i] = s[i];
      any = true;
    }
  }
  return any;
}

void KeyedPlain(const unsigned char* s, unsigned char* d, long w, unsigned char key) {
  for (long i = 0; i < w; ++i)
    if (s[i] != key) d[i] = s[i];
}

// Sixteen mask bytes are tested at a time: a run that is wholly opaque is
// copied as one block, a wholly transparent one is skipped, and a mixed one
// is blended so that the target keeps its byte wherever the mask is 0.
void MaskedSse2(const unsigned char* s, const unsigned char* m, unsigned char* d, long w) {
  long i = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  // Opaque stretches first, 64 pixels at a time: the smallest of the 64 mask
  // bytes is 0 only when one of them is.
  for (; i + 64 <= w; i += 64) {
    const __m128i* mp = reinterpret_cast<const __m128i*>(m + i);
    const __m128i low =
        _mm_min_epu8(_mm_min_epu8(_mm_loadu_si128(mp), _mm_loadu_si128(mp + 1)),
                     _mm_min_epu8(_mm_loadu_si128(mp + 2), _mm_loadu_si128(mp + 3)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(low, zero)) != 0) break;
    const __m128i* sp = reinterpret_cast<const __m128i*>(s + i);
    __m128i* dp = reinterpret_cast<__m128i*>(d + i);
    _mm_storeu_si128(dp, _mm_loadu_si128(sp));
    _mm_storeu_si128(dp + 1, _mm_loadu_si128(sp + 1));
    _mm_storeu_si128(dp + 2, _mm_loadu_si128(sp + 2));
    _mm_storeu_si128(dp + 3, _mm_loadu_si128(sp + 3));
  }
  for (; i + 16 <= w; i += 16) {
    const __m128i mv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(m + i));
    const __m128i clear = _mm_cmpeq_epi8(mv, zero);
    const int bits = _mm_movemask_epi8(clear);
    if (bits == 0xFFFF) continue;
    const __m128i sv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    if (bits == 0) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), sv);
    } else {
      const __m128i dv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d + i));
      const __m128i out = _mm_or_si128(_mm_and_si128(clear, dv), _mm_andnot_si128(clear, sv));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), out);
    }
  }
#endif
  MaskedPlain(s + i, m + i, d + i, w - i);
}

// SSE2 has no byte table lookup: the area is asked pixel by pixel, without
// branches.
bool FilteredSse2(const unsigned char* s, const unsigned char* m, unsigned char* d, long w,
                  const unsigned char* area) {
  unsigned char any = 0;
  for (long i = 0; i < w; ++i) {
    const unsigned char v = s[i];
    const unsigned char keep =
        static_cast<unsigned char>(-(static_cast<int>(InArea(area, v)) & (m[i] != 0)));
    d[i] = static_cast<unsigned char>((v & keep) | (d[i] & ~keep));
    any |= keep;
  }
  return any != 0;
}

void KeyedSse2(const unsigned char* s, unsigned char* d, long w, unsigned char key) {
  long i = 0;
#if defined(__SSE2__)
  const __m128i k = _mm_set1_epi8(static_cast<char>(key));
  for (; i + 16 <= w; i += 16) {
    const __m128i sv = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
    const __m128i clear = _mm_cmpeq_epi8(sv, k);
    const int bits = _mm_movemask_epi8(clear);
    if (bits == 0xFFFF) continue;
    __m128i* dp = reinterpret_cast<__m128i*>(d + i);
    if (bits == 0) {
      _mm_storeu_si128(dp, sv);
    } else {
      const __m128i dv = _mm_loadu_si128(dp);
      _mm_storeu_si128(dp, _mm_or_si128(_mm_and_si128(clear, dv), _mm_andnot_si128(clear, sv)));
    }
  }
#endif
  KeyedPlain(s + i, d + i, w - i, key);
}

}  // namespace

int TransformPlain(const TransformRow& r, unsigned char* image, unsigned char* mask, int n,
                   int* unclear) {
  int count = 0;
  std::int64_t fs = r.s, ft = r.t;
  for (int i = 0; i < n; ++i, fs += r.stepS, ft += r.stepT) {
    const std::uint32_t fracS = static_cast<std::uint32_t>(fs);
    const std::uint32_t fracT = static_cast<std::uint32_t>(ft);
    if (fracS - r.loS >= r.spanS || fracT - r.loT >= r.spanT) unclear[count++] = i;
    const std::uint64_t qs = static_cast<std::uint64_t>(fs >> 32);
    const std::uint64_t qt = static_cast<std::uint64_t>(ft >> 32);
    const bool inside = qs < r.width && qt < r.height;
    image[i] = inside ? r.org[qt * r.width + qs] : 0;
    mask[i] = inside ? 255 : 0;
  }
  return count;
}

namespace {

const RowKernels kPlain{MaskedPlain, FilteredPlain, KeyedPlain, TransformPlain, "plain"};
const RowKernels kSse2{MaskedSse2, FilteredSse2, KeyedSse2, TransformPlain, "sse2"};

const RowKernels& Choose() {
  const char* want = std::getenv("QV_ROW_COPY");
  if (want && std::strcmp(want, "plain") == 0) return kPlain;
  if (want && std::strcmp(want, "sse2") == 0) return kSse2;
  if (const RowKernels* avx2 = Avx2Rows()) return *avx2;
  return kSse2;
}

}  // namespace

const RowKernels& PlainRows() { return kPlain; }
const RowKernels& Sse2Rows() { return kSse2; }

const RowKernels& Rows() {
  static const RowKernels& chosen = Choose();
  return chosen;
}

}  // namespace qvaframe
