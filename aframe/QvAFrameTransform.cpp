#include "aframe/QvAFrameTransform.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "aframe/QvAFrameLocal.h"
#include "aframe/QvAFrameRows.h"

namespace qvaframe {

namespace {

// One pixel as the transform defines it: t = (py A.x - px A.y) / D, then s
// through A.x, or A.y when A.x is 0; inside when both lie in 0 .. 1, sampled
// at trunc(s width), trunc(t height) (the last pixel for exactly 1).
__attribute__((noinline)) void SolvePixel(const InverseMap& m, double d, int i, int j,
                                          unsigned char* value, unsigned char* mask) {
  const double pyd = static_cast<double>(j + m.originY);
  const double pxd = static_cast<double>(i + m.originX);
  const double t = (pyd * m.ax - pxd * m.ay) / d;
  double s;
  if (m.ax != 0)
    s = (pxd - t * m.bx) / m.ax;
  else if (m.ay != 0)
    s = (pyd - t * m.by) / m.ay;
  else
    s = 0.0;
  unsigned char v = 0, k = 0;
  if (!(s < 0.0 || s > 1.0 || t < 0.0 || t > 1.0)) {
    const int sx = s == 1.0 ? m.width - 1 : Trunc(s * m.width);
    const int sy = t == 1.0 ? m.height - 1 : Trunc(t * m.height);
    if (sx >= 0 && sx < m.width && sy >= 0 && sy < m.height) {
      v = m.org[static_cast<std::ptrdiff_t>(sy) * m.width + sx];
      k = 255;
    }
  }
  *value = v;
  *mask = k;
}

}  // namespace

void InverseMapPlain(const InverseMap& m, unsigned char* image, unsigned char* mask, int imageWidth,
                     int imageHeight) {
  const double d = static_cast<double>(m.by) * m.ax - static_cast<double>(m.bx) * m.ay;
  for (int j = 0; j < imageHeight; ++j)
    for (int i = 0; i < imageWidth; ++i, ++image, ++mask) SolvePixel(m, d, i, j, image, mask);
}

// In exact terms s = Ns / D and t = Nt / D with Ns = px B.y - py B.x and
// Nt = py A.x - px A.y, so s width and t height are fractions of integers
// that grow by constants along a row. They are stepped in 32.32 fixed point,
// each row started exactly and each step rounded down, so that a stepped
// value lies below the exact one by less than (pixels stepped + 1) / 2^32.
//
// The plain solution differs from the exact one by a few roundings: t by
// one, s (through t, a product, a difference and a quotient) by at most
// 2.0001 u (|s| + |t| K) with u = 2^-53 and K = |B.x / A.x| (|B.y / A.y|
// when A.x is 0), and the products by width and height by one more. Where
// |s| and |t| are at most 2 (elsewhere both forms find the pixel outside), a
// pixel whose stepped fractions keep farther than four times that bound plus
// the stepping's lag from every whole number has in both forms the same
// truncations, the same comparisons with 0 and 1 (whole numbers too) and so
// the same result; the few others are solved as the plain form solves them.
void InverseMapExact(const InverseMap& m, unsigned char* image, unsigned char* mask, int imageWidth,
                     int imageHeight) {
  const double dd = static_cast<double>(m.by) * m.ax - static_cast<double>(m.bx) * m.ay;
  std::int64_t d = static_cast<std::int64_t>(m.by) * m.ax - static_cast<std::int64_t>(m.bx) * m.ay;
  const std::int64_t sign = d < 0 ? -1 : 1;
  d *= sign;
  const std::int64_t w = m.width, h = m.height;
  // Ns w and Nt h at the first pixel of a row, and their steps along a row
  // and down the rows, with the sign of D taken into them.
  const std::int64_t ox = m.originX, oy = m.originY;
  const std::int64_t sRow = sign * static_cast<std::int64_t>(m.by) * w;
  const std::int64_t sCol = -sign * static_cast<std::int64_t>(m.bx) * w;
  const std::int64_t tRow = -sign * static_cast<std::int64_t>(m.ay) * h;
  const std::int64_t tCol = sign * static_cast<std::int64_t>(m.ax) * h;
  const std::int64_t s0 = sign * (ox * m.by - oy * m.bx) * w;
  const std::int64_t t0 = sign * (oy * m.ax - ox * m.ay) * h;

  // s width and t height are linear: their largest size is at a corner.
  // Where they outgrow the fixed point, every pixel is solved.
  double largest = 0.0;
  for (int c = 0; c < 4; ++c) {
    const double i = c & 1 ? imageWidth : 0, j = c & 2 ? imageHeight : 0;
    const double vs = (static_cast<double>(s0) + i * sRow + j * sCol) / static_cast<double>(d);
    const double vt = (static_cast<double>(t0) + i * tRow + j * tCol) / static_cast<double>(d);
    largest = std::max(largest, std::max(std::fabs(vs), std::fabs(vt)));
  }
  if (!(largest < 134217728.0)) {  // 2^27
    InverseMapPlain(m, image, mask, imageWidth, imageHeight);
    return;
  }

  constexpr double u = 1.0 / 9007199254740992.0;  // 2^-53
  const double k = m.ax != 0   ? std::fabs(static_cast<double>(m.bx) / m.ax)
                   : m.ay != 0 ? std::fabs(static_cast<double>(m.by) / m.ay)
                               : 0.0;
  const double errS = m.width * (2.0001 * u * (2.0 + 2.0 * k) * 1.0001 + 2.01 * u);
  const double errT = m.height * (2.0001 * u * 2.0 + 2.01 * u);
  constexpr double kUnit = 4294967296.0;  // 2^32
  const std::uint32_t lag = static_cast<std::uint32_t>(imageWidth) + 1u;
  const std::uint32_t loS = static_cast<std::uint32_t>(4.0 * errS * kUnit) + 1u;
  const std::uint32_t loT = static_cast<std::uint32_t>(4.0 * errT * kUnit) + 1u;
  // Clear: lo <= fraction < 2^32 - lo - lag, as one unsigned comparison.
  const std::uint32_t spanS = 0u - loS - lag - loS;
  const std::uint32_t spanT = 0u - loT - lag - loT;
  using Wide = __int128;
  constexpr Wide kOne = static_cast<Wide>(1) << 32;  // 1.0 in 32.32
  const std::int64_t stepS = static_cast<std::int64_t>(
      (static_cast<Wide>(sRow) * kOne) / d - ((static_cast<Wide>(sRow) * kOne) % d < 0 ? 1 : 0));
  const std::int64_t stepT = static_cast<std::int64_t>(
      (static_cast<Wide>(tRow) * kOne) / d - ((static_cast<Wide>(tRow) * kOne) % d < 0 ? 1 : 0));
  TransformRow row;
  row.stepS = stepS;
  row.stepT = stepT;
  row.loS = loS;
  row.spanS = spanS;
  row.loT = loT;
  row.spanT = spanT;
  row.org = m.org;
  row.width = static_cast<std::uint32_t>(w);
  row.height = static_cast<std::uint32_t>(h);
  const RowKernels& kernels = Rows();
  constexpr int kChunk = 256;
  int unclear[kChunk];
  for (int j = 0; j < imageHeight; ++j) {
    const Wide as = static_cast<Wide>(s0 + j * sCol) * kOne;
    const Wide at = static_cast<Wide>(t0 + j * tCol) * kOne;
    row.s = static_cast<std::int64_t>(as / d - (as % d < 0 ? 1 : 0));
    row.t = static_cast<std::int64_t>(at / d - (at % d < 0 ? 1 : 0));
    for (int i = 0; i < imageWidth; i += kChunk) {
      const int n = std::min(kChunk, imageWidth - i);
      const int count = kernels.transform(row, image + i, mask + i, n, unclear);
      for (int k = 0; k < count; ++k)
        SolvePixel(m, dd, i + unclear[k], j, image + i + unclear[k], mask + i + unclear[k]);
      row.s += n * stepS;
      row.t += n * stepT;
    }
    image += imageWidth;
    mask += imageWidth;
  }
}

}  // namespace qvaframe
