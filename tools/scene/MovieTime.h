#pragma once

#include <cstdint>

namespace qvscene {

// The movie's timeline counts in units of two ticks of 1/60 second, so one
// unit of movie time lasts 1/30 second (one animation frame at the default
// speed of 30 frames per second).
constexpr std::int64_t kTicksPerSecond = 60;
constexpr std::int64_t kTicksPerUnit = 2;

// Centiseconds from time 0 to the start of the k-th moment of a movie shown
// every step units, rounded to the nearest centisecond. Frame delays taken
// as differences of these values carry the rounding error from frame to
// frame, so n frames always last n * step / 30 seconds within half a
// centisecond.
inline std::int64_t CentisecondsAt(std::int64_t k, std::int64_t step) {
  const std::int64_t ticks = k * step * kTicksPerUnit;
  // centiseconds = ticks * 100 / 60, rounded half up
  return (ticks * 100 + kTicksPerSecond / 2) / kTicksPerSecond;
}

// Delay of the k-th moment (0-based) in centiseconds.
inline std::int64_t DelayCentiseconds(std::int64_t k, std::int64_t step) {
  return CentisecondsAt(k + 1, step) - CentisecondsAt(k, step);
}

}  // namespace qvscene
