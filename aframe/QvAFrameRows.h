// Pixel kernels of frame drawing, one row at a time (not part of the
// library's interface). Each comes as a plain loop and as vector versions;
// Rows() picks one set once, from the processor and the QV_ROW_COPY
// environment variable ("sse2" or "plain" keep to those sets, so that every
// set can be tested on one machine).
#pragma once

#include <cstdint>

namespace qvaframe {

/// One row of the transform's inverse mapping in 32.32 fixed point (see
/// QvAFrameTransform.cpp).
struct TransformRow {
  std::int64_t s;            ///< s width of the first pixel.
  std::int64_t t;            ///< t height of the first pixel.
  std::int64_t stepS;        ///< The step of s per pixel.
  std::int64_t stepT;        ///< The step of t per pixel.
  std::uint32_t loS;         ///< Fractions of s from loS (unsigned) ...
  std::uint32_t spanS;       ///< ... for spanS count as clear of whole numbers.
  std::uint32_t loT;         ///< Fractions of t from loT (unsigned) ...
  std::uint32_t spanT;       ///< ... for spanT count as clear of whole numbers.
  const unsigned char* org;  ///< The untransformed image, width x height bytes; not owned.
  std::uint32_t width;       ///< The untransformed image's width in pixels.
  std::uint32_t height;      ///< The untransformed image's height in pixels.
};

/// One set of row kernels. The target row d never overlaps s or m: a
/// kernel may write a pixel of d twice (with the same value).
struct RowKernels {
  /// d[i] = s[i] wherever m[i] is not 0, for i in 0 .. w - 1.
  void (*masked)(const unsigned char* s, const unsigned char* m, unsigned char* d, long w);
  /// The same, only for the pixels whose colour index is in the palette area
  /// given as a bit set: bit (v & 7) of byte (v >> 3) of area (32 bytes).
  /// \return Whether some pixel passed (was written).
  bool (*filtered)(const unsigned char* s, const unsigned char* m, unsigned char* d, long w,
                   const unsigned char* area);
  /// d[i] = s[i] wherever s[i] is not key.
  void (*keyed)(const unsigned char* s, unsigned char* d, long w, unsigned char key);
  /// Samples n pixels of a transform row into image and mask (0 outside);
  /// the indices of the pixels that are not clear are stored in unclear and
  /// their number returned (their bytes are left to the caller).
  int (*transform)(const TransformRow& row, unsigned char* image, unsigned char* mask, int n,
                   int* unclear);
  /// "plain", "sse2" or "avx2".
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
