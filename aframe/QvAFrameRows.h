// Pixel kernels of frame drawing, one row at a time (not part of the
// library's interface). Each comes as a plain loop and as vector versions;
// Rows() picks one set once, from the processor and the QV_ROW_COPY
// environment variable ("sse2" or "plain" keep to those sets, so that every
// set can be tested on one machine).
#pragma once

#include <cstdint>

namespace qvaframe {

// One row of the transform's inverse mapping in 32.32 fixed point (see
// QvAFrameTransform.cpp): s width and t height of the first pixel, their
// steps, and the fractions that count as clear of whole numbers (lo <=
// fraction < lo + span, unsigned).
struct TransformRow {
  std::int64_t s, t, stepS, stepT;
  std::uint32_t loS, spanS, loT, spanT;
  const unsigned char* org;  // width x height
  std::uint32_t width, height;
};

struct RowKernels {
  // d[i] = s[i] wherever m[i] is not 0, for i in 0 .. w - 1.
  void (*masked)(const unsigned char* s, const unsigned char* m, unsigned char* d, long w);
  // The same, only for the pixels whose colour index is in the palette area
  // given as a bit set: bit (v & 7) of byte (v >> 3) of area (32 bytes).
  void (*filtered)(const unsigned char* s, const unsigned char* m, unsigned char* d, long w,
                   const unsigned char* area);
  // d[i] = s[i] wherever s[i] is not key.
  void (*keyed)(const unsigned char* s, unsigned char* d, long w, unsigned char key);
  // Samples n pixels of a transform row into image and mask (0 outside);
  // the indices of the pixels that are not clear are stored in unclear and
  // their number returned (their bytes are left to the caller).
  int (*transform)(const TransformRow& row, unsigned char* image, unsigned char* mask, int n,
                   int* unclear);
  // "plain", "sse2" or "avx2".
  const char* name;
};

// The set used by the library.
const RowKernels& Rows();
// The plain loops, the reference for the others.
const RowKernels& PlainRows();
// The SSE2 set (the plain one where SSE2 is missing) and the AVX2 set (null
// where the processor or the compiler lacks it).
const RowKernels& Sse2Rows();
const RowKernels* Avx2Rows();
// The plain transform row, which also finishes the rows of the vector one.
int TransformPlain(const TransformRow& row, unsigned char* image, unsigned char* mask, int n,
                   int* unclear);

}  // namespace qvaframe
