// Platform layer: the system services the engine was written against
// (millisecond clock, global memory blocks, rectangle filling), plus the
// allocation hooks that make every allocation failure path testable.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

class tbRect;

// The millisecond count of the system, wrapping at 2^32.
using QvTickSource = std::uint32_t (*)();

namespace qv {
std::uint32_t GetTickCount();
}  // namespace qv

// Installs a replacement millisecond source and returns the previous one
// (null when the system clock was in use); a null source restores the
// system clock.
QvTickSource QvSetTickSource(QvTickSource source);

// Fixed global memory blocks. The flags are accepted for compatibility; the
// blocks are always fixed memory, handed out zeroed. GlobalAlloc gives null on
// failure (also for a size of 0, which is not counted as an attempt);
// GlobalFree accepts null and gives null, like its namesake.
namespace qv {
void* GlobalAlloc(unsigned int flags, std::size_t bytes);
void* GlobalFree(void* block);

void SetRect(tbRect* rect, std::int32_t left, std::int32_t top, std::int32_t right,
             std::int32_t bottom);
}  // namespace qv

// Fault injection. QvFailAllocation(k) makes the k-th allocation attempt
// counted from this call fail (k >= 1); 0 switches failing off. Every
// allocation of the library (records, objects, arrays, buffers, toolbox
// storage) counts as one attempt.
void QvFailAllocation(int k);
// Number of allocation attempts since the last QvFailAllocation call.
int QvAllocationCount();
// Counts one allocation attempt; true when this attempt must fail.
bool QvAllocationFails();

// Allocates one object with new (std::nothrow), counted by the fault
// injection; null on failure.
template <class T, class... Args>
T* QvNew(Args&&... args) {
  if (QvAllocationFails()) return nullptr;
  return new (std::nothrow) T(std::forward<Args>(args)...);
}

// Allocates an array of n default-constructed objects (delete[] frees it);
// null on failure or when n is below 1.
template <class T>
T* QvNewArray(long n) {
  if (n < 1) return nullptr;
  if (QvAllocationFails()) return nullptr;
  return new (std::nothrow) T[static_cast<std::size_t>(n)];
}
