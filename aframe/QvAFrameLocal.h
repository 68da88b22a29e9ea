// Helpers shared by the sources of the frame animation (not part of its interface).
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

#include "toolbox/QvPlatform.h"

namespace qvaframe {

// Low 16 bits of a 32-bit value, as a signed 16-bit number.
inline std::int16_t Low16(std::uint32_t v) { return static_cast<std::int16_t>(v); }
inline std::int16_t Low16(std::int32_t v) { return Low16(static_cast<std::uint32_t>(v)); }

// 16-bit wrapping sum and difference.
inline std::int16_t Add16(std::int32_t a, std::int32_t b) {
  return Low16(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
inline std::int16_t Sub16(std::int32_t a, std::int32_t b) {
  return Low16(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// Truncation toward zero of a double to a 32-bit integer. A value that does
// not fit (or NaN) gives the integer indefinite value 0x80000000, as the
// processor's truncating conversion does, instead of undefined behaviour.
inline std::int32_t Trunc(double d) {
  if (!(d > -2147483649.0 && d < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(d);
}

inline unsigned char* NewBuffer(std::int16_t width, std::int16_t height) {
  if (width < 1 || height < 1) return nullptr;
  return static_cast<unsigned char*>(
      qv::GlobalAlloc(0, static_cast<std::size_t>(width) * static_cast<std::size_t>(height)));
}

}  // namespace qvaframe
