/// \file QvPlatform.h
/// \brief Platform layer: the millisecond clock, fixed memory blocks, rectangle
/// filling, and the hooks that make the clock replaceable and every
/// allocation failure testable.
///
/// Everything here is available to hosts. The library's own clock reads and
/// memory blocks always go through these functions (never through a host's
/// functions of the same names), so replacing the clock with
/// QvSetTickSource() and failing allocations with QvFailAllocation() reach
/// every part of the engine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

class tbRect;

/// A source of the system's millisecond count: a function taking nothing and
/// returning milliseconds as an unsigned 32-bit count that wraps at 2^32
/// (about every 49.7 days). Installed with QvSetTickSource().
using QvTickSource = std::uint32_t (*)();

/// \brief The library's platform functions, kept apart from any host's
/// functions and globals of the same names (`tb`, `GetTickCount`,
/// `GlobalAlloc`, `GlobalFree`, `SetRect`).
namespace qv {
/// The millisecond count every playback clock reads.
///
/// \return Milliseconds of a steady system clock (or of the source installed
///         with QvSetTickSource()), as an unsigned 32-bit count that wraps at
///         2^32. Playback clocks turn it into ticks of 1/60 s (see
///         QvMPlayer).
std::uint32_t GetTickCount();
}  // namespace qv

/// Replaces the millisecond source of every playback clock, for tests and for
/// hosts that drive time themselves (for example to render a movie frame by
/// frame faster than real time).
///
/// \param source The new source, called on every clock sample; null restores
///        the system clock. The function must stay valid while installed.
/// \return The source installed before the call; null when the system clock
///         was in use. The setting is global to the process and is not
///         guarded for use from several threads.
QvTickSource QvSetTickSource(QvTickSource source);

namespace qv {
/// The `flags` of GlobalAlloc(): fixed memory, the only kind there is.
inline constexpr unsigned int kGlobalFixed = 0;

/// Allocates a fixed, zero-filled memory block. The library hands out pixel
/// buffers, thumbnails, comment blocks and name blocks made this way; the
/// receiver frees them with GlobalFree().
///
/// \param flags Accepted for compatibility and ignored; pass kGlobalFixed.
/// \param bytes Size of the block in bytes.
/// \return The block, or null when `bytes` is 0 (not counted as an
///         allocation attempt) or when memory is short. Counted by the fault
///         injection (QvFailAllocation()).
void* GlobalAlloc(unsigned int flags, std::size_t bytes);

/// Frees a block made by GlobalAlloc().
///
/// \param block The block; null is allowed and does nothing.
/// \return Always null.
void* GlobalFree(void* block);

/// Fills a rectangle's four coordinates.
///
/// \param rect The rectangle to fill, owned by the caller; null does nothing.
/// \param left,top Inclusive top-left corner, in pixels.
/// \param right,bottom Exclusive bottom-right corner, in pixels.
void SetRect(tbRect* rect, std::int32_t left, std::int32_t top, std::int32_t right,
             std::int32_t bottom);
}  // namespace qv

/// Fault injection: makes the `k`-th allocation attempt from now on fail, so
/// that tests can reach every failure path. Every allocation of the library
/// (records, objects, arrays, pixel buffers, toolbox storage: everything made
/// through QvNew(), QvNewArray() or qv::GlobalAlloc()) counts as one attempt.
/// An operation that allocates reports the failure result it documents and
/// leaves its object usable.
///
/// \param k 1 or more: the attempt, counted from this call, that fails (only
///        that one; later attempts succeed again). 0 or below switches
///        failing off. Either way the attempt count restarts at 0.
void QvFailAllocation(int k);

/// \return The number of allocation attempts since the last
///         QvFailAllocation() call (stops counting at 2^31 - 1). Tests use
///         it to find out how many attempts an operation makes.
int QvAllocationCount();

/// Counts one allocation attempt. Called by QvNew(), QvNewArray() and
/// qv::GlobalAlloc(); code that allocates in another way calls it first.
///
/// \return true when this attempt must fail (it is the one chosen with
///         QvFailAllocation()).
bool QvAllocationFails();

/// Allocates one object with `new (std::nothrow)`, counted by the fault
/// injection. The caller owns the object and frees it with `delete`.
///
/// \tparam T The type to make.
/// \param args Passed on to T's constructor.
/// \return The object, or null when the attempt was chosen to fail or memory
///         is short.
template <class T, class... Args>
T* QvNew(Args&&... args) {
  if (QvAllocationFails()) return nullptr;
  return new (std::nothrow) T(std::forward<Args>(args)...);
}

/// Allocates an array of `n` default-constructed objects with
/// `new (std::nothrow)`, counted by the fault injection. The caller owns the
/// array and frees it with `delete[]`.
///
/// \tparam T The element type.
/// \param n Number of elements, 1 or more.
/// \return The array, or null when `n` is below 1 (not counted), when the
///         attempt was chosen to fail, or when memory is short.
template <class T>
T* QvNewArray(long n) {
  if (n < 1) return nullptr;
  if (QvAllocationFails()) return nullptr;
  return new (std::nothrow) T[static_cast<std::size_t>(n)];
}
